#include "drvhost/xml_document.h"

#include "drvhost/text.h"
#include "util/msxml_ids.h"
#include "util/scoped.h"

#include <objbase.h>
#include <oleauto.h>

#include <stdexcept>

namespace drvhost {
namespace {

std::string ParseErrorOf(IXMLDOMDocument2* document) {
    ComPtr<IXMLDOMParseError> error;
    zx::unique_bstr reason;
    long line = 0;
    if (SUCCEEDED(document->get_parseError(&error)) && error) {
        error->get_reason(reason.put());
        error->get_line(&line);
    }
    std::string text = reason ? WideToUtf8(reason.get()) : "not well-formed";
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
    return "line " + std::to_string(line) + ": " + text;
}

}  // namespace

ComPtr<IXMLDOMDocument2> ParseXml(const std::wstring& text) {
    ComPtr<IXMLDOMDocument2> document;
    HRESULT hr = ::CoCreateInstance(msxml6::CLSID_DOMDocument60, nullptr, CLSCTX_INPROC_SERVER,
                                    msxml6::IID_IXMLDOMDocument2, reinterpret_cast<void**>(document.GetAddressOf()));
    if (FAILED(hr)) throw std::runtime_error("MSXML 6 is not available (" + std::to_string(hr) + ")");
    document->put_async(VARIANT_FALSE);
    VARIANT_BOOL loaded = VARIANT_FALSE;
    hr = document->loadXML(zx::MakeBstr(text.data(), static_cast<UINT>(text.size())).get(), &loaded);
    if (FAILED(hr) || loaded != VARIANT_TRUE) throw std::runtime_error("XML " + ParseErrorOf(document.Get()));
    return document;
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
