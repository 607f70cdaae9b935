#include "shortcuts/shortcut_store.h"

#include "shortcuts/shortcut_text.h"
#include "util/spooler_platform.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <span>
#include <string_view>

namespace {

using zx::CurrentSpoolerPlatform;

constexpr wchar_t kDriverDataKey[] = L"PrinterDriverData";
constexpr wchar_t kPrinterGuidValue[] = L"PrinterGUID";
constexpr wchar_t kUserKeyRoot[] = L"Software\\Velmora\\";
constexpr ACCESS_MASK kReadAccess = PRINTER_READ;  // PRINTER_ACCESS_USE with read control
// Registry value names and texts are read into buffers of 260 characters.
constexpr DWORD kValueNameLength = 260;
constexpr DWORD kValueDataSize = 520;
// Enumeration of the per-user key stops here whatever the registry says.
constexpr DWORD kMaxUserValues = 1 << 16;

zx::unique_spooler_handle OpenPrinterFor(const std::wstring& printerName, ACCESS_MASK access) noexcept {
    PRINTER_DEFAULTSW defaults{nullptr, nullptr, access};
    zx::unique_spooler_handle printer = zx::OpenPrinterThroughPlatform(printerName.c_str(), &defaults);
    if (printer) ::OutputDebugStringW(L"OpenPrinter succeeded...\n");
    return printer;
}

// One of the two places that hold the values; the operations answer Win32 error codes.
class StoragePlace {
public:
    virtual DWORD Query(const wchar_t* name, DWORD& type, BYTE* data, DWORD& size) const = 0;
    virtual DWORD Set(const wchar_t* name, DWORD type, const BYTE* data, DWORD size) const = 0;
    virtual DWORD Delete(const wchar_t* name) const = 0;

protected:
    ~StoragePlace() = default;
};

class PrinterDataPlace final : public StoragePlace {
public:
    explicit PrinterDataPlace(zx::unique_spooler_handle printer) noexcept : m_printer(std::move(printer)) {}
    DWORD Query(const wchar_t* name, DWORD& type, BYTE* data, DWORD& size) const override {
        return CurrentSpoolerPlatform().getPrinterDataEx(m_printer.get(), zx::kShortcutDataKey, name, &type, data,
                                                         size, &size);
    }
    DWORD Set(const wchar_t* name, DWORD type, const BYTE* data, DWORD size) const override {
        return CurrentSpoolerPlatform().setPrinterDataEx(m_printer.get(), zx::kShortcutDataKey, name, type,
                                                         const_cast<BYTE*>(data), size);
    }
    DWORD Delete(const wchar_t* name) const override {
        return CurrentSpoolerPlatform().deletePrinterDataEx(m_printer.get(), zx::kShortcutDataKey, name);
    }

private:
    zx::unique_spooler_handle m_printer;
};

class UserKeyPlace final : public StoragePlace {
public:
    explicit UserKeyPlace(zx::unique_platform_key key) noexcept : m_key(std::move(key)) {}
    DWORD Query(const wchar_t* name, DWORD& type, BYTE* data, DWORD& size) const override {
        return CurrentSpoolerPlatform().regQueryValueEx(m_key.get(), name, nullptr, &type, data, &size);
    }
    DWORD Set(const wchar_t* name, DWORD type, const BYTE* data, DWORD size) const override {
        return CurrentSpoolerPlatform().regSetValueEx(m_key.get(), name, 0, type, data, size);
    }
    DWORD Delete(const wchar_t* name) const override {
        return CurrentSpoolerPlatform().regDeleteValue(m_key.get(), name);
    }

private:
    zx::unique_platform_key m_key;
};

zx::unique_platform_key CreateUserKey(const std::wstring& path) noexcept {
    zx::unique_platform_key key;
    if (path.empty() || CurrentSpoolerPlatform().regCreateKeyEx(HKEY_CURRENT_USER, path.c_str(), 0, nullptr,
                                                                REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS, nullptr,
                                                                key.put(), nullptr) != ERROR_SUCCESS) {
        return zx::unique_platform_key();
    }
    return key;
}

DWORD StoreResult(DWORD win32Status) noexcept { return win32Status == ERROR_SUCCESS ? zx::kStoreOk : zx::kStoreFailed; }

// The shortcut text of a stored value: a REG_SZ up to its first null, at most 259 characters.
std::optional<std::wstring> ShortcutTextOf(DWORD type, std::span<const BYTE> data) {
    if (type != REG_SZ) return std::nullopt;
    const size_t characters = std::min(data.size() / sizeof(wchar_t), zx::kShortcutTextLength);
    std::wstring text(characters, L'\0');
    std::memcpy(text.data(), data.data(), characters * sizeof(wchar_t));
    const size_t end = text.find(L'\0');
    if (end != std::wstring::npos) text.resize(end);
    if (text.size() >= zx::kShortcutTextLength) return std::nullopt;
    return text;
}

std::wstring_view AsRecordName(std::wstring_view valueName) noexcept {
    return valueName.substr(0, zx::kShortcutNameLength - 1);
}

auto FindByName(std::vector<PrintShortcutRecord>& list, std::wstring_view name) {
    return std::find_if(list.begin(), list.end(),
                        [name](const PrintShortcutRecord& record) { return record.Name() == name; });
}

// Takes one stored value into the list. Values of the printer's data never replace a listed
// record; values of the per-user key replace the listed record of their name.
void AddStoredValue(std::vector<PrintShortcutRecord>& list, const PrintShortcutRecord& allSettings,
                    std::wstring_view valueName, DWORD type, std::span<const BYTE> data, bool inPrinterData) {
    if (valueName.empty() || valueName == zx::kCurrentShortcutValue || valueName == zx::kCustomBitmapIdValue) return;
    const std::optional<std::wstring> text = ShortcutTextOf(type, data);
    if (!text) return;
    const std::wstring_view name = AsRecordName(valueName);
    const auto listed = FindByName(list, name);
    if (listed != list.end()) {
        if (inPrinterData) return;
        list.erase(listed);
    }
    std::optional<PrintShortcutRecord> record = zx::ParseShortcutText(name, *text, inPrinterData, list, allSettings);
    if (record) list.push_back(std::move(*record));
}

// The bytes a spooler block points to, when they lie inside the block.
std::optional<std::span<const BYTE>> BytesInBlock(const std::vector<BYTE>& block, const BYTE* data, DWORD size) {
    if (size == 0) return std::span<const BYTE>();
    if (data < block.data() || data >= block.data() + block.size()) return std::nullopt;
    if (size > static_cast<size_t>(block.data() + block.size() - data)) return std::nullopt;
    return std::span<const BYTE>(data, size);
}

}  // namespace

VPrintShortcutStore::VPrintShortcutStore(const wchar_t* printerName, bool alwaysResolveGuid) {
    if (printerName == nullptr || ::wcsnlen(printerName, MAX_PATH) >= MAX_PATH) return;
    m_printerName = printerName;
    if (m_printerName.empty()) return;
    ProbeAccess();
    if (m_restrictedAccess || alwaysResolveGuid) ResolvePrinterGuid();
}

void VPrintShortcutStore::ProbeAccess() {
    if (OpenPrinterFor(m_printerName, PRINTER_ALL_ACCESS)) return;
    m_restrictedAccess = static_cast<bool>(OpenPrinterFor(m_printerName, kReadAccess));
}

void VPrintShortcutStore::ResolvePrinterGuid() {
    const zx::unique_spooler_handle printer =
        OpenPrinterFor(m_printerName, m_restrictedAccess ? kReadAccess : PRINTER_ALL_ACCESS);
    if (!printer) return;
    wchar_t text[zx::kShortcutTextLength] = {};
    DWORD type = REG_NONE, needed = 0;
    const DWORD status = CurrentSpoolerPlatform().getPrinterDataEx(printer.get(), kDriverDataKey, kPrinterGuidValue,
                                                                  &type, reinterpret_cast<BYTE*>(text),
                                                                  sizeof(text), &needed);
    if (status == ERROR_SUCCESS) {
        if (type == REG_SZ) m_printerGuid.assign(text, ::wcsnlen(text, zx::kShortcutTextLength - 1));
        return;
    }
    if (status != ERROR_FILE_NOT_FOUND) return;

    GUID guid{};
    if (FAILED(CurrentSpoolerPlatform().coCreateGuid(&guid))) return;
    m_printerGuid = zx::FormatPrinterGuid(guid);
    // Written with the size of the whole buffer: the text, then zero bytes.
    std::fill(std::begin(text), std::end(text), L'\0');
    m_printerGuid.copy(text, m_printerGuid.size());
    CurrentSpoolerPlatform().setPrinterDataEx(printer.get(), kDriverDataKey, kPrinterGuidValue, REG_SZ,
                                              reinterpret_cast<BYTE*>(text), sizeof(text));
}

std::wstring VPrintShortcutStore::PerUserKeyPath() const {
    std::wstring path = kUserKeyRoot + m_printerName + L"_" + m_printerGuid;
    if (path.size() >= MAX_PATH) return {};
    return path;
}

template <typename Operation>
DWORD VPrintShortcutStore::InStoragePlace(Operation&& operation) const {
    if (m_printerName.empty()) return zx::kStoreFailed;
    if (m_restrictedAccess) {
        zx::unique_platform_key key = CreateUserKey(PerUserKeyPath());
        if (!key) return zx::kStoreFailed;
        return operation(UserKeyPlace(std::move(key)));
    }
    zx::unique_spooler_handle printer = OpenPrinterFor(m_printerName, PRINTER_ALL_ACCESS);
    if (!printer) return zx::kStoreFailed;
    return operation(PrinterDataPlace(std::move(printer)));
}

DWORD VPrintShortcutStore::ReadCurrentShortcut(DWORD& index) const {
    index = 0;
    return InStoragePlace([&index](const StoragePlace& place) {
        DWORD type = REG_NONE, value = 0, size = sizeof(value);
        if (place.Query(zx::kCurrentShortcutValue, type, reinterpret_cast<BYTE*>(&value), size) != ERROR_SUCCESS ||
            type != REG_DWORD || size != sizeof(value)) {
            return zx::kStoreFailed;
        }
        index = value;
        return zx::kStoreOk;
    });
}

DWORD VPrintShortcutStore::WriteNumber(const wchar_t* valueName, int32_t value) const {
    if (value < 0) return zx::kStoreRefused;
    return InStoragePlace([valueName, value](const StoragePlace& place) {
        const DWORD number = static_cast<DWORD>(value);
        return StoreResult(place.Set(valueName, REG_DWORD, reinterpret_cast<const BYTE*>(&number), sizeof(number)));
    });
}

DWORD VPrintShortcutStore::WriteCurrentShortcut(int32_t index) const {
    return WriteNumber(zx::kCurrentShortcutValue, index);
}

DWORD VPrintShortcutStore::WriteCustomBitmapId(int32_t bitmapId) const {
    return WriteNumber(zx::kCustomBitmapIdValue, bitmapId);
}

DWORD VPrintShortcutStore::SaveShortcut(const PrintShortcutRecord& record) const {
    const std::optional<std::wstring> text = zx::FormatShortcutText(record);
    const std::wstring name(record.Name());
    if (!text || name.empty()) return zx::kStoreFailed;
    return InStoragePlace([&](const StoragePlace& place) {
        return StoreResult(place.Set(name.c_str(), REG_SZ, reinterpret_cast<const BYTE*>(text->data()),
                                     static_cast<DWORD>(text->size() * sizeof(wchar_t))));
    });
}

DWORD VPrintShortcutStore::DeleteShortcut(const wchar_t* name) const {
    if (name == nullptr) return zx::kStoreRefused;
    return InStoragePlace([name](const StoragePlace& place) { return StoreResult(place.Delete(name)); });
}

DWORD VPrintShortcutStore::LoadShortcuts(std::vector<PrintShortcutRecord>& list,
                                         const PrintShortcutRecord& allSettings) const {
    if (m_printerName.empty()) return zx::kStoreFailed;
    const DWORD result = LoadFromPrinterData(list, allSettings);
    if (m_restrictedAccess) LoadFromUserKey(list, allSettings);
    return result;
}

DWORD VPrintShortcutStore::LoadFromPrinterData(std::vector<PrintShortcutRecord>& list,
                                               const PrintShortcutRecord& allSettings) const {
    const zx::unique_spooler_handle printer =
        OpenPrinterFor(m_printerName, m_restrictedAccess ? kReadAccess : PRINTER_ALL_ACCESS);
    if (!printer) return zx::kStoreFailed;
    const auto enumerate = CurrentSpoolerPlatform().enumPrinterDataEx;
    DWORD needed = 0, count = 0;
    if (enumerate(printer.get(), zx::kShortcutDataKey, nullptr, 0, &needed, &count) != ERROR_MORE_DATA ||
        needed == 0 || needed > zx::kMaxSpoolerBlock) {
        return zx::kStoreFailed;
    }
    std::vector<BYTE> block(needed);
    DWORD written = 0;
    if (enumerate(printer.get(), zx::kShortcutDataKey, block.data(), needed, &written, &count) != ERROR_SUCCESS) {
        return zx::kStoreFailed;
    }
    const auto* values = reinterpret_cast<const PRINTER_ENUM_VALUESW*>(block.data());
    count = std::min<DWORD>(count, static_cast<DWORD>(block.size() / sizeof(PRINTER_ENUM_VALUESW)));
    for (DWORD i = 0; i < count; ++i) {
        const std::wstring_view name = zx::TextInBlock(block, values[i].pValueName);
        const auto data = BytesInBlock(block, values[i].pData, values[i].cbData);
        if (data) AddStoredValue(list, allSettings, name, values[i].dwType, *data, true);
    }
    return zx::kStoreOk;
}

void VPrintShortcutStore::LoadFromUserKey(std::vector<PrintShortcutRecord>& list,
                                          const PrintShortcutRecord& allSettings) const {
    const zx::unique_platform_key key = CreateUserKey(PerUserKeyPath());
    if (!key) return;
    for (DWORD index = 0; index < kMaxUserValues; ++index) {
        wchar_t name[kValueNameLength] = {};
        BYTE data[kValueDataSize] = {};
        DWORD nameLength = kValueNameLength, size = kValueDataSize, type = REG_NONE;
        const LSTATUS status =
            CurrentSpoolerPlatform().regEnumValue(key.get(), index, name, &nameLength, nullptr, &type, data, &size);
        // A name or text too long for the buffers is no shortcut; the values after it still are.
        if (status == ERROR_MORE_DATA) continue;
        if (status != ERROR_SUCCESS) break;
        AddStoredValue(list, allSettings, std::wstring_view(name, std::min(nameLength, kValueNameLength - 1)), type,
                       std::span<const BYTE>(data, std::min(size, kValueDataSize)), false);
    }
}
