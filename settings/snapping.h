// Snapping rules: which paper source, media type, print quality and borderless setting belong to
// a paper size. The driver's feature description lists them as the option keywords of the hidden
// feature SnappingData, one rule per keyword:
//
//   key:F1:F2:F3:F4:F5
//
//   key  a PaperSize option keyword, or "BORDERLESS_" and one for the borderless variant
//   F1   media code: numbers separated by "."; a.b.c gives the media suffix _a_b_c
//   F2   the InputBin option keyword to select (a number)
//   F3   the PageOutputQuality option index
//   F4   the resource name of the media type's display name (read by the property sheet)
//   F5   the BorderlessPrint option index; 0 or missing leaves borderless printing alone
//
// This file has the rule format, the lookup of the PrintTicket writer and the document property
// sheet's table of rules.
#pragma once

#include "ddk/prcomoem.h"

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace zx {

inline constexpr char kBorderlessRulePrefix[] = "BORDERLESS_";

// Only this many characters of a rule are read.
inline constexpr size_t kMaxSnappingRuleLength = 259;

// The media suffix built from F1: 259 characters and the terminator.
inline constexpr size_t kMediaTypeNameLength = 260;
using MediaTypeName = wchar_t[kMediaTypeNameLength];

// What a matching rule sets, as signed 32-bit fields in this order.
struct SnappingRecord {
    INT32 inputBin;     // F2
    INT32 mediaFirst;   // first number of F1
    INT32 mediaSecond;  // second number of F1
    INT32 quality;      // F3
    INT32 unused[6];    // never written by the lookup
    INT32 borderless;   // F5
};
static_assert(sizeof(SnappingRecord) == 44);

// SnapForTicket's answer when no rule applies or the rules cannot be read.
inline constexpr LONG kNoSnappingRule = -1;

// The key of a rule (the text before its first ":"); nothing for a keyword without ":", which is
// not a rule.
std::optional<std::string_view> SnappingRuleKey(std::string_view rule) noexcept;

// Reads the first kMaxSnappingRuleLength characters of a rule into the record and the media
// suffix. Parsing stops at the first field whose ":" is missing and leaves the rest as it was; a
// rule without the ":" after F1 fills nothing.
void ParseSnappingRule(PCSTR rule, SnappingRecord& record, MediaTypeName& mediaName) noexcept;

// The PrintTicket writer's lookup for a job's DEVMODE: the first rule whose key is the job's
// paper (prefixed with "BORDERLESS_" when its BorderlessPrint option is BorderlessOverspray)
// fills the record and the media suffix, and the result is that of listing the rules (S_OK).
// kNoSnappingRule when no rule matches or the rule list is empty or unreadable; the helper's
// failure when SnappingData, MediaType or InputBin cannot be read. Without a match the record
// and the suffix are left as they were.
LONG SnapForTicket(IPrintCoreHelper* helper, const DEVMODEW* devMode, DWORD devModeSize, SnappingRecord* record,
                   MediaTypeName& mediaName) noexcept;

// Field F1 to F5 (`field` 1 to 5) of a rule's remainder, the text after its key and first ":";
// empty when the rule has fewer fields.
std::string_view SnappingRuleField(std::string_view remainder, int field) noexcept;
// The same field read as a decimal number; 0 when it is missing or no number.
INT32 SnappingRuleNumber(std::string_view remainder, int field) noexcept;

}  // namespace zx

// The document property sheet's snapping rules for one session: rule key -> remainder (F1 to F5
// with their separators). Unlike the PrintTicket writer, which takes the first rule of a key,
// the sheet's table keeps the last one.
class VSnappingTable {
public:
    // Reads the rules of SnappingData through the core helper, replacing the table. Snapping is
    // enabled when the feature lists at least one option, rule or not. Without a helper the
    // table is left as it was.
    void Load(IPrintCoreHelper* helper);

    bool Enabled() const noexcept { return m_enabled; }
    // The remainder of the rule with this key; nothing without one.
    std::optional<std::string_view> Find(std::string_view key) const;

private:
    std::map<std::string, std::string, std::less<>> m_remainders;
    bool m_enabled = false;
};
