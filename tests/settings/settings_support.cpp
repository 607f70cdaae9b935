#include "tests/settings/settings_support.h"

#include "drvhost/printer_install.h"
#include "settings/option_items.h"

#include <gtest/gtest.h>

#include <cstring>

namespace zxtest {

drvhost::PrinterDescription Describe(std::string_view gpdText) {
    return drvhost::ParsePrinterDescription(gpdText, "test.gpd");
}

drvhost::PrinterDescription SamplePrinter() {
    return drvhost::LoadPrinterDescription(drvhost::ProgramDirectory() + L"zxtalu.gpd");
}

SheetBed::SheetBed(drvhost::PrinterDescription description, DWORD sheetFlags)
    : core(std::move(description)),
      items(core.Description(), drvhost::FeatureSheet::Document,
            [this](size_t feature) { return core.CurrentSelection(feature); }) {
    uiObject.cbSize = sizeof(uiObject);
    core.ShowSheet(&uiObject, &items, drvhost::FeatureSheet::Document);
    params.cbSize = sizeof(params);
    params.poemuiobj = &uiObject;
    params.dwFlags = sheetFlags;
    params.pDrvOptItems = items.Items();
    params.cDrvOptItems = items.Count();
    properties.SetInterfaces(core.DriverUi(), core.CoreHelper());
    properties.AttachSheet(&params);
}

SheetBed::~SheetBed() { core.CloseSheet(); }

DWORD SheetBed::Selection(std::string_view feature) const {
    return core.CurrentSelection(core.Description().FindFeature(feature).value());
}

std::vector<std::string> SheetBed::HiddenItems() {
    std::vector<std::string> hidden;
    for (const OPTITEM& item : zx::DriverItems(&params)) {
        if (item.Flags & OPTIF_HIDE) hidden.emplace_back(zx::FeatureKeywordOf(item));
    }
    return hidden;
}

namespace {

BOOL WINAPI FakeOpenPrinter(LPWSTR, LPHANDLE printer, LPPRINTER_DEFAULTSW) {
    if (FakeSpooler::openFails) {
        ::SetLastError(ERROR_INVALID_PRINTER_NAME);
        return FALSE;
    }
    ++FakeSpooler::opened;
    *printer = FakeSpooler::Printer();
    return TRUE;
}

BOOL WINAPI FakeClosePrinter(HANDLE) {
    ++FakeSpooler::closed;
    return TRUE;
}

// Answers level 2 as the spooler does: the structure, then the path it points at.
BOOL WINAPI FakeGetPrinterDriver(HANDLE printer, LPWSTR, DWORD level, LPBYTE buffer, DWORD size, LPDWORD needed) {
    FakeSpooler::queriedPrinters.push_back(printer);
    if (FakeSpooler::driverQueryFails || level != 2) {
        ::SetLastError(ERROR_INVALID_LEVEL);
        return FALSE;
    }
    const DWORD pathBytes = static_cast<DWORD>((FakeSpooler::driverPath.size() + 1) * sizeof(wchar_t));
    *needed = sizeof(DRIVER_INFO_2W) + pathBytes;
    if (buffer == nullptr || size < *needed) {
        ::SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    auto* info = reinterpret_cast<DRIVER_INFO_2W*>(buffer);
    *info = {};
    info->cVersion = 3;
    info->pDriverPath = reinterpret_cast<LPWSTR>(buffer + sizeof(DRIVER_INFO_2W));
    std::memcpy(info->pDriverPath, FakeSpooler::driverPath.c_str(), pathBytes);
    return TRUE;
}

}  // namespace

void FakeSpooler::Reset(std::wstring path) {
    driverPath = std::move(path);
    openFails = driverQueryFails = false;
    opened = closed = 0;
    queriedPrinters.clear();
}

zx::ResourcePlatform FakeSpooler::Platform(zx::ResourcePlatform base) {
    base.openPrinter = &FakeOpenPrinter;
    base.getPrinterDriver = &FakeGetPrinterDriver;
    base.closePrinter = &FakeClosePrinter;
    return base;
}

namespace {

// A spooler whose printer's driver file lies in the tests' directory, beside the built libraries.
zx::ResourcePlatform SpoolerOfTheBuild(const zx::ResourcePlatform& base) {
    FakeSpooler::Reset(drvhost::ProgramDirectory() + L"zxcoresim.dll");
    return FakeSpooler::Platform(base);
}

}  // namespace

BuiltStringLibraries::BuiltStringLibraries(zx::ResourcePlatform base) : m_platform(SpoolerOfTheBuild(base)) {
    EXPECT_EQ(S_OK, zx::LoadResourceLibraries(L"ZX Inkjet Simulator"));
}

std::wstring LoadedText(HMODULE library, UINT id) {
    zx::UiString text;
    zx::LoadUiString(library, id, text);
    return text;
}

}  // namespace zxtest
