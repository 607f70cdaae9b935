// The UI plug-in object through which the core driver's configuration module drives the plug-in:
// identity, private DEVMODE block, the core driver's helper interfaces, the property-sheet
// sessions (CommonUIProp, DocumentPropertySheets and the callbacks they register), printer
// installation and the colour profile. It owns what a property-sheet session needs: the settings
// object, the Printing Shortcuts pages and the dependent-settings state, and shares the printer's
// device-model client.
#pragma once

#include "ddk/prcomoem.h"
#include "device/auto_configuration.h"
#include "device/notifier.h"
#include "device/udm_client.h"
#include "settings/sheet_rules.h"
#include "settings/ui_properties.h"
#include "shortcuts/shortcut_collection.h"
#include "util/scoped.h"
#include "util/unknown.h"

#include <memory>
#include <string>
#include <vector>

class VPrintingShortcutPropPage;

class VUIInterfaceImpl : public CUnknown<IPrintOemUI>,
                         private IUIPlugin,
                         private IObserver,
                         private IDeviceClientHolder,
                         private zx::IDeviceRequery,
                         private IStandardSheetWindows,
                         private IShortcutPagesObserver {
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
    // This object as the property-sheet callbacks find it in the parameter block's user data, and
    // back; null for null.
    IUIPlugin* AsUiPlugin() noexcept { return this; }
    static VUIInterfaceImpl* FromUiPlugin(IUIPlugin* plugin) noexcept {
        return plugin ? static_cast<VUIInterfaceImpl*>(plugin) : nullptr;
    }

    // Makes the device be asked again, replacing the device-model client this object holds.
    void RequeryDevice(const wchar_t* printerName) override;
    IBiDiData* CurrentDeviceRecord() override { return m_deviceState; }
    zx::IDeviceRequery& AsDeviceRequery() noexcept { return *this; }

    // The document sheet's session, for the callbacks.
    VUIProperties* Properties() const noexcept { return m_properties.get(); }
    const std::vector<std::unique_ptr<VPrintingShortcutPropPage>>& Pages() const noexcept { return m_pages; }
    const std::string& DeviceLanguage() const noexcept { return m_deviceLanguage; }
    DWORD DuplexUnitInstalled() const noexcept { return m_duplexUnitInstalled; }
    bool Enabled() const noexcept { return m_enabled != 0; }
    // The job's settings as the sheet opened, for the Printing Shortcuts pages.
    const JobSettings& PageContext() const noexcept { return m_pageContext; }

    // The document sheet's callback, by reason: the dependent-settings rules with the label work
    // of the standard page.
    HRESULT OnDocumentSelectionChanged(const VUICallbackContext& context);
    HRESULT OnDocumentPageActive(const VUICallbackContext& context);
    HRESULT OnDocumentPageLeft(const VUICallbackContext& context);
    HRESULT OnDocumentApply(const VUICallbackContext& context);
    HRESULT OnDocumentItemFocus(const VUICallbackContext& context);
    HRESULT OnDocumentItemsReverted(const VUICallbackContext& context);

    // Number of UI plug-in objects alive in the process.
    static long LiveCount() noexcept;

private:
    // IObserver: keeps the accessory record of the notifying device-model client.
    void Update(ISubject* subject) override;
    // IDeviceClientHolder
    void ReplaceDeviceClient(std::shared_ptr<VUDMClient> client) override;
    // IStandardSheetWindows
    void RefreshTwoSidedLabel(const VUICallbackContext& context) override;
    void FollowManualTwoSidedLabel(const VUICallbackContext& context) override;
    // IShortcutPagesObserver
    void OnStandardItemsChanged(HWND standardPage, const VUIProperties& settings) override;
    void OnStandardSelectionChanged(const VUIProperties& settings) override;

    void SetUpStandardPageLabels(const VUICallbackContext& context);
    UINT TwoSidedLabelAtActivation(const VUICallbackContext& context) const;

    void EnsureDeviceClient(const OEMCUIPPARAM* params);
    HRESULT SetUpPrinterSheet(POEMCUIPPARAM params);
    HRESULT SetUpDocumentSheet(POEMCUIPPARAM params);
    HRESULT PrepareDocumentSheet(POEMCUIPPARAM params);
    void EndDocumentSession();
    void SetUpManualTwoSidedItem();
    void ApplyTwoSidedAvailability();
    void FillPageContext();
    void RefreshDeviceLanguage();
    HRESULT AddShortcutPages(PPROPSHEETUI_INFO info);

    POEMCUIPPARAM m_uiParams = nullptr;
    std::unique_ptr<VUIProperties> m_properties;
    zx::ComPtr<IPrintOemDriverUI> m_driverUI;
    zx::ComPtr<IPrintCoreHelper> m_coreHelper;
    zx::ComPtr<IPrintCoreHelperUni> m_coreHelperUni;
    std::vector<std::unique_ptr<VPrintingShortcutPropPage>> m_pages;
    WORD m_enabled = 1;
    JobSettings m_pageContext;
    std::string m_deviceLanguage = "PCL";
    DWORD m_duplexUnitInstalled = 0;
    std::shared_ptr<VUDMClient> m_deviceClient;
    IBiDiData* m_deviceState = nullptr;
    VDocumentSheetRules m_rules;
    HWND m_twoSidedControl = nullptr;
    bool m_manualOffSeen = false;
};
