// Test beds of the shortcuts: a document sheet of the simulated core driver with the shortcut
// collection built on it, the sample printer installed in Wine's spooler, and the spooler seam
// set up as a user who may only print sees it.
#pragma once

#include "shortcuts/shortcut_collection.h"
#include "tests/settings/settings_support.h"
#include "util/spooler_platform.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace zxtest {

inline constexpr wchar_t kShortcutPrinter[] = L"ZX Shortcut Test Printer";

inline void InstallShortcutPrinter() { InstallSamplePrinter(kShortcutPrinter); }

// Removes every stored shortcut of the printer and its GUID from the printer's registry key
// (Wine's spooler cannot delete printer data), and the per-user keys of all printers.
void ClearShortcutStorage();
// Removes the stored shortcuts of the printer and of one per-user key, keeping the GUID.
void ClearStoredShortcuts(const std::wstring& userKey);

// Tests on the shortcut test printer, which starts without stored shortcuts or GUID.
class ShortcutPrinterTest : public testing::Test {
protected:
    ShortcutPrinterTest() {
        InstallShortcutPrinter();
        ClearShortcutStorage();
    }
};

// A value of the printer's data as the spooler gives it.
struct StoredData {
    DWORD type = REG_NONE;
    std::vector<BYTE> bytes;
    // The text up to its first null.
    std::wstring Text() const {
        const std::wstring text(reinterpret_cast<const wchar_t*>(bytes.data()), bytes.size() / sizeof(wchar_t));
        return text.substr(0, text.find(L'\0'));
    }
};
std::optional<StoredData> PrinterDataValue(const wchar_t* key, const std::wstring& name);
// A value under "PrinterDriverData\PrintShortcutData"; a REG_DWORD value under `key`; the GUID.
std::optional<StoredData> PrinterShortcutValue(const std::wstring& name);
std::optional<DWORD> PrinterDataNumber(const wchar_t* key, const std::wstring& name);
std::optional<std::wstring> PrinterGuidValue();
// Writes a value there, or under a per-user key, as any program could; a text without terminator.
void WritePrinterValue(const std::wstring& name, DWORD type, const void* data, DWORD size);
void WritePrinterText(const std::wstring& name, const std::wstring& text);
void WriteUserValue(const std::wstring& keyPath, const std::wstring& name, DWORD type, const void* data, DWORD size);
// The printer's key in the registry, where Wine's spooler keeps its data.
std::wstring ShortcutPrinterKey();

// The seam as a user who may only print sees the spooler: full access to the printer is refused.
// Deleting printer data, which Wine cannot, deletes through the printer's registry key and is
// recorded, as are the accesses of every successful open and the printer data written (Wine's
// registry adds a terminator to a text written without one, so the size is checked here).
class SpoolerSeam {
public:
    SpoolerSeam();
    ~SpoolerSeam();

    bool restricted = false;
    std::optional<GUID> nextGuid;  // what CoCreateGuid answers; the real one without

    std::vector<ACCESS_MASK> openedWith;
    std::vector<std::wstring> deletedPrinterData;
    struct Write {
        std::wstring name;
        DWORD type;
        DWORD size;
        bool operator==(const Write&) const = default;
    };
    std::vector<Write> printerDataWrites;
    int openHandles = 0;

private:
    zx::SpoolerPlatform m_previous;
};

// A document sheet of a printer description with the shortcut collection built on it.
struct ShortcutSheet {
    explicit ShortcutSheet(drvhost::PrinterDescription description, IBiDiData* accessories = nullptr,
                           const wchar_t* printerName = nullptr)
        : sheet(std::move(description)), shortcuts(accessories) {
        sheet.params.pPrinterName = const_cast<PWSTR>(printerName);
        built = shortcuts.BuildAllSettings(sheet.properties, &sheet.params) &&
                shortcuts.BuildShortcuts(sheet.properties, &sheet.params);
    }
    explicit ShortcutSheet(std::string_view gpdText, IBiDiData* accessories = nullptr)
        : ShortcutSheet(drvhost::ParsePrinterDescription(gpdText, "test.gpd"), accessories) {}

    const PrintShortcutRecord& Record(size_t index) const { return shortcuts.Records().at(index); }

    SheetBed sheet;
    VUIPSItem shortcuts;
    bool built = false;
};

// The names of the records, in list order.
std::vector<std::wstring> NamesOf(const std::vector<PrintShortcutRecord>& records);

}  // namespace zxtest
