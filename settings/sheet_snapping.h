// Snapping on the document property sheet: the paper source, print quality and media type that the
// session's snapping table (settings/snapping.h) gives the job's paper, set on the core driver's
// items. The snaps only select; committing the items is the caller's.
#pragma once

#include "settings/snapping.h"
#include "settings/ui_properties.h"

#include <optional>
#include <string_view>

namespace zx {

// The rule for the job's paper, the current PaperSize option of the sheet's public DEVMODE: with a
// BorderlessPrint item (may be null) whose selection is not 0 the "BORDERLESS_" rule of the paper
// when there is one, else the paper's own rule; nothing without a rule or without a paper.
std::optional<std::string_view> FindSheetSnappingRule(const VUIProperties& settings, const VSnappingTable& table,
                                                      const OPTITEM* borderless);

// Selects the InputBin option named by F2 (0 when none matches or there is no rule) and, when F5
// is an option of the BorderlessPrint item other than 0, that borderless option.
void SnapPaperSource(const VUIProperties& settings, const VSnappingTable& table, OPTITEM& inputBin,
                     OPTITEM* borderless);

// Selects the quality option F3, or option 1 when F3 is not one of the item's options. Without a
// rule the quality stays.
void SnapPrintQuality(const VUIProperties& settings, const VSnappingTable& table, OPTITEM& quality,
                      const OPTITEM* borderless);

// Selects the first media type whose display name is the text that F4 names (a name of the
// resource-name table), or the fallback media type's text (string 501) without a rule, without
// F4 or for an unknown name; option 0 when no display name is that text.
void SnapMediaType(const VUIProperties& settings, const VSnappingTable& table, OPTITEM& mediaType,
                   const OPTITEM* borderless);

}  // namespace zx
