// Values in the printer's driver data: the type rules of reading and writing, the second
// handle for refused writes, and stores that lie about their values.
#include "device/printer_access.h"
#include "tests/device/fake_spooler.h"

#include <gtest/gtest.h>

using zxtest::FakeSpooler;
using zxtest::NumberValue;
using zxtest::StoredValue;
using zxtest::TextValue;
using Read = VPrinterAccess::ValueRead;

namespace {

class PrinterAccessTest : public testing::Test {
protected:
    FakeSpooler spooler;
    zxtest::FakePrinter& printer = spooler.AddPrinter(L"P");
};

VARIANT Bool(VARIANT_BOOL value) {
    VARIANT variant;
    variant.vt = VT_BOOL;
    variant.boolVal = value;
    return variant;
}

}  // namespace

TEST_F(PrinterAccessTest, ReadsNumbersAsTheirLow16BitsAndTextWithOrWithoutTerminator) {
    VPrinterAccess access(L"P", nullptr);
    printer.data[L"Big"] = NumberValue(0x00010001);
    printer.data[L"Minus"] = NumberValue(0x0000FFFF);
    printer.data[L"Text"] = TextValue(L"CID:ABC123");
    printer.data[L"Bare"] = TextValue(L"abc", false);

    zx::unique_variant value;
    EXPECT_EQ(Read::Read, access.ReadValue(L"Big", value));
    EXPECT_EQ(VT_BOOL, value.type());
    EXPECT_EQ(1, (*value).boolVal);
    EXPECT_EQ(Read::Read, access.ReadValue(L"minus", value));  // names compare without case
    EXPECT_EQ(-1, (*value).boolVal);
    EXPECT_EQ(Read::Read, access.ReadValue(L"Text", value));
    ASSERT_EQ(VT_BSTR, value.type());
    EXPECT_STREQ(L"CID:ABC123", (*value).bstrVal);
    EXPECT_EQ(Read::Read, access.ReadValue(L"Bare", value));
    EXPECT_STREQ(L"abc", (*value).bstrVal);
    EXPECT_EQ(3u, SysStringLen((*value).bstrVal));
}

TEST_F(PrinterAccessTest, MissingOtherTypedAndUnreadableValues) {
    VPrinterAccess access(L"P", nullptr);
    printer.data[L"Binary"] = StoredValue{REG_BINARY, {1, 2, 3}, std::nullopt, false};
    printer.data[L"Broken"] = TextValue(L"text");
    printer.data[L"Broken"].unreadable = true;
    printer.data[L"Wide"] = NumberValue(5);
    printer.data[L"Wide"].claimedSize = 8;  // a "number" larger than four bytes
    printer.data[L"Huge"] = TextValue(L"x");
    printer.data[L"Huge"].claimedSize = 0x7FFFFFFE;

    zx::unique_variant value;
    EXPECT_EQ(Read::Missing, access.ReadValue(L"Absent", value));
    EXPECT_EQ(VT_EMPTY, value.type());
    EXPECT_EQ(Read::Read, access.ReadValue(L"Binary", value));
    EXPECT_EQ(VT_EMPTY, value.type());
    EXPECT_EQ(Read::Failed, access.ReadValue(L"Broken", value));
    EXPECT_EQ(Read::Failed, access.ReadValue(L"Wide", value));
    EXPECT_EQ(Read::Failed, access.ReadValue(L"Huge", value));
    EXPECT_EQ(VT_EMPTY, value.type());
}

TEST_F(PrinterAccessTest, WritesTextWithoutTerminatorAndBooleansAsFourBytes) {
    VPrinterAccess access(L"P", nullptr);
    EXPECT_TRUE(access.WriteText(L"CID", L"abc"));
    EXPECT_EQ(6u, printer.data[L"CID"].bytes.size());
    EXPECT_EQ(std::optional<std::wstring>(L"abc"), zxtest::StoredText(printer, L"CID"));
    EXPECT_TRUE(access.WriteValue(L"True", Bool(VARIANT_TRUE)));
    EXPECT_EQ(std::optional<DWORD>(0xFFFF), zxtest::StoredNumber(printer, L"True"));
    EXPECT_TRUE(access.WriteNumber(L"BidiQuery", 1));
    EXPECT_EQ(std::optional<DWORD>(1), zxtest::StoredNumber(printer, L"BidiQuery"));

    VARIANT number;
    number.vt = VT_I4;
    number.lVal = 1;
    EXPECT_FALSE(access.WriteValue(L"Number", number));
    VARIANT nullText;
    nullText.vt = VT_BSTR;
    nullText.bstrVal = nullptr;
    EXPECT_FALSE(access.WriteValue(L"Null", nullText));
    EXPECT_EQ(0u, printer.data.count(L"Number") + printer.data.count(L"Null"));
}

TEST_F(PrinterAccessTest, ARefusedWriteIsRetriedOnceThroughAHandleWithFullAccess) {
    const HANDLE restricted = spooler.OpenRestricted(L"P");
    {
        VPrinterAccess access(L"P", restricted);
        spooler.openedNames.clear();
        EXPECT_TRUE(access.WriteNumber(L"Duplex", 1));
        EXPECT_EQ(std::vector<std::wstring>{L"P"}, spooler.openedNames);
        EXPECT_EQ(std::vector<std::wstring>{L"Duplex"}, spooler.refusedWrites);
        EXPECT_EQ(std::optional<DWORD>(1), zxtest::StoredNumber(printer, L"Duplex"));
        EXPECT_EQ(1u, spooler.OpenHandles());  // the second handle is closed again

        printer.refuseAllWrites = true;
        EXPECT_FALSE(access.WriteNumber(L"Duplex", 0));
        EXPECT_EQ(std::optional<DWORD>(1), zxtest::StoredNumber(printer, L"Duplex"));
    }
    EXPECT_EQ(1u, spooler.OpenHandles());  // the creator's handle is the creator's to close
}

TEST_F(PrinterAccessTest, OpensAndClosesItsOwnHandleAndReadsPrinterInformation) {
    {
        VPrinterAccess access(L"P", nullptr);
        ASSERT_NE(nullptr, access.PrinterHandle());
        const PRINTER_INFO_2W* info = access.GetPrinterInfo();
        ASSERT_NE(nullptr, info);
        EXPECT_STREQ(L"USB001", info->pPortName);
        printer.driverName.clear();
        EXPECT_EQ(nullptr, access.GetPrinterInfo());
    }
    EXPECT_EQ(0u, spooler.OpenHandles());

    VPrinterAccess unknown(L"No such printer", nullptr);
    EXPECT_EQ(nullptr, unknown.PrinterHandle());
    EXPECT_EQ(nullptr, unknown.GetPrinterInfo());
    zx::unique_variant value;
    EXPECT_EQ(Read::Missing, unknown.ReadValue(L"BidiQuery", value));
    VPrinterAccess invalid(nullptr, INVALID_HANDLE_VALUE);
    EXPECT_EQ(nullptr, invalid.GetPrinterInfo());
    EXPECT_EQ(L"", invalid.PrinterName());
}
