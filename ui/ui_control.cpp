#include "ui/ui_control.h"

#include "resources/resource_libraries.h"
#include "ui/page_messages.h"
#include "ui/page_resource_ids.h"

#include <commctrl.h>

#include <iterator>

namespace {

// The combo boxes of the setting positions 0 to 4.
constexpr int32_t kSettingCombos[] = {IDC_PS_COMBO_0, IDC_PS_COMBO_1, IDC_PS_COMBO_2, IDC_PS_COMBO_3, IDC_PS_COMBO_4};

}  // namespace

int SettingPositionOfCombo(int32_t controlId) noexcept {
    for (size_t position = 0; position < std::size(kSettingCombos); ++position) {
        if (kSettingCombos[position] == controlId) return static_cast<int>(position);
    }
    return -1;
}

int32_t ComboOfSettingPosition(size_t position) noexcept {
    return position < std::size(kSettingCombos) ? kSettingCombos[position] : 0;
}

VUIControl::VUIControl(int32_t controlId) : m_controlId(controlId) {}

HRESULT VUIControl::Attach(HWND dialog) {
    m_window = ::GetDlgItem(dialog, m_controlId);
    return S_OK;
}

HRESULT VUIControl::OnCommand(HWND, UINT) { return S_OK; }

LRESULT VUIControl::OnNotify(HWND, WPARAM, NMHDR*) { return 0; }

HRESULT VUIControl::Refresh(HWND, PrintShortcutRecord&, int32_t) { return S_OK; }

HRESULT VButtonControl::OnCommand(HWND dialog, UINT code) { return code == BN_CLICKED ? OnClicked(dialog) : E_NOTIMPL; }

HRESULT VButtonControl::OnClicked(HWND) { return S_OK; }

HRESULT VComboBoxControl::OnCommand(HWND dialog, UINT code) {
    return code == CBN_SELCHANGE ? OnSelChange(dialog, 0) : E_NOTIMPL;
}

HRESULT VComboBoxControl::OnSelChange(HWND, WPARAM) { return S_OK; }

HRESULT VComboBoxControl::AddStringById(HWND, UINT stringId) {
    zx::UiString text;
    if (zx::LoadUiString(stringId, text) == 0 && zx::LoadUiString(zx::FallbackStringLibrary(), stringId, text) == 0) {
        return HRESULT_FROM_WIN32(::GetLastError());
    }
    const LRESULT added = ::SendMessageW(Window(), CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text));
    return added == CB_ERR || added == CB_ERRSPACE ? E_FAIL : S_OK;
}

void VComboBoxControl::ResetContent() {
    // CB_DELETESTRING answers the number of entries left, and CB_ERR once none is left.
    while (::SendMessageW(Window(), CB_DELETESTRING, 0, 0) != CB_ERR) {
    }
}

HRESULT VPrintShortcutComboBox::Refresh(HWND dialog, PrintShortcutRecord& record, int32_t controlId) {
    return Fill(dialog, record, controlId);
}

HRESULT VPrintShortcutComboBox::Fill(HWND dialog, PrintShortcutRecord& record, int32_t controlId) {
    Attach(dialog);
    ResetContent();
    const int position = SettingPositionOfCombo(controlId);
    if (position < 0 || static_cast<size_t>(position) >= record.optionNames.size()) return S_OK;
    const std::map<int32_t, std::string>& options = record.optionNames[static_cast<size_t>(position)];
    if (controlId == IDC_PS_COMBO_3 && options.empty()) return S_OK;

    const int32_t current = record.settings[m_feature];
    HRESULT hr = S_OK;
    for (const auto& [optionIndex, key] : options) {
        if (key.empty()) continue;
        const std::optional<int32_t> stringId = LookupResourceName(key);
        if (!stringId) continue;
        hr = AddStringById(dialog, static_cast<UINT>(*stringId));
        if (FAILED(hr)) break;
    }
    // The entries stand in option-index order: an option's index is its position in the list.
    ::SendMessageW(Window(), CB_SETCURSEL, static_cast<WPARAM>(current), 0);
    return hr;
}

HRESULT VPrintShortcutComboBox::OnSelChange(HWND dialog, WPARAM) {
    const LRESULT selection = ::SendMessageW(Window(), CB_GETCURSEL, 0, 0);
    if (selection != CB_ERR) {
        ::SendMessageW(dialog, WMU_SETTING_CHANGED, static_cast<WPARAM>(selection), static_cast<LPARAM>(ControlId()));
    }
    return S_FALSE;
}
