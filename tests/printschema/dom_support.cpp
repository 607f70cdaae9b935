#include "tests/printschema/dom_support.h"

#include "drvhost/xml_document.h"

#include <gtest/gtest.h>

namespace zxtest {
namespace {

class ComEnvironment : public testing::Environment {
public:
    void SetUp() override { ASSERT_EQ(S_OK, ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)); }
    void TearDown() override { ::CoUninitialize(); }
};

[[maybe_unused]] testing::Environment* const g_com = testing::AddGlobalTestEnvironment(new ComEnvironment);

const std::wstring kDeclarations = std::wstring(L" xmlns:psf='") + kFrameworkUri + L"' xmlns:psk='" + kKeywordsUri +
                                   L"' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'"
                                   L" xmlns:ns0000='http://schemas.velmora.com/printing/2026/zxtaluUI14'";

void SetProperty(IXMLDOMDocument2* document, const wchar_t* name, const std::wstring& value) {
    zx::unique_variant text;
    text.get()->vt = VT_BSTR;
    text.get()->bstrVal = zx::MakeBstr(value.c_str()).release();
    EXPECT_EQ(S_OK, document->setProperty(zx::MakeBstr(name).get(), *text));
}

std::wstring Read(IXMLDOMNode* node, HRESULT (STDMETHODCALLTYPE IXMLDOMNode::*getter)(BSTR*)) {
    zx::unique_bstr text;
    (node->*getter)(text.put());
    return text ? text.get() : L"";
}

}  // namespace

zx::ComPtr<IXMLDOMDocument2> LoadDocument(const std::wstring& xml) { return drvhost::ParseXml(xml); }

zx::ComPtr<IXMLDOMDocument2> Reparsed(IXMLDOMDocument2* document) {
    zx::ComPtr<IXMLDOMDocument2> copy = LoadDocument(XmlOf(document));
    SetProperty(copy.Get(), L"SelectionLanguage", L"XPath");
    SetProperty(copy.Get(), L"SelectionNamespaces", kDeclarations);
    return copy;
}

std::wstring TextAt(IXMLDOMNode* context, const std::wstring& query) {
    zx::ComPtr<IXMLDOMNode> node;
    if (context->selectSingleNode(zx::MakeBstr(query.c_str()).get(), &node) != S_OK) return L"<none>";
    return Read(node.Get(), &IXMLDOMNode::get_text);
}

long CountOf(IXMLDOMNode* context, const wchar_t* query) {
    zx::ComPtr<IXMLDOMNodeList> nodes;
    long count = -1;
    if (SUCCEEDED(context->selectNodes(zx::MakeBstr(query).get(), &nodes))) nodes->get_length(&count);
    return count;
}

std::wstring XmlOf(IXMLDOMNode* node) { return Read(node, &IXMLDOMNode::get_xml); }

std::wstring NameOf(IXMLDOMNode* node) { return Read(node, &IXMLDOMNode::get_nodeName); }

std::wstring Ticket(const std::wstring& body) {
    return L"<psf:PrintTicket" + kDeclarations + L" xmlns:xsd='http://www.w3.org/2001/XMLSchema' version='1'>" + body +
           L"</psf:PrintTicket>";
}

std::wstring Feature(const std::wstring& name, const std::wstring& option) {
    return L"<psf:Feature name='" + name + L"'><psf:Option name='" + option + L"'/></psf:Feature>";
}

void ReplaceAll(std::wstring& text, const std::wstring& from, const std::wstring& to) {
    for (size_t at = text.find(from); at != std::wstring::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
}

}  // namespace zxtest
