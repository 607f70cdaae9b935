#include "core/ui_interface.h"

#include "core/color_profile.h"
#include "device/printer_access.h"
#include "resources/resource_libraries.h"
#include "settings/private_devmode.h"
#include "shortcuts/shortcut_store.h"
#include "ui/shortcuts_page.h"
#include "util/result.h"

namespace {
// Changed on any thread: the class factory makes a UI object for every request, also for the
// provider and converter requests that arrive on print threads.
volatile LONG g_liveObjects = 0;

// Written to the printer's driver data when the printer-initialise event has run.
constexpr wchar_t kInstallOver[] = L"InstallOver";
}  // namespace

VUIInterfaceImpl::VUIInterfaceImpl() : CUnknown(IID_IPrintOemUI) { ::InterlockedIncrement(&g_liveObjects); }

// The pages go first, last added first, then the settings object they use. The string libraries
// serve every property sheet of the process and go with the last object.
VUIInterfaceImpl::~VUIInterfaceImpl() {
    if (m_deviceClient) m_deviceClient->DetachAll();
    while (!m_pages.empty()) m_pages.pop_back();
    m_properties.reset();
    while (!m_retiredPages.empty()) m_retiredPages.pop_back();
    m_retiredProperties.clear();
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

STDMETHODIMP VUIInterfaceImpl::CommonUIProp(DWORD dwMode, POEMCUIPPARAM pOemCUIPParam) {
    return zx::CatchAll([&] {
        EnsureDeviceClient(pOemCUIPParam);
        if (dwMode == OEMCUIP_PRNPROP) return SetUpPrinterSheet(pOemCUIPParam);
        if (dwMode != OEMCUIP_DOCPROP) return E_INVALIDARG;
        return SetUpDocumentSheet(pOemCUIPParam);
    });
}

// Only the printer-initialise event does anything: the printer gets its GUID for the shortcut
// store, the device is asked, and the installation is marked done.
STDMETHODIMP VUIInterfaceImpl::PrinterEvent(PWSTR pPrinterName, INT iDriverEvent, DWORD, LPARAM) {
    if (iDriverEvent != PRINTER_EVENT_INITIALIZE || pPrinterName == nullptr) return S_OK;
    return zx::CatchAll([&] {
        { const VPrintShortcutStore store(pPrinterName, true); }
        RequeryDevice(pPrinterName);
        VPrinterAccess writer(pPrinterName, nullptr);
        if (writer.WriteNumber(kInstallOver, 1)) {
            VPrinterAccess(pPrinterName, nullptr).WriteNumber(kInstallOver, 1);
        }
        return S_OK;
    });
}

STDMETHODIMP VUIInterfaceImpl::QueryColorProfile(HANDLE, POEMUIOBJ, PDEVMODEW pPublicDM, PVOID, ULONG ulQueryMode,
                                                 VOID* pvProfileData, ULONG* pcbProfileData, FLONG* pflProfileData) {
    return zx::QueryColorProfileFor(m_coreHelper.Get(), pPublicDM, ulQueryMode, pvProfileData, pcbProfileData,
                                    pflProfileData);
}

void VUIInterfaceImpl::Update(ISubject* subject) { m_deviceState = subject ? subject->GetData() : nullptr; }

void VUIInterfaceImpl::ReplaceDeviceClient(std::shared_ptr<VUDMClient> client) {
    if (m_deviceClient) m_deviceClient->DetachAll();
    m_deviceState = nullptr;
    m_deviceClient = std::move(client);
}

// The new client is observed once it has answered, so the record held is always that of the
// client held.
void VUIInterfaceImpl::RequeryDevice(const wchar_t* printerName) {
    ::RequeryDevice(printerName, m_coreHelper.Get(), *this);
    if (!m_deviceClient || !m_deviceClient->IsConnected()) return;
    m_deviceClient->Attach(this);
    m_deviceState = m_deviceClient->LastRecord();
}

void VUIInterfaceImpl::EnsureDeviceClient(const OEMCUIPPARAM* params) {
    if (params == nullptr || params->pPrinterName == nullptr || m_deviceClient) return;
    auto client = std::make_shared<VUDMClient>(params->pPrinterName, params->hPrinter, m_coreHelper.Get());
    const bool usable = client->Connect();
    m_deviceClient = std::move(client);
    if (!usable) return;
    m_deviceClient->Attach(this);
    m_deviceClient->Notify();
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
