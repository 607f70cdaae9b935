#include "printschema/schema_handler.h"

#include "util/msxml_ids.h"
#include "printschema/print_schema_names.h"
#include "printschema/string_buffer.h"
#include "util/result.h"

#include <algorithm>
#include <cwchar>
#include <iterator>
#include <utility>

using namespace PrintSchema;

namespace {

constexpr wchar_t kDeclarationStart[] = L"xmlns:";
constexpr size_t kDeclarationStartLength = sizeof(kDeclarationStart) / sizeof(wchar_t) - 1;
constexpr LCID kUserDefaultLocale = 0x400;

void SetNodeType(zx::unique_variant& variant, DOMNodeType type) {
    VARIANT* value = variant.put();
    value->vt = VT_I4;
    value->lVal = type;
}

void SetText(zx::unique_variant& variant, const wchar_t* text) {
    zx::unique_bstr copy = zx::MakeBstr(text);
    VARIANT* value = variant.put();
    value->vt = VT_BSTR;
    value->bstrVal = copy.release();
}

bool EqualTexts(BSTR first, BSTR second) noexcept {
    return ::VarBstrCmp(first, second, kUserDefaultLocale, 0) == static_cast<HRESULT>(VARCMP_EQ);
}

bool SameCharacters(BSTR first, const wchar_t* second) noexcept {
    const UINT length = ::SysStringLen(first);
    return std::wcslen(second) == length && std::wmemcmp(first, second, length) == 0;
}

// The namespaces whose prefixes every handler looks up. They differ from one another in their
// letters, so the locale's comparison never finds two of them equal.
constexpr const wchar_t* kLookedUpNamespaces[] = {Uri::Framework, Uri::Keywords, Uri::SchemaInstance, Uri::Schema};

bool IsLookedUpNamespace(const wchar_t* uri) noexcept {
    return std::any_of(std::begin(kLookedUpNamespaces), std::end(kLookedUpNamespaces),
                       [uri](const wchar_t* known) { return std::wcscmp(known, uri) == 0; });
}

// Whether a declaration's value names the namespace, as the locale's comparison finds it. The
// comparison is slow under some systems' collation and a ticket's root declares the looked-up
// namespaces spelled exactly, so the same characters answer at once, and so does a value spelled
// as one of the other looked-up namespaces.
bool NamesNamespace(BSTR value, const wchar_t* uri, BSTR uriText) noexcept {
    if (SameCharacters(value, uri)) return true;
    if (IsLookedUpNamespace(uri) &&
        std::any_of(std::begin(kLookedUpNamespaces), std::end(kLookedUpNamespaces),
                    [value](const wchar_t* known) { return SameCharacters(value, known); })) {
        return false;
    }
    return EqualTexts(value, uriText);
}

// The value and name of the attribute at index; false when they cannot be read, which counts as
// no match: Wine's MSXML fails on the default namespace declaration.
bool ReadAttribute(IXMLDOMNamedNodeMap* attributes, long index, zx::unique_bstr& value, zx::unique_bstr& name) {
    zx::ComPtr<IXMLDOMNode> attribute;
    if (attributes->get_item(index, &attribute) != S_OK || !attribute) return false;
    zx::unique_variant text;
    if (FAILED(attribute->get_nodeValue(text.put())) || text.type() != VT_BSTR) return false;
    value.reset(std::exchange(text.get()->bstrVal, nullptr));
    text.get()->vt = VT_EMPTY;
    return SUCCEEDED(attribute->get_nodeName(name.put())) && name;
}

// "xmlns:f" declares the prefix "f:".
HRESULT PrefixFromDeclaration(const wchar_t* declaration, BSTR* prefix) {
    ZX_RETURN_HR_IF(E_FAIL, std::wcsncmp(declaration, kDeclarationStart, kDeclarationStartLength) != 0);
    VStringBuffer text(declaration + kDeclarationStartLength);
    text.Append(L":");
    zx::unique_bstr result = text.ToBstr();
    ::SysFreeString(*prefix);
    *prefix = result.release();
    return S_OK;
}

}  // namespace

VPrintSchemaHandler::VPrintSchemaHandler(const wchar_t* rootName, IXMLDOMDocument2* document)
    : m_document(document), m_rootName(zx::MakeBstr(rootName)) {
    zx::ThrowIfFailed(BindPrefixes());
}

zx::unique_bstr VPrintSchemaHandler::Join(const wchar_t* prefix, const wchar_t* name) {
    VStringBuffer joined(prefix);
    joined.Append(name);
    return joined.ToBstr();
}

HRESULT VPrintSchemaHandler::NotFoundIfNothing(HRESULT hr) noexcept { return hr == S_FALSE ? zx::kNotFound : hr; }

// XPath queries name the framework namespace "psf" until the document's own prefix is known.
HRESULT VPrintSchemaHandler::BindPrefixes() {
    ZX_RETURN_HR_IF_NULL(E_PENDING, m_document.Get());
    ZX_RETURN_IF_FAILED(SetDocumentProperty(Vocabulary::SelectionLanguage, Vocabulary::XPath));
    VStringBuffer namespaces;
    namespaces.AppendFormat(Vocabulary::NamespaceDeclaration, Vocabulary::FrameworkPrefix, Uri::Framework);
    ZX_RETURN_IF_FAILED(SetDocumentProperty(Vocabulary::SelectionNamespaces, namespaces.c_str()));

    ZX_RETURN_IF_FAILED(ReadRootPrefixes());
    m_privatePrefix = zx::MakeBstr(Prefix::Private);
    return BindDocumentFrameworkPrefix();
}

// The four prefixes from one walk over the root's attributes, with the outcome of asking
// GetNamespacePrefix for each in turn: the first failure ends the lookups.
HRESULT VPrintSchemaHandler::ReadRootPrefixes() {
    static constexpr struct {
        const wchar_t* uri;
        zx::unique_bstr VPrintSchemaHandler::*prefix;
    } kLookups[] = {
        {Uri::Framework, &VPrintSchemaHandler::m_frameworkPrefix},
        {Uri::Keywords, &VPrintSchemaHandler::m_keywordsPrefix},
        {Uri::SchemaInstance, &VPrintSchemaHandler::m_schemaInstancePrefix},
        {Uri::Schema, &VPrintSchemaHandler::m_schemaPrefix},
    };
    std::vector<RootAttribute> attributes;
    const HRESULT hr = ReadRootAttributes(attributes);
    if (hr != S_OK) return FAILED(hr) ? hr : S_OK;  // no root: every prefix stays empty
    for (const auto& lookup : kLookups) {
        ZX_RETURN_IF_FAILED(PrefixAmong(attributes, lookup.uri, (this->*lookup.prefix).put()));
    }
    return S_OK;
}

// Every attribute of the root that can be read: its value and its name.
HRESULT VPrintSchemaHandler::ReadRootAttributes(std::vector<RootAttribute>& found) {
    zx::ComPtr<IXMLDOMNode> root;
    const HRESULT hr = FindRootElement(&root);
    if (hr != S_OK) return hr;
    zx::ComPtr<IXMLDOMNamedNodeMap> attributes;
    ZX_RETURN_IF_FAILED(root->get_attributes(&attributes));
    ZX_RETURN_HR_IF(S_FALSE, !attributes);
    long count = 0;
    ZX_RETURN_IF_FAILED(attributes->get_length(&count));
    for (long index = 0; index < count; ++index) {
        RootAttribute attribute;
        if (ReadAttribute(attributes.Get(), index, attribute.value, attribute.name)) found.push_back(std::move(attribute));
    }
    return S_OK;
}

HRESULT VPrintSchemaHandler::PrefixAmong(const std::vector<RootAttribute>& attributes, const wchar_t* namespaceUri,
                                         BSTR* prefix) {
    const zx::unique_bstr uri = zx::MakeBstr(namespaceUri);
    for (const RootAttribute& attribute : attributes) {
        if (NamesNamespace(attribute.value.get(), namespaceUri, uri.get()))
            return PrefixFromDeclaration(attribute.name.get(), prefix);
    }
    return S_FALSE;
}

HRESULT VPrintSchemaHandler::SetDocumentProperty(const wchar_t* name, const wchar_t* value) {
    const zx::unique_bstr property = zx::MakeBstr(name);
    zx::unique_variant text;
    SetText(text, value);
    return m_document->setProperty(property.get(), *text);
}

// From here on queries use the document's own framework prefix. "psf" stays bound as well, so
// that lookups which name the host's usual prefix also work on a document that uses another one.
HRESULT VPrintSchemaHandler::BindDocumentFrameworkPrefix() {
    VStringBuffer prefix(m_frameworkPrefix.get());
    const size_t colon = prefix.Find(L":");
    ZX_RETURN_HR_IF(E_FAIL, colon == VStringBuffer::npos);
    prefix.Erase(colon, 1);
    ZX_RETURN_HR_IF(E_FAIL, prefix.Empty());

    // A document that uses "psf" itself keeps the binding BindPrefixes made.
    if (std::wcscmp(prefix.c_str(), Vocabulary::FrameworkPrefix) == 0) return S_OK;
    VStringBuffer namespaces;
    namespaces.AppendFormat(Vocabulary::NamespaceDeclaration, prefix.c_str(), Uri::Framework);
    namespaces.Append(L" ");
    namespaces.AppendFormat(Vocabulary::NamespaceDeclaration, Vocabulary::FrameworkPrefix, Uri::Framework);
    return SetDocumentProperty(Vocabulary::SelectionNamespaces, namespaces.c_str());
}

// The first element of that name in document order: the document element when it is one, which
// spares the query.
HRESULT VPrintSchemaHandler::FindRootElement(IXMLDOMNode** root) {
    zx::ComPtr<IXMLDOMElement> element;
    if (m_document->get_documentElement(&element) == S_OK && element &&
        IsFrameworkElement(element.Get(), m_rootName.get())) {
        return element->QueryInterface(IID_IXMLDOMNode, reinterpret_cast<void**>(root));
    }
    VStringBuffer query;
    query.AppendFormat(Vocabulary::RootQuery, Vocabulary::FrameworkPrefix, m_rootName.get());
    return SelectSingleNode(query.c_str(), root);
}

// Declarations are walked by index: Wine's MSXML leaves them out of reset/nextNode. (Wine also
// hides the last declaration of an element without ordinary attributes; host tickets always carry
// the version attribute, so their declarations are all listed.)
HRESULT VPrintSchemaHandler::GetNamespacePrefix(const wchar_t* namespaceUri, BSTR* prefix) {
    ZX_RETURN_HR_IF_NULL(E_POINTER, prefix);
    ZX_RETURN_HR_IF(E_INVALIDARG, IsEmpty(namespaceUri));
    std::vector<RootAttribute> attributes;
    const HRESULT hr = ReadRootAttributes(attributes);
    if (hr != S_OK) return hr;
    return PrefixAmong(attributes, namespaceUri, prefix);
}

HRESULT VPrintSchemaHandler::SelectSingleNode(const wchar_t* query, IXMLDOMNode** node) {
    ZX_RETURN_IF_FAILED(ResetOutRequireName(node, query));
    const zx::unique_bstr xpath = zx::MakeBstr(query);
    const HRESULT hr = m_document->selectSingleNode(xpath.get(), node);
    return SUCCEEDED(hr) && *node == nullptr ? S_FALSE : hr;
}

// The first child element of the framework namespace with that local name, as the query
// framework prefix + localName selects it from parent; S_FALSE when there is none.
HRESULT VPrintSchemaHandler::SelectChild(IXMLDOMNode* parent, const wchar_t* localName, IXMLDOMNode** child) {
    *child = nullptr;
    zx::ComPtr<IXMLDOMNode> node;
    ZX_RETURN_IF_FAILED(parent->get_firstChild(&node));
    while (node) {
        if (IsFrameworkElement(node.Get(), localName)) {
            *child = node.Detach();
            return S_OK;
        }
        zx::ComPtr<IXMLDOMNode> next;
        ZX_RETURN_IF_FAILED(node->get_nextSibling(&next));
        node = next;
    }
    return S_FALSE;
}

HRESULT VPrintSchemaHandler::SelectNodes(const wchar_t* elementName, IXMLDOMNodeList** nodes) {
    ZX_RETURN_IF_FAILED(ResetOutRequireName(nodes, elementName));
    VStringBuffer query(L"//");
    query.Append(FrameworkPrefix());
    query.Append(elementName);
    const zx::unique_bstr xpath = query.ToBstr();
    return m_document->selectNodes(xpath.get(), nodes);
}

HRESULT VPrintSchemaHandler::CreateElement(const wchar_t* qualifiedName, const wchar_t* namespaceUri,
                                           IXMLDOMElement** element) {
    ZX_RETURN_HR_IF_NULL(E_POINTER, element);
    *element = nullptr;
    ZX_RETURN_HR_IF(E_INVALIDARG, qualifiedName == nullptr || namespaceUri == nullptr);
    zx::unique_variant type;
    SetNodeType(type, NODE_ELEMENT);
    const zx::unique_bstr name = zx::MakeBstr(qualifiedName);
    const zx::unique_bstr uri = zx::MakeBstr(namespaceUri);
    zx::ComPtr<IXMLDOMNode> node;
    ZX_RETURN_IF_FAILED(m_document->createNode(*type, name.get(), uri.get(), &node));
    return node->QueryInterface(msxml6::IID_IXMLDOMElement, reinterpret_cast<void**>(element));
}

HRESULT VPrintSchemaHandler::CreateAttribute(IXMLDOMElement* element, const wchar_t* qualifiedName,
                                             const wchar_t* namespaceUri, const wchar_t* value) {
    ZX_RETURN_HR_IF(E_INVALIDARG, element == nullptr || qualifiedName == nullptr || value == nullptr);
    zx::ComPtr<IXMLDOMNode> parent;
    if (SUCCEEDED(element->get_parentNode(&parent)) && parent) m_features.Invalidate();  // not a new element
    if (namespaceUri == nullptr) {
        // The same attribute, set without making an attribute node first.
        const zx::unique_bstr name = zx::MakeBstr(qualifiedName);
        zx::unique_variant text;
        SetText(text, value);
        return element->setAttribute(name.get(), *text);
    }
    zx::unique_variant type;
    SetNodeType(type, NODE_ATTRIBUTE);
    const zx::unique_bstr name = zx::MakeBstr(qualifiedName);
    zx::unique_bstr uri;
    if (namespaceUri != nullptr) uri = zx::MakeBstr(namespaceUri);
    zx::ComPtr<IXMLDOMNode> node;
    ZX_RETURN_IF_FAILED(m_document->createNode(*type, name.get(), uri.get(), &node));
    zx::ComPtr<IXMLDOMAttribute> attribute;
    ZX_RETURN_IF_FAILED(
        node->QueryInterface(msxml6::IID_IXMLDOMAttribute, reinterpret_cast<void**>(attribute.GetAddressOf())));
    zx::unique_variant text;
    SetText(text, value);
    ZX_RETURN_IF_FAILED(attribute->put_value(*text));
    zx::ComPtr<IXMLDOMAttribute> replaced;
    return element->setAttributeNode(attribute.Get(), &replaced);
}

HRESULT VPrintSchemaHandler::FindAttribute(IXMLDOMNode* node, const wchar_t* attributeName, IXMLDOMNode** attribute) {
    zx::ComPtr<IXMLDOMNamedNodeMap> attributes;
    ZX_RETURN_IF_FAILED(node->get_attributes(&attributes));
    ZX_RETURN_HR_IF(S_FALSE, !attributes);
    const zx::unique_bstr name = zx::MakeBstr(attributeName);
    const HRESULT hr = attributes->getNamedItem(name.get(), attribute);
    return SUCCEEDED(hr) && *attribute == nullptr ? S_FALSE : hr;
}

// Only elements have attributes; an element hands out an attribute's text in one call.
HRESULT VPrintSchemaHandler::GetAttributeText(IXMLDOMNode* node, const wchar_t* attributeName, BSTR* text) {
    ZX_RETURN_HR_IF_NULL(E_POINTER, text);
    *text = nullptr;
    ZX_RETURN_HR_IF(E_INVALIDARG, node == nullptr || IsEmpty(attributeName));
    zx::ComPtr<IXMLDOMElement> element;
    if (FAILED(node->QueryInterface(msxml6::IID_IXMLDOMElement, reinterpret_cast<void**>(element.GetAddressOf())))) {
        return S_FALSE;
    }
    zx::unique_variant value;
    const zx::unique_bstr name = zx::MakeBstr(attributeName);
    const HRESULT hr = element->getAttribute(name.get(), value.put());
    if (hr != S_OK) return hr;
    if (value.type() != VT_BSTR) return S_FALSE;
    *text = std::exchange(value.get()->bstrVal, nullptr);
    value.get()->vt = VT_EMPTY;
    return S_OK;
}

HRESULT VPrintSchemaHandler::SetAttributeText(IXMLDOMNode* node, const wchar_t* attributeName, const wchar_t* text) {
    ZX_RETURN_HR_IF(E_INVALIDARG, node == nullptr || IsEmpty(attributeName) || text == nullptr);
    zx::ComPtr<IXMLDOMNode> attribute;
    const HRESULT hr = FindAttribute(node, attributeName, &attribute);
    if (hr != S_OK) return hr;
    const zx::unique_bstr value = zx::MakeBstr(text);
    if (std::wcscmp(attributeName, Vocabulary::Name) == 0 && IsFrameworkElement(node, Vocabulary::Feature)) {
        m_features.Invalidate();  // a feature renamed
    }
    return attribute->put_text(value.get());
}

HRESULT VPrintSchemaHandler::RemoveNode(IXMLDOMNode* node) {
    m_features.Invalidate();
    return DetachNode(node);
}

HRESULT VPrintSchemaHandler::DetachNode(IXMLDOMNode* node) {
    ZX_RETURN_HR_IF_NULL(E_INVALIDARG, node);
    zx::ComPtr<IXMLDOMNode> parent;
    ZX_RETURN_IF_FAILED(node->get_parentNode(&parent));
    ZX_RETURN_HR_IF(E_FAIL, !parent);
    zx::ComPtr<IXMLDOMNode> removed;
    ZX_RETURN_IF_FAILED(parent->removeChild(node, &removed));
    return removed ? S_OK : E_FAIL;
}

HRESULT VPrintSchemaHandler::TypedValueText(IXMLDOMNode* node, BSTR* text) {
    zx::unique_variant value;
    ZX_RETURN_IF_FAILED(node->get_nodeTypedValue(value.put()));
    ZX_RETURN_IF_FAILED(::VariantChangeType(value.get(), value.get(), 0, VT_BSTR));
    if (::SysStringLen(V_BSTR(value.get())) != 0) *text = zx::MakeBstr(V_BSTR(value.get())).release();
    return S_OK;
}

HRESULT VPrintSchemaHandler::GetValueText(const wchar_t* query, BSTR* text) {
    ZX_RETURN_IF_FAILED(ResetOutRequireName(text, query));
    zx::ComPtr<IXMLDOMNode> property;
    const HRESULT hr = SelectSingleNode(query, &property);
    if (hr != S_OK) return NotFoundIfNothing(hr);
    return GetPropertyValueText(property.Get(), text);
}

HRESULT VPrintSchemaHandler::GetPropertyValueText(IXMLDOMNode* property, BSTR* text) {
    ZX_RETURN_HR_IF_NULL(E_POINTER, text);
    *text = nullptr;
    ZX_RETURN_HR_IF_NULL(E_INVALIDARG, property);
    zx::ComPtr<IXMLDOMNode> value;
    HRESULT hr = SelectChild(property, Vocabulary::Value, &value);
    if (hr != S_FALSE) return SUCCEEDED(hr) ? TypedValueText(value.Get(), text) : hr;

    zx::ComPtr<IXMLDOMNode> reference;
    hr = SelectChild(property, Vocabulary::ParameterRef, &reference);
    if (hr != S_OK) return NotFoundIfNothing(hr);
    zx::unique_bstr parameterName;
    hr = GetAttributeText(reference.Get(), Vocabulary::Name, parameterName.put());
    if (hr != S_OK) return NotFoundIfNothing(hr);
    return ParameterInitValueText(parameterName.get(), text);
}

HRESULT VPrintSchemaHandler::ParameterInitValueText(const wchar_t* parameterName, BSTR* text) {
    zx::ComPtr<IXMLDOMNodeList> initialisers;
    ZX_RETURN_IF_FAILED(SelectNodes(Vocabulary::ParameterInit, &initialisers));
    long count = 0;
    ZX_RETURN_IF_FAILED(initialisers->get_length(&count));
    const zx::unique_bstr wanted = zx::MakeBstr(parameterName);
    for (long index = 0; index < count; ++index) {
        zx::ComPtr<IXMLDOMNode> initialiser;
        if (initialisers->get_item(index, &initialiser) != S_OK || !initialiser) continue;
        zx::unique_bstr name;
        if (GetAttributeText(initialiser.Get(), Vocabulary::Name, name.put()) != S_OK) continue;
        if (EqualTexts(name.get(), wanted.get())) return TypedValueText(initialiser.Get(), text);
    }
    return zx::kNotFound;
}

HRESULT VPrintSchemaHandler::CreateNamedElement(const wchar_t* localName, const wchar_t* nameAttribute,
                                                IXMLDOMElement** element) {
    const zx::unique_bstr qualifiedName = Join(FrameworkPrefix(), localName);
    zx::ComPtr<IXMLDOMElement> created;
    ZX_RETURN_IF_FAILED(CreateElement(qualifiedName.get(), Uri::Framework, &created));
    if (nameAttribute != nullptr)
        ZX_RETURN_IF_FAILED(CreateAttribute(created.Get(), Vocabulary::Name, nullptr, nameAttribute));
    *element = created.Detach();
    return S_OK;
}

HRESULT VPrintSchemaHandler::AppendTypedValue(IXMLDOMElement* parent, const wchar_t* type, const wchar_t* text) {
    ZX_RETURN_HR_IF(E_INVALIDARG, IsEmpty(type) || IsEmpty(text));
    zx::ComPtr<IXMLDOMElement> value;
    ZX_RETURN_IF_FAILED(CreateNamedElement(Vocabulary::Value, nullptr, &value));
    const zx::unique_bstr typeAttribute = Join(SchemaInstancePrefix(), Vocabulary::Type);
    const zx::unique_bstr typeName = Join(SchemaPrefix(), type);
    ZX_RETURN_IF_FAILED(CreateAttribute(value.Get(), typeAttribute.get(), Uri::SchemaInstance, typeName.get()));
    const zx::unique_bstr content = zx::MakeBstr(text);
    ZX_RETURN_IF_FAILED(value->put_text(content.get()));
    zx::ComPtr<IXMLDOMNode> appended;
    return parent->appendChild(value.Get(), &appended);
}

HRESULT VPrintSchemaHandler::CreatePropertyElement(const wchar_t* localName, const wchar_t* qualifiedName,
                                                   const wchar_t* type, const wchar_t* value,
                                                   IXMLDOMElement** property) {
    zx::ComPtr<IXMLDOMElement> created;
    ZX_RETURN_IF_FAILED(CreateNamedElement(localName, qualifiedName, &created));
    ZX_RETURN_IF_FAILED(AppendTypedValue(created.Get(), type, value));
    *property = created.Detach();
    return S_OK;
}

HRESULT VPrintSchemaHandler::CreateProperty(const wchar_t* name, IXMLDOMElement** property) {
    ZX_RETURN_IF_FAILED(ResetOutRequireName(property, name));
    const zx::unique_bstr qualifiedName = Join(FrameworkPrefix(), name);
    return CreateNamedElement(Vocabulary::Property, qualifiedName.get(), property);
}

HRESULT VPrintSchemaHandler::CreatePropertyWithValue(const wchar_t* name, const wchar_t* type, const wchar_t* value,
                                                     IXMLDOMElement** property) {
    ZX_RETURN_IF_FAILED(ResetOutRequireName(property, name));
    const zx::unique_bstr qualifiedName = Join(FrameworkPrefix(), name);
    return CreatePropertyElement(Vocabulary::Property, qualifiedName.get(), type, value, property);
}

HRESULT VPrintSchemaHandler::CreateNamedPropertyWithValue(const wchar_t* qualifiedName, const wchar_t* type,
                                                          const wchar_t* value, IXMLDOMElement** property) {
    ZX_RETURN_IF_FAILED(ResetOutRequireName(property, qualifiedName));
    return CreatePropertyElement(Vocabulary::Property, qualifiedName, type, value, property);
}

HRESULT VPrintSchemaHandler::CreateScoredProperty(const wchar_t* name, IXMLDOMElement** property) {
    return CreatePrefixedScoredProperty(name, property, KeywordsPrefix());
}

HRESULT VPrintSchemaHandler::CreateScoredPropertyWithValue(const wchar_t* name, const wchar_t* type,
                                                           const wchar_t* value, IXMLDOMElement** property) {
    ZX_RETURN_IF_FAILED(ResetOutRequireName(property, name));
    const zx::unique_bstr qualifiedName = Join(KeywordsPrefix(), name);
    return CreatePropertyElement(Vocabulary::ScoredProperty, qualifiedName.get(), type, value, property);
}

HRESULT VPrintSchemaHandler::CreateStringScoredProperty(const wchar_t* name, const wchar_t* value,
                                                        IXMLDOMElement** property) {
    return CreateScoredPropertyWithValue(name, Vocabulary::String, value, property);
}

HRESULT VPrintSchemaHandler::CreateIntegerScoredProperty(const wchar_t* name, INT32 value, IXMLDOMElement** property) {
    VStringBuffer text;
    text.AppendFormat(L"%i", value);
    return CreateScoredPropertyWithValue(name, Vocabulary::Integer, text.c_str(), property);
}

HRESULT VPrintSchemaHandler::CreateDecimalScoredProperty(const wchar_t* name, double value, IXMLDOMElement** property) {
    VStringBuffer text;
    text.AppendFormat(L"%.2f", value);
    return CreateScoredPropertyWithValue(name, Vocabulary::Decimal, text.c_str(), property);
}

HRESULT VPrintSchemaHandler::CreatePrefixedScoredProperty(const wchar_t* name, IXMLDOMElement** property,
                                                          const wchar_t* namePrefix) {
    ZX_RETURN_IF_FAILED(ResetOutRequireName(property, name));
    const zx::unique_bstr qualifiedName = Join(namePrefix, name);
    return CreateNamedElement(Vocabulary::ScoredProperty, qualifiedName.get(), property);
}

HRESULT VPrintSchemaHandler::WrapInPrefixedScoredProperty(const wchar_t* name, IXMLDOMNode* child,
                                                          IXMLDOMElement** property, const wchar_t* namePrefix) {
    ZX_RETURN_IF_FAILED(ResetOutRequireName(property, name));
    ZX_RETURN_HR_IF_NULL(E_INVALIDARG, child);
    zx::ComPtr<IXMLDOMElement> wrapper;
    ZX_RETURN_IF_FAILED(CreatePrefixedScoredProperty(name, &wrapper, namePrefix));
    zx::ComPtr<IXMLDOMNode> parent;
    if (SUCCEEDED(child->get_parentNode(&parent)) && parent) m_features.Invalidate();  // moved out of the document
    zx::ComPtr<IXMLDOMNode> appended;
    ZX_RETURN_IF_FAILED(wrapper->appendChild(child, &appended));
    *property = wrapper.Detach();
    return S_OK;
}
