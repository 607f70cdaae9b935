// The Printing Shortcuts page: what the user does with it (picking a shortcut, changing a
// setting, Save as, Delete) and how it shows a shortcut.
#include "ui/shortcuts_page.h"

#include "resources/resource_libraries.h"
#include "resources/string_ids.h"
#include "settings/feature_keywords.h"
#include "settings/option_items.h"
#include "shortcuts/shortcut_job.h"
#include "ui/page_messages.h"
#include "ui/shortcuts_page_parts.h"

#include <commctrl.h>

#include <algorithm>

using namespace page;

namespace {

// The most shortcuts a collection holds, the one being named included.
constexpr int32_t kMaxShortcuts = 25;

}  // namespace

// --- The user's actions ------------------------------------------------------------------------

void VPrintingShortcutPropPage::OnCommand(HWND dialog, WORD controlId, WORD code) {
    const auto control = m_controls.find(controlId);
    if (control == m_controls.end()) return;
    control->second->OnCommand(dialog, code);
    if (code != BN_CLICKED) return;
    if (controlId == IDC_PS_SAVE_AS) StartNaming(dialog);
    if (controlId == IDC_PS_DELETE) DeleteSelectedShortcut(dialog);
}

void VPrintingShortcutPropPage::OnShortcutSelected(HWND dialog, int listIndex) {
    if (m_fillingList || !m_shortcuts || m_properties == nullptr) return;
    const int32_t recordIndex = RecordOfListItem(listIndex);
    if (recordIndex < 0 || recordIndex >= m_shortcuts->Count()) return;
    PrintShortcutRecord record = m_shortcuts->Records()[static_cast<size_t>(recordIndex)];

    const auto media = std::find(record.features.begin(), record.features.end(), Feature::MediaType);
    if (media != record.features.end()) {
        const size_t position = static_cast<size_t>(media - record.features.begin());
        const int32_t chosen = m_shortcuts->ToDriverOption(record, position, record.SettingOf(Feature::MediaType));
        const auto& job = m_shortcuts->CurrentSettings();
        const auto current = job.find(Feature::MediaType);
        if (chosen != (current == job.end() ? 0 : current->second)) SetTouchByUser();
    }
    SetPageTexts(dialog, record);
    if (!m_properties->ReadOnly()) {
        PrintShortcutRecord& shown = m_shortcuts->Records()[static_cast<size_t>(recordIndex)];
        FillCombos(dialog, shown);
        ApplyShortcutToJob(dialog, recordIndex, false, 2);
    }
    CheckDuplex(dialog, record);
    UpdateButtons(dialog, record);

    zx::UiString locked;
    zx::LoadUiString(StringId::LockedShortcutName, locked);
    const bool lockedShortcut = std::wstring_view(record.name) == locked;
    if (!lockedShortcut && !m_properties->ReadOnly()) {
        for (size_t position = 0; position < kSettingPositions; ++position) {
            EnableControl(dialog, kSettingLabels[position], true);
            EnableControl(dialog, ComboOfSettingPosition(position), true);
        }
        ApplyMaximumResolutionRule(dialog);
        if (m_properties->BindingAndMarginsSuppressed()) {
            if (VPrintShortcutComboBox* duplex = ComboOfFeature(Feature::Duplex)) {
                ::EnableWindow(duplex->Window(), FALSE);
            }
        }
    } else if (lockedShortcut) {
        for (size_t position = 0; position < kSettingPositions; ++position) {
            EnableControl(dialog, ComboOfSettingPosition(position), false);
        }
    }
}

// Save as, first half: the user names the pending shortcut in the list.
void VPrintingShortcutPropPage::StartNaming(HWND) {
    VUICtrlPSPrintingShortcutListControl* list = List();
    if (list == nullptr) return;
    const std::wstring newName = NewShortcutName();
    LVFINDINFOW find{};
    find.flags = LVFI_STRING | LVFI_WRAP;
    find.psz = newName.c_str();
    const LRESULT item =
        ::SendMessageW(list->Window(), LVM_FINDITEMW, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(&find));
    if (item < 0) return;
    ::SetFocus(list->Window());
    ::SendMessageW(list->Window(), LVM_EDITLABELW, static_cast<WPARAM>(item), 0);
}

// Save as, second half: the list accepted the name the user typed.
void VPrintingShortcutPropPage::OnNameAccepted(HWND dialog, const NMLVDISPINFOW* edit) {
    VUICtrlPSPrintingShortcutListControl* list = List();
    const int32_t pending = m_shortcuts ? m_shortcuts->PendingIndex() : -1;
    if (edit == nullptr || edit->item.pszText == nullptr || list == nullptr || pending < 0) return;
    const int item = edit->item.iItem;
    const std::wstring name = edit->item.pszText;
    const std::wstring newName = NewShortcutName();

    if (m_shortcuts->Count() > kMaxShortcuts) {
        zx::ShowUiMessage(dialog, StringId::TooManyShortcutsMessage, StringId::ShortcutMessageCaption);
        ::SendMessageW(list->Window(), LVM_DELETEITEM, static_cast<WPARAM>(item), 0);
        m_shortcuts->Records().erase(m_shortcuts->Records().begin() + pending);
        list->SelectItem(dialog, item > 0 ? item - 1 : 0);
        return;
    }
    if (EqualIgnoringCase(name, newName)) return;
    if (m_shortcuts->FindByNameIgnoringCase(name) >= 0) {
        zx::ShowUiMessage(dialog, StringId::DuplicateNameMessage, StringId::ShortcutMessageCaption);
        LVITEMW text{};
        text.pszText = const_cast<wchar_t*>(newName.c_str());
        ::SendMessageW(list->Window(), LVM_SETITEMTEXTW, static_cast<WPARAM>(item), reinterpret_cast<LPARAM>(&text));
        ::PostMessageW(dialog, WMU_RESTART_LABEL_EDIT, static_cast<WPARAM>(item), 0);
        return;
    }
    PrintShortcutRecord& record = m_shortcuts->Records()[static_cast<size_t>(pending)];
    for (size_t position = 0; position < record.features.size() && position < kSettingPositions; ++position) {
        const LRESULT selection = ::SendDlgItemMessageW(dialog, ComboOfSettingPosition(position), CB_GETCURSEL, 0, 0);
        if (selection != CB_ERR) record.settings[record.features[position]] = static_cast<int32_t>(selection);
    }
    record.SetName(name);
    record.isNamed = true;
    EnableControl(dialog, IDC_PS_SAVE_AS, false);
}

void VPrintingShortcutPropPage::DeleteSelectedShortcut(HWND dialog) {
    VUICtrlPSPrintingShortcutListControl* list = List();
    if (list == nullptr || !m_shortcuts) return;
    const int mark = list->SelectionMark();
    if (mark < 0) return;
    const int32_t record = RecordOfListItem(mark);
    ::SendMessageW(list->Window(), LVM_DELETEITEM, static_cast<WPARAM>(mark), 0);
    if (record >= 0) m_shortcuts->DeleteRecord(record);
    ::SendMessageW(list->Window(), LVM_SETCOLUMNWIDTH, 0, LVSCW_AUTOSIZE_USEHEADER);
    list->SelectItem(dialog, mark > 0 ? mark - 1 : 0);
    ::SetFocus(list->Window());
}

void VPrintingShortcutPropPage::OnSettingChanged(HWND dialog, int32_t selection, int32_t comboId) {
    if (!m_shortcuts || m_properties == nullptr) return;
    m_changedList = List();
    const auto combo = m_controls.find(comboId);
    auto* box = combo == m_controls.end() ? nullptr : dynamic_cast<VPrintShortcutComboBox*>(combo->second.get());
    const int32_t source = SelectedRecord();
    if (box == nullptr || source < 0) return;
    const std::string feature = box->Feature();

    const PrintShortcutRecord& current = m_shortcuts->Records()[static_cast<size_t>(source)];
    if (current.SettingOf(feature) == selection) return;
    PrintShortcutRecord pending = zx::PendingShortcutFrom(current, source);
    pending.settings[feature] = selection;

    if (feature == Feature::MediaType || feature == Feature::PageOutputQuality) SetTouchByUser();
    if (POPTITEM binding = Item(Feature::DocumentBinding)) {
        const bool singleSided = feature == Feature::Duplex && selection == 0;
        const bool notTwoUp = feature == Feature::DocumentNUp && selection != 1;
        if ((singleSided || notTwoUp) && (binding->Sel == 1 || binding->Sel == 2)) {
            binding->Sel = 0;
            m_properties->CommitOptItem(binding);
        }
    }
    if (current.isBuiltIn) m_shortcuts->WriteCustomBitmapId(pending.bitmapId);
    MakePendingShortcut(dialog, std::move(pending));
    ::SetFocus(box->Window());

    // The changed setting reaches the core driver's item at once, so that the standard pages
    // and Apply see what the page shows.
    const int32_t made = m_shortcuts->PendingIndex();
    const int position = SettingPositionOfCombo(comboId);
    if (made >= 0 && position >= 0) {
        ApplySettingToJob(dialog, m_shortcuts->Records()[static_cast<size_t>(made)], static_cast<size_t>(position),
                          false, 1);
    }
}

// Puts `pending` in place of the pending shortcut (or adds it) and selects its new list item.
void VPrintingShortcutPropPage::MakePendingShortcut(HWND dialog, PrintShortcutRecord pending) {
    VUICtrlPSPrintingShortcutListControl* list = List();
    if (list == nullptr) return;
    if (m_shortcuts->PendingIndex() >= 0) {
        const int last = list->ItemCount() - 1;
        if (last >= 0) ::SendMessageW(list->Window(), LVM_DELETEITEM, static_cast<WPARAM>(last), 0);
    }
    const int32_t index = m_shortcuts->SetPendingShortcut(std::move(pending), NewShortcutName());
    list->AddShortcutItem(dialog, m_shortcuts->Records()[static_cast<size_t>(index)]);
    EnableControl(dialog, IDC_PS_SAVE_AS, true);
    EnableControl(dialog, IDC_PS_DELETE, true);
}

// The job's settings that the selected shortcut does not have become the pending shortcut's.
void VPrintingShortcutPropPage::TakeOverJobSettings(HWND dialog, bool writeBitmap) {
    m_shortcuts->SetCurrentSettings(zx::CurrentJobSettings(*m_properties, *m_shortcuts));
    const int32_t source = SelectedRecord();
    if (source < 0) return;
    PrintShortcutRecord pending = m_shortcuts->Records()[static_cast<size_t>(source)];
    const bool customPaper = m_properties->IsCustomPaperSize();
    bool changed = false;
    for (size_t position = 0; position < pending.features.size(); ++position) {
        const int32_t before = pending.SettingOf(pending.features[position]);
        const int32_t shown = zx::TakeOverJobSetting(*m_shortcuts, pending, position, customPaper);
        changed |= shown >= 0 && shown != before;
    }
    if (!changed) return;
    const PrintShortcutRecord& current = m_shortcuts->Records()[static_cast<size_t>(source)];
    PrintShortcutRecord made = zx::PendingShortcutFrom(current, source);
    made.settings = pending.settings;
    if (writeBitmap && current.isBuiltIn) m_shortcuts->WriteCustomBitmapId(made.bitmapId);
    MakePendingShortcut(dialog, std::move(made));
}

// --- Showing a shortcut ------------------------------------------------------------------------

void VPrintingShortcutPropPage::SetPageTexts(HWND dialog, const PrintShortcutRecord& record) {
    for (size_t position = 0; position < kSettingPositions; ++position) {
        const bool present = position < record.features.size();
        HWND label = ::GetDlgItem(dialog, kSettingLabels[position]);
        if (label != nullptr) {
            if (present) {
                zx::SetUiText(label, static_cast<UINT>(record.featureIds[position]));
            } else {
                ::SetWindowTextW(label, L"");
            }
        }
        if (HWND combo = ::GetDlgItem(dialog, ComboOfSettingPosition(position))) {
            ::ShowWindow(combo, present ? SW_SHOW : SW_HIDE);
        }
    }
}

void VPrintingShortcutPropPage::FillCombos(HWND dialog, PrintShortcutRecord& record) {
    for (auto& [id, control] : m_controls) control->Refresh(dialog, record, id);
}

void VPrintingShortcutPropPage::UpdateButtons(HWND dialog, const PrintShortcutRecord& record) {
    if (m_properties != nullptr && m_properties->ReadOnly()) return;
    const bool restrictedShared = m_shortcuts->Store().IsRestricted() && record.inPrinterData;
    EnableControl(dialog, IDC_PS_DELETE, !record.isBuiltIn && !restrictedShared);
    EnableControl(dialog, IDC_PS_SAVE_AS, !record.isNamed);
}

// Without a two-sided unit (and without manual two-sided support) the two-sided setting is the
// manual one, and its label says so.
void VPrintingShortcutPropPage::CheckDuplex(HWND dialog, const PrintShortcutRecord& record) {
    if (m_properties->ManualDuplexSupported() != 0) return;
    if (!zx::KeywordIs(m_properties->CurrentOption(Feature::DuplexUnit), Option::False)) return;
    m_duplexUnavailable = 1;
    const auto duplex = std::find(record.features.begin(), record.features.end(), Feature::Duplex);
    const size_t position = static_cast<size_t>(duplex - record.features.begin());
    if (duplex != record.features.end() && position < kSettingPositions) {
        SetDialogText(dialog, kSettingLabels[position], StringId::ManualDuplexLabel);
    }
}

// With maximum resolution on, the print quality is fixed. A read-only sheet keeps it disabled.
void VPrintingShortcutPropPage::ApplyMaximumResolutionRule(HWND) {
    VPrintShortcutComboBox* quality = ComboOfFeature(Feature::PageOutputQuality);
    if (quality == nullptr) return;
    const POPTITEM maxDpi = Item(Feature::ZXMaxDpi);
    const bool locked = maxDpi != nullptr && maxDpi->Sel != 0;
    ::EnableWindow(quality->Window(), !locked && !m_properties->ReadOnly());
}
