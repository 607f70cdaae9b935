#include "tests/device/fake_spooler.h"

#include <cstring>
#include <new>

namespace zxtest {
namespace {

FakeSpooler* g_spooler = nullptr;
uintptr_t g_nextHandle = 0x1000;
HANDLE g_transceiver = reinterpret_cast<HANDLE>(0xC0DE);

HANDLE NewHandle(ACCESS_MASK access) {
    const HANDLE handle = reinterpret_cast<HANDLE>(g_nextHandle += 4);
    Spooler().handles[handle] = access;
    return handle;
}

bool IsPrinter(HANDLE handle) { return Spooler().handles.count(handle) == 1; }

// Lays out a spooler block: fixed records first, their strings after them; measures only when
// the caller's buffer is too small.
class BlockWriter {
public:
    BlockWriter(BYTE* buffer, DWORD size, size_t fixedSize) : m_buffer(buffer), m_size(size), m_used(fixedSize) {}
    LPBYTE AddBytes(const void* data, size_t bytes) {
        const size_t offset = m_used;
        m_used += bytes;
        if (bytes == 0 || !Fits()) return nullptr;
        std::memcpy(m_buffer + offset, data, bytes);
        return m_buffer + offset;
    }
    LPWSTR Add(const std::wstring& text) {  // an empty text takes its terminator's room, and is null
        const size_t bytes = (text.size() + 1) * sizeof(wchar_t);
        return text.empty() ? (m_used += bytes, nullptr) : reinterpret_cast<LPWSTR>(AddBytes(text.c_str(), bytes));
    }
    template <typename Info>
    BOOL Finish(const Info* records, size_t count, LPDWORD needed) {
        *needed = static_cast<DWORD>(m_used);
        if (!Fits()) {
            ::SetLastError(ERROR_INSUFFICIENT_BUFFER);
            return FALSE;
        }
        std::memcpy(m_buffer, records, count * sizeof(Info));
        return TRUE;
    }

private:
    bool Fits() const { return m_buffer != nullptr && m_used <= m_size; }
    BYTE* m_buffer;
    size_t m_size, m_used;
};

BOOL WINAPI FakeOpenPrinter(LPWSTR name, LPHANDLE handle, LPPRINTER_DEFAULTSW defaults) {
    const std::wstring text = name ? name : L"";
    Spooler().openedNames.push_back(text);
    if (text.rfind(L",XcvPort ", 0) == 0) return *handle = g_transceiver, TRUE;
    if (text != L"P") return ::SetLastError(ERROR_INVALID_PRINTER_NAME), FALSE;
    *handle = NewHandle(defaults ? defaults->DesiredAccess : PRINTER_ACCESS_USE);
    return TRUE;
}

BOOL WINAPI FakeClosePrinter(HANDLE handle) { return handle == g_transceiver || Spooler().handles.erase(handle) == 1; }

BOOL WINAPI FakeGetPrinter(HANDLE handle, DWORD level, LPBYTE buffer, DWORD size, LPDWORD needed) {
    if (!IsPrinter(handle) || level != 2) return ::SetLastError(ERROR_INVALID_HANDLE), FALSE;
    PRINTER_INFO_2W info{};
    BlockWriter writer(buffer, size, sizeof(info));
    info.pPrinterName = writer.Add(L"P");
    info.pPortName = Spooler().portNameOutsideBlock ? const_cast<LPWSTR>(Spooler().portNameOutsideBlock)
                                                    : writer.Add(Spooler().portName);
    info.pDriverName = writer.Add(Spooler().driverName);
    return writer.Finish(&info, 1, needed);
}

BOOL WINAPI FakeGetPrinterDriver(HANDLE handle, LPWSTR, DWORD level, LPBYTE buffer, DWORD size, LPDWORD needed) {
    if (!IsPrinter(handle) || level != 2) return ::SetLastError(ERROR_INVALID_HANDLE), FALSE;
    DRIVER_INFO_2W info{};
    BlockWriter writer(buffer, size, sizeof(info));
    info.pDriverPath = writer.Add(Spooler().driverPath);
    return writer.Finish(&info, 1, needed);
}

DWORD WINAPI FakeGetPrinterData(HANDLE handle, LPWSTR name, LPDWORD type, LPBYTE buffer, DWORD size, LPDWORD needed) {
    if (!IsPrinter(handle)) return ERROR_INVALID_HANDLE;
    ++Spooler().dataReads;
    if (Spooler().readsRunOutOfMemory) throw std::bad_alloc();
    const auto found = Spooler().data.find(name);
    if (found == Spooler().data.end()) return ERROR_FILE_NOT_FOUND;
    const StoredValue& value = found->second;
    *type = value.type;
    *needed = value.claimedSize.value_or(static_cast<DWORD>(value.bytes.size()));
    if (size < *needed) return ERROR_MORE_DATA;
    if (value.unreadable) return ERROR_INVALID_DATA;
    std::memcpy(buffer, value.bytes.data(), value.bytes.size() < size ? value.bytes.size() : size);
    return ERROR_SUCCESS;
}

DWORD WINAPI FakeSetPrinterDataEx(HANDLE handle, LPCWSTR key, LPCWSTR name, DWORD type, LPBYTE data, DWORD size) {
    if (!IsPrinter(handle) || std::wstring(key) != L"PrinterDriverData") return ERROR_INVALID_PARAMETER;
    if (Spooler().refuseAllWrites || (Spooler().handles[handle] & PRINTER_ACCESS_ADMINISTER) == 0) {
        Spooler().refusedWrites.push_back(name);
        return ERROR_ACCESS_DENIED;
    }
    Spooler().data[name] = StoredValue{type, std::vector<BYTE>(data, data + size)};
    return ERROR_SUCCESS;
}

DWORD WINAPI FakeEnumPrinterDataEx(HANDLE handle, LPCWSTR key, LPBYTE buffer, DWORD size, LPDWORD needed,
                                   LPDWORD returned) {
    if (!IsPrinter(handle) || !Spooler().listsValues) return ERROR_INVALID_FUNCTION;
    ++Spooler().dataReads;
    if (Spooler().readsRunOutOfMemory) throw std::bad_alloc();
    const auto& data = Spooler().data;
    // The key comes with its first value.
    if (std::wstring(key) != L"PrinterDriverData" || data.empty()) return ERROR_FILE_NOT_FOUND;
    std::vector<PRINTER_ENUM_VALUESW> records;
    BlockWriter writer(buffer, size, data.size() * sizeof(PRINTER_ENUM_VALUESW));
    for (const auto& [name, value] : data) {
        PRINTER_ENUM_VALUESW record{};
        record.pValueName = writer.Add(name);
        record.cbValueName = static_cast<DWORD>((name.size() + 1) * sizeof(wchar_t));
        record.dwType = value.type;
        record.pData = writer.AddBytes(value.bytes.data(), value.bytes.size());
        record.cbData = static_cast<DWORD>(value.bytes.size());
        records.push_back(record);
    }
    *returned = static_cast<DWORD>(records.size());
    return writer.Finish(records.data(), records.size(), needed) ? ERROR_SUCCESS : ERROR_MORE_DATA;
}

BOOL WINAPI FakeEnumPorts(LPWSTR, DWORD level, LPBYTE buffer, DWORD size, LPDWORD needed, LPDWORD returned) {
    const auto& ports = Spooler().ports;
    ++Spooler().portListings;
    std::vector<PORT_INFO_2W> records(ports.size());
    BlockWriter writer(buffer, size, records.size() * sizeof(PORT_INFO_2W));
    for (size_t i = 0; i < ports.size(); ++i) {
        records[i].pPortName = writer.Add(ports[i].first);
        records[i].pDescription = writer.Add(ports[i].second);
    }
    *returned = level == 2 ? static_cast<DWORD>(records.size()) : 0;
    return level == 2 && writer.Finish(records.data(), records.size(), needed);
}

BOOL WINAPI FakeXcvData(HANDLE handle, PCWSTR command, PBYTE, DWORD, PBYTE output, DWORD outputSize, PDWORD needed,
                        PDWORD status) {
    auto& spooler = Spooler();
    spooler.xcvOutputSizes.push_back(outputSize);
    const auto* config = reinterpret_cast<const zx::PortConfiguration*>(output);
    spooler.xcvPortNames.emplace_back(config->portName, ::wcsnlen(config->portName, 64));
    if (handle != g_transceiver || std::wstring(command) != L"GetConfigInfo" || spooler.xcvAnswers.empty())
        return FALSE;
    const XcvAnswer answer = spooler.xcvAnswers.front();
    spooler.xcvAnswers.pop_front();
    *status = answer.status;
    *needed = answer.needed;
    if (answer.status == ERROR_SUCCESS) std::memcpy(output, &answer.config, std::min<size_t>(outputSize, 964));
    return answer.succeeds;
}

bool FakeOsVersion(RTL_OSVERSIONINFOW* version) {
    version->dwMajorVersion = Spooler().majorVersion;
    return true;
}

}  // namespace

FakeSpooler& Spooler() { return *g_spooler; }

FakeSpooler::FakeSpooler() {
    g_spooler = this;
    zx::SpoolerPlatform table = zx::RealSpoolerPlatform();
    table.openPrinter = FakeOpenPrinter;
    table.closePrinter = FakeClosePrinter;
    table.getPrinter = FakeGetPrinter;
    table.getPrinterDriver = FakeGetPrinterDriver;
    table.getPrinterData = FakeGetPrinterData;
    table.enumPrinterDataEx = FakeEnumPrinterDataEx;
    table.setPrinterDataEx = FakeSetPrinterDataEx;
    table.enumPorts = FakeEnumPorts;
    table.xcvData = FakeXcvData;
    m_previousSpooler = zx::ReplaceSpoolerPlatform(table);
    zx::ResourcePlatform resources = zx::CurrentResourcePlatform();
    resources.osVersion = FakeOsVersion;
    m_previousResources = zx::ReplaceResourcePlatform(resources);
}

FakeSpooler::~FakeSpooler() {
    zx::ReplaceResourcePlatform(m_previousResources);
    zx::ReplaceSpoolerPlatform(m_previousSpooler);
    g_spooler = nullptr;
}

HANDLE FakeSpooler::OpenRestricted() { return NewHandle(PRINTER_ACCESS_USE); }

std::optional<DWORD> FakeSpooler::Number(const std::wstring& name) const {
    const auto found = data.find(name);
    if (found == data.end() || found->second.type != REG_DWORD || found->second.bytes.size() != 4) return std::nullopt;
    DWORD number = 0;
    std::memcpy(&number, found->second.bytes.data(), sizeof(number));
    return number;
}

std::optional<std::wstring> FakeSpooler::Text(const std::wstring& name) const {
    const auto found = data.find(name);
    if (found == data.end() || found->second.type != REG_SZ) return std::nullopt;
    const auto& bytes = found->second.bytes;
    return std::wstring(reinterpret_cast<const wchar_t*>(bytes.data()), bytes.size() / sizeof(wchar_t));
}

StoredValue NumberValue(DWORD number) {
    const BYTE* bytes = reinterpret_cast<const BYTE*>(&number);
    return StoredValue{REG_DWORD, std::vector<BYTE>(bytes, bytes + sizeof(number))};
}

StoredValue TextValue(const std::wstring& text, bool withTerminator) {
    const BYTE* bytes = reinterpret_cast<const BYTE*>(text.c_str());
    return StoredValue{REG_SZ, std::vector<BYTE>(bytes, bytes + (text.size() + withTerminator) * sizeof(wchar_t))};
}

}  // namespace zxtest
