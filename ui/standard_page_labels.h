// The plug-in's labels on the core driver's standard document page: the three print-quality
// buttons and the two-sided printing control. The common UI sets the controls' texts from its
// own item data whenever it redraws them after a change; the plug-in keeps its labels by giving
// the controls, for one text change, window procedures that drop that change (quality buttons)
// or put the plug-in's label back (two-sided control). The saved procedures and the label in
// force are process-wide, like the windows they belong to, and are used on the sheet's thread only.
#pragma once

#include <windows.h>

namespace zx {

// The label strings of the quality buttons and of the two-sided control.
inline constexpr UINT kTwoSidedLabel = 21;
inline constexpr UINT kManualTwoSidedLabel = 22;

// The quality buttons are the windows B+2, B+4 and B+6 of the standard page, B being the first
// control id of the PageOutputQuality item. Remembers them (and, the first time, their window
// procedures); unless `simpleLanguage` (the PCLmS device language) gives them the plug-in's
// labels (strings 940, 43, 941), and otherwise notes that the buttons were taken over in that
// language.
void SetUpQualityLabels(HWND standardPage, WORD firstControlId, bool simpleLanguage);

// Gives the three quality buttons the procedure that drops the common UI's next text change.
void GuardQualityLabels();

// Sets the texts of the three quality buttons that exist to strings 940, 43 and 941.
void SetQualityLabelTexts();

// The two-sided control: the window of the Duplex item's first control id (plus one from Windows
// Vista on). Widens it by 74 pixels when `widen`, and remembers its procedure the first time.
// Null when the page has no such window.
HWND SetUpTwoSidedControl(HWND standardPage, WORD firstControlId, bool widen);

// Makes `labelId` the two-sided control's label in force and shows it at once.
void ShowTwoSidedLabel(HWND control, UINT labelId);
// Makes `labelId` the label in force without touching the window.
void SetTwoSidedLabelInForce(UINT labelId);
// Gives the two-sided control the procedure that puts the label in force back on its next text
// change or paint; takes it away again.
void GuardTwoSidedLabel(HWND control);
void UnguardTwoSidedLabel(HWND control);

}  // namespace zx
