// Test beds of the settings model: a document sheet of the simulated core driver, a spooler
// that knows one printer, and the string libraries of the build loaded through the plug-in.
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
// The sample printer's feature description, as the build copies it beside the tests.
drvhost::PrinterDescription SamplePrinter();

// The option items of the simulated core driver's document sheet in a parameter block, and a
// settings object holding its helper objects and the block.
class SheetBed {
public:
    explicit SheetBed(drvhost::PrinterDescription description, DWORD sheetFlags = 0);
    ~SheetBed();
    SheetBed(const SheetBed&) = delete;
    SheetBed& operator=(const SheetBed&) = delete;

    POPTITEM Item(std::string_view feature) { return items.Find(feature); }
    // The core driver's own selection of a feature.
    DWORD Selection(std::string_view feature) const;
    // The feature keywords of the items that carry the hide flag.
    std::vector<std::string> HiddenItems();

    drvhost::CoreDriver core;
    drvhost::OptionItems items;
    OEMUIOBJ uiObject{};
    OEMCUIPPARAM params{};
    VUIProperties properties;
};

// Puts a resource platform in force for a scope.
class ScopedResourcePlatform {
public:
    explicit ScopedResourcePlatform(const zx::ResourcePlatform& platform)
        : m_previous(zx::ReplaceResourcePlatform(platform)) {}
    ~ScopedResourcePlatform() { zx::ReplaceResourcePlatform(m_previous); }
    ScopedResourcePlatform(const ScopedResourcePlatform&) = delete;
    ScopedResourcePlatform& operator=(const ScopedResourcePlatform&) = delete;

private:
    zx::ResourcePlatform m_previous;
};

// A spooler that knows one printer, whose driver file is `driverPath`.
struct FakeSpooler {
    static inline std::wstring driverPath;
    static inline bool openFails = false;
    static inline bool driverQueryFails = false;
    static inline int opened = 0;
    static inline int closed = 0;
    static inline std::vector<HANDLE> queriedPrinters;

    static HANDLE Printer() { return reinterpret_cast<HANDLE>(static_cast<ULONG_PTR>(0x5150)); }
    static void Reset(std::wstring path);
    // `base` with the spooler calls replaced by this spooler's.
    static zx::ResourcePlatform Platform(zx::ResourcePlatform base = zx::RealResourcePlatform());
};

// The string libraries built beside the tests, loaded through the plug-in's own code (the
// spooler reports a driver file in the tests' directory) and freed at the end of the scope.
class BuiltStringLibraries {
public:
    explicit BuiltStringLibraries(zx::ResourcePlatform base = zx::RealResourcePlatform());
    ~BuiltStringLibraries() { zx::FreeResourceLibraries(); }
    BuiltStringLibraries(const BuiltStringLibraries&) = delete;
    BuiltStringLibraries& operator=(const BuiltStringLibraries&) = delete;

private:
    ScopedResourcePlatform m_platform;
};

// A text of a library as a string, for comparisons.
std::wstring LoadedText(HMODULE library, UINT id);

}  // namespace zxtest
