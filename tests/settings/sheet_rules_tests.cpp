// The document sheet's dependent-settings rules on the simulated core driver: the snapping table
// and the snaps, quality, memories, two-sided printing and margins, booklet and N-up, and the rules
// of page activation, page leaving, Apply and revert.
#include "resources/resource_libraries.h"
#include "settings/sheet_rules.h"
#include "tests/settings/settings_support.h"
#include "tests/support/fake_core_helper.h"

#include <gtest/gtest.h>

#include <map>
#include <tuple>
#include <utility>

using namespace zxtest;

namespace {

// The rule examples: two rules for A4 (the later wins) and one for borderless A4, a quality index
// beyond the four options, unknown paper source and media names, a paper without a rule.
constexpr char kSnappingPrinter[] = R"(
*Feature: PaperSize { *Option: LETTER { } *Option: A4 { } *Option: B5 { } *Option: A5 { } }
*Feature: MediaType { *Option: Thick { *Name: "Thick Plain Paper" } *Option: Plain { *Name: "Plain Paper" }
                      *Option: Glossy { *Name: "ZX Premium Photo Paper Glossy" } }
*Feature: MediaTypePrev { *Option: Thick { } *Option: Plain { } *Option: Glossy { } }
*Feature: PageOutputQuality { *Option: Draft { } *Option: Normal { } *Option: High { } *Option: Max { } }
*Feature: InputBin { *Option: Auto { } *Option: Tray1 { } *Option: Tray2 { } }
*Feature: BorderlessPrint { *Option: None { } *Option: BorderlessOverspray { } }
*Feature: SnappingData {
    *Option: A4:1.0:Tray2:0:IDS_MTYPE_ZX_MEDIA_01:0 { }
    *Option: A4:1.0:Tray1:2:IDS_MTYPE_PLAIN_PAPER:0 { }
    *Option: BORDERLESS_A4:1.0:Tray2:3:IDS_MTYPE_PLAIN_PAPER:1 { }
    *Option: LETTER:2.0:Tray1:4:IDS_MTYPE_ZX_MEDIA_01 { }
    *Option: B5:1.0:Nowhere:1:IDS_NO_SUCH_NAME:0 { }
    *Option: NOTARULE { } })";

using Options = std::vector<std::string>;

// The window and page hooks, recording what they are told.
struct Told : IStandardSheetWindows, IShortcutPagesObserver, std::vector<std::string> {
    void RefreshTwoSidedLabel(const VUICallbackContext&) override { emplace_back("two-sided label"); }
    void FollowManualTwoSidedLabel(const VUICallbackContext&) override { emplace_back("manual label"); }
    void OnStandardItemsChanged(HWND, const VUIProperties&) override { emplace_back("items changed"); }
    void OnStandardSelectionChanged(const VUIProperties&) override { emplace_back("selection changed"); }
};

// A document sheet with the rules' session state. The UI plug-in object lends the core driver's
// helpers and the private block travels in the parameter block.
class RulesBed : public SheetBed, private IUIPlugin {
public:
    explicit RulesBed(drvhost::PrinterDescription description = SamplePrinter()) : SheetBed(std::move(description)) {
        params.pOEMDM = &block;
        zx::SetUiPluginOf(params, this);
        rules.LoadSnappingTable(core.CoreHelper());
    }
    explicit RulesBed(std::string_view gpdText) : RulesBed(drvhost::ParsePrinterDescription(gpdText, "test.gpd")) {}

    // The user picks an option: the core driver takes it, then calls back with the previous one.
    HRESULT Choose(std::string_view feature, std::string_view option) {
        POPTITEM item = Item(feature);
        const LONG previous = std::exchange(item->Sel, OptionIndex(feature, option));
        core.DriverUi()->DrvUpdateUISetting(&uiObject, item, previous, OEMCUIP_DOCPROP);
        return rules.OnSelectionChanged(Context(item, previous), &properties, &told, &told);
    }
    HRESULT PageActive(std::string_view language = "PCL") { return rules.OnPageActive(Context(), language, &told); }
    VUICallbackContext Context(POPTITEM current = nullptr, LONG previous = 0) {
        callback = {};
        callback.pCurItem = current;
        callback.OldSel = previous;
        return VUICallbackContext(&params, &callback);
    }

    // The options that the items show; " (uncommitted)" is appended where the core driver differs.
    Options Shown(std::initializer_list<std::string_view> features) {
        Options shown;
        for (std::string_view feature : features) {
            shown.push_back(Description(feature).options.at(Item(feature)->Sel).keyword);
            if (Selection(feature) != static_cast<DWORD>(Item(feature)->Sel)) shown.back() += " (uncommitted)";
        }
        return shown;
    }
    void Select(std::string_view feature, std::string_view option) {
        Item(feature)->Sel = OptionIndex(feature, option);
    }
    DWORD Flags(std::string_view feature) { return Item(feature)->Flags; }
    bool Disabled(std::string_view feature) { return (Flags(feature) & OPTIF_DISABLED) != 0; }

    VPrivateDevMode block{};
    VDocumentSheetRules rules;
    Told told;

private:
    const drvhost::FeatureDescription& Description(std::string_view feature) {
        return core.Description().features.at(core.Description().FindFeature(feature).value());
    }
    LONG OptionIndex(std::string_view feature, std::string_view option) {
        return static_cast<LONG>(Description(feature).FindOption(option).value());
    }
    IPrintOemDriverUI* DriverUI() const noexcept override { return core.DriverUi(); }
    IPrintCoreHelper* CoreHelper() const noexcept override { return core.CoreHelper(); }

    CPSUICBPARAM callback{};
};

constexpr DWORD kEnabled = OPTIF_CALLBACK | OPTIF_CHANGED;

// Media types are snapped by display name: texts of the string library built beside the tests.
class SheetRules : public testing::Test {
public:
    static void SetUpTestSuite() {
        ASSERT_FALSE(InstallSamplePrinter(kSettingsPrinter).empty());
        ASSERT_EQ(S_OK, zx::LoadResourceLibraries(kSettingsPrinter));
    }
    static void TearDownTestSuite() { zx::FreeResourceLibraries(); }
};

}  // namespace

// Any option enables snapping, but only keywords with a key are rules; no helper changes nothing.
TEST(SnappingTable, EnabledByAnyOptionAndKeyedByTheTextBeforeTheFirstSeparator) {
    FakeCoreHelper helper;
    VSnappingTable table;
    table.Load(&helper);  // no SnappingData
    EXPECT_FALSE(table.Enabled());
    helper.SetOptionList("SnappingData", {"NOTARULE", "A4:x:y"});
    table.Load(&helper);
    table.Load(nullptr);
    EXPECT_TRUE(table.Enabled());
    EXPECT_EQ("x:y", table.Find("A4").value_or("none"));
    EXPECT_FALSE(table.Find("NOTARULE"));
}

// Source, quality and media by the paper's rule (the later of two for A4), the borderless rule
// while borderless printing is on; nothing once the user chose the media type.
TEST_F(SheetRules, PaperChangesSnapSourceQualityAndMediaUntilTheUserChoosesTheMedia) {
    RulesBed sheet(kSnappingPrinter);
    const auto shown = [&] { return sheet.Shown({"InputBin", "PageOutputQuality", "MediaType", "BorderlessPrint"}); };
    EXPECT_EQ(S_OK, sheet.Choose("PaperSize", "A4"));
    EXPECT_EQ((Options{"Tray1", "High", "Plain", "None"}), shown());
    EXPECT_EQ((Options{"Plain"}), sheet.Shown({"MediaTypePrev"}));
    EXPECT_EQ(0u, sheet.block.dwInputBinIndex);  // kept before the paper source is snapped

    sheet.Choose("BorderlessPrint", "BorderlessOverspray");  // media and quality follow, the source stays
    EXPECT_EQ((Options{"Tray1", "Max", "Plain", "BorderlessOverspray"}), shown());
    sheet.Choose("PaperSize", "LETTER");  // quality 4 of four options: option 1; no F5: borderless stays
    EXPECT_EQ((Options{"Tray1", "Normal", "Glossy", "BorderlessOverspray"}), shown());
    sheet.Choose("PaperSize", "A4");
    EXPECT_EQ((Options{"Tray2", "Max", "Plain", "BorderlessOverspray"}), shown());
    EXPECT_EQ(1u, sheet.block.dwInputBinIndex);
    sheet.Choose("MediaType", "Glossy");
    sheet.Choose("PaperSize", "B5");
    EXPECT_EQ((Options{"Tray2", "Max", "Glossy", "BorderlessOverspray"}), shown());

    RulesBed fresh(kSnappingPrinter);
    fresh.Choose("BorderlessPrint", "BorderlessOverspray");
    fresh.Choose("PaperSize", "B5");  // no borderless rule: the paper's own, with unknown names
    EXPECT_EQ((Options{"Auto", "Normal", "Plain"}), fresh.Shown({"InputBin", "PageOutputQuality", "MediaType"}));
    fresh.Select("InputBin", "Tray2");
    fresh.Select("MediaType", "Glossy");
    fresh.Choose("PaperSize", "A5");  // no rule: first source, fallback media, quality unchanged
    EXPECT_EQ((Options{"Auto", "Normal", "Plain"}), fresh.Shown({"InputBin", "PageOutputQuality", "MediaType"}));
}

// The sample printer: photo paper from the photo tray; edge-to-edge paper turns borderless on and
// takes the borderless rule, as A4 does while borderless printing is on; the user's mark from an
// earlier session ends snapping.
TEST_F(SheetRules, SamplePrinterPhotoAndEdgeToEdgePapers) {
    RulesBed sheet;
    const auto shown = [&] {
        return sheet.Shown(
            {"InputBin", "PageOutputQuality", "MediaType", "BorderlessPrint", "MediaTypePrev", "OutputQualityPrev"});
    };
    sheet.Choose("PaperSize", "ZX_4X6_IN");
    EXPECT_EQ((Options{"3", "High", "2.0.1_1_1200x1200", "None", "2.0.1_1_1200x1200", "High"}), shown());
    sheet.Choose("PaperSize", "ZX_EDGETOEDGE_A4");
    EXPECT_EQ((Options{"7", "Normal", "1.0.0_1_600x600", "BorderlessOverspray", "1.0.0_1_600x600", "Normal"}), shown());
    EXPECT_EQ(4u, sheet.block.dwInputBinIndex);
    sheet.Choose("PaperSize", "A4");  // borderless stays on: the borderless A4 rule
    EXPECT_EQ((Options{"2", "High", "1.0.0_1_600x600", "BorderlessOverspray"}),
              sheet.Shown({"InputBin", "PageOutputQuality", "MediaType", "BorderlessPrint"}));
    sheet.Choose("BorderlessPrint", "None");
    sheet.Choose("PaperSize", "A4");
    EXPECT_EQ((Options{"7", "Normal"}), sheet.Shown({"InputBin", "PageOutputQuality"}));

    RulesBed touched;
    touched.Select("TouchByUser", "On");
    touched.PageActive();
    touched.Choose("PaperSize", "ZX_4X6_IN");
    EXPECT_EQ((Options{"7", "Normal", "1.0.0_1_600x600"}),
              touched.Shown({"InputBin", "PageOutputQuality", "MediaType"}));
}

// Draft prints at 300 dpi; maximum resolution locks the quality; the user's media type, quality
// and source are remembered and end snapping.
TEST_F(SheetRules, ResolutionLockMemoriesAndTouch) {
    RulesBed sheet;
    sheet.Choose("PageOutputQuality", "Draft");
    EXPECT_EQ((Options{"300x300", "Draft", "On"}), sheet.Shown({"Resolution", "OutputQualityPrev", "TouchByUser"}));
    EXPECT_EQ(OPTIF_HIDE, sheet.Flags("TouchByUser") & OPTIF_HIDE);
    EXPECT_TRUE(sheet.rules.UserOverride());
    sheet.Choose("PageOutputQuality", "High");
    EXPECT_EQ((Options{"600x600", "High"}), sheet.Shown({"Resolution", "OutputQualityPrev"}));

    sheet.Choose("ZXMaxDpi", "ON");
    EXPECT_EQ(OPTIF_DISABLED | OPTIF_CALLBACK, sheet.Flags("PageOutputQuality") & (OPTIF_DISABLED | OPTIF_CALLBACK));
    sheet.Choose("ZXMaxDpi", "OFF");
    EXPECT_EQ(kEnabled, sheet.Flags("PageOutputQuality"));
    sheet.Select("ZXMaxDpi", "ON");
    sheet.rules.OnApply(sheet.Context());
    EXPECT_TRUE(sheet.Disabled("PageOutputQuality"));

    RulesBed media, source;
    media.Choose("MediaType", "2.1.1_1_1200x1200");
    EXPECT_EQ((Options{"2.1.1_1_1200x1200", "On"}), media.Shown({"MediaTypePrev", "TouchByUser"}));
    source.Choose("InputBin", "2");  // marks the job as the user's, which ends snapping
    EXPECT_EQ((Options{"On"}), source.Shown({"TouchByUser"}));
    EXPECT_EQ(std::pair(DWORD{3}, true), std::pair(source.block.dwInputBinIndex, source.rules.UserOverride()));
}

// Two-sided printing offers the margins choice, with binding margins unless the user chose;
// manual two-sided printing takes it away and keeps the manual label.
TEST_F(SheetRules, MarginsFollowTwoSidedPrintingAndTheUsersChoice) {
    RulesBed sheet;
    sheet.Choose("Duplex", "VERTICAL");
    EXPECT_EQ((Options{"Binding"}), sheet.Shown({"DocumentMargins"}));
    EXPECT_EQ(kEnabled, sheet.Flags("DocumentMargins"));
    sheet.Choose("DocumentMargins", "Standard");
    EXPECT_EQ(1u, sheet.block.dwMarginsByUser);
    sheet.Choose("Duplex", "HORIZONTAL");
    EXPECT_EQ((Options{"Standard"}), sheet.Shown({"DocumentMargins"}));
    EXPECT_EQ(kEnabled, sheet.Flags("DocumentMargins"));

    sheet.Choose("Duplex", "NONE");
    EXPECT_EQ(0u, sheet.block.dwMarginsByUser);
    EXPECT_EQ((Options{"Standard"}), sheet.Shown({"DocumentMargins"}));
    EXPECT_EQ(OPTIF_DISABLED, sheet.Flags("DocumentMargins") & ~kEnabled);
    sheet.Choose("Duplex", "VERTICAL");
    EXPECT_EQ((Options{"Binding"}), sheet.Shown({"DocumentMargins"}));

    sheet.told.clear();
    sheet.Choose("ZXPrintOnBothSidesManually", "ON");
    EXPECT_EQ((Options{"Standard (uncommitted)"}), sheet.Shown({"DocumentMargins"}));
    EXPECT_TRUE(sheet.Disabled("DocumentMargins"));
    sheet.Choose("Orientation", "LANDSCAPE_CC90");
    sheet.Choose("ZXPrintOnBothSidesManually", "OFF");
    sheet.Choose("Orientation", "PORTRAIT");
    EXPECT_EQ((Options{"manual label", "two-sided label", "manual label", "manual label", "manual label"}), sheet.told);
}

// Booklet binding brings two pages per sheet, two-sided printing and binding margins; no binding
// takes them back. Booklets need both, and page borders need more than one page per sheet.
TEST_F(SheetRules, BookletOnAndOffAndWhatItNeeds) {
    RulesBed sheet;
    const auto shown = [&] {
        return sheet.Shown({"DocumentNUp", "Duplex", "DocumentMargins", "DrawBorders", "DocumentBinding"});
    };
    sheet.Choose("DocumentBinding", "Booklet");
    EXPECT_EQ((Options{"2", "VERTICAL", "Binding", "Off", "Booklet"}), shown());
    EXPECT_EQ(1u, sheet.block.dwNUpIndex);
    EXPECT_EQ(std::pair(kEnabled, kEnabled), std::pair(sheet.Flags("DocumentMargins"), sheet.Flags("DrawBorders")));
    EXPECT_EQ((Options{"items changed", "manual label"}), sheet.told);

    sheet.Choose("DocumentBinding", "None");
    EXPECT_EQ((Options{"1", "NONE", "Standard", "Off", "None"}), shown());
    EXPECT_EQ(0u, sheet.block.dwNUpIndex);
    EXPECT_EQ(std::pair(true, true), std::pair(sheet.Disabled("DocumentMargins"), sheet.Disabled("DrawBorders")));

    sheet.Choose("DocumentBinding", "JapaneseBooklet");
    sheet.Choose("Duplex", "NONE");
    EXPECT_EQ((Options{"None"}), sheet.Shown({"DocumentBinding"}));
    sheet.Choose("DocumentBinding", "Booklet");
    sheet.Choose("DocumentNUp", "4");
    EXPECT_EQ((Options{"4", "VERTICAL", "Binding", "Off", "None"}), shown());
    EXPECT_EQ(std::pair(DWORD{2}, DWORD{1}), std::pair(sheet.block.dwNUpIndex, sheet.properties.NUpChanged()));
    EXPECT_EQ(kEnabled, sheet.Flags("DrawBorders"));
}

// On activation: memories follow the items, the user's mark ends snapping, the source and media
// are snapped (not for PCLmS) and the pages told, borders and margins follow N-up and two-sided
// printing, maximum resolution locks the quality.
TEST_F(SheetRules, PageActivation) {
    RulesBed sheet;
    sheet.Select("MediaType", "6.0.5_1_600x600");
    sheet.Select("PageOutputQuality", "Draft");
    sheet.Select("InputBin", "2");
    sheet.Select("ZXMaxDpi", "ON");
    sheet.block.dwMarginsByUser = 1;
    EXPECT_EQ(S_OK, sheet.PageActive("PCLmS"));
    EXPECT_EQ((Options{"6.0.5_1_600x600 (uncommitted)", "Draft (uncommitted)", "300x300", "2 (uncommitted)"}),
              sheet.Shown({"MediaTypePrev", "OutputQualityPrev", "Resolution", "InputBin"}));
    EXPECT_EQ(0u, sheet.block.dwMarginsByUser);
    EXPECT_EQ(std::tuple(true, true, OPTIF_DISABLED | OPTIF_CHANGED),
              std::tuple(sheet.Disabled("DrawBorders"), sheet.Disabled("PageOutputQuality"),
                         sheet.Flags("DocumentMargins") & (OPTIF_DISABLED | OPTIF_CHANGED)));
    EXPECT_TRUE(sheet.told.empty());

    sheet.PageActive();  // snapped to Letter: plain paper from the automatic source
    EXPECT_EQ((Options{"1.0.0_1_600x600", "1.0.0_1_600x600", "7"}),
              sheet.Shown({"MediaType", "MediaTypePrev", "InputBin"}));
    EXPECT_EQ((Options{"selection changed"}), sheet.told);

    sheet.Select("Duplex", "VERTICAL");
    sheet.Select("ZXPrintOnBothSidesManually", "ON");
    sheet.Select("DocumentMargins", "Binding");
    sheet.Select("TouchByUser", "On");
    sheet.Select("MediaType", "6.0.5_1_600x600");
    sheet.PageActive();
    EXPECT_EQ((Options{"6.0.5_1_600x600 (uncommitted)", "Standard"}), sheet.Shown({"MediaType", "DocumentMargins"}));
    sheet.Select("ZXPrintOnBothSidesManually", "OFF");
    sheet.PageActive();
    EXPECT_EQ(kEnabled, sheet.Flags("DocumentMargins"));
}

// Leaving the page and Apply hand the items back and re-apply the shortcut settings (from the
// moment the shortcuts page exists); reverting puts binding, N-up, borders and margins in line.
TEST_F(SheetRules, PageLeftApplyRevertAndTheAllSettingsFeatures) {
    RulesBed sheet;
    sheet.Select("InputBin", "3");
    sheet.Select("Duplex", "HORIZONTAL");
    sheet.block.dwNUpIndex = 2;
    EXPECT_EQ(S_OK, sheet.rules.OnPageLeft(sheet.Context()));
    EXPECT_EQ((Options{"3", "HORIZONTAL", "1"}), sheet.Shown({"InputBin", "Duplex", "DocumentNUp"}));
    EXPECT_EQ(4u, sheet.block.dwInputBinIndex);

    FakeCoreHelper helper;
    helper.SetOptionList("AllSettingsfor_PS", {"MediaType:27", "NoSeparator", "DocumentNUp:26", "A:1", "B:2", "C:3"});
    sheet.rules.ReadAllSettingsFeatures(&helper);
    EXPECT_EQ(
        (std::map<int, std::string>{{1029, "A"}, {1031, "MediaType"}, {1033, ""}, {1035, "DocumentNUp"}, {1037, "B"}}),
        sheet.rules.AllSettingsFeatures());
    sheet.rules.ReadAllSettingsFeatures(sheet.core.CoreHelper());
    sheet.Select("Orientation", "LANDSCAPE_CC90");
    EXPECT_EQ(S_OK, sheet.rules.OnApply(sheet.Context()));
    EXPECT_EQ((Options{"4", "LANDSCAPE_CC90"}), sheet.Shown({"DocumentNUp", "Orientation"}));
    sheet.block.dwNUpIndex = 6;  // not an option: a foreign block is not handed on
    sheet.rules.OnPageLeft(sheet.Context());
    EXPECT_EQ((Options{"4"}), sheet.Shown({"DocumentNUp"}));

    sheet.Select("DocumentBinding", "Booklet");
    sheet.Select("DocumentNUp", "1");
    sheet.Select("Duplex", "NONE");
    sheet.Select("DocumentMargins", "Binding");
    sheet.block.dwMarginsByUser = 1;
    EXPECT_EQ(S_OK, sheet.rules.OnItemsReverted(sheet.Context()));
    EXPECT_EQ((Options{"None", "1 (uncommitted)", "Off", "Standard"}),
              sheet.Shown({"DocumentBinding", "DocumentNUp", "DrawBorders", "DocumentMargins"}));
    EXPECT_EQ(std::pair(DWORD{0}, DWORD{0}), std::pair(sheet.block.dwNUpIndex, sheet.block.dwMarginsByUser));
    EXPECT_EQ(std::pair(true, true), std::pair(sheet.Disabled("DrawBorders"), sheet.Disabled("DocumentMargins")));
}

TEST_F(SheetRules, EveryRuleSetNeedsTheParameterBlockAndTheUIPluginObject) {
    VDocumentSheetRules rules;
    OEMCUIPPARAM params{};
    for (POEMCUIPPARAM block : {&params, static_cast<POEMCUIPPARAM>(nullptr)}) {
        const VUICallbackContext context(block, nullptr);
        EXPECT_EQ((std::vector<HRESULT>(5, E_FAIL)),
                  (std::vector<HRESULT>{rules.OnSelectionChanged(context, nullptr, nullptr, nullptr),
                                        rules.OnPageActive(context, "PCL", nullptr), rules.OnPageLeft(context),
                                        rules.OnApply(context), rules.OnItemsReverted(context)}));
    }
}
