#include "printschema/ticket_handler.h"

#include "printschema/print_schema_names.h"
#include "printschema/query_builder.h"
#include "util/result.h"

#include <cerrno>
#include <climits>
#include <cwchar>
#include <cwctype>
#include <string>
#include <string_view>
#include <vector>

using namespace PrintSchema;

namespace {

// The plug-in's own parameters, named with the private prefix; all others are standard ones.
constexpr const wchar_t* kPrivateParameters[] = {
    L"PageWatermarkSizeWidth",
    L"PageWatermarkSizeHeight",
    L"DocumentNUpPageBorderWidth",
    L"DocumentBindingBookletBorderWidth",
};

bool IsPrivateParameter(const wchar_t* name) {
    for (const wchar_t* privateName : kPrivateParameters) {
        if (std::wcscmp(name, privateName) == 0) return true;
    }
    return false;
}

bool RemoveFirstOccurrence(VStringBuffer& text, const wchar_t* part) {
    const size_t position = text.Find(part);
    if (position == VStringBuffer::npos) return false;
    text.Erase(position, std::wcslen(part));
    return true;
}

// A copy of text without the first occurrence of part; null when part does not occur.
zx::unique_bstr WithoutFirstOccurrence(const wchar_t* text, const wchar_t* part) {
    VStringBuffer stripped(text);
    if (!RemoveFirstOccurrence(stripped, part)) return {};
    return stripped.ToBstr();
}

HRESULT ParseInt32(const wchar_t* text, INT32* value) {
    ZX_RETURN_HR_IF_NULL(E_INVALIDARG, text);
    wchar_t* end = nullptr;
    errno = 0;
    const long parsed = std::wcstol(text, &end, 10);
    while (end != text && std::iswspace(*end)) ++end;
    ZX_RETURN_HR_IF(E_INVALIDARG, end == text || *end != L'\0' || errno == ERANGE);
    ZX_RETURN_HR_IF(E_INVALIDARG, parsed < INT32_MIN || parsed > INT32_MAX);
    *value = static_cast<INT32>(parsed);
    return S_OK;
}

}  // namespace

VPrintTicketHandler::VPrintTicketHandler(IXMLDOMDocument2* ticket)
    : VPrintSchemaHandler(Vocabulary::PrintTicket, ticket) {}

VPrintCapabilityHandler::VPrintCapabilityHandler(IXMLDOMDocument2* capabilities)
    : VPrintSchemaHandler(Vocabulary::PrintCapabilities, capabilities) {}

// A new child comes last in document order, and its features last in the feature list.
HRESULT VPrintTicketHandler::AppendToRoot(const wchar_t* rootName, IXMLDOMNode* child) {
    ZX_RETURN_HR_IF(E_INVALIDARG, IsEmpty(rootName) || child == nullptr);
    zx::ComPtr<IXMLDOMNode> root;
    ZX_RETURN_IF_FAILED(FindRootElement(rootName, &root));
    zx::ComPtr<IXMLDOMNode> parent;
    const bool isNew = SUCCEEDED(child->get_parentNode(&parent)) && !parent;
    zx::ComPtr<IXMLDOMNode> appended;
    const HRESULT hr = root->appendChild(child, &appended);
    if (SUCCEEDED(hr) && isNew) {
        m_features.Appended(child);
    } else {
        m_features.Invalidate();
    }
    return hr;
}

// The document element when it is the framework's element of that name: what the query
// framework prefix + rootName selects from the document, found without running a query.
HRESULT VPrintTicketHandler::FindRootElement(const wchar_t* rootName, IXMLDOMNode** root) {
    zx::ComPtr<IXMLDOMElement> element;
    zx::unique_bstr uri, name;
    if (Document()->get_documentElement(&element) != S_OK || !element || FAILED(element->get_namespaceURI(uri.put())) ||
        FAILED(element->get_baseName(name.put())) || !uri || !name ||
        std::wcscmp(uri.get(), PrintSchema::Uri::Framework) != 0 || std::wcscmp(name.get(), rootName) != 0) {
        return zx::kNotFound;
    }
    return element->QueryInterface(IID_IXMLDOMNode, reinterpret_cast<void**>(root));
}

HRESULT VPrintTicketHandler::CreateNamedFeature(const wchar_t* featurePrefix, const wchar_t* featureName,
                                                const wchar_t* optionPrefix, const wchar_t* optionName,
                                                IXMLDOMElement** feature, IXMLDOMElement** option) {
    ZX_RETURN_HR_IF(E_POINTER, feature == nullptr || option == nullptr);
    *feature = nullptr;
    *option = nullptr;
    ZX_RETURN_HR_IF(E_INVALIDARG, IsEmpty(featureName) || (optionName != nullptr && *optionName == L'\0'));
    const zx::unique_bstr featureFullName = Join(featurePrefix, featureName);
    zx::unique_bstr optionFullName;
    if (optionName != nullptr) optionFullName = Join(optionPrefix, optionName);

    zx::ComPtr<IXMLDOMElement> newFeature;
    ZX_RETURN_IF_FAILED(CreateNamedElement(Vocabulary::Feature, featureFullName.get(), &newFeature));
    zx::ComPtr<IXMLDOMElement> newOption;
    ZX_RETURN_IF_FAILED(CreateNamedElement(Vocabulary::Option, optionFullName.get(), &newOption));
    zx::ComPtr<IXMLDOMNode> appended;
    ZX_RETURN_IF_FAILED(newFeature->appendChild(newOption.Get(), &appended));
    *feature = newFeature.Detach();
    *option = newOption.Detach();
    return S_OK;
}

HRESULT VPrintTicketHandler::CreateFeature(const wchar_t* featureName, IXMLDOMElement** feature,
                                           IXMLDOMElement** option) {
    return CreateNamedFeature(KeywordsPrefix(), featureName, nullptr, nullptr, feature, option);
}

HRESULT VPrintTicketHandler::CreateFeatureOption(const wchar_t* featureName, const wchar_t* optionName,
                                                 IXMLDOMElement** feature, IXMLDOMElement** option) {
    return CreateFeatureOptionPrefixed(featureName, optionName, feature, option, KeywordsPrefix());
}

HRESULT VPrintTicketHandler::CreateFeatureOptionPrefixed(const wchar_t* featureName, const wchar_t* optionName,
                                                         IXMLDOMElement** feature, IXMLDOMElement** option,
                                                         const wchar_t* optionPrefix) {
    ZX_RETURN_HR_IF_NULL(E_INVALIDARG, optionName);
    return CreateNamedFeature(KeywordsPrefix(), featureName, optionPrefix, optionName, feature, option);
}

HRESULT VPrintTicketHandler::CreatePrefixedFeatureOption(const wchar_t* featureName, const wchar_t* optionName,
                                                         IXMLDOMElement** feature, IXMLDOMElement** option,
                                                         const wchar_t* featurePrefix, const wchar_t* optionPrefix) {
    ZX_RETURN_HR_IF_NULL(E_INVALIDARG, optionName);
    const HRESULT hr = CreateNamedFeature(featurePrefix, featureName, optionPrefix, optionName, feature, option);
    if (SUCCEEDED(hr)) ::OutputDebugStringW(L"appendChild succeeded..\n");
    return hr;
}

HRESULT VPrintTicketHandler::CreateParameter(const wchar_t* parameterName, const wchar_t* type, const wchar_t* value,
                                             IXMLDOMElement** parameterRef, IXMLDOMElement** parameterInit) {
    ZX_RETURN_HR_IF(E_POINTER, parameterRef == nullptr || parameterInit == nullptr);
    *parameterRef = nullptr;
    *parameterInit = nullptr;
    ZX_RETURN_HR_IF(E_INVALIDARG, IsEmpty(parameterName) || IsEmpty(type) || IsEmpty(value));
    const wchar_t* prefix = IsPrivateParameter(parameterName) ? PrivatePrefix() : KeywordsPrefix();
    const zx::unique_bstr fullName = Join(prefix, parameterName);

    zx::ComPtr<IXMLDOMElement> reference;
    ZX_RETURN_IF_FAILED(CreateNamedElement(Vocabulary::ParameterRef, fullName.get(), &reference));
    zx::ComPtr<IXMLDOMElement> initialiser;
    ZX_RETURN_IF_FAILED(CreateNamedElement(Vocabulary::ParameterInit, fullName.get(), &initialiser));
    ZX_RETURN_IF_FAILED(AppendTypedValue(initialiser.Get(), type, value));
    *parameterRef = reference.Detach();
    *parameterInit = initialiser.Detach();
    return S_OK;
}

HRESULT VPrintTicketHandler::CreateIntegerParameter(const wchar_t* parameterName, INT32 value,
                                                    IXMLDOMElement** parameterRef, IXMLDOMElement** parameterInit) {
    VStringBuffer text;
    text.AppendFormat(L"%i", value);
    return CreateParameter(parameterName, Vocabulary::Integer, text.c_str(), parameterRef, parameterInit);
}

HRESULT VPrintTicketHandler::SelectFirst(const VPrintTicketQueryBuilder& query, IXMLDOMNode** node) {
    zx::unique_bstr xpath;
    ZX_RETURN_IF_FAILED(query.GetQuery(xpath.put()));
    return NotFoundIfNothing(SelectSingleNode(xpath.get(), node));
}

HRESULT VPrintTicketHandler::FindFeature(const wchar_t* featureName, IXMLDOMNode** node) {
    return FindPrefixedFeature(featureName, FrameworkPrefix(), KeywordsPrefix(), node);
}

bool VPrintTicketHandler::IndexedFeatures(const wchar_t* frameworkPrefix, const wchar_t* namePrefix,
                                          const wchar_t* featureName, std::vector<size_t>& positions) {
    // Queries bind the document's own framework prefix and "psf" to the framework namespace.
    const bool framework = frameworkPrefix != nullptr && (std::wcscmp(frameworkPrefix, FrameworkPrefix()) == 0 ||
                                                          std::wcscmp(frameworkPrefix, Prefix::Framework) == 0);
    if (!framework) return false;
    const std::wstring fullName = std::wstring(namePrefix ? namePrefix : L"") + featureName;
    return m_features.Find(Document(), FrameworkPrefix(), fullName.c_str(), positions);
}

HRESULT VPrintTicketHandler::FindPrefixedFeature(const wchar_t* featureName, const wchar_t* frameworkPrefix,
                                                 const wchar_t* namePrefix, IXMLDOMNode** node) {
    if (node != nullptr) *node = nullptr;
    VPrintTicketQueryBuilder query(frameworkPrefix);
    ZX_RETURN_IF_FAILED(query.AddFeature(namePrefix, featureName));
    std::vector<size_t> positions;
    if (IndexedFeatures(frameworkPrefix, namePrefix, featureName, positions)) {
        if (positions.empty()) return zx::kNotFound;
        if (node != nullptr) {
            *node = m_features.Node(positions.front());
            (*node)->AddRef();
        }
        return S_OK;
    }
    zx::ComPtr<IXMLDOMNode> found;
    ZX_RETURN_IF_FAILED(SelectFirst(query, &found));
    if (node != nullptr) *node = found.Detach();
    return S_OK;
}

HRESULT VPrintTicketHandler::DeleteFeature(const wchar_t* featureName) {
    return DeletePrefixedFeature(featureName, KeywordsPrefix());
}

// Each pass removes the first match from the document, so the loop ends when none is left.
HRESULT VPrintTicketHandler::DeletePrefixedFeature(const wchar_t* featureName, const wchar_t* namePrefix) {
    long removed = 0;
    return RemoveFeatures(namePrefix, featureName, removed);
}

// Every match, in document order; a match nested in another goes with it.
HRESULT VPrintTicketHandler::RemoveFeatures(const wchar_t* namePrefix, const wchar_t* featureName, long& removed) {
    removed = 0;
    VPrintTicketQueryBuilder query(FrameworkPrefix());
    ZX_RETURN_IF_FAILED(query.AddFeature(namePrefix, featureName));
    std::vector<zx::ComPtr<IXMLDOMNode>> matches;
    std::vector<size_t> positions;
    if (IndexedFeatures(FrameworkPrefix(), namePrefix, featureName, positions)) {
        for (size_t position : positions) matches.emplace_back(m_features.Node(position));
    } else {
        zx::unique_bstr xpath;
        ZX_RETURN_IF_FAILED(query.GetQuery(xpath.put()));
        zx::ComPtr<IXMLDOMNodeList> features;
        ZX_RETURN_IF_FAILED(Document()->selectNodes(xpath.get(), &features));
        zx::ComPtr<IXMLDOMNode> feature;
        while (features->nextNode(&feature) == S_OK && feature) matches.push_back(std::move(feature));
        m_features.Invalidate();
    }
    for (const zx::ComPtr<IXMLDOMNode>& feature : matches) {
        zx::ComPtr<IXMLDOMNode> parent;
        if (SUCCEEDED(feature->get_parentNode(&parent)) && parent) {
            const HRESULT hr = DetachNode(feature.Get());
            if (FAILED(hr)) {
                m_features.Invalidate();
                return hr;
            }
        }
        ++removed;
    }
    m_features.Removed(positions);
    return S_OK;
}

HRESULT VPrintTicketHandler::ReplaceFeatures(const wchar_t* namePrefix, const wchar_t* featureName,
                                             IXMLDOMNode* replacement) {
    ZX_RETURN_HR_IF(E_INVALIDARG, replacement == nullptr);
    long removed = 0;
    ZX_RETURN_IF_FAILED(RemoveFeatures(namePrefix, featureName, removed));
    if (removed == 0) return zx::kNotFound;
    return AppendToRoot(PrintSchema::Vocabulary::PrintTicket, replacement);
}

HRESULT VPrintTicketHandler::SelectOption(const wchar_t* namePrefix, const wchar_t* featureName,
                                          const wchar_t* subFeatureName, IXMLDOMNode** option) {
    VPrintTicketQueryBuilder query(FrameworkPrefix());
    ZX_RETURN_IF_FAILED(query.AddFeature(namePrefix, featureName));
    if (subFeatureName != nullptr) ZX_RETURN_IF_FAILED(query.AddFeature(KeywordsPrefix(), subFeatureName));
    ZX_RETURN_IF_FAILED(query.AddOptionValue(KeywordsPrefix()));
    const HRESULT indexed = IndexedOption(namePrefix, featureName, subFeatureName, option);
    if (indexed != S_FALSE) return indexed;
    return SelectFirst(query, option);
}

// The query selects, below each matching feature (or sub-feature), its Option children and the
// Value children of its OptionName scored properties, and takes the first in document order.
// With one match that is the first such child of it; with several, the query decides.
HRESULT VPrintTicketHandler::IndexedOption(const wchar_t* namePrefix, const wchar_t* featureName,
                                           const wchar_t* subFeatureName, IXMLDOMNode** option) {
    *option = nullptr;
    std::vector<size_t> features;
    if (!IndexedFeatures(FrameworkPrefix(), namePrefix, featureName, features) || features.size() > 1) return S_FALSE;
    if (features.empty()) return zx::kNotFound;
    size_t chosen = features.front();
    if (subFeatureName != nullptr) {
        std::vector<size_t> subFeatures;
        if (!IndexedFeatures(FrameworkPrefix(), KeywordsPrefix(), subFeatureName, subFeatures)) return S_FALSE;
        const size_t last = m_features.LastInside(chosen);
        std::erase_if(subFeatures, [chosen, last](size_t position) { return position <= chosen || position > last; });
        if (subFeatures.size() > 1) return S_FALSE;
        if (subFeatures.empty()) return zx::kNotFound;
        chosen = subFeatures.front();
    }
    return NotFoundIfNothing(FirstOptionOf(m_features.Node(chosen), option));
}

HRESULT VPrintTicketHandler::FirstOptionOf(IXMLDOMNode* feature, IXMLDOMNode** option) {
    const std::wstring optionName = std::wstring(KeywordsPrefix()) + L"OptionName";
    zx::ComPtr<IXMLDOMNode> child;
    ZX_RETURN_IF_FAILED(feature->get_firstChild(&child));
    while (child) {
        if (IsFrameworkElement(child.Get(), Vocabulary::Option)) {
            *option = child.Detach();
            return S_OK;
        }
        zx::unique_bstr name;
        if (IsFrameworkElement(child.Get(), Vocabulary::ScoredProperty) &&
            GetAttributeText(child.Get(), Vocabulary::Name, name.put()) == S_OK &&
            optionName == std::wstring_view(name.get(), ::SysStringLen(name.get()))) {
            const HRESULT hr = SelectChild(child.Get(), Vocabulary::Value, option);
            if (hr != S_FALSE) return hr;
        }
        zx::ComPtr<IXMLDOMNode> next;
        ZX_RETURN_IF_FAILED(child->get_nextSibling(&next));
        child = next;
    }
    return S_FALSE;
}

// Only a text that has something to strip is stripped: a document without a keywords prefix is
// read as it stands. The owner keeps its text until the stripped copy exists, so a copy that runs
// out of memory leaks nothing.
HRESULT VPrintTicketHandler::StripKeywordPrefixIfAny(zx::unique_bstr& text) {
    if (!text || IsEmpty(KeywordsPrefix())) return S_OK;
    ZX_RETURN_HR_IF(E_INVALIDARG, ::SysStringLen(text.get()) == 0);
    zx::unique_bstr stripped = WithoutFirstOccurrence(text.get(), KeywordsPrefix());
    if (stripped) text = std::move(stripped);
    return S_OK;
}

HRESULT VPrintTicketHandler::GetSelectedOption(const wchar_t* featureName, BSTR* option) {
    return GetPrefixedSelectedOption(featureName, option, KeywordsPrefix());
}

HRESULT VPrintTicketHandler::GetPrefixedSelectedOption(const wchar_t* featureName, BSTR* option,
                                                       const wchar_t* namePrefix) {
    ZX_RETURN_HR_IF_NULL(E_POINTER, option);
    *option = nullptr;
    zx::ComPtr<IXMLDOMNode> selected;
    ZX_RETURN_IF_FAILED(SelectOption(namePrefix, featureName, nullptr, &selected));
    zx::unique_bstr name;
    HRESULT hr = GetAttributeText(selected.Get(), Vocabulary::Name, name.put());
    // An OptionName Value has no name attribute: its content is the option's name.
    if (hr == S_FALSE) hr = TypedValueText(selected.Get(), name.put());
    ZX_RETURN_IF_FAILED(hr);
    ZX_RETURN_IF_FAILED(StripKeywordPrefixIfAny(name));
    *option = name.release();
    return S_OK;
}

HRESULT VPrintTicketHandler::GetSubFeatureOption(const wchar_t* featureName, const wchar_t* subFeatureName,
                                                 BSTR* option) {
    ZX_RETURN_HR_IF_NULL(E_POINTER, option);
    *option = nullptr;
    ZX_RETURN_HR_IF(E_INVALIDARG, IsEmpty(subFeatureName));
    zx::ComPtr<IXMLDOMNode> selected;
    ZX_RETURN_IF_FAILED(SelectOption(KeywordsPrefix(), featureName, subFeatureName, &selected));
    zx::unique_bstr name;
    ZX_RETURN_IF_FAILED(NotFoundIfNothing(GetAttributeText(selected.Get(), Vocabulary::Name, name.put())));
    ZX_RETURN_IF_FAILED(StripKeywordPrefixIfAny(name));
    *option = name.release();
    return S_OK;
}

HRESULT VPrintTicketHandler::SetSelectedOption(const wchar_t* featureName, const wchar_t* option) {
    ZX_RETURN_HR_IF(E_INVALIDARG, IsEmpty(option));
    zx::ComPtr<IXMLDOMNode> selected;
    ZX_RETURN_IF_FAILED(SelectOption(KeywordsPrefix(), featureName, nullptr, &selected));
    return NotFoundIfNothing(SetAttributeText(selected.Get(), Vocabulary::Name, option));
}

HRESULT VPrintTicketHandler::GetScoredPropertyText(const wchar_t* featureName, const wchar_t* propertyName,
                                                   BSTR* text) {
    ZX_RETURN_HR_IF_NULL(E_POINTER, text);
    *text = nullptr;
    VPrintTicketQueryBuilder query(FrameworkPrefix());
    ZX_RETURN_IF_FAILED(query.AddFeature(KeywordsPrefix(), featureName));
    ZX_RETURN_IF_FAILED(query.AddScoredProperty(KeywordsPrefix(), propertyName));
    // With one matching feature, the property is the first of that name below it.
    std::vector<size_t> features;
    if (IndexedFeatures(FrameworkPrefix(), KeywordsPrefix(), featureName, features) && features.size() <= 1) {
        if (features.empty()) return zx::kNotFound;
        const std::wstring wanted = std::wstring(KeywordsPrefix()) + propertyName;
        zx::ComPtr<IXMLDOMNode> property;
        VisitDescendants(m_features.Node(features.front()), [&](IXMLDOMNode* node) {
            zx::unique_bstr name;
            if (IsFrameworkElement(node, Vocabulary::ScoredProperty) &&
                GetAttributeText(node, Vocabulary::Name, name.put()) == S_OK &&
                wanted == std::wstring_view(name.get(), ::SysStringLen(name.get()))) {
                property = node;
            }
            return !property;
        });
        if (!property) return zx::kNotFound;
        return GetPropertyValueText(property.Get(), text);
    }
    zx::unique_bstr xpath;
    ZX_RETURN_IF_FAILED(query.GetQuery(xpath.put()));
    return GetValueText(xpath.get(), text);
}

HRESULT VPrintTicketHandler::GetScoredPropertyInt(const wchar_t* featureName, const wchar_t* propertyName,
                                                  INT32* value) {
    ZX_RETURN_HR_IF_NULL(E_POINTER, value);
    zx::unique_bstr text;
    ZX_RETURN_IF_FAILED(GetScoredPropertyText(featureName, propertyName, text.put()));
    return ParseInt32(text.get(), value);
}

HRESULT VPrintTicketHandler::StripKeywordPrefix(BSTR* text) {
    ZX_RETURN_HR_IF_NULL(E_POINTER, text);
    ZX_RETURN_HR_IF(E_INVALIDARG, ::SysStringLen(*text) == 0 || IsEmpty(KeywordsPrefix()));
    zx::unique_bstr stripped = WithoutFirstOccurrence(*text, KeywordsPrefix());
    if (!stripped) return S_OK;
    ::SysFreeString(*text);
    *text = stripped.release();
    return S_OK;
}

HRESULT VPrintTicketHandler::RemovePrefix(zx::unique_bstr text, const wchar_t* prefix, VStringBuffer& result) {
    result.Clear();
    result.Append(text.get());
    RemoveFirstOccurrence(result, prefix);
    return S_OK;
}
