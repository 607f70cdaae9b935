// The string buffer, the query templates, and handler construction on real MSXML 6 documents.
#include "printschema/query_builder.h"
#include "printschema/ticket_handler.h"
#include "tests/printschema/dom_support.h"
#include "tests/support/plugin_module.h"

#include <gtest/gtest.h>

using namespace zxtest;

namespace {

constexpr HRESULT kNotFound = HRESULT_FROM_WIN32(ERROR_NOT_FOUND);

template <typename Body>
HRESULT ThrownResult(Body&& body) {
    try {
        body();
    } catch (const VUtilException& e) {
        return e.Result();
    }
    return S_OK;
}

std::wstring Query(const VPrintTicketQueryBuilder& builder) {
    zx::unique_bstr query;
    EXPECT_EQ(S_OK, builder.GetQuery(query.put()));
    return query.get();
}

}  // namespace

TEST(StringBuffer, FormatsWideTextAndNumbers) {
    VStringBuffer text;
    text.AppendFormat(L"xmlns:%s='%s'", L"psf", L"urn:x");
    text.AppendFormat(L" %i %.2f %.2f", -300, 0.5, 2.0 / 3);
    EXPECT_STREQ(L"xmlns:psf='urn:x' -300 0.50 0.67", text.c_str());
}

TEST(StringBuffer, FailuresThrowTheirResults) {
    VStringBuffer text(L"abc");
    EXPECT_EQ(E_INVALIDARG, ThrownResult([&] { text.Erase(4, 1); }));
    wchar_t small[3] = {L'x', L'x', L'x'};
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER), ThrownResult([&] { text.CopyTo(small, 3); }));
    EXPECT_EQ(L'x', small[0]);
    wchar_t exact[4];
    text.CopyTo(exact, 4);
    EXPECT_STREQ(L"abc", exact);
    text.Erase(3, 1);
    EXPECT_STREQ(L"abc", text.c_str());
}

TEST(QueryBuilder, AppendsTheTemplatesExactly) {
    VPrintTicketQueryBuilder builder(L"psf:");
    EXPECT_EQ(S_OK, builder.AddFeature(L"psk:", L"DocumentNUp"));
    EXPECT_EQ(S_OK, builder.AddFeature(nullptr, L"Nested"));
    EXPECT_EQ(S_OK, builder.AddOptionValue(L"psk:"));
    EXPECT_EQ(L"//psf:Feature[@name = \"psk:DocumentNUp\"]//psf:Feature[@name = \"Nested\"]/psf:Option | "
              L"//psf:Feature[@name = \"psk:DocumentNUp\"]//psf:Feature[@name = \"Nested\"]"
              L"/psf:ScoredProperty[@name = \"psk:OptionName\"]/psf:Value",
              Query(builder));

    VPrintTicketQueryBuilder properties(L"f:", L"/start");
    EXPECT_EQ(S_OK, properties.AddProperty(L"ns0000:", L"A"));
    EXPECT_EQ(S_OK, properties.AddScoredProperty(L"", L"B"));
    EXPECT_EQ(S_OK, properties.AddParameterRef(L"psk:", L"C"));
    EXPECT_EQ(L"/start//f:Property[@name = \"ns0000:A\"]//f:ScoredProperty[@name = \"B\"]"
              L"//f:ParameterRef[@name = \"psk:C\"]",
              Query(properties));
}

TEST(QueryBuilder, RefusesWhatItCannotExpress) {
    VPrintTicketQueryBuilder unbound(L"");
    EXPECT_EQ(E_FAIL, unbound.AddFeature(L"psk:", L"A"));
    EXPECT_EQ(E_FAIL, unbound.AddOptionValue(L"psk:"));
    VPrintTicketQueryBuilder builder(L"psf:");
    EXPECT_EQ(E_INVALIDARG, builder.AddFeature(L"psk:", L""));
    EXPECT_EQ(E_INVALIDARG, builder.AddFeature(L"psk:", L"a\"] | //*[\"x"));
    EXPECT_EQ(E_POINTER, builder.GetQuery(nullptr));
    EXPECT_EQ(L"", Query(builder));
}

TEST(HandlerConstruction, FindsTheDocumentsOwnPrefixes) {
    auto document = LoadDocument(Ticket(L""));
    const ULONG references = RefCount(document.Get());
    {
        VPrintTicketHandler handler(document.Get());
        EXPECT_STREQ(L"psf:", handler.FrameworkPrefix());
        EXPECT_STREQ(L"psk:", handler.KeywordsPrefix());
        EXPECT_STREQ(L"xsi:", handler.SchemaInstancePrefix());
        EXPECT_STREQ(L"xsd:", handler.SchemaPrefix());
        EXPECT_STREQ(L"ns0000:", handler.PrivatePrefix());
        EXPECT_EQ(references + 1, RefCount(document.Get()));

        BSTR prefix = ::SysAllocString(L"old");
        EXPECT_EQ(S_OK, handler.GetNamespacePrefix(L"http://schemas.velmora.com/printing/2026/zxtaluUI14", &prefix));
        EXPECT_STREQ(L"ns0000:", prefix);
        EXPECT_EQ(S_FALSE, handler.GetNamespacePrefix(L"urn:undeclared", &prefix));
        EXPECT_STREQ(L"ns0000:", prefix);
        ::SysFreeString(prefix);
        EXPECT_EQ(E_POINTER, handler.GetNamespacePrefix(kKeywordsUri, nullptr));
        zx::unique_bstr unused;
        EXPECT_EQ(E_INVALIDARG, handler.GetNamespacePrefix(L"", unused.put()));
    }
    EXPECT_EQ(references, RefCount(document.Get()));
}

TEST(HandlerConstruction, FailsWithTheResultThatStopsIt) {
    const auto resultFor = [](IXMLDOMDocument2* document) {
        return ThrownResult([&] { VPrintTicketHandler handler(document); });
    };
    EXPECT_EQ(E_PENDING, resultFor(nullptr));
    EXPECT_EQ(E_FAIL, resultFor(LoadDocument(L"<PrintTicket xmlns:psk='" + std::wstring(kKeywordsUri) + L"'/>").Get()));
    // The framework namespace as the default one: its declaration has no prefix to bind.
    EXPECT_EQ(E_FAIL, resultFor(LoadDocument(L"<PrintTicket xmlns='" + std::wstring(kFrameworkUri) + L"'/>").Get()));
    // A ticket handler on a PrintCapabilities document finds no PrintTicket root.
    const auto capabilities =
        LoadDocument(L"<psf:PrintCapabilities xmlns:psf='" + std::wstring(kFrameworkUri) + L"' version='1'/>");
    EXPECT_EQ(E_FAIL, resultFor(capabilities.Get()));
    VPrintCapabilityHandler handler(capabilities.Get());
    EXPECT_STREQ(L"psf:", handler.FrameworkPrefix());
    EXPECT_STREQ(L"", handler.KeywordsPrefix());
}

// A ticket as applications save them: an XML declaration, comments, indentation, a default
// namespace, declarations in an unusual order and vendor namespaces besides the plug-in's.
TEST(HandlerConstruction, ReadsTicketsShapedLikeRealOnes) {
    auto document = LoadDocument(std::wstring(
        L"<?xml version='1.0' encoding='UTF-8'?>\n<!-- saved by an application -->\n"
        L"<psf:PrintTicket version='1' xmlns='urn:vendor:default' xmlns:xsd='http://www.w3.org/2001/XMLSchema'\n"
        L"    xmlns:v1='urn:vendor:one' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'\n"
        L"    xmlns:ns0000='http://schemas.velmora.com/printing/2026/zxtaluUI14' xmlns:psk='") +
        kKeywordsUri + L"' xmlns:v2='urn:vendor:two' xmlns:psf='" + kFrameworkUri +
        L"'>\n  <!-- media -->\n  <psf:Feature name='psk:PageMediaType'>\n"
        L"    <psf:Option name='psk:Plain'><v1:Extra/></psf:Option>\n  </psf:Feature>\n"
        L"  <psf:Feature name='psk:PageOutputQuality'>\n    <psf:Option>\n"
        L"      <psf:ScoredProperty name='psk:OptionName'>\n"
        L"        <psf:Value xsi:type='xsd:QName'>psk:High</psf:Value>\n"
        L"      </psf:ScoredProperty>\n    </psf:Option>\n  </psf:Feature>\n</psf:PrintTicket>\n");
    VPrintTicketHandler handler(document.Get());
    EXPECT_STREQ(L"psk:", handler.KeywordsPrefix());
    EXPECT_STREQ(L"xsd:", handler.SchemaPrefix());
    zx::unique_bstr option;
    EXPECT_EQ(S_OK, handler.GetSelectedOption(L"PageMediaType", option.put()));
    EXPECT_STREQ(L"Plain", option.get());
    EXPECT_EQ(S_OK, handler.GetSelectedOption(L"PageOutputQuality", option.put()));
    EXPECT_STREQ(L"High", option.get());
}

// The framework namespace under "f" and the keywords under "k": queries are rebound and new
// elements carry the document's prefixes.
TEST(HandlerConstruction, WorksUnderTheDocumentsOwnFrameworkPrefix) {
    auto document = LoadDocument(std::wstring(L"<f:PrintTicket version='1' xmlns:f='") + kFrameworkUri + L"' xmlns:k='" +
                                 kKeywordsUri + L"'><f:Feature name='k:PageMediaType'><f:Option name='k:Plain'/>"
                                 L"</f:Feature></f:PrintTicket>");
    VPrintTicketHandler handler(document.Get());
    EXPECT_STREQ(L"f:", handler.FrameworkPrefix());
    EXPECT_STREQ(L"k:", handler.KeywordsPrefix());
    zx::unique_bstr option;
    EXPECT_EQ(S_OK, handler.GetSelectedOption(L"PageMediaType", option.put()));
    EXPECT_STREQ(L"Plain", option.get());
    EXPECT_EQ(S_OK, handler.FindPrefixedFeature(L"PageMediaType", L"psf:", L"k:"));

    zx::ComPtr<IXMLDOMElement> feature, newOption;
    ASSERT_EQ(S_OK, handler.CreateFeatureOption(L"Duplex", L"OneSided", &feature, &newOption));
    EXPECT_EQ(S_OK, handler.AppendToRoot(L"PrintTicket", feature.Get()));
    EXPECT_EQ(L"f:Feature", NameOf(feature.Get()));
    EXPECT_EQ(L"f:Option", NameOf(newOption.Get()));
    EXPECT_EQ(1, CountOf(Reparsed(document.Get()).Get(), L"/psf:PrintTicket/psf:Feature[@name = 'k:Duplex']"
                                                         L"/psf:Option[@name = 'k:OneSided']"));
    EXPECT_EQ(S_OK, handler.GetSelectedOption(L"Duplex", option.put()));
    EXPECT_STREQ(L"OneSided", option.get());
}

TEST(HandlerConstruction, WithoutKeywordsNamespaceNamesStayUnprefixed) {
    auto document = LoadDocument(std::wstring(L"<psf:PrintTicket xmlns:psf='") + kFrameworkUri +
                                 L"'><psf:Feature name='PageMediaType'><psf:Option name='Plain'/></psf:Feature>"
                                 L"</psf:PrintTicket>");
    VPrintTicketHandler handler(document.Get());
    EXPECT_STREQ(L"", handler.KeywordsPrefix());
    zx::unique_bstr option;
    EXPECT_EQ(S_OK, handler.GetSelectedOption(L"PageMediaType", option.put()));
    EXPECT_STREQ(L"Plain", option.get());
    zx::ComPtr<IXMLDOMElement> feature, newOption;
    ASSERT_EQ(S_OK, handler.CreateFeatureOption(L"Duplex", L"OneSided", &feature, &newOption));
    EXPECT_EQ(L"Duplex", TextAt(feature.Get(), L"@name"));
    EXPECT_EQ(L"OneSided", TextAt(newOption.Get(), L"@name"));
    BSTR text = ::SysAllocString(L"Plain");
    EXPECT_EQ(E_INVALIDARG, handler.StripKeywordPrefix(&text));
    ::SysFreeString(text);
    EXPECT_EQ(kNotFound, handler.FindFeature(L"Absent"));
}
