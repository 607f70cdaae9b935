// The shortcut collection on the simulated core driver: built from the sample printer's hidden
// features and from small descriptions of edge cases; translation, matching, list positions,
// applying a shortcut to the job and taking the job over.
#include "shortcuts/shortcut_job.h"
#include "tests/shortcuts/shortcut_bed.h"

#include <gtest/gtest.h>

using namespace zxtest;

namespace {

const std::vector<std::string> kComboOrder = {"MediaType", "PageOutputQuality", "DocumentNUp", "BorderlessPrint",
                                              "Duplex"};

void SetPrinterFeature(ShortcutSheet& bed, std::string_view feature, size_t option) {
    bed.sheet.core.SetPrinterSetting(bed.sheet.core.Description().FindFeature(feature).value(), static_cast<DWORD>(option));
}

// Three shortcuts: pictures by a known name, an empty name and an unknown name; the first
// defines its settings in both forms and with a name that is no setting.
constexpr char kEdgeCases[] = R"(
*Feature: MediaType { *Option: P { *Name: "Plain" } *Option: T { *Name: "Thick" } }
*Feature: PrintingShortcut { *Option: One { *Name: "First" } *Option: Two { *Name: "Second" }
                             *Option: Three { *Name: "Third" } }
*Feature: One { *Option: Duplex:1 { *Name: "N;N;L" } *Option: Pages { *Name: "A;A" }
                *Option: Duplex { *Name: "L;N;L" } *Option: MediaType { *Name: "T;P;T" } }
*Feature: ShortcutBitmaps { *Option: One { *Name: "IDB_PHOTO_BORDERLESS" } *Option: Two { *Name: "" }
                            *Option: Three { *Name: "IDB_NOT_THERE" } }
*Feature: AllSettingsfor_PS { *Option: MediaType { *Name: "P;P;T" } *Option: Duplex:21 { *Name: "N;N;L" } }
)";

}  // namespace

// Built-ins in the driver's order, each with the five settings in combo order; the
// all-settings record lists every option of the five features.
TEST(SampleShortcuts, BuiltInShortcutsOfTheSamplePrinter) {
    const ShortcutSheet bed(SamplePrinter());
    ASSERT_TRUE(bed.built);
    const auto& records = bed.shortcuts.Records();
    EXPECT_EQ((std::vector<std::wstring>{L"General Everyday Printing", L"Photo Printing - Borderless",
                                         L"Photo Printing - With White Borders", L"Two-sided (Duplex) Printing",
                                         L"Fast/Economical Printing", L"Factory Defaults"}),
              NamesOf(records));
    // Per shortcut: picture, then the values in combo order.
    const std::vector<std::vector<int32_t>> expected = {{147, 0, 1, 0, 0, 0}, {148, 0, 2, 0, 1, 0},
                                                        {149, 0, 2, 0, 0, 0}, {151, 0, 1, 0, 0, 1},
                                                        {152, 0, 0, 1, 0, 0}, {153, 0, 1, 0, 0, 0}};
    for (size_t i = 0; i < records.size(); ++i) {
        const PrintShortcutRecord& record = records[i];
        std::vector<int32_t> actual = {record.bitmapId};
        for (const std::string& feature : kComboOrder) actual.push_back(record.settings.at(feature));
        EXPECT_EQ(expected[i], actual) << i;
        EXPECT_EQ(kComboOrder, record.features) << i;
        EXPECT_EQ((std::vector<int32_t>{27, 29, 26, 28, 21}), record.featureIds) << i;
        EXPECT_TRUE(record.isBuiltIn && record.isStored && record.isNamed && record.isAvailable) << i;
    }
    EXPECT_EQ((ShortcutOptionNames{{0, "IDS_MTYPE_PLAIN_PAPER"}, {1, "IDS_MTYPE_THICK_PLAIN_PAPER"}}),
              records[3].optionNames[0]);

    // The all-settings record: as many keys as the core driver has options, in its order.
    const PrintShortcutRecord& all = bed.shortcuts.AllSettingsRecord();
    EXPECT_EQ(std::tuple(std::wstring_view(kAllSettingsShortcutName), 147, true, true, true),
              std::tuple(all.Name(), all.bitmapId, all.isBuiltIn, all.isStored, all.isNamed));
    EXPECT_EQ(kComboOrder, all.features);
    const drvhost::PrinterDescription& printer = bed.sheet.core.Description();
    for (const std::string& feature : kComboOrder) {
        const size_t options = printer.features[printer.FindFeature(feature).value()].options.size();
        EXPECT_EQ(static_cast<int32_t>(options) - 1, bed.shortcuts.AllSettingsOptionNames(feature).rbegin()->first);
    }
    EXPECT_EQ("IDS_OUTPUTQUALITY_BEST", bed.shortcuts.AllSettingsOptionNames("PageOutputQuality").at(2));
    EXPECT_TRUE(bed.shortcuts.AllSettingsOptionNames("PaperSize").empty());
}

TEST(SampleShortcuts, PicturesDefinitionFormsAndMissingFeatures) {
    const ShortcutSheet bed(kEdgeCases);
    ASSERT_TRUE(bed.built);
    ASSERT_EQ(3, bed.shortcuts.Count());
    EXPECT_EQ(148, bed.Record(0).bitmapId);
    EXPECT_EQ(147, bed.Record(1).bitmapId);
    EXPECT_EQ(147, bed.Record(2).bitmapId);

    // "Pages" is no setting: it adds no position and the others stay.
    const PrintShortcutRecord& first = bed.Record(0);
    EXPECT_EQ((std::vector<std::string>{"Duplex", "Duplex", "MediaType"}), first.features);
    EXPECT_EQ((std::vector<int32_t>{1, 21, 27}), first.featureIds);
    EXPECT_EQ(3u, first.optionNames.size());
    EXPECT_EQ((std::map<std::string, int32_t>{{"Duplex", 1}, {"MediaType", 1}}), first.settings);

    // Shortcuts without a feature of their own have no settings.
    EXPECT_TRUE(bed.Record(1).features.empty() && bed.Record(1).settings.empty());

    // No ShortcutBitmaps: the default picture; no PrintingShortcut: no collection.
    std::string text = kEdgeCases;
    text.replace(text.find("ShortcutBitmaps"), 15, "NoBitmaps");
    EXPECT_EQ(147, ShortcutSheet(text).Record(0).bitmapId);
    text.replace(text.find("PrintingShortcut"), 16, "NoShortcuts");
    EXPECT_FALSE(ShortcutSheet(text).built);
}

// Without a duplex unit and without manual two-sided printing, two-sided shortcuts are hidden.
TEST(SampleShortcuts, TwoSidedShortcutsNeedADuplexUnitOrManualTwoSidedPrinting) {
    for (const auto& [manual, unit, hidden] :
         std::vector<std::tuple<BYTE, size_t, bool>>{{1, 1, false}, {0, 0, false}, {0, 1, true}}) {
        ShortcutSheet bed(SamplePrinter());
        bed.sheet.properties.SetManualDuplexSupported(manual);
        SetPrinterFeature(bed, "DuplexUnit", unit);
        ASSERT_TRUE(bed.shortcuts.BuildShortcuts(bed.sheet.properties, &bed.sheet.params));
        for (int32_t i = 0; i < bed.shortcuts.Count(); ++i) {
            EXPECT_EQ(hidden && i == 3, !bed.Record(i).isAvailable) << i;
        }
        EXPECT_EQ(151, bed.Record(3).bitmapId);
    }
}

// A black-only device does not list shortcuts whose medium MonoConfig names, and the others do
// not offer those media.
TEST(SampleShortcuts, BlackOnlyDevicesDoNotOfferTheMediaOfMonoConfig) {
    std::string text = kEdgeCases;
    text += R"(*Feature: MonoConfig { *Option: ColorMode { *Name: "Color" } *Option: MediaType { *Name: "T;X" } })";
    VIOData mono(1, 0, 0, 0, 1), colour;
    const ShortcutSheet black(text, &mono);
    EXPECT_EQ((zx::MonochromeMediaMap{{"T", 1}, {"X", -1}}), black.shortcuts.MonochromeMedia());
    EXPECT_FALSE(black.Record(0).isAvailable);  // its chosen medium T is named
    // The all-settings lists keep every medium: the core driver's indexes go through them.
    EXPECT_EQ(2u, black.shortcuts.AllSettingsOptionNames("MediaType").size());

    const ShortcutSheet inColour(text, &colour);
    EXPECT_TRUE(inColour.shortcuts.MonochromeMedia().empty());
    EXPECT_EQ(2u, inColour.Record(0).optionNames[2].size());

    text.replace(text.find("\"T;P;T\""), 7, "\"P;P;T;T\"");
    const ShortcutSheet plain(text, &mono);
    EXPECT_TRUE(plain.Record(0).isAvailable);
    EXPECT_EQ((ShortcutOptionNames{{0, "P"}, {1, "T"}}), plain.Record(0).optionNames[2]);  // the last stays
    EXPECT_EQ(0, plain.Record(0).settings.at("MediaType"));
}

// Through the display-name keys: a shortcut option to the core driver's index and back.
TEST(SampleShortcuts, TranslationBetweenShortcutAndDriverOptions) {
    const ShortcutSheet bed(SamplePrinter());
    const VUIPSItem& shortcuts = bed.shortcuts;
    const PrintShortcutRecord& photo = bed.Record(1);  // media: ZX_MEDIA_01, ZX_MEDIA_02, photo, matte
    const PrintShortcutRecord& duplex = bed.Record(3);  // media: plain, thick
    EXPECT_EQ(3, shortcuts.ToDriverOption(photo, 0, 1));
    EXPECT_EQ(0, shortcuts.ToDriverOption(photo, 0, 9));  // no such combo entry
    EXPECT_EQ(0, shortcuts.ToDriverOption(photo, 7, 0));  // no such position
    EXPECT_EQ(1, shortcuts.ToShortcutOption(duplex, 0, 1));
    EXPECT_EQ(-1, shortcuts.ToShortcutOption(duplex, 0, 2));  // the shortcut offers two media only
    EXPECT_EQ(-1, shortcuts.ToShortcutOption(duplex, 5, 0));
    for (int32_t option = 0; option < 4; ++option) {
        EXPECT_EQ(option, shortcuts.ToShortcutOption(photo, 0, shortcuts.ToDriverOption(photo, 0, option)));
    }
}

// The preferred shortcut wins among equals, otherwise the first listed one; unlisted ones never.
TEST(SampleShortcuts, FindingTheShortcutThatMatchesTheJob) {
    ShortcutSheet bed(SamplePrinter());
    VUIPSItem& shortcuts = bed.shortcuts;
    shortcuts.SetCurrentSettings(zx::CurrentJobSettings(bed.sheet.properties, shortcuts));
    EXPECT_EQ((JobSettings{{"MediaType", 0}, {"PageOutputQuality", 1}, {"DocumentNUp", 0}, {"BorderlessPrint", 0},
                           {"Duplex", 0}}),
              shortcuts.CurrentSettings());
    const auto matching = [&](int32_t preferred) {
        int32_t found = -7;
        return shortcuts.FindMatching(preferred, found) ? found : -found;
    };
    EXPECT_EQ(5, matching(5));  // General Everyday and Factory Defaults are equal
    EXPECT_EQ(0, matching(2));
    EXPECT_EQ(0, matching(-1));
    shortcuts.Records()[0].isAvailable = false;
    EXPECT_EQ(5, matching(0));
    // Card stock: no shortcut chooses it. An absent job setting counts as option 0.
    shortcuts.SetCurrentSettings({{"MediaType", 7}, {"PageOutputQuality", 1}});
    EXPECT_EQ(7, matching(0));
    shortcuts.SetCurrentSettings({{"MediaType", 2}, {"PageOutputQuality", 2}, {"BorderlessPrint", 1}});
    EXPECT_EQ(1, matching(0));

    // A setting of a feature that the all-settings lists lack matches whatever the job has.
    PrintShortcutRecord unknown = bed.Record(1);
    zx::AppendSetting(unknown, {"Orientation", 0}, "L;P;L");
    EXPECT_TRUE(shortcuts.Matches(unknown));
}

TEST(SampleShortcuts, ListPositionsAndRecords) {
    ShortcutSheet bed(SamplePrinter());
    VUIPSItem& shortcuts = bed.shortcuts;
    std::vector<std::wstring> listed = NamesOf(shortcuts.Records());
    int32_t mark = 4;
    const ShortcutListView list{[&] { return mark; }, [&](int32_t item) { return listed.at(item); }};
    EXPECT_EQ(3, shortcuts.ListToRecord(3, list));
    EXPECT_EQ(4, shortcuts.ListToRecord(-1, list));
    mark = -1;
    EXPECT_EQ(-1, shortcuts.ListToRecord(-1, list));

    // A hidden two-sided shortcut in fourth place: the fourth item shows the fifth record.
    shortcuts.Records()[3].isAvailable = false;
    listed.erase(listed.begin() + 3);
    listed[1] = L"not a shortcut";
    for (const auto& [item, record] : std::vector<std::pair<int32_t, int32_t>>{{1, 1}, {2, 2}, {3, 4}, {4, 5}}) {
        EXPECT_EQ(record, shortcuts.ListToRecord(item, list)) << item;
    }
}

// Applying every setting of a shortcut makes the job match it (the N-up index also goes to the
// private block); the pending shortcut takes over the job's options that it offers.
TEST(SampleShortcuts, ApplyingAShortcutAndTakingTheJobOver) {
    ShortcutSheet bed(SamplePrinter());
    VPrivateDevMode block{};
    bed.sheet.params.pOEMDM = &block;
    VUICallbackContext properties(&bed.sheet.params, bed.sheet.core.DriverUi(), nullptr,
                                  static_cast<IPrintCoreHelper*>(bed.sheet.core.CoreHelper()));
    VUIPSItem& shortcuts = bed.shortcuts;
    for (int32_t index : {4, 1, 3}) {
        const PrintShortcutRecord& record = bed.Record(index);
        for (size_t k = 0; k < record.features.size(); ++k) {
            ASSERT_EQ(S_OK, zx::ApplyShortcutSetting(shortcuts, record, k, record.SettingOf(record.features[k]),
                                                     properties));
        }
        shortcuts.SetCurrentSettings(zx::CurrentJobSettings(properties, shortcuts));
        int32_t found = -1;
        EXPECT_TRUE(shortcuts.FindMatching(index, found) && found == index) << index;
        EXPECT_EQ(index == 4 ? 1u : 0u, block.dwNUpIndex);
    }
    EXPECT_TRUE(bed.sheet.Item("DocumentNUp")->Flags & OPTIF_CHANGED);
    EXPECT_EQ(E_INVALIDARG, zx::ApplyShortcutSetting(shortcuts, bed.Record(4), 5, 0, properties));
    PrintShortcutRecord unknown;
    zx::AppendSetting(unknown, {"NoSuchFeature", 0}, "A;A");
    EXPECT_EQ(S_FALSE, zx::ApplyShortcutSetting(shortcuts, unknown, 0, 0, properties));

    // Thick paper, two-sided on the short edge: the pending shortcut offers both.
    shortcuts.SetCurrentSettings({{"MediaType", 1}, {"Duplex", 2}});
    PrintShortcutRecord pending = zx::PendingShortcutFrom(bed.Record(3), 3);
    EXPECT_EQ(1, zx::TakeOverJobSetting(shortcuts, pending, 0, false));
    EXPECT_EQ(2, zx::TakeOverJobSetting(shortcuts, pending, 4, false));
    EXPECT_EQ(0, zx::TakeOverJobSetting(shortcuts, pending, 1, false));  // not in the job: option 0
    shortcuts.SetCurrentSettings({{"MediaType", 2}});
    EXPECT_EQ(-1, zx::TakeOverJobSetting(shortcuts, pending, 0, false));
    EXPECT_EQ((std::map<std::string, int32_t>{{"MediaType", 1}, {"PageOutputQuality", 0}, {"DocumentNUp", 0},
                                              {"BorderlessPrint", 0}, {"Duplex", 2}}),
              pending.settings);
    zx::AppendSetting(unknown, {"PaperSize", 52}, "A;A;B");
    EXPECT_EQ(-1, zx::TakeOverJobSetting(shortcuts, unknown, 1, true));  // never a custom paper size
}

// At most one pending shortcut, at the end; it keeps the name given to it until it is stored.
TEST(SampleShortcuts, PendingShortcutLifecycle) {
    ShortcutSheet bed(SamplePrinter());
    VUIPSItem& shortcuts = bed.shortcuts;
    EXPECT_EQ(6, shortcuts.SetPendingShortcut(zx::PendingShortcutFrom(bed.Record(1), 1), L"New Shortcut"));
    EXPECT_FALSE(shortcuts.AllStored());
    EXPECT_EQ(std::pair(std::wstring_view(L"New Shortcut"), false), std::pair(bed.Record(6).Name(), bed.Record(6).isNamed));
    EXPECT_EQ(zx::kStoreFailed, shortcuts.StorePendingShortcut(L"New Shortcut"));  // not named yet

    shortcuts.Records()[6].SetName(L"Holiday");
    shortcuts.Records()[6].isNamed = true;
    EXPECT_EQ(6, shortcuts.SetPendingShortcut(zx::PendingShortcutFrom(bed.Record(2), 2), L"New Shortcut"));
    EXPECT_EQ(std::pair(std::wstring_view(L"Holiday"), 157), std::pair(bed.Record(6).Name(), bed.Record(6).bitmapId));
    EXPECT_EQ(6, shortcuts.FindByNameIgnoringCase(L"HOLIDAY"));
    // No printer: the store refuses, but the shortcut counts as stored from now on.
    EXPECT_EQ(zx::kStoreFailed, shortcuts.StorePendingShortcut(L"New Shortcut"));
    EXPECT_EQ(-1, shortcuts.PendingIndex());
    EXPECT_TRUE(shortcuts.DeleteRecord(6) && shortcuts.DeleteRecord(6));
    PrintShortcutRecord copy;
    EXPECT_FALSE(shortcuts.GetRecord(6, copy) || shortcuts.GetRecord(-1, copy));
    EXPECT_TRUE(shortcuts.GetRecord(5, copy) && copy == bed.Record(5));
}
