#include "ui/shortcut_list_control.h"

#include "resources/resource_libraries.h"
#include "resources/string_ids.h"
#include "ui/page_messages.h"
#include "ui/page_resource_ids.h"
#include "util/module_instance.h"

#include <cwctype>
#include <string>

namespace {

constexpr int kColumnWidth = 150;
constexpr int kImageListGrowth = 12;

// The text without the white space around it.
std::wstring Trimmed(const wchar_t* text) {
    std::wstring trimmed(text);
    const auto isSpace = [](wchar_t c) { return std::iswspace(c) != 0; };
    while (!trimmed.empty() && isSpace(trimmed.back())) trimmed.pop_back();
    size_t first = 0;
    while (first < trimmed.size() && isSpace(trimmed[first])) ++first;
    return trimmed.substr(first);
}

void SetItemText(HWND list, int item, const wchar_t* text) {
    LVITEMW change{};
    change.iSubItem = 0;
    change.pszText = const_cast<wchar_t*>(text);
    ::SendMessageW(list, LVM_SETITEMTEXTW, static_cast<WPARAM>(item), reinterpret_cast<LPARAM>(&change));
}

void SetSelectedAndFocused(HWND list, int item) {
    LVITEMW state{};
    state.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
    state.state = LVIS_SELECTED | LVIS_FOCUSED;
    ::SendMessageW(list, LVM_SETITEMSTATE, static_cast<WPARAM>(item), reinterpret_cast<LPARAM>(&state));
}

}  // namespace

HRESULT VListViewControl::OnCommand(HWND dialog, UINT code) {
    return code == CBN_SELCHANGE ? OnListCommand(dialog) : E_NOTIMPL;
}

LRESULT VListViewControl::OnNotify(HWND dialog, WPARAM wParam, NMHDR* header) {
    if (header == nullptr) return 0;
    if (header->code == LVN_ENDLABELEDITW) {
        OnEndLabelEdit(dialog, wParam, reinterpret_cast<NMLVDISPINFOW*>(header));
    } else if (header->code == LVN_ITEMCHANGED) {
        OnItemChanged(dialog, wParam, reinterpret_cast<NMLISTVIEW*>(header));
    }
    return 0;
}

LRESULT VListViewControl::OnItemChanged(HWND, WPARAM, NMLISTVIEW*) { return 1; }

LRESULT VListViewControl::OnEndLabelEdit(HWND, WPARAM, NMLVDISPINFOW*) { return 1; }

HRESULT VListViewControl::OnListCommand(HWND) { return S_OK; }

HRESULT VListViewControl::InsertItem(HWND, const wchar_t* text, int imageIndex) {
    ::SendMessageW(Window(), LVM_SETVIEW, LV_VIEW_DETAILS, 0);
    LVITEMW item{};
    if (imageIndex != -1) item.mask |= LVIF_IMAGE;
    if (text != nullptr) {
        item.mask |= LVIF_TEXT | LVIF_PARAM;
        item.pszText = const_cast<wchar_t*>(text);
        item.lParam = reinterpret_cast<LPARAM>(text);  // never read back
    }
    // Every item gets a picture of its own, so the new picture's index is the item's position.
    item.iItem = imageIndex;
    item.iImage = imageIndex;
    const LRESULT inserted = ::SendMessageW(Window(), LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
    return inserted == -1 ? E_FAIL : S_OK;
}

VUICtrlPSPrintingShortcutListControl::VUICtrlPSPrintingShortcutListControl() : VListViewControl(IDC_PS_LIST) {}

VUICtrlPSPrintingShortcutListControl::~VUICtrlPSPrintingShortcutListControl() {
    if (m_images != nullptr) ::ImageList_Destroy(m_images);
}

HRESULT VUICtrlPSPrintingShortcutListControl::AddBitmap(HWND, int32_t bitmapId, int& imageIndex) {
    imageIndex = -1;
    HBITMAP bitmap = ::LoadBitmapW(zx::ModuleInstance(), MAKEINTRESOURCEW(bitmapId));
    BITMAP size{};
    if (bitmap == nullptr || ::GetObjectW(bitmap, sizeof(size), &size) == 0) {
        if (bitmap != nullptr) ::DeleteObject(bitmap);
        return E_FAIL;
    }
    if (m_images == nullptr) {
        m_images =
            ::ImageList_Create(size.bmWidth, size.bmHeight, ILC_COLOR32 | ILC_MASK, kImageListGrowth, kImageListGrowth);
    }
    if (m_images != nullptr) imageIndex = ::ImageList_Add(m_images, bitmap, nullptr);
    ::SendMessageW(Window(), LVM_SETIMAGELIST, LVSIL_SMALL, reinterpret_cast<LPARAM>(m_images));
    ::DeleteObject(bitmap);
    return imageIndex == -1 ? E_FAIL : S_OK;
}

void VUICtrlPSPrintingShortcutListControl::FillList(HWND dialog, std::vector<PrintShortcutRecord>& records,
                                                    int& selectedIndex, bool keepSelectionIndex) {
    Attach(dialog);
    LVCOLUMNW column{};
    column.mask = LVCF_FMT | LVCF_WIDTH;
    column.fmt = LVCFMT_CENTER;
    column.cx = kColumnWidth;
    ::SendMessageW(Window(), LVM_INSERTCOLUMNW, 0, reinterpret_cast<LPARAM>(&column));
    ::SendMessageW(Window(), LVM_SETEXTENDEDLISTVIEWSTYLE, LVS_EX_FULLROWSELECT, LVS_EX_FULLROWSELECT);

    for (const PrintShortcutRecord& record : records) {
        if (!record.isAvailable) continue;
        int image = -1;
        AddBitmap(dialog, record.bitmapId, image);
        InsertItem(dialog, record.name, image);
    }
    ResizeColumn();

    if (!keepSelectionIndex) {
        int position = 0;
        if (selectedIndex >= 0 && static_cast<size_t>(selectedIndex) < records.size()) {
            const std::wstring wanted = records[static_cast<size_t>(selectedIndex)].name;
            for (int item = 0, count = ItemCount(); item < count; ++item) {
                if (ItemText(item) == wanted) {
                    position = item;
                    break;
                }
            }
        }
        selectedIndex = position;
    }
    selectedIndex = SelectItem(dialog, selectedIndex);
}

HRESULT VUICtrlPSPrintingShortcutListControl::AddShortcutItem(HWND dialog, const PrintShortcutRecord& record) {
    int image = -1;
    const HRESULT added = AddBitmap(dialog, record.bitmapId, image);
    LVITEMW item{};
    item.mask = LVIF_TEXT | LVIF_IMAGE;
    item.iItem = ItemCount();
    item.iImage = image;
    item.pszText = const_cast<wchar_t*>(record.name);
    const int index = static_cast<int>(::SendMessageW(Window(), LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item)));
    item.iItem = index;
    ::SendMessageW(Window(), LVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&item));
    ::SendMessageW(Window(), LVM_ENSUREVISIBLE, static_cast<WPARAM>(index), FALSE);
    ::SendMessageW(Window(), LVM_SETSELECTIONMARK, 0, index);
    SetItemText(Window(), index, record.name);
    SetSelectedAndFocused(Window(), index);
    return added;
}

int VUICtrlPSPrintingShortcutListControl::SelectItem(HWND, int index) {
    if (index < 0 || index >= ItemCount()) {
        SetSelectedAndFocused(Window(), 0);
        return 0;
    }
    ::SendMessageW(Window(), LVM_SETSELECTIONMARK, 0, index);
    ::SendMessageW(Window(), LVM_ENSUREVISIBLE, static_cast<WPARAM>(index), FALSE);
    SetSelectedAndFocused(Window(), index);
    return index;
}

std::wstring VUICtrlPSPrintingShortcutListControl::ItemText(int index) const {
    zx::UiString text{};
    LVITEMW item{};
    item.iSubItem = 0;
    item.pszText = text;
    item.cchTextMax = zx::kUiStringLength;
    ::SendMessageW(Window(), LVM_GETITEMTEXTW, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&item));
    text[zx::kUiStringLength - 1] = L'\0';
    return text;
}

int VUICtrlPSPrintingShortcutListControl::ItemCount() const {
    return static_cast<int>(::SendMessageW(Window(), LVM_GETITEMCOUNT, 0, 0));
}

int VUICtrlPSPrintingShortcutListControl::SelectionMark() const {
    return static_cast<int>(::SendMessageW(Window(), LVM_GETSELECTIONMARK, 0, 0));
}

LRESULT VUICtrlPSPrintingShortcutListControl::OnItemChanged(HWND dialog, WPARAM, NMLISTVIEW* change) {
    if (change != nullptr && change->uNewState != 0 && change->uOldState == 0) {
        ::SendMessageW(dialog, WMU_SHORTCUT_SELECTED, 0, change->iItem);
    }
    return 0;
}

LRESULT VUICtrlPSPrintingShortcutListControl::OnEndLabelEdit(HWND dialog, WPARAM, NMLVDISPINFOW* edit) {
    if (edit == nullptr || edit->item.pszText == nullptr) return 1;  // cancelled
    const std::wstring name = Trimmed(edit->item.pszText);
    if (name.empty()) {
        RefuseName(dialog, edit->item.iItem, StringId::EmptyNameMessage);
        return 0;
    }
    if (name.size() > kMaxShortcutNameLength) {
        RefuseName(dialog, edit->item.iItem, StringId::NameTooLongMessage);
        return 0;
    }
    SetItemText(Window(), edit->item.iItem, name.c_str());
    ResizeColumn();
    // The page takes the name from the edit's record, trimmed; the list view gets it back as it
    // gave it.
    wchar_t* typed = edit->item.pszText;
    edit->item.pszText = const_cast<wchar_t*>(name.c_str());
    ::SendMessageW(dialog, WMU_NAME_ACCEPTED, 0, reinterpret_cast<LPARAM>(edit));
    edit->item.pszText = typed;
    return 1;
}

void VUICtrlPSPrintingShortcutListControl::RefuseName(HWND dialog, int item, UINT messageId) {
    zx::ShowUiMessage(dialog, messageId, StringId::ShortcutMessageCaption);
    zx::UiString newName;
    zx::LoadUiString(StringId::NewShortcutName, newName);
    SetItemText(Window(), item, newName);
    ::SetFocus(Window());
    ::PostMessageW(dialog, WMU_RESTART_LABEL_EDIT, static_cast<WPARAM>(item), 0);
}

void VUICtrlPSPrintingShortcutListControl::ResizeColumn() {
    ::SendMessageW(Window(), LVM_SETCOLUMNWIDTH, 0, LVSCW_AUTOSIZE_USEHEADER);
}
