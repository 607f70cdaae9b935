// Feature and option operations on a PrintTicket. Feature names are given without their prefix
// unless an argument names the prefix; standard names take the document's keywords prefix.
#pragma once

#include "printschema/schema_handler.h"
#include "printschema/string_buffer.h"

class VPrintTicketQueryBuilder;

class VPrintTicketHandler : public VPrintSchemaHandler {
public:
    // Throws VUtilException; see VPrintSchemaHandler.
    explicit VPrintTicketHandler(_In_opt_ IXMLDOMDocument2* ticket);

    // Appends child to the root element named framework prefix + rootName.
    HRESULT AppendToRoot(_In_z_ const wchar_t* rootName, _In_ IXMLDOMNode* child);

    // A Feature with one Option child, neither attached to the document. Names: keywords prefix,
    // unless a prefix argument says otherwise. CreateFeature leaves the Option unnamed.
    HRESULT CreateFeature(_In_z_ const wchar_t* featureName, _Outptr_ IXMLDOMElement** feature,
                          _Outptr_ IXMLDOMElement** option);
    HRESULT CreateFeatureOption(_In_z_ const wchar_t* featureName, _In_z_ const wchar_t* optionName,
                                _Outptr_ IXMLDOMElement** feature, _Outptr_ IXMLDOMElement** option);
    HRESULT CreateFeatureOptionPrefixed(_In_z_ const wchar_t* featureName, _In_z_ const wchar_t* optionName,
                                        _Outptr_ IXMLDOMElement** feature, _Outptr_ IXMLDOMElement** option,
                                        _In_opt_z_ const wchar_t* optionPrefix);
    HRESULT CreatePrefixedFeatureOption(_In_z_ const wchar_t* featureName, _In_z_ const wchar_t* optionName,
                                        _Outptr_ IXMLDOMElement** feature, _Outptr_ IXMLDOMElement** option,
                                        _In_opt_z_ const wchar_t* featurePrefix,
                                        _In_opt_z_ const wchar_t* optionPrefix);

    // A ParameterRef and a ParameterInit holding a typed Value, both named with the private prefix
    // for the plug-in's own parameters and with the keywords prefix otherwise. Handed out only
    // when every step succeeded.
    HRESULT CreateParameter(_In_z_ const wchar_t* parameterName, _In_z_ const wchar_t* type,
                            _In_z_ const wchar_t* value, _Outptr_ IXMLDOMElement** parameterRef,
                            _Outptr_ IXMLDOMElement** parameterInit);
    HRESULT CreateIntegerParameter(_In_z_ const wchar_t* parameterName, INT32 value,
                                   _Outptr_ IXMLDOMElement** parameterRef, _Outptr_ IXMLDOMElement** parameterInit);

    // The first matching feature; node may be null when only presence matters.
    HRESULT FindFeature(_In_z_ const wchar_t* featureName, _Outptr_opt_result_maybenull_ IXMLDOMNode** node = nullptr);
    HRESULT FindPrefixedFeature(_In_z_ const wchar_t* featureName, _In_opt_z_ const wchar_t* frameworkPrefix,
                                _In_opt_z_ const wchar_t* namePrefix,
                                _Outptr_opt_result_maybenull_ IXMLDOMNode** node = nullptr);
    // Removes every matching feature; S_OK also when there was none.
    HRESULT DeleteFeature(_In_z_ const wchar_t* featureName);
    HRESULT DeletePrefixedFeature(_In_z_ const wchar_t* featureName, _In_opt_z_ const wchar_t* namePrefix);

    // Removes every feature named namePrefix + featureName and appends the replacement to the
    // root; HRESULT_FROM_WIN32(ERROR_NOT_FOUND), and the ticket unchanged, when it has none.
    HRESULT ReplaceFeatures(_In_opt_z_ const wchar_t* namePrefix, _In_z_ const wchar_t* featureName,
                            _In_ IXMLDOMNode* replacement);

    // The selected option's name (or its OptionName value) with the keywords prefix removed; other
    // prefixes, such as the private one, stay.
    HRESULT GetSelectedOption(_In_z_ const wchar_t* featureName, _Outptr_result_maybenull_ BSTR* option);
    HRESULT GetPrefixedSelectedOption(_In_z_ const wchar_t* featureName, _Outptr_result_maybenull_ BSTR* option,
                                      _In_opt_z_ const wchar_t* namePrefix);
    HRESULT GetSubFeatureOption(_In_z_ const wchar_t* featureName, _In_z_ const wchar_t* subFeatureName,
                                _Outptr_result_maybenull_ BSTR* option);
    // Renames the selected option; option is written as given, prefix included.
    HRESULT SetSelectedOption(_In_z_ const wchar_t* featureName, _In_z_ const wchar_t* option);

    HRESULT GetScoredPropertyText(_In_z_ const wchar_t* featureName, _In_z_ const wchar_t* propertyName,
                                  _Outptr_result_maybenull_ BSTR* text);
    // E_INVALIDARG when the value is not a 32-bit decimal integer.
    HRESULT GetScoredPropertyInt(_In_z_ const wchar_t* featureName, _In_z_ const wchar_t* propertyName,
                                 _Out_ INT32* value);

    // Removes the first occurrence of the keywords prefix; E_INVALIDARG for an empty text or when
    // the document has no keywords prefix.
    HRESULT StripKeywordPrefix(_Inout_ BSTR* text);
    // text without the first occurrence of prefix, or unchanged when prefix does not occur.
    static HRESULT RemovePrefix(zx::unique_bstr text, _In_opt_z_ const wchar_t* prefix, VStringBuffer& result);

private:
    // The positions in the feature list of the features named namePrefix + featureName, when the
    // list can answer a lookup made with this framework prefix; false: run the query.
    bool IndexedFeatures(const wchar_t* frameworkPrefix, const wchar_t* namePrefix, const wchar_t* featureName,
                         std::vector<size_t>& positions);
    // The option of a feature, or of the one sub-feature below it, from the feature list; S_FALSE:
    // run the query, as the list cannot tell which of several matches comes first.
    HRESULT IndexedOption(const wchar_t* namePrefix, const wchar_t* featureName, const wchar_t* subFeatureName,
                          IXMLDOMNode** option);
    HRESULT FirstOptionOf(IXMLDOMNode* feature, IXMLDOMNode** option);
    HRESULT FindRootElement(const wchar_t* rootName, IXMLDOMNode** root);
    HRESULT RemoveFeatures(const wchar_t* namePrefix, const wchar_t* featureName, long& removed);
    HRESULT CreateNamedFeature(const wchar_t* featurePrefix, const wchar_t* featureName, const wchar_t* optionPrefix,
                               const wchar_t* optionName, IXMLDOMElement** feature, IXMLDOMElement** option);
    HRESULT SelectFirst(const VPrintTicketQueryBuilder& query, IXMLDOMNode** node);
    HRESULT SelectOption(const wchar_t* namePrefix, const wchar_t* featureName, const wchar_t* subFeatureName,
                         IXMLDOMNode** option);
    HRESULT StripKeywordPrefixIfAny(zx::unique_bstr& text);
};

// A PrintCapabilities document; the generic operations are all it needs.
class VPrintCapabilityHandler : public VPrintSchemaHandler {
public:
    explicit VPrintCapabilityHandler(_In_opt_ IXMLDOMDocument2* capabilities);
};
