// The plug-in's labels on the core driver's standard document page, shown on the display: the
// quality buttons and the two-sided control, as the common UI redraws them after changes.
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

// The quality buttons carry the plug-in's labels and keep them when the common UI redraws the page
// after a change of another item. With a two-sided unit the two-sided control says so while manual
// two-sided printing is off, and gives the manual label while it is on. The control is widened
// once per sheet, however often the page becomes active.
TEST_F(StandardPage, QualityLabelsAndTheTwoSidedControl) {
    PageBed bed;
    const WORD quality = FirstControlOf(bed, "PageOutputQuality"), twoSided = FirstControlOf(bed, "Duplex") + 1;
    const auto labelOf = [&](HWND sheet, int id) { return HeldText(::GetDlgItem(StandardPageOf(sheet), id)); };
    const auto expectQualityLabels = [&](HWND sheet, const std::string& when) {  // strings 940, 43, 941
        EXPECT_EQ((std::vector<std::wstring>{L"&Draft", L"&Normal", L"&Best"}),
                  (std::vector{labelOf(sheet, quality + 2), labelOf(sheet, quality + 4), labelOf(sheet, quality + 6)}))
            << when;
    };
    const auto widthOf = [&](HWND sheet) {
        RECT bounds{};
        ::GetWindowRect(::GetDlgItem(StandardPageOf(sheet), twoSided), &bounds);
        return bounds.right - bounds.left;
    };
    LONG firstWidth = 0;
    size_t checks = 0;
    bed.Run({kStandardPage, L"option=PaperSize=A4", L"option=Orientation=Landscape", L"page=Printing Shortcuts",
             kStandardPage},
            [&](size_t steps, HWND sheet) {
                if (steps == 1) {
                    firstWidth = widthOf(sheet);
                    RECT laidOut{0, 0, 106, 10};  // the width the standard page gives the label
                    ::MapDialogRect(StandardPageOf(sheet), &laidOut);
                    EXPECT_EQ(laidOut.right + 74, firstWidth);
                    EXPECT_EQ(L"Print on both sides", labelOf(sheet, twoSided));
                    HWND page = StandardPageOf(sheet);
                    bed.session->SelectOption("ZXPrintOnBothSidesManually", 1, page);
                    EXPECT_EQ(L"Print on both sides manually", labelOf(sheet, twoSided));
                    bed.session->SelectOption("ZXPrintOnBothSidesManually", 0, page);
                    EXPECT_EQ(L"Print on both sides", labelOf(sheet, twoSided));
                }
                if (steps == 0 || steps == 4) return;  // the standard page is not on show
                ++checks;
                expectQualityLabels(sheet, "after step " + std::to_string(steps));
                if (steps == 5) {
                    EXPECT_EQ(firstWidth, widthOf(sheet)) << "widened again";
                }
            });
    EXPECT_EQ(4u, checks);
}
