// Loads the plug-in DLL the way the core driver does (LoadLibrary, then DllGetClassObject) and
// hands out its objects, so that tests exercise the exported entry points and not only classes.
#pragma once

#include "ddk/prcomoem.h"

#include <windows.h>
#include <wrl/client.h>

namespace zxtest {

using Microsoft::WRL::ComPtr;

using DllGetClassObjectFn = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, LPVOID*);
using DllCanUnloadNowFn = HRESULT(STDAPICALLTYPE*)();

struct PluginModule {
    HMODULE module = nullptr;
    DllGetClassObjectFn getClassObject = nullptr;
    DllCanUnloadNowFn canUnloadNow = nullptr;
};

// The DLL, loaded once from beside the test executable.
const PluginModule& Plugin();

// A new object of the plug-in, created through a factory of the given class.
template <typename I>
ComPtr<I> CreatePluginObject(REFCLSID clsid, REFIID iid) {
    ComPtr<IClassFactory> factory;
    if (FAILED(Plugin().getClassObject(clsid, IID_IClassFactory, reinterpret_cast<void**>(factory.GetAddressOf())))) {
        return nullptr;
    }
    ComPtr<I> object;
    factory->CreateInstance(nullptr, iid, reinterpret_cast<void**>(object.GetAddressOf()));
    return object;
}

ComPtr<IPrintOemUI> CreateUiObject();
ComPtr<IPrintOemPrintTicketProvider> CreateTicketProvider();
ComPtr<IPrintOemUIMXDC> CreateXpsConverterObject();

// Binds a PrintTicket provider to a printer as the host does, freeing the namespaces it hands out.
inline HRESULT BindToPrinter(IPrintOemPrintTicketProvider* provider) {
    OEMPTOPTS options;
    INT count = 0;
    BSTR* namespaces = nullptr;
    const HRESULT hr = provider->BindPrinter(reinterpret_cast<HANDLE>(1), 1, &options, &count, &namespaces);
    for (INT i = 0; i < count; ++i) SysFreeString(namespaces[i]);
    CoTaskMemFree(namespaces);
    return hr;
}

// The reference count of an object, read by AddRef and Release.
inline ULONG RefCount(IUnknown* object) {
    object->AddRef();
    return object->Release();
}

// Calls an interface method through its raw vtable slot, independent of our declarations.
template <typename R, typename... Args>
R CallSlot(void* object, int slot, Args... args) {
    using Method = R(STDMETHODCALLTYPE*)(void*, Args...);
    return reinterpret_cast<Method>((*static_cast<void***>(object))[slot])(object, args...);
}

}  // namespace zxtest
