// The UI plug-in object through which the core driver's configuration module drives the plug-in:
// identity, private DEVMODE block, the core driver's helper interfaces and the colour profile.
// Its property-sheet work (CommonUIProp, DocumentPropertySheets, PrinterEvent) forwards to the
// subsystems that own it.
#pragma once

#include "util/unknown.h"
#include "ddk/prcomoem.h"
#include "settings/ui_properties.h"
#include "util/scoped.h"

class VUIInterfaceImpl : public CUnknown<IPrintOemUI>, private IUIPlugin {
public:
    VUIInterfaceImpl();
    ~VUIInterfaceImpl() override;

    // IPrintOemCommon
    STDMETHODIMP GetInfo(DWORD dwMode, PVOID pBuffer, DWORD cbSize, PDWORD pcbNeeded) override;
    STDMETHODIMP DevMode(DWORD dwMode, POEMDMPARAM pOemDMParam) override;

    // IPrintOemUI
    STDMETHODIMP PublishDriverInterface(IUnknown* pIUnknown) override;
    STDMETHODIMP CommonUIProp(DWORD dwMode, POEMCUIPPARAM pOemCUIPParam) override;
    STDMETHODIMP DocumentPropertySheets(PPROPSHEETUI_INFO pPSUIInfo, LPARAM lParam) override;
    STDMETHODIMP DevicePropertySheets(PPROPSHEETUI_INFO pPSUIInfo, LPARAM lParam) override;
    STDMETHODIMP DevQueryPrintEx(POEMUIOBJ poemuiobj, PDEVQUERYPRINT_INFO pDQPInfo, PDEVMODEW pPublicDM,
                                 PVOID pOEMDM) override;
    STDMETHODIMP DeviceCapabilities(POEMUIOBJ poemuiobj, HANDLE hPrinter, PWSTR pDeviceName, WORD wCapability,
                                    PVOID pOutput, PDEVMODEW pPublicDM, PVOID pOEMDM, DWORD dwOld,
                                    DWORD* dwResult) override;
    STDMETHODIMP UpgradePrinter(DWORD dwLevel, PBYTE pDriverUpgradeInfo) override;
    STDMETHODIMP PrinterEvent(PWSTR pPrinterName, INT iDriverEvent, DWORD dwFlags, LPARAM lParam) override;
    STDMETHODIMP DriverEvent(DWORD dwDriverEvent, DWORD dwLevel, LPBYTE pDriverInfo, LPARAM lParam) override;
    STDMETHODIMP QueryColorProfile(HANDLE hPrinter, POEMUIOBJ poemuiobj, PDEVMODEW pPublicDM, PVOID pOEMDM,
                                   ULONG ulQueryMode, VOID* pvProfileData, ULONG* pcbProfileData,
                                   FLONG* pflProfileData) override;
    STDMETHODIMP FontInstallerDlgProc(HWND hWnd, UINT usMsg, WPARAM wParam, LPARAM lParam) override;
    STDMETHODIMP UpdateExternalFonts(HANDLE hPrinter, HANDLE hHeap, PWSTR pwstrCartridges) override;

    // The helper interfaces taken in PublishDriverInterface; null until then.
    IPrintOemDriverUI* DriverUI() const noexcept override { return m_driverUI.Get(); }
    IPrintCoreHelper* CoreHelper() const noexcept override { return m_coreHelper.Get(); }
    // This object as the property-sheet callbacks find it in the parameter block's user data.
    IUIPlugin* AsUiPlugin() noexcept { return this; }

    // Number of UI plug-in objects alive in the process.
    static long LiveCount() noexcept;

private:
    // Counted references taken in PublishDriverInterface.
    zx::ComPtr<IPrintOemDriverUI> m_driverUI;
    zx::ComPtr<IPrintCoreHelper> m_coreHelper;
    zx::ComPtr<IPrintCoreHelperUni> m_coreHelperUni;
};
