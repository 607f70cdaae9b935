// Test beds of the settings model: the sample printer and a document sheet of the simulated core driver.
#pragma once

#include "drvhost/core_driver.h"
#include "drvhost/printer_install.h"
#include "settings/ui_properties.h"

#include <map>
#include <string>
#include <string_view>

namespace zxtest {

inline drvhost::PrinterDescription SamplePrinter() {  // as the build copies it beside the tests
    return drvhost::LoadPrinterDescription(drvhost::ProgramDirectory() + drvhost::kDescriptionFile);
}

inline constexpr wchar_t kSettingsPrinter[] = L"settings test printer";

// Installs the sample printer under `name` once for the test program, with the driver files built
// beside the tests; its driver directory.
inline std::wstring InstallSamplePrinter(const std::wstring& name) {
    static std::map<std::wstring, std::wstring> installed;
    const auto [entry, added] = installed.try_emplace(name);
    if (added) {
        drvhost::PrinterSetup setup;
        setup.printerName = name;
        setup.sourceDirectory = drvhost::ProgramDirectory();
        entry->second = drvhost::InstallPrinter(setup).driverDirectory;
    }
    return entry->second;
}

// A document sheet for a printer description or its text: the sheet's items in a parameter block,
// and a settings object holding the core driver's helper objects and the block.
class SheetBed {
public:
    explicit SheetBed(drvhost::PrinterDescription description)
        : core(std::move(description)), items(core.Description(), drvhost::FeatureSheet::Document, [this](size_t f) {
              return core.CurrentSelection(f);
          }) {
        core.ShowSheet(&uiObject, &items, drvhost::FeatureSheet::Document);
        params.cbSize = sizeof(params);
        params.poemuiobj = &uiObject;
        params.pDrvOptItems = items.Items();
        params.cDrvOptItems = items.Count();
        properties.SetInterfaces(core.DriverUi(), core.CoreHelper());
        properties.AttachSheet(&params);
    }
    explicit SheetBed(std::string_view gpdText) : SheetBed(drvhost::ParsePrinterDescription(gpdText, "test.gpd")) {}
    ~SheetBed() { core.CloseSheet(); }

    POPTITEM Item(std::string_view feature) { return items.Find(feature); }
    DWORD Selection(std::string_view feature) const {  // the core driver's own
        return core.CurrentSelection(core.Description().FindFeature(feature).value());
    }

    drvhost::CoreDriver core;
    drvhost::OptionItems items;
    OEMUIOBJ uiObject{sizeof(OEMUIOBJ), nullptr};
    OEMCUIPPARAM params{};
    VUIProperties properties;
};

}  // namespace zxtest
