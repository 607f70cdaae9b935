// Accessory detection against the device simulator on an in-memory spooler: the query cycle,
// what is stored for each answer, the defaults after a failed query, the re-query, the model
// markers and the observers.
#include "devicesim/device_sim.h"
#include "tests/device/accessories.h"
#include "tests/device/device_bed.h"
#include "tests/device/fake_spooler.h"
#include "tests/support/fake_core_helper.h"
#include "tests/support/plugin_module.h"

#include <gtest/gtest.h>

using namespace zxtest;

namespace {

struct RecordingObserver : IObserver {
    void Update(ISubject* subject) override { records.push_back(subject->GetData()); }
    std::vector<IBiDiData*> records;
};

class AccessoryTest : public testing::Test {
protected:
    AccessoryTest() {
        spooler.driverPath = bed.DriverPath();
        helper.SetOptionList("BidiDefaults", {"DUPLEXUNIT:1", "TRAY2:0", "PHOTOTRAY:0", "COLORSUPPORT:1"});
        helper.SetOption("ZXDataCollectionXML", "mortaluDataMap.xml");
    }
    std::shared_ptr<VUDMClient> Client() {
        auto client = std::make_shared<VUDMClient>(L"P", nullptr, &helper);
        EXPECT_TRUE(client->Connect());
        return client;
    }
    Accessories Query() { return AccessoriesOf(Client()->QueryAccessories().get()); }
    Accessories Defaults() {
        AccessoryDefaults values;
        Client()->ReadBidiDefaults(values);
        return {values.duplexUnit, values.tray2, values.photoTray, values.colorPrinting, values.duplex, 0};
    }

    DeviceBed bed;
    FakeSpooler spooler;
    FakeCoreHelper helper;
};

}  // namespace

TEST_F(AccessoryTest, BidiDefaultsKeywordsSetTheirValuesByExactKey) {
    helper.SetOptionList("BidiDefaults",
                         {"DUPLEXUNIT:0", "TRAY2:Yes1", "PHOTOTRAY:none", "COLORSUPPORT:10", "Tray2:0", "TRAY2"});
    EXPECT_EQ((Accessories{0, 1, 0, 1, 0, 0}), Defaults());
    helper.SetOptionList("BidiDefaults", {"TRAY2:1", std::string(260, 'K') + ":0", "COLORSUPPORT:0"});
    EXPECT_EQ((Accessories{1, 1, 1, 1, 0, 0}), Defaults());  // the overlong key ended the table
}

// The first query stores its answers and leaves nothing open. One query per notification, its
// record handed to every observer told; outside a notification every GetData asks, so a restarted
// query cycle or new stored answers show at once.
TEST_F(AccessoryTest, EachNotificationAsksOnceEveryOtherGetDataAsksAgainAndNothingStaysOpen) {
    bed.PinLibraries();
    {
        RecordingObserver first, second;
        auto client = Client();
        EXPECT_EQ(kColourDevice, AccessoriesOf(client->GetData()));
        EXPECT_EQ(client->GetData(), client->QueryAccessories().get());
        EXPECT_EQ(std::optional<DWORD>(1), spooler.Number(L"BidiQuery"));
        spooler.data[L"ColorPrinting"] = NumberValue(0);
        EXPECT_EQ(0, client->GetData()->GetColorPrinting());
        spooler.data[L"BidiQuery"] = NumberValue(0);
        bed.UseSampleProfile(L"mono-basic.profile");
        EXPECT_EQ(kMonoDevice, AccessoriesOf(client->GetData()));

        const int readsBefore = spooler.dataReads;
        client->GetData();
        const int readsPerQuery = spooler.dataReads - readsBefore;
        client->AttachAll(std::vector<IObserver*>{&first, &second, &first});
        client->Notify();
        EXPECT_EQ(readsBefore + 2 * readsPerQuery, spooler.dataReads);
        EXPECT_EQ((std::vector<IBiDiData*>{client->GetData(), client->GetData()}), first.records);
    }
    EXPECT_EQ(0, bed.LiveSimulatorObjects());
    EXPECT_TRUE(spooler.handles.empty());
}

// A query that fails by an exception hands out the record the client has, or the default record.
TEST_F(AccessoryTest, AQueryThatRunsOutOfMemoryGivesTheRecordItHasOrTheDefaults) {
    spooler.readsRunOutOfMemory = true;
    auto client = Client();
    EXPECT_EQ((Accessories{1, 0, 0, 1, 1, 1}), AccessoriesOf(client->GetData()));
    spooler.readsRunOutOfMemory = false;
    IBiDiData* record = client->GetData();
    EXPECT_EQ(kColourDevice, AccessoriesOf(record));
    spooler.readsRunOutOfMemory = true;
    EXPECT_EQ(record, client->GetData());
}

TEST_F(AccessoryTest, AFailedQueryGivesTheDefaultsOnceAndAsksAgainNextTime) {
    for (const char* profile : {"!no-address\ncfg:Protocol=KELP\n", "!no-collection\ncfg:Protocol=KELP\n"}) {
        bed.WriteProfile(profile);
        EXPECT_EQ(kSampleDefaults, Query()) << profile;
    }
    EXPECT_EQ(std::nullopt, spooler.Number(L"BidiQuery"));
    helper.behaviour = FakeCoreHelper::Behaviour::FailEveryCall;  // no "BidiDefaults": the record's presets
    EXPECT_EQ((Accessories{1, 0, 1, 1, 0, 0}), Query());

    helper.behaviour = FakeCoreHelper::Behaviour::Answer;
    bed.UseSampleProfile(L"colour-duplex.profile");
    auto client = Client();
    const std::shared_ptr<VIOData> record = client->QueryAccessories();
    spooler.data[L"BidiQuery"] = NumberValue(0);
    bed.WriteProfile("!no-address\n");
    EXPECT_EQ(record, client->QueryAccessories());  // kept as it was
    EXPECT_EQ(kColourDevice, AccessoriesOf(record.get()));
}

TEST_F(AccessoryTest, WithoutUsableLibrariesTheQueryFailsWithoutLeaksAndTheRequeryOnlyRestarts) {
    for (const wchar_t* library : {kBidiIoLibrary, kDeviceModelLibrary}) {
        DeviceBed bare;
        bare.UseLibraryWithoutEntryPoints(library);
        bare.PinLibraries();
        spooler.driverPath = bare.DriverPath();
        EXPECT_EQ(E_FAIL, Client()->RunDeviceQuery());
        EXPECT_EQ(kSampleDefaults, Query());
        EXPECT_EQ(0, bare.LiveSimulatorObjects());
    }
    EXPECT_TRUE(spooler.data.empty());

    // Without a readable driver directory no library is loaded, and the re-query only restarts.
    for (const std::wstring& path : {std::wstring(L"zxcoresim.dll"), L"C:\\" + std::wstring(300, L'd') + L"\\x.dll"}) {
        spooler.driverPath = path;
        VUDMClient client(L"P", nullptr, &helper);
        EXPECT_EQ(L"", client.GetDriverDirectory());
        EXPECT_FALSE(client.Connect());
    }
    Holder holder;
    RequeryDevice(L"P", &helper, holder);
    ASSERT_NE(nullptr, holder.client);
    EXPECT_FALSE(holder.client->IsConnected());
    EXPECT_EQ(1u, spooler.data.size());
    EXPECT_EQ(std::optional<DWORD>(0), spooler.Number(L"BiDiQuery"));
}

TEST_F(AccessoryTest, WithoutStoredNumbersThePresetsApply) {
    bed.WriteProfile("dd:DuplexUnit=Installed\nCID=CID:QAMB;\n");  // no protocol: nothing to store
    EXPECT_EQ(S_OK, Client()->RunDeviceQuery());
    EXPECT_TRUE(spooler.data.empty());
    const std::shared_ptr<VIOData> record = Client()->QueryAccessories();
    EXPECT_EQ((Accessories{0, 0, 1, 1, 0, 1}), AccessoriesOf(record.get()));
    EXPECT_EQ(0, record->IsModelFamilyA());
    EXPECT_EQ(1, record->GetModelFamily());
    EXPECT_EQ(std::optional<DWORD>(1), spooler.Number(L"BidiQuery"));

    spooler.data.clear();
    bed.UseSampleProfile(L"colour-duplex.profile");
    spooler.refuseAllWrites = true;  // the query cycle stays open
    EXPECT_EQ((Accessories{0, 0, 1, 1, 0, 1}), Query());
    EXPECT_TRUE(spooler.data.empty());
    EXPECT_EQ(2 * 7u, spooler.refusedWrites.size());  // six answers and BidiQuery, each tried twice

    // Only numbers stored in the driver data replace the presets.
    spooler.data = {{L"BidiQuery", NumberValue(1)},
                    {L"DuplexUnit", TextValue(L"1")},
                    {L"Duplex", NumberValue(0x00020001)},
                    {L"PhotoTray", NumberValue(0)},
                    {L"ColorPrinting", NumberValue(0x0001FFFF)},
                    {L"CID", TextValue(L"CID:qamb-9")}};
    bed.WriteProfile("!no-address\n");  // asking the device would fail
    const std::shared_ptr<VIOData> stored = Client()->QueryAccessories();
    EXPECT_EQ((Accessories{0, 0, 0, -1, 1, 1}), AccessoriesOf(stored.get()));
    EXPECT_EQ(2, stored->GetModelFamily());
}

// A data map may name any value; the plug-in's own (query cycle, printer GUID, shortcut,
// installation and manual-change marks) are not the device's to overwrite.
TEST_F(AccessoryTest, EachAnswerIsStoredByTheRuleOfItsKeyButNeverOverThePluginsOwnValues) {
    bed.WriteDataMap(R"(<DataMaps><XMLDataMap Protocol="KELP"><StaticDataItem Name="CID"/>
        <DataItem Prefix="dd" Name="DuplexUnit"/><DataItem Prefix="dd" Name="Duplex"/>
        <DataItem Prefix="ink" Name="ColorPrinting"/><DataItem Prefix="x" Name="Protocol"/>
        <DataItem Prefix="x" Name="Other"/><DataItem Prefix="x" Name="Missing"/>
        <DataItem Prefix="x" Name="Number"/><DataItem Name="Long"/><DataItem Name="TrayState2"/>
        <DataItem Name="PrinterGUID"/><DataItem Prefix="x" Name="InstallOver"/><DataItem Name="bidiquery"/>
        <DataItem Name="CurrentShortcut"/><DataItem Prefix="m" Name="Tray2ManuallyChanged"/></XMLDataMap></DataMaps>)");
    bed.WriteProfile(
        "Protocol=KELP\nCID=MFG:X;CID:ABC123;MDL:Y\ndd:DuplexUnit=Installed \ndd:Duplex=enabled\n"
        "ink:ColorPrinting=Enabled\nx:Protocol=KELP v2\nx:Other=\nx:Number=(i4)0\nTrayState2=1\nPrinterGUID=1\n"
        "x:InstallOver=1\nbidiquery=1\nCurrentShortcut=1\nm:Tray2ManuallyChanged=1\nLong=" +
        std::string(300000, 'L') + "\n");
    spooler.data[L"PrinterGUID"] = TextValue(L"5c2-1-2-3456789ab", false);
    EXPECT_EQ(S_OK, Client()->RunDeviceQuery());
    EXPECT_EQ(std::optional<std::wstring>(L"CID:ABC123"), spooler.Text(L"CID"));
    EXPECT_EQ(std::optional<std::wstring>(L"KELP v2"), spooler.Text(L"Protocol"));
    EXPECT_EQ(std::optional<std::wstring>(L"5c2-1-2-3456789ab"), spooler.Text(L"PrinterGUID"));
    const std::pair<const wchar_t*, DWORD> numbers[] = {{L"DuplexUnit", 0}, {L"Duplex", 1},    {L"ColorPrinting", 0},
                                                        {L"Other", 1},      {L"Missing", 0},   {L"Number", 1},
                                                        {L"Long", 1},       {L"TrayState2", 1}};
    for (const auto& [name, number] : numbers) EXPECT_EQ(std::optional<DWORD>(number), spooler.Number(name)) << name;
    EXPECT_EQ(11u, spooler.data.size());  // nothing else

    spooler.data.clear();
    bed.WriteProfile("cfg:Protocol=KELP\nCID=MFG:X;MDL:Y\n");
    EXPECT_EQ(S_OK, Client()->RunDeviceQuery());
    EXPECT_EQ(0u, spooler.data.count(L"CID"));
    EXPECT_EQ(9u, spooler.data.size());  // the other answers, unanswered

    spooler.data.clear();
    bed.WriteProfile("cfg:Protocol=(i4)5\nCID=CID:X\n");  // a number names no protocol
    EXPECT_EQ(S_OK, Client()->RunDeviceQuery());
    EXPECT_TRUE(spooler.data.empty());
}

// The data map is the driver's choice, or the default when the driver names none.
TEST_F(AccessoryTest, EachPortKindAddressesTheDeviceItsWayThroughTheDriversDataMap) {
    std::wstring path;
    const auto addressSource = [this, &path] {
        auto client = Client();
        zx::unique_device_address address;
        zx::ComPtr<IDeviceDataCollection> collection;
        if (!client->CreateDeviceAddress(address)) return std::wstring(L"none");
        const HRESULT created = client->CreateDataCollection(address.get(), collection.GetAddressOf(), path);
        if (created == HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND)) return std::wstring(L"no data map");
        zx::unique_variant source;  // GetValue is the collection's sixth slot
        CallSlot<HRESULT>(collection.Get(), 5, kSimAddressItem, source.put());
        return std::wstring((*source).bstrVal);
    };
    EXPECT_EQ(L"port:USB001", addressSource());
    helper.SetOption("ZXDataCollectionXML", "other.xml");
    EXPECT_EQ(L"no data map", addressSource());
    EXPECT_EQ(bed.Directory() + L"other.xml", path);
    helper.behaviour = FakeCoreHelper::Behaviour::FailEveryCall;
    EXPECT_EQ(L"port:USB001", addressSource());
    EXPECT_EQ(bed.Directory() + L"mortaluDataMap.xml", path);
    helper.behaviour = FakeCoreHelper::Behaviour::Answer;
    helper.SetOption("ZXDataCollectionXML", "mortaluDataMap.xml");

    spooler.ports = {{L"IP_1", L"Standard TCP/IP Port"}, {L"NRD_1", L"Network re-discovery port monitor"}};
    spooler.portName = L"IP_1";
    XcvAnswer answer;
    wcscpy(answer.config.hostAddress, L"192.168.0.7");
    spooler.xcvAnswers = {answer};
    EXPECT_EQ(L"ip:192.168.0.7", addressSource());
    spooler.portName = L"NRD_1";
    spooler.majorVersion = 5;
    EXPECT_EQ(L"none", addressSource());
    spooler.majorVersion = 6;
    EXPECT_EQ(L"ip:0.0.0.0", addressSource());  // the monitor does not answer: the address is made anyway
    spooler.portName = L"LPT1:";
    EXPECT_EQ(L"none", addressSource());
}

TEST_F(AccessoryTest, AnUnconnectedClientIgnoresNullObserversTellsRepeatsAgainAndHandsOutOneDefaultRecord) {
    {
        VUDMClient client(L"P", nullptr, &helper);
        EXPECT_EQ(2u, helper.RefCount());
        client.Notify();  // nobody to tell
        RecordingObserver first, second;
        for (IObserver* observer : std::initializer_list<IObserver*>{nullptr, &first, &second, &first})
            client.Attach(observer);
        client.Notify();
        ASSERT_EQ(1u, second.records.size());
        EXPECT_EQ(std::vector<IBiDiData*>(2, second.records[0]), first.records);
        EXPECT_EQ((Accessories{1, 0, 0, 1, 1, 1}), AccessoriesOf(second.records[0]));
        EXPECT_FALSE(client.IsConnected());
        EXPECT_TRUE(spooler.data.empty());  // an unconnected client asks nothing
        client.DetachAll();
        client.Notify();
        EXPECT_EQ(2u, first.records.size());
    }
    EXPECT_EQ(1u, helper.RefCount());
    EXPECT_TRUE(spooler.handles.empty());
}

TEST(AccessoryRecord, ModelMarkersAreFoundInAnyCaseFirstMarkerFirst) {
    struct Case {
        const wchar_t* identity;
        int32_t familyA, family;
    };
    VIOData record;
    for (const Case& c : {Case{L"qamb-9", 0, 2}, Case{L"TORVELL QAMA", 1, 1}, Case{L"CID:Torvell_1", 0, 0},
                          Case{L"", 0, 0} /* no marker: the family stays */}) {
        MatchModelFamily(record, c.identity);
        EXPECT_EQ(c.familyA, record.IsModelFamilyA()) << c.identity;
        EXPECT_EQ(c.family, record.GetModelFamily()) << c.identity;
    }
}
