// Display names of the paper sizes: the PaperSize option keywords that the plug-in knows, each
// with the number of its display name in the string library "mortalures18".
#pragma once

#include <windows.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace zx {

// One row of the table: the keyword in a fixed field of 256 bytes, then its string number.
struct PaperNameRow {
    char keyword[256];
    int32_t stringId;
};
static_assert(sizeof(PaperNameRow) == 260);

// The 62 rows, in lookup order.
std::span<const PaperNameRow> PaperNameRows() noexcept;

// The string number of a paper keyword (exact comparison, first row wins); nothing when the
// table lacks it.
std::optional<UINT> PaperStringId(std::string_view keyword) noexcept;

}  // namespace zx
