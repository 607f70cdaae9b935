#include "drvhost/sheet_window.h"

#include "drvhost/png_writer.h"
#include "drvhost/text.h"

#include <commctrl.h>
#include <prsht.h>

#include <optional>
#include <set>
#include <string_view>
#include <vector>

namespace drvhost {
namespace {

constexpr short kRowHeight = 16;
constexpr short kMargin = 6;
constexpr short kLabelWidth = 110;
constexpr short kControlWidth = 150;
constexpr short kRadioWidth = 50;
constexpr short kColumnWidth = kLabelWidth + kControlWidth + 2 * kMargin;
constexpr WORD kButtonClass = 0x0080;
constexpr WORD kStaticClass = 0x0082;
constexpr WORD kComboClass = 0x0085;

// Where the core driver's standard page puts an item's list box and label, relative to the
// item's first control identifier. The two-sided item has its label on a line of its own, above
// its list, where the plug-in can widen it.
WORD ListControlOffset(std::string_view feature) {
    if (feature == "MediaType" || feature == "Duplex") return 2;
    if (feature == "DocumentNUp") return 4;
    return 1;
}
WORD LabelOffset(std::string_view feature) { return feature == "Duplex" ? 1 : 0; }
bool LabelAboveList(std::string_view feature) { return feature == "Duplex"; }

// The standard page's button that puts the items back as they were when the sheet opened.
constexpr WORD kRevertButton = 0x7F00;

// The identifiers of an item with three choices shown as buttons.
constexpr WORD kRadioOffsets[] = {2, 4, 6};

// A dialog template built in memory: DLGTEMPLATE, then one DLGITEMTEMPLATE per control.
class DialogTemplate {
public:
    DialogTemplate(const wchar_t* title, short width, short height) {
        Put<DWORD>(WS_CHILD | WS_CAPTION | DS_SETFONT | DS_3DLOOK | DS_CONTROL);
        Put<DWORD>(0);
        m_countOffset = m_bytes.size();
        Put<WORD>(0);
        Put<short>(0), Put<short>(0);
        m_sizeOffset = m_bytes.size();
        Put<short>(width), Put<short>(height);
        Put<WORD>(0);  // no menu
        Put<WORD>(0);  // default class
        PutText(title);
        Put<WORD>(8);
        PutText(L"MS Shell Dlg");
    }

    void Add(WORD classAtom, DWORD style, short x, short y, short cx, short cy, WORD id, const wchar_t* text) {
        while (m_bytes.size() % 4) m_bytes.push_back(0);
        Put<DWORD>(style | WS_CHILD | WS_VISIBLE);
        Put<DWORD>(0);
        Put<short>(x), Put<short>(y), Put<short>(cx), Put<short>(cy);
        Put<WORD>(id);
        Put<WORD>(0xFFFF);
        Put<WORD>(classAtom);
        PutText(text);
        Put<WORD>(0);  // no creation data
        ++*reinterpret_cast<WORD*>(m_bytes.data() + m_countOffset);
    }

    void Resize(short width, short height) {
        reinterpret_cast<short*>(m_bytes.data() + m_sizeOffset)[0] = width;
        reinterpret_cast<short*>(m_bytes.data() + m_sizeOffset)[1] = height;
    }

    const DLGTEMPLATE* Get() {
        while (m_bytes.size() % 4) m_bytes.push_back(0);
        return reinterpret_cast<const DLGTEMPLATE*>(m_bytes.data());
    }

private:
    template <typename T>
    void Put(T value) {
        const auto* bytes = reinterpret_cast<const BYTE*>(&value);
        m_bytes.insert(m_bytes.end(), bytes, bytes + sizeof(T));
    }
    void PutText(const wchar_t* text) {
        for (; *text; ++text) Put<wchar_t>(*text);
        Put<wchar_t>(0);
    }

    std::vector<BYTE> m_bytes;
    size_t m_countOffset = 0;
    size_t m_sizeOffset = 0;
};

// The standard page: one row per visible item, a label and a list, or three buttons.
class StandardPage {
public:
    explicit StandardPage(UiSession& session)
        : m_session(session),
          m_template(session.Sheet() == FeatureSheet::Document ? L"Layout and Quality" : L"Device Settings", 280, 10) {}

    PROPSHEETPAGEW Build() {
        OptionItems& items = m_session.Items();
        std::vector<OPTITEM*> visible;
        size_t lines = 0;
        for (DWORD i = 0; i < items.Count(); ++i) {
            if (items.Items()[i].Flags & OPTIF_HIDE) continue;
            visible.push_back(&items.Items()[i]);
            lines += LinesOf(items.Items()[i]);
        }
        // Two columns, filled top to bottom.
        const size_t perColumn = (lines + 1) / 2;
        size_t line = 0;
        for (OPTITEM* item : visible) {
            const size_t column = line < perColumn ? 0 : 1;
            const size_t row = column == 0 ? line : line - perColumn;
            AddRow(*item, static_cast<short>(kMargin + column * kColumnWidth),
                   static_cast<short>(kMargin + row * kRowHeight));
            line += LinesOf(*item);
        }
        const short buttonY = static_cast<short>(kMargin + (perColumn + 1) * kRowHeight);
        if (m_session.Sheet() == FeatureSheet::Document) {
            m_template.Add(kButtonClass, BS_PUSHBUTTON | WS_TABSTOP, kMargin, buttonY, 70, 14, kRevertButton,
                           L"Undo Changes");
        }
        m_template.Resize(2 * kColumnWidth, static_cast<short>(buttonY + 14 + kMargin));
        PROPSHEETPAGEW page{};
        page.dwSize = sizeof(page);
        page.dwFlags = PSP_DLGINDIRECT;
        page.pResource = m_template.Get();
        page.pfnDlgProc = &DialogProc;
        page.lParam = reinterpret_cast<LPARAM>(this);
        return page;
    }

    // The page's window once the sheet has created it; null before.
    HWND Dialog() const noexcept { return m_dialog; }
    // How often the page applied the items; it applies only once the sheet has created it.
    int Applies() const noexcept { return m_applies; }
    // The common UI applies the core driver's items whichever page the user leaves the sheet on:
    // when the sheet never showed this page, that apply is done here.
    void ApplyUnlessDone(int appliesBefore) {
        if (m_applies == appliesBefore) m_session.Apply(nullptr);
    }

    // Chooses an option of a shown item as a person's click does: the option's button, or the
    // entry of the item's list followed by the list's selection-change notification.
    bool ChooseOption(std::string_view feature, const std::wstring& entry, std::string& problem) {
        for (Row& row : m_rows) {
            if (row.feature != feature) continue;
            const WORD first = row.item->pOptType->BegCtrlID;
            std::vector<std::wstring> texts;
            const std::vector<LONG> options = row.radio ? std::vector<LONG>{0, 1, 2} : row.listedOptions;
            for (LONG option : options) texts.emplace_back(row.item->pOptType->pOptParam[option].pData);
            const std::optional<size_t> chosen = FindEntry(texts, entry);
            if (!chosen) {
                problem = "the standard page's " + std::string(feature) + " has no entry " + WideToUtf8(entry);
                return false;
            }
            if (row.radio) {
                ::SendDlgItemMessageW(m_dialog, first + kRadioOffsets[*chosen], BM_CLICK, 0, 0);
            } else {
                const WORD id = static_cast<WORD>(first + ListControlOffset(row.feature));
                HWND list = ::GetDlgItem(m_dialog, id);
                ::SendMessageW(list, CB_SETCURSEL, *chosen, 0);
                ::SendMessageW(m_dialog, WM_COMMAND, MAKEWPARAM(id, CBN_SELCHANGE), reinterpret_cast<LPARAM>(list));
            }
            return true;
        }
        problem = "the standard page shows no item " + std::string(feature);
        return false;
    }

private:
    static std::string_view FeatureOf(const OPTITEM& item) {
        return static_cast<const FeatureRecord*>(reinterpret_cast<void*>(item.UserData))->keyword;
    }
    static size_t LinesOf(const OPTITEM& item) { return LabelAboveList(FeatureOf(item)) ? 2 : 1; }

    void AddRow(OPTITEM& item, short x, short y) {
        Row row{&item, FeatureOf(item), item.pOptType->Type == TVOT_3STATES};
        const WORD first = item.pOptType->BegCtrlID;
        const short controlX = static_cast<short>(x + kLabelWidth);
        const WORD label = static_cast<WORD>(first + LabelOffset(row.feature));
        if (LabelAboveList(row.feature)) {
            m_template.Add(kStaticClass, SS_LEFT, x, static_cast<short>(y + 2), kLabelWidth - 4, 10, label, item.pName);
            y = static_cast<short>(y + kRowHeight);
        } else {
            m_template.Add(kStaticClass, SS_LEFT, x, static_cast<short>(y + 2), kLabelWidth - 4, 10, label, item.pName);
        }
        if (row.radio) {
            for (size_t option = 0; option < 3; ++option) {
                m_template.Add(kButtonClass, BS_AUTORADIOBUTTON | BS_NOTIFY | WS_TABSTOP,
                               static_cast<short>(controlX + option * kRadioWidth), y, kRadioWidth - 2, 12,
                               static_cast<WORD>(first + kRadioOffsets[option]),
                               item.pOptType->pOptParam[option].pData);
            }
        } else {
            m_template.Add(kComboClass, CBS_DROPDOWNLIST | WS_VSCROLL | WS_TABSTOP, controlX, y, kControlWidth, 120,
                           static_cast<WORD>(first + ListControlOffset(row.feature)), L"");
        }
        m_rows.push_back(row);
    }

    struct Row {
        OPTITEM* item;
        std::string_view feature;
        bool radio;
        std::vector<LONG> listedOptions = {};  // option index of each list entry (hidden ones left out)
    };

    static INT_PTR CALLBACK DialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_INITDIALOG) {
            auto* page = reinterpret_cast<StandardPage*>(reinterpret_cast<PROPSHEETPAGEW*>(lParam)->lParam);
            ::SetWindowLongPtrW(dialog, DWLP_USER, reinterpret_cast<LONG_PTR>(page));
            page->m_dialog = dialog;
            page->Refresh(dialog);
            return TRUE;
        }
        auto* page = reinterpret_cast<StandardPage*>(::GetWindowLongPtrW(dialog, DWLP_USER));
        if (page == nullptr) return FALSE;
        if (message == WM_COMMAND) return page->OnCommand(dialog, LOWORD(wParam), HIWORD(wParam));
        if (message == WM_NOTIFY) return page->OnNotify(dialog, reinterpret_cast<NMHDR*>(lParam));
        return FALSE;
    }

    BOOL OnCommand(HWND dialog, WORD id, WORD code) {
        if (id == kRevertButton && code == BN_CLICKED) {
            m_session.RevertItems(dialog);
            Refresh(dialog);
            RelabelButtons(dialog);
            return TRUE;
        }
        for (Row& row : m_rows) {
            const WORD first = row.item->pOptType->BegCtrlID;
            if (IsControlOf(row, id) && (code == BN_SETFOCUS || code == CBN_SETFOCUS)) {
                m_session.Callback(CPSUICB_REASON_OPTITEM_SETFOCUS, row.item, row.item->Sel, dialog);
                return TRUE;
            }
            LONG chosen = -1;
            if (row.radio && code == BN_CLICKED) {
                for (LONG option = 0; option < 3; ++option) {
                    if (id == first + kRadioOffsets[option]) chosen = option;
                }
            } else if (!row.radio && code == CBN_SELCHANGE && id == first + ListControlOffset(row.feature)) {
                const LRESULT entry = ::SendDlgItemMessageW(dialog, id, CB_GETCURSEL, 0, 0);
                if (entry >= 0 && static_cast<size_t>(entry) < row.listedOptions.size())
                    chosen = row.listedOptions[entry];
            }
            if (chosen < 0 || chosen == row.item->Sel) continue;
            m_session.SelectOption(row.feature, chosen, dialog);
            Refresh(dialog);
            RelabelButtons(dialog);
            ::SendMessageW(::GetParent(dialog), PSM_CHANGED, reinterpret_cast<WPARAM>(dialog), 0);
            return TRUE;
        }
        return FALSE;
    }

    static bool IsControlOf(const Row& row, WORD id) {
        const WORD first = row.item->pOptType->BegCtrlID;
        if (!row.radio) return id == first + ListControlOffset(row.feature);
        for (WORD offset : kRadioOffsets) {
            if (id == first + offset) return true;
        }
        return false;
    }

    // After a change the common UI writes the option buttons' texts again from its items.
    void RelabelButtons(HWND dialog) {
        for (const Row& row : m_rows) {
            if (!row.radio) continue;
            const WORD first = row.item->pOptType->BegCtrlID;
            for (LONG option = 0; option < 3; ++option) {
                ::SetDlgItemTextW(dialog, first + kRadioOffsets[option], row.item->pOptType->pOptParam[option].pData);
            }
        }
    }

    BOOL OnNotify(HWND dialog, const NMHDR* header) {
        POPTITEM first = m_rows.empty() ? m_session.Items().Items() : m_rows.front().item;
        switch (header->code) {
        case PSN_SETACTIVE:
            m_session.Callback(CPSUICB_REASON_SETACTIVE, first, 0, dialog);
            Refresh(dialog);
            break;
        case PSN_KILLACTIVE: m_session.Callback(CPSUICB_REASON_KILLACTIVE, first, 0, dialog); break;
        case PSN_APPLY:
            m_session.Apply(dialog);
            ++m_applies;
            ::SetWindowLongPtrW(dialog, DWLP_MSGRESULT, PSNRET_NOERROR);
            return TRUE;
        default: return FALSE;
        }
        ::SetWindowLongPtrW(dialog, DWLP_MSGRESULT, 0);
        return TRUE;
    }

    // Shows the items as they now are: the plug-in may have changed selections, flags and options.
    void Refresh(HWND dialog) {
        for (Row& row : m_rows) {
            const WORD first = row.item->pOptType->BegCtrlID;
            const bool hidden = row.item->Flags & OPTIF_HIDE;
            const bool enabled = !(row.item->Flags & OPTIF_DISABLED);
            std::vector<HWND> controls = {::GetDlgItem(dialog, first + LabelOffset(row.feature))};
            if (row.radio) {
                for (LONG option = 0; option < 3; ++option) {
                    HWND button = ::GetDlgItem(dialog, first + kRadioOffsets[option]);
                    ::SendMessageW(button, BM_SETCHECK, option == row.item->Sel ? BST_CHECKED : BST_UNCHECKED, 0);
                    controls.push_back(button);
                }
            } else {
                HWND list = ::GetDlgItem(dialog, first + ListControlOffset(row.feature));
                FillList(list, row);
                controls.push_back(list);
            }
            for (HWND control : controls) {
                ::ShowWindow(control, hidden ? SW_HIDE : SW_SHOW);
                ::EnableWindow(control, enabled);
            }
        }
    }

    static void FillList(HWND list, Row& row) {
        ::SendMessageW(list, CB_RESETCONTENT, 0, 0);
        row.listedOptions.clear();
        const OPTTYPE& type = *row.item->pOptType;
        for (LONG option = 0; option < type.Count; ++option) {
            if (type.pOptParam[option].Flags & OPTPF_HIDE) continue;
            ::SendMessageW(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(type.pOptParam[option].pData));
            if (option == row.item->Sel) {
                ::SendMessageW(list, CB_SETCURSEL, row.listedOptions.size(), 0);
            }
            row.listedOptions.push_back(option);
        }
    }

    UiSession& m_session;
    DialogTemplate m_template;
    std::vector<Row> m_rows;
    HWND m_dialog = nullptr;
    int m_applies = 0;
};

// Runs the thread's messages until none but timers came for a while (the windows have settled)
// or at most `milliseconds`.
void PumpMessages(HWND sheet, DWORD milliseconds) {
    constexpr DWORD kSettled = 150;
    const DWORD start = ::GetTickCount();
    DWORD lastActivity = start;
    while (::GetTickCount() - start < milliseconds && ::GetTickCount() - lastActivity < kSettled) {
        MSG message;
        while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            if (message.message != WM_TIMER) lastActivity = ::GetTickCount();
            if (sheet == nullptr || !PropSheet_IsDialogMessage(sheet, &message)) {
                ::TranslateMessage(&message);
                ::DispatchMessageW(&message);
            }
        }
        ::Sleep(10);
    }
}

// The client area: without a window manager the frame is not drawn on a virtual display.
bool CaptureWindow(HWND window, const std::wstring& path) {
    RECT rect;
    if (!::GetClientRect(window, &rect)) return false;
    ::MapWindowPoints(window, nullptr, reinterpret_cast<POINT*>(&rect), 2);
    const int width = rect.right - rect.left, height = rect.bottom - rect.top;
    if (width <= 0 || height <= 0) return false;

    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = -height;  // top row first
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    void* bits = nullptr;
    HDC screen = ::GetDC(nullptr);
    HDC memory = ::CreateCompatibleDC(screen);
    HBITMAP bitmap = ::CreateDIBSection(screen, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    bool captured = false;
    if (bitmap != nullptr) {
        HGDIOBJ old = ::SelectObject(memory, bitmap);
        captured = ::BitBlt(memory, 0, 0, width, height, screen, rect.left, rect.top, SRCCOPY) != FALSE;
        ::SelectObject(memory, old);
    }
    std::vector<uint8_t> rgb;
    if (captured) {
        const auto* pixels = static_cast<const uint8_t*>(bits);
        rgb.reserve(static_cast<size_t>(width) * height * 3);
        for (size_t i = 0; i < static_cast<size_t>(width) * height; ++i) {
            rgb.insert(rgb.end(), {pixels[i * 4 + 2], pixels[i * 4 + 1], pixels[i * 4]});
        }
    }
    if (bitmap) ::DeleteObject(bitmap);
    ::DeleteDC(memory);
    ::ReleaseDC(nullptr, screen);
    return captured && WritePng(path, static_cast<uint32_t>(width), static_cast<uint32_t>(height), rgb);
}

}  // namespace

bool HasDisplay() {
    HWND probe = ::CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    if (probe == nullptr) return false;
    ::DestroyWindow(probe);
    return true;
}

namespace {

// The sheet's own buttons.
constexpr int kApplyButton = 0x3021;
// The shortcut list of the Printing Shortcuts page, and its buttons.
constexpr int kShortcutList = 1020;
constexpr int kSaveAsButton = 1080;
constexpr int kDeleteButton = 1081;
constexpr int kShortcutCombos[] = {1031, 1033, 1035, 1029, 1037};
constexpr int kShortcutLabels[] = {1032, 1036, 1030, 1034, 1038};
constexpr DWORD kStepSettleMilliseconds = 1000;

// Answers the message boxes that come up while the sheet runs, as a person reading them would
// (OK), and notes what they said. A thread timer: it fires inside the message box's own loop.
class MessageBoxWatcher {
public:
    MessageBoxWatcher(HWND sheet, std::vector<std::string>& events) : m_sheet(sheet), m_events(events) {
        s_current = this;
        m_timer = ::SetTimer(nullptr, 0, 50, &OnTimer);
    }
    ~MessageBoxWatcher() {
        ::KillTimer(nullptr, m_timer);
        s_current = nullptr;
    }
    MessageBoxWatcher(const MessageBoxWatcher&) = delete;
    MessageBoxWatcher& operator=(const MessageBoxWatcher&) = delete;

private:
    static void CALLBACK OnTimer(HWND, UINT, UINT_PTR, DWORD) {
        if (s_current != nullptr) ::EnumThreadWindows(::GetCurrentThreadId(), &Answer, 0);
    }

    static BOOL CALLBACK Answer(HWND window, LPARAM) {
        MessageBoxWatcher& self = *s_current;
        wchar_t className[16] = {};
        ::GetClassNameW(window, className, 16);
        if (window == self.m_sheet || !::IsWindowVisible(window) || std::wstring_view(className) != L"#32770" ||
            !self.m_answered.insert(window).second) {
            return TRUE;
        }
        std::wstring text;
        ::EnumChildWindows(window, &CollectStaticText, reinterpret_cast<LPARAM>(&text));
        self.m_events.push_back("message box \"" + WideToUtf8(WindowText(window)) + "\": " + WideToUtf8(text));
        ::PostMessageW(window, WM_COMMAND, IDOK, 0);
        return TRUE;
    }

    static BOOL CALLBACK CollectStaticText(HWND child, LPARAM text) {
        wchar_t className[16] = {};
        ::GetClassNameW(child, className, 16);
        if (::CompareStringOrdinal(className, -1, L"Static", -1, TRUE) == CSTR_EQUAL) {
            std::wstring& all = *reinterpret_cast<std::wstring*>(text);
            const std::wstring piece = WindowText(child);
            if (!piece.empty()) all += (all.empty() ? L"" : L" ") + piece;
        }
        return TRUE;
    }

    static std::wstring WindowText(HWND window) {
        wchar_t text[512] = {};
        ::GetWindowTextW(window, text, 512);
        return text;
    }

    static inline MessageBoxWatcher* s_current = nullptr;
    HWND m_sheet;
    std::vector<std::string>& m_events;
    std::set<HWND> m_answered;
    UINT_PTR m_timer = 0;
};

// A modeless sheet on screen, and what a person can do with it.
class ShownSheet {
public:
    ShownSheet(HWND sheet, StandardPage& standard) : m_sheet(sheet), m_standard(standard) {}

    bool Closed() const { return PropSheet_GetCurrentPageHwnd(m_sheet) == nullptr; }

    bool Do(const SheetStep& step, std::string& problem) {
        switch (step.action) {
        case SheetStep::Action::SelectShortcut: return SelectShortcut(step.name, problem);
        case SheetStep::Action::ChangeSetting: return ChangeSetting(step.name, step.entry, problem);
        case SheetStep::Action::SaveAs: return SaveAs(step.name, problem);
        case SheetStep::Action::Delete: return Click(ShortcutPage(problem), kDeleteButton, problem);
        case SheetStep::Action::SwitchPage: return SwitchPage(step.name, problem);
        case SheetStep::Action::SelectOption:
            return m_standard.Dialog() != nullptr ? m_standard.ChooseOption(WideToUtf8(step.name), step.entry, problem)
                                                  : (problem = "the standard page has not been shown yet", false);
        case SheetStep::Action::Revert:
            return m_standard.Dialog() != nullptr ? Click(m_standard.Dialog(), kRevertButton, problem)
                                                  : (problem = "the standard page has not been shown yet", false);
        case SheetStep::Action::Apply: return Click(m_sheet, kApplyButton, problem);
        case SheetStep::Action::Ok: return Click(m_sheet, IDOK, problem);
        case SheetStep::Action::Cancel: return Click(m_sheet, IDCANCEL, problem);
        case SheetStep::Action::Screenshot:
            if (CaptureWindow(m_sheet, step.name)) return true;
            problem = "the sheet could not be captured";
            return false;
        }
        return false;
    }

private:
    // The Printing Shortcuts page, once the sheet has created it.
    HWND ShortcutPage(std::string& problem) const {
        const int pages = TabCtrl_GetItemCount(PropSheet_GetTabControl(m_sheet));
        for (int index = 0; index < pages; ++index) {
            HWND page = PropSheet_IndexToHwnd(m_sheet, index);
            if (page != nullptr && ::GetDlgItem(page, kShortcutList) != nullptr) return page;
        }
        problem = "the sheet shows no Printing Shortcuts page";
        return nullptr;
    }

    bool Click(HWND window, int id, std::string& problem) {
        if (window == nullptr) return false;
        HWND button = ::GetDlgItem(window, id);
        if (button == nullptr || !::IsWindowEnabled(button) || !::IsWindowVisible(button)) {
            problem = "button " + std::to_string(id) + " cannot be clicked (missing or disabled)";
            return false;
        }
        ::SendMessageW(button, BM_CLICK, 0, 0);
        return true;
    }

    bool SelectShortcut(const std::wstring& name, std::string& problem) {
        HWND page = ShortcutPage(problem);
        if (page == nullptr) return false;
        HWND list = ::GetDlgItem(page, kShortcutList);
        LVFINDINFOW find{};
        find.flags = LVFI_STRING;
        find.psz = name.c_str();
        const int item = static_cast<int>(
            ::SendMessageW(list, LVM_FINDITEMW, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(&find)));
        if (item < 0) {
            problem = "the list has no shortcut named " + WideToUtf8(name);
            return false;
        }
        // What a click on the item does: the selection mark moves, the item is selected and focused.
        ::SetFocus(list);
        ::SendMessageW(list, LVM_SETSELECTIONMARK, 0, item);
        LVITEMW state{};
        state.stateMask = state.state = LVIS_SELECTED | LVIS_FOCUSED;
        ::SendMessageW(list, LVM_SETITEMSTATE, static_cast<WPARAM>(item), reinterpret_cast<LPARAM>(&state));
        return true;
    }

    bool ChangeSetting(const std::wstring& label, const std::wstring& entry, std::string& problem) {
        HWND page = ShortcutPage(problem);
        if (page == nullptr) return false;
        for (size_t position = 0; position < std::size(kShortcutCombos); ++position) {
            HWND combo = ::GetDlgItem(page, kShortcutCombos[position]);
            if (combo == nullptr || !::IsWindowVisible(combo) || !SettingIs(page, position, label)) continue;
            if (!::IsWindowEnabled(combo)) {
                problem = "the setting " + WideToUtf8(label) + " cannot be changed (disabled)";
                return false;
            }
            std::vector<std::wstring> entries;
            const int count = static_cast<int>(::SendMessageW(combo, CB_GETCOUNT, 0, 0));
            for (int index = 0; index < count; ++index) {
                wchar_t text[256] = {};
                if (::SendMessageW(combo, CB_GETLBTEXTLEN, index, 0) < 256) {
                    ::SendMessageW(combo, CB_GETLBTEXT, index, reinterpret_cast<LPARAM>(text));
                }
                entries.emplace_back(text);
            }
            const std::optional<size_t> chosen = FindEntry(entries, entry);
            if (!chosen) {
                problem = "the setting " + WideToUtf8(label) + " has no entry " + WideToUtf8(entry);
                return false;
            }
            ::SendMessageW(combo, CB_SETCURSEL, *chosen, 0);
            ::SendMessageW(page, WM_COMMAND, MAKEWPARAM(kShortcutCombos[position], CBN_SELCHANGE),
                           reinterpret_cast<LPARAM>(combo));
            return true;
        }
        problem = "the Printing Shortcuts page shows no setting " + WideToUtf8(label);
        return false;
    }

    // A setting is named by the label beside its box (ignoring case and a trailing colon) or by
    // its position (0 to 4).
    static bool SettingIs(HWND page, size_t position, const std::wstring& label) {
        if (label == std::to_wstring(position)) return true;
        wchar_t text[256] = {};
        ::GetDlgItemTextW(page, kShortcutLabels[position], text, 256);
        std::wstring shown = text;
        if (!shown.empty() && shown.back() == L':') shown.pop_back();
        return ::CompareStringOrdinal(shown.c_str(), -1, label.c_str(), -1, TRUE) == CSTR_EQUAL;
    }

    bool SaveAs(const std::wstring& name, std::string& problem) {
        HWND page = ShortcutPage(problem);
        if (page == nullptr || !Click(page, kSaveAsButton, problem)) return false;
        HWND list = ::GetDlgItem(page, kShortcutList);
        HWND edit = reinterpret_cast<HWND>(::SendMessageW(list, LVM_GETEDITCONTROL, 0, 0));
        if (edit == nullptr) {
            problem = "Save as opened no name to edit";
            return false;
        }
        ::SetWindowTextW(edit, name.c_str());
        ::SendMessageW(edit, WM_KEYDOWN, VK_RETURN, 0);
        ::SendMessageW(edit, WM_CHAR, VK_RETURN, 0);
        return true;
    }

    bool SwitchPage(const std::wstring& title, std::string& problem) {
        HWND tabs = PropSheet_GetTabControl(m_sheet);
        const int count = TabCtrl_GetItemCount(tabs);
        for (int index = 0; index < count; ++index) {
            wchar_t text[256] = {};
            TCITEMW item{};
            item.mask = TCIF_TEXT;
            item.pszText = text;
            item.cchTextMax = 256;
            ::SendMessageW(tabs, TCM_GETITEMW, index, reinterpret_cast<LPARAM>(&item));
            if (::CompareStringOrdinal(text, -1, title.c_str(), -1, TRUE) != CSTR_EQUAL) continue;
            PropSheet_SetCurSel(m_sheet, nullptr, index);
            return true;
        }
        problem = "the sheet has no page " + WideToUtf8(title);
        return false;
    }

    HWND m_sheet;
    StandardPage& m_standard;
};

// The sheet's OK and Apply buttons also apply the core driver's items when the standard page was
// never shown (the sheet sends its pages' apply only to the pages it created).
thread_local StandardPage* t_sheetStandardPage = nullptr;

LRESULT CALLBACK SheetButtons(HWND sheet, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR data) {
    auto* standard = reinterpret_cast<StandardPage*>(data);
    const bool applies = message == WM_COMMAND && HIWORD(wParam) == BN_CLICKED &&
                         (LOWORD(wParam) == IDOK || LOWORD(wParam) == kApplyButton);
    if (message == WM_NCDESTROY) ::RemoveWindowSubclass(sheet, &SheetButtons, 1);
    const int before = standard->Applies();
    const LRESULT result = ::DefSubclassProc(sheet, message, wParam, lParam);
    if (applies) standard->ApplyUnlessDone(before);
    return result;
}

int CALLBACK SheetCreated(HWND sheet, UINT message, LPARAM) {
    if (message == PSCB_INITIALIZED && t_sheetStandardPage != nullptr) {
        ::SetWindowSubclass(sheet, &SheetButtons, 1, reinterpret_cast<DWORD_PTR>(t_sheetStandardPage));
    }
    return 0;
}

HWND CreateSheet(UiSession& session, StandardPage& standard, bool modeless, std::string& problem) {
    INITCOMMONCONTROLSEX controls{sizeof(controls), ICC_WIN95_CLASSES | ICC_STANDARD_CLASSES};
    ::InitCommonControlsEx(&controls);
    if (!HasDisplay()) {
        problem = "no display";
        return nullptr;
    }
    PROPSHEETPAGEW standardPage = standard.Build();
    std::vector<HPROPSHEETPAGE> pages = session.Pages();
    UINT startPage = 0;
    for (UINT i = 0; i < pages.size(); ++i) {
        if (pages[i] == session.StartPage()) startPage = i;
    }
    pages.push_back(::CreatePropertySheetPageW(&standardPage));
    session.ReleasePages();  // the sheet destroys them

    PROPSHEETHEADERW header{};
    header.dwSize = sizeof(header);
    header.dwFlags = PSH_USECALLBACK | (modeless ? PSH_MODELESS : 0);
    header.pfnCallback = &SheetCreated;
    t_sheetStandardPage = &standard;
    header.pszCaption = L"ZX Inkjet Simulator Printing Preferences";
    header.nPages = static_cast<UINT>(pages.size());
    header.nStartPage = startPage;
    header.phpage = pages.data();
    const INT_PTR result = ::PropertySheetW(&header);
    if (!modeless) return nullptr;
    if (result == 0 || result == -1) problem = "the property sheet could not be created";
    return result == 0 || result == -1 ? nullptr : reinterpret_cast<HWND>(result);
}

}  // namespace

bool ShowSheet(UiSession& session, const std::wstring& screenshotPath, std::string& problem) {
    if (screenshotPath.empty()) {
        StandardPage standard(session);
        std::string unused;
        CreateSheet(session, standard, false, unused);
        return true;
    }
    SheetRun run;
    return RunSheet(session, {}, screenshotPath, run, problem);
}

bool OpenAndCloseSheet(UiSession& session, std::string& problem) {
    StandardPage standard(session);
    HWND sheet = CreateSheet(session, standard, true, problem);
    if (sheet == nullptr) return false;
    MSG message;
    while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        if (!PropSheet_IsDialogMessage(sheet, &message)) {
            ::TranslateMessage(&message);
            ::DispatchMessageW(&message);
        }
    }
    ::DestroyWindow(sheet);
    return true;
}

bool RunSheet(UiSession& session, const std::vector<SheetStep>& steps, const std::wstring& screenshotPath,
              SheetRun& run, std::string& problem, const SheetInspector& inspect) {
    StandardPage standard(session);
    HWND sheet = CreateSheet(session, standard, true, problem);
    if (sheet == nullptr) return false;
    bool done = true;
    {
        MessageBoxWatcher watcher(sheet, run.events);
        ShownSheet shown(sheet, standard);
        PumpMessages(sheet, 1500);
        if (inspect) inspect(0, sheet);
        size_t stepsDone = 0;
        for (const SheetStep& step : steps) {
            if (shown.Closed()) {
                problem = "the sheet was closed before all steps ran";
                done = false;
                break;
            }
            if (!shown.Do(step, problem)) {
                done = false;
                break;
            }
            PumpMessages(sheet, kStepSettleMilliseconds);
            ++stepsDone;
            if (inspect && !shown.Closed()) inspect(stepsDone, sheet);
        }
        run.closedByStep = shown.Closed();
        if (done && !run.closedByStep && !screenshotPath.empty() && !CaptureWindow(sheet, screenshotPath)) {
            problem = "the sheet could not be captured";
            done = false;
        }
    }
    ::DestroyWindow(sheet);
    PumpMessages(nullptr, 100);
    return done;
}

}  // namespace drvhost
