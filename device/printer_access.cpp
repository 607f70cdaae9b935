#include "device/printer_access.h"

#include <algorithm>
#include <iterator>
#include <cstring>
#include <cwchar>
#include <optional>

namespace {

constexpr wchar_t kDriverDataKey[] = L"PrinterDriverData";
static_assert(PRINTER_ALL_ACCESS == 0xF000C);

// Text values beyond this size are taken for a lie of the store.
constexpr DWORD kMaxTextValueBytes = 1024 * 1024;

// The bytes that a VARIANT is stored as.
struct StoredForm {
    DWORD type = REG_NONE;
    const BYTE* data = nullptr;
    DWORD size = 0;
    DWORD number = 0;  // the data of a REG_DWORD
};

std::optional<StoredForm> StoredFormOf(const VARIANT& value) {
    StoredForm form;
    switch (value.vt) {
    case VT_BSTR: {
        if (value.bstrVal == nullptr) return std::nullopt;
        const UINT length = ::SysStringLen(value.bstrVal);
        if (length > kMaxTextValueBytes / sizeof(wchar_t)) return std::nullopt;
        form.type = REG_SZ;
        form.data = reinterpret_cast<const BYTE*>(value.bstrVal);
        form.size = length * sizeof(wchar_t);
        return form;
    }
    case VT_BOOL:
        form.type = REG_DWORD;
        form.number = static_cast<USHORT>(value.boolVal);
        form.size = sizeof(form.number);
        return form;
    default: return std::nullopt;
    }
}

DWORD StoreValue(HANDLE printer, const wchar_t* name, const StoredForm& form) {
    const BYTE* data = form.type == REG_DWORD ? reinterpret_cast<const BYTE*>(&form.number) : form.data;
    return zx::CurrentSpoolerPlatform().setPrinterDataEx(printer, kDriverDataKey, name, form.type,
                                                         const_cast<BYTE*>(data), form.size);
}

}  // namespace

bool IsPluginDriverDataValue(const std::wstring& name) noexcept {
    return std::any_of(std::begin(kPluginDriverDataValues), std::end(kPluginDriverDataValues),
                       [&name](const wchar_t* own) { return ::_wcsicmp(name.c_str(), own) == 0; });
}

VPrinterAccess::VPrinterAccess(const wchar_t* printerName, HANDLE printer)
    : m_printer(printer), m_printerName(printerName ? printerName : L"") {
    if (m_printer == nullptr) {
        m_ownedPrinter = OpenWithFullAccess();
        m_printer = m_ownedPrinter.get();
    }
}

zx::unique_spooler_handle VPrinterAccess::OpenWithFullAccess() const {
    PRINTER_DEFAULTSW defaults{nullptr, nullptr, PRINTER_ALL_ACCESS};
    return zx::OpenPrinterThroughPlatform(m_printerName.c_str(), &defaults);
}

// A value that fits a small buffer is read with one call; the others are measured first.
VPrinterAccess::ValueRead VPrinterAccess::ReadValue(const wchar_t* name, zx::unique_variant& value) {
    value.reset();
    DWORD type = REG_NONE, needed = 0;
    BYTE small[kSmallValueBytes] = {};
    if (zx::CurrentSpoolerPlatform().getPrinterData(m_printer, const_cast<LPWSTR>(name), &type, small, sizeof(small),
                                                    &needed) == ERROR_SUCCESS &&
        needed != 0 && needed <= sizeof(small)) {
        return ValueFromData(type, small, needed, value);
    }
    if (zx::CurrentSpoolerPlatform().getPrinterData(m_printer, const_cast<LPWSTR>(name), &type, nullptr, 0, &needed) !=
        ERROR_MORE_DATA) {
        return ValueRead::Missing;
    }
    switch (type) {
    case REG_SZ: return ReadText(name, needed, value);
    case REG_DWORD: return ReadNumber(name, value);
    default: return ValueRead::Read;
    }
}

// As ReadText and ReadNumber would read the same bytes: text up to its first null within them,
// a number of at most four bytes.
VPrinterAccess::ValueRead VPrinterAccess::ValueFromData(DWORD type, const BYTE* data, DWORD size,
                                                        zx::unique_variant& value) {
    VARIANT* out = value.get();
    switch (type) {
    case REG_SZ: {
        const auto* text = reinterpret_cast<const wchar_t*>(data);
        const std::wstring copy(text, ::wcsnlen(text, size / sizeof(wchar_t)));
        out->bstrVal = zx::MakeBstr(copy.c_str()).release();
        out->vt = VT_BSTR;
        return ValueRead::Read;
    }
    case REG_DWORD: {
        if (size > sizeof(DWORD)) return ValueRead::Failed;
        DWORD number = 0;
        std::memcpy(&number, data, size);
        out->vt = VT_BOOL;
        out->boolVal = static_cast<VARIANT_BOOL>(number & 0xFFFF);
        return ValueRead::Read;
    }
    default: return ValueRead::Read;
    }
}

// The store need not keep a terminating null; the extra zeroed character supplies one.
VPrinterAccess::ValueRead VPrinterAccess::ReadText(const wchar_t* name, DWORD size, zx::unique_variant& value) const {
    if (size > kMaxTextValueBytes) return ValueRead::Failed;
    std::vector<wchar_t> text(size / sizeof(wchar_t) + 1, L'\0');
    DWORD type = REG_NONE, needed = 0;
    if (zx::CurrentSpoolerPlatform().getPrinterData(m_printer, const_cast<LPWSTR>(name), &type,
                                                    reinterpret_cast<BYTE*>(text.data()), size,
                                                    &needed) != ERROR_SUCCESS) {
        return ValueRead::Failed;
    }
    text.back() = L'\0';
    VARIANT* out = value.get();
    out->bstrVal = zx::MakeBstr(text.data()).release();
    out->vt = VT_BSTR;
    return ValueRead::Read;
}

VPrinterAccess::ValueRead VPrinterAccess::ReadNumber(const wchar_t* name, zx::unique_variant& value) const {
    DWORD number = 0, type = REG_NONE, needed = 0;
    if (zx::CurrentSpoolerPlatform().getPrinterData(m_printer, const_cast<LPWSTR>(name), &type,
                                                    reinterpret_cast<BYTE*>(&number), sizeof(number),
                                                    &needed) != ERROR_SUCCESS) {
        return ValueRead::Failed;
    }
    VARIANT* out = value.get();
    out->vt = VT_BOOL;
    out->boolVal = static_cast<VARIANT_BOOL>(number & 0xFFFF);
    return ValueRead::Read;
}

bool VPrinterAccess::WriteValue(const wchar_t* name, const VARIANT& value) {
    const std::optional<StoredForm> form = StoredFormOf(value);
    if (!form) return false;
    if (StoreValue(m_printer, name, *form) == ERROR_SUCCESS) return true;
    // The caller's handle may have been opened without the right to change the printer.
    const zx::unique_spooler_handle second = OpenWithFullAccess();
    return second && StoreValue(second.get(), name, *form) == ERROR_SUCCESS;
}

bool VPrinterAccess::WriteNumber(const wchar_t* name, int16_t number) {
    VARIANT value;
    value.vt = VT_BOOL;
    value.boolVal = number;
    return WriteValue(name, value);
}

bool VPrinterAccess::WriteText(const wchar_t* name, const std::wstring& text) {
    const zx::unique_bstr copy = zx::MakeBstr(text.data(), static_cast<UINT>(text.size()));
    VARIANT value;
    value.vt = VT_BSTR;
    value.bstrVal = copy.get();
    return WriteValue(name, value);
}

const PRINTER_INFO_2W* VPrinterAccess::GetPrinterInfo() {
    m_printerInfo.clear();
    if (m_printer == INVALID_HANDLE_VALUE) return nullptr;
    m_printerInfo = zx::QuerySpoolerBlock(
        [this](BYTE* buffer, DWORD size, DWORD* needed) {
            return zx::CurrentSpoolerPlatform().getPrinter(m_printer, 2, buffer, size, needed);
        },
        sizeof(PRINTER_INFO_2W));
    if (m_printerInfo.empty()) return nullptr;
    const auto* info = reinterpret_cast<const PRINTER_INFO_2W*>(m_printerInfo.data());
    return info->pDriverName != nullptr ? info : nullptr;
}

// The spooler creates the driver-data key with its first value: a key it does not find, or one
// it lists empty, holds nothing that a read of its own would find.
VStoredValues::VStoredValues(VPrinterAccess& printer) : m_printer(printer) {
    DWORD count = 0;
    DWORD result = ERROR_SUCCESS;
    m_listed = zx::QuerySpoolerBlock(
        [&printer, &count, &result](BYTE* buffer, DWORD size, DWORD* needed) {
            result = zx::CurrentSpoolerPlatform().enumPrinterDataEx(printer.PrinterHandle(), kDriverDataKey, buffer,
                                                                    size, needed, &count);
            return result == ERROR_SUCCESS;
        },
        0);
    m_count = count;
    if (m_count > m_listed.size() / sizeof(PRINTER_ENUM_VALUESW)) m_listed.clear();  // a count that lies
    m_nothingStored =
        m_listed.empty() && (result == ERROR_FILE_NOT_FOUND || (result == ERROR_SUCCESS && count == 0));
}

// Names compare without regard to case, as the store's do; a value listed without bytes reads as
// missing, as it does on its own.
VPrinterAccess::ValueRead VStoredValues::Read(const wchar_t* name, zx::unique_variant& value) const {
    value.reset();
    if (m_nothingStored) return VPrinterAccess::ValueRead::Missing;
    if (m_listed.empty()) return m_printer.ReadValue(name, value);
    const auto* values = reinterpret_cast<const PRINTER_ENUM_VALUESW*>(m_listed.data());
    for (DWORD index = 0; index < m_count; ++index) {
        const PRINTER_ENUM_VALUESW& listed = values[index];
        const std::wstring valueName(zx::TextInBlock(m_listed, listed.pValueName));
        if (::_wcsicmp(valueName.c_str(), name) != 0) continue;
        const BYTE* data = listed.pData;
        const bool inBlock = data >= m_listed.data() && listed.cbData <= m_listed.size() &&
                             data <= m_listed.data() + m_listed.size() - listed.cbData;
        if (listed.cbData == 0) return VPrinterAccess::ValueRead::Missing;
        if (!inBlock || (listed.dwType == REG_SZ && listed.cbData > kMaxTextValueBytes)) {
            return VPrinterAccess::ValueRead::Failed;
        }
        return VPrinterAccess::ValueFromData(listed.dwType, data, listed.cbData, value);
    }
    return VPrinterAccess::ValueRead::Missing;
}
