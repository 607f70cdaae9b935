// The list of printing shortcuts on the page: a report-view list with one picture and one name
// per listed shortcut, whose labels the user edits to name a new shortcut.
#pragma once

#include "ui/ui_control.h"

#include <commctrl.h>

#include <vector>

// A list-view control.
class VListViewControl : public VUIControl {
public:
    using VUIControl::VUIControl;

    // CBN_SELCHANGE's code (1): OnListCommand; other codes: E_NOTIMPL.
    HRESULT OnCommand(HWND dialog, UINT code) override;
    // LVN_ENDLABELEDITW goes to OnEndLabelEdit, LVN_ITEMCHANGED to OnItemChanged; always 0, so
    // that the list view never takes an edited text itself.
    LRESULT OnNotify(HWND dialog, WPARAM wParam, NMHDR* header) override;

    // Appends an item in the details view: the text (when given) and the picture (unless -1).
    // S_OK, or E_FAIL when the list refuses it.
    HRESULT InsertItem(HWND dialog, const wchar_t* text, int imageIndex);

protected:
    virtual LRESULT OnItemChanged(HWND dialog, WPARAM wParam, NMLISTVIEW* change);
    virtual LRESULT OnEndLabelEdit(HWND dialog, WPARAM wParam, NMLVDISPINFOW* edit);
    virtual HRESULT OnListCommand(HWND dialog);
};

// The shortcut list of the page (control 1020). Owns the image list of the pictures.
class VUICtrlPSPrintingShortcutListControl : public VListViewControl {
public:
    VUICtrlPSPrintingShortcutListControl();
    ~VUICtrlPSPrintingShortcutListControl() override;

    // Adds picture `bitmapId` of this module as a new image (also for a picture added before)
    // and gives its index. S_OK, or E_FAIL when the picture cannot be loaded or added.
    HRESULT AddBitmap(HWND dialog, int32_t bitmapId, int& imageIndex);

    // Lists the available shortcuts with their pictures and selects one. Unless
    // keepSelectionIndex, selectedIndex is a record index on entry and the item whose text is
    // that record's name is selected (the first item when none is); selectedIndex then becomes
    // the selected item's position.
    void FillList(HWND dialog, std::vector<PrintShortcutRecord>& records, int& selectedIndex, bool keepSelectionIndex);

    // Appends, selects and shows an item for a new or changed shortcut. AddBitmap's result.
    HRESULT AddShortcutItem(HWND dialog, const PrintShortcutRecord& record);

    // Selects, focuses and shows item `index`, and answers it; an index beyond the items selects
    // the first item and answers 0.
    int SelectItem(HWND dialog, int index);

    // The text of item `index`, at most 255 characters; empty for no such item.
    std::wstring ItemText(int index) const;
    int ItemCount() const;
    int SelectionMark() const;

protected:
    // An item became selected or focused: tells the page (WMU_SHORTCUT_SELECTED).
    LRESULT OnItemChanged(HWND dialog, WPARAM wParam, NMLISTVIEW* change) override;
    // Checks the name the user typed for the pending shortcut: trimmed, not empty and shorter than
    // 50 characters. A refused name gets its message, the new-shortcut name back, and a new edit.
    LRESULT OnEndLabelEdit(HWND dialog, WPARAM wParam, NMLVDISPINFOW* edit) override;

private:
    void RefuseName(HWND dialog, int item, UINT messageId);
    void ResizeColumn();

    HIMAGELIST m_images = nullptr;
};

// The longest name a shortcut can have, in characters.
inline constexpr size_t kMaxShortcutNameLength = 49;
