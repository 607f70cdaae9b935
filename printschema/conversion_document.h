// The document of one provider call. Its Print Schema handler is made when the first converter
// asks for it and then serves every converter after it, so the document's namespace prefixes are
// resolved once per call. A handler that cannot be made is tried again at the next request, as
// each converter once made its own.
#pragma once

#include "printschema/ticket_writer.h"

#include <optional>

class VConversionDocument {
public:
    explicit VConversionDocument(IXMLDOMDocument2* document) noexcept : m_document(document) {}
    VConversionDocument(const VConversionDocument&) = delete;
    VConversionDocument& operator=(const VConversionDocument&) = delete;

    IXMLDOMDocument2* Get() const noexcept { return m_document; }

    // Throw what making the handler throws (see VPrintSchemaHandler).
    VTicketWriter& Ticket() {
        if (!m_ticket) m_ticket.emplace(m_document);
        return *m_ticket;
    }
    VPrintCapabilityHandler& Capabilities() {
        if (!m_capabilities) m_capabilities.emplace(m_document);
        return *m_capabilities;
    }

private:
    IXMLDOMDocument2* m_document;
    std::optional<VTicketWriter> m_ticket;
    std::optional<VPrintCapabilityHandler> m_capabilities;
};
