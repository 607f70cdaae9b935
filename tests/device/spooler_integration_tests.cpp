// End to end on Wine's spooler: the printer that drvhost installs, with the device simulator in
// its driver directory, asked by device-model clients; the answers go to the printer's real
// driver data and are read back from there.
#include "device/udm_client.h"
#include "devicesim/device_sim.h"
#include "drvhost/core_driver.h"
#include "drvhost/printer_install.h"

#include <gtest/gtest.h>

#include <winspool.h>

namespace {

constexpr wchar_t kPrinter[] = L"ZX Device Test Printer";

void DeletePrinterIfThere() {
    std::wstring name = kPrinter;
    PRINTER_DEFAULTSW defaults{nullptr, nullptr, PRINTER_ALL_ACCESS};
    zx::unique_printer printer;
    if (::OpenPrinterW(name.data(), printer.put(), &defaults)) ::DeletePrinter(printer.get());
}

class Holder : public IDeviceClientHolder {
public:
    void ReplaceDeviceClient(std::shared_ptr<VUDMClient> replacement) override { client = std::move(replacement); }
    std::shared_ptr<VUDMClient> client;
};

class RealSpoolerTest : public testing::Test {
protected:
    RealSpoolerTest() : core(drvhost::LoadPrinterDescription(drvhost::ProgramDirectory() + drvhost::kDescriptionFile)) {}
    ~RealSpoolerTest() override {
        printer.reset();
        DeletePrinterIfThere();
    }

    // A new printer, so that no answers of an earlier run are stored.
    void InstallWithDevice(const wchar_t* profile) {
        DeletePrinterIfThere();
        drvhost::PrinterSetup setup;
        setup.printerName = kPrinter;
        setup.sourceDirectory = drvhost::ProgramDirectory();
        setup.deviceProfile = ProfilePath(profile);
        driverDirectory = drvhost::InstallPrinter(setup).driverDirectory;
    }
    void SwitchDevice(const wchar_t* profile) {
        ASSERT_TRUE(::CopyFileW(ProfilePath(profile).c_str(), (driverDirectory + kDeviceProfileFile).c_str(), FALSE));
    }
    static std::wstring ProfilePath(const wchar_t* profile) {
        return drvhost::ProgramDirectory() + L"devices\\" + profile;
    }

    std::shared_ptr<VUDMClient> Client() {
        auto client = std::make_shared<VUDMClient>(kPrinter, nullptr, core.CoreHelper());
        EXPECT_TRUE(client->Connect());
        return client;
    }

    // What the spooler holds under the printer's "PrinterDriverData".
    std::optional<DWORD> Number(const wchar_t* name) {
        DWORD type = 0, value = 0, needed = 0;
        std::wstring valueName = name;
        if (::GetPrinterDataW(Printer(), valueName.data(), &type, reinterpret_cast<BYTE*>(&value), sizeof(value),
                              &needed) != ERROR_SUCCESS ||
            type != REG_DWORD) {
            return std::nullopt;
        }
        return value;
    }
    std::optional<std::wstring> Text(const wchar_t* name) {
        DWORD type = 0, needed = 0;
        wchar_t text[256] = {};
        std::wstring valueName = name;
        if (::GetPrinterDataW(Printer(), valueName.data(), &type, reinterpret_cast<BYTE*>(text), sizeof(text) - 2,
                              &needed) != ERROR_SUCCESS ||
            type != REG_SZ) {
            return std::nullopt;
        }
        std::wstring value(text, needed / sizeof(wchar_t));
        while (!value.empty() && value.back() == L'\0') value.pop_back();  // the spooler may add one
        return value;
    }
    HANDLE Printer() {
        if (!printer) {
            std::wstring name = kPrinter;
            ::OpenPrinterW(name.data(), printer.put(), nullptr);
        }
        return printer.get();
    }

    drvhost::CoreDriver core;
    std::wstring driverDirectory;
    zx::unique_printer printer;
};

struct Accessories {
    int32_t duplexUnit, tray2, photoTray, colour, duplex, reliable;
    bool operator==(const Accessories&) const = default;
};

Accessories AccessoriesOf(const IBiDiData* data) {
    const auto& record = static_cast<const VIOData&>(*data);
    return {record.GetDuplexUnit(), record.GetTrayState2(), record.GetPhotoTray(),
            record.GetColorPrinting(), record.GetDuplex(), record.IsReliable()};
}

}  // namespace

TEST_F(RealSpoolerTest, AColourDeviceIsAskedOnceAndItsAnswersLiveInTheDriverData) {
    InstallWithDevice(L"colour-duplex.profile");
    EXPECT_EQ(std::nullopt, Number(L"BidiQuery"));
    {
        auto client = Client();
        EXPECT_EQ((Accessories{1, 1, 1, 1, 1, 1}), AccessoriesOf(client->GetData()));
        EXPECT_EQ(1, client->GetData()->GetModelFamily());
        EXPECT_EQ(kPortUsb, client->PrinterAccess().PortKind());
    }
    EXPECT_EQ(std::optional<DWORD>(1), Number(L"BidiQuery"));
    EXPECT_EQ(std::optional<DWORD>(1), Number(L"DuplexUnit"));
    EXPECT_EQ(std::optional<DWORD>(1), Number(L"TrayState2"));
    EXPECT_EQ(std::optional<DWORD>(1), Number(L"PhotoTray"));
    EXPECT_EQ(std::optional<DWORD>(1), Number(L"ColorPrinting"));
    EXPECT_EQ(std::optional<std::wstring>(L"CID:QAMA_ZX2610"), Text(L"CID"));

    // A second client reads the stored answers, whatever the device now says.
    SwitchDevice(L"mono-basic.profile");
    EXPECT_EQ((Accessories{1, 1, 1, 1, 1, 1}), AccessoriesOf(Client()->GetData()));

    Holder holder;
    RequeryDevice(kPrinter, core.CoreHelper(), holder);
    ASSERT_NE(nullptr, holder.client);
    EXPECT_EQ((Accessories{0, 0, 0, 0, 0, 1}), AccessoriesOf(holder.client->GetData()));
    EXPECT_EQ(std::optional<DWORD>(0), Number(L"ColorPrinting"));
    EXPECT_EQ(std::optional<std::wstring>(L"CID:TORVELL_ZX1200"), Text(L"CID"));
}

TEST_F(RealSpoolerTest, AMonochromeDeviceWithoutAccessories) {
    InstallWithDevice(L"mono-basic.profile");
    const IBiDiData* data = Client()->GetData();
    EXPECT_EQ((Accessories{0, 0, 0, 0, 0, 1}), AccessoriesOf(data));
    EXPECT_EQ(0, data->GetModelFamily());
    EXPECT_EQ(0, data->IsModelFamilyA());
    EXPECT_EQ(std::optional<DWORD>(0), Number(L"DuplexUnit"));
    EXPECT_EQ(std::optional<DWORD>(0), Number(L"PhotoTray"));
    EXPECT_EQ(std::optional<DWORD>(1), Number(L"BidiQuery"));
}

TEST_F(RealSpoolerTest, AnUnreachableDeviceGivesTheDriversDefaultsMarkedUnreliable) {
    InstallWithDevice(L"unreachable.profile");
    auto client = Client();
    // The sample description's defaults: DUPLEXUNIT:1, TRAY2:0, PHOTOTRAY:0, COLORSUPPORT:1.
    EXPECT_EQ((Accessories{1, 0, 0, 1, 1, 0}), AccessoriesOf(client->GetData()));
    EXPECT_EQ(std::nullopt, Number(L"BidiQuery"));
    EXPECT_EQ(std::nullopt, Number(L"DuplexUnit"));
}
