#include "util/spooler_platform.h"

#include "util/platform_seam.h"

namespace zx {
namespace {

PlatformSeam<SpoolerPlatform> g_spooler({::OpenPrinterW, ::ClosePrinter, ::GetPrinterW, ::GetPrinterDriverW,
                                         ::GetPrinterDataW, ::GetPrinterDataExW, ::SetPrinterDataExW,
                                         ::EnumPrinterDataExW, ::DeletePrinterDataExW, ::EnumPortsW, ::XcvDataW,
                                         ::RegCreateKeyExW, ::RegSetValueExW, ::RegQueryValueExW, ::RegEnumValueW,
                                         ::RegDeleteValueW, ::RegCloseKey, ::CoCreateGuid});

constexpr DWORD kDriverInfoLevel = 2;

}  // namespace

const SpoolerPlatform& CurrentSpoolerPlatform() noexcept { return g_spooler.Current(); }

const SpoolerPlatform& RealSpoolerPlatform() noexcept { return g_spooler.Real(); }

SpoolerPlatform ReplaceSpoolerPlatform(const SpoolerPlatform& platform) noexcept { return g_spooler.Replace(platform); }

unique_spooler_handle OpenPrinterThroughPlatform(const wchar_t* printerName, PRINTER_DEFAULTSW* defaults) noexcept {
    HANDLE printer = nullptr;
    if (printerName == nullptr ||
        !g_spooler.Current().openPrinter(const_cast<LPWSTR>(printerName), &printer, defaults)) {
        return unique_spooler_handle();
    }
    return unique_spooler_handle(printer);
}

std::wstring PrinterDriverDirectory(HANDLE printer) {
    const std::vector<BYTE> block = QuerySpoolerBlock(
        [printer](BYTE* buffer, DWORD size, DWORD* needed) {
            return g_spooler.Current().getPrinterDriver(printer, nullptr, kDriverInfoLevel, buffer, size, needed);
        },
        sizeof(DRIVER_INFO_2W));
    if (block.empty()) return {};
    const std::wstring_view path =
        TextInBlock(block, reinterpret_cast<const DRIVER_INFO_2W*>(block.data())->pDriverPath);
    const size_t slash = path.find_last_of(L'\\');
    if (slash == std::wstring_view::npos || slash + 1 >= MAX_PATH) return {};
    return std::wstring(path.substr(0, slash + 1));
}

}  // namespace zx
