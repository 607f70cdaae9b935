// The feature-description reader: the subset of the GPD syntax, and one clear error for a
// malformed file.
#include "drvhost/printer_description.h"
#include "drvhost/printer_install.h"

#include <gtest/gtest.h>

using namespace drvhost;

namespace {

std::string ErrorOf(const char* text) {
    try {
        ParsePrinterDescription(text, "bad.gpd");
    } catch (const DescriptionError& e) {
        return e.what();
    }
    return "no error";
}

}  // namespace

TEST(PrinterDescription, ReadsFeaturesInFileOrderWithTheirOptions) {
    const PrinterDescription description = ParsePrinterDescription(R"(
*% a comment, and attributes the core driver does not use
*GPDSpecVersion: "1.0"
*Command: CmdStartJob { *Cmd: "<1B>E" }
*Feature: MediaTypePrev { *Name: "Previous" *Option: A { *Name: "A" } }
*Feature: MediaType
{
    *Name: "Media Type"
    *PrintSchemaKeywordMap: "PageMediaType"
    *DefaultOption: 2.0.1_1_600x600
    *Option: 1.0.0_1_600x600 { *Name: "Plain Paper" *PrintSchemaKeywordMap: "Plain" }
    *Option: 2.0.1_1_600x600
    {
        *Name: "Glossy"   *% trailing comment
        *Constraints: BorderlessPrint.On
        *rcNameID: =RCID_DMPAPER_SYSTEM_NAME
    }
}
*Feature: Tray2 { *FeatureType: PRINTER_PROPERTY *Option: TRUE { *Name: "Installed" } }
)",
                                                                   "good.gpd");
    ASSERT_EQ(3u, description.features.size());
    EXPECT_EQ("MediaTypePrev", description.features[0].keyword);
    const FeatureDescription& media = description.features[1];
    EXPECT_EQ(L"Media Type", media.displayName);
    EXPECT_EQ("PageMediaType", media.schemaName);
    EXPECT_EQ(1u, media.defaultOption);
    ASSERT_EQ(2u, media.options.size());
    EXPECT_EQ(L"Plain Paper", media.options[0].displayName);
    EXPECT_EQ("Plain", media.options[0].schemaName);
    ASSERT_EQ(1u, media.options[1].constraints.size());
    EXPECT_EQ("BorderlessPrint", media.options[1].constraints[0].feature);
    EXPECT_EQ("On", media.options[1].constraints[0].option);
    EXPECT_EQ(FeatureSheet::Document, media.sheet);
    EXPECT_EQ(FeatureSheet::Printer, description.features[2].sheet);
    EXPECT_EQ(0u, description.features[2].defaultOption);  // no *DefaultOption: the first
}

TEST(PrinterDescription, MalformedInputGivesOneErrorWithFileAndLine) {
    const std::pair<const char*, const char*> cases[] = {
        {"*Feature: A {\n *Option: X { }\n", "bad.gpd:1: *Feature: A is never closed"},
        {"*Feature: A { *Option: X { } }\n}\n", "bad.gpd:2: '}' without a matching '{'"},
        {"\n*Option: X { }", "bad.gpd:2: *Option outside a *Feature"},
        {"*Feature A { }", "bad.gpd:1: expected ':' after *Feature"},
        {"*Feature: A {\n *Name: \"unterminated\n}", "bad.gpd:2: unterminated quoted value"},
        {"*Feature: A {\n *DefaultOption: Y\n *Option: X { } }", "bad.gpd:2: *DefaultOption: Y is not an option of A"},
        {"*Feature: A { *Option: X { } }\n*Feature: A { *Option: X { } }", "bad.gpd:2: *Feature: A declared twice"},
        {"*Feature: A { *Option: X { } *Option: X { } }", "bad.gpd:1: *Option: X declared twice in A"},
        {"*Feature: A\n{\n}", "bad.gpd:1: *Feature: A has no options"},
        {"*Feature: A\n*Option: X", "bad.gpd:2: expected '{' after *Feature: A"},
        {"*Feature: A { *Feature: B { } }", "bad.gpd:1: *Feature inside *Feature: A"},
        {"*Feature: A { *Option: X { *Constraints: B } }", "bad.gpd:1: *Constraints expects Feature.Option, found 'B'"},
        {"*Feature: A B { }", "bad.gpd:1: *Feature needs one keyword, found 'A B'"},
        {"Feature: A", "bad.gpd:1: expected an attribute starting with '*', found 'F'"},
        {"*Command: X {\n *Cmd: \"1\"\n", "bad.gpd:1: block is never closed"},
        {"*Feature: A { *Name: \"\xff\" *Option: X { } }", "bad.gpd:1: display name is not valid UTF-8"},
    };
    for (const auto& [text, error] : cases) EXPECT_EQ(error, ErrorOf(text)) << text;
}

TEST(PrinterDescription, SamplePrinterDeclaresEveryFeatureOnItsSheetBeforeTheHiddenOnesThatExtendIt) {
    const PrinterDescription sample = LoadPrinterDescription(ProgramDirectory() + L"zxtalu.gpd");
    for (const char* feature :
         {"PaperSize", "MediaType", "PageOutputQuality", "InputBin", "BorderlessPrint", "Duplex", "DocumentNUp",
          "DeviceLanguage", "SnappingData", "PrintingShortcut", "ShortcutBitmaps", "AllSettingsfor_PS", "PS_Schema",
          "MonoConfig", "BidiDefaults", "ZXDataCollectionXML", "Collate"}) {
        EXPECT_TRUE(sample.FindFeature(feature)) << feature;
    }
    for (const char* feature : {"DuplexUnit", "Tray2", "PhotoTrayUnit", "Autoconfig"}) {
        const std::optional<size_t> found = sample.FindFeature(feature);
        EXPECT_TRUE(found && sample.features[*found].sheet == FeatureSheet::Printer) << feature;
    }
    // A search by prefix, as the plug-in makes it, meets each feature before any that extends it.
    for (size_t later = 0; later < sample.features.size(); ++later) {
        for (size_t earlier = 0; earlier < later; ++earlier) {
            const std::string& first = sample.features[earlier].keyword;
            const std::string& second = sample.features[later].keyword;
            if (sample.features[earlier].sheet != sample.features[later].sheet) continue;
            EXPECT_FALSE(first.size() > second.size() && first.rfind(second, 0) == 0)
                << first << " extends " << second << " but comes before it";
        }
    }
    const FeatureDescription& paper = sample.features[*sample.FindFeature("PaperSize")];
    for (const char* keyword :
         {"CUSTOMSIZE", "ZX_EDGETOEDGE_A4", "ZX_EDGETOEDGE_LETTER", "Edge_to_Edge_Tabloid", "Edge_to_Edge_A3"}) {
        EXPECT_TRUE(paper.FindOption(keyword)) << keyword;
    }
}
