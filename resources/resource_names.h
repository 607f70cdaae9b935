// The names by which the driver's feature description refers to texts and pictures
// ("IDS_MTYPE_PLAIN_PAPER", "IDB_PHOTO_BORDERLESS") and the numbers behind them: string numbers
// of the string libraries for IDS_, PORTRAIT_, LANDSCAPE_, NONE_ and FLIP_ names, bitmap numbers
// of this module for IDB_ names.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace zx {

struct ResourceNameEntry {
    const char* name;
    int32_t number;
};

// The resource-name table in insertion order.
std::span<const ResourceNameEntry> ResourceNameEntries() noexcept;

// An ordered map from name (compared byte for byte) to number. Each control wrapper of the
// Printing Shortcuts page builds its own copy.
class PrintShortcutNameTable {
public:
    // The whole table.
    PrintShortcutNameTable();
    // The given entries, in order; a name inserted again keeps its first number.
    explicit PrintShortcutNameTable(std::span<const ResourceNameEntry> entries);

    // Exact, case-sensitive lookup.
    std::optional<int32_t> LookupResourceName(std::string_view name) const;
    size_t Size() const noexcept { return m_numbers.size(); }

private:
    std::map<std::string, int32_t, std::less<>> m_numbers;
};

}  // namespace zx
