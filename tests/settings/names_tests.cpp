// The resource-name and paper display-name tables, the paper-size helpers, and the string
// libraries measured against the tables and the sample printer.
#include "settings/paper.h"
#include "tests/settings/settings_support.h"
#include "tests/support/fake_core_helper.h"
#include "ui/paper_names.h"
#include "ui/resource_names.h"
#include "ui/string_ids.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>

using namespace zxtest;

namespace {

std::vector<std::string> SplitAt(const std::string& text, char separator) {
    std::vector<std::string> pieces;
    std::stringstream stream(text);
    for (std::string piece; std::getline(stream, piece, separator);) pieces.push_back(piece);
    return pieces;
}

std::string Narrow(const std::wstring& text) { return std::string(text.begin(), text.end()); }

const drvhost::FeatureDescription& FeatureOf(const drvhost::PrinterDescription& printer, std::string_view keyword) {
    return printer.features[printer.FindFeature(keyword).value()];
}

}  // namespace

TEST(ResourceNames, TheTableHoldsEveryNameWithItsNumber) {
    const zx::PrintShortcutNameTable table;
    EXPECT_EQ(218u, table.Size());
    const std::pair<const char*, int32_t> samples[] = {
        {"IDS_1UP", 776},          {"IDB_FACT_DEFAULT", 153}, {"IDS_MSIZE_ENV_MONARCH", 153},
        {"IDB_GEN_EVERY_DAY", 147}, {"IDS_MSIZE_SMMARG_B4_JIS", 147},
        {"IDS_MSIZE_EDGETOEDGE_A4_210x297", 903}, {"IDS_MSIZE_EDGETOEDGE_LETTER_8_5x11", 903},
        {"IDS_MSIZE_ENV_NO_6_3_4", 799}, {"FLIP_ON_LONG_EDGE_DISPLAY", 11041}, {"IDS_MSIZE_4X5_IN_10X13_CM", 819}};
    for (const auto& [name, number] : samples) EXPECT_EQ(number, table.LookupResourceName(name).value_or(-1)) << name;
    for (const char* unknown : {"idb_fact_default", "IDB_FACT_DEFAULT ", "IDS_1U", ""}) {
        EXPECT_FALSE(table.LookupResourceName(unknown).has_value()) << unknown;
    }

    const zx::ResourceNameEntry repeated[] = {{"A", 1}, {"B", 2}, {"A", 3}};
    const zx::PrintShortcutNameTable small(repeated);
    EXPECT_EQ(2u, small.Size());
    EXPECT_EQ(1, small.LookupResourceName("A").value_or(-1));
}

TEST(PaperNames, KeywordsMapToTheirStringNumbersExactly) {
    ASSERT_EQ(62u, zx::PaperNameRows().size());
    EXPECT_STREQ("ZX_10X15_CM", zx::PaperNameRows()[0].keyword);
    EXPECT_STREQ("ZX_4X5_IN_10X13_CM", zx::PaperNameRows()[61].keyword);
    EXPECT_EQ(575u, zx::PaperStringId("A4").value_or(0));
    EXPECT_EQ(904u, zx::PaperStringId("ZX_EDGETOEDGE_LETTER").value_or(0));
    EXPECT_EQ(574u, zx::PaperStringId("ENV_PERSONAL").value_or(0));
    for (const char* unknown : {"CUSTOMSIZE", "a4", "A4 ", ""}) EXPECT_FALSE(zx::PaperStringId(unknown)) << unknown;
}

TEST(PaperIndex, CountsThePaperOptionsWithoutTheCustomSize) {
    FakeCoreHelper helper;
    helper.SetOptionList("PaperSize", {"A4", "CUSTOMSIZE", "LETTER"});
    const std::pair<const char*, DWORD> cases[] = {{"LETTER", 1}, {"A4", 0}, {"CUSTOMSIZE", 0}, {"B5", 0}};
    for (const auto& [current, index] : cases) {
        helper.SetOption("PaperSize", current);
        EXPECT_EQ(index, zx::CurrentPaperIndex(&helper)) << current;
        EXPECT_EQ(std::string_view(current) == "CUSTOMSIZE", zx::IsCustomPaperSize(&helper)) << current;
    }
    EXPECT_EQ(std::vector<DWORD>(helper.askedDevModeSizes.size(), 0), helper.askedDevModeSizes);

    const PCSTR twoCustom[] = {"CUSTOMSIZE", "A4", nullptr, "CUSTOMSIZE", "LETTER"};
    EXPECT_EQ(2u, zx::PaperIndexAmong(twoCustom, "LETTER"));
    EXPECT_EQ(0u, zx::PaperIndexAmong({}, "LETTER"));
    helper.behaviour = FakeCoreHelper::Behaviour::FailEveryCall;
    EXPECT_EQ(0u, zx::CurrentPaperIndex(&helper));
    EXPECT_FALSE(zx::IsCustomPaperSize(&helper));
}

TEST(PaperDisplayName, TheIndexSkipsTheCustomSizeAndUnknownPapersGiveNoName) {
    BuiltStringLibraries libraries;
    FakeCoreHelper helper;
    helper.SetOptionList("PaperSize", {"CUSTOMSIZE", "LETTER", "A4", "ZX_UNKNOWN"});
    zx::UiString text = L"sentinel";
    EXPECT_TRUE(zx::PaperDisplayName(&helper, 1, text));
    EXPECT_STREQ(L"A4", text);
    EXPECT_TRUE(zx::PaperDisplayName(&helper, 0, text));
    EXPECT_STREQ(L"Letter", text);
    for (DWORD index : {2u, 3u, 100u}) {
        std::wcscpy(text, L"sentinel");
        EXPECT_FALSE(zx::PaperDisplayName(&helper, index, text)) << index;
        EXPECT_STREQ(L"sentinel", text);
    }
}

TEST(PaperItemPosition, FindsThePaperOptionByDisplayNameInAnyLetterCase) {
    BuiltStringLibraries libraries;
    SheetBed sample(SamplePrinter());
    EXPECT_EQ(4, sample.properties.PaperItemPosition(4));    // A4
    EXPECT_EQ(20, sample.properties.PaperItemPosition(20));  // A4 Edge-to-Edge

    SheetBed sheet(Describe(R"(*Feature: PaperSize {
        *Option: CUSTOMSIZE { *Name: "Custom" } *Option: LETTER { *Name: "LETTER" } *Option: A4 { *Name: "a4" }
        *Option: ZX_UNKNOWN { *Name: "Unknown" } })"));
    EXPECT_EQ(2, sheet.properties.PaperItemPosition(1));
    EXPECT_EQ(1, sheet.properties.PaperItemPosition(0));
    EXPECT_EQ(0, sheet.properties.PaperItemPosition(2));  // not in the paper table
    sheet.Item("PaperSize")->pOptType->pOptParam[2].pData = reinterpret_cast<LPWSTR>(static_cast<ULONG_PTR>(575));
    EXPECT_EQ(0, sheet.properties.PaperItemPosition(1));  // a resource number is never a match
}

TEST(StringLibraries, EveryNumberThePluginLoadsHasATextInItsLibrary) {
    BuiltStringLibraries libraries;
    std::set<UINT> numbers(StringId::kDirectlyLoaded.begin(), StringId::kDirectlyLoaded.end());
    for (const zx::ResourceNameEntry& entry : zx::ResourceNameEntries()) {
        if (!std::string_view(entry.name).starts_with("IDB_")) numbers.insert(static_cast<UINT>(entry.number));
    }
    for (const zx::PaperNameRow& row : zx::PaperNameRows()) numbers.insert(static_cast<UINT>(row.stringId));

    for (UINT number : numbers) {
        const bool fallback = number >= 10000;
        const HMODULE holder = fallback ? zx::FallbackStringLibrary() : zx::UiStringLibrary();
        const HMODULE other = fallback ? zx::UiStringLibrary() : zx::FallbackStringLibrary();
        EXPECT_FALSE(LoadedText(holder, number).empty()) << number;
        EXPECT_TRUE(LoadedText(other, number).empty()) << number;
    }
}

// Snapping selects a media type, and the shortcuts page a paper size, by display name.
TEST(StringLibraries, MediaAndPaperTextsAreTheSamplePrintersDisplayNames) {
    BuiltStringLibraries libraries;
    const drvhost::PrinterDescription printer = SamplePrinter();
    const zx::PrintShortcutNameTable names;
    const auto textOf = [&](const std::string& name) {
        return LoadedText(zx::UiStringLibrary(), static_cast<UINT>(names.LookupResourceName(name).value_or(0)));
    };

    // The all-settings list names every media type in the core driver's order.
    const drvhost::FeatureDescription& media = FeatureOf(printer, "MediaType");
    const drvhost::FeatureDescription& allSettings = FeatureOf(printer, "AllSettingsfor_PS");
    std::vector<std::string> mediaKeys = SplitAt(Narrow(allSettings.options[0].displayName), ';');
    mediaKeys.erase(mediaKeys.begin());  // the chosen key
    ASSERT_EQ(media.options.size(), mediaKeys.size());
    for (size_t i = 0; i < mediaKeys.size(); ++i) EXPECT_EQ(media.options[i].displayName, textOf(mediaKeys[i]));

    std::set<std::wstring> mediaNames;
    for (const auto& option : media.options) mediaNames.insert(option.displayName);
    for (const auto& rule : FeatureOf(printer, "SnappingData").options) {
        const std::string mediaKey = SplitAt(rule.keyword, ':').at(4);
        EXPECT_EQ(1u, mediaNames.count(textOf(mediaKey))) << rule.keyword;
    }

    for (const auto& paper : FeatureOf(printer, "PaperSize").options) {
        if (paper.keyword == "CUSTOMSIZE") continue;
        const UINT number = zx::PaperStringId(paper.keyword).value_or(0);
        EXPECT_EQ(paper.displayName, LoadedText(zx::UiStringLibrary(), number)) << paper.keyword;
    }
}
