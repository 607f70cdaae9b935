#include "drvhost/ui_session.h"

#include <commctrl.h>

#include <algorithm>
#include <stdexcept>
#include <string>

namespace drvhost {

UiSession::UiSession(DriverHost& host, FeatureSheet sheet, JobDevMode* job, DWORD flags)
    : m_host(host), m_sheet(sheet), m_job(sheet == FeatureSheet::Document ? job : nullptr) {
    CoreDriver& core = host.Core();
    if (m_job) m_working = std::make_unique<JobDevMode>(*m_job);
    if (m_working) core.SetCurrentJob(m_working.get());
    m_items = std::make_unique<OptionItems>(core.Description(), sheet,
                                            [&core](size_t feature) { return core.CurrentSelection(feature); });

    m_procs.DrvGetDriverSetting = &GetDriverSettingProc;
    m_procs.DrvUpdateUISetting = &UpdateUISettingProc;
    m_uiObject.object.cbSize = sizeof(OEMUIOBJ);
    m_uiObject.object.pOemUIProcs = &m_procs;
    m_uiObject.session = this;
    core.ShowSheet(&m_uiObject.object, m_items.get(), sheet);

    m_heap = ::HeapCreate(0, 0, 0);
    m_params.cbSize = sizeof(m_params);
    m_params.poemuiobj = &m_uiObject.object;
    m_params.hPrinter = host.Printer();
    m_params.pPrinterName = const_cast<PWSTR>(host.PrinterName().c_str());
    m_params.hModule = host.PluginModule();
    m_params.hOEMHeap = m_heap;
    m_params.pPublicDM = m_working ? m_working->Public() : nullptr;
    m_params.pOEMDM = m_working ? m_working->PluginBlock() : nullptr;
    m_params.dwFlags = flags;
    m_params.pDrvOptItems = m_items->Items();
    m_params.cDrvOptItems = m_items->Count();

    m_sheetParams.cbSize = sizeof(m_sheetParams);
    m_sheetParams.poemuiobj = m_params.poemuiobj;
    m_sheetParams.hPrinter = m_params.hPrinter;
    m_sheetParams.pPrinterName = m_params.pPrinterName;
    m_sheetParams.hModule = m_params.hModule;
    m_sheetParams.hOEMHeap = m_heap;
    m_sheetParams.pPublicDM = m_params.pPublicDM;
    m_sheetParams.pOEMDM = m_params.pOEMDM;
    m_sheetParams.dwFlags = flags;
}

UiSession::~UiSession() {
    if (m_initialised) CallPropertySheets(PROPSHEETUI_REASON_DESTROY, 0);
    for (HPROPSHEETPAGE page : m_pages) ::DestroyPropertySheetPage(page);
    CoreDriver& core = m_host.Core();
    core.CloseSheet();
    if (m_working) core.SetCurrentJob(nullptr);
    if (m_heap) ::HeapDestroy(m_heap);
}

HRESULT UiSession::Open() {
    const DWORD mode = m_sheet == FeatureSheet::Document ? OEMCUIP_DOCPROP : OEMCUIP_PRNPROP;
    m_commonUIPropResult = m_host.Ui()->CommonUIProp(mode, &m_params);
    m_openingSelections.clear();
    for (DWORD i = 0; i < m_items->Count(); ++i) m_openingSelections.push_back(m_items->Items()[i].Sel);
    if (m_sheet == FeatureSheet::Document) {
        m_propertySheetsResult = CallPropertySheets(PROPSHEETUI_REASON_INIT, 0);
        m_initialised = true;
    }
    return m_commonUIPropResult;
}

HRESULT UiSession::CallPropertySheets(WORD reason, LPARAM lParam) {
    m_sheetInfo = {};
    m_sheetInfo.cbSize = sizeof(m_sheetInfo);
    m_sheetInfo.Version = PROPSHEETUI_INFO_VERSION;
    m_sheetInfo.Reason = reason;
    m_sheetInfo.hComPropSheet = this;
    m_sheetInfo.pfnComPropSheet = &ComPropSheet;
    m_sheetInfo.lParamInit = reinterpret_cast<LPARAM>(&m_sheetParams);
    return m_host.Ui()->DocumentPropertySheets(&m_sheetInfo, lParam);
}

LONG UiSession::Callback(WORD reason, POPTITEM current, LONG oldSelection, HWND dialog) {
    if (m_params.OEMCUIPCallback == nullptr) return 0;
    CPSUICBPARAM param{};
    param.cbSize = sizeof(param);
    param.Reason = reason;
    param.hDlg = dialog;
    param.pOptItem = m_items->Items();
    param.cOptItem = static_cast<WORD>(m_items->Count());
    param.pCurItem = current;
    param.OldSel = oldSelection;
    return m_params.OEMCUIPCallback(&param, &m_params);
}

LONG UiSession::SelectOption(std::string_view featureKeyword, LONG selection, HWND dialog) {
    POPTITEM item = m_items->Find(featureKeyword);
    if (item == nullptr) throw std::invalid_argument("no item for " + std::string(featureKeyword));
    if (selection < 0 || selection >= item->pOptType->Count) {
        throw std::invalid_argument(std::string(featureKeyword) + " has no option " + std::to_string(selection));
    }
    const LONG oldSelection = item->Sel;
    item->Sel = selection;
    item->Flags |= OPTIF_CHANGED;
    TellCoreDriver(*item, oldSelection);
    return Callback(CPSUICB_REASON_SEL_CHANGED, item, oldSelection, dialog);
}

LONG UiSession::RevertItems(HWND dialog) {
    for (DWORD i = 0; i < m_items->Count() && i < m_openingSelections.size(); ++i) {
        OPTITEM& item = m_items->Items()[i];
        if (item.Sel == m_openingSelections[i]) continue;
        const LONG changed = item.Sel;
        item.Sel = m_openingSelections[i];
        TellCoreDriver(item, changed);
    }
    return Callback(CPSUICB_REASON_ITEMS_REVERTED, m_items->Items(), 0, dialog);
}

void UiSession::TellCoreDriver(OPTITEM& item, LONG previousSelection) {
    const DWORD mode = m_sheet == FeatureSheet::Document ? OEMCUIP_DOCPROP : OEMCUIP_PRNPROP;
    m_host.Core().UpdateUISetting(&m_uiObject.object, &item, static_cast<DWORD>(previousSelection), mode);
}

LONG UiSession::Apply(HWND dialog) {
    const LONG result = Callback(CPSUICB_REASON_APPLYNOW, m_items->Items(), 0, dialog);
    CoreDriver& core = m_host.Core();
    for (DWORD i = 0; i < m_items->Count(); ++i) {
        OPTITEM& item = m_items->Items()[i];
        const auto feature = m_items->FeatureOf(&item);
        if (!(item.Flags & OPTIF_CHANGED) || !feature || item.Sel < 0) continue;
        if (m_working) {
            m_working->SetSelection(*feature, static_cast<DWORD>(item.Sel));
        } else {
            core.SetPrinterSetting(*feature, static_cast<DWORD>(item.Sel));
        }
    }
    if (m_job && m_working) m_job->TakeAllFrom(*m_working);
    if (m_initialised) {
        SETRESULT_INFO setResult{};
        setResult.cbSize = sizeof(setResult);
        setResult.Result = CPSUI_OK;
        CallPropertySheets(PROPSHEETUI_REASON_SET_RESULT, reinterpret_cast<LPARAM>(&setResult));
    }
    return result;
}

LONG_PTR CALLBACK UiSession::ComPropSheet(HANDLE sheet, UINT function, LPARAM lParam1, LPARAM lParam2) {
    auto* session = static_cast<UiSession*>(sheet);
    if (session == nullptr) return 0;
    switch (function) {
    case CPSFUNC_ADD_PROPSHEETPAGEW: {
        const auto* page = reinterpret_cast<const PROPSHEETPAGEW*>(lParam1);
        HPROPSHEETPAGE handle = page ? ::CreatePropertySheetPageW(page) : nullptr;
        if (handle == nullptr) return 0;
        session->m_pages.push_back(handle);
        const auto* bytes = reinterpret_cast<const BYTE*>(page);
        session->m_pageDescriptions.emplace_back(bytes, bytes + page->dwSize);
        return reinterpret_cast<LONG_PTR>(handle);
    }
    case CPSFUNC_SET_HSTARTPAGE: {
        const auto handle = reinterpret_cast<HPROPSHEETPAGE>(lParam1);
        if (std::find(session->m_pages.begin(), session->m_pages.end(), handle) == session->m_pages.end()) return 0;
        session->m_startPage = handle;
        return 1;
    }
    case CPSFUNC_SET_RESULT:
        session->m_results.emplace_back(reinterpret_cast<HANDLE>(lParam1), static_cast<LONG_PTR>(lParam2));
        return 1;
    default: return 0;
    }
}

BOOL APIENTRY UiSession::UpdateUISettingProc(PVOID uiObject, PVOID item, DWORD previousSelection, DWORD mode) {
    if (uiObject == nullptr) return FALSE;
    UiSession* session = reinterpret_cast<UiObject*>(uiObject)->session;
    return SUCCEEDED(session->m_host.Core().UpdateUISetting(uiObject, item, previousSelection, mode));
}

BOOL APIENTRY UiSession::GetDriverSettingProc(PVOID, PCSTR, PVOID, DWORD, PDWORD, PDWORD) {
    ::SetLastError(ERROR_NOT_SUPPORTED);
    return FALSE;
}

}  // namespace drvhost
