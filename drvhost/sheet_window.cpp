#include "drvhost/sheet_window.h"

#include "drvhost/png_writer.h"

#include <commctrl.h>
#include <prsht.h>

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

// Where the core driver's standard page puts an item's list box, relative to the item's first
// control identifier (its label).
WORD ListControlOffset(std::string_view feature) {
    if (feature == "MediaType") return 2;
    if (feature == "DocumentNUp") return 4;
    return 1;
}

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
    explicit StandardPage(UiSession& session) : m_session(session), m_template(L"Layout and Quality", 280, 10) {}

    PROPSHEETPAGEW Build() {
        OptionItems& items = m_session.Items();
        std::vector<OPTITEM*> visible;
        for (DWORD i = 0; i < items.Count(); ++i) {
            if (!(items.Items()[i].Flags & OPTIF_HIDE)) visible.push_back(&items.Items()[i]);
        }
        // Two columns, filled top to bottom.
        const size_t perColumn = (visible.size() + 1) / 2;
        for (size_t index = 0; index < visible.size(); ++index) {
            const short x = static_cast<short>(kMargin + (index / perColumn) * kColumnWidth);
            const short y = static_cast<short>(kMargin + (index % perColumn) * kRowHeight);
            AddRow(*visible[index], x, y);
        }
        m_template.Resize(2 * kColumnWidth, static_cast<short>(2 * kMargin + perColumn * kRowHeight));
        PROPSHEETPAGEW page{};
        page.dwSize = sizeof(page);
        page.dwFlags = PSP_DLGINDIRECT;
        page.pResource = m_template.Get();
        page.pfnDlgProc = &DialogProc;
        page.lParam = reinterpret_cast<LPARAM>(this);
        return page;
    }

private:
    void AddRow(OPTITEM& item, short x, short y) {
        Row row{&item, static_cast<const FeatureRecord*>(reinterpret_cast<void*>(item.UserData))->keyword,
                item.pOptType->Type == TVOT_3STATES};
        const WORD first = item.pOptType->BegCtrlID;
        const short controlX = static_cast<short>(x + kLabelWidth);
        m_template.Add(kStaticClass, SS_LEFT, x, static_cast<short>(y + 2), kLabelWidth - 4, 10, first, item.pName);
        if (row.radio) {
            for (size_t option = 0; option < 3; ++option) {
                m_template.Add(kButtonClass, BS_AUTORADIOBUTTON | WS_TABSTOP,
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
        for (Row& row : m_rows) {
            const WORD first = row.item->pOptType->BegCtrlID;
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
            ::SendMessageW(::GetParent(dialog), PSM_CHANGED, reinterpret_cast<WPARAM>(dialog), 0);
            return TRUE;
        }
        return FALSE;
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
            std::vector<HWND> controls = {::GetDlgItem(dialog, first)};
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
};

void PumpMessages(HWND sheet, DWORD milliseconds) {
    const DWORD start = ::GetTickCount();
    while (::GetTickCount() - start < milliseconds) {
        MSG message;
        while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            if (sheet == nullptr || !PropSheet_IsDialogMessage(sheet, &message)) {
                ::TranslateMessage(&message);
                ::DispatchMessageW(&message);
            }
        }
        ::Sleep(20);
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

bool ShowSheet(UiSession& session, const std::wstring& screenshotPath, std::string& problem) {
    INITCOMMONCONTROLSEX controls{sizeof(controls), ICC_WIN95_CLASSES | ICC_STANDARD_CLASSES};
    ::InitCommonControlsEx(&controls);
    if (!HasDisplay()) {
        problem = "no display";
        return false;
    }

    StandardPage standard(session);
    PROPSHEETPAGEW standardPage = standard.Build();
    std::vector<HPROPSHEETPAGE> pages = session.Pages();
    UINT startPage = 0;
    for (UINT i = 0; i < pages.size(); ++i) {
        if (pages[i] == session.StartPage()) startPage = i;
    }
    pages.push_back(::CreatePropertySheetPageW(&standardPage));
    session.ReleasePages();  // the sheet destroys them

    const bool capture = !screenshotPath.empty();
    PROPSHEETHEADERW header{};
    header.dwSize = sizeof(header);
    header.dwFlags = capture ? PSH_MODELESS : 0;
    header.pszCaption = L"ZX Inkjet Simulator Printing Preferences";
    header.nPages = static_cast<UINT>(pages.size());
    header.nStartPage = startPage;
    header.phpage = pages.data();
    if (!capture) return ::PropertySheetW(&header) >= 0;

    HWND sheet = reinterpret_cast<HWND>(::PropertySheetW(&header));
    if (sheet == nullptr) {
        problem = "the property sheet could not be created";
        return false;
    }
    PumpMessages(sheet, 1500);
    const bool saved = CaptureWindow(sheet, screenshotPath);
    ::DestroyWindow(sheet);
    PumpMessages(nullptr, 100);
    if (!saved) problem = "the sheet could not be captured";
    return saved;
}

}  // namespace drvhost
