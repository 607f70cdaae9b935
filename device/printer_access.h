// Owner of a printer's handles and store of the device answers kept in the printer's driver data
// (the key "PrinterDriverData"), with what port discovery learnt about the printer's port.
#pragma once

#include "util/spooler_platform.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// How the printer is attached; decided by port discovery.
enum PortKind : int32_t {
    kPortUnknown = -1,
    kPortUsb = 0,
    kPortWsd = 1,
    kPortTcpIp = 2,
    kPortRediscovery = 4,  // the network re-discovery port monitor
};

// Values that the plug-in itself keeps in the printer's driver data: the device query cycle, the
// shortcut store's printer GUID and current shortcut, the installation mark and the manual-change
// marks. A device answer never takes one of these names.
inline constexpr const wchar_t* kPluginDriverDataValues[] = {
    L"BidiQuery",
    L"PrinterGUID",
    L"InstallOver",
    L"CurrentShortcut",
    L"CustomBitmapID",
    L"DuplexUnitManuallyChanged",
    L"Tray2ManuallyChanged",
    L"PhotoTrayManuallyChanged",
};
// Whether a value name is one of the plug-in's own, compared without regard to case as the store
// compares names.
bool IsPluginDriverDataValue(const std::wstring& name) noexcept;

class VPrinterAccess {
public:
    // Values of at most this size are read with one spooler call.
    static constexpr DWORD kSmallValueBytes = 128;

    enum class ValueRead : int { Read = 0, Missing = -1, Failed = 1 };

    // With no handle, opens the printer by name with full access and owns that handle.
    VPrinterAccess(const wchar_t* printerName, HANDLE printer);
    ~VPrinterAccess() = default;
    VPrinterAccess(const VPrinterAccess&) = delete;
    VPrinterAccess& operator=(const VPrinterAccess&) = delete;

    // Missing: no such value. Read: a REG_SZ becomes VT_BSTR, a REG_DWORD VT_BOOL holding its low
    // 16 bits, any other type leaves the VARIANT empty. Failed: the value could not be fetched.
    ValueRead ReadValue(const wchar_t* name, zx::unique_variant& value);

    // VT_BSTR is stored as REG_SZ without its terminating null, VT_BOOL as a REG_DWORD of its 16
    // bits; other types are not stored. A refused write is tried once more on a handle opened
    // with full access. True when one of the writes succeeded.
    bool WriteValue(const wchar_t* name, const VARIANT& value);
    // A REG_DWORD of the 16 bits of number, or a REG_SZ, written as WriteValue does.
    bool WriteNumber(const wchar_t* name, int16_t number);
    bool WriteText(const wchar_t* name, const std::wstring& text);

    // The printer's level-2 information, owned by this object until the next call; null when
    // it cannot be read or names no driver.
    const PRINTER_INFO_2W* GetPrinterInfo();
    // A text that the printer information points to, read no further than the end of its block;
    // empty when the pointer is null or points elsewhere.
    std::wstring_view PrinterInfoText(const wchar_t* text) const { return zx::TextInBlock(m_printerInfo, text); }

    HANDLE PrinterHandle() const noexcept { return m_printer; }
    const std::wstring& PrinterName() const noexcept { return m_printerName; }
    // The server part of the port monitor's name: always empty, the printer is local.
    const std::wstring& ServerName() const noexcept { return m_serverName; }

    int32_t PortKind() const noexcept { return m_portKind; }
    const std::wstring& PortName() const noexcept { return m_portName; }
    const std::wstring& IpAddress() const noexcept { return m_ipAddress; }
    HANDLE XcvHandle() const noexcept { return m_xcv.get(); }

    void SetPort(int32_t kind, std::wstring name) {
        m_portKind = kind;
        m_portName = std::move(name);
    }
    void SetIpAddress(std::wstring address) { m_ipAddress = std::move(address); }
    // The description learnt for a port name, kept for the life of this object: a port's
    // description is its monitor's, which does not change while the port exists. Null when
    // none was learnt for that name.
    const std::wstring* KnownPortDescription(const std::wstring& portName) const noexcept {
        return m_describedPort && *m_describedPort == portName ? &m_portDescription : nullptr;
    }
    void KeepPortDescription(const std::wstring& portName, std::wstring description) {
        m_describedPort = portName;
        m_portDescription = std::move(description);
    }
    void ReplaceXcvHandle(HANDLE xcv) noexcept { m_xcv.reset(xcv); }

    // As ReadValue reads them, the bytes a value of that type holds.
    static ValueRead ValueFromData(DWORD type, const BYTE* data, DWORD size, zx::unique_variant& value);

private:
    zx::unique_spooler_handle OpenWithFullAccess() const;
    ValueRead ReadText(const wchar_t* name, DWORD size, zx::unique_variant& value) const;
    ValueRead ReadNumber(const wchar_t* name, zx::unique_variant& value) const;

    zx::unique_spooler_handle m_ownedPrinter;
    HANDLE m_printer = nullptr;  // the creator's handle, or m_ownedPrinter's
    zx::unique_spooler_handle m_xcv;
    std::wstring m_printerName;
    int32_t m_portKind = kPortUnknown;
    std::wstring m_portName;
    std::wstring m_ipAddress;
    std::wstring m_serverName;
    std::vector<BYTE> m_printerInfo;
    std::optional<std::wstring> m_describedPort;
    std::wstring m_portDescription;
};

// The printer's driver data for one accessory query, read as ReadValue reads each value: all
// values with one spooler call when the spooler lists them (or finds none), otherwise each with
// its own.
class VStoredValues {
public:
    explicit VStoredValues(VPrinterAccess& printer);
    VPrinterAccess::ValueRead Read(const wchar_t* name, zx::unique_variant& value) const;

private:
    VPrinterAccess& m_printer;
    std::vector<BYTE> m_listed;  // PRINTER_ENUM_VALUESW records; empty: read each value
    DWORD m_count = 0;
    bool m_nothingStored = false;  // the spooler listed no values, or found no driver data
};
