// The spooler calls of the plug-in, reached through one table of function pointers: printer
// handles, printer and driver information, the printer's driver data, ports and port monitors,
// and the per-user registry key and GUID generation of the shortcut store, whose storage place
// depends on what the spooler allows. The table holds the real API unless a test has put in its
// own, so the string libraries, the device code and the shortcut store can be exercised without
// a spooler, and the calls that Wine lacks can be made to answer.
#pragma once

#include "util/scoped.h"

#include <windows.h>
#include <winspool.h>

#include <cwchar>
#include <string>
#include <string_view>
#include <vector>

namespace zx {

struct SpoolerPlatform {
    decltype(&::OpenPrinterW) openPrinter;
    decltype(&::ClosePrinter) closePrinter;
    decltype(&::GetPrinterW) getPrinter;
    decltype(&::GetPrinterDriverW) getPrinterDriver;
    decltype(&::GetPrinterDataW) getPrinterData;
    decltype(&::GetPrinterDataExW) getPrinterDataEx;
    decltype(&::SetPrinterDataExW) setPrinterDataEx;
    decltype(&::EnumPrinterDataExW) enumPrinterDataEx;
    decltype(&::DeletePrinterDataExW) deletePrinterDataEx;
    decltype(&::EnumPortsW) enumPorts;
    decltype(&::XcvDataW) xcvData;
    decltype(&::RegCreateKeyExW) regCreateKeyEx;
    decltype(&::RegSetValueExW) regSetValueEx;
    decltype(&::RegQueryValueExW) regQueryValueEx;
    decltype(&::RegEnumValueW) regEnumValue;
    decltype(&::RegDeleteValueW) regDeleteValue;
    decltype(&::RegCloseKey) regCloseKey;
    decltype(&::CoCreateGuid) coCreateGuid;
};

// The table in use.
const SpoolerPlatform& CurrentSpoolerPlatform() noexcept;
// The table of the real API.
const SpoolerPlatform& RealSpoolerPlatform() noexcept;
// Puts a table in place of the current one and returns the one it replaced.
SpoolerPlatform ReplaceSpoolerPlatform(const SpoolerPlatform& platform) noexcept;

namespace traits {
inline void close_platform_printer(HANDLE value) noexcept { CurrentSpoolerPlatform().closePrinter(value); }
inline void close_platform_key(HKEY value) noexcept { CurrentSpoolerPlatform().regCloseKey(value); }
}  // namespace traits

// A printer or port-monitor handle opened through the table, closed through it.
using unique_spooler_handle = unique_any<traits::null_invalid<HANDLE, traits::close_platform_printer>>;
// A registry key opened through the table, closed through it.
using unique_platform_key = unique_any<traits::null_invalid<HKEY, traits::close_platform_key>>;

// Opens a printer by name through the table; an invalid handle when the name is null or the
// spooler refuses. `defaults` may be null.
unique_spooler_handle OpenPrinterThroughPlatform(const wchar_t* printerName, PRINTER_DEFAULTSW* defaults) noexcept;

// The largest block a spooler call may ask for: a larger size is taken for a lie.
inline constexpr DWORD kMaxSpoolerBlock = 4 * 1024 * 1024;
// Most blocks fit this much, which spares the call that asks for the size.
inline constexpr DWORD kFirstSpoolerBlock = 4096;

// Runs a spooler call that fills a caller's buffer (zero-filled, at least minimumSize bytes):
// first with a buffer of kFirstSpoolerBlock bytes, and when that is too small, once more with a
// buffer of the size the call asked for. Empty when the call fails, asks for nothing, or asks for
// more than kMaxSpoolerBlock. call(buffer, size, needed) returns a BOOL.
template <typename Call>
std::vector<BYTE> QuerySpoolerBlock(Call&& call, size_t minimumSize) {
    std::vector<BYTE> block(minimumSize > kFirstSpoolerBlock ? minimumSize : kFirstSpoolerBlock);
    DWORD needed = 0;
    if (call(block.data(), kFirstSpoolerBlock, &needed)) {
        if (needed == 0 || needed > kFirstSpoolerBlock) return {};
        block.resize(needed < minimumSize ? minimumSize : needed);
        return block;
    }
    if (needed <= kFirstSpoolerBlock || needed > kMaxSpoolerBlock) return {};
    block.assign(needed < minimumSize ? minimumSize : needed, 0);
    if (!call(block.data(), needed, &needed)) return {};
    return block;
}

// A text that a spooler block points to, read no further than the block's end; empty when the
// pointer is null or outside the block.
inline std::wstring_view TextInBlock(const std::vector<BYTE>& block, const wchar_t* text) {
    const auto* at = reinterpret_cast<const BYTE*>(text);
    if (text == nullptr || at < block.data() || at >= block.data() + block.size()) return {};
    const size_t room = static_cast<size_t>(block.data() + block.size() - at) / sizeof(wchar_t);
    return std::wstring_view(text, ::wcsnlen(text, room));
}

// The directory of the printer's driver file (level-2 driver information), with its trailing
// backslash. Empty when it cannot be read, has no backslash, or would not leave room in a path
// buffer of MAX_PATH characters for a file name: the string libraries and the device helper
// libraries are loaded from there, never from a bare file name.
std::wstring PrinterDriverDirectory(HANDLE printer);

}  // namespace zx
