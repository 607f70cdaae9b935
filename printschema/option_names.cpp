#include "printschema/option_names.h"

#include "util/scoped.h"

size_t PositionOfOptionName(BSTR name, std::span<const wchar_t* const> names) {
    for (size_t position = 0; position < names.size(); ++position) {
        const zx::unique_bstr candidate = zx::MakeBstr(names[position]);
        if (::VarBstrCmp(name, candidate.get(), LOCALE_USER_DEFAULT, 0) == VARCMP_EQ) return position;
    }
    return names.size();
}
