#include "core/ui_interface.h"

#include "core/color_profile.h"
#include "resources/resource_libraries.h"
#include "settings/private_devmode.h"
#include "util/result.h"

namespace {
// Changed on any thread: the class factory makes a UI object for every request, also for the
// provider and converter requests that arrive on print threads.
volatile LONG g_liveObjects = 0;
}  // namespace

VUIInterfaceImpl::VUIInterfaceImpl() : CUnknown(IID_IPrintOemUI) { ::InterlockedIncrement(&g_liveObjects); }

// The string libraries serve every property sheet of the process and go with the last object.
VUIInterfaceImpl::~VUIInterfaceImpl() {
    if (::InterlockedDecrement(&g_liveObjects) == 0) zx::FreeResourceLibraries();
}

long VUIInterfaceImpl::LiveCount() noexcept { return g_liveObjects; }

STDMETHODIMP VUIInterfaceImpl::GetInfo(DWORD dwMode, PVOID pBuffer, DWORD cbSize, PDWORD pcbNeeded) {
    return zx::GetPluginInfo(dwMode, pBuffer, cbSize, pcbNeeded);
}

STDMETHODIMP VUIInterfaceImpl::DevMode(DWORD dwMode, POEMDMPARAM pOemDMParam) {
    return zx::HandleDevMode(dwMode, pOemDMParam, m_coreHelper.Get());
}

// The core driver offers each helper object in turn. Every interface is taken once and never
// replaced; the result reports the Unidrv helper's lookup, which the plug-in needs last.
STDMETHODIMP VUIInterfaceImpl::PublishDriverInterface(IUnknown* pIUnknown) {
    if (pIUnknown == nullptr) return E_POINTER;
    HRESULT hr = E_FAIL;
    if (!m_driverUI)
        hr = pIUnknown->QueryInterface(IID_IPrintOemDriverUI, reinterpret_cast<void**>(m_driverUI.GetAddressOf()));
    if (!m_coreHelper)
        hr = pIUnknown->QueryInterface(IID_IPrintCoreHelper, reinterpret_cast<void**>(m_coreHelper.GetAddressOf()));
    if (m_coreHelperUni) return hr;
    return pIUnknown->QueryInterface(IID_IPrintCoreHelperUni, reinterpret_cast<void**>(m_coreHelperUni.GetAddressOf()));
}

STDMETHODIMP VUIInterfaceImpl::CommonUIProp(DWORD, POEMCUIPPARAM) { return E_NOTIMPL; }

STDMETHODIMP VUIInterfaceImpl::DocumentPropertySheets(PPROPSHEETUI_INFO, LPARAM) { return E_NOTIMPL; }

STDMETHODIMP VUIInterfaceImpl::PrinterEvent(PWSTR, INT, DWORD, LPARAM) { return E_NOTIMPL; }

STDMETHODIMP VUIInterfaceImpl::QueryColorProfile(HANDLE, POEMUIOBJ, PDEVMODEW pPublicDM, PVOID, ULONG ulQueryMode,
                                                 VOID* pvProfileData, ULONG* pcbProfileData, FLONG* pflProfileData) {
    return zx::QueryColorProfileFor(m_coreHelper.Get(), pPublicDM, ulQueryMode, pvProfileData, pcbProfileData,
                                    pflProfileData);
}

// Left to the core driver.
STDMETHODIMP VUIInterfaceImpl::DevicePropertySheets(PPROPSHEETUI_INFO, LPARAM) { return E_NOTIMPL; }
STDMETHODIMP VUIInterfaceImpl::DevQueryPrintEx(POEMUIOBJ, PDEVQUERYPRINT_INFO, PDEVMODEW, PVOID) { return E_NOTIMPL; }
STDMETHODIMP VUIInterfaceImpl::DeviceCapabilities(POEMUIOBJ, HANDLE, PWSTR, WORD, PVOID, PDEVMODEW, PVOID, DWORD,
                                                  DWORD*) {
    return E_NOTIMPL;
}
STDMETHODIMP VUIInterfaceImpl::UpgradePrinter(DWORD, PBYTE) { return E_NOTIMPL; }
STDMETHODIMP VUIInterfaceImpl::DriverEvent(DWORD, DWORD, LPBYTE, LPARAM) { return E_NOTIMPL; }
STDMETHODIMP VUIInterfaceImpl::FontInstallerDlgProc(HWND, UINT, WPARAM, LPARAM) { return E_NOTIMPL; }
STDMETHODIMP VUIInterfaceImpl::UpdateExternalFonts(HANDLE, HANDLE, PWSTR) { return E_NOTIMPL; }
