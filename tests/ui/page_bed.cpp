#include "tests/ui/page_bed.h"

#include "drvhost/printer_install.h"

#include <commctrl.h>

namespace zxtest {

PageBed::PageBed(drvhost::FeatureSheet sheet, DWORD flags,
                 const std::vector<std::pair<std::string, DWORD>>& jobSettings) {
    InstallShortcutPrinter();
    const std::wstring directory = drvhost::DriverDirectoryOf(kShortcutPrinter);
    host = std::make_unique<drvhost::DriverHost>(drvhost::LoadPrinterDescription(directory + drvhost::kDescriptionFile),
                                                 directory + drvhost::kPluginFile, kShortcutPrinter);
    job = host->NewDefaultJob();
    for (const auto& [feature, option] : jobSettings) {
        job->SetSelection(host->Core().Description().FindFeature(feature).value(), option);
    }
    session = std::make_unique<drvhost::UiSession>(*host, sheet, job.get(), flags);
    session->Open();
}

drvhost::SheetRun PageBed::Run(const std::vector<std::wstring>& steps, const drvhost::SheetInspector& inspect) {
    std::vector<drvhost::SheetStep> parsed;
    std::string problem;
    for (const std::wstring& text : steps) {
        const auto step = drvhost::ParseSheetStep(text, problem);
        EXPECT_TRUE(step.has_value()) << problem;
        if (step) parsed.push_back(*step);
    }
    drvhost::SheetRun run;
    EXPECT_TRUE(drvhost::RunSheet(*session, parsed, {}, run, problem, inspect)) << problem;
    return run;
}

LONG PageBed::ItemSelection(std::string_view feature) {
    const POPTITEM item = session->Item(feature);
    return item != nullptr ? item->Sel : -1;
}

DWORD PageBed::JobSelection(std::string_view feature) const {
    return job->Selection(host->Core().Description().FindFeature(feature).value());
}

HWND ShortcutPageOf(HWND sheet) {
    const int pages = TabCtrl_GetItemCount(PropSheet_GetTabControl(sheet));
    for (int index = 0; index < pages; ++index) {
        HWND page = PropSheet_IndexToHwnd(sheet, index);
        if (page != nullptr && ::GetDlgItem(page, 1020) != nullptr) return page;
    }
    return nullptr;
}

std::vector<std::wstring> ListTexts(HWND page) {
    HWND list = ::GetDlgItem(page, 1020);
    std::vector<std::wstring> texts;
    const int count = static_cast<int>(::SendMessageW(list, LVM_GETITEMCOUNT, 0, 0));
    for (int item = 0; item < count; ++item) {
        wchar_t text[256] = {};
        LVITEMW request{};
        request.pszText = text;
        request.cchTextMax = 256;
        ::SendMessageW(list, LVM_GETITEMTEXTW, item, reinterpret_cast<LPARAM>(&request));
        texts.emplace_back(text);
    }
    return texts;
}

int SelectedListItem(HWND page) {
    return static_cast<int>(::SendDlgItemMessageW(page, 1020, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_SELECTED));
}

std::wstring ControlText(HWND page, int id) {
    wchar_t text[256] = {};
    ::GetDlgItemTextW(page, id, text, 256);
    return text;
}

std::wstring ComboText(HWND page, int id) {
    const LRESULT selection = ::SendDlgItemMessageW(page, id, CB_GETCURSEL, 0, 0);
    if (selection == CB_ERR) return L"(none)";
    wchar_t text[256] = {};
    if (::SendDlgItemMessageW(page, id, CB_GETLBTEXTLEN, selection, 0) < 256) {
        ::SendDlgItemMessageW(page, id, CB_GETLBTEXT, selection, reinterpret_cast<LPARAM>(text));
    }
    return text;
}

bool Enabled(HWND page, int id) { return ::IsWindowEnabled(::GetDlgItem(page, id)) != FALSE; }

bool Visible(HWND page, int id) { return ::IsWindowVisible(::GetDlgItem(page, id)) != FALSE; }

}  // namespace zxtest
