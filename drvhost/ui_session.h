// One property-sheet session as the core driver runs it with its plug-in: the option items and
// the parameter block handed to CommonUIProp, the plug-in's DocumentPropertySheets with the common
// UI's sheet callback, and the item callback that the common UI calls when the user acts.
#pragma once

#include "drvhost/driver_host.h"
#include "drvhost/option_items.h"

#include <prsht.h>

#include <memory>
#include <string_view>
#include <vector>

namespace drvhost {

// fMode of a document sheet that may change the job, and of one opened without permission.
inline constexpr DWORD kDocumentSheetMode = DM_IN_BUFFER | DM_IN_PROMPT | DM_OUT_BUFFER;
inline constexpr DWORD kReadOnlyDocumentSheetMode = 0x20 | DM_IN_PROMPT | DM_IN_BUFFER;

class UiSession {
public:
    // A document sheet edits `job`; a printer sheet edits the printer's configuration.
    UiSession(DriverHost& host, FeatureSheet sheet, JobDevMode* job, DWORD flags = kDocumentSheetMode);
    ~UiSession();
    UiSession(const UiSession&) = delete;
    UiSession& operator=(const UiSession&) = delete;

    // CommonUIProp, then, for a document sheet, DocumentPropertySheets with the init reason.
    HRESULT Open();
    HRESULT CommonUIPropResult() const noexcept { return m_commonUIPropResult; }
    HRESULT PropertySheetsResult() const noexcept { return m_propertySheetsResult; }

    OEMCUIPPARAM& Params() noexcept { return m_params; }
    // The copy of the job that the sheet edits until Apply; null for a printer sheet.
    JobDevMode* WorkingJob() noexcept { return m_working.get(); }
    FeatureSheet Sheet() const noexcept { return m_sheet; }
    OptionItems& Items() noexcept { return *m_items; }
    POPTITEM Item(std::string_view featureKeyword) { return m_items->Find(featureKeyword); }

    // What the common UI does when the user acts on an item or a page: sets the item, tells the
    // core driver, and calls the plug-in's item callback with the matching reason. Each returns
    // the callback's result (0 when the plug-in registered no callback).
    LONG SelectOption(std::string_view featureKeyword, LONG selection, HWND dialog = nullptr);
    LONG Callback(WORD reason, POPTITEM current, LONG oldSelection = 0, HWND dialog = nullptr);

    // Puts every item back to the selection it had when the sheet opened, tells the core driver,
    // and calls the plug-in back with the items-reverted reason.
    LONG RevertItems(HWND dialog = nullptr);

    // The sheet's Apply: the apply reason, then every changed item written into the working copy
    // of the job, and the working copy into the job. Until then the sheet changes only its copy,
    // so that a cancelled sheet leaves the job as it was.
    LONG Apply(HWND dialog = nullptr);

    // The descriptions of the pages that the plug-in added, as it handed them over (their dialog
    // template, procedure and parameter), for a host that creates a page's dialog by itself.
    const std::vector<std::vector<BYTE>>& PageDescriptions() const noexcept { return m_pageDescriptions; }

    // Pages that the plug-in added through the common UI's sheet callback.
    const std::vector<HPROPSHEETPAGE>& Pages() const noexcept { return m_pages; }
    HPROPSHEETPAGE StartPage() const noexcept { return m_startPage; }
    // The pages now belong to a shown sheet, which destroys them.
    void ReleasePages() noexcept { m_pages.clear(); }
    const std::vector<std::pair<HANDLE, LONG_PTR>>& Results() const noexcept { return m_results; }

private:
    static LONG_PTR CALLBACK ComPropSheet(HANDLE sheet, UINT function, LPARAM lParam1, LPARAM lParam2);
    static BOOL APIENTRY UpdateUISettingProc(PVOID uiObject, PVOID item, DWORD previousSelection, DWORD mode);
    static BOOL APIENTRY GetDriverSettingProc(PVOID, PCSTR, PVOID, DWORD, PDWORD, PDWORD);
    HRESULT CallPropertySheets(WORD reason, LPARAM lParam);
    void TellCoreDriver(OPTITEM& item, LONG previousSelection);

    // The common UI's view of the plug-in: its procedure table and the object it hands back.
    struct UiObject {
        OEMUIOBJ object;
        UiSession* session;
    };

    DriverHost& m_host;
    FeatureSheet m_sheet;
    JobDevMode* m_job;
    std::unique_ptr<JobDevMode> m_working;  // what the sheet changes until Apply
    std::vector<LONG> m_openingSelections;
    std::unique_ptr<OptionItems> m_items;
    OEMUIPROCS m_procs{};
    UiObject m_uiObject{};
    HANDLE m_heap = nullptr;
    OEMCUIPPARAM m_params{};
    OEMUIPSPARAM m_sheetParams{};
    PROPSHEETUI_INFO m_sheetInfo{};
    HRESULT m_commonUIPropResult = E_PENDING;
    HRESULT m_propertySheetsResult = S_FALSE;
    std::vector<HPROPSHEETPAGE> m_pages;
    std::vector<std::vector<BYTE>> m_pageDescriptions;
    HPROPSHEETPAGE m_startPage = nullptr;
    std::vector<std::pair<HANDLE, LONG_PTR>> m_results;
    bool m_initialised = false;
};

}  // namespace drvhost
