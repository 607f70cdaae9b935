#include "drvhost/plugin_host.h"

#include "core/class_ids.h"

#include <stdexcept>

namespace drvhost {
namespace {

std::string Narrow(const std::wstring& text) {
    std::string narrow;
    for (wchar_t c : text) narrow += c < 0x80 ? static_cast<char>(c) : '?';
    return narrow;
}

template <typename Fn>
Fn Entry(HMODULE module, const char* name) {
    return reinterpret_cast<Fn>(reinterpret_cast<void*>(::GetProcAddress(module, name)));
}

}  // namespace

PluginHost::PluginHost(const std::wstring& dllPath) {
    m_module = ::LoadLibraryW(dllPath.c_str());
    if (m_module == nullptr) {
        throw std::runtime_error("cannot load " + Narrow(dllPath) + " (error " + std::to_string(::GetLastError()) +
                                 ")");
    }
    m_getClassObject = Entry<decltype(m_getClassObject)>(m_module, "DllGetClassObject");
    m_canUnloadNow = Entry<decltype(m_canUnloadNow)>(m_module, "DllCanUnloadNow");
    if (m_getClassObject == nullptr || m_canUnloadNow == nullptr) {
        ::FreeLibrary(m_module);
        throw std::runtime_error(Narrow(dllPath) + " does not export the COM entry points");
    }
}

PluginHost::~PluginHost() { ::FreeLibrary(m_module); }

template <typename I>
ComPtr<I> PluginHost::Create(REFCLSID clsid, REFIID iid) const {
    ComPtr<IClassFactory> factory;
    HRESULT hr = m_getClassObject(clsid, IID_IClassFactory, reinterpret_cast<void**>(factory.GetAddressOf()));
    ComPtr<I> object;
    if (SUCCEEDED(hr)) hr = factory->CreateInstance(nullptr, iid, reinterpret_cast<void**>(object.GetAddressOf()));
    return object;
}

ComPtr<IPrintOemUI> PluginHost::CreateUi() const { return Create<IPrintOemUI>(CLSID_OEMUI, IID_IPrintOemUI); }

ComPtr<IPrintOemPrintTicketProvider> PluginHost::CreateTicketProvider() const {
    return Create<IPrintOemPrintTicketProvider>(CLSID_OEMPTPROVIDER, IID_IPrintOemPrintTicketProvider);
}

ComPtr<IPrintOemUIMXDC> PluginHost::CreateXpsConverter() const {
    return Create<IPrintOemUIMXDC>(CLSID_OEMUIMXDC, IID_IPrintOemUIMXDC);
}

bool PluginHost::CanUnloadNow() const { return m_canUnloadNow() == S_OK; }

std::wstring PluginBesideProgram() {
    wchar_t path[MAX_PATH];
    const DWORD length = ::GetModuleFileNameW(nullptr, path, MAX_PATH);
    std::wstring directory(path, length);
    directory.erase(directory.find_last_of(L'\\') + 1);
    return directory + L"zxtaluUI14.dll";
}

}  // namespace drvhost
