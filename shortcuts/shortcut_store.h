// Where user shortcuts, the index of the last applied shortcut ("CurrentShortcut") and the
// picture of the pending modified shortcut ("CustomBitmapID") persist. A user who may administer
// the printer keeps them in the printer's data under "PrinterDriverData\PrintShortcutData",
// shared by every user of the printer; a user who may only print keeps them under the per-user
// key "Software\Velmora\<printer>_<printer GUID>" of HKEY_CURRENT_USER. The store hides the
// difference. It keeps no handle open between operations, and every spooler and registry call
// goes through the spooler seam (util/spooler_platform.h).
#pragma once

#include "shortcuts/shortcut_record.h"

#include <windows.h>

#include <string>
#include <vector>

namespace zx {

// Results of the store's operations.
inline constexpr DWORD kStoreOk = 0;
inline constexpr DWORD kStoreFailed = 1;   // no printer, no key, or the spooler or registry refused
inline constexpr DWORD kStoreRefused = 3;  // an argument the store does not accept

inline constexpr wchar_t kShortcutDataKey[] = L"PrinterDriverData\\PrintShortcutData";
inline constexpr wchar_t kCurrentShortcutValue[] = L"CurrentShortcut";
inline constexpr wchar_t kCustomBitmapIdValue[] = L"CustomBitmapID";

}  // namespace zx

class VPrintShortcutStore {
public:
    // A store without a printer: every operation fails without touching anything.
    VPrintShortcutStore() noexcept = default;
    // Probes the access to the printer (full access, else read access: restricted) and, when
    // restricted or asked to, reads the printer GUID, creating and storing it when the printer
    // has none. `printerName` may be null or longer than 259 characters: then there is no printer.
    VPrintShortcutStore(const wchar_t* printerName, bool alwaysResolveGuid);

    bool IsRestricted() const noexcept { return m_restrictedAccess; }
    const std::wstring& PrinterName() const noexcept { return m_printerName; }
    const std::wstring& PrinterGuid() const noexcept { return m_printerGuid; }
    // "Software\Velmora\<printer>_<GUID>"; empty when it would not fit in 259 characters.
    std::wstring PerUserKeyPath() const;

    // Sets `index` to 0, then reads "CurrentShortcut" (a 4-byte REG_DWORD). kStoreOk or kStoreFailed.
    DWORD ReadCurrentShortcut(DWORD& index) const;
    // A negative index is refused with kStoreRefused and nothing written.
    DWORD WriteCurrentShortcut(int32_t index) const;
    DWORD WriteCustomBitmapId(int32_t bitmapId) const;
    // Writes the record's shortcut text (REG_SZ without terminator) under the record's name,
    // replacing a value of that name. kStoreFailed also for an empty name or a text too long.
    DWORD SaveShortcut(const PrintShortcutRecord& record) const;
    // Deletes the value of that name; kStoreRefused for a null name.
    DWORD DeleteShortcut(const wchar_t* name) const;

    // Appends the stored user shortcuts to the list (which holds the built-in shortcuts): those
    // of the printer's data, skipping a name already listed, then, for a restricted user, those
    // of the per-user key, each replacing a listed record of its name and going to the end.
    // Values that are not shortcuts are skipped. Returns kStoreOk when the printer's data could
    // be enumerated (an empty key cannot), else kStoreFailed.
    DWORD LoadShortcuts(std::vector<PrintShortcutRecord>& list, const PrintShortcutRecord& allSettings) const;

private:
    void ProbeAccess();
    void ResolvePrinterGuid();
    // Runs an operation on the storage place of this user; kStoreFailed without one.
    template <typename Operation>
    DWORD InStoragePlace(Operation&& operation) const;
    DWORD WriteNumber(const wchar_t* valueName, int32_t value) const;
    DWORD LoadFromPrinterData(std::vector<PrintShortcutRecord>& list, const PrintShortcutRecord& allSettings) const;
    void LoadFromUserKey(std::vector<PrintShortcutRecord>& list, const PrintShortcutRecord& allSettings) const;

    bool m_restrictedAccess = false;
    std::wstring m_printerName;
    std::wstring m_printerGuid;
};
