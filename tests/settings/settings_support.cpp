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

SheetBed::SheetBed(drvhost::PrinterDescription description)
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

using F = FakePlatform;

BOOL WINAPI FakeOpenPrinter(LPWSTR, LPHANDLE printer, LPPRINTER_DEFAULTSW) {
    if (F::openFails) return FALSE;
    ++F::opened;
    *printer = F::Printer();
    return TRUE;
}

BOOL WINAPI FakeClosePrinter(HANDLE) {
    ++F::closed;
    return TRUE;
}

// Answers level 2 as the spooler does: the structure, then the path it points at.
BOOL WINAPI FakeGetPrinterDriver(HANDLE printer, LPWSTR, DWORD level, LPBYTE buffer, DWORD size, LPDWORD needed) {
    F::queriedPrinters.push_back(printer);
    if (F::driverQueryFails || level != 2) return FALSE;
    const DWORD pathBytes = static_cast<DWORD>((F::driverPath.size() + 1) * sizeof(wchar_t));
    *needed = sizeof(DRIVER_INFO_2W) + pathBytes;
    if (buffer == nullptr || size < *needed) {
        ::SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    auto* info = reinterpret_cast<DRIVER_INFO_2W*>(buffer);
    *info = {};
    info->pDriverPath = reinterpret_cast<LPWSTR>(buffer + sizeof(DRIVER_INFO_2W));
    std::memcpy(info->pDriverPath, F::driverPath.c_str(), pathBytes);
    return TRUE;
}

HMODULE WINAPI FakeLoadLibrary(LPCWSTR path, HANDLE, DWORD flags) {
    F::loaded.emplace_back(path);
    if (!F::missing.empty() && F::loaded.back().ends_with(F::missing)) return nullptr;
    return F::madeUpModules ? F::MadeUpModule(F::loaded.size()) : ::LoadLibraryExW(path, nullptr, flags);
}

BOOL WINAPI FakeFreeLibrary(HMODULE module) {
    F::freed.push_back(module);
    return F::madeUpModules ? TRUE : ::FreeLibrary(module);
}

LANGID WINAPI FakeLanguage() { return F::language; }

int WINAPI FakeMessageBox(HWND, LPCWSTR text, LPCWSTR caption, UINT type) {
    F::messageText = text;
    F::messageCaption = caption;
    F::messageType = type;
    return IDOK;
}

}  // namespace

zx::ResourcePlatform FakePlatform::Reset(std::wstring driverFile, bool madeUp) {
    driverPath = std::move(driverFile);
    openFails = driverQueryFails = false;
    opened = closed = 0;
    queriedPrinters.clear();
    madeUpModules = madeUp;
    missing.clear();
    loaded.clear();
    freed.clear();
    zx::ResourcePlatform platform = zx::RealResourcePlatform();
    platform.openPrinter = &FakeOpenPrinter;
    platform.closePrinter = &FakeClosePrinter;
    platform.getPrinterDriver = &FakeGetPrinterDriver;
    platform.loadLibrary = &FakeLoadLibrary;
    platform.freeLibrary = &FakeFreeLibrary;
    platform.userDefaultUILanguage = &FakeLanguage;
    platform.messageBox = &FakeMessageBox;
    return platform;
}

BuiltStringLibraries::BuiltStringLibraries()
    : m_platform(FakePlatform::Reset(drvhost::ProgramDirectory() + L"zxcoresim.dll", false)) {
    EXPECT_EQ(S_OK, zx::LoadResourceLibraries(L"ZX Inkjet Simulator"));
}

std::wstring LoadedText(HMODULE library, UINT id) {
    zx::UiString text;
    zx::LoadUiString(library, id, text);
    return text;
}

}  // namespace zxtest
