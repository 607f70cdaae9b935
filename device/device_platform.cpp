#include "device/device_platform.h"

namespace zx {
namespace {

HRESULT CreateRealFunctionDiscovery(IFunctionDiscovery** discovery) {
    return ::CoCreateInstance(kClsidFunctionDiscovery, nullptr, CLSCTX_ALL, kIidFunctionDiscovery,
                              reinterpret_cast<void**>(discovery));
}

const DevicePlatform kRealPlatform = {
    ::OpenPrinterW,      ::ClosePrinter, ::GetPrinterW, ::GetPrinterDriverW, ::GetPrinterDataW,
    ::SetPrinterDataExW, ::EnumPortsW,   ::XcvDataW,    ::GetVersionExW,     CreateRealFunctionDiscovery,
};

// Changed only by tests, before the code under test runs.
DevicePlatform g_platform = kRealPlatform;

}  // namespace

const DevicePlatform& Platform() noexcept { return g_platform; }

const DevicePlatform& RealPlatform() noexcept { return kRealPlatform; }

DevicePlatform ReplacePlatform(const DevicePlatform& platform) noexcept {
    const DevicePlatform previous = g_platform;
    g_platform = platform;
    return previous;
}

}  // namespace zx
