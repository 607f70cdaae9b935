// The edits that the converters' PrintTicket writers share. To replace a feature is to remove
// every copy of it, create a new Feature with one Option and append it to the root element.
#pragma once

#include "printschema/ticket_handler.h"

class VTicketWriter : public VPrintTicketHandler {
public:
    using VPrintTicketHandler::VPrintTicketHandler;

    // Appends child to parent, an element anywhere in the document.
    HRESULT AppendChild(IXMLDOMNode* parent, IXMLDOMNode* child);

    // A new ns0000: feature with one ns0000: option, appended to the root.
    HRESULT AppendPrivateFeature(const wchar_t* feature, const wchar_t* option);
    // Replaces every ns0000: feature of that name by one with the given ns0000: option;
    // HRESULT_FROM_WIN32(ERROR_NOT_FOUND) when the ticket has none.
    HRESULT ReplacePrivateFeature(const wchar_t* feature, const wchar_t* option);
    // Replaces every standard feature of that name by one whose option is optionPrefix + option
    // (a null prefix: the document's keywords prefix); HRESULT_FROM_WIN32(ERROR_NOT_FOUND) when
    // the ticket has none.
    HRESULT ReplaceStandardFeature(const wchar_t* feature, const wchar_t* option, const wchar_t* optionPrefix = nullptr,
                                   IXMLDOMElement** newOption = nullptr);
};
