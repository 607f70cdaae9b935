// The Printing Shortcuts page as a person meets it: the sample printer's document sheet opened by
// the simulated core driver with the plug-in from the driver directory, shown on the display,
// and driven with the messages that clicks send. What the page stores is read back from Wine's
// spooler.
#include "shortcuts/shortcut_store.h"
#include "tests/ui/page_bed.h"

#include <commctrl.h>

#include <gtest/gtest.h>

using namespace zxtest;

namespace {

const std::vector<std::wstring> kBuiltIns = {
    L"General Everyday Printing",   L"Photo Printing - Borderless", L"Photo Printing - With White Borders",
    L"Two-sided (Duplex) Printing", L"Fast/Economical Printing",    L"Factory Defaults"};
constexpr wchar_t kPendingName[] = L"Untitled printing shortcut";
constexpr int kSaveAs = 1080, kDelete = 1081, kMediaCombo = 1031, kQualityCombo = 1033, kApplyButton = 0x3021;
constexpr int kCombos[] = {1031, 1033, 1035, 1029, 1037};

using ShortcutsPage = ShownSheetTest;

}  // namespace

// The page is the sheet's start page and lists the driver's shortcuts with their pictures, the
// first selected with its five settings; opening it changes nothing in the job.
TEST_F(ShortcutsPage, OpensAsStartPageWithTheBuiltInShortcuts) {
    PageBed bed;
    bool inspected = false;
    bed.Run({}, [&](size_t, HWND sheet) {
        inspected = true;
        EXPECT_EQ(ShortcutPageOf(sheet), PropSheet_GetCurrentPageHwnd(sheet));
        HWND page = ShortcutPageOf(sheet);
        ASSERT_NE(nullptr, page);
        EXPECT_EQ(kBuiltIns, ListTexts(page));
        EXPECT_EQ(0, SelectedListItem(page));
        HWND list = ::GetDlgItem(page, 1020);
        HIMAGELIST images = reinterpret_cast<HIMAGELIST>(::SendMessageW(list, LVM_GETIMAGELIST, LVSIL_SMALL, 0));
        ASSERT_NE(nullptr, images);
        EXPECT_EQ(6, ImageList_GetImageCount(images));
        int width = 0, height = 0;
        ImageList_GetIconSize(images, &width, &height);
        EXPECT_EQ(std::pair(48, 48), std::pair(width, height));
        for (int item = 0; item < 6; ++item) {
            LVITEMW request{};
            request.mask = LVIF_IMAGE;
            request.iItem = item;
            ::SendMessageW(list, LVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&request));
            EXPECT_EQ(item, request.iImage);
        }
        EXPECT_EQ(L"Media type", ControlText(page, 1032));
        EXPECT_EQ(L"Plain Paper", ComboText(page, kMediaCombo));
        EXPECT_EQ(L"Normal", ComboText(page, kQualityCombo));
        for (int combo : kCombos) EXPECT_TRUE(Visible(page, combo)) << combo;
        EXPECT_FALSE(Enabled(page, kSaveAs));
        EXPECT_FALSE(Enabled(page, kDelete));
        EXPECT_FALSE(::IsWindowEnabled(::GetDlgItem(sheet, kApplyButton)));
    });
    EXPECT_TRUE(inspected);
}

// Picking a shortcut hands its settings to the core driver's items at once. Changing one of them
// makes a pending shortcut at the end of the list, selected, with the modified picture of its
// source; the item follows at once, and OK writes the items into the job.
TEST_F(ShortcutsPage, SelectingAShortcutAndChangingASettingReachTheCoreDriversItems) {
    PageBed bed;
    bed.Run({L"shortcut=Photo Printing - Borderless", L"setting=Media type=Other Photo Inkjet Papers", L"ok"},
            [&](size_t steps, HWND sheet) {
                HWND page = ShortcutPageOf(sheet);
                if (steps == 1) {
                    EXPECT_EQ(L"ZX Premium Photo Paper Glossy", ComboText(page, kMediaCombo));
                    EXPECT_EQ(2, bed.ItemSelection("MediaType"));
                    EXPECT_EQ(2, bed.ItemSelection("PageOutputQuality"));  // Best
                    EXPECT_EQ(1, bed.ItemSelection("BorderlessPrint"));
                    EXPECT_FALSE(Enabled(page, kDelete));  // a built-in shortcut cannot be deleted
                }
                if (steps != 2) return;
                std::vector<std::wstring> expected = kBuiltIns;
                expected.push_back(kPendingName);
                EXPECT_EQ(expected, ListTexts(page));
                EXPECT_EQ(6, SelectedListItem(page));
                EXPECT_EQ(L"Other Photo Inkjet Papers", ComboText(page, kMediaCombo));
                EXPECT_EQ(L"Best", ComboText(page, kQualityCombo));  // the source's other settings stay
                EXPECT_TRUE(Enabled(page, kSaveAs));
                EXPECT_TRUE(Enabled(page, kDelete));
                EXPECT_EQ(4, bed.ItemSelection("MediaType"));
                EXPECT_TRUE(::IsWindowEnabled(::GetDlgItem(sheet, kApplyButton)));
            });
    EXPECT_EQ(4u, bed.JobSelection("MediaType"));
    EXPECT_EQ(1u, bed.JobSelection("BorderlessPrint"));
    EXPECT_EQ(155u, PrinterDataNumber(zx::kShortcutDataKey, zx::kCustomBitmapIdValue));
}

// Save as names the pending shortcut; Apply stores it in the printer's data in its text form
// and records it as the current shortcut; the next opening of the sheet selects it, and Delete
// removes it from the list and selects the shortcut before it.
TEST_F(ShortcutsPage, SaveAsApplyAndDeleteOfAUserShortcut) {
    {
        PageBed bed;
        const auto run = bed.Run({L"setting=Print quality=Draft", L"save-as=  My drafts  ", L"apply", L"ok"},
                                 [&](size_t steps, HWND sheet) {
                                     if (steps != 2) return;
                                     HWND page = ShortcutPageOf(sheet);
                                     EXPECT_EQ(L"My drafts", ListTexts(page).back());
                                     EXPECT_FALSE(Enabled(page, kSaveAs));
                                 });
        EXPECT_TRUE(run.events.empty()) << run.events.front();
        const auto stored = PrinterShortcutValue(L"My drafts");
        ASSERT_TRUE(stored.has_value());
        EXPECT_EQ(static_cast<DWORD>(REG_SZ), stored->type);
        // Derived from entry 0, with the general modified picture, then the five settings in the
        // keywords' order (BorderlessPrint, DocumentNUp, Duplex, MediaType, PageOutputQuality):
        // all first options, Draft being the first print quality offered.
        EXPECT_EQ(L"0,0,154,0,0,0,0,0,", stored->Text());
        EXPECT_EQ(6u, PrinterDataNumber(zx::kShortcutDataKey, zx::kCurrentShortcutValue));
        EXPECT_EQ(0u, bed.JobSelection("PageOutputQuality"));
    }
    PageBed reopened(drvhost::FeatureSheet::Document, drvhost::kDocumentSheetMode, {{"PageOutputQuality", 0}});
    std::vector<std::wstring> expected = kBuiltIns;
    expected.push_back(L"My drafts");
    reopened.Run({L"shortcut=Factory Defaults", L"shortcut=My drafts", L"delete"}, [&](size_t steps, HWND sheet) {
        HWND page = ShortcutPageOf(sheet);
        if (steps == 0) {
            EXPECT_EQ(expected, ListTexts(page));
            EXPECT_EQ(6, SelectedListItem(page));
        }
        EXPECT_EQ(steps != 1, Enabled(page, kDelete)) << steps;
        if (steps != 3) return;
        EXPECT_EQ(kBuiltIns, ListTexts(page));
        EXPECT_EQ(5, SelectedListItem(page));
    });
}

// Names are checked as the user types them: too long, a name in use in other letter case, and
// more than 25 shortcuts are refused with their messages, and nothing is stored.
TEST_F(ShortcutsPage, RefusedNamesShowTheirMessages) {
    PageBed bed;
    const std::wstring fifty(50, L'x');
    const auto run =
        bed.Run({L"setting=Print quality=Draft", L"save-as=" + fifty, L"save-as=general everyday PRINTING", L"cancel"});
    ASSERT_EQ(2u, run.events.size());
    EXPECT_NE(std::string::npos, run.events[0].find("at most 49 characters")) << run.events[0];
    EXPECT_NE(std::string::npos, run.events[1].find("already exists")) << run.events[1];
    EXPECT_FALSE(PrinterShortcutValue(fifty).has_value());

    // Nineteen stored shortcuts, six built-in ones and the pending one make 26.
    for (int i = 0; i < 19; ++i) WritePrinterText(L"Stored " + std::to_wstring(i), L"0,0,154,");
    PageBed full;
    const auto tooMany =
        full.Run({L"setting=Print quality=Draft", L"save-as=One too many"}, [&](size_t steps, HWND sheet) {
            if (steps == 2) {
                EXPECT_EQ(25u, ListTexts(ShortcutPageOf(sheet)).size());
            }
        });
    ASSERT_EQ(1u, tooMany.events.size());
    EXPECT_NE(std::string::npos, tooMany.events[0].find("No more printing shortcuts")) << tooMany.events[0];
}

// A sheet opened without the right to change the job shows the shortcuts but lets nothing be
// changed.
TEST_F(ShortcutsPage, ReadOnlySheetDisablesEveryControl) {
    PageBed bed(drvhost::FeatureSheet::Document, drvhost::kReadOnlyDocumentSheetMode);
    bed.Run({}, [&](size_t, HWND sheet) {
        HWND page = ShortcutPageOf(sheet);
        EXPECT_EQ(kBuiltIns, ListTexts(page));
        for (int id : {1020, 1031, 1033, 1035, 1029, 1037, kSaveAs, kDelete}) EXPECT_FALSE(Enabled(page, id)) << id;
    });
}
