// An in-memory spooler put in place of the real one for the length of a test: printers with
// driver data, handles with or without the right to change the printer, a port list and port
// monitors that answer from a script. It also stands in for the system version and, through
// FakeFunctionDiscovery, for Function Discovery.
#pragma once

#include "device/device_platform.h"
#include "device/transceiver_records.h"

#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace zxtest {

struct StoredValue {
    DWORD type = REG_NONE;
    std::vector<BYTE> bytes;
    std::optional<DWORD> claimedSize;  // a size the store reports instead of the real one
    bool unreadable = false;           // the size query works, the read fails
};

struct CaseInsensitiveLess {
    bool operator()(const std::wstring& a, const std::wstring& b) const { return _wcsicmp(a.c_str(), b.c_str()) < 0; }
};

struct FakePrinter {
    std::wstring name;
    std::wstring portName = L"USB001";
    std::wstring driverName = L"ZX Inkjet Simulator Driver";
    std::wstring driverPath = L"C:\\drivers\\x64\\3\\zxcoresim.dll";
    std::map<std::wstring, StoredValue, CaseInsensitiveLess> data;  // under "PrinterDriverData"
    bool refuseAllWrites = false;
};

struct FakePort {
    std::wstring name;
    std::wstring description;
};

// One answer of a port monitor to "GetConfigInfo".
struct XcvAnswer {
    BOOL succeeds = TRUE;
    DWORD status = ERROR_SUCCESS;
    DWORD needed = sizeof(zx::PortConfiguration);
    zx::PortConfiguration config{};
};

struct XcvCall {
    std::wstring command;
    DWORD outputSize = 0;
    std::wstring prefilledPortName;  // what the caller put in the output's port-name field
};

class FakeSpooler {
public:
    FakeSpooler();
    ~FakeSpooler();
    FakeSpooler(const FakeSpooler&) = delete;
    FakeSpooler& operator=(const FakeSpooler&) = delete;

    FakePrinter& AddPrinter(const std::wstring& name);
    FakePrinter& Printer(const std::wstring& name) { return m_printers.at(name); }
    // A handle as a caller without the right to change the printer holds it.
    HANDLE OpenRestricted(const std::wstring& name);

    // Set-up.
    std::vector<FakePort> ports;
    std::deque<XcvAnswer> xcvAnswers;  // answered in order; none left: the call fails
    DWORD majorVersion = 10;

    // What the code did.
    std::vector<std::wstring> openedNames;
    std::vector<XcvCall> xcvCalls;
    int enumPortsCalls = 0;
    std::vector<std::wstring> refusedWrites;  // value names
    size_t OpenHandles() const { return m_handles.size(); }

    static FakeSpooler& Current();

    // Entry points of the table.
    BOOL Open(LPWSTR name, LPHANDLE handle, LPPRINTER_DEFAULTSW defaults);
    BOOL Close(HANDLE handle);
    BOOL GetPrinterInfo(HANDLE handle, DWORD level, LPBYTE buffer, DWORD size, LPDWORD needed);
    BOOL GetDriverInfo(HANDLE handle, DWORD level, LPBYTE buffer, DWORD size, LPDWORD needed);
    DWORD GetData(HANDLE handle, LPCWSTR name, LPDWORD type, LPBYTE buffer, DWORD size, LPDWORD needed);
    DWORD SetDataEx(HANDLE handle, LPCWSTR key, LPCWSTR name, DWORD type, const BYTE* data, DWORD size);
    BOOL EnumPortList(DWORD level, LPBYTE buffer, DWORD size, LPDWORD needed, LPDWORD returned);
    BOOL XcvData(HANDLE handle, PCWSTR command, PBYTE output, DWORD outputSize, PDWORD needed, PDWORD status);

private:
    struct OpenHandle {
        std::wstring printer;  // empty for a port's transceiver
        ACCESS_MASK access = 0;
    };
    const OpenHandle* Find(HANDLE handle) const;
    FakePrinter* PrinterOf(HANDLE handle);
    HANDLE NewHandle(OpenHandle state);

    std::map<std::wstring, FakePrinter> m_printers;
    std::map<HANDLE, OpenHandle> m_handles;
    uintptr_t m_nextHandle = 0x1000;
    zx::DevicePlatform m_previous;
};

// Helpers for set-up and checks.
StoredValue NumberValue(DWORD number);
StoredValue TextValue(const std::wstring& text, bool withTerminator = true);
std::optional<DWORD> StoredNumber(const FakePrinter& printer, const std::wstring& name);
std::optional<std::wstring> StoredText(const FakePrinter& printer, const std::wstring& name);

}  // namespace zxtest
