#include "tests/shortcuts/shortcut_bed.h"

#include "shortcuts/shortcut_store.h"

#include <gtest/gtest.h>

namespace zxtest {
namespace {

SpoolerSeam* g_seam = nullptr;

BOOL WINAPI SeamOpenPrinter(LPWSTR name, LPHANDLE handle, LPPRINTER_DEFAULTSW defaults) {
    const ACCESS_MASK access = defaults != nullptr ? defaults->DesiredAccess : 0;
    if (g_seam->restricted && access == PRINTER_ALL_ACCESS) {
        ::SetLastError(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    if (!zx::RealSpoolerPlatform().openPrinter(name, handle, defaults)) return FALSE;
    g_seam->openedWith.push_back(access);
    ++g_seam->openHandles;
    return TRUE;
}

BOOL WINAPI SeamClosePrinter(HANDLE printer) {
    --g_seam->openHandles;
    return zx::RealSpoolerPlatform().closePrinter(printer);
}

DWORD WINAPI SeamDeletePrinterDataEx(HANDLE, LPCWSTR key, LPCWSTR name) {
    g_seam->deletedPrinterData.push_back(name);
    return static_cast<DWORD>(
        ::RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, (ShortcutPrinterKey() + L"\\" + key).c_str(), name));
}

DWORD WINAPI SeamSetPrinterDataEx(HANDLE printer, LPCWSTR key, LPCWSTR name, DWORD type, LPBYTE data, DWORD size) {
    g_seam->printerDataWrites.push_back({name, type, size});
    return zx::RealSpoolerPlatform().setPrinterDataEx(printer, key, name, type, data, size);
}

HRESULT WINAPI SeamCoCreateGuid(GUID* guid) {
    if (!g_seam->nextGuid) return zx::RealSpoolerPlatform().coCreateGuid(guid);
    *guid = *g_seam->nextGuid;
    return S_OK;
}

}  // namespace

std::wstring ShortcutPrinterKey() {
    return std::wstring(L"System\\CurrentControlSet\\Control\\Print\\Printers\\") + kShortcutPrinter;
}

void ClearStoredShortcuts(const std::wstring& userKey) {
    ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, (ShortcutPrinterKey() + L"\\" + zx::kShortcutDataKey).c_str());
    ::RegDeleteTreeW(HKEY_CURRENT_USER, userKey.c_str());
}

void ClearShortcutStorage() {
    ClearStoredShortcuts(L"Software\\Velmora");
    ::RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, (ShortcutPrinterKey() + L"\\PrinterDriverData").c_str(), L"PrinterGUID");
}

std::optional<StoredData> PrinterDataValue(const wchar_t* key, const std::wstring& name) {
    std::wstring printerName = kShortcutPrinter;
    zx::unique_printer printer;
    if (!::OpenPrinterW(printerName.data(), printer.put(), nullptr)) return std::nullopt;
    StoredData value;
    value.bytes.resize(4096);
    DWORD needed = 0;
    if (::GetPrinterDataExW(printer.get(), key, name.c_str(), &value.type, value.bytes.data(),
                            static_cast<DWORD>(value.bytes.size()), &needed) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    value.bytes.resize(needed);
    return value;
}

std::optional<StoredData> PrinterShortcutValue(const std::wstring& name) {
    return PrinterDataValue(zx::kShortcutDataKey, name);
}

std::optional<DWORD> PrinterDataNumber(const wchar_t* key, const std::wstring& name) {
    const std::optional<StoredData> value = PrinterDataValue(key, name);
    if (!value || value->type != REG_DWORD || value->bytes.size() != sizeof(DWORD)) return std::nullopt;
    return *reinterpret_cast<const DWORD*>(value->bytes.data());
}

std::optional<std::wstring> PrinterGuidValue() {
    const std::optional<StoredData> value = PrinterDataValue(L"PrinterDriverData", L"PrinterGUID");
    if (!value) return std::nullopt;
    return value->Text();
}

void WritePrinterValue(const std::wstring& name, DWORD type, const void* data, DWORD size) {
    std::wstring printerName = kShortcutPrinter;
    PRINTER_DEFAULTSW defaults{nullptr, nullptr, PRINTER_ALL_ACCESS};
    zx::unique_printer printer;
    ASSERT_TRUE(::OpenPrinterW(printerName.data(), printer.put(), &defaults));
    ASSERT_EQ(ERROR_SUCCESS, ::SetPrinterDataExW(printer.get(), zx::kShortcutDataKey, name.c_str(), type,
                                                 static_cast<BYTE*>(const_cast<void*>(data)), size));
}

void WritePrinterText(const std::wstring& name, const std::wstring& text) {
    WritePrinterValue(name, REG_SZ, text.data(), static_cast<DWORD>(text.size() * sizeof(wchar_t)));
}

void WriteUserValue(const std::wstring& keyPath, const std::wstring& name, DWORD type, const void* data, DWORD size) {
    ASSERT_EQ(ERROR_SUCCESS, ::RegSetKeyValueW(HKEY_CURRENT_USER, keyPath.c_str(), name.c_str(), type, data, size));
}

SpoolerSeam::SpoolerSeam() {
    g_seam = this;
    zx::SpoolerPlatform table = zx::RealSpoolerPlatform();
    table.openPrinter = SeamOpenPrinter;
    table.closePrinter = SeamClosePrinter;
    table.deletePrinterDataEx = SeamDeletePrinterDataEx;
    table.setPrinterDataEx = SeamSetPrinterDataEx;
    table.coCreateGuid = SeamCoCreateGuid;
    m_previous = zx::ReplaceSpoolerPlatform(table);
}

SpoolerSeam::~SpoolerSeam() {
    zx::ReplaceSpoolerPlatform(m_previous);
    g_seam = nullptr;
}

std::vector<std::wstring> NamesOf(const std::vector<PrintShortcutRecord>& records) {
    std::vector<std::wstring> names;
    for (const PrintShortcutRecord& record : records) names.emplace_back(record.Name());
    return names;
}

}  // namespace zxtest
