// Builds the XPath queries of the Print Schema code from fixed templates. Calls are chained: a
// feature, possibly a nested feature, then its option or one of its properties, then GetQuery.
// Every Add fails with E_FAIL when the builder has no framework prefix, and with E_INVALIDARG
// for an empty name or a name that cannot stand inside a quoted XPath literal. The text is
// written only when GetQuery asks for it: lookups answered otherwise pay only for the checks.
#pragma once

#include "printschema/string_buffer.h"

#include <sal.h>

#include <string>
#include <vector>

class VPrintTicketQueryBuilder {
public:
    // frameworkPrefix includes its colon, for example "psf:".
    explicit VPrintTicketQueryBuilder(_In_opt_z_ const wchar_t* frameworkPrefix);
    VPrintTicketQueryBuilder(_In_opt_z_ const wchar_t* frameworkPrefix, _In_opt_z_ const wchar_t* initialQuery);
    virtual ~VPrintTicketQueryBuilder() = default;

    // namePrefix may be null or empty: the name is then matched as it is.
    HRESULT AddFeature(_In_opt_z_ const wchar_t* namePrefix, _In_z_ const wchar_t* name);
    HRESULT AddProperty(_In_opt_z_ const wchar_t* namePrefix, _In_z_ const wchar_t* name);
    HRESULT AddScoredProperty(_In_opt_z_ const wchar_t* namePrefix, _In_z_ const wchar_t* name);
    HRESULT AddParameterRef(_In_opt_z_ const wchar_t* namePrefix, _In_z_ const wchar_t* name);
    // Selects either the Option element or the Value of the OptionName scored property,
    // whichever comes first in the document.
    HRESULT AddOptionValue(_In_opt_z_ const wchar_t* optionNamePrefix);
    HRESULT GetQuery(_Outptr_ BSTR* query) const;

private:
    struct Step {
        const wchar_t* stepTemplate;  // null: the option union
        std::wstring name;            // prefix and name; for the union, the option-name prefix
    };
    HRESULT AddNamedStep(const wchar_t* stepTemplate, const wchar_t* namePrefix, const wchar_t* name);

    std::wstring m_initialQuery;
    std::vector<Step> m_steps;
    zx::unique_bstr m_frameworkPrefix;
};
