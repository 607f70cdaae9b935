// The shortcut store on Wine's spooler and registry, with the sample printer that drvhost
// installs. Wine never restricts printer access and cannot delete printer data: the restricted
// user and deletion go through the spooler seam (tests/shortcuts/shortcut_bed.h).
#include "shortcuts/shortcut_job.h"
#include "shortcuts/shortcut_text.h"
#include "tests/shortcuts/shortcut_bed.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace zxtest;

namespace {

// Texts that OutputDebugStringW raised while it lived.
class DebugOutput {
public:
    DebugOutput() : m_handler(::AddVectoredExceptionHandler(1, Record)) { s_current = this; }
    ~DebugOutput() {
        ::RemoveVectoredExceptionHandler(m_handler);
        s_current = nullptr;
    }
    size_t Count(std::string_view text) const { return std::count(lines.begin(), lines.end(), text); }
    std::vector<std::string> lines;

private:
    static LONG CALLBACK Record(EXCEPTION_POINTERS* exception) {
        const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
        if (record.ExceptionCode == DBG_PRINTEXCEPTION_C && record.NumberParameters >= 2 && s_current) {
            s_current->lines.emplace_back(reinterpret_cast<const char*>(record.ExceptionInformation[1]));
        }
        return EXCEPTION_CONTINUE_SEARCH;
    }
    static inline DebugOutput* s_current = nullptr;
    PVOID m_handler;
};

// Two shortcuts; the second sets one medium of four.
constexpr char kTwoShortcuts[] = R"(
*Feature: MediaType { *Option: P { *Name: "Plain" } *Option: T { *Name: "Thick" } *Option: G { *Name: "Glossy" }
                      *Option: C { *Name: "Card" } }
*Feature: PrintingShortcut { *Option: Every { *Name: "Everyday" } *Option: Photo { *Name: "Photo" } }
*Feature: Photo { *Option: MediaType { *Name: "G;P;T;G;C" } }
*Feature: ShortcutBitmaps { *Option: Every { *Name: "IDB_GEN_EVERY_DAY" } *Option: Photo { *Name: "IDB_PHOTO_BORDERLESS" } }
*Feature: AllSettingsfor_PS { *Option: MediaType { *Name: "P;P;T;G;C" } }
)";

void WritePrinterValue(const std::wstring& name, DWORD type, const void* data, DWORD size) {
    std::wstring printerName = kShortcutPrinter;
    PRINTER_DEFAULTSW defaults{nullptr, nullptr, PRINTER_ALL_ACCESS};
    zx::unique_printer printer;
    ASSERT_TRUE(::OpenPrinterW(printerName.data(), printer.put(), &defaults));
    ASSERT_EQ(ERROR_SUCCESS, ::SetPrinterDataExW(printer.get(), zx::kShortcutDataKey, name.c_str(), type,
                                                 static_cast<BYTE*>(const_cast<void*>(data)), size));
}

void WritePrinterText(const std::wstring& name, const std::wstring& text) {
    WritePrinterValue(name, REG_SZ, text.data(), static_cast<DWORD>(text.size() * sizeof(wchar_t)));
}

void WriteUserText(const std::wstring& keyPath, const std::wstring& name, const std::wstring& text) {
    ASSERT_EQ(ERROR_SUCCESS, ::RegSetKeyValueW(HKEY_CURRENT_USER, keyPath.c_str(), name.c_str(), REG_SZ, text.data(),
                                               static_cast<DWORD>(text.size() * sizeof(wchar_t))));
}

std::optional<std::wstring> UserText(const std::wstring& keyPath, const std::wstring& name) {
    wchar_t text[300] = {};
    DWORD size = sizeof(text) - sizeof(wchar_t);
    if (::RegGetValueW(HKEY_CURRENT_USER, keyPath.c_str(), name.c_str(), RRF_RT_REG_SZ | RRF_NOEXPAND, nullptr, text,
                       &size) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    return std::wstring(text);
}

class StoreTest : public testing::Test {
protected:
    StoreTest() {
        InstallShortcutPrinter();
        ClearShortcutStorage();
    }
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
        EXPECT_FALSE(bed.shortcuts.Store().IsRestricted());
        saved = zx::PendingShortcutFrom(bed.Record(1), 1);
        saved.SetName(L"Mine");
        saved.settings["MediaType"] = 3;
        EXPECT_EQ(zx::kStoreOk, bed.shortcuts.SaveShortcut(saved));
    }
    EXPECT_EQ((std::vector<SpoolerSeam::Write>{{L"Mine", REG_SZ, 20}}), seam.printerDataWrites);
    const std::optional<StoredData> value = PrinterShortcutValue(L"Mine");
    ASSERT_TRUE(value);
    EXPECT_EQ(DWORD{REG_SZ}, value->type);
    EXPECT_EQ(L"1,0,155,3,", value->Text());

    saved.isStored = saved.inPrinterData = true;
    ShortcutSheet reloaded = Sheet(kTwoShortcuts);
    ASSERT_EQ(3, reloaded.shortcuts.Count());
    EXPECT_EQ(saved, reloaded.Record(2));

    // On the sample printer, with all five settings.
    ShortcutSheet sample = Sheet();
    saved = zx::PendingShortcutFrom(sample.Record(3), 3);
    saved.SetName(L"Two-sided on thick paper");
    saved.settings["MediaType"] = 1;
    EXPECT_EQ(zx::kStoreOk, sample.shortcuts.SaveShortcut(saved));
    EXPECT_EQ(L"3,0,158,0,0,1,1,1,", PrinterShortcutValue(L"Two-sided on thick paper")->Text());
    saved.isStored = saved.inPrinterData = true;
    const ShortcutSheet again = Sheet();
    EXPECT_EQ(saved, again.Record(again.shortcuts.FindByNameIgnoringCase(saved.name)));
}

TEST_F(StoreTest, CurrentShortcutCustomBitmapAndPrinterGuid) {
    const VPrintShortcutStore store(kShortcutPrinter, false);
    EXPECT_EQ(L"", store.PrinterGuid());
    EXPECT_EQ(std::nullopt, PrinterGuidValue());

    DWORD index = 0xdeadbeef;
    EXPECT_EQ(zx::kStoreFailed, store.ReadCurrentShortcut(index));
    EXPECT_EQ(0u, index);
    EXPECT_EQ(zx::kStoreOk, store.WriteCurrentShortcut(4));
    EXPECT_EQ(zx::kStoreRefused, store.WriteCurrentShortcut(-1));
    EXPECT_EQ(zx::kStoreOk, store.ReadCurrentShortcut(index));
    EXPECT_EQ(4u, index);
    const std::optional<StoredData> current = PrinterShortcutValue(zx::kCurrentShortcutValue);
    EXPECT_EQ(DWORD{REG_DWORD}, current->type);
    EXPECT_EQ(4u, current->bytes.size());
    EXPECT_EQ(zx::kStoreOk, store.WriteCustomBitmapId(158));
    EXPECT_EQ(158, PrinterShortcutValue(zx::kCustomBitmapIdValue)->bytes.at(0));

    // Created once, without leading zeros, in a value of 520 bytes; read from then on.
    seam.nextGuid = GUID{0x0000ABCD, 0x0A1B, 0x0001, {0x00, 0x01, 0x0F, 0x10, 0xAB, 0x00, 0x00, 0xFF}};
    EXPECT_EQ(L"abcd-a1b-1-01f10ab00ff", VPrintShortcutStore(kShortcutPrinter, true).PrinterGuid());
    EXPECT_EQ(L"abcd-a1b-1-01f10ab00ff", PrinterGuidValue());
    EXPECT_EQ((SpoolerSeam::Write{L"PrinterGUID", REG_SZ, 520}), seam.printerDataWrites.back());
    seam.nextGuid = GUID{1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
    EXPECT_EQ(L"abcd-a1b-1-01f10ab00ff", VPrintShortcutStore(kShortcutPrinter, true).PrinterGuid());
    EXPECT_EQ(L"", VPrintShortcutStore(kShortcutPrinter, false).PrinterGuid());
}

// A user who may only print reads the shared shortcuts and keeps their own under their key;
// their own replace shared and built-in ones of the same name and go to the end.
TEST_F(StoreTest, RestrictedUserKeepsShortcutsUnderTheirOwnKey) {
    WritePrinterText(L"Shared", L"0,0,154,");
    WritePrinterText(L"Both", L"0,0,152,");
    WritePrinterText(L"General Everyday Printing", L"1,0,160,");
    seam.restricted = true;
    seam.nextGuid = GUID{0x12, 0x34, 0x56, {0x78, 0, 0, 0, 0, 0, 0, 0x9A}};
    std::wstring keyPath;
    {
        const VPrintShortcutStore store(kShortcutPrinter, false);
        EXPECT_TRUE(store.IsRestricted());
        keyPath = store.PerUserKeyPath();
        EXPECT_EQ(std::wstring(L"Software\\Velmora\\") + kShortcutPrinter + L"_12-34-56-780000009a", keyPath);
        EXPECT_EQ((std::vector<ACCESS_MASK>{PRINTER_READ, PRINTER_READ}), seam.openedWith);
    }
    WriteUserText(keyPath, L"Both", L"0,0,153,");
    WriteUserText(keyPath, L"Photo Printing - Borderless", L"0,0,149,");

    ShortcutSheet bed = Sheet();
    EXPECT_EQ((std::vector<std::wstring>{L"General Everyday Printing", L"Photo Printing - With White Borders",
                                         L"Two-sided (Duplex) Printing", L"Fast/Economical Printing",
                                         L"Factory Defaults", L"Shared", L"Both", L"Photo Printing - Borderless"}),
              NamesOf(bed.shortcuts.Records()));
    EXPECT_EQ(147, bed.Record(0).bitmapId);
    EXPECT_TRUE(bed.Record(5).inPrinterData);
    EXPECT_EQ(std::pair(false, 153), std::pair(bed.Record(6).inPrinterData, bed.Record(6).bitmapId));
    EXPECT_FALSE(bed.Record(7).isBuiltIn);

    // Writing goes to the user's key, never to the printer's data.
    PrintShortcutRecord mine = bed.Record(6);
    mine.SetName(L"Mine");
    EXPECT_EQ(zx::kStoreOk, bed.shortcuts.SaveShortcut(mine));
    EXPECT_EQ(L"0,0,153,0,0,0,0,1,", UserText(keyPath, L"Mine"));
    EXPECT_EQ(std::nullopt, PrinterShortcutValue(L"Mine"));
    EXPECT_EQ(zx::kStoreOk, bed.shortcuts.WriteCurrentShortcut(2));
    DWORD index = 0;
    EXPECT_EQ(zx::kStoreOk, bed.shortcuts.ReadCurrentShortcut(index));
    EXPECT_EQ(2u, index);
    EXPECT_EQ(std::nullopt, PrinterShortcutValue(zx::kCurrentShortcutValue));
    EXPECT_TRUE(bed.shortcuts.DeleteRecord(6));
    EXPECT_EQ(std::nullopt, UserText(keyPath, L"Both"));
    EXPECT_TRUE(seam.deletedPrinterData.empty());
    EXPECT_EQ(L"0,0,152,", PrinterShortcutValue(L"Both")->Text());
}

TEST_F(StoreTest, DeletingAShortcutRemovesItsValueAndRecord) {
    WritePrinterText(L"Mine", L"1,0,155,");
    ShortcutSheet bed = Sheet();
    ASSERT_EQ(7, bed.shortcuts.Count());
    EXPECT_TRUE(bed.shortcuts.DeleteRecord(6));
    EXPECT_EQ((std::vector<std::wstring>{L"Mine"}), seam.deletedPrinterData);
    EXPECT_EQ(std::nullopt, PrinterShortcutValue(L"Mine"));
    EXPECT_EQ(6, bed.shortcuts.Count());
    EXPECT_EQ(zx::kStoreRefused, bed.shortcuts.DeleteShortcut(nullptr));
    EXPECT_EQ(6, Sheet().shortcuts.Count());
}

// Only REG_SZ texts of fewer than 260 characters under other names are shortcuts.
TEST_F(StoreTest, ValuesThatAreNotShortcutsAreSkipped) {
    const DWORD number = 5;
    const std::wstring text = L"0,0,154,";
    WritePrinterText(zx::kCurrentShortcutValue, text);
    WritePrinterText(zx::kCustomBitmapIdValue, text);
    WritePrinterValue(L"Number", REG_DWORD, &number, sizeof(number));
    WritePrinterValue(L"Bytes", REG_BINARY, text.data(), static_cast<DWORD>(text.size() * 2));
    WritePrinterText(L"Too long", text + std::wstring(252, L'1'));
    WritePrinterText(L"Fits", text + std::wstring(251, L'1'));
    WritePrinterText(std::wstring(300, L'n'), L"3,0,158,");

    ShortcutSheet bed = Sheet();
    const std::vector<std::wstring> names = NamesOf(bed.shortcuts.Records());
    EXPECT_EQ((std::vector<std::wstring>{L"Fits", std::wstring(255, L'n')}),
              std::vector<std::wstring>(names.begin() + 6, names.end()));

    // Without a duplex unit, a user shortcut's two-sided picture becomes the general one.
    bed.sheet.properties.SetManualDuplexSupported(0);
    bed.sheet.core.SetPrinterSetting(bed.sheet.core.Description().FindFeature("DuplexUnit").value(), 1);
    ASSERT_TRUE(bed.shortcuts.BuildShortcuts(bed.sheet.properties, &bed.sheet.params));
    EXPECT_EQ(std::pair(154, false), std::pair(bed.Record(7).bitmapId, bed.Record(7).isAvailable));
}

// Every successful open announces itself and is closed again; without a printer nothing works.
TEST_F(StoreTest, OpensAnnouncedAndNoPrinterNoStore) {
    const DebugOutput output;
    {
        ShortcutSheet bed = Sheet();
        DWORD index = 0;
        bed.shortcuts.ReadCurrentShortcut(index);
        bed.shortcuts.WriteCustomBitmapId(154);
    }
    EXPECT_EQ(4u, seam.openedWith.size());  // access probe, loading, reading, writing
    EXPECT_EQ(4u, output.Count("OpenPrinter succeeded...\n"));

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
        EXPECT_FALSE(store.IsRestricted());
    }
}
