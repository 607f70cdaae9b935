// The common property-sheet UI's option items that the core driver builds from the printer
// description: one item per feature of a sheet, in feature order.
#pragma once

#include "ddk/printoem.h"
#include "drvhost/printer_description.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

namespace drvhost {

// What an item's UserData points at. The plug-in reads the feature keyword from the third
// pointer-sized field, so that field's position is fixed.
struct FeatureRecord {
    const void* reserved0 = nullptr;
    const void* reserved1 = nullptr;
    const char* keyword = nullptr;
    size_t featureIndex = 0;
};
static_assert(offsetof(FeatureRecord, keyword) == 2 * sizeof(void*));

using SelectionSource = std::function<DWORD(size_t feature)>;

// First control identifier of the first item; each item's controls take ten identifiers.
inline constexpr WORD kFirstItemControlId = 1100;
inline constexpr WORD kControlIdsPerItem = 10;

class OptionItems {
public:
    OptionItems(const PrinterDescription& description, FeatureSheet sheet, const SelectionSource& selectionOf);
    OptionItems(const OptionItems&) = delete;
    OptionItems& operator=(const OptionItems&) = delete;

    POPTITEM Items() noexcept { return m_items.empty() ? nullptr : m_items.data(); }
    DWORD Count() const noexcept { return static_cast<DWORD>(m_items.size()); }

    // The feature an item stands for; nothing for a pointer that is not one of these items.
    std::optional<size_t> FeatureOf(const void* item) const;
    POPTITEM Find(std::string_view featureKeyword);

    // Puts the core driver's conflict mark on every option that a current selection constrains.
    void MarkConflicts(const SelectionSource& selectionOf);

private:
    const PrinterDescription& m_description;
    std::vector<FeatureRecord> m_records;
    std::vector<OPTTYPE> m_types;
    std::vector<std::vector<OPTPARAM>> m_params;
    std::vector<OPTITEM> m_items;
};

// True when option `option` of feature `feature` may not be selected with the given selections.
bool IsConstrained(const PrinterDescription& description, size_t feature, size_t option,
                   const SelectionSource& selectionOf);

}  // namespace drvhost
