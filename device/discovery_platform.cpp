#include "device/discovery_platform.h"

namespace zx {
namespace {

HRESULT CreateRealFunctionDiscovery(IFunctionDiscovery** discovery) {
    return ::CoCreateInstance(kClsidFunctionDiscovery, nullptr, CLSCTX_ALL, kIidFunctionDiscovery,
                              reinterpret_cast<void**>(discovery));
}

const DiscoveryPlatform kRealDiscovery = {CreateRealFunctionDiscovery};

// Changed only by tests, before the code under test runs.
DiscoveryPlatform g_discovery = kRealDiscovery;

}  // namespace

const DiscoveryPlatform& CurrentDiscoveryPlatform() noexcept { return g_discovery; }

const DiscoveryPlatform& RealDiscoveryPlatform() noexcept { return kRealDiscovery; }

DiscoveryPlatform ReplaceDiscoveryPlatform(const DiscoveryPlatform& platform) noexcept {
    const DiscoveryPlatform previous = g_discovery;
    g_discovery = platform;
    return previous;
}

}  // namespace zx
