// One shortcut without a printer: the field table, a setting's definition and option lists, the
// black-only media rewrite, the stored text both ways, the GUID text, the modified pictures.
#include "shortcuts/shortcut_job.h"
#include "shortcuts/shortcut_text.h"

#include <gtest/gtest.h>

namespace {

using Names = ShortcutOptionNames;
using Indexes = ShortcutOptionIndexes;

// Ten records, each with three settings; record 2 offers other option lists.
std::vector<PrintShortcutRecord> TenRecords() {
    std::vector<PrintShortcutRecord> list(10);
    for (size_t i = 0; i < list.size(); ++i) {
        PrintShortcutRecord& record = list[i];
        record.SetName(L"Built-in " + std::to_wstring(i));
        record.isBuiltIn = record.isStored = record.isNamed = record.isAvailable = true;
        record.bitmapId = 148;
        for (const char* feature : {"MediaType", "Duplex", "DocumentNUp"}) {
            zx::AppendSetting(record, {feature, 1}, i == 2 ? "A;A;B" : "X;X;Y");
        }
    }
    return list;
}

PrintShortcutRecord AllSettings() {
    PrintShortcutRecord all;
    zx::AppendSetting(all, {"MediaType", 27}, "M0;M0;M1;M2");
    zx::AppendSetting(all, {"Orientation", 0}, "O0;O0;O1");
    return all;
}

std::optional<PrintShortcutRecord> Parse(const std::wstring& text, const std::wstring& name = L"Mine") {
    static const std::vector<PrintShortcutRecord> list = TenRecords();
    static const PrintShortcutRecord all = AllSettings();
    return zx::ParseShortcutText(name, text, true, list, all);
}

}  // namespace

// Whole names, exact case, rows in order; "Feature:Number" gives the number as label directly.
TEST(ShortcutFields, TableLookupAndDefinitionForms) {
    ASSERT_EQ(7u, ShortcutFieldTable::Rows().size());
    EXPECT_EQ((ShortcutSetting{"DocumentNUp", 26}), ShortcutFieldTable::Lookup("PagesPerSheet"));
    EXPECT_EQ((ShortcutSetting{"PageOutputQuality", 29}), ShortcutFieldTable::Lookup("PrintQuality"));
    EXPECT_EQ((ShortcutSetting{"Orientation", 0}), ShortcutFieldTable::Lookup("Orientation"));
    for (const char* unknown : {"pagesPerSheet", "PAGESPERSHEET", "PagesPerShee", "PagesPerSheetX", ""}) {
        EXPECT_EQ(std::nullopt, ShortcutFieldTable::Lookup(unknown)) << unknown;
    }

    EXPECT_EQ((ShortcutSetting{"Duplex", 1}), zx::ParseSettingDefinition("Duplex:1"));
    EXPECT_EQ((ShortcutSetting{"Duplex", 21}), zx::ParseSettingDefinition("Duplex"));
    EXPECT_EQ((ShortcutSetting{"Duplex", 0}), zx::ParseSettingDefinition("Duplex:"));
    EXPECT_EQ((ShortcutSetting{"Duplex", 27}), zx::ParseSettingDefinition("Duplex:27x:3"));
    EXPECT_EQ((ShortcutSetting{"ZXMaxDpi", -4}), zx::ParseSettingDefinition("ZXMaxDpi: -4"));
    EXPECT_EQ((ShortcutSetting{"X", INT32_MAX}), zx::ParseSettingDefinition("X:99999999999999"));
    EXPECT_EQ(std::nullopt, zx::ParseSettingDefinition(":5"));
    EXPECT_EQ(std::nullopt, zx::ParseSettingDefinition("Pages Per Sheet"));
}

// "S;K0;...;Kn": keys numbered from 0 in both maps, S chooses the first equal key.
TEST(ShortcutFields, OptionListsOfOneSetting) {
    zx::SettingOptionLists lists = zx::ParseSettingOptions("B;A;B;C");
    EXPECT_EQ((Names{{0, "A"}, {1, "B"}, {2, "C"}}), lists.optionNames);
    EXPECT_EQ((Indexes{{"A", 0}, {"B", 1}, {"C", 2}}), lists.optionIndexByName);
    EXPECT_EQ(1, lists.chosen);

    // A key listed twice keeps its first number, except in the last piece; S picks the first.
    lists = zx::ParseSettingOptions("A;A;B;A;B");
    EXPECT_EQ((Names{{0, "A"}, {1, "B"}, {2, "A"}, {3, "B"}}), lists.optionNames);
    EXPECT_EQ((Indexes{{"A", 0}, {"B", 3}}), lists.optionIndexByName);
    EXPECT_EQ(0, lists.chosen);

    EXPECT_EQ(std::nullopt, zx::ParseSettingOptions("X;A;B").chosen);
    lists = zx::ParseSettingOptions("A;");
    EXPECT_EQ((Names{{0, ""}}), lists.optionNames);
    EXPECT_EQ(std::nullopt, lists.chosen);
    lists = zx::ParseSettingOptions("IDS_ON");
    EXPECT_TRUE(lists.optionNames.empty() && lists.optionIndexByName.empty() && !lists.chosen);

    // A setting adds a position; only a chosen option becomes a value.
    PrintShortcutRecord record;
    zx::AppendSetting(record, {"Duplex", 21}, "N;N;L");
    zx::AppendSetting(record, {"MediaType", 27}, "Z;P;T");
    EXPECT_EQ((std::vector<std::string>{"Duplex", "MediaType"}), record.features);
    EXPECT_EQ((std::vector<int32_t>{21, 27}), record.featureIds);
    EXPECT_EQ((std::map<std::string, int32_t>{{"Duplex", 0}}), record.settings);
    EXPECT_EQ("T", record.OptionKey(1, 1));
    EXPECT_EQ("", record.OptionKey(1, 2));
    EXPECT_EQ("", record.OptionKey(2, 0));
}

TEST(ShortcutFields, BlackOnlyDevicesKeepTheMediaTheyOfferAndTheLastPiece) {
    const zx::MonochromeMediaMap media{{"PLAIN", 0}, {"THICK", 1}};
    bool dropped = true;
    EXPECT_EQ("PLAIN;PLAIN;THICK;CARD", zx::RestrictToMonochromeMedia("PLAIN;PLAIN;PHOTO;THICK;CARD", media, dropped));
    EXPECT_FALSE(dropped);
    EXPECT_EQ("PLAIN;CARD", zx::RestrictToMonochromeMedia("PHOTO;PLAIN;PHOTO;CARD", media, dropped));
    EXPECT_TRUE(dropped);
    EXPECT_EQ("PHOTO", zx::RestrictToMonochromeMedia("PHOTO", media, dropped));
    EXPECT_FALSE(dropped);
}

TEST(ShortcutText, WrittenAsCommaTerminatedNumbersInKeywordOrder) {
    PrintShortcutRecord record;
    record.baseIndex = 1;
    record.bitmapId = 155;
    record.settings = {{"MediaType", 3}};
    EXPECT_EQ(L"1,0,155,3,", zx::FormatShortcutText(record));

    record.baseIndex = 0;
    record.bitmapId = 154;
    record.usesAllSettings = true;
    record.settings = {{"PageOutputQuality", 2}, {"MediaType", 3}, {"Duplex", 1}, {"DocumentNUp", 0}};
    EXPECT_EQ(L"0,1,154,0,1,3,2,", zx::FormatShortcutText(record));

    for (int i = 0; i < 21; ++i) record.settings["F" + std::to_string(i)] = -1000000000;
    EXPECT_EQ(std::nullopt, zx::FormatShortcutText(record));  // would not fit in 260 characters
}

// Missing fields keep the base record's values, extra ones are ignored, a base index outside
// the list derives from record 0.
TEST(ShortcutText, ReadBackFromItsBaseRecord) {
    const std::vector<PrintShortcutRecord> list = TenRecords();
    std::optional<PrintShortcutRecord> record = Parse(L"0,0,154,");
    ASSERT_TRUE(record);
    EXPECT_EQ(154, record->bitmapId);
    EXPECT_EQ(list[0].settings, record->settings);
    EXPECT_EQ(L"Mine", record->Name());
    EXPECT_FALSE(record->isBuiltIn);
    EXPECT_TRUE(record->isStored && record->isNamed && record->isAvailable && record->inPrinterData);

    for (const wchar_t* text : {L"99,0,147,1,", L"-5,0,147,1,", L"10,0,147,1,", L"x,0,147,1,"}) {
        record = Parse(text);
        ASSERT_TRUE(record) << text;
        EXPECT_EQ(0, record->baseIndex) << text;
        EXPECT_EQ(1, record->settings.at("DocumentNUp")) << text;  // the first key in byte order
        EXPECT_EQ(list[0].optionNames, record->optionNames) << text;
    }

    record = Parse(L"2,1,153,7,8,9,10,11,");
    ASSERT_TRUE(record);
    EXPECT_EQ(2, record->baseIndex);
    EXPECT_EQ(153, record->bitmapId);
    EXPECT_EQ((std::map<std::string, int32_t>{{"DocumentNUp", 7}, {"Duplex", 8}, {"MediaType", 9}}), record->settings);
    // The all-settings lists replace those of the features it lists.
    EXPECT_TRUE(record->usesAllSettings);
    EXPECT_EQ((Names{{0, "M0"}, {1, "M1"}, {2, "M2"}}), record->optionNames[0]);
    EXPECT_EQ(list[2].optionNames[1], record->optionNames[1]);

    // Text after the last comma is no field; unknown pictures become the default one.
    record = Parse(L"3,0,152");
    EXPECT_EQ(148, record->bitmapId);
    EXPECT_EQ(3, record->baseIndex);
    EXPECT_EQ(147, Parse(L"3,0,150,")->bitmapId);
    EXPECT_EQ(147, Parse(L"3,0,,")->bitmapId);
    EXPECT_EQ(0, Parse(L"7")->baseIndex);
    EXPECT_EQ(list[0].settings, Parse(L"")->settings);
}

TEST(ShortcutText, HostileNamesAndLengths) {
    EXPECT_EQ(255u, Parse(L"1,0,147,", std::wstring(300, L'n'))->Name().size());
    EXPECT_TRUE(Parse(std::wstring(259, L'1')));
    EXPECT_EQ(std::nullopt, Parse(std::wstring(260, L'1')));
    EXPECT_EQ(std::nullopt, zx::ParseShortcutText(L"Mine", L"0,0,147,", true, {}, AllSettings()));
}

TEST(ShortcutText, PrinterGuidHasNoLeadingZeros) {
    const GUID guid{0x0000ABCD, 0x0A1B, 0x0001, {0x00, 0x01, 0x0F, 0x10, 0xAB, 0x00, 0x00, 0xFF}};
    EXPECT_EQ(L"abcd-a1b-1-01f10ab00ff", zx::FormatPrinterGuid(guid));
    const GUID full{0xFFFFFFFF, 0xFFFF, 0xFFFF, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}};
    EXPECT_EQ(35u, zx::FormatPrinterGuid(full).size());
}

TEST(PendingShortcut, ModifiedPicturesAndFlags) {
    for (const auto& [builtIn, modified, fromSheet] :
         std::vector<std::tuple<int32_t, int32_t, int32_t>>{{147, 154, 154},
                                                            {148, 155, 155},
                                                            {149, 157, 157},
                                                            {151, 158, 158},
                                                            {152, 159, 159},
                                                            {153, 160, 154},
                                                            {155, 154, 154}}) {
        EXPECT_EQ(modified, zx::ModifiedShortcutBitmap(builtIn)) << builtIn;
        EXPECT_EQ(fromSheet, zx::StandardSheetModifiedBitmap(builtIn)) << builtIn;
    }

    PrintShortcutRecord source = TenRecords()[4];
    source.inPrinterData = true;
    source.isAvailable = false;
    PrintShortcutRecord pending = zx::PendingShortcutFrom(source, 4);
    EXPECT_EQ(155, pending.bitmapId);
    EXPECT_EQ(4, pending.baseIndex);
    EXPECT_FALSE(pending.isBuiltIn || pending.isStored || pending.inPrinterData);
    EXPECT_TRUE(pending.isAvailable && pending.isNamed);
    EXPECT_EQ(source.settings, pending.settings);

    source.isBuiltIn = false;  // a user shortcut keeps its picture and base
    source.baseIndex = 2;
    pending = zx::PendingShortcutFrom(source, 7);
    EXPECT_EQ(std::pair(148, 2), std::pair(pending.bitmapId, pending.baseIndex));
}
