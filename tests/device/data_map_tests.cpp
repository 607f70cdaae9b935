// Evaluation of the device data map: protocol choice, the three passes and their item strings,
// and maps that are broken or hostile.
#include "device/data_map.h"
#include "tests/device/device_bed.h"

#include <gtest/gtest.h>

using Items = std::vector<std::wstring>;

namespace {

constexpr char kExampleMap[] = R"(<?xml version="1.0"?>
<DataMaps>
  <XMLDataMap Protocol="KELP">
    <StaticDataItem Name="CID"/>
    <Group>
      <DataItem Prefix="dd" Name="DuplexUnit"/>
      <DataItem Prefix="dd" Name="Duplex"/>
    </Group>
    <DataItem Name="ColorPrinting"/>
    <NextDataItem Name="NeverAsked" Count="1"/>
  </XMLDataMap>
  <OIDDataMap>
    <StaticDataItem Name="CID"/>
    <DataItem AttributeID="TrayState2"/>
    <NextDataItem Prefix="tbl" Name="PhotoTray" Count="3"/>
    <NextDataItem Name="Entries" UntilEnd="true"/>
  </OIDDataMap>
  <IPPDataMap>
    <StaticDataItem Name="CID"/>
  </IPPDataMap>
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

TEST_F(DataMapTest, EachProtocolSelectsItsMapAndPasses) {
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
}

TEST_F(DataMapTest, UnknownProtocolsAndXmlProtocolsInAnotherCaseFindNothing) {
    EXPECT_FALSE(Evaluate(kExampleMap, L"SNMP"));
    EXPECT_EQ(Items{}, items);
    EXPECT_FALSE(Evaluate(kExampleMap, L"kelp"));  // chosen, but the attribute value differs
    EXPECT_EQ(Items{}, items);
    EXPECT_FALSE(Evaluate(kExampleMap, L""));
    EXPECT_FALSE(Evaluate(kExampleMap, L"KELP'] | //*[@Name='CID"));
    EXPECT_EQ(Items{}, items);
    EXPECT_FALSE(Evaluate(kExampleMap, L"WS"));
    EXPECT_EQ(Items{}, items);
}

TEST_F(DataMapTest, CountWinsOverUntilEndAndNamesMustBeThere) {
    EXPECT_TRUE(Evaluate(OidMap(R"(<NextDataItem Name="Entries" Count="2" UntilEnd="true"/>)"), L"OID"));
    EXPECT_EQ((Items{L"CID", L"Entries", L"Entries.2."}), items);
    EXPECT_TRUE(Evaluate(OidMap(R"(<NextDataItem Name="Entries" UntilEnd="True"/>)"), L"OID"));
    EXPECT_EQ((Items{L"CID", L"Entries"}), items);
    EXPECT_TRUE(Evaluate(OidMap(R"(<NextDataItem Name="Entries" Count="" UntilEnd="true"/>)"), L"OID"));
    EXPECT_EQ((Items{L"CID", L"Entries"}), items);
    EXPECT_FALSE(Evaluate(OidMap(R"(<DataItem Name="" AttributeID="TrayState2"/><NextDataItem Count="4"/>)"), L"OID"));
    EXPECT_EQ(Items{L"CID"}, items);
    EXPECT_TRUE(Evaluate(OidMap(R"(<DataItem Prefix="" Name="A"/><DataItem Prefix="p" AttributeID="B"/>)"
                                R"(<DataItem Name="A"/>)"),
                         L"OID"));
    EXPECT_EQ((Items{L"CID", L"A", L"p:B", L"A"}), items);  // duplicates stay
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

    std::string deep = "<DataMaps><OIDDataMap><StaticDataItem Name=\"CID\"/>";
    for (int i = 0; i < 300; ++i) deep += "<g>";
    deep += "<DataItem Name=\"Deep\"/>";
    for (int i = 0; i < 300; ++i) deep += "</g>";
    deep += "</OIDDataMap></DataMaps>";
    EXPECT_FALSE(Evaluate(deep, L"OID"));  // refused by the parser, not overflowed

    const std::string longName(100000, 'N');
    EXPECT_TRUE(Evaluate(OidMap("<DataItem Prefix=\"" + longName + "\" Name=\"" + longName + "\"/>"), L"OID"));
    ASSERT_EQ(2u, items.size());
    EXPECT_EQ(200001u, items[1].size());
}
