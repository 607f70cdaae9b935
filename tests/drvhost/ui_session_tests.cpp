// A property-sheet session as the core driver runs it, with a recording plug-in in place of the
// real one: the parameter block, the sheet callback, the item callback and the DEVMODE operations.
#include "drvhost/driver_host.h"
#include "drvhost/plugin_stub.h"
#include "drvhost/ui_session.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

using namespace drvhost;

namespace {

// A UI plug-in that records what the core driver hands it and answers like a simple plug-in.
class RecordingPlugin final : public PluginStub {
public:
    STDMETHODIMP GetInfo(DWORD mode, PVOID buffer, DWORD, PDWORD needed) override {
        *needed = 4;
        *static_cast<DWORD*>(buffer) = mode == OEMGI_GETREQUESTEDHELPERINTERFACES ? OEMPUBLISH_IPRINTCOREHELPER : 7;
        return S_OK;
    }
    STDMETHODIMP DevMode(DWORD mode, POEMDMPARAM param) override {
        devModeModes.push_back(mode);
        param->cbBufSize = 16;
        if (mode == OEMDM_DEFAULT) std::memset(param->pOEMDMOut, 0xAB, 16);
        if (mode == OEMDM_MERGE) std::memcpy(param->pOEMDMOut, param->pOEMDMIn, 16);
        return S_OK;
    }
    STDMETHODIMP PublishDriverInterface(IUnknown* offered) override {
        Microsoft::WRL::ComPtr<IUnknown> answer;
        if (SUCCEEDED(
                offered->QueryInterface(IID_IPrintOemDriverUI, reinterpret_cast<void**>(answer.GetAddressOf())))) {
            answer.As(&driverUi);
        }
        return offered->QueryInterface(IID_IPrintCoreHelperUni,
                                       reinterpret_cast<void**>(answer.ReleaseAndGetAddressOf()));
    }
    STDMETHODIMP CommonUIProp(DWORD mode, POEMCUIPPARAM param) override {
        commonUIMode = mode;
        params = param;
        param->OEMCUIPCallback = &ItemCallback;
        param->pOEMUserData = this;
        return S_OK;
    }
    STDMETHODIMP DocumentPropertySheets(PPROPSHEETUI_INFO info, LPARAM lParam) override {
        sheetReasons.push_back(info->Reason);
        if (info->Reason == PROPSHEETUI_REASON_SET_RESULT)
            setResult = reinterpret_cast<SETRESULT_INFO*>(lParam)->Result;
        if (info->Reason != PROPSHEETUI_REASON_INIT) return S_OK;
        sheetParams = reinterpret_cast<OEMUIPSPARAM*>(info->lParamInit);
        PROPSHEETPAGEW page{};
        page.dwSize = sizeof(page);
        page.dwFlags = PSP_DLGINDIRECT;
        page.pResource = &kPageTemplate.dialog;
        page.pfnDlgProc = [](HWND, UINT, WPARAM, LPARAM) -> INT_PTR { return FALSE; };
        const LONG_PTR added =
            info->pfnComPropSheet(info->hComPropSheet, CPSFUNC_ADD_PROPSHEETPAGEW, reinterpret_cast<LPARAM>(&page), 0);
        startPageResult = info->pfnComPropSheet(info->hComPropSheet, CPSFUNC_SET_HSTARTPAGE, added, 0);
        info->pfnComPropSheet(info->hComPropSheet, CPSFUNC_SET_RESULT, added, CPSUI_OK);
        return added ? S_OK : E_FAIL;
    }
    // On a change of Duplex the plug-in moves the paper source and commits it, as a rule would.
    static LONG APIENTRY ItemCallback(PCPSUICBPARAM callback, POEMCUIPPARAM param) {
        auto* self = static_cast<RecordingPlugin*>(param->pOEMUserData);
        self->callbacks.push_back({callback->Reason, callback->pCurItem, callback->OldSel});
        if (callback->Reason != CPSUICB_REASON_SEL_CHANGED || callback->pCurItem != &param->pDrvOptItems[1]) return 0;
        OPTITEM& inputBin = param->pDrvOptItems[2];
        inputBin.Sel = 1;
        return self->driverUi->DrvUpdateUISetting(param->poemuiobj, &inputBin, 0, OEMCUIP_DOCPROP) == S_OK
                   ? CPSUICB_ACTION_OPTIF_CHANGED
                   : -1;
    }

    struct Call {
        WORD reason;
        POPTITEM item;
        LONG oldSelection;
    };
    Microsoft::WRL::ComPtr<IPrintOemDriverUI> driverUi;
    std::vector<DWORD> devModeModes;
    DWORD commonUIMode = 0;
    POEMCUIPPARAM params = nullptr;
    OEMUIPSPARAM* sheetParams = nullptr;
    std::vector<WORD> sheetReasons;
    std::vector<Call> callbacks;
    LONG_PTR startPageResult = 0;
    LRESULT setResult = -1;

    static const struct PageTemplate {
        DLGTEMPLATE dialog;
        WORD menu, windowClass, title;
    } kPageTemplate;
};

const RecordingPlugin::PageTemplate RecordingPlugin::kPageTemplate = {{WS_CHILD, 0, 0, 0, 0, 100, 50}, 0, 0, 0};

PrinterDescription Printer() {
    return ParsePrinterDescription(R"(
*Feature: PaperSize { *Option: A4 { *Name: "A4" } *Option: LETTER { *Name: "Letter" } }
*Feature: Duplex { *Option: NONE { } *Option: VERTICAL { } }
*Feature: InputBin { *Option: 7 { } *Option: 1 { } }
*Feature: Tray2 { *FeatureType: PRINTER_PROPERTY *Option: TRUE { } *Option: FALSE { } }
)",
                                   "printer.gpd");
}

class UiSessionTest : public testing::Test {
protected:
    UiSessionTest() : host(Printer(), Microsoft::WRL::ComPtr<IPrintOemUI>(&plugin), L"Nobody's printer") {}

    RecordingPlugin plugin;
    DriverHost host;
};

}  // namespace

TEST_F(UiSessionTest, DefaultAndMergedJobsGoThroughThePluginsDevMode) {
    auto job = host.NewDefaultJob();
    EXPECT_EQ((std::vector<DWORD>{OEMDM_SIZE, OEMDM_DEFAULT}), plugin.devModeModes);
    EXPECT_EQ(0xAB, static_cast<BYTE*>(job->PluginBlock())[15]);

    auto other = host.NewDefaultJob();
    other->SetSelection(0, 1);
    static_cast<BYTE*>(other->PluginBlock())[0] = 0x11;
    EXPECT_EQ(S_OK, host.MergeIntoJob(*job, other->Public(), other->TotalSize()));
    EXPECT_EQ(1u, job->Selection(0));
    EXPECT_EQ(0x11, static_cast<BYTE*>(job->PluginBlock())[0]);
    EXPECT_EQ(OEMDM_MERGE, plugin.devModeModes.back());

    DEVMODEW foreign{};
    foreign.dmSize = sizeof(foreign);
    EXPECT_EQ(E_INVALIDARG, host.MergeIntoJob(*job, &foreign, sizeof(foreign)));
}

TEST_F(UiSessionTest, DocumentSheetHandsThePluginItsBlockAndCollectsItsPages) {
    auto job = host.NewDefaultJob();
    {
        UiSession session(host, FeatureSheet::Document, job.get(), kReadOnlyDocumentSheetMode);
        EXPECT_EQ(S_OK, session.Open());
        EXPECT_EQ(DWORD{OEMCUIP_DOCPROP}, plugin.commonUIMode);
        EXPECT_EQ(3u, plugin.params->cDrvOptItems);
        // The sheet edits a copy of the job until Apply.
        EXPECT_EQ(session.WorkingJob()->Public(), plugin.params->pPublicDM);
        EXPECT_EQ(session.WorkingJob()->PluginBlock(), plugin.params->pOEMDM);
        EXPECT_EQ(0x2Cu, plugin.params->dwFlags & 0xFF);
        EXPECT_EQ(session.WorkingJob()->PluginBlock(), plugin.sheetParams->pOEMDM);

        ASSERT_EQ(1u, session.Pages().size());
        EXPECT_EQ(session.Pages().front(), session.StartPage());
        EXPECT_EQ(1, plugin.startPageResult);
        ASSERT_EQ(1u, session.Results().size());
        EXPECT_EQ(CPSUI_OK, session.Results().front().second);
    }
    EXPECT_EQ((std::vector<WORD>{PROPSHEETUI_REASON_INIT, PROPSHEETUI_REASON_DESTROY}), plugin.sheetReasons);
}

TEST_F(UiSessionTest, UserActionsReachThePluginsItemCallback) {
    auto job = host.NewDefaultJob();
    UiSession session(host, FeatureSheet::Document, job.get());
    session.Open();

    EXPECT_EQ(CPSUICB_ACTION_OPTIF_CHANGED, session.SelectOption("Duplex", 1));
    ASSERT_EQ(1u, plugin.callbacks.size());
    EXPECT_EQ(CPSUICB_REASON_SEL_CHANGED, plugin.callbacks[0].reason);
    EXPECT_EQ(session.Item("Duplex"), plugin.callbacks[0].item);
    EXPECT_EQ(0, plugin.callbacks[0].oldSelection);
    // The change and the plug-in's commit reached the sheet's copy of the job, which the job
    // takes on Apply.
    EXPECT_EQ(1u, session.WorkingJob()->Selection(2));
    EXPECT_EQ(0u, job->Selection(2));

    session.Callback(CPSUICB_REASON_SETACTIVE, session.Item("PaperSize"));
    session.Apply();
    EXPECT_EQ(CPSUICB_REASON_SETACTIVE, plugin.callbacks[1].reason);
    EXPECT_EQ(CPSUICB_REASON_APPLYNOW, plugin.callbacks[2].reason);
    EXPECT_EQ(1u, job->Selection(1));
    EXPECT_EQ(1u, job->Selection(2));
    EXPECT_EQ(PROPSHEETUI_REASON_SET_RESULT, plugin.sheetReasons.back());
    EXPECT_EQ(CPSUI_OK, plugin.setResult);
    EXPECT_THROW(session.SelectOption("Duplex", 2), std::invalid_argument);
}

TEST_F(UiSessionTest, PrinterSheetEditsThePrinterConfiguration) {
    UiSession session(host, FeatureSheet::Printer, nullptr);
    EXPECT_EQ(S_OK, session.Open());
    EXPECT_EQ(DWORD{OEMCUIP_PRNPROP}, plugin.commonUIMode);
    EXPECT_EQ(nullptr, plugin.params->pPublicDM);
    ASSERT_EQ(1u, session.Items().Count());
    session.SelectOption("Tray2", 1);
    session.Apply();
    EXPECT_EQ(1u, host.Core().PrinterSetting(3));
    EXPECT_TRUE(plugin.sheetReasons.empty());  // the printer sheet has no pages of the plug-in here
}
