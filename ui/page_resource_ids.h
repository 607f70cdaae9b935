// Resource and control numbers of the Printing Shortcuts page, shared by its dialog templates and
// its code. Bitmap numbers are those of the resource-name table (resources/resource_names.h).
#pragma once

// Dialog templates: the page, the page for right-to-left user languages, and the instructions
// for printing on both sides by hand.
#define IDD_PRINTING_SHORTCUTS 102
#define IDD_PRINTING_SHORTCUTS_RTL 155
#define IDD_MANUAL_DUPLEX_INSTRUCTIONS 154

// The module's manifest, asking for version 6 of the common controls.
#define IDR_PAGE_MANIFEST 2

// Controls of the page.
#define IDC_PS_DESCRIPTION 1039
#define IDC_PS_LIST_LABEL 1050
#define IDC_PS_LIST 1020
#define IDC_PS_LABEL_0 1032
#define IDC_PS_COMBO_0 1031
#define IDC_PS_LABEL_1 1036
#define IDC_PS_COMBO_1 1033
#define IDC_PS_LABEL_2 1030
#define IDC_PS_COMBO_2 1035
#define IDC_PS_LABEL_3 1034
#define IDC_PS_COMBO_3 1029
#define IDC_PS_LABEL_4 1038
#define IDC_PS_COMBO_4 1037
#define IDC_PS_SAVE_AS 1080
#define IDC_PS_DELETE 1081

// Controls of the instructions dialog.
#define IDC_MD_TEXT 1101
