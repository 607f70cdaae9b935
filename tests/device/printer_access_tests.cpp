// Values in the printer's driver data: the type rules of reading and writing, the second handle
// for refused writes, and stores that lie about their values.
#include "device/printer_access.h"
#include "tests/device/fake_spooler.h"

#include <gtest/gtest.h>

using Read = VPrinterAccess::ValueRead;

namespace {

// What a read gave: the value by its type, or how the read ended.
std::wstring Outcome(Read read, const zx::unique_variant& value) {
    const VARTYPE type = value.type();
    if (read != Read::Read) return (read == Read::Missing ? L"missing" : L"failed") + std::wstring(type ? L"+" : L"");
    if (type == VT_BSTR) return L"text " + std::wstring((*value).bstrVal, SysStringLen((*value).bstrVal));
    if (type == VT_BOOL) return L"number " + std::to_wstring((*value).boolVal);
    return L"type " + std::to_wstring(type);
}

}  // namespace

// An accessory query reads the whole driver data with one spooler call, also when the printer
// never stored any; each value reads as it does on its own, and a spooler that does not list
// values has them read one by one.
TEST(PrinterAccess, ReadsNumbersAsTheirLow16BitsAndTextWithOrWithoutTerminatorListedOrOnItsOwn) {
    zxtest::FakeSpooler spooler;
    VPrinterAccess access(L"P", nullptr);
    {
        const VStoredValues none(access);
        for (const wchar_t* name : {L"BidiQuery", L"DuplexUnit", L"CID"}) {
            zx::unique_variant value;
            EXPECT_EQ(L"missing", Outcome(none.Read(name, value), value)) << name;
        }
        EXPECT_EQ(1, spooler.dataReads);
    }
    spooler.data = {{L"Big", zxtest::NumberValue(0x00010001)},
                    {L"Minus", zxtest::NumberValue(0x0000FFFF)},
                    {L"Short", zxtest::StoredValue{REG_DWORD, {7, 1}}},
                    {L"Bare", zxtest::TextValue(L"abc", false)},
                    {L"Ended", zxtest::TextValue(L"de")},
                    {L"Long", zxtest::TextValue(std::wstring(300, L'L'))},
                    {L"Empty", zxtest::StoredValue{REG_SZ, {}}},
                    {L"Binary", zxtest::StoredValue{REG_BINARY, {1, 2, 3}}}};
    const std::pair<const wchar_t*, std::wstring> expected[] = {
        {L"Big", L"number 1"},     {L"minus", L"number -1"},  // names compare without case
        {L"Short", L"number 263"}, {L"Bare", L"text abc"},
        {L"Ended", L"text de"},    {L"Long", L"text " + std::wstring(300, L'L')},
        {L"Empty", L"missing"},    {L"Binary", L"type 0"},
        {L"Absent", L"missing"}};
    for (const bool lists : {true, false}) {
        spooler.listsValues = lists;
        const VStoredValues stored(access);
        const int readsBefore = spooler.dataReads;
        for (const auto& [name, outcome] : expected) {
            zx::unique_variant value;
            EXPECT_EQ(outcome, Outcome(stored.Read(name, value), value)) << name << (lists ? " listed" : "");
        }
        EXPECT_EQ(lists, readsBefore == spooler.dataReads);
    }
    for (const auto& [name, outcome] : expected) {
        zx::unique_variant value;
        EXPECT_EQ(outcome, Outcome(access.ReadValue(name, value), value)) << name;
    }

    // Stores that lie about their values.
    spooler.data[L"Broken"] = zxtest::TextValue(L"text");
    spooler.data[L"Broken"].unreadable = true;  // the size query works, the read fails
    spooler.data[L"Wide"] = zxtest::NumberValue(5);
    spooler.data[L"Wide"].claimedSize = 8;
    spooler.data[L"Huge"] = zxtest::TextValue(L"x");
    spooler.data[L"Huge"].claimedSize = 0x7FFFFFFE;
    for (const wchar_t* name : {L"Broken", L"Wide", L"Huge"}) {
        zx::unique_variant value;
        EXPECT_EQ(L"failed", Outcome(access.ReadValue(name, value), value)) << name;
    }
}

// The restricted handle has each write refused once; it is tried again through a handle with
// full access, which is closed again.
TEST(PrinterAccess, WritesTextWithoutTerminatorBooleansAsFourBytesAndNothingElseRetryingRefusedWrites) {
    zxtest::FakeSpooler spooler;
    const HANDLE restricted = spooler.OpenRestricted();
    {
        VPrinterAccess access(L"P", restricted);
        EXPECT_TRUE(access.WriteText(L"CID", L"abc"));
        EXPECT_EQ(6u, spooler.data[L"CID"].bytes.size());
        EXPECT_TRUE(access.WriteNumber(L"Duplex", VARIANT_TRUE));
        EXPECT_EQ(std::optional<DWORD>(0xFFFF), spooler.Number(L"Duplex"));
        EXPECT_EQ((std::vector<std::wstring>{L"P", L"P"}), spooler.openedNames);
        EXPECT_EQ((std::vector<std::wstring>{L"CID", L"Duplex"}), spooler.refusedWrites);
        EXPECT_EQ(1u, spooler.handles.size());

        VARIANT other;
        other.vt = VT_I4;
        other.lVal = 1;
        EXPECT_FALSE(access.WriteValue(L"Number", other));
        other.vt = VT_BSTR;
        other.bstrVal = nullptr;
        EXPECT_FALSE(access.WriteValue(L"Null", other));
        EXPECT_EQ(2u, spooler.data.size());

        spooler.refuseAllWrites = true;
        EXPECT_FALSE(access.WriteNumber(L"Duplex", 0));
        EXPECT_EQ(std::optional<DWORD>(0xFFFF), spooler.Number(L"Duplex"));
    }
    EXPECT_EQ(1u, spooler.handles.size());  // the creator's handle stays the creator's
}

TEST(PrinterAccess, PrinterInformationNeedsAHandleAndADriver) {
    zxtest::FakeSpooler spooler;
    {
        VPrinterAccess access(L"P", nullptr);
        EXPECT_NE(nullptr, access.GetPrinterInfo());  // its fields are read by the port tests
        spooler.driverName.clear();
        EXPECT_EQ(nullptr, access.GetPrinterInfo());
    }
    EXPECT_TRUE(spooler.handles.empty());
    VPrinterAccess unknown(L"Q", nullptr);
    EXPECT_EQ(nullptr, unknown.PrinterHandle());
    EXPECT_EQ(nullptr, unknown.GetPrinterInfo());
    EXPECT_FALSE(unknown.WriteNumber(L"BidiQuery", 0));
    EXPECT_EQ(nullptr, VPrinterAccess(nullptr, INVALID_HANDLE_VALUE).GetPrinterInfo());
}
