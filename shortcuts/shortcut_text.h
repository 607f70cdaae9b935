// The stored form of a user shortcut: decimal numbers, each followed by ",": the base index, 1 or
// 0 for the all-settings option lists, the bitmap id, then the setting values in the byte-wise
// order of their feature keywords (the keywords are not written). Example: "0,0,154,0,1,3,2,".
// A stored text is hostile input: any program that can write the printer's data or the user's
// registry can put anything there.
#pragma once

#include "shortcuts/shortcut_record.h"

#include <guiddef.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zx {

// Every stored text, terminator included, fits in this many characters.
inline constexpr size_t kShortcutTextLength = 260;

// The text of a record; nothing when it would not fit in kShortcutTextLength characters.
std::optional<std::wstring> FormatShortcutText(const PrintShortcutRecord& record);

// True for the bitmap ids of this module's shortcut pictures (147 to 160 without 150 and 156).
bool IsShortcutBitmap(int32_t bitmapId) noexcept;

// A new record from a stored value (name, text), derived from the record of the list at the
// text's base index (record 0 when that index is negative or beyond the list): the fields that
// the text holds replace the base record's bitmap and setting values, a non-zero second field
// gives it the all-settings option lists of its features, missing fields keep the base record's
// values and extra fields are ignored. The name is cut to 255 characters; an unknown bitmap id
// becomes the default picture. Nothing when the list is empty (no record to derive from) or
// the text has kShortcutTextLength characters or more.
std::optional<PrintShortcutRecord> ParseShortcutText(std::wstring_view name, std::wstring_view text,
                                                     bool inPrinterData,
                                                     const std::vector<PrintShortcutRecord>& list,
                                                     const PrintShortcutRecord& allSettings);

// The printer GUID as the per-user key's name carries it: Data1, Data2 and Data3, then the eight
// bytes of Data4, each in lower-case hexadecimal without leading zeros ("%x-%x-%x-%x%x%x%x%x%x%x%x").
std::wstring FormatPrinterGuid(const GUID& guid);

}  // namespace zx
