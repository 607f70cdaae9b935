// The shortcut store on Wine's spooler and registry, with the sample printer that drvhost
// installs. Wine never restricts printer access and cannot delete printer data: the restricted
// user and deletion go through the spooler seam (tests/shortcuts/shortcut_bed.h).
#include "resources/resource_libraries.h"
#include "shortcuts/shortcut_job.h"
#include "shortcuts/shortcut_text.h"
#include "tests/shortcuts/shortcut_bed.h"
#include "tests/support/debugger_output.h"

#include <gtest/gtest.h>

using namespace zxtest;

namespace {

// Two shortcuts; the second sets one medium of four.
constexpr char kTwoShortcuts[] = R"(
*Feature: MediaType { *Option: P { *Name: "Plain" } *Option: T { *Name: "Thick" } *Option: G { *Name: "Glossy" }
                      *Option: C { *Name: "Card" } }
*Feature: PrintingShortcut { *Option: Every { *Name: "Everyday" } *Option: Photo { *Name: "Photo" } }
*Feature: Photo { *Option: MediaType { *Name: "G;P;T;G;C" } }
*Feature: ShortcutBitmaps { *Option: Every { *Name: "IDB_GEN_EVERY_DAY" } *Option: Photo { *Name: "IDB_PHOTO_BORDERLESS" } }
*Feature: AllSettingsfor_PS { *Option: MediaType { *Name: "P;P;T;G;C" } }
)";

std::optional<std::wstring> UserText(const std::wstring& keyPath, const std::wstring& name) {
    wchar_t text[300] = {};
    DWORD size = sizeof(text) - sizeof(wchar_t);
    if (::RegGetValueW(HKEY_CURRENT_USER, keyPath.c_str(), name.c_str(), RRF_RT_REG_SZ | RRF_NOEXPAND, nullptr, text,
                       &size) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    return std::wstring(text);
}

class StoreTest : public ShortcutPrinterTest {
protected:
    ~StoreTest() override {
        EXPECT_EQ(0, seam.openHandles);
        ClearShortcutStorage();
    }
    ShortcutSheet Sheet(std::string_view gpdText = {}) {
        return ShortcutSheet(gpdText.empty() ? SamplePrinter() : drvhost::ParsePrinterDescription(gpdText, "test.gpd"),
                             nullptr, kShortcutPrinter);
    }

    SpoolerSeam seam;
};

}  // namespace

// A user shortcut lives in the printer's data as its text and comes back as it was saved.
TEST_F(StoreTest, SavedShortcutsLoadBackEqual) {
    PrintShortcutRecord saved;
    {
        ShortcutSheet bed = Sheet(kTwoShortcuts);
        ASSERT_TRUE(bed.built);
        saved = zx::PendingShortcutFrom(bed.Record(1), 1);
        saved.SetName(L"Mine");
        saved.settings["MediaType"] = 3;
        EXPECT_EQ(zx::kStoreOk, bed.shortcuts.SaveShortcut(saved));
    }
    EXPECT_EQ((std::vector<SpoolerSeam::Write>{{L"Mine", REG_SZ, 20}}), seam.printerDataWrites);
    EXPECT_EQ(L"1,0,155,3,", PrinterShortcutValue(L"Mine").value().Text());
    saved.isStored = saved.inPrinterData = true;
    EXPECT_EQ(saved, Sheet(kTwoShortcuts).Record(2));
}

// Missing fields keep the base record's values, extra ones are ignored, a base index outside the
// list derives from record 0; only REG_SZ texts of fewer than 260 characters are shortcuts.
TEST_F(StoreTest, StoredTextsAreReadAgainstTheirBaseRecord) {
    const DWORD number = 5;
    const std::wstring text = L"0,0,154,";
    for (const wchar_t* name : {zx::kCurrentShortcutValue, zx::kCustomBitmapIdValue, L"Too long"}) {
        WritePrinterText(name, name[0] == L'T' ? text + std::wstring(252, L'1') : text);
    }
    WritePrinterValue(L"Number", REG_DWORD, &number, sizeof(number));
    WritePrinterValue(L"Bytes", REG_BINARY, text.data(), static_cast<DWORD>(text.size() * 2));
    const std::vector<std::pair<std::wstring, std::wstring>> shortcuts = {
        {L"a Three fields", L"0,0,154,"},        {L"b Beyond the list", L"99,0,147,1,"},
        {L"c Negative", L"-5,0,160,0,1,"},        {L"d Extra fields", L"2,1,153,0,0,1,1,1,1,1,1,"},
        {L"e Unknown picture", L"3,0,150,2"},     {L"f Fits", text + std::wstring(251, L'1')},
        {std::wstring(300, L'n'), L"3,0,158,"}};
    for (const auto& [name, value] : shortcuts) WritePrinterText(name, value);

    ShortcutSheet bed = Sheet();
    ASSERT_EQ(13, bed.shortcuts.Count());
    const auto expect = [&](int32_t index, int32_t base, int32_t bitmap, std::vector<int32_t> values) {
        const PrintShortcutRecord& record = bed.Record(index);
        std::vector<int32_t> actual;
        for (const auto& setting : record.settings) actual.push_back(setting.second);
        EXPECT_EQ(std::tuple(base, bitmap, values), std::tuple(record.baseIndex, record.bitmapId, actual)) << index;
        EXPECT_TRUE(record.inPrinterData && record.isAvailable && !record.isBuiltIn) << index;
    };
    expect(6, 0, 154, {0, 0, 0, 0, 1});  // settings in keyword order: borderless, N-up, two-sided, media, quality
    expect(7, 0, 147, {1, 0, 0, 0, 1});
    expect(8, 0, 160, {0, 1, 0, 0, 1});
    expect(9, 2, 153, {0, 0, 1, 1, 1});
    expect(10, 3, 147, {0, 0, 1, 0, 1});
    expect(11, 0, 154, {0, 0, 0, 0, 1});
    EXPECT_EQ(std::wstring(255, L'n'), bed.Record(12).Name());
    EXPECT_TRUE(bed.Record(9).usesAllSettings);

    // Without a duplex unit, a user shortcut's two-sided picture becomes the general one.
    bed.sheet.properties.SetManualDuplexSupported(0);
    bed.sheet.core.SetPrinterSetting(bed.sheet.core.Description().FindFeature("DuplexUnit").value(), 1);
    ASSERT_TRUE(bed.shortcuts.BuildShortcuts(bed.sheet.properties, &bed.sheet.params));
    EXPECT_EQ(std::pair(154, false), std::pair(bed.Record(12).bitmapId, bed.Record(12).isAvailable));
}

TEST_F(StoreTest, CurrentShortcutCustomBitmapAndPrinterGuid) {
    const VPrintShortcutStore store(kShortcutPrinter, false);
    EXPECT_EQ(L"", store.PrinterGuid());
    DWORD index = 0xdeadbeef;
    EXPECT_EQ(zx::kStoreFailed, store.ReadCurrentShortcut(index));
    EXPECT_EQ(0u, index);
    EXPECT_EQ(zx::kStoreOk, store.WriteCurrentShortcut(4));
    EXPECT_EQ(zx::kStoreRefused, store.WriteCurrentShortcut(-1));
    EXPECT_EQ(zx::kStoreOk, store.ReadCurrentShortcut(index));
    EXPECT_EQ(4u, index);
    EXPECT_EQ(zx::kStoreOk, store.WriteCustomBitmapId(158));
    EXPECT_EQ((std::vector<SpoolerSeam::Write>{{zx::kCurrentShortcutValue, REG_DWORD, 4},
                                               {zx::kCustomBitmapIdValue, REG_DWORD, 4}}),
              seam.printerDataWrites);
    EXPECT_EQ(158u, PrinterDataNumber(zx::kShortcutDataKey, zx::kCustomBitmapIdValue));

    // Created once, without leading zeros, in a value of 520 bytes; read from then on.
    EXPECT_EQ(std::nullopt, PrinterGuidValue());
    seam.nextGuid = GUID{0x0000ABCD, 0x0A1B, 0x0001, {0x00, 0x01, 0x0F, 0x10, 0xAB, 0x00, 0x00, 0xFF}};
    EXPECT_EQ(L"abcd-a1b-1-01f10ab00ff", VPrintShortcutStore(kShortcutPrinter, true).PrinterGuid());
    EXPECT_EQ(L"abcd-a1b-1-01f10ab00ff", PrinterGuidValue());
    EXPECT_EQ((SpoolerSeam::Write{L"PrinterGUID", REG_SZ, 520}), seam.printerDataWrites.back());
    seam.nextGuid = GUID{1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
    EXPECT_EQ(L"abcd-a1b-1-01f10ab00ff", VPrintShortcutStore(kShortcutPrinter, true).PrinterGuid());
}

// A user who may only print reads the shared shortcuts and keeps their own under their key;
// their own replace shared and built-in ones of the same name and go to the end.
TEST_F(StoreTest, RestrictedUserKeepsShortcutsUnderTheirOwnKey) {
    WritePrinterText(L"Shared", L"0,0,154,");
    WritePrinterText(L"Both", L"0,0,152,");
    WritePrinterText(L"General Everyday Printing", L"1,0,160,");
    seam.restricted = true;
    seam.nextGuid = GUID{0x12, 0x34, 0x56, {0x78, 0, 0, 0, 0, 0, 0, 0x9A}};
    const std::wstring keyPath = VPrintShortcutStore(kShortcutPrinter, false).PerUserKeyPath();
    EXPECT_EQ(std::wstring(L"Software\\Velmora\\") + kShortcutPrinter + L"_12-34-56-780000009a", keyPath);
    EXPECT_EQ((std::vector<ACCESS_MASK>{PRINTER_READ, PRINTER_READ}), seam.openedWith);
    for (const auto& [name, text] : {std::pair(L"Both", L"0,0,153,"), {L"Photo Printing - Borderless", L"0,0,149,"}}) {
        WriteUserValue(keyPath, name, REG_SZ, text, static_cast<DWORD>(std::wcslen(text) * sizeof(wchar_t)));
    }

    ShortcutSheet bed = Sheet();
    EXPECT_TRUE(bed.shortcuts.Store().IsRestricted());
    EXPECT_EQ((std::vector<std::wstring>{L"General Everyday Printing", L"Photo Printing - With White Borders",
                                         L"Two-sided (Duplex) Printing", L"Fast/Economical Printing",
                                         L"Factory Defaults", L"Shared", L"Both", L"Photo Printing - Borderless"}),
              NamesOf(bed.shortcuts.Records()));
    EXPECT_EQ(147, bed.Record(0).bitmapId);
    EXPECT_TRUE(bed.Record(5).inPrinterData);
    EXPECT_EQ(std::pair(false, 153), std::pair(bed.Record(6).inPrinterData, bed.Record(6).bitmapId));

    // Writing and deleting go to the user's key, never to the printer's data.
    PrintShortcutRecord mine = bed.Record(6);
    mine.SetName(L"Mine");
    EXPECT_EQ(zx::kStoreOk, bed.shortcuts.SaveShortcut(mine));
    EXPECT_EQ(L"0,0,153,0,0,0,0,1,", UserText(keyPath, L"Mine"));
    EXPECT_EQ(zx::kStoreOk, bed.shortcuts.WriteCurrentShortcut(2));
    DWORD index = 0;
    EXPECT_EQ(zx::kStoreOk, bed.shortcuts.ReadCurrentShortcut(index));
    EXPECT_EQ(2u, index);
    EXPECT_TRUE(bed.shortcuts.DeleteRecord(6));
    EXPECT_EQ(std::nullopt, UserText(keyPath, L"Both"));
    EXPECT_EQ(L"0,0,152,", PrinterShortcutValue(L"Both").value().Text());
    EXPECT_TRUE(seam.deletedPrinterData.empty());
    EXPECT_EQ((std::vector<SpoolerSeam::Write>{{L"PrinterGUID", REG_SZ, 520}}), seam.printerDataWrites);
}

// Every successful open announces itself and is closed again; a deleted shortcut is gone.
TEST_F(StoreTest, OpensAnnouncedAndDeletion) {
    WritePrinterText(L"Mine", L"1,0,155,");
    const DebuggerOutput output;
    {
        ShortcutSheet bed = Sheet();
        ASSERT_EQ(7, bed.shortcuts.Count());
        EXPECT_TRUE(bed.shortcuts.DeleteRecord(6));
        EXPECT_EQ(zx::kStoreRefused, bed.shortcuts.DeleteShortcut(nullptr));
    }
    EXPECT_EQ(3u, seam.openedWith.size());  // access probe, loading, deleting
    size_t announced = 0;
    for (size_t at = 0; (at = output.Text().find("OpenPrinter succeeded...\n", at)) != std::string::npos; ++at) {
        ++announced;
    }
    EXPECT_EQ(3u, announced);
    EXPECT_EQ((std::vector<std::wstring>{L"Mine"}), seam.deletedPrinterData);
    EXPECT_EQ(6, Sheet().shortcuts.Count());
}

TEST_F(StoreTest, WithoutAPrinterNothingIsStored) {
    for (const wchar_t* name : {static_cast<const wchar_t*>(nullptr), L"", L"No Such Printer"}) {
        const VPrintShortcutStore store(name, true);
        DWORD index = 0xdeadbeef;
        std::vector<PrintShortcutRecord> list(1);
        EXPECT_EQ(zx::kStoreFailed, store.ReadCurrentShortcut(index));
        EXPECT_EQ(0u, index);
        EXPECT_EQ(zx::kStoreFailed, store.WriteCurrentShortcut(1));
        EXPECT_EQ(zx::kStoreFailed, store.SaveShortcut(list[0]));
        EXPECT_EQ(zx::kStoreFailed, store.DeleteShortcut(L"Mine"));
        EXPECT_EQ(zx::kStoreFailed, store.LoadShortcuts(list, list[0]));
        EXPECT_EQ(1u, list.size());
    }
}

// A paper index does not count the custom size; the item takes the paper of the same display name.
TEST_F(StoreTest, PaperSizeGoesToTheOptionOfItsDisplayName) {
    ASSERT_EQ(S_OK, zx::LoadResourceLibraries(kShortcutPrinter));
    ShortcutSheet bed = Sheet(R"(
        *Feature: PaperSize { *Option: CUSTOMSIZE { *Name: "Custom Size" } *Option: LETTER { *Name: "Letter" }
                              *Option: A4 { *Name: "a4" } }
        *Feature: PrintingShortcut { *Option: OnA4 { *Name: "On A4" } }
        *Feature: OnA4 { *Option: PaperSize { *Name: "IDS_MSIZE_A4;IDS_MSIZE_LETTER;IDS_MSIZE_A4" } }
        *Feature: AllSettingsfor_PS { *Option: PaperSize { *Name: "IDS_MSIZE_LETTER;IDS_MSIZE_LETTER;IDS_MSIZE_A4" } })");
    EXPECT_EQ(1, bed.shortcuts.ToDriverOption(bed.Record(0), 0, 1));
    EXPECT_EQ(S_OK, zx::ApplyShortcutSetting(bed.shortcuts, bed.Record(0), 0, 1, bed.sheet.properties));
    EXPECT_EQ(2u, bed.sheet.Selection("PaperSize"));
    zx::FreeResourceLibraries();
}
