#include "printschema/ticket_writer.h"

#include "printschema/print_schema_names.h"
#include "util/result.h"

using PrintSchema::Prefix::Private;

// A feature placed anywhere but last makes the feature list read the document again.
HRESULT VTicketWriter::AppendChild(IXMLDOMNode* parent, IXMLDOMNode* child) {
    bool holdsFeature = IsFrameworkElement(child, PrintSchema::Vocabulary::Feature);
    VisitDescendants(child, [&holdsFeature](IXMLDOMNode* node) {
        holdsFeature = holdsFeature || IsFrameworkElement(node, PrintSchema::Vocabulary::Feature);
        return !holdsFeature;
    });
    if (holdsFeature) m_features.Invalidate();
    return parent->appendChild(child, nullptr);
}

HRESULT VTicketWriter::AppendPrivateFeature(const wchar_t* feature, const wchar_t* option) {
    zx::ComPtr<IXMLDOMElement> featureElement, optionElement;
    HRESULT hr = CreatePrefixedFeatureOption(feature, option, &featureElement, &optionElement, Private, Private);
    if (SUCCEEDED(hr)) hr = AppendToRoot(PrintSchema::Vocabulary::PrintTicket, featureElement.Get());
    return hr;
}

HRESULT VTicketWriter::ReplacePrivateFeature(const wchar_t* feature, const wchar_t* option) {
    zx::ComPtr<IXMLDOMElement> featureElement, optionElement;
    ZX_RETURN_IF_FAILED(
        CreatePrefixedFeatureOption(feature, option, &featureElement, &optionElement, Private, Private));
    return ReplaceFeatures(Private, feature, featureElement.Get());
}

HRESULT VTicketWriter::ReplaceStandardFeature(const wchar_t* feature, const wchar_t* option,
                                              const wchar_t* optionPrefix, IXMLDOMElement** newOption) {
    zx::ComPtr<IXMLDOMElement> featureElement, optionElement;
    ZX_RETURN_IF_FAILED(
        optionPrefix ? CreateFeatureOptionPrefixed(feature, option, &featureElement, &optionElement, optionPrefix)
                     : CreateFeatureOption(feature, option, &featureElement, &optionElement));
    ZX_RETURN_IF_FAILED(ReplaceFeatures(KeywordsPrefix(), feature, featureElement.Get()));
    if (newOption) *newOption = optionElement.Detach();
    return S_OK;
}
