// The creation of the Function Discovery object, through which WSD printers are found, reached
// through a table that tests replace: Wine's Function Discovery knows no devices. The spooler's
// calls go through util/spooler_platform.h.
#pragma once

#include "device/function_discovery.h"

namespace zx {

struct DiscoveryPlatform {
    // Creates the Function Discovery object (CoCreateInstance in the real table).
    HRESULT (*createFunctionDiscovery)(IFunctionDiscovery** discovery);
};

// The table in use.
const DiscoveryPlatform& CurrentDiscoveryPlatform() noexcept;
// The table of the real API.
const DiscoveryPlatform& RealDiscoveryPlatform() noexcept;
// Puts a table in place of the current one and returns the one it replaced.
DiscoveryPlatform ReplaceDiscoveryPlatform(const DiscoveryPlatform& platform) noexcept;

}  // namespace zx
