// What the Printing Shortcuts page's source files share: the page's fixed numbers and small
// helpers for its controls. Not for use outside the page.
#pragma once

#include "resources/resource_libraries.h"
#include "settings/option_items.h"
#include "ui/page_resource_ids.h"

#include <windows.h>

#include <iterator>
#include <string_view>

namespace page {

// The labels of the five setting positions.
inline constexpr int32_t kSettingLabels[] = {IDC_PS_LABEL_0, IDC_PS_LABEL_1, IDC_PS_LABEL_2, IDC_PS_LABEL_3,
                                             IDC_PS_LABEL_4};
inline constexpr size_t kSettingPositions = std::size(kSettingLabels);

inline void EnableControl(HWND dialog, int32_t id, bool enable) {
    if (HWND control = ::GetDlgItem(dialog, id)) ::EnableWindow(control, enable);
}

inline void SetDialogText(HWND dialog, int32_t id, UINT stringId) {
    if (HWND control = ::GetDlgItem(dialog, id)) zx::SetUiText(control, stringId);
}

inline bool EqualIgnoringCase(std::wstring_view a, std::wstring_view b) {
    return ::CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()), TRUE) ==
           CSTR_EQUAL;
}

}  // namespace page
