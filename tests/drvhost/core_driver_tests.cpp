// The simulated core driver's DEVMODE layout, helper objects and option items.
#include "drvhost/core_driver.h"
#include "drvhost/job_devmode.h"
#include "drvhost/option_items.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace drvhost;

namespace {

PrinterDescription SmallPrinter() {
    return ParsePrinterDescription(R"(
*Feature: PaperSize { *DefaultOption: A4
    *Option: LETTER { *Name: "Letter" }
    *Option: A4 { *Name: "A4" }
    *Option: ENV_10 { *Name: "Envelope" *Constraints: Duplex.VERTICAL } }
*Feature: Duplex { *Option: NONE { *Name: "Off" } *Option: VERTICAL { *Name: "Long edge" } }
*Feature: InputBin { *Option: 7 { *Name: "Auto" } *Option: 1 { *Name: "Tray 1" } }
*Feature: Collate { *Option: OFF { } *Option: ON { } }
*Feature: DuplexUnit { *FeatureType: PRINTER_PROPERTY *Option: TRUE { } *Option: FALSE { } }
)",
                                   "small.gpd");
}

class CoreDriverTest : public testing::Test {
protected:
    PCSTR Option(const DEVMODEW* devMode, DWORD size, PCSTR feature) {
        PCSTR option = nullptr;
        EXPECT_EQ(S_OK, core.CoreHelper()->GetOption(devMode, size, feature, &option)) << feature;
        return option;
    }

    CoreDriver core{SmallPrinter()};
    JobDevMode job{core.Description(), 64, L"Printer"};
};

}  // namespace

TEST_F(CoreDriverTest, ADevModeOfThisPrinterHoldsPublicPartCoreAreaAndPluginBlock) {
    DEVMODEW* dm = job.Public();
    EXPECT_EQ(220, dm->dmSize);
    EXPECT_EQ(12u + 5 * 4 + 64, dm->dmDriverExtra);
    EXPECT_EQ(job.TotalSize(), 220u + dm->dmDriverExtra);
    EXPECT_EQ(reinterpret_cast<const BYTE*>(dm) + 220 + 32, job.PluginBlock());
    EXPECT_STREQ(L"Printer", dm->dmDeviceName);
    // Selections start at the defaults and the public fields mirror them.
    EXPECT_EQ(1u, job.Selection(0));
    EXPECT_EQ(DMPAPER_A4, dm->dmPaperSize);
    EXPECT_EQ(2970, dm->dmPaperLength);
    job.SetSelection(1, 1);
    EXPECT_EQ(DMDUP_VERTICAL, dm->dmDuplex);

    // Only a DEVMODE of this printer carries selections.
    EXPECT_NE(nullptr, FindSelections(dm, job.TotalSize(), 5));
    EXPECT_EQ(nullptr, FindSelections(dm, job.TotalSize(), 4));  // another description
    EXPECT_EQ(nullptr, FindSelections(dm, 220 + 12, 5));         // the caller's size cuts the area
    EXPECT_EQ(nullptr, FindSelections(nullptr, job.TotalSize(), 5));

    std::vector<BYTE> foreign = job.Bytes();
    reinterpret_cast<CoreDriverArea*>(foreign.data() + 220)->signature = 0x12345678;
    PCSTR option = reinterpret_cast<PCSTR>(0xdeadbeef);
    EXPECT_EQ(E_INVALIDARG, core.CoreHelper()->GetOption(reinterpret_cast<DEVMODEW*>(foreign.data()),
                                                         static_cast<DWORD>(foreign.size()), "PaperSize", &option));
    EXPECT_EQ(nullptr, option);
}

TEST_F(CoreDriverTest, GetOptionReadsTheGivenDevModeOrTheCurrentState) {
    job.SetSelection(0, 2);
    EXPECT_STREQ("ENV_10", Option(job.Public(), job.TotalSize(), "PaperSize"));
    EXPECT_STREQ("A4", Option(nullptr, 0, "PaperSize"));  // no current job: the defaults
    core.SetCurrentJob(&job);
    EXPECT_STREQ("ENV_10", Option(nullptr, 0, "PaperSize"));
    EXPECT_STREQ("TRUE", Option(nullptr, 0, "DuplexUnit"));  // printer features: the configuration

    PCSTR option = nullptr;
    EXPECT_EQ(E_INVALIDARG, core.CoreHelper()->GetOption(nullptr, 0, "NoSuchFeature", &option));
    EXPECT_EQ(E_INVALIDARG, core.CoreHelper()->GetOption(nullptr, 0, "PaperSize", nullptr));

    PCSTR* options = nullptr;
    DWORD count = 0;
    ASSERT_EQ(S_OK, core.CoreHelper()->EnumOptions("PaperSize", &options, &count));
    EXPECT_EQ((std::vector<std::string>{"LETTER", "A4", "ENV_10"}), std::vector<std::string>(options, options + count));
}

TEST_F(CoreDriverTest, SetOptionsResolvesConflictsOnlyWhenAsked) {
    job.SetSelection(1, 1);  // two-sided
    const PRINT_FEATURE_OPTION envelope[] = {{"PaperSize", "ENV_10"}};
    DWORD written = 0, result = 0xdeadbeef;
    EXPECT_EQ(S_OK,
              core.CoreHelper()->SetOptions(job.Public(), job.TotalSize(), FALSE, envelope, 1, &written, &result));
    EXPECT_EQ(1u, written);
    EXPECT_EQ(DWORD{SETOPTIONS_RESULT_CONFLICT_REMAINED}, result);
    EXPECT_EQ(1u, job.Selection(1));

    EXPECT_EQ(S_OK, core.CoreHelper()->SetOptions(job.Public(), job.TotalSize(), TRUE, envelope, 1, &written, &result));
    EXPECT_EQ(DWORD{SETOPTIONS_RESULT_CONFLICT_RESOLVED}, result);
    EXPECT_EQ(0u, job.Selection(1));  // the core driver moved two-sided printing, not the paper
    EXPECT_EQ(2u, job.Selection(0));

    const PRINT_FEATURE_OPTION plain[] = {{"PaperSize", "A4"}, {"InputBin", "1"}};
    EXPECT_EQ(S_OK, core.CoreHelper()->SetOptions(job.Public(), job.TotalSize(), TRUE, plain, 2, &written, &result));
    EXPECT_EQ(2u, written);
    EXPECT_EQ(DWORD{SETOPTIONS_RESULT_NO_CONFLICT}, result);

    const PRINT_FEATURE_OPTION unknown[] = {{"InputBin", "7"}, {"InputBin", "99"}};
    EXPECT_EQ(E_INVALIDARG,
              core.CoreHelper()->SetOptions(job.Public(), job.TotalSize(), TRUE, unknown, 2, &written, &result));
    EXPECT_EQ(1u, written);
}

TEST_F(CoreDriverTest, ItemsStandForTheSheetsFeaturesAndOnlyTheSheetOnShowIsUpdated) {
    core.SetCurrentJob(&job);
    const SelectionSource current = [this](size_t feature) { return core.CurrentSelection(feature); };
    OptionItems items(core.Description(), FeatureSheet::Document, current);
    ASSERT_EQ(4u, items.Count());
    const char* expected[] = {"PaperSize", "Duplex", "InputBin", "Collate"};
    for (DWORD i = 0; i < items.Count(); ++i) {
        // The third pointer-sized field of the record is the feature keyword.
        EXPECT_STREQ(expected[i], reinterpret_cast<const char* const*>(items.Items()[i].UserData)[2]);
    }
    EXPECT_EQ(1, items.Items()[0].Sel);
    EXPECT_STREQ(L"Envelope", items.Items()[0].pOptType->pOptParam[2].pData);
    EXPECT_EQ(3u, items.Items()[0].pOptType->Count);
    EXPECT_EQ(DMPUB_DEFSOURCE, items.Items()[2].DMPubID);
    EXPECT_EQ(DMPUB_COPIES_COLLATE, items.Items()[3].DMPubID);
    EXPECT_NE(items.Items()[0].pOptType->BegCtrlID, items.Items()[1].pOptType->BegCtrlID);

    EXPECT_EQ(1u, OptionItems(core.Description(), FeatureSheet::Printer, current).Count());

    OEMUIOBJ uiObject{sizeof(OEMUIOBJ), nullptr};
    core.ShowSheet(&uiObject, &items, FeatureSheet::Document);
    // Only the items of the sheet on show, with a selection among their options, are taken.
    OPTITEM* paper = items.Find("PaperSize");
    OPTITEM stranger = *paper;
    OEMUIOBJ otherObject = uiObject;
    EXPECT_EQ(E_INVALIDARG, core.DriverUi()->DrvUpdateUISetting(&uiObject, &stranger, 0, OEMCUIP_DOCPROP));
    EXPECT_EQ(E_INVALIDARG, core.DriverUi()->DrvUpdateUISetting(&otherObject, paper, 0, OEMCUIP_DOCPROP));
    EXPECT_EQ(E_INVALIDARG, core.DriverUi()->DrvUpdateUISetting(&uiObject, paper, 0, OEMCUIP_PRNPROP));
    paper->Sel = 3;
    EXPECT_EQ(E_INVALIDARG, core.DriverUi()->DrvUpdateUISetting(&uiObject, paper, 0, OEMCUIP_DOCPROP));
    paper->Sel = 2;
    EXPECT_EQ(S_OK, core.DriverUi()->DrvUpdateUISetting(&uiObject, paper, 1, OEMCUIP_DOCPROP));
    EXPECT_EQ(2u, job.Selection(0));
    core.CloseSheet();
}
