// The simulated core driver's feature model and the two helper objects it offers the plug-in:
// IPrintOemDriverUI (items written back into the job) and IPrintCoreHelperUni (options read,
// set and listed by keyword). Keyword strings and lists it hands out stay owned by it.
#pragma once

#include "ddk/prcomoem.h"
#include "drvhost/job_devmode.h"
#include "drvhost/option_items.h"
#include "drvhost/printer_description.h"

#include <wrl/client.h>

#include <string>
#include <vector>

namespace drvhost {

class CoreDriver {
public:
    explicit CoreDriver(PrinterDescription description);
    ~CoreDriver();
    CoreDriver(const CoreDriver&) = delete;
    CoreDriver& operator=(const CoreDriver&) = delete;

    const PrinterDescription& Description() const noexcept { return m_description; }

    // The helper objects; each is offered to the plug-in through PublishDriverInterface.
    IPrintOemDriverUI* DriverUi() const noexcept { return m_driverUi.Get(); }
    IPrintCoreHelperUni* CoreHelper() const noexcept { return m_coreHelper.Get(); }

    // The document that calls without a DEVMODE refer to (null: the description's defaults).
    void SetCurrentJob(JobDevMode* job) noexcept { m_currentJob = job; }
    JobDevMode* CurrentJob() const noexcept { return m_currentJob; }

    // The printer's configuration: the selections of its printer-sheet features.
    DWORD PrinterSetting(size_t feature) const { return m_printerConfiguration[feature]; }
    void SetPrinterSetting(size_t feature, DWORD option) { m_printerConfiguration[feature] = option; }

    // The sheet being shown: DrvUpdateUISetting accepts its UI object and its items.
    void ShowSheet(const OEMUIOBJ* uiObject, OptionItems* items, FeatureSheet sheet) noexcept;
    void CloseSheet() noexcept;

    // Times DrvUpdateUISetting received an option that carries the conflict mark (the real core
    // driver would stop and ask the user to resolve the conflict).
    int ConflictPrompts() const noexcept { return m_conflictPrompts; }

    // IPrintCoreHelper and IPrintOemDriverUI, as the helper objects forward them.
    HRESULT GetOption(const DEVMODEW* devMode, DWORD cbSize, PCSTR feature, PCSTR* option);
    HRESULT SetOptions(DEVMODEW* devMode, DWORD cbSize, BOOL resolveConflicts, const PRINT_FEATURE_OPTION* pairs,
                       DWORD count, DWORD* written, DWORD* result);
    HRESULT EnumOptions(PCSTR feature, PCSTR** options, DWORD* count);
    HRESULT EnumFeatures(PCSTR** features, DWORD* count);
    HRESULT UpdateUISetting(PVOID uiObject, PVOID item, DWORD previousSelection, DWORD mode);

    // The selection of a feature as a call without a DEVMODE sees it.
    DWORD CurrentSelection(size_t feature) const;

private:
    // Where a call's selections live: a DEVMODE that the caller passed, or the current state.
    class Target;
    bool ResolveConflicts(Target& target, const std::vector<size_t>& fixedFeatures, bool resolve);

    PrinterDescription m_description;
    std::vector<PCSTR> m_featureKeywords;
    std::vector<std::vector<PCSTR>> m_optionKeywords;
    std::vector<DWORD> m_defaultSelections;
    std::vector<DWORD> m_printerConfiguration;
    JobDevMode* m_currentJob = nullptr;

    const OEMUIOBJ* m_sheetUiObject = nullptr;
    OptionItems* m_sheetItems = nullptr;
    FeatureSheet m_sheet = FeatureSheet::Document;
    int m_conflictPrompts = 0;

    Microsoft::WRL::ComPtr<IPrintOemDriverUI> m_driverUi;
    Microsoft::WRL::ComPtr<IPrintCoreHelperUni> m_coreHelper;
};

}  // namespace drvhost
