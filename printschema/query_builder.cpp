#include "printschema/query_builder.h"

#include "util/result.h"

#include <cwchar>

namespace {

// First %s: the framework prefix; second: the name with its prefix.
constexpr wchar_t kFeatureStep[] = L"//%sFeature[@name = \"%s\"]";
constexpr wchar_t kPropertyStep[] = L"//%sProperty[@name = \"%s\"]";
constexpr wchar_t kScoredPropertyStep[] = L"//%sScoredProperty[@name = \"%s\"]";
constexpr wchar_t kParameterRefStep[] = L"//%sParameterRef[@name = \"%s\"]";
// The two branches of the option union: framework prefix; framework, option-name and framework prefix.
constexpr wchar_t kOptionBranch[] = L"/%sOption";
constexpr wchar_t kUnion[] = L" | ";
constexpr wchar_t kOptionNameValueBranch[] = L"/%sScoredProperty[@name = \"%sOptionName\"]/%sValue";

const wchar_t* OrEmpty(const wchar_t* text) { return text != nullptr ? text : L""; }

// Names are written between double quotation marks; one inside would end the literal early.
bool FitsInQuotedLiteral(const wchar_t* text) { return std::wcschr(OrEmpty(text), L'"') == nullptr; }

}  // namespace

VPrintTicketQueryBuilder::VPrintTicketQueryBuilder(const wchar_t* frameworkPrefix)
    : VPrintTicketQueryBuilder(frameworkPrefix, nullptr) {}

VPrintTicketQueryBuilder::VPrintTicketQueryBuilder(const wchar_t* frameworkPrefix, const wchar_t* initialQuery)
    : m_initialQuery(OrEmpty(initialQuery)) {
    if (frameworkPrefix != nullptr && *frameworkPrefix != L'\0') m_frameworkPrefix = zx::MakeBstr(frameworkPrefix);
}

HRESULT VPrintTicketQueryBuilder::AddFeature(const wchar_t* namePrefix, const wchar_t* name) {
    return AddNamedStep(kFeatureStep, namePrefix, name);
}

HRESULT VPrintTicketQueryBuilder::AddProperty(const wchar_t* namePrefix, const wchar_t* name) {
    return AddNamedStep(kPropertyStep, namePrefix, name);
}

HRESULT VPrintTicketQueryBuilder::AddScoredProperty(const wchar_t* namePrefix, const wchar_t* name) {
    return AddNamedStep(kScoredPropertyStep, namePrefix, name);
}

HRESULT VPrintTicketQueryBuilder::AddParameterRef(const wchar_t* namePrefix, const wchar_t* name) {
    return AddNamedStep(kParameterRefStep, namePrefix, name);
}

HRESULT VPrintTicketQueryBuilder::AddOptionValue(const wchar_t* optionNamePrefix) {
    ZX_RETURN_HR_IF(E_FAIL, !m_frameworkPrefix);
    ZX_RETURN_HR_IF(E_INVALIDARG, !FitsInQuotedLiteral(optionNamePrefix));
    m_steps.push_back({nullptr, OrEmpty(optionNamePrefix)});
    return S_OK;
}

HRESULT VPrintTicketQueryBuilder::GetQuery(BSTR* query) const {
    ZX_RETURN_HR_IF_NULL(E_POINTER, query);
    VStringBuffer text(m_initialQuery.c_str());
    const wchar_t* framework = m_frameworkPrefix.get();
    for (const Step& step : m_steps) {
        if (step.stepTemplate != nullptr) {
            text.AppendFormat(step.stepTemplate, framework, step.name.c_str());
            continue;
        }
        const VStringBuffer base(text.c_str());
        text.AppendFormat(kOptionBranch, framework);
        text.Append(kUnion);
        text.Append(base.c_str());
        text.AppendFormat(kOptionNameValueBranch, framework, step.name.c_str(), framework);
    }
    *query = text.ToBstr().release();
    return S_OK;
}

HRESULT VPrintTicketQueryBuilder::AddNamedStep(const wchar_t* stepTemplate, const wchar_t* namePrefix,
                                               const wchar_t* name) {
    ZX_RETURN_HR_IF(E_FAIL, !m_frameworkPrefix);
    ZX_RETURN_HR_IF(E_INVALIDARG, name == nullptr || *name == L'\0');
    ZX_RETURN_HR_IF(E_INVALIDARG, !FitsInQuotedLiteral(namePrefix) || !FitsInQuotedLiteral(name));
    m_steps.push_back({stepTemplate, std::wstring(OrEmpty(namePrefix)) + name});
    return S_OK;
}
