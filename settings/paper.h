// Paper-size helpers. The paper index counts the PaperSize options in the core driver's order
// without the custom size; the Printing Shortcuts page and the job's recorded settings use it.
#pragma once

#include "ddk/prcomoem.h"
#include "resources/resource_libraries.h"

#include <span>

namespace zx {

// The position of `current` among `options`, one less for every CUSTOMSIZE option at or before
// it; 0 when the list is empty or nothing matches.
DWORD PaperIndexAmong(std::span<const PCSTR> options, PCSTR current) noexcept;

// The paper index of the current PaperSize option (property-sheet form of the query).
DWORD CurrentPaperIndex(IPrintCoreHelper* helper) noexcept;

// True when the current PaperSize option is exactly CUSTOMSIZE.
bool IsCustomPaperSize(IPrintCoreHelper* helper) noexcept;

// The display name of the paper with the given paper index. True when a name was copied into
// `text`; otherwise `text` is left as it was (unknown paper, keyword not in the paper
// display-name table, or text missing from the library).
bool PaperDisplayName(IPrintCoreHelper* helper, DWORD paperIndex, UiString& text) noexcept;

// The position, in the PaperSize item's options, of the first option whose display name equals
// the display name of the paper with that index, compared in upper case; 0 when the item is
// missing, has no options or none matches.
LONG PaperItemPosition(const OEMCUIPPARAM* params, IPrintCoreHelper* helper, DWORD paperIndex) noexcept;

}  // namespace zx
