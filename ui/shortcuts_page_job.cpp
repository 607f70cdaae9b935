// The Printing Shortcuts page and the core driver's items: a shortcut handed to the job, and the
// standard page's controls put in line with the items when the standard page changed them.
#include "ui/shortcuts_page.h"

#include "resources/resource_libraries.h"
#include "resources/string_ids.h"
#include "settings/feature_keywords.h"
#include "settings/option_items.h"
#include "shortcuts/shortcut_job.h"
#include "ui/page_messages.h"
#include "ui/shortcuts_page_parts.h"
#include "ui/ui_control.h"

#include <commctrl.h>

#include <algorithm>

using namespace page;

// The standard page's controls of the shortcut settings follow their items, and so do the page's
// own boxes, as far as the selected shortcut offers the items' options.
void VPrintingShortcutPropPage::OnStandardItemsChanged(HWND standardPage, const VUIProperties& properties) {
    if (!m_shortcuts) return;
    if (standardPage != nullptr) PutStandardControlsInLine(standardPage, properties);
    const int32_t selected = SelectedRecord();
    if (selected < 0 || m_dialog == nullptr) return;
    const PrintShortcutRecord& record = m_shortcuts->Records()[static_cast<size_t>(selected)];
    for (size_t position = 0; position < record.features.size() && position < kSettingPositions; ++position) {
        const POPTITEM item = properties.Item(record.features[position].c_str());
        if (item == nullptr) continue;
        const int32_t shown = m_shortcuts->ToShortcutOption(record, position, item->Sel);
        if (shown >= 0) {
            ::SendDlgItemMessageW(m_dialog, ComboOfSettingPosition(position), CB_SETCURSEL, static_cast<WPARAM>(shown),
                                  0);
        }
    }
}

void VPrintingShortcutPropPage::PutStandardControlsInLine(HWND standardPage, const VUIProperties& properties) {
    const bool version6 = zx::GetSystemMajorVersion() >= 6;
    VPrivateDevMode* block = properties.PrivateDevMode();
    auto setList = [standardPage](WORD id, LONG position) {
        ::SendDlgItemMessageW(standardPage, id, CB_SETCURSEL, static_cast<WPARAM>(position), 0);
    };
    auto checkButtons = [standardPage](WORD first, LONG selection) {
        if (selection < 0 || selection > 2) return;
        for (LONG button = 0; button < 3; ++button) {
            ::SendDlgItemMessageW(standardPage, first + 2 * (button + 1), BM_SETCHECK,
                                  button == selection ? BST_CHECKED : BST_UNCHECKED, 0);
        }
    };
    for (const auto& [combo, feature] : m_featureMap) {
        const POPTITEM item = feature.empty() ? nullptr : properties.Item(feature.c_str());
        if (item == nullptr || item->pOptType == nullptr || item->pOptType->pOptParam == nullptr) continue;
        const WORD first = item->pOptType->BegCtrlID;
        if (feature == Feature::MediaType) {
            // The list leaves out the media types that are hidden, as those a black-only device
            // cannot print on: the selection's place among the shown ones.
            LONG position = 0;
            for (LONG option = 0; option < item->Sel && option < item->pOptType->Count; ++option) {
                if (!(item->pOptType->pOptParam[option].Flags & OPTPF_HIDE)) ++position;
            }
            setList(static_cast<WORD>(first + 2), position);
        } else if (feature == Feature::PageOutputQuality) {
            checkButtons(first, item->Sel);
        } else if (feature == Feature::DocumentNUp && block != nullptr) {
            const LONG nup = static_cast<LONG>(block->dwNUpIndex);
            if (!zx::IsOptionIndex(*item, nup)) continue;
            setList(static_cast<WORD>(first + (version6 ? 4 : 2)), nup);
            item->Sel = nup;
            item->Flags |= OPTIF_CHANGED;
        } else if (feature == Feature::Duplex) {
            if (version6) {
                setList(static_cast<WORD>(first + 2), item->Sel);
            } else {
                checkButtons(first, item->Sel);
            }
        }
    }
}

void VPrintingShortcutPropPage::OnStandardSelectionChanged(const VUIProperties& properties) {
    if (!m_shortcuts) return;
    const int32_t selected = SelectedRecord();
    if (selected < 0) return;
    const PrintShortcutRecord& record = m_shortcuts->Records()[static_cast<size_t>(selected)];
    if (!record.isBuiltIn) return;
    // Every setting whose item exists gives the same picture: written once.
    for (const auto& [combo, feature] : m_featureMap) {
        if (feature.empty() || properties.Item(feature.c_str()) == nullptr) continue;
        m_shortcuts->WriteCustomBitmapId(zx::StandardSheetModifiedBitmap(record.bitmapId));
        return;
    }
}

// --- Handing shortcuts to the job --------------------------------------------------------------

void VPrintingShortcutPropPage::ApplyShortcutToJob(HWND dialog, int32_t recordIndex, bool commit, DWORD mode) {
    if (recordIndex < 0 || recordIndex >= m_shortcuts->Count()) return;
    const PrintShortcutRecord record = m_shortcuts->Records()[static_cast<size_t>(recordIndex)];
    const auto duplexSetting = std::find(record.features.begin(), record.features.end(), Feature::Duplex);
    if (mode == 2 && duplexSetting != record.features.end()) {
        if (POPTITEM duplex = Item(Feature::Duplex)) {
            if (m_uiParams->pPublicDM != nullptr) m_uiParams->pPublicDM->dmDuplex = 0;
            duplex->Sel = 0;
            const int32_t combo = ComboOfSettingPosition(static_cast<size_t>(duplexSetting - record.features.begin()));
            if (::SendDlgItemMessageW(dialog, combo, CB_GETCURSEL, 0, 0) == CB_ERR) {
                ::OutputDebugStringW(L"No item is selected...");
            }
            HandToCoreDriver(duplex);
        }
    }
    for (size_t position = 0; position < record.features.size() && position < kSettingPositions; ++position) {
        ApplySettingToJob(dialog, record, position, commit, mode);
    }
    if (POPTITEM orientation = Item(Feature::Orientation)) HandToCoreDriver(orientation);
    POPTITEM paper = Item(Feature::PaperSize);
    POPTITEM bin = Item(Feature::InputBin);
    if (paper != nullptr && bin != nullptr) {
        m_properties->CommitOptItem(paper);
        m_properties->CommitOptItem(bin);
    }
}

// One setting of a shortcut, as its combo box shows it, handed to the feature's item.
void VPrintingShortcutPropPage::ApplySettingToJob(HWND dialog, const PrintShortcutRecord& record, size_t position,
                                                  bool commit, DWORD mode) {
    if (position >= record.features.size()) return;
    const std::string& feature = record.features[position];
    POPTITEM item = Item(feature.c_str());
    if (item == nullptr || (feature == Feature::Duplex && (item->Flags & OPTIF_DISABLED))) return;
    const LRESULT selection = ::SendDlgItemMessageW(dialog, ComboOfSettingPosition(position), CB_GETCURSEL, 0, 0);
    const int32_t comboSelection = selection == CB_ERR ? 0 : static_cast<int32_t>(selection);
    if (feature == Feature::DocumentNUp) {
        if (VPrivateDevMode* block = PrivateBlock()) {
            block->dwNUpIndex = static_cast<DWORD>(m_shortcuts->ToDriverOption(record, position, comboSelection));
        }
        if (!commit) return;
    }
    if (mode != 0) {
        const LONG itemSelection =
            zx::ItemSelectionForSetting(*m_shortcuts, record, position, comboSelection, *m_properties);
        if (selection != CB_ERR && itemSelection >= 0 && item->pOptType != nullptr &&
            itemSelection < item->pOptType->Count) {
            item->Sel = itemSelection;
        }
        item->Flags |= OPTIF_CHANGED;
        ::SendMessageW(::GetParent(dialog), PSM_CHANGED, reinterpret_cast<WPARAM>(dialog), 0);
    }
    if (commit) m_properties->CommitOptItem(item);
}

HRESULT VPrintingShortcutPropPage::HandToCoreDriver(POPTITEM item) const {
    if (item == nullptr || !m_driverUI || m_uiParams == nullptr) return E_FAIL;
    return m_driverUI->DrvUpdateUISetting(m_uiParams->poemuiobj, item, 0, OEMCUIP_DOCPROP);
}

POPTITEM VPrintingShortcutPropPage::Item(const char* feature) const {
    return m_properties != nullptr ? m_properties->Item(feature) : nullptr;
}

// The media type or quality was chosen by the user: snapping no longer changes them.
void VPrintingShortcutPropPage::SetTouchByUser() {
    if (POPTITEM touch = Item(Feature::TouchByUser)) {
        touch->Sel = 1;
        m_properties->CommitOptItem(touch);
        touch->Flags |= OPTIF_HIDE;
    }
}
