// How a printer is attached and at which network address its device answers: the port's kind
// from its name or the description of its port monitor, and the IP address from the standard
// TCP/IP monitor, the network re-discovery monitor or, for WSD printers, Function Discovery.
// Every result goes into the printer's VPrinterAccess.
#pragma once

#include "device/printer_access.h"

#include <string>
#include <string_view>

namespace zx {

// The address used whenever a lookup finds none.
inline constexpr wchar_t kNoIpAddress[] = L"0.0.0.0";

// Opens the port's transceiver and stores the port's kind and name. False for an unknown kind,
// or when the printer or its port cannot be read.
bool ClassifyPort(VPrinterAccess& printer);

// The description of a local port, as the port list gives it; empty when the port is not there.
std::wstring GetPortDescription(const std::wstring& portName);

// Stores the device's IP address for a port of the given kind ("0.0.0.0" when none was found).
bool FindIpAddress(VPrinterAccess& printer, int32_t kind);

// The lookups behind FindIpAddress, one per kind; they store only what they find.
bool GetTcpIpConfig(VPrinterAccess& printer);
bool GetRediscoveryConfig(VPrinterAccess& printer);
bool FindWsdAddress(VPrinterAccess& printer);

// The host part of a WSD service address: what follows the seven characters of "http://",
// up to the port number.
std::wstring IpFromServiceAddress(std::wstring_view serviceAddress);

}  // namespace zx
