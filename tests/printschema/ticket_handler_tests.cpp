// The ticket handler on real MSXML 6 documents, hostile ones included, and the string buffer,
// query templates and option-name lookups it is built on.
#include "printschema/option_names.h"
#include "printschema/query_builder.h"
#include "printschema/ticket_writer.h"
#include "tests/printschema/dom_support.h"
#include "tests/support/failing_allocator.h"
#include "tests/support/plugin_module.h"

#include <gtest/gtest.h>
#include <psapi.h>

using namespace zxtest;

namespace {

constexpr HRESULT kNotFound = HRESULT_FROM_WIN32(ERROR_NOT_FOUND);

const std::wstring kBody =
    L"<psf:Feature name='psk:PageMediaType'><psf:Option name='psk:Plain'/></psf:Feature>"
    L"<psf:Feature name='psk:PageOutputQuality'><psf:Option><psf:ScoredProperty name='psk:OptionName'>"
    L"<psf:Value xsi:type='xsd:QName'>psk:High</psf:Value></psf:ScoredProperty></psf:Option></psf:Feature>"
    L"<psf:Feature name='psk:JobMediaTypePrev'><psf:Option name='ns0000:Photo'/></psf:Feature>"
    L"<psf:Feature name='psk:DocumentNUp'><psf:Option name='psk:TwoPages'/>"
    L"<psf:Feature name='psk:PresentationDirection'><psf:Option name='psk:RightBottom'/></psf:Feature></psf:Feature>"
    L"<psf:Feature name='psk:PageResolution'><psf:Option name='ns0000:_600x600'>"
    L"<psf:ScoredProperty name='psk:ResolutionX'><psf:Value xsi:type='xsd:integer'>600</psf:Value></psf:ScoredProperty>"
    L"<psf:ScoredProperty name='psk:ResolutionY'><psf:ParameterRef name='psk:ResY'/></psf:ScoredProperty>"
    L"<psf:ScoredProperty name='psk:Broken'><psf:ParameterRef name='psk:Nowhere'/></psf:ScoredProperty>"
    L"</psf:Option></psf:Feature>"
    L"<psf:ParameterInit name='psk:Other'><psf:Value xsi:type='xsd:integer'>1</psf:Value></psf:ParameterInit>"
    L"<psf:ParameterInit name='psk:ResY'><psf:Value xsi:type='xsd:integer'>-1200</psf:Value></psf:ParameterInit>"
    L"<psf:Feature name='ns0000:JobZXRlt'><psf:Option name='ns0000:_1'/></psf:Feature>"
    L"<psf:Feature name='ns0000:JobZXRlt'><psf:Option name='ns0000:_2'/></psf:Feature>";

// What a reading call gave: its text, "<null>" for an empty success, or the failure in hex.
std::wstring Outcome(HRESULT hr, const zx::unique_bstr& text) {
    if (FAILED(hr)) return L"hr " + std::to_wstring(static_cast<unsigned long>(hr));
    return text ? text.get() : L"<null>";
}

const std::wstring kNotFoundOutcome = L"hr " + std::to_wstring(static_cast<unsigned long>(kNotFound));

std::wstring SelectedOption(VPrintTicketHandler& handler, const wchar_t* feature, const wchar_t* prefix = nullptr) {
    zx::unique_bstr option;
    const HRESULT hr = prefix ? handler.GetPrefixedSelectedOption(feature, option.put(), prefix)
                              : handler.GetSelectedOption(feature, option.put());
    return Outcome(hr, option);
}

template <typename Body>
HRESULT ThrownResult(Body&& body) {
    try {
        body();
    } catch (const VUtilException& e) {
        return e.Result();
    }
    return S_OK;
}

class TicketHandlerTest : public testing::Test {
protected:
    std::wstring Selected(const wchar_t* feature, const wchar_t* prefix = nullptr) {
        return SelectedOption(handler, feature, prefix);
    }
    std::wstring ScoredProperty(const wchar_t* feature, const wchar_t* property) {
        zx::unique_bstr text;
        return Outcome(handler.GetScoredPropertyText(feature, property, text.put()), text);
    }
    void Append(IXMLDOMNode* node) { EXPECT_EQ(S_OK, handler.AppendToRoot(L"PrintTicket", node)); }

    zx::ComPtr<IXMLDOMDocument2> document = LoadDocument(Ticket(kBody));
    VPrintTicketHandler handler{document.Get()};
};

}  // namespace

TEST_F(TicketHandlerTest, ReadsOptionsAndPropertiesWhereverTheTicketKeepsThem) {
    EXPECT_EQ(L"Plain", Selected(L"PageMediaType"));
    EXPECT_EQ(L"High", Selected(L"PageOutputQuality"));  // through the OptionName Value
    EXPECT_EQ(L"ns0000:Photo", Selected(L"JobMediaTypePrev"));
    EXPECT_EQ(L"TwoPages", Selected(L"DocumentNUp"));
    EXPECT_EQ(L"ns0000:_1", Selected(L"JobZXRlt", L"ns0000:"));
    EXPECT_EQ(kNotFoundOutcome, Selected(L"Absent"));
    zx::unique_bstr option;
    EXPECT_EQ(S_OK, handler.GetSubFeatureOption(L"DocumentNUp", L"PresentationDirection", option.put()));
    EXPECT_STREQ(L"RightBottom", option.get());

    EXPECT_EQ(L"600", ScoredProperty(L"PageResolution", L"ResolutionX"));
    EXPECT_EQ(L"-1200", ScoredProperty(L"PageResolution", L"ResolutionY"));  // through its ParameterInit
    EXPECT_EQ(kNotFoundOutcome, ScoredProperty(L"PageResolution", L"Broken"));
    EXPECT_EQ(kNotFoundOutcome, ScoredProperty(L"PageResolution", L"Absent"));
    INT32 value = 0;
    EXPECT_EQ(S_OK, handler.GetScoredPropertyInt(L"PageResolution", L"ResolutionY", &value));
    EXPECT_EQ(-1200, value);
    EXPECT_EQ(E_INVALIDARG, handler.GetScoredPropertyInt(L"PageOutputQuality", L"OptionName", &value));

    // Prefixes are removed only where they occur.
    option = zx::MakeBstr(L"ns0000:psk:X");
    BSTR raw = option.release();
    EXPECT_EQ(S_OK, handler.StripKeywordPrefix(&raw));
    option.reset(raw);
    EXPECT_STREQ(L"ns0000:X", option.get());
    VStringBuffer stripped;
    EXPECT_EQ(S_OK, VPrintTicketHandler::RemovePrefix(zx::MakeBstr(L"AllPages"), L"ns0000:", stripped));
    EXPECT_STREQ(L"AllPages", stripped.c_str());
}

TEST_F(TicketHandlerTest, FindsSetsAndDeletesFeatures) {
    EXPECT_EQ(kNotFound, handler.FindFeature(L"JobZXRlt"));
    EXPECT_EQ(S_OK, handler.FindPrefixedFeature(L"JobZXRlt", L"psf:", L"ns0000:"));
    EXPECT_EQ(S_OK, handler.SetSelectedOption(L"PageMediaType", L"ns0000:Glossy"));
    EXPECT_EQ(L"ns0000:Glossy", Selected(L"PageMediaType"));
    EXPECT_EQ(kNotFound, handler.SetSelectedOption(L"PageOutputQuality", L"psk:Draft"));  // a Value has no name

    EXPECT_EQ(S_OK, handler.DeletePrefixedFeature(L"JobZXRlt", L"ns0000:"));
    EXPECT_EQ(S_OK, handler.DeleteFeature(L"DocumentNUp"));
    EXPECT_EQ(S_OK, handler.DeleteFeature(L"Absent"));
    EXPECT_EQ(4, CountOf(document.Get(), L"//psf:Feature"));
    EXPECT_EQ(0, CountOf(document.Get(), L"//psf:Feature[@name = 'ns0000:JobZXRlt' or @name = 'psk:DocumentNUp' or "
                                         L"@name = 'psk:PresentationDirection']"));
}

TEST_F(TicketHandlerTest, NewFeaturesAndParametersAreNamedWithTheRightPrefixes) {
    zx::ComPtr<IXMLDOMElement> feature, option, reference, initialiser, wrapper;
    ASSERT_EQ(S_OK, handler.CreateFeature(L"JobInputBin", &feature, &option));
    EXPECT_EQ(L"psk:JobInputBin <none>", TextAt(feature.Get(), L"@name") + L" " + TextAt(option.Get(), L"@name"));
    ASSERT_EQ(S_OK, handler.CreateFeatureOptionPrefixed(L"JobInputBin", L"_1", &feature, &option, L"ns0000:"));
    Append(feature.Get());
    EXPECT_EQ(L"ns0000:_1", Selected(L"JobInputBin"));

    ASSERT_EQ(S_OK, handler.CreateIntegerParameter(L"DocumentNUpPageBorderWidth", 0, &reference, &initialiser));
    ASSERT_EQ(S_OK, handler.WrapInPrefixedScoredProperty(L"BorderWidth", reference.Get(), &wrapper, L"ns0000:"));
    Append(wrapper.Get());
    Append(initialiser.Get());
    zx::unique_bstr text;
    EXPECT_EQ(S_OK, handler.GetValueText(L"//psf:ScoredProperty[@name = 'ns0000:BorderWidth']", text.put()));
    EXPECT_STREQ(L"0", text.get());
    ASSERT_EQ(S_OK, handler.CreateParameter(L"PageWatermarkSizeWidthX", L"decimal", L"1.50", &reference, &initialiser));
    Append(initialiser.Get());

    auto saved = Reparsed(document.Get());
    EXPECT_EQ(L"0 xsd:integer",
              TextAt(saved.Get(), L"//psf:ParameterInit[@name = 'ns0000:DocumentNUpPageBorderWidth']/psf:Value") + L" " +
                  TextAt(saved.Get(), L"//psf:ParameterInit/psf:Value/@xsi:type"));
    EXPECT_EQ(L"1.50", TextAt(saved.Get(), L"//psf:ParameterInit[@name = 'psk:PageWatermarkSizeWidthX']/psf:Value"));
    EXPECT_EQ(E_INVALIDARG, handler.CreateParameter(L"A", L"integer", L"", &reference, &initialiser));
    EXPECT_EQ(nullptr, initialiser.Get());
}

TEST_F(TicketHandlerTest, TypedPropertiesWriteTheirValueAndType) {
    zx::ComPtr<IXMLDOMElement> properties[5];
    ASSERT_EQ(S_OK, handler.CreateIntegerScoredProperty(L"ResolutionX", 300, &properties[0]));
    ASSERT_EQ(S_OK, handler.CreateDecimalScoredProperty(L"Scale", 0.5, &properties[1]));
    ASSERT_EQ(S_OK, handler.CreateStringScoredProperty(L"Label", L"a b", &properties[2]));
    ASSERT_EQ(S_OK, handler.CreatePropertyWithValue(L"Version", L"integer", L"2", &properties[3]));
    ASSERT_EQ(S_OK, handler.CreateNamedPropertyWithValue(L"ns0000:Model", L"QName", L"ns0000:Z", &properties[4]));
    for (const auto& property : properties) Append(property.Get());

    auto saved = Reparsed(document.Get());
    const wchar_t* const expected[][2] = {
        {L"psf:ScoredProperty[@name = 'psk:ResolutionX']", L"300 xsd:integer"},
        {L"psf:ScoredProperty[@name = 'psk:Scale']", L"0.50 xsd:decimal"},
        {L"psf:ScoredProperty[@name = 'psk:Label']", L"a b xsd:string"},
        {L"psf:Property[@name = 'psf:Version']", L"2 xsd:integer"},
        {L"psf:Property[@name = 'ns0000:Model']", L"ns0000:Z xsd:QName"},
    };
    for (const auto& [property, valueAndType] : expected) {
        const std::wstring value = std::wstring(L"/psf:PrintTicket/") + property + L"/psf:Value";
        EXPECT_EQ(valueAndType, TextAt(saved.Get(), value) + L" " + TextAt(saved.Get(), value + L"/@xsi:type"));
    }
}

TEST(HostileTicket, LongNamesRoundTripWithoutOverflow) {
    const std::wstring longName(100000, L'Q');
    auto document = LoadDocument(Ticket(Feature(L"psk:PageMediaType", L"psk:" + longName)));
    VPrintTicketHandler handler(document.Get());
    zx::unique_bstr option;
    ASSERT_EQ(S_OK, handler.GetSelectedOption(L"PageMediaType", option.put()));
    EXPECT_EQ(longName, std::wstring(option.get(), ::SysStringLen(option.get())));

    zx::ComPtr<IXMLDOMElement> feature, newOption;
    ASSERT_EQ(S_OK, handler.CreatePrefixedFeatureOption(longName.c_str(), longName.c_str(), &feature, &newOption,
                                                        L"ns0000:", L"ns0000:"));
    EXPECT_EQ(S_OK, handler.AppendToRoot(L"PrintTicket", feature.Get()));
    EXPECT_EQ(S_OK, handler.GetPrefixedSelectedOption(longName.c_str(), option.put(), L"ns0000:"));
    EXPECT_EQ(L"ns0000:" + longName, option.get());
    EXPECT_EQ(S_OK, handler.DeletePrefixedFeature(longName.c_str(), L"ns0000:"));
    EXPECT_EQ(kNotFound, handler.FindPrefixedFeature(longName.c_str(), L"psf:", L"ns0000:"));
}

TEST(HostileTicket, DeepNestingAndMissingAttributesGiveResults) {
    std::wstring nested;
    for (int level = 0; level < 200; ++level) nested += L"<psf:Feature name='psk:Level'>";
    nested += L"<psf:Option name='psk:Deepest'/>";
    for (int level = 0; level < 200; ++level) nested += L"</psf:Feature>";
    auto document = LoadDocument(Ticket(nested + L"<psf:Feature><psf:Option name='psk:NoFeatureName'/></psf:Feature>"
                                                 L"<psf:Feature name='psk:Unnamed'><psf:Option/></psf:Feature>"
                                                 L"<psf:Feature name='psk:Empty'/>"
                                                 L"<psf:Feature name='psk:NoRefName'><psf:Option>"
                                                 L"<psf:ScoredProperty name='psk:P'><psf:ParameterRef/>"
                                                 L"</psf:ScoredProperty></psf:Option></psf:Feature>"
                                                 L"<psf:ParameterInit><psf:Value>5</psf:Value></psf:ParameterInit>"));
    VPrintTicketHandler handler(document.Get());
    zx::unique_bstr option;
    EXPECT_EQ(L"Deepest", Outcome(handler.GetSubFeatureOption(L"Level", L"Level", option.put()), option));
    EXPECT_EQ(L"<null>", Outcome(handler.GetSelectedOption(L"Unnamed", option.put()), option));
    EXPECT_EQ(kNotFoundOutcome, Outcome(handler.GetSelectedOption(L"Empty", option.put()), option));
    EXPECT_EQ(kNotFoundOutcome, Outcome(handler.GetSubFeatureOption(L"Unnamed", L"Unnamed", option.put()), option));
    EXPECT_EQ(kNotFoundOutcome, Outcome(handler.GetScoredPropertyText(L"NoRefName", L"P", option.put()), option));
    EXPECT_EQ(S_OK, handler.DeleteFeature(L"Level"));
    EXPECT_EQ(kNotFound, handler.FindFeature(L"Level"));
}

namespace {

// What the query itself selects, for comparison with the handler's answer from its feature list.
std::wstring QueriedNode(VPrintTicketHandler& handler, const wchar_t* namePrefix, const wchar_t* feature,
                         const wchar_t* subFeature, bool option) {
    VPrintTicketQueryBuilder query(handler.FrameworkPrefix());
    query.AddFeature(namePrefix, feature);
    if (subFeature) query.AddFeature(handler.KeywordsPrefix(), subFeature);
    if (option) query.AddOptionValue(handler.KeywordsPrefix());
    zx::unique_bstr xpath;
    query.GetQuery(xpath.put());
    zx::ComPtr<IXMLDOMNode> node;
    handler.SelectSingleNode(xpath.get(), &node);
    return node ? XmlOf(node.Get()) : L"<none>";
}

std::wstring OptionNode(VPrintTicketHandler& handler, const wchar_t* namePrefix, const wchar_t* feature,
                        const wchar_t* subFeature) {
    if (!subFeature) return SelectedOption(handler, feature, namePrefix);
    zx::unique_bstr name;
    return Outcome(handler.GetSubFeatureOption(feature, subFeature, name.put()), name);
}

std::wstring QueriedOption(VPrintTicketHandler& handler, const wchar_t* namePrefix, const wchar_t* feature,
                           const wchar_t* subFeature) {
    const std::wstring xml = QueriedNode(handler, namePrefix, feature, subFeature, true);
    if (xml == L"<none>") return kNotFoundOutcome;
    auto node = LoadDocument(xml);
    std::wstring name = TextAt(node.Get(), L"/*/@name");
    if (name == L"<none>") name = TextAt(node.Get(), L"/*");
    if (name.starts_with(handler.KeywordsPrefix())) name.erase(0, std::wcslen(handler.KeywordsPrefix()));
    return name;
}

}  // namespace

// The handler answers feature lookups from its list of the ticket's features and keeps the list in
// step with its own edits; every answer must be the query's, also where features repeat, nest,
// or sit inside options, and whatever prefix the document gives the framework.
TEST(FeatureList, AnswersAsTheQueriesDoAcrossEdits) {
    const std::wstring body =
        L"<f:Feature name='psk:A'><f:Option name='psk:Outer'/>"
        L"<f:Feature name='psk:A'><f:Option name='psk:Inner'/></f:Feature></f:Feature>"
        L"<f:Feature name='psk:N'><f:Option><f:ScoredProperty name='psk:PagesPerSheet'>"
        L"<f:Value xsi:type='xsd:integer'>4</f:Value></f:ScoredProperty></f:Option>"
        L"<f:Feature name='psk:Dir'><f:Option name='psk:TopLeft'/>"
        L"<f:Feature name='psk:Dir'><f:Option name='psk:Nested'/></f:Feature></f:Feature></f:Feature>"
        L"<f:Feature name='psk:B'><f:Option name='psk:Only'><f:Feature name='psk:C'><f:Option name='psk:InOption'/>"
        L"</f:Feature></f:Option></f:Feature>"
        L"<f:Feature name='psk:Q'><f:ScoredProperty name='psk:OptionName'><f:Value>psk:ByValue</f:Value>"
        L"</f:ScoredProperty><f:Option name='psk:Later'/></f:Feature>"
        L"<f:Feature name='ns0000:P'><f:Option name='ns0000:Private'/></f:Feature>";
    std::wstring text = Ticket(body);
    for (const auto& [from, to] : {std::pair{L"xmlns:psf=", L"xmlns:f="}, {L"<psf:", L"<f:"}, {L"</psf:", L"</f:"}}) {
        ReplaceAll(text, from, to);
    }
    auto document = LoadDocument(text);
    VTicketWriter handler(document.Get());
    ASSERT_STREQ(L"f:", handler.FrameworkPrefix());

    const std::tuple<const wchar_t*, const wchar_t*, const wchar_t*> lookups[] = {
        {L"psk:", L"A", nullptr}, {L"psk:", L"N", L"Dir"},     {L"psk:", L"N", nullptr},
        {L"psk:", L"B", nullptr}, {L"psk:", L"C", nullptr},    {L"psk:", L"Dir", nullptr},
        {L"psk:", L"Q", nullptr}, {L"ns0000:", L"P", nullptr}, {L"psk:", L"Absent", nullptr},
        {L"psk:", L"B", L"C"},    {L"psk:", L"A", L"A"}};
    const auto compare = [&](const char* stage) {
        for (const auto& [prefix, feature, subFeature] : lookups) {
            zx::ComPtr<IXMLDOMNode> found;
            handler.FindPrefixedFeature(feature, L"psf:", prefix, &found);
            EXPECT_EQ(QueriedNode(handler, prefix, feature, nullptr, false), found ? XmlOf(found.Get()) : L"<none>")
                << stage << " " << feature;
            EXPECT_EQ(QueriedOption(handler, prefix, feature, subFeature),
                      OptionNode(handler, prefix, feature, subFeature))
                << stage << " " << feature << " " << (subFeature ? subFeature : L"");
        }
        zx::unique_bstr byList, byQuery;
        handler.GetScoredPropertyText(L"N", L"PagesPerSheet", byList.put());
        handler.GetValueText(L"//f:Feature[@name = \"psk:N\"]//f:ScoredProperty[@name = \"psk:PagesPerSheet\"]",
                             byQuery.put());
        EXPECT_EQ(Outcome(S_OK, byQuery), Outcome(S_OK, byList)) << stage;
    };
    compare("as loaded");

    zx::ComPtr<IXMLDOMElement> feature, option;
    ASSERT_EQ(S_OK, handler.CreateFeatureOption(L"A", L"Replaced", &feature, &option));
    ASSERT_EQ(S_OK, handler.ReplaceFeatures(L"psk:", L"A", feature.Get()));
    compare("after replacing nested features");
    ASSERT_EQ(S_OK, handler.CreateFeatureOption(L"C", L"Appended", &feature, &option));
    ASSERT_EQ(S_OK, handler.AppendToRoot(L"PrintTicket", feature.Get()));
    compare("after appending to the root");
    zx::ComPtr<IXMLDOMNode> target;
    ASSERT_EQ(S_OK, handler.FindFeature(L"Q", &target));
    ASSERT_EQ(S_OK, handler.CreateFeatureOption(L"Dir", L"InQ", &feature, &option));
    ASSERT_EQ(S_OK, handler.AppendChild(target.Get(), feature.Get()));
    compare("after appending inside a feature");
    ASSERT_EQ(S_OK, handler.DeleteFeature(L"B"));
    compare("after deleting a feature holding another");
    ASSERT_EQ(S_OK, handler.DeleteFeature(L"C"));
    ASSERT_EQ(S_OK, handler.DeleteFeature(L"Dir"));
    compare("after deleting");
}

// An option name read from the ticket is freed when stripping its prefix runs out of memory.
// Each attempt reads a name of 2 MB, so a copy kept on that path shows in the process's memory.
TEST(TicketHandlerOutOfMemory, AFailedPrefixStripKeepsNoCopyOfTheName) {
    const std::wstring hugeOption = L"psk:" + std::wstring(1024 * 1024, L'A');
    auto document = LoadDocument(Ticket(Feature(L"psk:PageMediaType", hugeOption)));
    VPrintTicketHandler handler(document.Get());
    const auto committed = [] {
        PROCESS_MEMORY_COUNTERS counters{};
        GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters));
        return static_cast<long long>(counters.PagefileUsage);
    };
    int failures = 0;
    long long before = 0;
    for (int attempt = 0; attempt <= 50; ++attempt) {
        if (attempt == 1) before = committed();
        const auto refusal = zxtest::RefusedAllocations::OfAtLeast(1024 * 1024);
        zx::unique_bstr option;
        try {
            if (FAILED(handler.GetSelectedOption(L"PageMediaType", option.put()))) ++failures;
        } catch (...) {
            ++failures;
        }
    }
    EXPECT_EQ(51, failures);
    EXPECT_GT(20ll * 1024 * 1024, committed() - before);
}

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

TEST(HandlerConstruction, FindsTheDocumentsOwnPrefixesOrFailsWithTheResultThatStopsIt) {
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

// Tickets as applications save them (a declaration, comments, indentation, a default and vendor
// namespaces, the standard ones in an unusual order), under prefixes of their own, and without the
// keywords namespace: options are read, lookups naming the usual "psf:" work, and new elements
// carry the document's prefixes.
TEST(HandlerConstruction, WorksWithTheDocumentsOwnLayoutAndPrefixes) {
    const std::wstring framework = kFrameworkUri, keywords = kKeywordsUri;
    const std::tuple<std::wstring, std::wstring, const wchar_t*> cases[] = {
        {L"<?xml version='1.0' encoding='UTF-8'?>\n<!-- saved -->\n<psf:PrintTicket version='1' "
         L"xmlns='urn:vendor:default' xmlns:xsd='http://www.w3.org/2001/XMLSchema'\n xmlns:v1='urn:v1' "
         L"xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xmlns:psk='" +
             keywords + L"' xmlns:v2='urn:v2' xmlns:psf='" + framework +
             L"'>\n  <!-- media -->\n  <psf:Feature name='psk:PageMediaType'>\n    <psf:Option name='psk:Plain'>"
             L"<v1:x/></psf:Option>\n  </psf:Feature>\n  <psf:Feature name='psk:PageOutputQuality'>\n    <psf:Option>\n"
             L"      <psf:ScoredProperty name='psk:OptionName'>\n        <psf:Value xsi:type='xsd:QName'>psk:High"
             L"</psf:Value>\n      </psf:ScoredProperty>\n    </psf:Option>\n  </psf:Feature>\n</psf:PrintTicket>\n",
         L"psk:", L"psf:Feature psf:Option"},
        {L"<f:PrintTicket version='1' xmlns:f='" + framework + L"' xmlns:k='" + keywords +
             L"'><f:Feature name='k:PageMediaType'><f:Option name='k:Plain'/></f:Feature></f:PrintTicket>",
         L"k:", L"f:Feature f:Option"},
        {L"<psf:PrintTicket xmlns:psf='" + framework +
             L"'><psf:Feature name='PageMediaType'><psf:Option name='Plain'/></psf:Feature></psf:PrintTicket>",
         L"", L"psf:Feature psf:Option"},
    };
    for (const auto& [text, prefix, elements] : cases) {
        auto document = LoadDocument(text);
        VPrintTicketHandler handler(document.Get());
        EXPECT_EQ(L"Plain", SelectedOption(handler, L"PageMediaType")) << elements;
        EXPECT_EQ(S_OK, handler.FindPrefixedFeature(L"PageMediaType", L"psf:", prefix.c_str())) << prefix;
        zx::ComPtr<IXMLDOMElement> feature, option;
        ASSERT_EQ(S_OK, handler.CreateFeatureOption(L"Duplex", L"OneSided", &feature, &option));
        EXPECT_EQ(elements, NameOf(feature.Get()) + L" " + NameOf(option.Get()));
        EXPECT_EQ(prefix + L"Duplex " + prefix + L"OneSided",
                  TextAt(feature.Get(), L"@name") + L" " + TextAt(option.Get(), L"@name"));
        EXPECT_EQ(S_OK, handler.AppendToRoot(L"PrintTicket", feature.Get()));
        const std::wstring appended = L"/psf:PrintTicket/psf:Feature[@name = '" + prefix +
                                      L"Duplex']/psf:Option[@name = '" + prefix + L"OneSided']";
        EXPECT_EQ(1, CountOf(Reparsed(document.Get()).Get(), appended.c_str())) << prefix;
        if (prefix == L"psk:") {
            EXPECT_STREQ(L"xsd:", handler.SchemaPrefix());
            EXPECT_EQ(L"High", SelectedOption(handler, L"PageOutputQuality"));
        }
    }
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
