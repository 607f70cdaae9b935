// The one way the plug-in reads and edits a Print Schema document. A handler wraps a PrintTicket
// or PrintCapabilities document that the host owns, learns the namespace prefixes the document
// itself uses, and creates, reads and removes Print Schema elements in place. It never creates or
// parses documents. Handlers live on the stack for one host call and are never shared.
//
// Operations return HRESULTs: E_POINTER for a null out pointer, E_INVALIDARG for an empty name or
// value, HRESULT_FROM_WIN32(ERROR_NOT_FOUND) for a lookup that matched nothing, DOM failures
// unchanged. A BSTR that cannot be allocated throws ATL::CAtlException and the string buffer
// throws VUtilException; callers catch both. Out values are new references the caller owns (hold
// them in zx::unique_bstr and zx::ComPtr). New elements are not attached to the document until the
// caller appends them.
//
// The handler keeps its own list of the document's features (see feature_index.h): edits made to
// the document other than through the handler, while it lives, are not seen by its lookups.
#pragma once

#include "printschema/feature_index.h"
#include "util/scoped.h"

#include <msxml2.h>
#include <sal.h>

#include <vector>

class VPrintSchemaHandler {
public:
    virtual ~VPrintSchemaHandler() = default;
    VPrintSchemaHandler(const VPrintSchemaHandler&) = delete;
    VPrintSchemaHandler& operator=(const VPrintSchemaHandler&) = delete;

    // The prefixes as found in the document, with their colon; empty when the root does not
    // declare the namespace. The private prefix is always "ns0000:".
    const wchar_t* FrameworkPrefix() const noexcept { return Text(m_frameworkPrefix); }
    const wchar_t* KeywordsPrefix() const noexcept { return Text(m_keywordsPrefix); }
    const wchar_t* SchemaInstancePrefix() const noexcept { return Text(m_schemaInstancePrefix); }
    const wchar_t* SchemaPrefix() const noexcept { return Text(m_schemaPrefix); }
    const wchar_t* PrivatePrefix() const noexcept { return Text(m_privatePrefix); }
    IXMLDOMDocument2* Document() const noexcept { return m_document.Get(); }

    // The prefix under which the root element declares namespaceUri, with a colon appended;
    // S_FALSE, prefix untouched, when it does not. The previous value of *prefix is freed.
    HRESULT GetNamespacePrefix(_In_z_ const wchar_t* namespaceUri, _Inout_ BSTR* prefix);
    // S_FALSE and a null node when nothing matches.
    HRESULT SelectSingleNode(_In_z_ const wchar_t* query, _Outptr_result_maybenull_ IXMLDOMNode** node);
    // Every element of the document named framework prefix + elementName.
    HRESULT SelectNodes(_In_z_ const wchar_t* elementName, _Outptr_ IXMLDOMNodeList** nodes);

    HRESULT CreateElement(_In_z_ const wchar_t* qualifiedName, _In_z_ const wchar_t* namespaceUri,
                          _Outptr_ IXMLDOMElement** element);
    HRESULT CreateAttribute(_In_ IXMLDOMElement* element, _In_z_ const wchar_t* qualifiedName,
                            _In_opt_z_ const wchar_t* namespaceUri, _In_z_ const wchar_t* value);
    // S_FALSE, text null, when the node has no such attribute.
    HRESULT GetAttributeText(_In_ IXMLDOMNode* node, _In_z_ const wchar_t* attributeName,
                             _Outptr_result_maybenull_ BSTR* text);
    HRESULT SetAttributeText(_In_ IXMLDOMNode* node, _In_z_ const wchar_t* attributeName, _In_z_ const wchar_t* text);
    HRESULT RemoveNode(_In_ IXMLDOMNode* node);
    // The value of the property the query selects: its Value child, or the ParameterInit its
    // ParameterRef child names. An empty value leaves *text null.
    HRESULT GetValueText(_In_z_ const wchar_t* query, _Outptr_result_maybenull_ BSTR* text);
    // The same for a property already found.
    HRESULT GetPropertyValueText(_In_ IXMLDOMNode* property, _Outptr_result_maybenull_ BSTR* text);

    // Property named framework prefix + name.
    HRESULT CreateProperty(_In_z_ const wchar_t* name, _Outptr_ IXMLDOMElement** property);
    HRESULT CreatePropertyWithValue(_In_z_ const wchar_t* name, _In_z_ const wchar_t* type, _In_z_ const wchar_t* value,
                                    _Outptr_ IXMLDOMElement** property);
    // Property named exactly qualifiedName.
    HRESULT CreateNamedPropertyWithValue(_In_z_ const wchar_t* qualifiedName, _In_z_ const wchar_t* type,
                                         _In_z_ const wchar_t* value, _Outptr_ IXMLDOMElement** property);
    // ScoredProperty named keywords prefix + name.
    HRESULT CreateScoredProperty(_In_z_ const wchar_t* name, _Outptr_ IXMLDOMElement** property);
    HRESULT CreateScoredPropertyWithValue(_In_z_ const wchar_t* name, _In_z_ const wchar_t* type,
                                          _In_z_ const wchar_t* value, _Outptr_ IXMLDOMElement** property);
    HRESULT CreateStringScoredProperty(_In_z_ const wchar_t* name, _In_z_ const wchar_t* value,
                                       _Outptr_ IXMLDOMElement** property);
    // Written with "%i".
    HRESULT CreateIntegerScoredProperty(_In_z_ const wchar_t* name, INT32 value, _Outptr_ IXMLDOMElement** property);
    // Written with "%.2f": always two decimals.
    HRESULT CreateDecimalScoredProperty(_In_z_ const wchar_t* name, double value, _Outptr_ IXMLDOMElement** property);
    // ScoredProperty named namePrefix + name.
    HRESULT CreatePrefixedScoredProperty(_In_z_ const wchar_t* name, _Outptr_ IXMLDOMElement** property,
                                         _In_opt_z_ const wchar_t* namePrefix);
    // A prefixed ScoredProperty holding child (for example a ParameterRef).
    HRESULT WrapInPrefixedScoredProperty(_In_z_ const wchar_t* name, _In_ IXMLDOMNode* child,
                                         _Outptr_ IXMLDOMElement** property, _In_opt_z_ const wchar_t* namePrefix);

protected:
    // Throws VUtilException: E_PENDING without a document, E_FAIL when the root does not declare
    // the framework namespace, or the DOM's failure.
    VPrintSchemaHandler(_In_z_ const wchar_t* rootName, _In_opt_ IXMLDOMDocument2* document);

    static const wchar_t* Text(const zx::unique_bstr& text) noexcept { return text ? text.get() : L""; }
    static bool IsEmpty(const wchar_t* text) noexcept { return text == nullptr || *text == L'\0'; }
    // prefix + name in a new BSTR; either may be null.
    static zx::unique_bstr Join(const wchar_t* prefix, const wchar_t* name);
    // A lookup's "nothing matched" (S_FALSE) becomes HRESULT_FROM_WIN32(ERROR_NOT_FOUND).
    static HRESULT NotFoundIfNothing(HRESULT hr) noexcept;
    // E_POINTER for a null out pointer; otherwise empties *out, then E_INVALIDARG for an empty name.
    template <typename T>
    static HRESULT ResetOutRequireName(T** out, const wchar_t* name) noexcept {
        if (out == nullptr) return E_POINTER;
        *out = nullptr;
        return IsEmpty(name) ? E_INVALIDARG : S_OK;
    }

    // An element named framework prefix + localName with the attribute name = nameAttribute.
    HRESULT CreateNamedElement(const wchar_t* localName, const wchar_t* nameAttribute, IXMLDOMElement** element);
    // Appends a Value child of the given XML Schema type holding text.
    HRESULT AppendTypedValue(IXMLDOMElement* parent, const wchar_t* type, const wchar_t* text);
    // The typed value of a node as text; null when empty.
    static HRESULT TypedValueText(IXMLDOMNode* node, BSTR* text);
    // RemoveNode without forgetting the feature list; the caller keeps it in step.
    static HRESULT DetachNode(IXMLDOMNode* node);
    // The first child element of the framework namespace named localName; S_FALSE when none.
    static HRESULT SelectChild(IXMLDOMNode* parent, const wchar_t* localName, IXMLDOMNode** child);

    VFeatureIndex m_features;

private:
    struct RootAttribute {
        zx::unique_bstr value;
        zx::unique_bstr name;
    };

    HRESULT BindPrefixes();
    HRESULT ReadRootPrefixes();
    HRESULT ReadRootAttributes(std::vector<RootAttribute>& attributes);
    static HRESULT PrefixAmong(const std::vector<RootAttribute>& attributes, const wchar_t* namespaceUri,
                               BSTR* prefix);
    HRESULT SetDocumentProperty(const wchar_t* name, const wchar_t* value);
    HRESULT BindDocumentFrameworkPrefix();
    HRESULT FindRootElement(IXMLDOMNode** root);
    HRESULT ParameterInitValueText(const wchar_t* parameterName, BSTR* text);
    static HRESULT FindAttribute(IXMLDOMNode* node, const wchar_t* attributeName, IXMLDOMNode** attribute);
    HRESULT CreatePropertyElement(const wchar_t* localName, const wchar_t* qualifiedName, const wchar_t* type,
                                  const wchar_t* value, IXMLDOMElement** property);

    zx::ComPtr<IXMLDOMDocument2> m_document;
    zx::unique_bstr m_rootName;
    zx::unique_bstr m_schemaPrefix;
    zx::unique_bstr m_schemaInstancePrefix;
    zx::unique_bstr m_frameworkPrefix;
    zx::unique_bstr m_keywordsPrefix;
    zx::unique_bstr m_privatePrefix;
};
