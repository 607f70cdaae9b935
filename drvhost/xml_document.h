// MSXML 6 documents for the PrintTickets and PrintCapabilities that the host builds and reads.
#pragma once

#include <msxml2.h>
#include <wrl/client.h>

#include <stdexcept>
#include <string>
#include <string_view>

namespace drvhost {

using Microsoft::WRL::ComPtr;

// A text that is not well-formed XML: where (0 when unknown) and why. The reason is MSXML's when it
// gives one with a position, else that of drvhost's own check.
class XmlError : public std::runtime_error {
public:
    XmlError(int line, int column, const std::string& reason);
    int Line() const noexcept { return m_line; }
    int Column() const noexcept { return m_column; }
    const std::string& Reason() const noexcept { return m_reason; }

private:
    int m_line;
    int m_column;
    std::string m_reason;
};

// Parses XML text into a new DOM document; throws XmlError.
ComPtr<IXMLDOMDocument2> ParseXml(const std::wstring& text);

// Reads an XML file (UTF-8, or UTF-16 with its byte-order mark) and parses it. Throws
// std::runtime_error naming the file, and for XML errors the line and column: "FILE:3:15: reason".
ComPtr<IXMLDOMDocument2> LoadXmlFile(const std::wstring& path);
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
