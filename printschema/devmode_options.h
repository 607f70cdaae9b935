// The core driver's options that the converters read from a DEVMODE, each mapped to a number by
// a table of option keywords (exact, case-sensitive, first match wins).
#pragma once

#include "ddk/prcomoem.h"

#include <cstddef>
#include <span>

struct DevModeOption {
    const char* keyword;
    DWORD value;
};

namespace DevModeTable {
inline constexpr DevModeOption Binding[] = {{"None", 14}, {"Booklet", 5}, {"JapaneseBooklet", 6}};
inline constexpr DevModeOption PagesPerSheet[] = {{"1", 1}, {"2", 2}, {"4", 4},  {"6", 6},
                                                  {"8", 8}, {"9", 9}, {"16", 16}};
inline constexpr DevModeOption Direction[] = {{"RightBottom", 0}, {"BottomRight", 1}, {"LeftBottom", 2},
                                              {"BottomLeft", 3},  {"RightTop", 4},    {"TopRight", 5},
                                              {"LeftTop", 6},     {"TopLeft", 7}};
inline constexpr DevModeOption Borders[] = {{"Off", 0}, {"On", 1}};
}  // namespace DevModeTable

namespace zx {

// The number that the table gives the DEVMODE's current option of a feature. E_POINTER for a null
// DEVMODE, keyword or table; E_INVALIDARG for a DEVMODE smaller than the public part;
// HRESULT_FROM_WIN32(ERROR_NOT_FOUND) for an empty table, a helper that cannot answer, or an
// option the table lacks. Throws CXDException when the option keyword is too long to copy.
HRESULT LookupDevModeOption(IPrintCoreHelper* helper, const DEVMODEW* devMode, ULONG devModeSize, PCSTR feature,
                            std::span<const DevModeOption> table, DWORD* value);

// The keyword of the row whose number is value, or null.
PCSTR DevModeKeywordFor(std::span<const DevModeOption> table, DWORD value) noexcept;

}  // namespace zx
