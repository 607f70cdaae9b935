// Test beds of the settings model: a document sheet of the simulated core driver, and a platform
// table whose spooler knows one printer and which records library loads and message boxes.
#pragma once

#include "core/resource_libraries.h"
#include "drvhost/core_driver.h"
#include "drvhost/option_items.h"
#include "settings/ui_properties.h"

#include <string>
#include <string_view>
#include <vector>

namespace zxtest {

drvhost::PrinterDescription Describe(std::string_view gpdText);
drvhost::PrinterDescription SamplePrinter();  // as the build copies it beside the tests

// The simulated core driver's document sheet: its items in a parameter block, and a settings
// object holding its helper objects and the block.
class SheetBed {
public:
    explicit SheetBed(drvhost::PrinterDescription description);
    ~SheetBed() { core.CloseSheet(); }

    POPTITEM Item(std::string_view feature) { return items.Find(feature); }
    DWORD Selection(std::string_view feature) const;  // the core driver's own
    std::vector<std::string> HiddenItems();

    drvhost::CoreDriver core;
    drvhost::OptionItems items;
    OEMUIOBJ uiObject{sizeof(OEMUIOBJ), nullptr};
    OEMCUIPPARAM params{};
    VUIProperties properties;
};

// The state of the fake platform; Reset gives the table.
struct FakePlatform {
    static inline std::wstring driverPath;
    static inline bool openFails = false, driverQueryFails = false;
    static inline int opened = 0, closed = 0;
    static inline std::vector<HANDLE> queriedPrinters;
    // Loads go to the system unless `madeUpModules`; a path ending with `missing` fails.
    static inline bool madeUpModules = false;
    static inline std::wstring missing;
    static inline std::vector<std::wstring> loaded;
    static inline std::vector<HMODULE> freed;
    static inline LANGID language = 0x0409;
    static inline std::wstring messageText, messageCaption;
    static inline UINT messageType = 0;

    static HANDLE Printer() { return reinterpret_cast<HANDLE>(static_cast<ULONG_PTR>(0x5150)); }
    static HMODULE MadeUpModule(size_t load) {
        return reinterpret_cast<HMODULE>(static_cast<ULONG_PTR>(0x10000 * load));
    }
    static zx::ResourcePlatform Reset(std::wstring driverFile, bool madeUp);
};

class ScopedResourcePlatform {
public:
    explicit ScopedResourcePlatform(const zx::ResourcePlatform& platform)
        : m_previous(zx::ReplaceResourcePlatform(platform)) {}
    ~ScopedResourcePlatform() { zx::ReplaceResourcePlatform(m_previous); }

private:
    zx::ResourcePlatform m_previous;
};

// The string libraries built beside the tests, loaded through the plug-in's own code for a scope.
class BuiltStringLibraries {
public:
    BuiltStringLibraries();
    ~BuiltStringLibraries() { zx::FreeResourceLibraries(); }

private:
    ScopedResourcePlatform m_platform;
};

std::wstring LoadedText(HMODULE library, UINT id);

}  // namespace zxtest
