// Values in the printer's driver data: the type rules of reading and writing, the second handle
// for refused writes, and stores that lie about their values.
#include "device/printer_access.h"
#include "tests/device/fake_spooler.h"

#include <gtest/gtest.h>

using Read = VPrinterAccess::ValueRead;

TEST(PrinterAccess, ReadsNumbersAsTheirLow16BitsTextWithOrWithoutTerminatorAndFailsOnLyingStores) {
    zxtest::FakeSpooler spooler;
    spooler.data[L"Big"] = zxtest::NumberValue(0x00010001);
    spooler.data[L"Minus"] = zxtest::NumberValue(0x0000FFFF);
    spooler.data[L"Bare"] = zxtest::TextValue(L"abc", false);
    spooler.data[L"Binary"] = zxtest::StoredValue{REG_BINARY, {1, 2, 3}};
    spooler.data[L"Broken"] = zxtest::TextValue(L"text");
    spooler.data[L"Broken"].unreadable = true;
    spooler.data[L"Wide"] = zxtest::NumberValue(5);
    spooler.data[L"Wide"].claimedSize = 8;
    spooler.data[L"Huge"] = zxtest::TextValue(L"x");
    spooler.data[L"Huge"].claimedSize = 0x7FFFFFFE;
    VPrinterAccess access(L"P", nullptr);

    zx::unique_variant value;
    EXPECT_EQ(Read::Read, access.ReadValue(L"Big", value));
    EXPECT_EQ(VT_BOOL, value.type());
    EXPECT_EQ(1, (*value).boolVal);
    EXPECT_EQ(Read::Read, access.ReadValue(L"minus", value));  // names compare without case
    EXPECT_EQ(-1, (*value).boolVal);
    EXPECT_EQ(Read::Read, access.ReadValue(L"Bare", value));
    ASSERT_EQ(VT_BSTR, value.type());
    EXPECT_EQ(std::wstring(L"abc"), std::wstring((*value).bstrVal, SysStringLen((*value).bstrVal)));
    EXPECT_EQ(Read::Read, access.ReadValue(L"Binary", value));
    EXPECT_EQ(VT_EMPTY, value.type());
    EXPECT_EQ(Read::Missing, access.ReadValue(L"Absent", value));
    for (const wchar_t* name : {L"Broken", L"Wide", L"Huge"}) {
        EXPECT_EQ(Read::Failed, access.ReadValue(name, value)) << name;
        EXPECT_EQ(VT_EMPTY, value.type());
    }
}

// An accessory query reads the whole driver data with one spooler call; each value reads as it
// does on its own, and a spooler that does not list values has them read one by one.
TEST(PrinterAccess, DriverDataListedAtOnceReadsAsEachValueOnItsOwn) {
    zxtest::FakeSpooler spooler;
    spooler.data = {{L"Big", zxtest::NumberValue(0x00010001)},
                    {L"Short", zxtest::StoredValue{REG_DWORD, {7, 1}}},
                    {L"Bare", zxtest::TextValue(L"abc", false)},
                    {L"Ended", zxtest::TextValue(L"de")},
                    {L"Long", zxtest::TextValue(std::wstring(300, L'L'))},
                    {L"Empty", zxtest::StoredValue{REG_SZ, {}}},
                    {L"Binary", zxtest::StoredValue{REG_BINARY, {1, 2, 3}}}};
    VPrinterAccess access(L"P", nullptr);
    const auto outcome = [](Read read, const zx::unique_variant& value) {
        std::wstring text = std::to_wstring(static_cast<int>(read)) + L" " + std::to_wstring(value.type()) + L" ";
        if (value.type() == VT_BSTR) text += std::wstring((*value).bstrVal, SysStringLen((*value).bstrVal));
        if (value.type() == VT_BOOL) text += std::to_wstring((*value).boolVal);
        return text;
    };
    const wchar_t* const names[] = {L"Big", L"short", L"Bare", L"Ended", L"Long", L"Empty", L"Binary", L"Absent"};
    for (const bool lists : {true, false}) {
        spooler.listsValues = lists;
        const VStoredValues stored(access);
        std::vector<std::wstring> listed, own;
        const int readsBefore = spooler.dataReads;
        for (const wchar_t* name : names) {
            zx::unique_variant value;
            listed.push_back(outcome(stored.Read(name, value), value));
        }
        EXPECT_EQ(lists, readsBefore == spooler.dataReads);
        for (const wchar_t* name : names) {
            zx::unique_variant value;
            own.push_back(outcome(access.ReadValue(name, value), value));
        }
        EXPECT_EQ(own, listed);
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
