#include "drvhost/xml_document.h"

#include "drvhost/hresult_text.h"
#include "drvhost/text.h"
#include "drvhost/xml_check.h"
#include "util/msxml_ids.h"
#include "util/scoped.h"

#include <objbase.h>
#include <oleauto.h>

#include <stdexcept>

namespace drvhost {
namespace {

std::string Trimmed(std::string text) {
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == ' ')) text.pop_back();
    return text;
}

// MSXML's account of a refused text when it has a position (Windows), else drvhost's own.
XmlError ParseErrorOf(IXMLDOMDocument2* document, const std::wstring& text) {
    ComPtr<IXMLDOMParseError> error;
    zx::unique_bstr reason;
    long line = 0, column = 0;
    if (SUCCEEDED(document->get_parseError(&error)) && error) {
        error->get_reason(reason.put());
        error->get_line(&line);
        error->get_linepos(&column);
    }
    const std::string parserReason = reason ? Trimmed(WideToUtf8(reason.get())) : std::string();
    if (line > 0 && !parserReason.empty()) return XmlError(line, column, parserReason);
    if (const auto problem = FindXmlProblem(text)) return XmlError(problem->line, problem->column, problem->reason);
    return XmlError(0, 0, "MSXML refuses it (" + (parserReason.empty() ? "no reason given" : parserReason) + ")");
}

}  // namespace

XmlError::XmlError(int line, int column, const std::string& reason)
    : std::runtime_error(line > 0
                             ? "XML line " + std::to_string(line) + ", column " + std::to_string(column) + ": " + reason
                             : "XML: " + reason),
      m_line(line),
      m_column(column),
      m_reason(reason) {}

ComPtr<IXMLDOMDocument2> ParseXml(const std::wstring& text) {
    ComPtr<IXMLDOMDocument2> document;
    HRESULT hr = ::CoCreateInstance(msxml6::CLSID_DOMDocument60, nullptr, CLSCTX_INPROC_SERVER,
                                    msxml6::IID_IXMLDOMDocument2, reinterpret_cast<void**>(document.GetAddressOf()));
    if (FAILED(hr)) throw std::runtime_error("MSXML 6 is not available (" + std::to_string(hr) + ")");
    document->put_async(VARIANT_FALSE);
    VARIANT_BOOL loaded = VARIANT_FALSE;
    hr = document->loadXML(zx::MakeBstr(text.data(), static_cast<UINT>(text.size())).get(), &loaded);
    if (FAILED(hr) || loaded != VARIANT_TRUE) throw ParseErrorOf(document.Get(), text);
    return document;
}

ComPtr<IXMLDOMDocument2> LoadXmlFile(const std::wstring& path) {
    const std::wstring text = ReadTextFile(path);
    try {
        return ParseXml(text);
    } catch (const XmlError& e) {
        const std::string where =
            e.Line() > 0 ? ":" + std::to_string(e.Line()) + ":" + std::to_string(e.Column()) + ": " : std::string(": ");
        throw std::runtime_error(WideToUtf8(path) + where + e.Reason());
    }
}

std::wstring SerializeXml(IXMLDOMDocument2* document) {
    zx::unique_bstr xml;
    if (FAILED(document->get_xml(xml.put())) || !xml) return {};
    return std::wstring(xml.get(), ::SysStringLen(xml.get()));
}

std::wstring EscapeXml(std::wstring_view text) {
    std::wstring escaped;
    escaped.reserve(text.size());
    for (wchar_t c : text) {
        switch (c) {
        case L'&': escaped += L"&amp;"; break;
        case L'<': escaped += L"&lt;"; break;
        case L'>': escaped += L"&gt;"; break;
        case L'"': escaped += L"&quot;"; break;
        case L'\'': escaped += L"&apos;"; break;
        default: escaped += c;
        }
    }
    return escaped;
}

ComApartment::ComApartment() : m_initialised(SUCCEEDED(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {}

ComApartment::~ComApartment() {
    if (m_initialised) ::CoUninitialize();
}

}  // namespace drvhost
