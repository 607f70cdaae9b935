// One shortcut without a printer: the field table, a setting's definition and option lists, the
// black-only media rewrite, the stored text, the modified pictures.
#include "shortcuts/shortcut_job.h"
#include "shortcuts/shortcut_text.h"

#include <gtest/gtest.h>

using Names = ShortcutOptionNames;

// Whole names, exact case; "Feature:Number" gives the number as label directly.
TEST(ShortcutFields, TableLookupAndDefinitionForms) {
    EXPECT_EQ((ShortcutSetting{"DocumentNUp", 26}), ShortcutFieldTable::Lookup("PagesPerSheet"));
    for (const char* unknown : {"pagesPerSheet", "PAGESPERSHEET", "PagesPerSheetX", ""}) {
        EXPECT_EQ(std::nullopt, ShortcutFieldTable::Lookup(unknown)) << unknown;
    }
    EXPECT_EQ((ShortcutSetting{"Duplex", 1}), zx::ParseSettingDefinition("Duplex:1"));
    EXPECT_EQ((ShortcutSetting{"Duplex", 21}), zx::ParseSettingDefinition("Duplex"));
    EXPECT_EQ((ShortcutSetting{"Duplex", 27}), zx::ParseSettingDefinition("Duplex:27x:3"));
    EXPECT_EQ((ShortcutSetting{"X", INT32_MAX}), zx::ParseSettingDefinition("X:99999999999999"));
    EXPECT_EQ(std::nullopt, zx::ParseSettingDefinition(":5"));
    EXPECT_EQ(std::nullopt, zx::ParseSettingDefinition("Pages Per Sheet"));
}

// "S;K0;...;Kn": keys numbered from 0 in both maps, S chooses the first equal key.
TEST(ShortcutFields, OptionListsOfOneSetting) {
    zx::SettingOptionLists lists = zx::ParseSettingOptions("B;A;B;C");
    EXPECT_EQ((Names{{0, "A"}, {1, "B"}, {2, "C"}}), lists.optionNames);
    EXPECT_EQ(1, lists.chosen);
    // A key listed twice keeps its first number, except in the last piece.
    lists = zx::ParseSettingOptions("A;A;B;A;B");
    EXPECT_EQ((ShortcutOptionIndexes{{"A", 0}, {"B", 3}}), lists.optionIndexByName);
    EXPECT_EQ(0, lists.chosen);
    EXPECT_EQ(std::nullopt, zx::ParseSettingOptions("X;A;B").chosen);
    lists = zx::ParseSettingOptions("IDS_ON");
    EXPECT_TRUE(lists.optionNames.empty() && lists.optionIndexByName.empty() && !lists.chosen);

    // Only a chosen option becomes a value.
    PrintShortcutRecord record;
    zx::AppendSetting(record, {"Duplex", 21}, "N;N;L");
    zx::AppendSetting(record, {"MediaType", 27}, "Z;P;T");
    EXPECT_EQ((std::vector<std::string>{"Duplex", "MediaType"}), record.features);
    EXPECT_EQ((std::map<std::string, int32_t>{{"Duplex", 0}}), record.settings);
    EXPECT_EQ("T", record.OptionKey(1, 1));

    // A black-only device drops the media it cannot print on, but never the last piece.
    const zx::MonochromeMediaMap media{{"PHOTO", 2}};
    bool dropped = true;
    EXPECT_EQ("PLAIN;THICK;CARD", zx::RestrictToMonochromeMedia("PLAIN;PHOTO;THICK;CARD", media, dropped));
    EXPECT_FALSE(dropped);
    EXPECT_EQ("PLAIN;CARD", zx::RestrictToMonochromeMedia("PHOTO;PLAIN;CARD", media, dropped));
    EXPECT_TRUE(dropped);
}

TEST(ShortcutText, CommaTerminatedNumbersInKeywordOrderThatFitIn260Characters) {
    PrintShortcutRecord record;
    record.bitmapId = 154;
    record.settings = {{"PageOutputQuality", 2}, {"MediaType", 3}, {"Duplex", 1}, {"DocumentNUp", 0}};
    EXPECT_EQ(L"0,0,154,0,1,3,2,", zx::FormatShortcutText(record));
    for (int i = 0; i < 21; ++i) record.settings["F" + std::to_string(i)] = -1000000000;
    EXPECT_EQ(std::nullopt, zx::FormatShortcutText(record));
}

TEST(PendingShortcut, ModifiedPicturesAndFlags) {
    // A picture without a modified one gets the general one; the standard sheet's changes to the
    // factory defaults too.
    const std::vector<std::array<int32_t, 3>> pictures = {{147, 154, 154}, {148, 155, 155}, {153, 160, 154}};
    for (const auto& [builtIn, modified, fromSheet] : pictures) {
        EXPECT_EQ(modified, zx::ModifiedShortcutBitmap(builtIn)) << builtIn;
        EXPECT_EQ(fromSheet, zx::StandardSheetModifiedBitmap(builtIn)) << builtIn;
    }
    PrintShortcutRecord source;
    source.bitmapId = 148;
    source.isBuiltIn = source.isStored = source.isNamed = source.inPrinterData = true;
    PrintShortcutRecord pending = zx::PendingShortcutFrom(source, 4);
    EXPECT_EQ(std::pair(155, 4), std::pair(pending.bitmapId, pending.baseIndex));
    EXPECT_FALSE(pending.isBuiltIn || pending.isStored || pending.inPrinterData);
    EXPECT_TRUE(pending.isAvailable && pending.isNamed);
    source.isBuiltIn = false;  // a user shortcut keeps its picture and base
    pending = zx::PendingShortcutFrom(source, 7);
    EXPECT_EQ(std::pair(148, 0), std::pair(pending.bitmapId, pending.baseIndex));
}
