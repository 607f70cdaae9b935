#include "tests/support/plugin_module.h"

#include "core/class_ids.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace zxtest {

const PluginModule& Plugin() {
    static const PluginModule plugin = [] {
        PluginModule loaded;
        loaded.module = ::LoadLibraryW(L"zxtaluUI14.dll");
        if (loaded.module == nullptr) {
            ADD_FAILURE() << "zxtaluUI14.dll not loaded, error " << ::GetLastError();
            std::abort();
        }
        loaded.getClassObject =
            reinterpret_cast<DllGetClassObjectFn>(reinterpret_cast<void*>(::GetProcAddress(loaded.module, "DllGetClassObject")));
        loaded.canUnloadNow = reinterpret_cast<DllCanUnloadNowFn>(reinterpret_cast<void*>(::GetProcAddress(loaded.module, "DllCanUnloadNow")));
        if (loaded.getClassObject == nullptr || loaded.canUnloadNow == nullptr) std::abort();
        return loaded;
    }();
    return plugin;
}

ComPtr<IPrintOemUI> CreateUiObject() { return CreatePluginObject<IPrintOemUI>(CLSID_OEMUI, IID_IPrintOemUI); }

ComPtr<IPrintOemPrintTicketProvider> CreateTicketProvider() {
    return CreatePluginObject<IPrintOemPrintTicketProvider>(CLSID_OEMPTPROVIDER, IID_IPrintOemPrintTicketProvider);
}

ComPtr<IPrintOemUIMXDC> CreateXpsConverterObject() {
    return CreatePluginObject<IPrintOemUIMXDC>(CLSID_OEMUIMXDC, IID_IPrintOemUIMXDC);
}

}  // namespace zxtest
