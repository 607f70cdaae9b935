#include "device/discovery_platform.h"

#include "util/platform_seam.h"

namespace zx {
namespace {

HRESULT CreateRealFunctionDiscovery(IFunctionDiscovery** discovery) {
    return ::CoCreateInstance(kClsidFunctionDiscovery, nullptr, CLSCTX_ALL, kIidFunctionDiscovery,
                              reinterpret_cast<void**>(discovery));
}

PlatformSeam<DiscoveryPlatform> g_discovery({CreateRealFunctionDiscovery});

}  // namespace

const DiscoveryPlatform& CurrentDiscoveryPlatform() noexcept { return g_discovery.Current(); }

const DiscoveryPlatform& RealDiscoveryPlatform() noexcept { return g_discovery.Real(); }

DiscoveryPlatform ReplaceDiscoveryPlatform(const DiscoveryPlatform& platform) noexcept {
    return g_discovery.Replace(platform);
}

}  // namespace zx
