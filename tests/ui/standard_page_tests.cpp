// The plug-in's labels on the core driver's standard document page, shown on the display: the
// quality buttons and the two-sided control, as the common UI redraws them after changes.
#include "tests/shortcuts/shortcut_bed.h"
#include "tests/ui/page_bed.h"

#include <gtest/gtest.h>

using namespace zxtest;

namespace {

constexpr wchar_t kStandardPage[] = L"page=Layout and Quality";

// The text a window holds, read without asking the window (a label procedure of the plug-in may
// be in place, answering every message itself).
std::wstring HeldText(HWND window) {
    wchar_t text[256] = {};
    ::InternalGetWindowText(window, text, 256);
    return text;
}

HWND StandardPageOf(HWND sheet) { return PropSheet_GetCurrentPageHwnd(sheet); }

WORD FirstControlOf(PageBed& bed, std::string_view feature) { return bed.session->Item(feature)->pOptType->BegCtrlID; }

using StandardPage = ShownSheetTest;

}  // namespace

// The quality buttons carry the plug-in's labels, and keep them when the common UI redraws the
// page after a change of another item.
TEST_F(StandardPage, QualityButtonsKeepThePluginsLabels) {
    PageBed bed;
    const WORD quality = FirstControlOf(bed, "PageOutputQuality");
    const std::vector<std::wstring> labels = {L"&Draft", L"&Normal", L"&Best"};  // strings 940, 43, 941
    auto shown = [&](HWND page) {
        return std::vector<std::wstring>{HeldText(::GetDlgItem(page, quality + 2)),
                                         HeldText(::GetDlgItem(page, quality + 4)),
                                         HeldText(::GetDlgItem(page, quality + 6))};
    };
    size_t checks = 0;
    bed.Run({kStandardPage, L"option=PaperSize=A4", L"option=Orientation=Landscape"}, [&](size_t steps, HWND sheet) {
        if (steps == 0) return;
        ++checks;
        EXPECT_EQ(labels, shown(StandardPageOf(sheet))) << "after step " << steps;
    });
    EXPECT_EQ(3u, checks);
}

// With a two-sided unit the two-sided control says so while manual two-sided printing is off, and
// gives the manual label while it is on. The control is widened once per sheet, however often the
// page becomes active.
TEST_F(StandardPage, TwoSidedControlFollowsManualPrintingAndIsWidenedOnce) {
    PageBed bed;
    const WORD control = FirstControlOf(bed, "Duplex") + 1;
    auto labelOf = [&](HWND sheet) { return HeldText(::GetDlgItem(StandardPageOf(sheet), control)); };
    auto widthOf = [&](HWND sheet) {
        RECT bounds{};
        ::GetWindowRect(::GetDlgItem(StandardPageOf(sheet), control), &bounds);
        return bounds.right - bounds.left;
    };
    LONG firstWidth = 0;
    bed.Run({kStandardPage, L"page=Printing Shortcuts", kStandardPage}, [&](size_t steps, HWND sheet) {
        if (steps == 1) {
            firstWidth = widthOf(sheet);
            RECT laidOut{0, 0, 106, 10};  // the width the standard page gives the label
            ::MapDialogRect(StandardPageOf(sheet), &laidOut);
            EXPECT_EQ(laidOut.right + 74, firstWidth);
            EXPECT_EQ(L"Print on both sides", labelOf(sheet));
            HWND page = StandardPageOf(sheet);
            bed.session->SelectOption("ZXPrintOnBothSidesManually", 1, page);
            EXPECT_EQ(L"Print on both sides manually", labelOf(sheet));
            bed.session->SelectOption("ZXPrintOnBothSidesManually", 0, page);
            EXPECT_EQ(L"Print on both sides", labelOf(sheet));
        }
        if (steps == 3) {
            EXPECT_EQ(firstWidth, widthOf(sheet)) << "widened again";
        }
    });
}
