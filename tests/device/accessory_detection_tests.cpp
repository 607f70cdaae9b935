// Accessory detection against the device simulator, on an in-memory spooler: the query cycle,
// what is stored for each answer, the defaults after a failed query, and the re-query.
#include "device/udm_client.h"
#include "devicesim/device_sim.h"
#include "tests/device/device_bed.h"
#include "tests/device/fake_spooler.h"
#include "tests/support/fake_core_helper.h"

#include <gtest/gtest.h>

using zxtest::StoredNumber;
using zxtest::StoredText;

namespace {

struct Accessories {
    int32_t duplexUnit, tray2, photoTray, colour, duplex, reliable;
    bool operator==(const Accessories&) const = default;
};

Accessories AccessoriesOf(const VIOData& record) {
    return {record.GetDuplexUnit(), record.GetTrayState2(), record.GetPhotoTray(),
            record.GetColorPrinting(), record.GetDuplex(), record.IsReliable()};
}

std::ostream& operator<<(std::ostream& out, const Accessories& a) {
    return out << "{unit " << a.duplexUnit << ", tray2 " << a.tray2 << ", photo " << a.photoTray << ", colour "
               << a.colour << ", duplex " << a.duplex << ", reliable " << a.reliable << "}";
}

class Holder : public IDeviceClientHolder {
public:
    void ReplaceDeviceClient(std::shared_ptr<VUDMClient> replacement) override { client = std::move(replacement); }
    std::shared_ptr<VUDMClient> client;
};

class AccessoryTest : public testing::Test {
protected:
    AccessoryTest() {
        printer.driverPath = bed.DriverPath();
        helper.SetOptionList("BidiDefaults", {"DUPLEXUNIT:1", "TRAY2:0", "PHOTOTRAY:0", "COLORSUPPORT:1"});
        helper.SetOption("ZXDataCollectionXML", "mortaluDataMap.xml");
    }

    std::shared_ptr<VUDMClient> Client() {
        auto client = std::make_shared<VUDMClient>(L"P", nullptr, &helper);
        EXPECT_TRUE(client->Connect());
        return client;
    }

    Accessories Query() { return AccessoriesOf(*Client()->QueryAccessories()); }

    zxtest::DeviceBed bed;
    zxtest::FakeSpooler spooler;
    zxtest::FakePrinter& printer = spooler.AddPrinter(L"P");
    zxtest::FakeCoreHelper helper;
};

constexpr Accessories kColourDevice{1, 1, 1, 1, 1, 1};
constexpr Accessories kMonoDevice{0, 0, 0, 0, 0, 1};
constexpr Accessories kSampleDefaults{1, 0, 0, 1, 1, 0};

}  // namespace

TEST(BidiDefaults, KeywordsSetTheirValuesByExactKey) {
    zxtest::FakeSpooler spooler;
    zxtest::FakeCoreHelper helper;
    VUDMClient client(L"P", nullptr, &helper);
    AccessoryDefaults values;
    helper.SetOptionList("BidiDefaults",
                         {"DUPLEXUNIT:0", "TRAY2:Yes1", "PHOTOTRAY:none", "COLORSUPPORT:10", "Tray2:0", "TRAY2"});
    EXPECT_TRUE(client.ReadBidiDefaults(values));
    EXPECT_EQ((Accessories{0, 1, 0, 1, 0, 0}),
              (Accessories{values.duplexUnit, values.tray2, values.photoTray, values.colorPrinting, values.duplex, 0}));

    values = AccessoryDefaults();
    helper.SetOptionList("BidiDefaults", {"PHOTOTRAY:1", std::string(260, 'K') + ":0", "COLORSUPPORT:0"});
    EXPECT_TRUE(client.ReadBidiDefaults(values));
    EXPECT_EQ(1, values.photoTray);
    EXPECT_EQ(1, values.colorPrinting);  // the overlong key ended the table

    values = AccessoryDefaults();
    helper.SetOptionList("BidiDefaults", {});
    EXPECT_TRUE(client.ReadBidiDefaults(values));
    helper.behaviour = zxtest::FakeCoreHelper::Behaviour::FailEveryCall;
    EXPECT_FALSE(client.ReadBidiDefaults(values));
    VUDMClient helperless(L"P", nullptr, nullptr);
    EXPECT_FALSE(helperless.ReadBidiDefaults(values));
    EXPECT_EQ((Accessories{1, 0, 1, 1, 0, 0}),
              (Accessories{values.duplexUnit, values.tray2, values.photoTray, values.colorPrinting, values.duplex, 0}));
}

TEST_F(AccessoryTest, TheFirstQueryAsksTheDeviceAndStoresEveryAnswer) {
    bed.PinLibraries();
    {
        auto client = Client();
        const std::shared_ptr<VIOData> record = client->QueryAccessories();
        EXPECT_EQ(kColourDevice, AccessoriesOf(*record));
        EXPECT_EQ(1, record->GetModelFamily());
        EXPECT_EQ(1, record->IsModelFamilyA());
        EXPECT_EQ(record.get(), client->GetData());
    }
    EXPECT_EQ(std::optional<DWORD>(1), StoredNumber(printer, L"BidiQuery"));
    for (const wchar_t* name : {L"DuplexUnit", L"Duplex", L"TrayState2", L"PhotoTray", L"ColorPrinting"}) {
        EXPECT_EQ(std::optional<DWORD>(1), StoredNumber(printer, name)) << name;
    }
    EXPECT_EQ(std::optional<std::wstring>(L"CID:QAMA_ZX2610"), StoredText(printer, L"CID"));
    EXPECT_EQ(0, bed.LiveSimulatorObjects());
    EXPECT_EQ(0u, spooler.OpenHandles());
    EXPECT_EQ((std::vector<std::string>{"ZXDataCollectionXML"}), helper.askedFeatures);
}

TEST_F(AccessoryTest, LaterClientsReadTheStoredAnswersUntilTheDeviceIsAskedAgain) {
    EXPECT_EQ(kColourDevice, Query());
    bed.UseSampleProfile(L"mono-basic.profile");
    EXPECT_EQ(kColourDevice, Query());

    Holder holder;
    RequeryDevice(L"P", &helper, holder);
    ASSERT_NE(nullptr, holder.client);
    EXPECT_TRUE(holder.client->IsConnected());
    const IBiDiData* data = holder.client->GetData();
    EXPECT_EQ(kMonoDevice, AccessoriesOf(static_cast<const VIOData&>(*data)));
    EXPECT_EQ(0, data->GetModelFamily());
    EXPECT_EQ(0, data->IsModelFamilyA());
    EXPECT_EQ(std::optional<DWORD>(0), StoredNumber(printer, L"TrayState2"));  // asked, not answered
    EXPECT_EQ(std::optional<std::wstring>(L"CID:TORVELL_ZX1200"), StoredText(printer, L"CID"));
    EXPECT_EQ(std::optional<DWORD>(1), StoredNumber(printer, L"BidiQuery"));
}

TEST_F(AccessoryTest, AFailedQueryFallsBackToTheDefaultsAndAsksAgainNextTime) {
    const std::vector<std::string> failures = {"!no-address\ncfg:Protocol=KELP\n",
                                               "!no-collection\ncfg:Protocol=KELP\n"};
    for (const std::string& profile : failures) {
        bed.WriteProfile(profile);
        EXPECT_EQ(kSampleDefaults, Query()) << profile;
    }
    bed.RemoveProfile();
    EXPECT_EQ(kSampleDefaults, Query());
    printer.portName = L"FILE:";
    EXPECT_EQ(kSampleDefaults, Query());
    EXPECT_EQ(std::nullopt, StoredNumber(printer, L"BidiQuery"));

    helper.behaviour = zxtest::FakeCoreHelper::Behaviour::FailEveryCall;
    EXPECT_EQ((Accessories{1, 0, 1, 1, 0, 0}), Query());

    // A failed query keeps a record that is there already.
    printer.portName = L"USB001";
    helper.behaviour = zxtest::FakeCoreHelper::Behaviour::Answer;
    bed.UseSampleProfile(L"colour-duplex.profile");
    auto client = Client();
    const std::shared_ptr<VIOData> record = client->QueryAccessories();
    printer.data[L"BidiQuery"] = zxtest::NumberValue(0);
    bed.WriteProfile("!no-address\n");
    EXPECT_EQ(record, client->QueryAccessories());
    EXPECT_EQ(kColourDevice, AccessoriesOf(*record));
}

TEST_F(AccessoryTest, MissingEntryPointsFailTheQueryWithoutLeaks) {
    for (const wchar_t* library : {kBidiIoLibrary, kDeviceModelLibrary}) {
        zxtest::DeviceBed bare;
        bare.UseLibraryWithoutEntryPoints(library);
        bare.PinLibraries();
        printer.driverPath = bare.DriverPath();
        auto client = Client();
        EXPECT_EQ(E_FAIL, client->RunDeviceQuery());
        EXPECT_EQ(kSampleDefaults, AccessoriesOf(*client->QueryAccessories()));
        client.reset();
        EXPECT_EQ(0, bare.LiveSimulatorObjects());
    }
    EXPECT_EQ(std::nullopt, StoredNumber(printer, L"BidiQuery"));
}

TEST_F(AccessoryTest, ADeviceWithoutProtocolStoresNothingAndThePresetsApply) {
    bed.WriteProfile("dd:DuplexUnit=Installed\nCID=CID:QAMB;\n");
    auto client = Client();
    EXPECT_EQ(S_OK, client->RunDeviceQuery());
    EXPECT_TRUE(printer.data.empty());
    const std::shared_ptr<VIOData> record = client->QueryAccessories();
    EXPECT_EQ((Accessories{0, 0, 1, 1, 0, 1}), AccessoriesOf(*record));
    EXPECT_EQ(0, record->IsModelFamilyA());
    EXPECT_EQ(1, record->GetModelFamily());
    EXPECT_EQ(std::optional<DWORD>(1), StoredNumber(printer, L"BidiQuery"));
}

TEST_F(AccessoryTest, EachAnswerIsStoredByTheRuleOfItsKey) {
    bed.WriteDataMap(R"(<DataMaps><XMLDataMap Protocol="KELP"><StaticDataItem Name="CID"/>
        <DataItem Prefix="dd" Name="DuplexUnit"/><DataItem Prefix="dd" Name="Duplex"/>
        <DataItem Prefix="ink" Name="ColorPrinting"/><DataItem Prefix="x" Name="Protocol"/>
        <DataItem Prefix="x" Name="Other"/><DataItem Prefix="x" Name="Missing"/>
        <DataItem Prefix="x" Name="Number"/><DataItem Name="Long"/></XMLDataMap></DataMaps>)");
    const std::string longAnswer(300000, 'L');
    bed.WriteProfile("Protocol=KELP\nCID=MFG:X;CID:ABC123;MDL:Y\ndd:DuplexUnit=Installed \ndd:Duplex=enabled\n"
                     "ink:ColorPrinting=Enabled\nx:Protocol=KELP v2\nx:Other=\nx:Number=(i4)0\nLong=" +
                     longAnswer + "\n");
    EXPECT_EQ(S_OK, Client()->RunDeviceQuery());
    EXPECT_EQ(std::optional<std::wstring>(L"CID:ABC123"), StoredText(printer, L"CID"));
    EXPECT_EQ(std::optional<DWORD>(0), StoredNumber(printer, L"DuplexUnit"));
    EXPECT_EQ(std::optional<DWORD>(1), StoredNumber(printer, L"Duplex"));
    EXPECT_EQ(std::optional<DWORD>(0), StoredNumber(printer, L"ColorPrinting"));
    EXPECT_EQ(std::optional<std::wstring>(L"KELP v2"), StoredText(printer, L"Protocol"));
    EXPECT_EQ(std::optional<DWORD>(1), StoredNumber(printer, L"Other"));
    EXPECT_EQ(std::optional<DWORD>(0), StoredNumber(printer, L"Missing"));
    EXPECT_EQ(std::optional<DWORD>(1), StoredNumber(printer, L"Number"));
    EXPECT_EQ(std::optional<DWORD>(1), StoredNumber(printer, L"Long"));

    printer.data.clear();
    bed.WriteProfile("cfg:Protocol=KELP\nCID=MFG:X;MDL:Y\n");
    EXPECT_EQ(S_OK, Client()->RunDeviceQuery());
    EXPECT_EQ(0u, printer.data.count(L"CID"));
    EXPECT_EQ(std::optional<DWORD>(0), StoredNumber(printer, L"Duplex"));

    printer.data.clear();
    bed.WriteProfile("cfg:Protocol=(i4)5\nCID=CID:X\n");  // a number names no protocol
    EXPECT_EQ(S_OK, Client()->RunDeviceQuery());
    EXPECT_TRUE(printer.data.empty());
}

TEST_F(AccessoryTest, OnlyNumbersStoredInTheDriverDataReplaceThePresets) {
    printer.data[L"BidiQuery"] = zxtest::NumberValue(1);
    printer.data[L"DuplexUnit"] = zxtest::TextValue(L"1");
    printer.data[L"Duplex"] = zxtest::NumberValue(0x00020001);
    printer.data[L"PhotoTray"] = zxtest::NumberValue(0);
    printer.data[L"ColorPrinting"] = zxtest::NumberValue(0x0001FFFF);
    printer.data[L"CID"] = zxtest::TextValue(L"CID:qamb-9");
    bed.WriteProfile("!no-address\n");  // asking the device would fail
    auto client = Client();
    const std::shared_ptr<VIOData> record = client->QueryAccessories();
    EXPECT_EQ((Accessories{0, 0, 0, -1, 1, 1}), AccessoriesOf(*record));
    EXPECT_EQ(2, record->GetModelFamily());
    EXPECT_EQ(0, record->IsModelFamilyA());
}

TEST_F(AccessoryTest, RefusedWritesLeaveTheQueryCycleOpen) {
    printer.refuseAllWrites = true;
    EXPECT_EQ((Accessories{0, 0, 1, 1, 0, 1}), Query());
    EXPECT_TRUE(printer.data.empty());
    EXPECT_EQ(2 * 7u, spooler.refusedWrites.size());  // six answers and BidiQuery, each tried twice
}

TEST_F(AccessoryTest, ARequeryWithoutTheLibrariesGivesAnUnconnectedClient) {
    printer.driverPath = L"C:\\nowhere\\zxcoresim.dll";
    Holder holder;
    RequeryDevice(L"P", &helper, holder);
    ASSERT_NE(nullptr, holder.client);
    EXPECT_FALSE(holder.client->IsConnected());
    EXPECT_EQ(std::optional<DWORD>(0), StoredNumber(printer, L"BiDiQuery"));
    EXPECT_EQ(1u, printer.data.size());
}

TEST_F(AccessoryTest, LibrariesLoadOnlyFromAReadableDriverDirectory) {
    for (const std::wstring& path : {std::wstring(L"zxcoresim.dll"), L"C:\\" + std::wstring(300, L'd') + L"\\x.dll"}) {
        printer.driverPath = path;
        VUDMClient client(L"P", nullptr, &helper);
        EXPECT_EQ(L"", client.GetDriverDirectory());
        EXPECT_FALSE(client.Connect());
        EXPECT_EQ(nullptr, client.LoadBidiIoLibrary());
    }
    printer.driverPath = bed.DriverPath();
    VUDMClient client(L"P", nullptr, &helper);
    EXPECT_EQ(bed.Directory(), client.GetDriverDirectory());
}

namespace {

class AddressTest : public AccessoryTest {
protected:
    // What the simulated device's address was made from, or why there is none.
    std::wstring AddressSource() {
        auto client = Client();
        zx::unique_device_address address;
        if (!client->CreateDeviceAddress(address)) return L"no address";
        zx::ComPtr<IDeviceDataCollection> collection;
        std::wstring path;
        if (FAILED(client->CreateDataCollection(address.get(), collection.GetAddressOf(), path))) return L"no data";
        zx::unique_variant source;
        collection->GetValue(kSimAddressItem, source.put());
        return source.type() == VT_BSTR ? (*source).bstrVal : L"?";
    }
};

}  // namespace

TEST_F(AddressTest, EachPortKindAddressesTheDeviceItsWay) {
    EXPECT_EQ(L"port:USB001", AddressSource());

    spooler.ports = {{L"IP_1", L"Standard TCP/IP Port"}, {L"NRD_1", L"Network re-discovery port monitor"}};
    printer.portName = L"IP_1";
    zxtest::XcvAnswer answer;
    wcscpy(answer.config.hostAddress, L"192.168.0.7");
    spooler.xcvAnswers = {answer};
    EXPECT_EQ(L"ip:192.168.0.7", AddressSource());
    EXPECT_EQ(L"ip:0.0.0.0", AddressSource());  // the monitor no longer answers

    printer.portName = L"NRD_1";
    spooler.majorVersion = 5;
    EXPECT_EQ(L"no address", AddressSource());
    spooler.majorVersion = 6;
    EXPECT_EQ(L"ip:0.0.0.0", AddressSource());

    printer.portName = L"LPT1:";
    EXPECT_EQ(L"no address", AddressSource());
}

TEST_F(AddressTest, TheDataMapIsTheDriversChoiceOrTheDefault) {
    auto client = Client();
    zx::unique_device_address address;
    ASSERT_TRUE(client->CreateDeviceAddress(address));
    zx::ComPtr<IDeviceDataCollection> collection;
    std::wstring path;
    helper.SetOption("ZXDataCollectionXML", "other.xml");
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND),
              client->CreateDataCollection(address.get(), collection.GetAddressOf(), path));
    EXPECT_EQ(bed.Directory() + L"other.xml", path);
    EXPECT_EQ(nullptr, collection.Get());

    helper.behaviour = zxtest::FakeCoreHelper::Behaviour::FailEveryCall;
    EXPECT_EQ(E_FAIL, client->CreateDataCollection(nullptr, collection.GetAddressOf(), path));
    EXPECT_EQ(bed.Directory() + L"mortaluDataMap.xml", path);
    EXPECT_EQ(S_OK, client->CreateDataCollection(address.get(), collection.GetAddressOf(), path));
    EXPECT_NE(nullptr, collection.Get());
}
