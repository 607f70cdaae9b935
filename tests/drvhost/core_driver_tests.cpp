// The simulated core driver's DEVMODE layout, helper objects and option items.
#include "drvhost/core_driver.h"
#include "drvhost/job_devmode.h"
#include "drvhost/option_items.h"

#include <gtest/gtest.h>

#include <cstring>

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

TEST_F(CoreDriverTest, OptionsAreReadFromTheGivenDevModeOrTheCurrentStateAndListedInFileOrder) {
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

// How the plug-in receives both helper objects is checked with the UI session.
TEST_F(CoreDriverTest, TheCoreHelperIsNoDriverUiObjectAndTheCoreDriverHoldsItsReference) {
    Microsoft::WRL::ComPtr<IPrintOemDriverUI> other;
    EXPECT_EQ(E_NOINTERFACE,
              core.CoreHelper()->QueryInterface(IID_IPrintOemDriverUI, reinterpret_cast<void**>(other.GetAddressOf())));
    EXPECT_EQ(2u, core.CoreHelper()->AddRef());
    EXPECT_EQ(1u, core.CoreHelper()->Release());
}

// The plug-in's search of the items by keyword, and the conflict marks and prompts, are checked
// with the settings.
TEST_F(CoreDriverTest, ItemsStandForTheSheetsFeaturesAndWriteBackIntoTheJob) {
    core.SetCurrentJob(&job);
    const SelectionSource current = [this](size_t feature) { return core.CurrentSelection(feature); };
    EXPECT_EQ(1u, OptionItems(core.Description(), FeatureSheet::Printer, current).Count());
    OptionItems items(core.Description(), FeatureSheet::Document, current);
    ASSERT_EQ(4u, items.Count());
    for (DWORD i = 0; i < items.Count(); ++i) {
        const OPTITEM& item = items.Items()[i];
        EXPECT_EQ(sizeof(OPTITEM), item.cbSize);
        EXPECT_EQ(sizeof(OPTTYPE), item.pOptType->cbSize);
        EXPECT_EQ(sizeof(OPTPARAM), item.pOptType->pOptParam[0].cbSize);
    }
    OPTITEM* paper = items.Find("PaperSize");
    EXPECT_EQ(1, paper->Sel);
    EXPECT_EQ(3u, paper->pOptType->Count);
    EXPECT_STREQ(L"Envelope", paper->pOptType->pOptParam[2].pData);
    EXPECT_EQ(DMPUB_DEFSOURCE, items.Find("InputBin")->DMPubID);
    EXPECT_EQ(DMPUB_COPIES_COLLATE, items.Find("Collate")->DMPubID);
    EXPECT_NE(paper->pOptType->BegCtrlID, items.Find("Duplex")->pOptType->BegCtrlID);

    OEMUIOBJ uiObject{sizeof(OEMUIOBJ), nullptr};
    core.ShowSheet(&uiObject, &items, FeatureSheet::Document);
    OPTITEM* duplex = items.Find("Duplex");
    duplex->Sel = 1;
    EXPECT_EQ(S_OK, core.DriverUi()->DrvUpdateUISetting(&uiObject, duplex, 0, OEMCUIP_DOCPROP));
    EXPECT_EQ(1u, job.Selection(1));
    OPTITEM stranger = *paper;
    OEMUIOBJ otherObject = uiObject;
    EXPECT_EQ(E_INVALIDARG, core.DriverUi()->DrvUpdateUISetting(&uiObject, &stranger, 0, OEMCUIP_DOCPROP));
    EXPECT_EQ(E_INVALIDARG, core.DriverUi()->DrvUpdateUISetting(&otherObject, paper, 0, OEMCUIP_DOCPROP));
    EXPECT_EQ(E_INVALIDARG, core.DriverUi()->DrvUpdateUISetting(&uiObject, paper, 0, OEMCUIP_PRNPROP));
    paper->Sel = 3;
    EXPECT_EQ(E_INVALIDARG, core.DriverUi()->DrvUpdateUISetting(&uiObject, paper, 0, OEMCUIP_DOCPROP));
    core.CloseSheet();
}
