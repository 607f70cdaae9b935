// Print Schema option names read from a ticket are looked up in the converters' tables as the
// platform compares BSTRs: VarBstrCmp in the user's default locale, without flags, so that the
// booklet and N-up readers agree on what counts as the same name.
#pragma once

#include <windows.h>
#include <oleauto.h>

#include <cstddef>
#include <span>

// The position of name among names, or names.size() when none compares equal.
size_t PositionOfOptionName(BSTR name, std::span<const wchar_t* const> names);
