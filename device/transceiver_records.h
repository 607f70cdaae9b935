// The records that the standard TCP/IP port monitor and the network re-discovery monitor
// exchange through XcvData under the command "GetConfigInfo": the request (132 bytes) and the
// port's configuration (964 bytes). The Windows headers of this toolchain lack them.
#pragma once

#include <windows.h>

#include <cstddef>

namespace zx {

inline constexpr wchar_t kXcvGetConfigInfo[] = L"GetConfigInfo";

struct ConfigInfoRequest {
    BYTE reserved[128];
    DWORD version;  // 1
};

struct PortConfiguration {
    static constexpr size_t kPortNameLength = 64;
    static constexpr size_t kHostAddressLength = 49;
    static constexpr size_t kSnmpCommunityLength = 33;
    static constexpr size_t kQueueLength = 33;
    static constexpr size_t kIpAddressLength = 16;

    WCHAR portName[kPortNameLength];
    DWORD version;
    DWORD protocol;
    DWORD size;
    DWORD reserved;
    WCHAR hostAddress[kHostAddressLength];
    WCHAR snmpCommunity[kSnmpCommunityLength];
    DWORD doubleSpool;
    WCHAR queue[kQueueLength];
    WCHAR ipAddress[kIpAddressLength];
    BYTE reserved2[540];
    DWORD portNumber;
    DWORD snmpEnabled;
    DWORD snmpDeviceIndex;
};

static_assert(sizeof(ConfigInfoRequest) == 132);
static_assert(offsetof(ConfigInfoRequest, version) == 128);
static_assert(sizeof(PortConfiguration) == 964);
static_assert(offsetof(PortConfiguration, version) == 128);
static_assert(offsetof(PortConfiguration, protocol) == 132);
static_assert(offsetof(PortConfiguration, size) == 136);
static_assert(offsetof(PortConfiguration, reserved) == 140);
static_assert(offsetof(PortConfiguration, hostAddress) == 144);
static_assert(offsetof(PortConfiguration, snmpCommunity) == 242);
static_assert(offsetof(PortConfiguration, doubleSpool) == 308);
static_assert(offsetof(PortConfiguration, queue) == 312);
static_assert(offsetof(PortConfiguration, ipAddress) == 378);
static_assert(offsetof(PortConfiguration, reserved2) == 410);
static_assert(offsetof(PortConfiguration, portNumber) == 952);
static_assert(offsetof(PortConfiguration, snmpEnabled) == 956);
static_assert(offsetof(PortConfiguration, snmpDeviceIndex) == 960);

}  // namespace zx
