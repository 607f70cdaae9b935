// MSXML 6 documents for the PrintTickets and PrintCapabilities that the host builds and reads.
#pragma once

#include <msxml2.h>
#include <wrl/client.h>

#include <string>
#include <string_view>

namespace drvhost {

using Microsoft::WRL::ComPtr;

// Parses XML text into a new DOM document; throws std::runtime_error with the parser's reason.
ComPtr<IXMLDOMDocument2> ParseXml(const std::wstring& text);
std::wstring SerializeXml(IXMLDOMDocument2* document);

// Text escaped for an XML attribute value or element content.
std::wstring EscapeXml(std::wstring_view text);

// Keeps COM initialised on this thread for the life of the object.
class ComApartment {
public:
    ComApartment();
    ~ComApartment();
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;

private:
    bool m_initialised;
};

}  // namespace drvhost
