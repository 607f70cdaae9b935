// End to end on Wine's spooler: the printer that drvhost installs, with the device simulator in
// its driver directory; the answers go to the printer's real driver data and are read back.
#include "devicesim/device_sim.h"
#include "drvhost/core_driver.h"
#include "drvhost/printer_install.h"
#include "tests/device/accessories.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace zxtest;

namespace {

constexpr wchar_t kPrinter[] = L"ZX Device Test Printer";

void DeletePrinterIfThere() {
    std::wstring name = kPrinter;
    PRINTER_DEFAULTSW defaults{nullptr, nullptr, PRINTER_ALL_ACCESS};
    zx::unique_printer printer;
    if (::OpenPrinterW(name.data(), printer.put(), &defaults)) ::DeletePrinter(printer.get());
}

class RealSpoolerTest : public testing::Test {
protected:
    ~RealSpoolerTest() override { DeletePrinterIfThere(); }

    // A new printer, so that no answers of an earlier run are there, with the device unreachable.
    RealSpoolerTest() {
        DeletePrinterIfThere();
        drvhost::PrinterSetup setup;
        setup.printerName = kPrinter;
        setup.sourceDirectory = drvhost::ProgramDirectory();
        setup.deviceProfile = Profile(L"unreachable.profile");
        driverDirectory = drvhost::InstallPrinter(setup).driverDirectory;
    }
    static std::wstring Profile(const wchar_t* name) { return drvhost::ProgramDirectory() + L"devices\\" + name; }
    void UseProfile(const wchar_t* name) {
        ASSERT_TRUE(::CopyFileW(Profile(name).c_str(), (driverDirectory + kDeviceProfileFile).c_str(), FALSE));
    }
    std::shared_ptr<VUDMClient> Client() {
        auto client = std::make_shared<VUDMClient>(kPrinter, nullptr, core.CoreHelper());
        EXPECT_TRUE(client->Connect());
        return client;
    }
    // A value under the printer's "PrinterDriverData", as the spooler gives it to anyone.
    std::optional<std::wstring> Stored(const wchar_t* name) {
        std::wstring printerName = kPrinter, valueName = name;
        zx::unique_printer printer;
        DWORD type = 0, needed = 0;
        wchar_t data[128] = {};
        if (!::OpenPrinterW(printerName.data(), printer.put(), nullptr) ||
            ::GetPrinterDataW(printer.get(), valueName.data(), &type, reinterpret_cast<BYTE*>(data), sizeof(data) - 2,
                              &needed) != ERROR_SUCCESS) {
            return std::nullopt;
        }
        DWORD number = 0;
        std::memcpy(&number, data, sizeof(number));
        if (type == REG_DWORD) return std::to_wstring(number);
        return std::wstring(data);
    }

    drvhost::CoreDriver core{drvhost::LoadPrinterDescription(drvhost::ProgramDirectory() + drvhost::kDescriptionFile)};
    std::wstring driverDirectory;
};

}  // namespace

// An unreachable device gives the sample defaults marked unreliable and stores nothing, so that
// the device is asked again once it answers.
TEST_F(RealSpoolerTest, AColourDeviceIsAskedOnceItAnswersAndItsAnswersLiveInTheDriverData) {
    EXPECT_EQ(kSampleDefaults, AccessoriesOf(Client()->GetData()));
    EXPECT_EQ(std::nullopt, Stored(L"BidiQuery"));
    EXPECT_EQ(std::nullopt, Stored(L"DuplexUnit"));

    UseProfile(L"colour-duplex.profile");
    EXPECT_EQ(kColourDevice, AccessoriesOf(Client()->GetData()));
    for (const wchar_t* name :
         {L"BidiQuery", L"DuplexUnit", L"Duplex", L"TrayState2", L"PhotoTray", L"ColorPrinting"}) {
        EXPECT_EQ(std::optional<std::wstring>(L"1"), Stored(name)) << name;
    }
    EXPECT_EQ(std::optional<std::wstring>(L"CID:QAMA_ZX2610"), Stored(L"CID"));

    // A second client reads the stored answers, whatever the device now says.
    UseProfile(L"mono-basic.profile");
    const auto second = Client();
    EXPECT_EQ(kColourDevice, AccessoriesOf(second->GetData()));
    EXPECT_EQ(1, second->GetData()->GetModelFamily());
    EXPECT_EQ(kPortUnknown, second->PrinterAccess().PortKind());  // the device was not asked

    Holder holder;
    RequeryDevice(kPrinter, core.CoreHelper(), holder);
    ASSERT_NE(nullptr, holder.client);
    EXPECT_EQ(kMonoDevice, AccessoriesOf(holder.client->GetData()));
    EXPECT_EQ(0, holder.client->GetData()->GetModelFamily());
    EXPECT_EQ(kPortUsb, holder.client->PrinterAccess().PortKind());
    EXPECT_EQ(std::optional<std::wstring>(L"0"), Stored(L"ColorPrinting"));
    EXPECT_EQ(std::optional<std::wstring>(L"CID:TORVELL_ZX1200"), Stored(L"CID"));
}
