// Feature, option, property and parameter operations of the ticket handler on real MSXML 6
// documents, and hostile documents that must give HRESULTs.
#include "printschema/ticket_handler.h"
#include "tests/printschema/dom_support.h"

#include <gtest/gtest.h>

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

class TicketHandlerTest : public testing::Test {
protected:
    std::wstring Selected(const wchar_t* feature) {
        zx::unique_bstr option;
        const HRESULT hr = handler.GetSelectedOption(feature, option.put());
        return SUCCEEDED(hr) ? std::wstring(option ? option.get() : L"<null>") : L"hr";
    }
    // The document as a reader would see it after saving.
    zx::ComPtr<IXMLDOMDocument2> Saved() { return Reparsed(document.Get()); }

    zx::ComPtr<IXMLDOMDocument2> document = LoadDocument(Ticket(kBody));
    VPrintTicketHandler handler{document.Get()};
};

}  // namespace

TEST_F(TicketHandlerTest, SelectedOptionsComeFromEitherBranchOfTheUnion) {
    EXPECT_EQ(L"Plain", Selected(L"PageMediaType"));
    EXPECT_EQ(L"High", Selected(L"PageOutputQuality"));
    EXPECT_EQ(L"ns0000:Photo", Selected(L"JobMediaTypePrev"));
    EXPECT_EQ(L"TwoPages", Selected(L"DocumentNUp"));
    zx::unique_bstr option;
    EXPECT_EQ(kNotFound, handler.GetSelectedOption(L"Absent", option.put()));
    EXPECT_EQ(nullptr, option.get());
    EXPECT_EQ(E_POINTER, handler.GetSelectedOption(L"PageMediaType", nullptr));
    EXPECT_EQ(S_OK, handler.GetPrefixedSelectedOption(L"JobZXRlt", option.put(), L"ns0000:"));
    EXPECT_STREQ(L"ns0000:_1", option.get());
    EXPECT_EQ(S_OK, handler.GetSubFeatureOption(L"DocumentNUp", L"PresentationDirection", option.put()));
    EXPECT_STREQ(L"RightBottom", option.get());
    EXPECT_EQ(kNotFound, handler.GetSubFeatureOption(L"PageMediaType", L"PresentationDirection", option.put()));
}

TEST_F(TicketHandlerTest, ScoredPropertiesReadDirectlyOrThroughParameters) {
    zx::unique_bstr text;
    EXPECT_EQ(S_OK, handler.GetScoredPropertyText(L"PageResolution", L"ResolutionX", text.put()));
    EXPECT_STREQ(L"600", text.get());
    INT32 value = 0xdead;
    EXPECT_EQ(S_OK, handler.GetScoredPropertyInt(L"PageResolution", L"ResolutionY", &value));
    EXPECT_EQ(-1200, value);
    EXPECT_EQ(kNotFound, handler.GetScoredPropertyText(L"PageResolution", L"Broken", text.put()));
    EXPECT_EQ(kNotFound, handler.GetScoredPropertyText(L"PageResolution", L"Absent", text.put()));
    EXPECT_EQ(kNotFound, handler.GetValueText(L"//psf:Feature[@name = 'psk:Absent']", text.put()));
    EXPECT_EQ(E_INVALIDARG, handler.GetScoredPropertyInt(L"PageOutputQuality", L"OptionName", &value));
    EXPECT_EQ(-1200, value);
}

TEST_F(TicketHandlerTest, FindsSetsAndDeletesFeatures) {
    zx::ComPtr<IXMLDOMNode> feature;
    EXPECT_EQ(S_OK, handler.FindFeature(L"PageMediaType", &feature));
    EXPECT_EQ(L"psk:PageMediaType", TextAt(feature.Get(), L"@name"));
    EXPECT_EQ(kNotFound, handler.FindFeature(L"JobZXRlt"));
    EXPECT_EQ(S_OK, handler.FindPrefixedFeature(L"JobZXRlt", L"psf:", L"ns0000:"));

    EXPECT_EQ(S_OK, handler.SetSelectedOption(L"PageMediaType", L"ns0000:Glossy"));
    EXPECT_EQ(L"ns0000:Glossy", Selected(L"PageMediaType"));
    // The OptionName Value has no name attribute to rewrite.
    EXPECT_EQ(kNotFound, handler.SetSelectedOption(L"PageOutputQuality", L"psk:Draft"));
    EXPECT_EQ(kNotFound, handler.SetSelectedOption(L"Absent", L"psk:Draft"));

    EXPECT_EQ(S_OK, handler.DeletePrefixedFeature(L"JobZXRlt", L"ns0000:"));
    EXPECT_EQ(S_OK, handler.DeleteFeature(L"DocumentNUp"));
    EXPECT_EQ(S_OK, handler.DeleteFeature(L"Absent"));
    auto saved = Saved();
    EXPECT_EQ(0, CountOf(saved.Get(), L"//psf:Feature[@name = 'ns0000:JobZXRlt' or @name = 'psk:DocumentNUp']"));
    EXPECT_EQ(0, CountOf(saved.Get(), L"//psf:Feature[@name = 'psk:PresentationDirection']"));
    EXPECT_EQ(4, CountOf(saved.Get(), L"/psf:PrintTicket/psf:Feature"));
}

TEST_F(TicketHandlerTest, NewFeaturesAreNamedAndAppendedToTheRoot) {
    zx::ComPtr<IXMLDOMElement> feature, option, direction, directionOption;
    ASSERT_EQ(S_OK, handler.CreateFeature(L"JobInputBin", &feature, &option));
    EXPECT_EQ(L"<none>", TextAt(option.Get(), L"@name"));
    ASSERT_EQ(S_OK, handler.CreateFeatureOptionPrefixed(L"JobInputBin", L"_1", &feature, &option, L"ns0000:"));
    EXPECT_EQ(S_OK, handler.AppendToRoot(L"PrintTicket", feature.Get()));
    ASSERT_EQ(S_OK, handler.CreatePrefixedFeatureOption(L"Stage", L"PrinterImpression", &direction, &directionOption,
                                                        L"ns0000:", L"ns0000:"));
    zx::ComPtr<IXMLDOMNode> appended;
    ASSERT_EQ(S_OK, feature->appendChild(direction.Get(), &appended));
    EXPECT_EQ(L"ns0000:_1", Selected(L"JobInputBin"));

    auto saved = Saved();
    EXPECT_EQ(1, CountOf(saved.Get(), L"/psf:PrintTicket/psf:Feature[@name = 'psk:JobInputBin']/psf:Option"
                                      L"[@name = 'ns0000:_1']"));
    EXPECT_EQ(L"ns0000:PrinterImpression",
              TextAt(saved.Get(), L"//psf:Feature[@name = 'ns0000:Stage']/psf:Option/@name"));

    EXPECT_EQ(E_POINTER, handler.CreateFeature(L"X", nullptr, &option));
    EXPECT_EQ(E_INVALIDARG, handler.CreateFeatureOption(L"X", L"", &feature, &option));
    EXPECT_EQ(nullptr, feature.Get());
    EXPECT_EQ(kNotFound, handler.AppendToRoot(L"PrintCapabilities", direction.Get()));
}

TEST_F(TicketHandlerTest, ParametersOfThePlugInTakeThePrivatePrefix) {
    zx::ComPtr<IXMLDOMElement> reference, initialiser, wrapper;
    ASSERT_EQ(S_OK, handler.CreateIntegerParameter(L"DocumentNUpPageBorderWidth", 0, &reference, &initialiser));
    EXPECT_EQ(L"ns0000:DocumentNUpPageBorderWidth", TextAt(reference.Get(), L"@name"));
    ASSERT_EQ(S_OK, handler.WrapInPrefixedScoredProperty(L"BorderWidth", reference.Get(), &wrapper, L"ns0000:"));
    EXPECT_EQ(S_OK, handler.AppendToRoot(L"PrintTicket", wrapper.Get()));
    EXPECT_EQ(S_OK, handler.AppendToRoot(L"PrintTicket", initialiser.Get()));
    zx::unique_bstr text;
    EXPECT_EQ(S_OK, handler.GetValueText(L"//psf:ScoredProperty[@name = 'ns0000:BorderWidth']", text.put()));
    EXPECT_STREQ(L"0", text.get());

    ASSERT_EQ(S_OK, handler.CreateParameter(L"PageWatermarkSizeWidth2", L"decimal", L"1.50", &reference, &initialiser));
    EXPECT_EQ(L"psk:PageWatermarkSizeWidth2", TextAt(initialiser.Get(), L"@name"));
    EXPECT_EQ(S_OK, handler.AppendToRoot(L"PrintTicket", initialiser.Get()));
    auto saved = Saved();
    EXPECT_EQ(L"xsd:integer",
              TextAt(saved.Get(), L"//psf:ParameterInit[@name = 'ns0000:DocumentNUpPageBorderWidth']/psf:Value/@xsi:type"));
    EXPECT_EQ(L"1.50", TextAt(saved.Get(), L"//psf:ParameterInit[@name = 'psk:PageWatermarkSizeWidth2']/psf:Value"));

    EXPECT_EQ(E_POINTER, handler.CreateParameter(L"A", L"integer", L"1", nullptr, &initialiser));
    EXPECT_EQ(E_INVALIDARG, handler.CreateParameter(L"A", L"integer", L"", &reference, &initialiser));
    EXPECT_EQ(nullptr, reference.Get());
    EXPECT_EQ(nullptr, initialiser.Get());
}

TEST_F(TicketHandlerTest, TypedPropertiesWriteTheirValueAndType) {
    zx::ComPtr<IXMLDOMElement> feature, option, property;
    ASSERT_EQ(S_OK, handler.CreatePrefixedFeatureOption(L"PageResolution", L"_300x300", &feature, &option, L"psk:",
                                                        L"ns0000:"));
    const auto add = [&](HRESULT created) {
        zx::ComPtr<IXMLDOMNode> appended;
        ASSERT_EQ(S_OK, created);
        ASSERT_EQ(S_OK, option->appendChild(property.Get(), &appended));
    };
    add(handler.CreateIntegerScoredProperty(L"ResolutionX", 300, &property));
    add(handler.CreateDecimalScoredProperty(L"Scale", 0.5, &property));
    add(handler.CreateStringScoredProperty(L"Label", L"a b", &property));
    add(handler.CreatePropertyWithValue(L"Version", L"integer", L"2", &property));
    add(handler.CreateNamedPropertyWithValue(L"ns0000:Model", L"QName", L"ns0000:Z", &property));
    EXPECT_EQ(S_OK, handler.AppendToRoot(L"PrintTicket", feature.Get()));

    auto saved = Saved();
    const struct {
        const wchar_t* property;
        const wchar_t* value;
        const wchar_t* type;
    } expected[] = {
        {L"psf:ScoredProperty[@name = 'psk:ResolutionX']", L"300", L"xsd:integer"},
        {L"psf:ScoredProperty[@name = 'psk:Scale']", L"0.50", L"xsd:decimal"},
        {L"psf:ScoredProperty[@name = 'psk:Label']", L"a b", L"xsd:string"},
        {L"psf:Property[@name = 'psf:Version']", L"2", L"xsd:integer"},
        {L"psf:Property[@name = 'ns0000:Model']", L"ns0000:Z", L"xsd:QName"},
    };
    for (const auto& row : expected) {
        const std::wstring value = std::wstring(L"//psf:Option[@name = 'ns0000:_300x300']/") + row.property + L"/psf:Value";
        EXPECT_EQ(row.value, TextAt(saved.Get(), value.c_str())) << row.property;
        EXPECT_EQ(row.type, TextAt(saved.Get(), (value + L"/@xsi:type").c_str())) << row.property;
    }
    EXPECT_EQ(E_INVALIDARG, handler.CreateScoredPropertyWithValue(L"X", L"", L"1", &property));
    EXPECT_EQ(E_INVALIDARG, handler.WrapInPrefixedScoredProperty(L"X", nullptr, &property, L"psk:"));
    EXPECT_EQ(E_POINTER, handler.CreateProperty(L"X", nullptr));
}

TEST_F(TicketHandlerTest, NodeAndTextHelpersReportWhatIsMissing) {
    zx::ComPtr<IXMLDOMElement> detached;
    ASSERT_EQ(S_OK, handler.CreateElement(L"psf:Feature", kFrameworkUri, &detached));
    zx::unique_bstr text;
    EXPECT_EQ(S_FALSE, handler.GetAttributeText(detached.Get(), L"name", text.put()));
    EXPECT_EQ(S_FALSE, handler.SetAttributeText(detached.Get(), L"name", L"x"));
    EXPECT_EQ(E_FAIL, handler.RemoveNode(detached.Get()));
    EXPECT_EQ(E_INVALIDARG, handler.CreateElement(nullptr, kFrameworkUri, &detached));
    EXPECT_EQ(E_INVALIDARG, handler.CreateAttribute(nullptr, L"name", nullptr, L"x"));
    zx::ComPtr<IXMLDOMNode> node;
    EXPECT_EQ(S_FALSE, handler.SelectSingleNode(L"//psf:Feature[@name = 'psk:Absent']", &node));
    EXPECT_EQ(nullptr, node.Get());
    zx::ComPtr<IXMLDOMNodeList> features;
    ASSERT_EQ(S_OK, handler.SelectNodes(L"Feature", &features));
    long count = 0;
    features->get_length(&count);
    EXPECT_EQ(8, count);

    BSTR option = ::SysAllocString(L"ns0000:psk:X");
    EXPECT_EQ(S_OK, handler.StripKeywordPrefix(&option));
    EXPECT_STREQ(L"ns0000:X", option);
    EXPECT_EQ(S_OK, handler.StripKeywordPrefix(&option));
    EXPECT_STREQ(L"ns0000:X", option);
    ::SysFreeString(option);
    EXPECT_EQ(E_POINTER, handler.StripKeywordPrefix(nullptr));
    VStringBuffer stripped;
    EXPECT_EQ(S_OK, VPrintTicketHandler::RemovePrefix(zx::MakeBstr(L"ns0000:Letter"), L"ns0000:", stripped));
    EXPECT_STREQ(L"Letter", stripped.c_str());
    EXPECT_EQ(S_OK, VPrintTicketHandler::RemovePrefix(zx::MakeBstr(L"AllPages"), L"ns0000:", stripped));
    EXPECT_STREQ(L"AllPages", stripped.c_str());
}

TEST(HostileTicket, LongNamesRoundTripWithoutOverflow) {
    const std::wstring longName(100000, L'Q');
    auto document = LoadDocument(Ticket(L"<psf:Feature name='psk:PageMediaType'><psf:Option name='psk:" + longName +
                                        L"'/></psf:Feature>"));
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
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_NOT_FOUND), handler.FindPrefixedFeature(longName.c_str(), L"psf:", L"ns0000:"));
    EXPECT_EQ(E_INVALIDARG, handler.FindFeature(L"A\"] | //*[@x=\""));
}

TEST(HostileTicket, DeepNestingAndMissingAttributesGiveResults) {
    std::wstring nested;
    for (int level = 0; level < 200; ++level) nested += L"<psf:Feature name='psk:Level'>";
    nested += L"<psf:Option name='psk:Deepest'/>";
    for (int level = 0; level < 200; ++level) nested += L"</psf:Feature>";
    auto document = LoadDocument(Ticket(
        nested + L"<psf:Feature><psf:Option name='psk:NoFeatureName'/></psf:Feature>"
                 L"<psf:Feature name='psk:Unnamed'><psf:Option/></psf:Feature>"
                 L"<psf:Feature name='psk:Empty'/>"
                 L"<psf:Feature name='psk:NoInitName'><psf:Option><psf:ScoredProperty name='psk:P'>"
                 L"<psf:ParameterRef/></psf:ScoredProperty></psf:Option></psf:Feature>"
                 L"<psf:ParameterInit><psf:Value>5</psf:Value></psf:ParameterInit>"));
    VPrintTicketHandler handler(document.Get());
    zx::unique_bstr option;
    EXPECT_EQ(S_OK, handler.GetSubFeatureOption(L"Level", L"Level", option.put()));
    EXPECT_STREQ(L"Deepest", option.get());
    EXPECT_EQ(S_OK, handler.GetSelectedOption(L"Unnamed", option.put()));
    EXPECT_EQ(nullptr, option.get());
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_NOT_FOUND), handler.GetSelectedOption(L"Empty", option.put()));
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_NOT_FOUND), handler.GetSubFeatureOption(L"Unnamed", L"Unnamed", option.put()));
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_NOT_FOUND), handler.GetScoredPropertyText(L"NoInitName", L"P", option.put()));
    EXPECT_EQ(S_OK, handler.DeleteFeature(L"Level"));
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_NOT_FOUND), handler.FindFeature(L"Level"));

    // Deeper than any parser accepts: built node by node.
    zx::ComPtr<IXMLDOMNode> parent;
    ASSERT_EQ(S_OK, handler.FindFeature(L"Unnamed", &parent));
    for (int level = 0; level < 5000; ++level) {
        zx::ComPtr<IXMLDOMElement> feature, child;
        ASSERT_EQ(S_OK, handler.CreateFeatureOption(L"Deep", L"On", &feature, &child));
        zx::ComPtr<IXMLDOMNode> appended;
        ASSERT_EQ(S_OK, parent->appendChild(feature.Get(), &appended));
        parent = appended;
    }
    EXPECT_EQ(S_OK, handler.GetSubFeatureOption(L"Unnamed", L"Deep", option.put()));
    EXPECT_STREQ(L"On", option.get());
    EXPECT_EQ(S_OK, handler.DeleteFeature(L"Deep"));
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_NOT_FOUND), handler.FindFeature(L"Deep"));
}
