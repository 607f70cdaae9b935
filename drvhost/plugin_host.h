// Loads the plug-in DLL as the core driver does: LoadLibrary, DllGetClassObject, then the
// objects the core driver creates through the class factory.
#pragma once

#include "ddk/prcomoem.h"

#include <windows.h>
#include <wrl/client.h>

#include <string>

namespace drvhost {

using Microsoft::WRL::ComPtr;

class PluginHost {
public:
    // Loads the plug-in from a full path; throws std::runtime_error when it cannot be loaded.
    explicit PluginHost(const std::wstring& dllPath);
    ~PluginHost();
    PluginHost(const PluginHost&) = delete;
    PluginHost& operator=(const PluginHost&) = delete;

    ComPtr<IPrintOemUI> CreateUi() const;
    ComPtr<IPrintOemPrintTicketProvider> CreateTicketProvider() const;
    ComPtr<IPrintOemUIMXDC> CreateXpsConverter() const;
    bool CanUnloadNow() const;
    HMODULE Module() const noexcept { return m_module; }

private:
    template <typename I>
    ComPtr<I> Create(REFCLSID clsid, REFIID iid) const;

    HMODULE m_module = nullptr;
    HRESULT(STDAPICALLTYPE* m_getClassObject)(REFCLSID, REFIID, LPVOID*) = nullptr;
    HRESULT(STDAPICALLTYPE* m_canUnloadNow)() = nullptr;
};

// The plug-in DLL that lies beside the running program.
std::wstring PluginBesideProgram();

}  // namespace drvhost
