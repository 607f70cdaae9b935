// Evaluation of the device data map: protocol choice, the three passes and their item strings,
// and maps that are broken or hostile.
#include "device/data_map.h"
#include "tests/device/device_bed.h"

#include <gtest/gtest.h>

using Items = std::vector<std::wstring>;

namespace {

constexpr char kExampleMap[] = R"(<?xml version="1.0"?>
<DataMaps>
  <XMLDataMap Protocol="KELP"><StaticDataItem Name="CID"/>
    <Group><DataItem Prefix="dd" Name="DuplexUnit"/><DataItem Prefix="dd" Name="Duplex"/></Group>
    <DataItem Name="ColorPrinting"/><NextDataItem Name="NeverAsked" Count="1"/></XMLDataMap>
  <OIDDataMap><StaticDataItem Name="CID"/><DataItem AttributeID="TrayState2"/>
    <NextDataItem Prefix="tbl" Name="PhotoTray" Count="3"/><NextDataItem Name="Entries" UntilEnd="true"/></OIDDataMap>
  <IPPDataMap><StaticDataItem Name="CID"/></IPPDataMap>
</DataMaps>)";

class DataMapTest : public testing::Test {
protected:
    bool Evaluate(const std::string& map, const std::wstring& protocol) {
        items.clear();
        bed.WriteDataMap(map);
        return zx::EvaluateDataMap(items, bed.Directory() + L"mortaluDataMap.xml", protocol);
    }
    static std::string OidMap(const std::string& body) {
        return "<DataMaps><OIDDataMap><StaticDataItem Name=\"CID\"/>" + body + "</OIDDataMap></DataMaps>";
    }

    zxtest::DeviceBed bed;
    Items items;
};

}  // namespace

TEST_F(DataMapTest, EachProtocolSelectsItsMapAndPassesOthersFindNothing) {
    EXPECT_TRUE(Evaluate(kExampleMap, L"KELP"));
    EXPECT_EQ((Items{L"CID", L"dd:DuplexUnit", L"dd:Duplex", L"ColorPrinting"}), items);
    EXPECT_TRUE(Evaluate(kExampleMap, L"OID"));
    EXPECT_EQ((Items{L"CID", L"TrayState2", L"tbl:PhotoTray", L"tbl:PhotoTray.3.", L"Entries", L"Entries.UntilEnd"}),
              items);
    EXPECT_TRUE(Evaluate(kExampleMap, L"oid"));
    EXPECT_EQ(6u, items.size());
    // Fixed items only: nothing to ask for.
    EXPECT_FALSE(Evaluate(kExampleMap, L"IPP"));
    EXPECT_EQ(Items{L"CID"}, items);
    // "kelp" chooses the XML map, but its protocol attribute differs.
    for (const wchar_t* protocol : {L"SNMP", L"kelp", L"", L"KELP'] | //*[@Name='CID", L"WS"}) {
        EXPECT_FALSE(Evaluate(kExampleMap, protocol)) << protocol;
        EXPECT_EQ(Items{}, items) << protocol;
    }
}

// True only when there is more to ask than the fixed items.
TEST_F(DataMapTest, CountWinsOverUntilEndAndNamesMustBeThere) {
    const std::pair<const char*, Items> cases[] = {
        {R"(<NextDataItem Name="Entries" Count="2" UntilEnd="true"/>)", {L"CID", L"Entries", L"Entries.2."}},
        {R"(<NextDataItem Name="Entries" UntilEnd="True"/>)", {L"CID", L"Entries"}},
        {R"(<NextDataItem Name="Entries" Count="" UntilEnd="true"/>)", {L"CID", L"Entries"}},
        {R"(<DataItem Name="" AttributeID="TrayState2"/><NextDataItem Count="4"/>)", {L"CID"}},
        {R"(<DataItem Prefix="" Name="A"/><DataItem Prefix="p" AttributeID="B"/><DataItem Name="A"/>)",
         {L"CID", L"A", L"p:B", L"A"}},  // duplicates stay
    };
    for (const auto& [body, expected] : cases) {
        EXPECT_EQ(expected.size() > 1, Evaluate(OidMap(body), L"OID")) << body;
        EXPECT_EQ(expected, items) << body;
    }
    // Without a fixed item nothing is asked.
    EXPECT_FALSE(Evaluate(R"(<DataMaps><XMLDataMap Protocol="WS"><StaticDataItem Prefix="p"/>)"
                          R"(<DataItem Name="Duplex"/></XMLDataMap></DataMaps>)",
                          L"WS"));
    EXPECT_EQ(Items{}, items);
}

TEST_F(DataMapTest, BrokenAndHostileMapsGiveFalseOrTheirItemsWhole) {
    EXPECT_FALSE(Evaluate("<DataMaps><OIDDataMap>", L"OID"));
    EXPECT_FALSE(Evaluate("", L"OID"));
    EXPECT_FALSE(Evaluate(std::string(300, '<'), L"OID"));
    items.clear();
    EXPECT_FALSE(zx::EvaluateDataMap(items, bed.Directory() + L"missing.xml", L"OID"));
    EXPECT_EQ(Items{}, items);

    std::string deep = "<DataItem Name=\"Deep\"/>";
    for (int i = 0; i < 300; ++i) deep = "<g>" + deep + "</g>";
    EXPECT_FALSE(Evaluate(OidMap(deep), L"OID"));  // refused by the parser, not overflowed

    const std::string longName(100000, 'N');
    EXPECT_TRUE(Evaluate(OidMap("<DataItem Prefix=\"" + longName + "\" Name=\"" + longName + "\"/>"), L"OID"));
    ASSERT_EQ(2u, items.size());
    EXPECT_EQ(200001u, items[1].size());
}
