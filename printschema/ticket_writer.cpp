#include "printschema/ticket_writer.h"

#include "printschema/print_schema_names.h"
#include "util/result.h"

using PrintSchema::Prefix::Private;

HRESULT VTicketWriter::AppendPrivateFeature(const wchar_t* feature, const wchar_t* option) {
    zx::ComPtr<IXMLDOMElement> featureElement, optionElement;
    HRESULT hr = CreatePrefixedFeatureOption(feature, option, &featureElement, &optionElement, Private, Private);
    if (SUCCEEDED(hr)) hr = AppendToRoot(PrintSchema::Vocabulary::PrintTicket, featureElement.Get());
    return hr;
}

HRESULT VTicketWriter::ReplacePrivateFeature(const wchar_t* feature, const wchar_t* option) {
    ZX_RETURN_IF_FAILED(DeletePrefixedFeature(feature, Private));
    return AppendPrivateFeature(feature, option);
}

HRESULT VTicketWriter::ReplaceStandardFeature(const wchar_t* feature, const wchar_t* option,
                                              const wchar_t* optionPrefix) {
    ZX_RETURN_IF_FAILED(DeleteFeature(feature));
    zx::ComPtr<IXMLDOMElement> featureElement, optionElement;
    HRESULT hr = optionPrefix ? CreateFeatureOptionPrefixed(feature, option, &featureElement, &optionElement, optionPrefix)
                              : CreateFeatureOption(feature, option, &featureElement, &optionElement);
    if (SUCCEEDED(hr)) hr = AppendToRoot(PrintSchema::Vocabulary::PrintTicket, featureElement.Get());
    return hr;
}
