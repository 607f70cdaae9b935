#include "settings/ui_properties.h"

#include "settings/feature_keywords.h"
#include "settings/option_items.h"
#include "settings/paper.h"
#include "util/result.h"

#include <initializer_list>

namespace {

// The core driver marks an option that conflicts with another selection. Handed back with the
// mark, the core driver would stop to have the user resolve the conflict; the mark is cleared
// for the call and put back afterwards, so the sheet still shows it.
class ConflictMarkSuspension {
public:
    explicit ConflictMarkSuspension(OPTITEM& item) noexcept : m_option(zx::SelectedOption(item)) {
        if (m_option == nullptr || !(m_option->Flags & OPTPF_OVERLAY_WARNING_ICON)) return;
        m_option->Flags &= static_cast<BYTE>(~OPTPF_OVERLAY_WARNING_ICON);
        m_cleared = true;
    }
    ~ConflictMarkSuspension() {
        if (m_cleared) m_option->Flags |= OPTPF_OVERLAY_WARNING_ICON;
    }
    ConflictMarkSuspension(const ConflictMarkSuspension&) = delete;
    ConflictMarkSuspension& operator=(const ConflictMarkSuspension&) = delete;

private:
    POPTPARAM m_option;
    bool m_cleared = false;
};

bool HasOptionArray(const OPTITEM* item) noexcept {
    return item != nullptr && item->pOptType != nullptr && item->pOptType->pOptParam != nullptr;
}

HRESULT UpdateUISetting(IPrintOemDriverUI* driverUI, const OEMCUIPPARAM* params, POPTITEM item, DWORD mode) noexcept {
    if (driverUI == nullptr || params == nullptr) return E_FAIL;
    return driverUI->DrvUpdateUISetting(params->poemuiobj, item, 0, mode);
}

HRESULT HideEach(const OEMCUIPPARAM* params, std::initializer_list<PCSTR> features) noexcept {
    for (PCSTR feature : features) ZX_RETURN_IF_FAILED(zx::HideFeatureItem(params, feature));
    return S_OK;
}

// The standard sheet shows neither copies and collation nor the paper source's first option.
void HideCopiesAndPaperSourceDefault(const OEMCUIPPARAM* params) noexcept {
    if (POPTITEM copies = zx::FindItemForDevModeField(params, DMPUB_COPIES_COLLATE)) copies->Flags |= OPTIF_HIDE;
    POPTITEM source = zx::FindItemForDevModeField(params, DMPUB_DEFSOURCE);
    if (HasOptionArray(source) && source->pOptType->Count > 0) source->pOptType->pOptParam[0].Flags = OPTPF_HIDE;
}

}  // namespace

void VUIProperties::SetInterfaces(IPrintOemDriverUI* driverUI, IPrintCoreHelper* coreHelper) noexcept {
    m_driverUI = driverUI;
    m_coreHelper = coreHelper;
}

void VUIProperties::AttachSheet(POEMCUIPPARAM params) noexcept {
    m_uiParams = params;
    m_readOnly = params != nullptr && zx::IsReadOnlySheet(params->dwFlags);
}

HRESULT VUIProperties::FindItem(PCSTR feature, POPTITEM* item) const noexcept {
    return zx::GetFeatureOptItem(m_uiParams, feature, item);
}

POPTITEM VUIProperties::Item(PCSTR feature) const noexcept {
    POPTITEM item = nullptr;
    return SUCCEEDED(FindItem(feature, &item)) ? item : nullptr;
}

HRESULT VUIProperties::HandBackDocumentItem(OPTITEM& item) const noexcept {
    const ConflictMarkSuspension suspension(item);
    const HRESULT hr = UpdateUISetting(DriverUI(), m_uiParams, &item, OEMCUIP_DOCPROP);
    item.Flags |= OPTIF_CHANGED;
    return hr;
}

HRESULT VUIProperties::CommitOptItem(POPTITEM item) const noexcept {
    if (!HasOptionArray(item)) return E_FAIL;
    return HandBackDocumentItem(*item);
}

HRESULT VUIProperties::CommitPrinterOptItem(POPTITEM item) const noexcept {
    if (item == nullptr) return S_OK;
    return UpdateUISetting(DriverUI(), m_uiParams, item, OEMCUIP_PRNPROP);
}

HRESULT VUIProperties::SetHiddenFeature(PCSTR hiddenFeature, const OPTITEM* visibleItem) const noexcept {
    if (visibleItem == nullptr) return E_POINTER;
    POPTITEM hidden = nullptr;
    ZX_RETURN_IF_FAILED(FindItem(hiddenFeature, &hidden));
    if (hidden == nullptr) return S_FALSE;
    hidden->Sel = visibleItem->Sel;
    return CommitOptItem(hidden);
}

HRESULT VUIProperties::HidePrintingShortcutItems() const noexcept {
    for (PCSTR shortcut : FeatureOptions(Feature::PrintingShortcut)) {
        // An empty keyword would match the first item of the sheet.
        if (shortcut == nullptr || *shortcut == '\0') continue;
        ZX_RETURN_IF_FAILED(zx::HideFeatureItem(m_uiParams, shortcut));
    }
    return S_OK;
}

HRESULT VUIProperties::HideBookkeepingItems() const noexcept {
    ZX_RETURN_IF_FAILED(HidePrintingShortcutItems());
    HideCopiesAndPaperSourceDefault(m_uiParams);
    ZX_RETURN_IF_FAILED(HideEach(m_uiParams, {Feature::TouchByUser, Feature::PrintingShortcut,
                                              Feature::AllSettingsfor_PS, Feature::ShortcutBitmaps}));
    if (m_bindingAndMarginsSuppressed) {
        ZX_RETURN_IF_FAILED(HideEach(m_uiParams, {Feature::DocumentBinding, Feature::DocumentMargins}));
    }
    return HideEach(m_uiParams,
                    {Feature::MediaTypePrev, Feature::OutputQualityPrev, Feature::PS_Schema, Feature::MonoConfig});
}

DWORD VUIProperties::PaperIndex() const noexcept { return zx::CurrentPaperIndex(CoreHelper()); }

bool VUIProperties::IsCustomPaperSize() const noexcept { return zx::IsCustomPaperSize(CoreHelper()); }

LONG VUIProperties::PaperItemPosition(DWORD paperIndex) const noexcept {
    return zx::PaperItemPosition(m_uiParams, CoreHelper(), paperIndex);
}

VUICallbackContext::VUICallbackContext(POEMCUIPPARAM params, PCPSUICBPARAM callbackParams) noexcept
    : m_callbackParams(callbackParams) {
    TakeParams(params);
    if (m_uiObject != nullptr) SetInterfaces(m_uiObject->DriverUI(), m_uiObject->CoreHelper());
}

VUICallbackContext::VUICallbackContext(POEMCUIPPARAM params, IPrintOemDriverUI* driverUI, IBiDiData* biDiData,
                                       IPrintCoreHelper* coreHelper) noexcept
    : m_biDiData(biDiData) {
    TakeParams(params);
    SetInterfaces(driverUI, coreHelper);
}

void VUICallbackContext::TakeParams(POEMCUIPPARAM params) noexcept {
    AttachSheet(params);
    if (params == nullptr) return;
    SetPrivateDevMode(static_cast<VPrivateDevMode*>(params->pOEMDM));
    m_uiObject = zx::UiPluginOf(params);
}

POPTITEM VUICallbackContext::CurrentItem() const noexcept {
    return m_callbackParams != nullptr ? m_callbackParams->pCurItem : nullptr;
}

HRESULT VUICallbackContext::CommitCallbackOptItem(POPTITEM item) const noexcept {
    if (item == nullptr) return S_OK;
    if (!HasOptionArray(item)) return E_FAIL;
    if (UiObject() != nullptr) {
        HandBackDocumentItem(*item);
    } else {
        item->Flags |= OPTIF_CHANGED;
    }
    return S_OK;
}
