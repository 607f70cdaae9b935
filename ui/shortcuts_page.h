// The Printing Shortcuts page: the start page of the printer's document property sheet. It lists
// the printing shortcuts with their pictures, shows up to five settings of the selected one in
// combo boxes, and lets the user pick a shortcut, change its settings, save the result under a
// new name and delete user shortcuts. Every choice is handed at once to the core driver's own
// items, so the other pages and the job follow the page; the shortcut store is written on Apply.
#pragma once

#include "device/notifier.h"
#include "resources/resource_libraries.h"
#include "settings/ui_properties.h"
#include "shortcuts/shortcut_collection.h"
#include "ui/shortcut_list_control.h"
#include "ui/ui_control.h"

#include <compstui.h>
#include <prsht.h>

#include <map>
#include <memory>
#include <string>

class VPrintingShortcutPropPage : public IObserver {
public:
    VPrintingShortcutPropPage();
    virtual ~VPrintingShortcutPropPage();
    VPrintingShortcutPropPage(const VPrintingShortcutPropPage&) = delete;
    VPrintingShortcutPropPage& operator=(const VPrintingShortcutPropPage&) = delete;

    // Keeps the accessory record of the notifying device-model client.
    void Update(ISubject* subject) override;

    // Set-up by the UI plug-in object, in this order, before CreatePage. Each gives E_POINTER for
    // a null argument (the core helper may be null).
    HRESULT SetCoreInterfaces(IPrintOemDriverUI* driverUI, IPrintCoreHelper* coreHelper);
    HRESULT SetUIParams(POEMCUIPPARAM params);
    virtual HRESULT SetProperties(VUIProperties* properties);
    // Builds the control wrappers from the driver's "PS_Schema" declarations (or the default
    // set) and binds the setting positions to the features of "AllSettingsfor_PS".
    HRESULT Initialise();

    // Adds the page to the sheet as its start page, then builds the shortcut collection with the
    // job's current settings (feature keyword -> option index; PaperSize as the paper index).
    //   E_POINTER  no sheet information
    //   E_FAIL     the collection could not be built (no "AllSettingsfor_PS" or
    //              "PrintingShortcut" feature)
    //   S_OK       otherwise (a sheet that refuses the page is told through its result)
    virtual HRESULT CreatePage(PPROPSHEETUI_INFO sheet, const JobSettings& currentSettings);

    // The standard property sheet's callbacks tell the page what changed there.
    // Puts the standard page's controls of the shortcut settings in line with their items.
    void OnStandardItemsChanged(HWND standardPage, const VUIProperties& properties);
    // Gives a changed built-in shortcut its modified picture ("CustomBitmapID").
    void OnStandardSelectionChanged(const VUIProperties& properties);

    // For the host's tests and scripts: the collection (null before CreatePage).
    const VUIPSItem* Shortcuts() const noexcept { return m_shortcuts.get(); }

private:
    static INT_PTR CALLBACK DialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
    INT_PTR HandleMessage(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);

    // Dialog start and notifications.
    void OnInitDialog(HWND dialog);
    int32_t SelectOrMakeStartShortcut(HWND dialog);
    INT_PTR OnNotify(HWND dialog, WPARAM wParam, NMHDR* header);
    void OnSetActive(HWND dialog);
    void OnKillActive(HWND dialog);
    void OnApply(HWND dialog);
    INT_PTR OnBeginLabelEdit(HWND dialog, const NMLVDISPINFOW* edit);
    void OnDestroy(HWND dialog);

    // The user's actions.
    void OnCommand(HWND dialog, WORD controlId, WORD code);
    void OnShortcutSelected(HWND dialog, int listIndex);
    void StartNaming(HWND dialog);
    void OnNameAccepted(HWND dialog, const NMLVDISPINFOW* edit);
    void DeleteSelectedShortcut(HWND dialog);
    void OnSettingChanged(HWND dialog, int32_t selection, int32_t comboId);
    void MakePendingShortcut(HWND dialog, PrintShortcutRecord pending);
    void TakeOverJobSettings(HWND dialog, bool writeBitmap);

    // Showing a shortcut.
    void SetPageTexts(HWND dialog, const PrintShortcutRecord& record);
    void FillCombos(HWND dialog, PrintShortcutRecord& record);
    void UpdateButtons(HWND dialog, const PrintShortcutRecord& record);
    void CheckDuplex(HWND dialog, const PrintShortcutRecord& record);
    void ApplyMaximumResolutionRule(HWND dialog);

    // Handing shortcuts to the job.
    void ApplyShortcutToJob(HWND dialog, int32_t recordIndex, bool commit, DWORD mode);
    void ApplySettingToJob(HWND dialog, const PrintShortcutRecord& record, size_t position, bool commit, DWORD mode);
    void ResolveConflictMarks();
    HRESULT HandToCoreDriver(POPTITEM item) const;
    POPTITEM Item(const char* feature) const;
    void SetTouchByUser();

    // The list and its records.
    VUICtrlPSPrintingShortcutListControl* List() const;
    VPrintShortcutComboBox* ComboOfFeature(std::string_view feature) const;
    ShortcutListView ListView() const;
    int32_t RecordOfListItem(int listIndex) const;
    int32_t SelectedRecord() const;
    std::wstring NewShortcutName() const;
    VPrivateDevMode* PrivateBlock() const;

    std::map<int32_t, std::unique_ptr<VUIControl>> m_controls;
    zx::ComPtr<IPrintOemDriverUI> m_driverUI;
    zx::ComPtr<IPrintCoreHelper> m_coreHelper;
    POEMCUIPPARAM m_uiParams = nullptr;
    PFNCOMPROPSHEET m_comPropSheet = nullptr;
    HANDLE m_sheet = nullptr;
    HANDLE m_page = nullptr;  // the sheet's handle of the added page
    VUIProperties* m_properties = nullptr;
    DWORD m_applied = 0;
    VUICtrlPSPrintingShortcutListControl* m_changedList = nullptr;
    DWORD m_duplexUnavailable = 0;
    DWORD m_cancelled = 0;
    int32_t m_startIndex = 0;
    BYTE m_inactive = 1;
    std::unique_ptr<VUIPSItem> m_shortcuts;
    std::map<int32_t, std::string> m_featureMap;  // combo id -> the feature its position shows
    DWORD m_active = 0;
    IBiDiData* m_biDiData = nullptr;

    zx::UiString m_title{};
    HANDLE m_activationContext = INVALID_HANDLE_VALUE;
    // The list's selection notifications while WM_INITDIALOG fills it are not the user's choices.
    bool m_fillingList = false;
};

// The page asks, at its first activation after a sheet is opened, whether the job changed since
// the page took its settings; the UI plug-in object resets this when a sheet is opened.
void ResetFirstShortcutPageActivation() noexcept;
