// The string buffer, the query templates, option-name lookups, and handler construction on real
// MSXML 6 documents.
#include "printschema/option_names.h"
#include "printschema/query_builder.h"
#include "printschema/ticket_handler.h"
#include "tests/printschema/dom_support.h"
#include "tests/support/plugin_module.h"

#include <gtest/gtest.h>

using namespace zxtest;

namespace {

template <typename Body>
HRESULT ThrownResult(Body&& body) {
    try {
        body();
    } catch (const VUtilException& e) {
        return e.Result();
    }
    return S_OK;
}

std::wstring SelectedOption(VPrintTicketHandler& handler, const wchar_t* feature) {
    zx::unique_bstr option;
    const HRESULT hr = handler.GetSelectedOption(feature, option.put());
    return hr == S_OK && option ? option.get() : L"<failed>";
}

}  // namespace

TEST(StringBuffer, FormatsAndFailsTheBuffersWay) {
    VStringBuffer text;
    text.AppendFormat(L"xmlns:%s='%s' %i %.2f", L"psf", L"urn:x", -300, 2.0 / 3);
    EXPECT_STREQ(L"xmlns:psf='urn:x' -300 0.67", text.c_str());
    wchar_t exact[28] = {};
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER), ThrownResult([&] { text.CopyTo(exact, 27); }));
    text.CopyTo(exact, 28);
    EXPECT_STREQ(text.c_str(), exact);
    EXPECT_EQ(E_INVALIDARG, ThrownResult([&] { text.Erase(28, 1); }));
}

TEST(QueryBuilder, AppendsTheTemplatesExactly) {
    VPrintTicketQueryBuilder builder(L"psf:");
    EXPECT_EQ(S_OK, builder.AddFeature(L"psk:", L"DocumentNUp"));
    EXPECT_EQ(S_OK, builder.AddFeature(nullptr, L"Nested"));
    EXPECT_EQ(S_OK, builder.AddOptionValue(L"psk:"));
    zx::unique_bstr query;
    EXPECT_EQ(S_OK, builder.GetQuery(query.put()));
    EXPECT_STREQ(L"//psf:Feature[@name = \"psk:DocumentNUp\"]//psf:Feature[@name = \"Nested\"]/psf:Option | "
                 L"//psf:Feature[@name = \"psk:DocumentNUp\"]//psf:Feature[@name = \"Nested\"]"
                 L"/psf:ScoredProperty[@name = \"psk:OptionName\"]/psf:Value",
                 query.get());
    EXPECT_EQ(E_FAIL, VPrintTicketQueryBuilder(L"").AddOptionValue(L"psk:"));
    // A quotation mark would end the XPath literal and let a name rewrite the query.
    EXPECT_EQ(E_INVALIDARG, builder.AddScoredProperty(L"psk:", L"a\"] | //*[\"x"));
}

TEST(HandlerConstruction, FindsTheDocumentsOwnPrefixesAndHoldsTheDocument) {
    auto document = LoadDocument(Ticket(L""));
    const ULONG references = RefCount(document.Get());
    {
        VPrintTicketHandler handler(document.Get());
        EXPECT_STREQ(L"psf: psk: xsi: xsd: ns0000:",
                     (std::wstring(handler.FrameworkPrefix()) + L" " + handler.KeywordsPrefix() + L" " +
                      handler.SchemaInstancePrefix() + L" " + handler.SchemaPrefix() + L" " + handler.PrivatePrefix())
                         .c_str());
        EXPECT_EQ(references + 1, RefCount(document.Get()));
    }
    EXPECT_EQ(references, RefCount(document.Get()));
}

TEST(HandlerConstruction, FailsWithTheResultThatStopsIt) {
    const auto resultFor = [](IXMLDOMDocument2* document) {
        return ThrownResult([&] { VPrintTicketHandler handler(document); });
    };
    EXPECT_EQ(E_PENDING, resultFor(nullptr));
    EXPECT_EQ(E_FAIL, resultFor(LoadDocument(L"<PrintTicket xmlns:psk='" + std::wstring(kKeywordsUri) + L"'/>").Get()));
    // The framework namespace as the default one: its declaration has no prefix to use.
    EXPECT_EQ(E_FAIL, resultFor(LoadDocument(L"<PrintTicket xmlns='" + std::wstring(kFrameworkUri) + L"'/>").Get()));
    const auto capabilities =
        LoadDocument(L"<psf:PrintCapabilities xmlns:psf='" + std::wstring(kFrameworkUri) + L"' version='1'/>");
    EXPECT_EQ(E_FAIL, resultFor(capabilities.Get()));
    EXPECT_STREQ(L"psf:", VPrintCapabilityHandler(capabilities.Get()).FrameworkPrefix());
}

// As applications save tickets: a declaration, comments, indentation, a default namespace, vendor
// namespaces, and the standard ones in an unusual order.
TEST(HandlerConstruction, ReadsTicketsShapedLikeRealOnes) {
    auto document = LoadDocument(
        std::wstring(L"<?xml version='1.0' encoding='UTF-8'?>\n<!-- saved -->\n<psf:PrintTicket version='1' "
                     L"xmlns='urn:vendor:default' xmlns:xsd='http://www.w3.org/2001/XMLSchema'\n xmlns:v1='urn:v1' "
                     L"xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xmlns:psk='") +
        kKeywordsUri + L"' xmlns:v2='urn:v2' xmlns:psf='" + kFrameworkUri +
        L"'>\n  <!-- media -->\n  <psf:Feature name='psk:PageMediaType'>\n    <psf:Option name='psk:Plain'><v1:x/>"
        L"</psf:Option>\n  </psf:Feature>\n  <psf:Feature name='psk:PageOutputQuality'>\n    <psf:Option>\n"
        L"      <psf:ScoredProperty name='psk:OptionName'>\n        <psf:Value xsi:type='xsd:QName'>psk:High"
        L"</psf:Value>\n      </psf:ScoredProperty>\n    </psf:Option>\n  </psf:Feature>\n</psf:PrintTicket>\n");
    VPrintTicketHandler handler(document.Get());
    EXPECT_STREQ(L"xsd:", handler.SchemaPrefix());
    EXPECT_EQ(L"Plain", SelectedOption(handler, L"PageMediaType"));
    EXPECT_EQ(L"High", SelectedOption(handler, L"PageOutputQuality"));
}

// Framework namespace under "f", keywords under "k": queries are rebound, new elements carry the
// document's prefixes, and lookups naming the usual "psf:" still work.
TEST(HandlerConstruction, WorksUnderTheDocumentsOwnPrefixes) {
    auto document = LoadDocument(std::wstring(L"<f:PrintTicket version='1' xmlns:f='") + kFrameworkUri +
                                 L"' xmlns:k='" + kKeywordsUri +
                                 L"'><f:Feature name='k:PageMediaType'><f:Option name='k:Plain'/></f:Feature>"
                                 L"</f:PrintTicket>");
    VPrintTicketHandler handler(document.Get());
    EXPECT_EQ(L"Plain", SelectedOption(handler, L"PageMediaType"));
    EXPECT_EQ(S_OK, handler.FindPrefixedFeature(L"PageMediaType", L"psf:", L"k:"));
    zx::ComPtr<IXMLDOMElement> feature, option;
    ASSERT_EQ(S_OK, handler.CreateFeatureOption(L"Duplex", L"OneSided", &feature, &option));
    EXPECT_EQ(L"f:Feature f:Option", NameOf(feature.Get()) + L" " + NameOf(option.Get()));
    EXPECT_EQ(S_OK, handler.AppendToRoot(L"PrintTicket", feature.Get()));
    EXPECT_EQ(1, CountOf(Reparsed(document.Get()).Get(),
                         L"/psf:PrintTicket/psf:Feature[@name = 'k:Duplex']/psf:Option[@name = 'k:OneSided']"));
}

TEST(HandlerConstruction, WithoutKeywordsNamespaceNamesStayUnprefixed) {
    auto document = LoadDocument(std::wstring(L"<psf:PrintTicket xmlns:psf='") + kFrameworkUri +
                                 L"'><psf:Feature name='PageMediaType'><psf:Option name='Plain'/></psf:Feature>"
                                 L"</psf:PrintTicket>");
    VPrintTicketHandler handler(document.Get());
    EXPECT_EQ(L"Plain", SelectedOption(handler, L"PageMediaType"));
    zx::ComPtr<IXMLDOMElement> feature, option;
    ASSERT_EQ(S_OK, handler.CreateFeatureOption(L"Duplex", L"OneSided", &feature, &option));
    EXPECT_EQ(L"Duplex OneSided", TextAt(feature.Get(), L"@name") + L" " + TextAt(option.Get(), L"@name"));
}

// Names compare as the platform compares BSTRs in the user's locale: letter case counts, a soft
// hyphen does not.
TEST(OptionNames, AreFoundByTheLocalesComparison) {
    constexpr const wchar_t* kNames[] = {L"RightBottom", L"TopLeft"};
    const std::pair<const wchar_t*, size_t> cases[] = {
        {L"TopLeft", 1}, {L"Top\u00ADLeft", 1}, {L"topleft", 2}, {L"Top-Left", 2}, {L"", 2}};
    for (const auto& [name, position] : cases) {
        EXPECT_EQ(position, PositionOfOptionName(zx::MakeBstr(name).get(), kNames)) << name;
    }
}
