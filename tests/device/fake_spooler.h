// An in-memory spooler with one printer, "P", put in place of the real one for the length of a
// test: its driver data, handles with or without the right to change it, a port list and a port
// monitor that answers from a script; also the system version, which it puts in the resource
// platform.
#pragma once

#include "device/transceiver_records.h"
#include "resources/resource_libraries.h"
#include "util/spooler_platform.h"

#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace zxtest {

struct StoredValue {
    StoredValue(DWORD type = REG_NONE, std::vector<BYTE> bytes = {}) : type(type), bytes(std::move(bytes)) {}
    DWORD type;
    std::vector<BYTE> bytes;
    std::optional<DWORD> claimedSize;  // a size the store reports instead of the real one
    bool unreadable = false;           // the size query works, the read fails
};
StoredValue NumberValue(DWORD number);
StoredValue TextValue(const std::wstring& text, bool withTerminator = true);

struct CaseInsensitiveLess {
    bool operator()(const std::wstring& a, const std::wstring& b) const { return _wcsicmp(a.c_str(), b.c_str()) < 0; }
};

// One answer of the port monitor to "GetConfigInfo".
struct XcvAnswer {
    BOOL succeeds = TRUE;
    DWORD status = ERROR_SUCCESS;
    DWORD needed = sizeof(zx::PortConfiguration);
    zx::PortConfiguration config{};
};

class FakeSpooler {
public:
    FakeSpooler();
    ~FakeSpooler();
    FakeSpooler(const FakeSpooler&) = delete;
    FakeSpooler& operator=(const FakeSpooler&) = delete;

    // The printer.
    std::wstring portName = L"USB001";
    const wchar_t* portNameOutsideBlock = nullptr;  // a port name the printer information points to elsewhere
    std::wstring driverName = L"ZX Inkjet Simulator Driver";
    std::wstring driverPath = L"C:\\drivers\\zxcoresim.dll";
    std::map<std::wstring, StoredValue, CaseInsensitiveLess> data;  // under "PrinterDriverData"
    bool refuseAllWrites = false;
    bool readsRunOutOfMemory = false;  // reading driver data throws std::bad_alloc
    bool listsValues = true;           // EnumPrinterDataExW answers
    // A handle as a caller without the right to change the printer holds it.
    HANDLE OpenRestricted();

    std::vector<std::pair<std::wstring, std::wstring>> ports;  // name, description
    std::deque<XcvAnswer> xcvAnswers;                          // none left: the call fails
    DWORD majorVersion = 10;

    // What the code did.
    std::vector<std::wstring> openedNames;
    int dataReads = 0;  // GetPrinterDataW and EnumPrinterDataExW calls
    int portListings = 0;
    std::vector<std::wstring> refusedWrites;
    std::vector<DWORD> xcvOutputSizes;
    std::vector<std::wstring> xcvPortNames;  // what the caller put in the output's port-name field
    std::map<HANDLE, ACCESS_MASK> handles;   // open, with their access

    std::optional<DWORD> Number(const std::wstring& name) const;
    std::optional<std::wstring> Text(const std::wstring& name) const;

private:
    zx::SpoolerPlatform m_previousSpooler;
    zx::ResourcePlatform m_previousResources;
};

FakeSpooler& Spooler();

}  // namespace zxtest
