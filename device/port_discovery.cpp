#include "device/port_discovery.h"

#include "device/transceiver_records.h"

#include <cwchar>

namespace zx {
namespace {

struct PortNameMarker {
    const wchar_t* marker;  // found anywhere in the port's name, case-sensitive
    int32_t kind;
};
constexpr PortNameMarker kPortNameMarkers[] = {{L"USB", kPortUsb}, {L"WSD", kPortWsd}};

struct PortMonitorDescription {
    const wchar_t* description;  // the whole description, exactly
    int32_t kind;
};
constexpr PortMonitorDescription kPortDescriptions[] = {
    {L"Standard TCP/IP Port", kPortTcpIp},
    {L"Network re-discovery port monitor", kPortRediscovery},
};

struct AddressLookup {
    int32_t kind;
    bool (*lookup)(VPrinterAccess& printer);
};
constexpr AddressLookup kAddressLookups[] = {
    {kPortWsd, FindWsdAddress},
    {kPortTcpIp, GetTcpIpConfig},
    {kPortRediscovery, GetRediscoveryConfig},
};

// The port list is asked for a port's description once per printer object.
int32_t KindOfPort(VPrinterAccess& printer, const std::wstring& portName) {
    for (const PortNameMarker& entry : kPortNameMarkers) {
        if (portName.find(entry.marker) != std::wstring::npos) return entry.kind;
    }
    if (printer.KnownPortDescription(portName) == nullptr) {
        printer.KeepPortDescription(portName, GetPortDescription(portName));
    }
    const std::wstring& description = *printer.KnownPortDescription(portName);
    for (const PortMonitorDescription& entry : kPortDescriptions) {
        if (description == entry.description) return entry.kind;
    }
    return kPortUnknown;
}

HANDLE OpenTransceiver(const VPrinterAccess& printer, const std::wstring& portName) {
    std::wstring name = printer.ServerName() + L",XcvPort " + portName;
    HANDLE xcv = nullptr;
    return CurrentSpoolerPlatform().openPrinter(name.data(), &xcv, nullptr) ? xcv : nullptr;
}

// A fixed-size text field of a monitor's record, which need not hold a terminator.
template <size_t N>
std::wstring FieldText(const WCHAR (&field)[N]) {
    return std::wstring(field, ::wcsnlen(field, N));
}

// Copies as much of text as fits with its terminator.
template <size_t N>
void FillField(WCHAR (&field)[N], const std::wstring& text) {
    const size_t length = text.size() < N ? text.size() : N - 1;
    text.copy(field, length);
    field[length] = L'\0';
}

// The configuration of the printer's port from its monitor. False when the call fails; status
// is the monitor's answer and needed the output size it asked for.
bool AskPortConfiguration(const VPrinterAccess& printer, BYTE* output, DWORD outputSize, DWORD& needed, DWORD& status) {
    ConfigInfoRequest request{};
    request.version = 1;
    needed = 0;
    status = ERROR_GEN_FAILURE;
    return CurrentSpoolerPlatform().xcvData(printer.XcvHandle(), kXcvGetConfigInfo, reinterpret_cast<BYTE*>(&request),
                                            sizeof(request), output, outputSize, &needed, &status) != FALSE;
}

// The re-discovery monitor asked for a larger record: ask again with one of that size and
// take the host address from it.
void AskAgainWithNeededSize(VPrinterAccess& printer, DWORD needed) {
    if (needed == 0 || needed > kMaxSpoolerBlock) return;
    std::vector<BYTE> output(needed < sizeof(PortConfiguration) ? sizeof(PortConfiguration) : needed);
    auto* config = reinterpret_cast<PortConfiguration*>(output.data());
    FillField(config->portName, printer.PortName());
    DWORD neededAgain = 0, status = 0;
    if (!AskPortConfiguration(printer, output.data(), needed, neededAgain, status) || status != ERROR_SUCCESS) return;
    printer.SetIpAddress(FieldText(config->hostAddress));
}

}  // namespace

// The transceiver stays open while the printer keeps its port.
bool ClassifyPort(VPrinterAccess& printer) {
    const std::wstring previousPort = printer.PortName();
    printer.SetPort(kPortUnknown, L"");
    if (printer.PrinterHandle() == nullptr && printer.PrinterName().empty()) return false;
    const PRINTER_INFO_2W* info = printer.GetPrinterInfo();
    if (info == nullptr) return false;
    const std::wstring portName(printer.PrinterInfoText(info->pPortName));
    if (portName.empty()) return false;
    if (portName != previousPort || printer.XcvHandle() == nullptr) {
        printer.ReplaceXcvHandle(OpenTransceiver(printer, portName));
    }
    const int32_t kind = KindOfPort(printer, portName);
    printer.SetPort(kind, portName);
    return kind != kPortUnknown;
}

std::wstring GetPortDescription(const std::wstring& portName) {
    if (portName.empty()) return {};
    DWORD count = 0;
    const std::vector<BYTE> block = QuerySpoolerBlock(
        [&count](BYTE* buffer, DWORD size, DWORD* needed) {
            return CurrentSpoolerPlatform().enumPorts(nullptr, 2, buffer, size, needed, &count);
        },
        0);
    if (block.empty() || count > block.size() / sizeof(PORT_INFO_2W)) return {};
    const auto* ports = reinterpret_cast<const PORT_INFO_2W*>(block.data());
    for (DWORD i = count; i-- > 0;) {
        if (TextInBlock(block, ports[i].pPortName) == portName)
            return std::wstring(TextInBlock(block, ports[i].pDescription));
    }
    return {};
}

bool FindIpAddress(VPrinterAccess& printer, int32_t kind) {
    printer.SetIpAddress(kNoIpAddress);
    for (const AddressLookup& entry : kAddressLookups) {
        if (entry.kind == kind) return entry.lookup(printer);
    }
    return false;
}

bool GetTcpIpConfig(VPrinterAccess& printer) {
    PortConfiguration config{};
    DWORD needed = 0, status = 0;
    if (!AskPortConfiguration(printer, reinterpret_cast<BYTE*>(&config), sizeof(config), needed, status)) return false;
    if (status != ERROR_SUCCESS) return false;
    printer.SetIpAddress(FieldText(config.hostAddress));
    return true;
}

// The monitor names the device by its IP address; when it asks for a larger record, the host
// address of that record is kept, but the lookup still counts as failed.
bool GetRediscoveryConfig(VPrinterAccess& printer) {
    PortConfiguration config{};
    FillField(config.portName, printer.PortName());
    DWORD needed = 0, status = 0;
    if (!AskPortConfiguration(printer, reinterpret_cast<BYTE*>(&config), sizeof(config), needed, status)) return false;
    if (status != ERROR_SUCCESS) {
        AskAgainWithNeededSize(printer, needed);
        return false;
    }
    const std::wstring address = FieldText(config.ipAddress);
    if (address.empty()) return false;
    printer.SetIpAddress(address);
    return true;
}

std::wstring IpFromServiceAddress(std::wstring_view serviceAddress) {
    constexpr size_t kSchemeLength = 7;  // "http://"
    if (serviceAddress.size() <= kSchemeLength) return {};
    const std::wstring_view rest = serviceAddress.substr(kSchemeLength);
    return std::wstring(rest.substr(0, rest.find(L':')));
}

}  // namespace zx
