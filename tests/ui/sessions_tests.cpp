// The UI plug-in object's property-sheet sessions as the simulated core driver runs them with the
// plug-in from the driver directory: the document sheet's set-up and page, the housekeeping
// reasons, printer installation, and the printer sheet following each simulated device.
#include "ddk/property_sheet_page.h"
#include "device/auto_configuration.h"
#include "drvhost/printer_install.h"
#include "shortcuts/shortcut_store.h"
#include "core/ui_interface.h"
#include "tests/settings/settings_support.h"
#include "tests/support/failing_allocator.h"
#include "tests/ui/page_bed.h"
#include "ui/shortcuts_page.h"

#include <gtest/gtest.h>

#include <set>

using namespace zxtest;
using drvhost::FeatureSheet;

namespace {

constexpr DWORD kHide = OPTIF_HIDE, kChanged = OPTIF_CHANGED, kDisabled = OPTIF_DISABLED;

// Installs the shortcut test printer on the simulated device of a profile under samples/devices.
void InstallOnDevice(const wchar_t* profile) {
    drvhost::PrinterSetup setup;
    setup.printerName = kShortcutPrinter;
    setup.sourceDirectory = drvhost::ProgramDirectory();
    setup.deviceProfile = drvhost::ProgramDirectory() + L"devices\\" + profile;
    drvhost::InstallPrinter(setup);
}

// Installs it there and raises the printer-initialise event, as the spooler does after an
// installation, so that the device is asked again.
void AttachDevice(const wchar_t* profile) {
    InstallOnDevice(profile);
    PageBed bed(FeatureSheet::Printer);
    ASSERT_EQ(S_OK, bed.host->Ui()->PrinterEvent(const_cast<PWSTR>(kShortcutPrinter), PRINTER_EVENT_INITIALIZE, 0, 0));
}

void ForgetManualChanges() {
    const std::wstring key = ShortcutPrinterKey() + L"\\PrinterDriverData";
    for (const wchar_t* value :
         {zx::kDuplexUnitManuallyChanged, zx::kTray2ManuallyChanged, zx::kPhotoTrayManuallyChanged}) {
        ::RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, key.c_str(), value);
    }
}

struct ItemState {
    LONG selection;
    DWORD flags;  // of kHide, kChanged, kDisabled
    bool operator==(const ItemState&) const = default;
};
std::ostream& operator<<(std::ostream& out, const ItemState& state) {
    return out << "{sel " << state.selection << ", flags 0x" << std::hex << state.flags << std::dec << "}";
}

ItemState StateOf(PageBed& bed, std::string_view feature) {
    const POPTITEM item = bed.session->Item(feature);
    if (item == nullptr) return {-1, 0};
    return {item->Sel, item->Flags & (kHide | kChanged | kDisabled)};
}

PROPSHEETUI_INFO SheetInfo(WORD reason, WORD version = PROPSHEETUI_INFO_VERSION) {
    PROPSHEETUI_INFO info{};
    info.cbSize = sizeof(info);
    info.Version = version;
    info.Reason = reason;
    info.Result = 0xDEADBEEF;
    return info;
}

using Sessions = ShortcutPrinterTest;

}  // namespace

// CommonUIProp sets the document sheet up: the callback and the object in the parameter block,
// every bookkeeping item hidden, the resolution hidden and changed, the manual two-sided item
// hidden; DocumentPropertySheets adds the page as start page.
TEST_F(Sessions, DocumentSheetHidesTheBookkeepingAndAddsThePage) {
    PageBed bed;
    EXPECT_EQ(S_OK, bed.session->CommonUIPropResult());
    EXPECT_NE(nullptr, bed.session->Params().OEMCUIPCallback);
    EXPECT_NE(nullptr, bed.session->Params().pOEMUserData);
    for (const char* feature : {"PS_Schema", "MediaTypePrev", "OutputQualityPrev", "ShortcutBitmaps", "TouchByUser",
                                "MonoConfig", "PrintingShortcut", "AllSettingsfor_PS", "GeneralEveryday",
                                "FactoryDefaults", "ZXPrintOnBothSidesManually"}) {
        EXPECT_TRUE(StateOf(bed, feature).flags & kHide) << feature;
    }
    EXPECT_EQ(kHide | kChanged, StateOf(bed, "Resolution").flags & (kHide | kChanged));
    EXPECT_FALSE(StateOf(bed, "MediaType").flags & kHide);
    EXPECT_EQ(S_OK, bed.session->PropertySheetsResult());
    ASSERT_EQ(1u, bed.session->Pages().size());
    EXPECT_EQ(bed.session->Pages()[0], bed.session->StartPage());
}

// A printer that speaks the simple PCLm language gets no Printing Shortcuts page.
TEST_F(Sessions, NoPageForTheSimpleDeviceLanguage) {
    PageBed bed(FeatureSheet::Document, drvhost::kDocumentSheetMode, {{"DeviceLanguage", 1}});
    EXPECT_EQ(S_OK, bed.session->CommonUIPropResult());
    EXPECT_TRUE(bed.session->Pages().empty());
    EXPECT_EQ(nullptr, bed.session->StartPage());
}

// DocumentPropertySheets answers the common UI's housekeeping itself, refuses a block of another
// version, and declines everything once a set-up step failed.
TEST_F(Sessions, HousekeepingReasonsAndRefusals) {
    PageBed bed;
    IPrintOemUI* ui = bed.host->Ui();
    struct Case {
        WORD reason;
        HRESULT result;
        LONG_PTR sheetResult;
    };
    SETRESULT_INFO setResult{};
    setResult.cbSize = sizeof(setResult);
    setResult.Result = CPSUI_CANCEL;
    for (const Case& c : {Case{1, S_OK, 1}, Case{2, S_OK, 1}, Case{4, S_OK, 0}, Case{5, E_NOTIMPL, 0xDEADBEEF}}) {
        PROPSHEETUI_INFO info = SheetInfo(c.reason);
        EXPECT_EQ(c.result, ui->DocumentPropertySheets(&info, 0)) << c.reason;
        EXPECT_EQ(c.sheetResult, info.Result) << c.reason;
    }
    PROPSHEETUI_INFO info = SheetInfo(3);
    EXPECT_EQ(S_OK, ui->DocumentPropertySheets(&info, reinterpret_cast<LPARAM>(&setResult)));
    EXPECT_EQ(CPSUI_CANCEL, info.Result);

    info = SheetInfo(0, 0x0101);
    ::SetLastError(0);
    EXPECT_EQ(E_INVALIDARG, ui->DocumentPropertySheets(&info, 0));
    EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_PARAMETER), ::GetLastError());
    EXPECT_EQ(E_INVALIDARG, ui->DocumentPropertySheets(nullptr, 0));
    EXPECT_EQ(E_INVALIDARG, ui->CommonUIProp(3, &bed.session->Params()));
}

// The printer-initialise event gives the printer its GUID for the shortcut store, asks the
// device and marks the installation done; the other events do nothing.
TEST_F(Sessions, PrinterInitialiseEvent) {
    PageBed bed(FeatureSheet::Printer);
    IPrintOemUI* ui = bed.host->Ui();
    EXPECT_EQ(S_OK, ui->PrinterEvent(const_cast<PWSTR>(kShortcutPrinter), PRINTER_EVENT_DELETE, 0, 0));
    EXPECT_FALSE(PrinterGuidValue().has_value());
    EXPECT_EQ(S_OK, ui->PrinterEvent(const_cast<PWSTR>(kShortcutPrinter), PRINTER_EVENT_INITIALIZE, 0, 0));
    const std::optional<std::wstring> guid = PrinterGuidValue();
    ASSERT_TRUE(guid.has_value());
    EXPECT_FALSE(guid->empty());
    EXPECT_EQ(1u, PrinterDataNumber(L"PrinterDriverData", L"InstallOver"));
    EXPECT_EQ(S_OK, ui->PrinterEvent(nullptr, PRINTER_EVENT_INITIALIZE, 0, 0));
}

// The printer sheet shows what each simulated device has; a manual choice is kept from then on.
TEST_F(Sessions, PrinterSheetFollowsTheDevice) {
    struct Case {
        const wchar_t* profile;
        ItemState duplexUnit, tray2, photoTray;
    };
    const Case cases[] = {
        {L"colour-duplex.profile", {0, 0}, {0, kDisabled}, {0, kDisabled}},
        {L"mono-basic.profile", {1, kDisabled}, {1, kDisabled}, {1, kDisabled}},
        // No answer: the driver's defaults, which know nothing of trays, leave them as they are.
        {L"unreachable.profile", {0, 0}, {1, 0}, {1, 0}},
    };
    ForgetManualChanges();
    for (const Case& c : cases) {
        AttachDevice(c.profile);
        PageBed bed(FeatureSheet::Printer);
        EXPECT_EQ(S_OK, bed.session->CommonUIPropResult()) << c.profile;
        EXPECT_EQ(c.duplexUnit, StateOf(bed, "DuplexUnit")) << c.profile;
        EXPECT_EQ(c.tray2, StateOf(bed, "Tray2")) << c.profile;
        EXPECT_EQ(c.photoTray, StateOf(bed, "PhotoTrayUnit")) << c.profile;
        // The simulated device sits on a local USB port: nothing to ask over the network.
        EXPECT_EQ((ItemState{0, kDisabled}), StateOf(bed, "Autoconfig")) << c.profile;
    }

    // The user sets the two-sided unit by hand: remembered, and left alone by the next opening.
    {
        PageBed bed(FeatureSheet::Printer);
        bed.session->SelectOption("DuplexUnit", 0);
        EXPECT_EQ(1u, PrinterDataNumber(L"PrinterDriverData", zx::kDuplexUnitManuallyChanged));
    }
    AttachDevice(L"mono-basic.profile");
    PageBed bed(FeatureSheet::Printer);
    EXPECT_EQ(0, StateOf(bed, "DuplexUnit").selection);
    ForgetManualChanges();
}

// Asking the device again from the printer sheet puts "Autoconfig" back and applies the answer
// to the two-sided unit and the second tray.
TEST_F(Sessions, AutoconfigAsksTheDeviceAgain) {
    ForgetManualChanges();
    AttachDevice(L"mono-basic.profile");
    PageBed bed(FeatureSheet::Printer);
    InstallOnDevice(L"colour-duplex.profile");  // the device changed while the sheet is open
    bed.session->SelectOption("Autoconfig", 1);
    EXPECT_EQ(0, StateOf(bed, "Autoconfig").selection);
    EXPECT_EQ((ItemState{0, kChanged | kDisabled}), StateOf(bed, "DuplexUnit"));
    EXPECT_EQ((ItemState{0, kChanged | kDisabled}), StateOf(bed, "Tray2"));
    AttachDevice(L"unreachable.profile");
}

// A device that prints black only: the colour-only features and the media it cannot use are
// hidden in the document sheet.
TEST_F(Sessions, MonochromeDeviceHidesTheColourFeatures) {
    AttachDevice(L"mono-basic.profile");
    PageBed bed;
    EXPECT_TRUE(StateOf(bed, "ColorMode").flags & kHide);
    EXPECT_TRUE(StateOf(bed, "ZXColorManagement").flags & kHide);
    const POPTITEM media = bed.session->Item("MediaType");
    ASSERT_NE(nullptr, media);
    std::vector<std::wstring> hidden;
    for (WORD option = 0; option < media->pOptType->Count; ++option) {
        if (media->pOptType->pOptParam[option].Flags & OPTPF_HIDE)
            hidden.emplace_back(media->pOptType->pOptParam[option].pData);
    }
    EXPECT_EQ((std::vector<std::wstring>{L"ZX Premium Photo Paper Glossy", L"ZX Premium Photo Paper Matte",
                                         L"Other Photo Inkjet Papers"}),
              hidden);
    AttachDevice(L"unreachable.profile");
}

// The page describes itself to the sheet as a titled page with its activation context, from the
// right-to-left template for Arabic and Hebrew users, and asks to be the start page.
TEST(PageCreation, TemplateByTheUsersLanguageAndStartPage) {
    struct Added {
        std::vector<PROPSHEETPAGEW_V4> pages;
        std::vector<std::pair<UINT, LPARAM>> calls;
    };
    static Added added;
    static LANGID language = 0;
    const auto callback = [](HANDLE, UINT function, LPARAM first, LPARAM) -> LONG_PTR {
        added.calls.emplace_back(function, first);
        if (function == CPSFUNC_ADD_PROPSHEETPAGEW) {
            added.pages.push_back(*reinterpret_cast<const PROPSHEETPAGEW_V4*>(first));
            return 0x5150;
        }
        return function == CPSFUNC_SET_HSTARTPAGE ? 1 : 0;
    };
    zx::ResourcePlatform platform = zx::CurrentResourcePlatform();
    platform.userDefaultUILanguage = [] { return language; };
    const zx::ResourcePlatform previous = zx::ReplaceResourcePlatform(platform);
    for (const auto& [user, dialog] : {std::pair<LANGID, WORD>{0x0409, 102}, {0x040D, 155}, {0x0401, 155}}) {
        language = user;
        added = {};
        SheetBed sheet(SamplePrinter());
        VPrintingShortcutPropPage page;
        ASSERT_EQ(S_OK, page.SetCoreInterfaces(sheet.core.DriverUi(), sheet.core.CoreHelper()));
        ASSERT_EQ(S_OK, page.SetUIParams(&sheet.params));
        ASSERT_EQ(S_OK, page.SetProperties(&sheet.properties));
        ASSERT_EQ(S_OK, page.Initialise());
        PROPSHEETUI_INFO info = SheetInfo(PROPSHEETUI_REASON_INIT);
        info.pfnComPropSheet = callback;
        EXPECT_EQ(S_OK, page.CreatePage(&info, {}));
        ASSERT_EQ(1u, added.pages.size());
        EXPECT_EQ(MAKEINTRESOURCEW(dialog), added.pages[0].pszTemplate) << std::hex << user;
        EXPECT_EQ(104u, added.pages[0].dwSize);
        EXPECT_EQ(DWORD{PSP_USETITLE | PSP_USEFUSIONCONTEXT}, added.pages[0].dwFlags);
        EXPECT_EQ(reinterpret_cast<LPARAM>(&page), added.pages[0].lParam);
        EXPECT_EQ((std::vector<std::pair<UINT, LPARAM>>{{CPSFUNC_ADD_PROPSHEETPAGEW, added.calls[0].second},
                                                        {CPSFUNC_SET_HSTARTPAGE, 0x5150}}),
                  added.calls);
        EXPECT_EQ(1, info.Result);
        EXPECT_EQ(6, page.Shortcuts()->Count());
    }
    zx::ReplaceResourcePlatform(previous);
    EXPECT_EQ(E_POINTER, VPrintingShortcutPropPage().CreatePage(nullptr, {}));
}

// Memory running out at any point of a document sheet's set-up never crashes; a set-up step that
// fails turns the object off, and DocumentPropertySheets then declines without adding a page.
TEST(SessionSetUp, AFailedStepDisablesTheObject) {
    InstallShortcutPrinter();
    SheetBed sheet(SamplePrinter());
    VPrivateDevMode block{};
    sheet.params.pOEMDM = &block;
    sheet.params.pPrinterName = const_cast<PWSTR>(kShortcutPrinter);
    const auto addPage = [](HANDLE, UINT function, LPARAM, LPARAM) -> LONG_PTR {
        return function == CPSFUNC_ADD_PROPSHEETPAGEW ? 0x5150 : 1;
    };
    std::set<HRESULT> answers;
    for (zxtest::AllocationSweep sweep; sweep.NextRun();) {
        zx::ComPtr<VUIInterfaceImpl> ui;
        *ui.GetAddressOf() = new VUIInterfaceImpl();
        ui->PublishDriverInterface(sheet.core.DriverUi());
        ui->PublishDriverInterface(sheet.core.CoreHelper());
        HRESULT set = E_PENDING;
        {
            const auto refusal = sweep.Refuse();
            set = ui->CommonUIProp(OEMCUIP_DOCPROP, &sheet.params);
        }
        answers.insert(set);
        PROPSHEETUI_INFO info = SheetInfo(PROPSHEETUI_REASON_INIT);
        info.pfnComPropSheet = addPage;
        const HRESULT pages = ui->DocumentPropertySheets(&info, 0);
        if (set == E_NOTIMPL) {
            EXPECT_EQ(E_NOTIMPL, pages) << "run " << sweep.Run();
            EXPECT_TRUE(ui->Pages().empty()) << "run " << sweep.Run();
        }
        if (set == S_OK) {
            EXPECT_EQ(1u, ui->Pages().size()) << "run " << sweep.Run();
        }
    }
    EXPECT_TRUE(answers.count(E_NOTIMPL)) << "no run failed inside the set-up";
    EXPECT_TRUE(answers.count(S_OK));
}
