// The private messages through which the wrappers of the page's controls (and the page itself)
// tell the page's dialog what the user did.
#pragma once

#include <windows.h>

// A shortcut of the list became selected: lParam is the list item's index.
inline constexpr UINT WMU_SHORTCUT_SELECTED = WM_USER + 1;
// A setting's combo box changed: wParam is the new selection, lParam the combo's control id.
inline constexpr UINT WMU_SETTING_CHANGED = WM_USER + 2;
// The user named the pending shortcut: lParam is the NMLVDISPINFOW of the finished edit.
inline constexpr UINT WMU_NAME_ACCEPTED = WM_USER + 5;
// Start editing the label of list item wParam again after a refused name. Posted rather than done
// inside the list view's end-of-edit notification, where a new edit would be torn down again by
// the list view that is still closing the old one.
inline constexpr UINT WMU_RESTART_LABEL_EDIT = WM_USER + 6;
