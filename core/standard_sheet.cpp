// The UI plug-in object on the core driver's standard document page: the dependent-settings rules
// run for each callback reason, the plug-in's labels on the quality buttons and the two-sided
// control, and the Printing Shortcuts pages told what changed there.
#include "core/ui_interface.h"
#include "resources/resource_libraries.h"
#include "settings/feature_keywords.h"
#include "settings/option_access.h"
#include "settings/private_devmode.h"
#include "ui/shortcuts_page.h"
#include "ui/standard_page_labels.h"

namespace {

// The options of a common UI item that stand on the standard page's second tab ("dialog page 2").
constexpr BYTE kSecondDialogPage = 2;

// What the standard page announces when it becomes active and finds these items.
struct Announcement {
    const char* feature;
    const wchar_t* text;
};
constexpr Announcement kActivationAnnouncements[] = {
    {Feature::PaperSize, L"Get Media size option Succeeds...\n"},
    {Feature::MediaType, L"Get Media type option Succeeds...\n"},
    {Feature::InputBin, L"Get Input bin option Succeeds...\n"},
    {Feature::BorderlessPrint, L"Get Borderless option Succeeds...\n"},
};

bool HasSelection(const OPTITEM* item, LONG selection) { return item != nullptr && item->Sel == selection; }

HWND DialogOf(const VUICallbackContext& context) {
    return context.CallbackParams() != nullptr ? context.CallbackParams()->hDlg : nullptr;
}

}  // namespace

HRESULT VUIInterfaceImpl::OnDocumentSelectionChanged(const VUICallbackContext& context) {
    const HRESULT hr = m_rules.OnSelectionChanged(context, m_properties.get(), this, this);
    if (DialogOf(context) != nullptr) zx::GuardQualityLabels();
    return hr;
}

HRESULT VUIInterfaceImpl::OnDocumentPageActive(const VUICallbackContext& context) {
    const HRESULT hr = m_rules.OnPageActive(context, m_deviceLanguage, this);
    if (m_deviceLanguage != Option::PCLmS) {
        for (const Announcement& announcement : kActivationAnnouncements) {
            if (context.Item(announcement.feature) != nullptr) ::OutputDebugStringW(announcement.text);
        }
    }
    if (DialogOf(context) != nullptr) SetUpStandardPageLabels(context);
    return hr;
}

HRESULT VUIInterfaceImpl::OnDocumentPageLeft(const VUICallbackContext& context) { return m_rules.OnPageLeft(context); }

HRESULT VUIInterfaceImpl::OnDocumentApply(const VUICallbackContext& context) { return m_rules.OnApply(context); }

// Focus on an item: booklet binding needs two-sided printing; in the PCL device language the
// labels are put back, as the common UI may have redrawn them.
HRESULT VUIInterfaceImpl::OnDocumentItemFocus(const VUICallbackContext& context) {
    POPTITEM duplex = context.Item(Feature::Duplex);
    POPTITEM binding = context.Item(Feature::DocumentBinding);
    if (HasSelection(duplex, 0) && binding != nullptr && (binding->Sel == 1 || binding->Sel == 2)) {
        binding->Sel = 0;
        context.CommitCallbackOptItem(binding);
    }
    if (m_deviceLanguage != Option::PCL) return S_OK;
    const bool windows = DialogOf(context) != nullptr;
    if (windows && HasSelection(context.Item(Feature::ZXPrintOnBothSidesManually), 1)) {
        zx::ShowTwoSidedLabel(m_twoSidedControl, zx::kManualTwoSidedLabel);
    }
    context.CommitCallbackOptItem(context.Item(Feature::MediaType));
    if (!windows) return S_OK;
    const OPTITEM* current = context.CurrentItem();
    if (current == nullptr || current->DlgPageIdx != kSecondDialogPage) {
        zx::SetQualityLabelTexts();
    } else {
        zx::GuardQualityLabels();
    }
    return S_OK;
}

HRESULT VUIInterfaceImpl::OnDocumentItemsReverted(const VUICallbackContext& context) {
    if (DialogOf(context) != nullptr) {
        zx::GuardQualityLabels();
        if (zx::KeywordIs(context.CurrentOption(Feature::DuplexUnit), Option::False) &&
            zx::GetSystemMajorVersion() >= 6) {
            zx::GuardTwoSidedLabel(m_twoSidedControl);
        }
    }
    return m_rules.OnItemsReverted(context);
}

// The quality buttons and the two-sided control get the plug-in's labels; the control is widened
// once per sheet, to make room for the longer label.
void VUIInterfaceImpl::SetUpStandardPageLabels(const VUICallbackContext& context) {
    HWND page = DialogOf(context);
    if (POPTITEM quality = context.Item(Feature::PageOutputQuality); quality != nullptr && quality->pOptType) {
        zx::SetUpQualityLabels(page, quality->pOptType->BegCtrlID, m_deviceLanguage == Option::PCLmS);
    }
    POPTITEM duplex = context.Item(Feature::Duplex);
    if (duplex == nullptr || duplex->pOptType == nullptr) return;
    const bool version6 = zx::GetSystemMajorVersion() >= 6;
    VPrivateDevMode* block = context.PrivateDevMode();
    const bool widen = version6 && block != nullptr && block->dwDuplexCtrlWidened == 0;
    m_twoSidedControl =
        zx::SetUpTwoSidedControl(page, static_cast<WORD>(duplex->pOptType->BegCtrlID + (version6 ? 1 : 0)), widen);
    if (widen && m_twoSidedControl != nullptr) block->dwDuplexCtrlWidened = 1;
    if (const UINT label = TwoSidedLabelAtActivation(context); label != 0) {
        zx::ShowTwoSidedLabel(m_twoSidedControl, label);
    }
}

// With a two-sided unit the label says whether the unit or the user turns the pages; without one
// it is the manual label, unless the printer cannot print both sides by hand either (0: leave it).
UINT VUIInterfaceImpl::TwoSidedLabelAtActivation(const VUICallbackContext& context) const {
    if (m_duplexUnitInstalled != 0) {
        return HasSelection(context.Item(Feature::ZXPrintOnBothSidesManually), 0) ? zx::kTwoSidedLabel
                                                                                  : zx::kManualTwoSidedLabel;
    }
    if (zx::KeywordIs(context.CurrentOption(Feature::ZXManualDuplexSupport), Option::Off)) return 0;
    return zx::kManualTwoSidedLabel;
}

void VUIInterfaceImpl::RefreshTwoSidedLabel(const VUICallbackContext& context) {
    if (DialogOf(context) == nullptr) {
        zx::SetTwoSidedLabelInForce(zx::kManualTwoSidedLabel);
        return;
    }
    zx::ShowTwoSidedLabel(m_twoSidedControl, zx::kManualTwoSidedLabel);
}

// The two-sided control's label follows the manual two-sided item: on is the manual label, off
// the unit's. Between changes the control keeps the label in force against the common UI.
void VUIInterfaceImpl::FollowManualTwoSidedLabel(const VUICallbackContext& context) {
    const OPTITEM* manual = context.Item(Feature::ZXPrintOnBothSidesManually);
    if (HasSelection(manual, 0)) m_manualOffSeen = true;
    const bool windows = DialogOf(context) != nullptr && m_twoSidedControl != nullptr;
    if (windows) zx::GuardTwoSidedLabel(m_twoSidedControl);
    const OPTITEM* current = context.CurrentItem();
    if (current == nullptr || current != manual || context.CallbackParams() == nullptr) return;
    const LONG before = context.CallbackParams()->OldSel;
    if (windows) zx::UnguardTwoSidedLabel(m_twoSidedControl);
    if (before == 0 && current->Sel == 1) {
        zx::ShowTwoSidedLabel(windows ? m_twoSidedControl : nullptr, zx::kManualTwoSidedLabel);
        if (windows && m_manualOffSeen) zx::GuardTwoSidedLabel(m_twoSidedControl);
    } else if (before == 1 && current->Sel == 0) {
        zx::ShowTwoSidedLabel(windows ? m_twoSidedControl : nullptr, zx::kTwoSidedLabel);
    }
}

void VUIInterfaceImpl::OnStandardItemsChanged(HWND standardPage, const VUIProperties& settings) {
    for (const auto& page : m_pages) page->OnStandardItemsChanged(standardPage, settings);
}

void VUIInterfaceImpl::OnStandardSelectionChanged(const VUIProperties& settings) {
    for (const auto& page : m_pages) page->OnStandardSelectionChanged(settings);
}
