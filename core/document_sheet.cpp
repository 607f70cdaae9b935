// The UI plug-in object's property-sheet sessions: the set-up of the printer and document sheets
// (CommonUIProp), the Printing Shortcuts page added to the document sheet
// (DocumentPropertySheets), and the hiding and availability rules applied on the way.
#include "core/sheet_callbacks.h"
#include "core/ui_interface.h"
#include "resources/resource_libraries.h"
#include "settings/feature_keywords.h"
#include "settings/option_access.h"
#include "settings/private_devmode.h"
#include "shortcuts/shortcut_record.h"
#include "ui/shortcuts_page.h"
#include "util/result.h"
#include "util/spooler_platform.h"

namespace {

// DocumentPropertySheets reasons.
constexpr WORD kReasonInit = 0;
constexpr WORD kReasonGetInfoHeader = 1;
constexpr WORD kReasonDestroy = 2;
constexpr WORD kReasonSetResult = 3;
constexpr WORD kReasonBeforeInit = 4;

constexpr DWORD kPrinterInfoAttributesLevel = 5;

// The printer's attributes (PRINTER_ATTRIBUTE_*); 0 when they cannot be read.
DWORD PrinterAttributes(HANDLE printer) {
    const std::vector<BYTE> block = zx::QuerySpoolerBlock(
        [printer](BYTE* buffer, DWORD size, DWORD* needed) {
            return zx::CurrentSpoolerPlatform().getPrinter(printer, kPrinterInfoAttributesLevel, buffer, size, needed);
        },
        sizeof(PRINTER_INFO_5W));
    return block.empty() ? 0 : reinterpret_cast<const PRINTER_INFO_5W*>(block.data())->Attributes;
}

bool HasOptionItems(const OEMCUIPPARAM* params) { return params->pDrvOptItems != nullptr && params->cDrvOptItems > 0; }

}  // namespace

HRESULT VUIInterfaceImpl::SetUpPrinterSheet(POEMCUIPPARAM params) {
    m_uiParams = params;
    if (params == nullptr) return S_OK;
    zx::SetUiPluginOf(*params, AsUiPlugin());
    params->OEMCUIPCallback = &zx::PrinterPropertiesCallback;
    if (!HasOptionItems(params)) return S_OK;
    VUICallbackContext context(params, m_driverUI.Get(), m_deviceState, m_coreHelper.Get());
    if (m_deviceState != nullptr) zx::AdaptPrinterProperties(context);
    return S_OK;
}

HRESULT VUIInterfaceImpl::SetUpDocumentSheet(POEMCUIPPARAM params) {
    m_uiParams = params;
    if (params == nullptr || !HasOptionItems(params)) return S_OK;
    if (FAILED(zx::LoadResourceLibraries(params->pPrinterName))) return E_FAIL;
    zx::SetUiPluginOf(*params, AsUiPlugin());
    params->OEMCUIPCallback = &zx::DocumentPropertiesCallback;
    // A set-up that fails leaves the object disabled: the core driver then shows its own sheet,
    // without the plug-in's page.
    const HRESULT hr = zx::CatchAll([&] { return PrepareDocumentSheet(params); });
    if (SUCCEEDED(hr)) return hr;
    m_enabled = 0;
    return E_NOTIMPL;
}

HRESULT VUIInterfaceImpl::PrepareDocumentSheet(POEMCUIPPARAM params) {
    EndDocumentSession();
    auto* block = static_cast<VPrivateDevMode*>(params->pOEMDM);
    m_properties = std::make_unique<VUIProperties>(block);
    m_properties->SetInterfaces(m_driverUI.Get(), m_coreHelper.Get());
    m_properties->AttachSheet(params);

    VUICallbackContext context(params, m_driverUI.Get(), m_deviceState, m_coreHelper.Get());
    zx::AdaptDocumentProperties(context);
    m_duplexUnitInstalled = context.TwoSidedAvailable();
    m_properties->SetDuplexUnitInstalled(m_duplexUnitInstalled);

    if (block != nullptr) block->dwDuplexCtrlWidened = 0;
    m_properties->SetManualDuplexSupported(0);
    SetUpManualTwoSidedItem();
    if (m_duplexUnitInstalled == 0) {
        POPTITEM duplex = m_properties->Item(Feature::Duplex);
        if (duplex != nullptr && duplex->Sel != 0) {
            duplex->Sel = 0;
            if (params->pPublicDM != nullptr) params->pPublicDM->dmDuplex = 0;
            m_properties->CommitOptItem(duplex);
        }
    }
    if (POPTITEM resolution = m_properties->Item(Feature::Resolution)) {
        resolution->Flags |= OPTIF_HIDE | OPTIF_CHANGED;
        m_properties->CommitOptItem(resolution);
    }
    m_rules.LoadSnappingTable(m_coreHelper.Get());
    RefreshDeviceLanguage();
    if (m_deviceLanguage != Option::PCLmS) FillPageContext();

    ApplyTwoSidedAvailability();
    return m_properties->HideBookkeepingItems();
}

// A new document sheet starts a new session: the pages and the settings object of an earlier
// sheet go (the pages first: they use the settings object), and so does what the rules remembered.
// Pages whose dialog still exists, with the settings object they use, are kept until this object
// goes, so that no window is left with a page that is gone.
void VUIInterfaceImpl::EndDocumentSession() {
    if (m_deviceClient) {
        m_deviceClient->DetachAll();
        if (m_deviceClient->IsConnected()) m_deviceClient->Attach(this);
    }
    bool windowsLeft = false;
    for (const auto& page : m_pages) windowsLeft |= page->HasWindow();
    if (windowsLeft) {
        for (auto& page : m_pages) m_retiredPages.push_back(std::move(page));
        m_retiredProperties.push_back(std::move(m_properties));
        m_pages.clear();
    }
    while (!m_pages.empty()) m_pages.pop_back();
    m_properties.reset();
    m_rules = VDocumentSheetRules();
    m_pageContext.clear();
    m_twoSidedControl = nullptr;
    m_manualOffSeen = false;
}

// The manual two-sided item is the plug-in's own: it starts on exactly when the printer is
// configured without a two-sided unit, and it is never shown.
void VUIInterfaceImpl::SetUpManualTwoSidedItem() {
    POPTITEM manual = m_properties->Item(Feature::ZXPrintOnBothSidesManually);
    if (manual == nullptr) return;
    if (m_properties->FeatureOptions(Feature::DuplexUnit).size() >= 2) {
        const PCSTR unit = m_properties->CurrentOption(Feature::DuplexUnit);
        manual->Sel = unit != nullptr && !zx::KeywordIs(unit, Option::False) ? 0 : 1;
    }
    manual->Flags |= OPTIF_HIDE;
    m_properties->CommitOptItem(manual);
}

// Without a two-sided unit, two-sided printing is switched off and locked where the system cannot
// print both sides by hand: on network printers, before Windows Vista, or without manual
// two-sided support. Binding and margins are then hidden too.
void VUIInterfaceImpl::ApplyTwoSidedAvailability() {
    const bool network = (PrinterAttributes(m_uiParams->hPrinter) & PRINTER_ATTRIBUTE_NETWORK) != 0;
    const bool manualSupported = m_properties->ManualDuplexSupported() != 0;
    if (!network && zx::GetSystemMajorVersion() >= 6 && manualSupported) return;
    POPTITEM duplex = m_properties->Item(Feature::Duplex);
    POPTITEM manual = m_properties->Item(Feature::ZXPrintOnBothSidesManually);
    if (duplex == nullptr || manual == nullptr) return;
    if (m_properties->DuplexUnitInstalled() != 0 || (manual->Sel != 1 && manualSupported)) return;
    duplex->Flags |= OPTIF_DISABLED;
    duplex->Sel = 0;
    if (m_uiParams->pPublicDM != nullptr) m_uiParams->pPublicDM->dmDuplex = 0;
    m_properties->CommitOptItem(duplex);
    m_properties->SetBindingAndMarginsSuppressed(1);
}

// The job's settings as the sheet opens, for the Printing Shortcuts page: the selection of every
// shortcut setting's item (the paper as its paper index); the N-up selection is also the private
// block's N-up index.
void VUIInterfaceImpl::FillPageContext() {
    m_pageContext.clear();
    for (PCSTR option : m_properties->FeatureOptions(Feature::AllSettingsfor_PS)) {
        if (option == nullptr) continue;
        const std::optional<ShortcutSetting> setting = zx::ParseSettingDefinition(option);
        if (!setting) continue;
        const POPTITEM item = m_properties->Item(setting->feature.c_str());
        if (item == nullptr) continue;
        m_pageContext[setting->feature] = item->Sel;
        if (setting->feature == Feature::DocumentNUp && m_properties->PrivateDevMode() != nullptr) {
            m_properties->PrivateDevMode()->dwNUpIndex = static_cast<DWORD>(item->Sel);
        }
        if (setting->feature == Feature::PaperSize) {
            m_pageContext[setting->feature] = static_cast<int32_t>(m_properties->PaperIndex());
        }
    }
}

void VUIInterfaceImpl::RefreshDeviceLanguage() {
    const PCSTR language = zx::CurrentOption(m_coreHelper.Get(), Feature::DeviceLanguage);
    m_deviceLanguage = language != nullptr ? language : Option::PCL;
}

STDMETHODIMP VUIInterfaceImpl::DocumentPropertySheets(PPROPSHEETUI_INFO pPSUIInfo, LPARAM lParam) {
    if (m_enabled == 0) return E_NOTIMPL;
    if (pPSUIInfo == nullptr || pPSUIInfo->Version != PROPSHEETUI_INFO_VERSION) {
        ::SetLastError(ERROR_INVALID_PARAMETER);
        return E_INVALIDARG;
    }
    switch (pPSUIInfo->Reason) {
    case kReasonGetInfoHeader:
    case kReasonDestroy: pPSUIInfo->Result = 1; return S_OK;
    case kReasonSetResult: {
        const auto* setResult = reinterpret_cast<const SETRESULT_INFO*>(lParam);
        if (setResult != nullptr) pPSUIInfo->Result = setResult->Result;
        return S_OK;
    }
    case kReasonBeforeInit: pPSUIInfo->Result = 0; return S_OK;
    case kReasonInit: break;
    default: return E_NOTIMPL;
    }
    const HRESULT hr = zx::CatchAll([&] { return AddShortcutPages(pPSUIInfo); });
    return hr == E_FAIL ? E_NOTIMPL : hr;
}

HRESULT VUIInterfaceImpl::AddShortcutPages(PPROPSHEETUI_INFO info) {
    if (m_properties == nullptr) return S_OK;
    VPrivateDevMode* block = m_properties->PrivateDevMode();
    const POPTITEM borderless = m_properties->Item(Feature::BorderlessPrint);
    if (block != nullptr && borderless != nullptr) block->dwBorderless = static_cast<DWORD>(borderless->Sel);
    RefreshDeviceLanguage();

    HRESULT hr = S_OK;
    if (m_properties->Item(Feature::PrintingShortcut) != nullptr) {
        if (m_deviceLanguage != Option::PCLmS) {
            m_rules.ReadAllSettingsFeatures(m_coreHelper.Get());
            m_pages.push_back(std::make_unique<VPrintingShortcutPropPage>());
        }
        if (m_deviceClient && m_deviceClient->IsConnected()) {
            for (const auto& page : m_pages) m_deviceClient->Attach(page.get());
            m_deviceClient->Notify();
        }
        for (const auto& page : m_pages) {
            if (FAILED(hr = page->SetCoreInterfaces(m_driverUI.Get(), m_coreHelper.Get()))) break;
            if (FAILED(hr = page->SetUIParams(m_uiParams))) break;
            if (FAILED(hr = page->SetProperties(m_properties.get()))) break;
            if (FAILED(hr = page->Initialise())) break;
            if (FAILED(hr = page->CreatePage(info, m_pageContext))) break;
        }
    }
    const POPTITEM duplex = m_properties->Item(Feature::Duplex);
    const POPTITEM margins = m_properties->Item(Feature::DocumentMargins);
    if (block != nullptr && duplex != nullptr && margins != nullptr && duplex->Sel != 0 && margins->Sel == 0) {
        block->dwMarginsByUser = 1;
    }
    return hr;
}
