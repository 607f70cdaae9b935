#include "tests/device/fake_spooler.h"

#include <cstring>
#include <stdexcept>

namespace zxtest {
namespace {

FakeSpooler* g_current = nullptr;

// Lays out a spooler block: fixed records first, their strings after them. Measures only when
// the caller's buffer is too small.
class BlockWriter {
public:
    BlockWriter(BYTE* buffer, DWORD size, size_t fixedSize) : m_buffer(buffer), m_size(size), m_used(fixedSize) {}
    LPWSTR Add(const std::wstring& text) {
        const size_t bytes = (text.size() + 1) * sizeof(wchar_t);
        const size_t offset = m_used;
        m_used += bytes;
        if (!Fits()) return nullptr;
        std::memcpy(m_buffer + offset, text.c_str(), bytes);
        return reinterpret_cast<LPWSTR>(m_buffer + offset);
    }
    bool Fits() const { return m_buffer != nullptr && m_used <= m_size; }
    DWORD Needed() const { return static_cast<DWORD>(m_used); }

private:
    BYTE* m_buffer;
    size_t m_size;
    size_t m_used;
};

template <typename Info>
BOOL FinishBlock(const BlockWriter& writer, const Info* records, size_t count, LPBYTE buffer, LPDWORD needed) {
    *needed = writer.Needed();
    if (!writer.Fits()) {
        ::SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    std::memcpy(buffer, records, count * sizeof(Info));
    return TRUE;
}

BOOL WINAPI TableOpenPrinter(LPWSTR name, LPHANDLE handle, LPPRINTER_DEFAULTSW defaults) {
    return FakeSpooler::Current().Open(name, handle, defaults);
}
BOOL WINAPI TableClosePrinter(HANDLE handle) { return FakeSpooler::Current().Close(handle); }
BOOL WINAPI TableGetPrinter(HANDLE handle, DWORD level, LPBYTE buffer, DWORD size, LPDWORD needed) {
    return FakeSpooler::Current().GetPrinterInfo(handle, level, buffer, size, needed);
}
BOOL WINAPI TableGetPrinterDriver(HANDLE handle, LPWSTR, DWORD level, LPBYTE buffer, DWORD size, LPDWORD needed) {
    return FakeSpooler::Current().GetDriverInfo(handle, level, buffer, size, needed);
}
DWORD WINAPI TableGetPrinterData(HANDLE handle, LPWSTR name, LPDWORD type, LPBYTE buffer, DWORD size,
                                 LPDWORD needed) {
    return FakeSpooler::Current().GetData(handle, name, type, buffer, size, needed);
}
DWORD WINAPI TableSetPrinterDataEx(HANDLE handle, LPCWSTR key, LPCWSTR name, DWORD type, LPBYTE data, DWORD size) {
    return FakeSpooler::Current().SetDataEx(handle, key, name, type, data, size);
}
BOOL WINAPI TableEnumPorts(LPWSTR, DWORD level, LPBYTE buffer, DWORD size, LPDWORD needed, LPDWORD returned) {
    return FakeSpooler::Current().EnumPortList(level, buffer, size, needed, returned);
}
BOOL WINAPI TableXcvData(HANDLE handle, PCWSTR command, PBYTE, DWORD, PBYTE output, DWORD outputSize, PDWORD needed,
                         PDWORD status) {
    return FakeSpooler::Current().XcvData(handle, command, output, outputSize, needed, status);
}
BOOL WINAPI TableGetVersionEx(LPOSVERSIONINFOW version) {
    version->dwMajorVersion = FakeSpooler::Current().majorVersion;
    version->dwMinorVersion = 0;
    return TRUE;
}

}  // namespace

FakeSpooler::FakeSpooler() {
    if (g_current != nullptr) throw std::logic_error("one fake spooler at a time");
    g_current = this;
    zx::DevicePlatform table = zx::RealPlatform();
    table.openPrinter = TableOpenPrinter;
    table.closePrinter = TableClosePrinter;
    table.getPrinter = TableGetPrinter;
    table.getPrinterDriver = TableGetPrinterDriver;
    table.getPrinterData = TableGetPrinterData;
    table.setPrinterDataEx = TableSetPrinterDataEx;
    table.enumPorts = TableEnumPorts;
    table.xcvData = TableXcvData;
    table.getVersionEx = TableGetVersionEx;
    m_previous = zx::ReplacePlatform(table);
}

FakeSpooler::~FakeSpooler() {
    zx::ReplacePlatform(m_previous);
    g_current = nullptr;
}

FakeSpooler& FakeSpooler::Current() { return *g_current; }

FakePrinter& FakeSpooler::AddPrinter(const std::wstring& name) {
    FakePrinter& printer = m_printers[name];
    printer.name = name;
    return printer;
}

HANDLE FakeSpooler::NewHandle(OpenHandle state) {
    const HANDLE handle = reinterpret_cast<HANDLE>(m_nextHandle += 4);
    m_handles[handle] = std::move(state);
    return handle;
}

HANDLE FakeSpooler::OpenRestricted(const std::wstring& name) { return NewHandle({name, PRINTER_ACCESS_USE}); }

const FakeSpooler::OpenHandle* FakeSpooler::Find(HANDLE handle) const {
    const auto found = m_handles.find(handle);
    return found == m_handles.end() ? nullptr : &found->second;
}

FakePrinter* FakeSpooler::PrinterOf(HANDLE handle) {
    const OpenHandle* state = Find(handle);
    if (state == nullptr) return nullptr;
    const auto found = m_printers.find(state->printer);
    return found == m_printers.end() ? nullptr : &found->second;
}

BOOL FakeSpooler::Open(LPWSTR name, LPHANDLE handle, LPPRINTER_DEFAULTSW defaults) {
    const std::wstring text = name ? name : L"";
    openedNames.push_back(text);
    constexpr wchar_t kXcvPort[] = L",XcvPort ";
    if (text.rfind(kXcvPort, 0) == 0) {
        *handle = NewHandle({L"", SERVER_ACCESS_ADMINISTER});
        return TRUE;
    }
    if (m_printers.count(text) == 0) {
        ::SetLastError(ERROR_INVALID_PRINTER_NAME);
        return FALSE;
    }
    *handle = NewHandle({text, defaults ? defaults->DesiredAccess : PRINTER_ACCESS_USE});
    return TRUE;
}

BOOL FakeSpooler::Close(HANDLE handle) { return m_handles.erase(handle) == 1; }

BOOL FakeSpooler::GetPrinterInfo(HANDLE handle, DWORD level, LPBYTE buffer, DWORD size, LPDWORD needed) {
    const FakePrinter* printer = PrinterOf(handle);
    if (printer == nullptr || level != 2) {
        ::SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    PRINTER_INFO_2W info{};
    BlockWriter writer(buffer, size, sizeof(info));
    info.pPrinterName = writer.Add(printer->name);
    info.pPortName = writer.Add(printer->portName);
    if (!printer->driverName.empty()) info.pDriverName = writer.Add(printer->driverName);
    return FinishBlock(writer, &info, 1, buffer, needed);
}

BOOL FakeSpooler::GetDriverInfo(HANDLE handle, DWORD level, LPBYTE buffer, DWORD size, LPDWORD needed) {
    const FakePrinter* printer = PrinterOf(handle);
    if (printer == nullptr || level != 2) {
        ::SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    DRIVER_INFO_2W info{};
    BlockWriter writer(buffer, size, sizeof(info));
    info.cVersion = 3;
    info.pName = writer.Add(printer->driverName);
    info.pDriverPath = writer.Add(printer->driverPath);
    return FinishBlock(writer, &info, 1, buffer, needed);
}

DWORD FakeSpooler::GetData(HANDLE handle, LPCWSTR name, LPDWORD type, LPBYTE buffer, DWORD size, LPDWORD needed) {
    const FakePrinter* printer = PrinterOf(handle);
    if (printer == nullptr) return ERROR_INVALID_HANDLE;
    const auto found = printer->data.find(name);
    if (found == printer->data.end()) return ERROR_FILE_NOT_FOUND;
    const StoredValue& value = found->second;
    *type = value.type;
    *needed = value.claimedSize.value_or(static_cast<DWORD>(value.bytes.size()));
    if (size < *needed) return ERROR_MORE_DATA;
    if (value.unreadable) return ERROR_INVALID_DATA;
    std::memcpy(buffer, value.bytes.data(), value.bytes.size() < size ? value.bytes.size() : size);
    return ERROR_SUCCESS;
}

DWORD FakeSpooler::SetDataEx(HANDLE handle, LPCWSTR key, LPCWSTR name, DWORD type, const BYTE* data, DWORD size) {
    const OpenHandle* state = Find(handle);
    FakePrinter* printer = PrinterOf(handle);
    if (printer == nullptr) return ERROR_INVALID_HANDLE;
    if (printer->refuseAllWrites || (state->access & PRINTER_ACCESS_ADMINISTER) == 0) {
        refusedWrites.push_back(name);
        return ERROR_ACCESS_DENIED;
    }
    if (std::wstring(key) != L"PrinterDriverData") return ERROR_INVALID_PARAMETER;
    printer->data[name] = StoredValue{type, std::vector<BYTE>(data, data + size), std::nullopt, false};
    return ERROR_SUCCESS;
}

BOOL FakeSpooler::EnumPortList(DWORD level, LPBYTE buffer, DWORD size, LPDWORD needed, LPDWORD returned) {
    ++enumPortsCalls;
    *returned = 0;
    if (level != 2) {
        ::SetLastError(ERROR_INVALID_LEVEL);
        return FALSE;
    }
    std::vector<PORT_INFO_2W> records(ports.size());
    BlockWriter writer(buffer, size, records.size() * sizeof(PORT_INFO_2W));
    for (size_t i = 0; i < ports.size(); ++i) {
        records[i].pPortName = writer.Add(ports[i].name);
        records[i].pDescription = writer.Add(ports[i].description);
    }
    if (!FinishBlock(writer, records.data(), records.size(), buffer, needed)) return FALSE;
    *returned = static_cast<DWORD>(records.size());
    return TRUE;
}

BOOL FakeSpooler::XcvData(HANDLE handle, PCWSTR command, PBYTE output, DWORD outputSize, PDWORD needed,
                          PDWORD status) {
    XcvCall call{command, outputSize, L""};
    if (output != nullptr && outputSize >= sizeof(zx::PortConfiguration)) {
        const auto* config = reinterpret_cast<const zx::PortConfiguration*>(output);
        call.prefilledPortName.assign(config->portName, ::wcsnlen(config->portName, 64));
    }
    xcvCalls.push_back(call);
    if (Find(handle) == nullptr || xcvAnswers.empty()) return FALSE;
    const XcvAnswer answer = xcvAnswers.front();
    xcvAnswers.pop_front();
    if (!answer.succeeds) return FALSE;
    *status = answer.status;
    *needed = answer.needed;
    if (answer.status == ERROR_SUCCESS && output != nullptr) {
        std::memcpy(output, &answer.config, outputSize < sizeof(answer.config) ? outputSize : sizeof(answer.config));
    }
    return TRUE;
}

StoredValue NumberValue(DWORD number) {
    const BYTE* bytes = reinterpret_cast<const BYTE*>(&number);
    return StoredValue{REG_DWORD, std::vector<BYTE>(bytes, bytes + sizeof(number)), std::nullopt, false};
}

StoredValue TextValue(const std::wstring& text, bool withTerminator) {
    const BYTE* bytes = reinterpret_cast<const BYTE*>(text.c_str());
    const size_t size = (text.size() + (withTerminator ? 1 : 0)) * sizeof(wchar_t);
    return StoredValue{REG_SZ, std::vector<BYTE>(bytes, bytes + size), std::nullopt, false};
}

std::optional<DWORD> StoredNumber(const FakePrinter& printer, const std::wstring& name) {
    const auto found = printer.data.find(name);
    if (found == printer.data.end() || found->second.type != REG_DWORD || found->second.bytes.size() != 4) {
        return std::nullopt;
    }
    DWORD number = 0;
    std::memcpy(&number, found->second.bytes.data(), sizeof(number));
    return number;
}

std::optional<std::wstring> StoredText(const FakePrinter& printer, const std::wstring& name) {
    const auto found = printer.data.find(name);
    if (found == printer.data.end() || found->second.type != REG_SZ) return std::nullopt;
    const auto& bytes = found->second.bytes;
    return std::wstring(reinterpret_cast<const wchar_t*>(bytes.data()), bytes.size() / sizeof(wchar_t));
}

}  // namespace zxtest
