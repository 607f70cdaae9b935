// The platform calls of device communication, reached through one table of function pointers:
// the spooler (printer handles, driver data, ports, port monitors), the system version and the
// creation of the Function Discovery object. The table holds the real API unless a test has
// put in its own, so the code can be exercised without a spooler, a network or a device.
#pragma once

#include "device/function_discovery.h"

#include <windows.h>
#include <winspool.h>

namespace zx {

struct DevicePlatform {
    decltype(&::OpenPrinterW) openPrinter;
    decltype(&::ClosePrinter) closePrinter;
    decltype(&::GetPrinterW) getPrinter;
    decltype(&::GetPrinterDriverW) getPrinterDriver;
    decltype(&::GetPrinterDataW) getPrinterData;
    decltype(&::SetPrinterDataExW) setPrinterDataEx;
    decltype(&::EnumPortsW) enumPorts;
    decltype(&::XcvDataW) xcvData;
    decltype(&::GetVersionExW) getVersionEx;
    // Creates the Function Discovery object (CoCreateInstance in the real table).
    HRESULT (*createFunctionDiscovery)(IFunctionDiscovery** discovery);
};

// The table in use.
const DevicePlatform& Platform() noexcept;

// The table of the real API.
const DevicePlatform& RealPlatform() noexcept;

// Puts a table in place of the current one and returns the one it replaced.
DevicePlatform ReplacePlatform(const DevicePlatform& platform) noexcept;

}  // namespace zx

#include "util/scoped.h"

#include <cwchar>
#include <string_view>
#include <vector>

namespace zx {

namespace traits {
inline void close_platform_printer(HANDLE value) noexcept { Platform().closePrinter(value); }
}  // namespace traits

// A printer or port-monitor handle opened through the table, closed through it.
using unique_spooler_handle = unique_any<traits::null_invalid<HANDLE, traits::close_platform_printer>>;

// The largest block a spooler call may ask for: a larger size is taken for a lie.
inline constexpr DWORD kMaxSpoolerBlock = 4 * 1024 * 1024;

// Runs a spooler call that fills a caller's buffer: first without a buffer to learn the size,
// then with a buffer of that size (at least minimumSize bytes, zero-filled). Empty when the
// second call fails or the size is out of bounds. call(buffer, size, needed) returns a BOOL.
template <typename Call>
std::vector<BYTE> QuerySpoolerBlock(Call&& call, size_t minimumSize) {
    DWORD needed = 0;
    call(nullptr, 0, &needed);
    if (needed == 0 || needed > kMaxSpoolerBlock) return {};
    std::vector<BYTE> block(needed < minimumSize ? minimumSize : needed);
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

}  // namespace zx
