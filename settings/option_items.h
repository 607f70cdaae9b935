// The common property-sheet UI's option items that the core driver builds for its features and
// hands to the plug-in with every property-sheet call. The core driver owns the items; a pointer
// to one is valid only during the call that found it. Items are hostile input: counts may lie,
// user data and option arrays may be missing.
#pragma once

#include "ddk/printoem.h"

#include <optional>
#include <span>
#include <string_view>

namespace zx {

// The core driver's items of a parameter block; empty without an array or with a count that is
// not positive.
std::span<OPTITEM> DriverItems(const OEMCUIPPARAM* params) noexcept;

// The feature keyword of one of the core driver's items: the third pointer-sized field of the
// feature record that its user data points at. Null when the item has no user data.
PCSTR FeatureKeywordOf(const OPTITEM& item) noexcept;

// True when the item (possibly null) stands for exactly this feature.
bool ItemIsFeature(const OPTITEM* item, std::string_view feature) noexcept;

// True when `index` is one of the item's options.
bool IsOptionIndex(const OPTITEM& item, LONG index) noexcept;

// The option parameter of the item's selection; null without an option array or when the
// selection lies outside it.
POPTPARAM SelectedOption(const OPTITEM& item) noexcept;

// The display name of an option; empty without one and for a resource number, which the common
// UI accepts in its place.
std::wstring_view OptionDisplayName(const OPTPARAM& option) noexcept;

// The position of the item's first option whose display name equals `name` (ordinal comparison,
// optionally ignoring case); nothing when none does, when the item has no options or `name` is
// empty.
std::optional<LONG> FindOptionByDisplayName(const OPTITEM& item, std::wstring_view name, bool ignoreCase) noexcept;

// The first item whose feature keyword begins with `feature`, in the core driver's order. A
// search for "MediaType" therefore stops at a "MediaTypePrev" item that comes first.
//   E_POINTER       a null block, keyword or output pointer
//   E_PENDING       the block has no item array (*item is left as it was)
//   S_OK            the item, or null when the array is empty
//   otherwise       what the last item examined recorded: E_FAIL for an item without a feature
//                   keyword, HRESULT_FROM_WIN32(ERROR_NOT_FOUND) for one that does not match
HRESULT GetFeatureOptItem(const OEMCUIPPARAM* params, PCSTR feature, POPTITEM* item) noexcept;

// The first item that stands for the given public-DEVMODE field (DMPUB_*), or null.
POPTITEM FindItemForDevModeField(const OEMCUIPPARAM* params, BYTE dmPubId) noexcept;

// Gives the feature's item, when there is one, the hide flag. A missing item is not an error:
// fails only without a parameter block or item array.
HRESULT HideFeatureItem(const OEMCUIPPARAM* params, PCSTR feature) noexcept;

}  // namespace zx
