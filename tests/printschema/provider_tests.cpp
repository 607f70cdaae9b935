// The PrintTicket provider through its COM interface, with drvhost's core helper over the sample
// printer: its contract, the converters and the feature writers and readers.
#include "drvhost/core_driver.h"
#include "drvhost/print_schema.h"
#include "drvhost/printer_install.h"
#include "printschema/bidi_converter.h"
#include "device/udm_client.h"
#include "printschema/print_schema_names.h"
#include "printschema/ticket_provider.h"
#include "settings/private_devmode.h"
#include "tests/printschema/dom_support.h"
#include "tests/support/debugger_output.h"
#include "tests/support/failing_allocator.h"
#include "tests/support/fake_core_helper.h"
#include "tests/support/plugin_module.h"

#include <gtest/gtest.h>

using namespace drvhost;
using namespace zxtest;

namespace {

const HRESULT kNotFound = HRESULT_FROM_WIN32(ERROR_NOT_FOUND);
constexpr ULONG kPrivateSize = sizeof(VPrivateDevMode);

std::wstring OptionOf(IXMLDOMDocument2* ticket, const std::wstring& feature) {
    return TextAt(Reparsed(ticket).Get(), L"//psf:Feature[@name='" + feature + L"']/psf:Option/@name");
}

class ProviderTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(provider);
        zx::WritePrivateDevModeHeader(&Block());
        ASSERT_EQ(S_OK, provider->PublishPrintTicketHelper(core.CoreHelper()));
    }
    void TearDown() override { provider.Reset(); }  // before the helper it holds

    VPrivateDevMode& Block() { return *static_cast<VPrivateDevMode*>(job.PluginBlock()); }

    void Set(const char* feature, const char* option) {
        const auto index = core.Description().FindFeature(feature);
        ASSERT_TRUE(index) << feature;
        const auto choice = core.Description().features[*index].FindOption(option);
        ASSERT_TRUE(choice) << feature << "=" << option;
        if (core.Description().features[*index].sheet == FeatureSheet::Printer) {
            core.SetPrinterSetting(*index, static_cast<DWORD>(*choice));
        }
        job.SetSelection(*index, static_cast<DWORD>(*choice));
    }
    std::string Current(const char* feature) {
        PCSTR option = nullptr;
        core.CoreHelper()->GetOption(job.Public(), job.TotalSize(), feature, &option);
        return option ? option : "";
    }

    zx::ComPtr<IXMLDOMDocument2> BaseTicket() {
        return LoadDocument(BuildPrintTicket(
            core.Description(), [this](size_t f) { return job.Selection(f); }, PrintSchema::Uri::Device));
    }
    HRESULT ToTicket(IXMLDOMDocument2* ticket, IPrintOemPrintTicketProvider* by = nullptr) {
        return (by ? by : provider.Get())
            ->ConvertDevModeToPrintTicket(job.TotalSize(), job.Public(), kPrivateSize, job.PluginBlock(), ticket);
    }
    HRESULT ToDevMode(IXMLDOMDocument2* ticket) {
        return provider->ConvertPrintTicketToDevMode(ticket, job.TotalSize(), job.Public(), kPrivateSize,
                                                     job.PluginBlock());
    }

    CoreDriver core{LoadPrinterDescription(ProgramDirectory() + kDescriptionFile)};
    JobDevMode job{core.Description(), kPrivateSize, L"ZX"};
    zx::ComPtr<IPrintOemPrintTicketProvider> provider = CreateTicketProvider();
};

// A device-model client stand-in that hands out a fixed accessory record.
class FixedDevice final : public VUINotifer {
public:
    FixedDevice(int32_t tray2, int32_t photoTray, int32_t colour) : m_record(1, tray2, photoTray, colour, 1) {}
    IBiDiData* GetData() override { return &m_record; }

private:
    VIOData m_record;
};

}  // namespace

TEST_F(ProviderTest, BindsToAPrinterAndHandsOutItsNamespace) {
    OEMPTOPTS options = OEMPT_DEFAULT;
    INT count = -1;
    BSTR* namespaces = reinterpret_cast<BSTR*>(0xdeadbeef);
    EXPECT_EQ(E_HANDLE, provider->BindPrinter(nullptr, 1, &options, &count, &namespaces));
    EXPECT_EQ(E_POINTER, provider->BindPrinter(reinterpret_cast<HANDLE>(1), 1, &options, &count, nullptr));
    EXPECT_EQ(E_VERSION_NOT_SUPPORTED,
              provider->BindPrinter(reinterpret_cast<HANDLE>(1), 2, &options, &count, &namespaces));
    EXPECT_EQ(0, count);
    EXPECT_EQ(nullptr, namespaces);

    ASSERT_EQ(S_OK, provider->BindPrinter(reinterpret_cast<HANDLE>(1), 1, &options, &count, &namespaces));
    EXPECT_EQ(OEMPT_NOSNAPSHOT, options);
    ASSERT_EQ(1, count);
    EXPECT_STREQ(PrintSchema::Uri::Device, namespaces[0]);
    SysFreeString(namespaces[0]);
    CoTaskMemFree(namespaces);

    zx::unique_bstr uri;
    EXPECT_EQ(S_OK, provider->QueryDeviceDefaultNamespace(uri.put()));
    EXPECT_STREQ(PrintSchema::Uri::Device, uri.get());
    EXPECT_EQ(E_POINTER, provider->QueryDeviceDefaultNamespace(nullptr));
}

TEST_F(ProviderTest, ChecksItsArgumentsAndHelperBeforeAnyConverterRuns) {
    auto ticket = BaseTicket();
    const std::wstring before = XmlOf(ticket.Get());
    EXPECT_EQ(E_POINTER, provider->ConvertDevModeToPrintTicket(job.TotalSize(), nullptr, 0, nullptr, nullptr));
    EXPECT_EQ(E_POINTER, provider->ConvertDevModeToPrintTicket(200, job.Public(), kPrivateSize, nullptr, ticket.Get()));
    EXPECT_EQ(E_POINTER,
              provider->ConvertPrintTicketToDevMode(nullptr, 200, job.Public(), kPrivateSize, job.PluginBlock()));
    EXPECT_EQ(E_INVALIDARG,
              provider->ConvertDevModeToPrintTicket(200, job.Public(), kPrivateSize, job.PluginBlock(), ticket.Get()));
    EXPECT_EQ(E_INVALIDARG,
              provider->ConvertPrintTicketToDevMode(ticket.Get(), job.TotalSize(), job.Public(), 0, job.PluginBlock()));
    EXPECT_EQ(before, XmlOf(ticket.Get()));

    EXPECT_EQ(S_OK, provider->ExpandIntentOptions(ticket.Get()));
    EXPECT_EQ(before, XmlOf(ticket.Get()));
    EXPECT_EQ(S_PT_NO_CONFLICT, provider->ValidatePrintTicket(ticket.Get()));
    EXPECT_EQ(E_POINTER, provider->ValidatePrintTicket(nullptr));

    // Capabilities are checked but left as the host made them.
    auto capabilities = LoadDocument(BuildPrintCapabilities(core.Description(), PrintSchema::Uri::Device));
    const std::wstring made = XmlOf(capabilities.Get());
    EXPECT_EQ(S_OK, provider->CompletePrintCapabilities(nullptr, capabilities.Get()));
    EXPECT_EQ(made, XmlOf(capabilities.Get()));
    EXPECT_EQ(E_POINTER, provider->CompletePrintCapabilities(nullptr, nullptr));
    auto foreign = LoadDocument(L"<PrintCapabilities xmlns='urn:not-the-framework' version='1'/>");
    EXPECT_EQ(E_FAIL, provider->CompletePrintCapabilities(nullptr, foreign.Get()));

    // Without the core driver's helper, conversions find no options.
    zx::ComPtr<IPrintOemPrintTicketProvider> bare = CreateTicketProvider();
    EXPECT_EQ(S_OK, bare->PublishPrintTicketHelper(core.DriverUi()));  // not a core helper: accepted, kept out
    EXPECT_EQ(kNotFound, bare->ConvertDevModeToPrintTicket(job.TotalSize(), job.Public(), kPrivateSize,
                                                           job.PluginBlock(), ticket.Get()));
    EXPECT_EQ(E_POINTER, bare->PublishPrintTicketHelper(nullptr));
}

// No binding at all means none; a binding the printer does not offer leaves the DEVMODE alone.
TEST_F(ProviderTest, BookletBindingFollowsTheTicket) {
    const std::wstring none = Feature(L"psk:DocumentBinding", L"psk:None");
    const std::wstring stitch = Feature(L"psk:DocumentBinding", L"psk:EdgeStitchLeft");
    const std::tuple<const char*, std::wstring, const char*> cases[] = {
        {"Booklet", none, "None"}, {"Booklet", L"", "None"}, {"JapaneseBooklet", stitch, "JapaneseBooklet"}};
    for (const auto& [before, body, after] : cases) {
        Set("DocumentBinding", before);
        EXPECT_EQ(S_OK, ToDevMode(LoadDocument(Ticket(body)).Get()));
        EXPECT_EQ(after, Current("DocumentBinding")) << before;
    }
}

TEST_F(ProviderTest, NUpContentIsWrittenOnlyForSeveralPagesPerSheet) {
    auto single = BaseTicket();
    const long directions = CountOf(Reparsed(single.Get()).Get(), L"//psf:Feature[@name='psk:PresentationDirection']");
    ASSERT_EQ(S_OK, ToTicket(single.Get()));
    auto plain = Reparsed(single.Get());
    EXPECT_EQ(0, CountOf(plain.Get(), L"//psf:Feature[@name='ns0000:NUpBorders']"));
    EXPECT_EQ(0, CountOf(plain.Get(), L"//psf:ParameterInit"));
    EXPECT_EQ(directions, CountOf(plain.Get(), L"//psf:Feature[@name='psk:PresentationDirection']"));

    Set("DocumentNUp", "4");
    Set("PresentationDirection", "BottomLeft");
    Set("DrawBorders", "On");
    auto ticket = BaseTicket();
    ASSERT_EQ(S_OK, ToTicket(ticket.Get()));
    auto written = Reparsed(ticket.Get());
    const std::wstring nup = L"/psf:PrintTicket/psf:Feature[@name='psk:DocumentNUp']";
    EXPECT_EQ(L"psk:BottomLeft",
              TextAt(written.Get(), nup + L"/psf:Feature[@name='psk:PresentationDirection'][last()]/psf:Option/@name"));
    EXPECT_EQ(L"ns0000:On", TextAt(written.Get(), nup + L"/psf:Feature[@name='ns0000:NUpBorders']/psf:Option/@name"));
    EXPECT_EQ(L"ns0000:DocumentNUpPageBorderWidth",
              TextAt(written.Get(), nup + L"/psf:Feature[@name='ns0000:NUpBorders']/psf:Option/"
                                          L"psf:ScoredProperty[@name='ns0000:BorderWidth']/psf:ParameterRef/@name"));
    EXPECT_EQ(L"0", TextAt(written.Get(),
                           L"/psf:PrintTicket/psf:ParameterInit[@name='ns0000:DocumentNUpPageBorderWidth']/psf:Value"));
    // Page ranges are printed at the printer's impression stage.
    EXPECT_EQ(
        L"ns0000:PrinterImpression",
        TextAt(written.Get(),
               L"//psf:Feature[@name='ns0000:DocumentPageRanges']/psf:Feature[@name='ns0000:Stage']/psf:Option/@name"));
}

// A ticket without the job's N-up feature skips the N-up steps, and the converters after it still
// write theirs; one without the media memory fails the conversion.
TEST_F(ProviderTest, TicketsMissingAFeatureTheConvertersUse) {
    Set("DocumentNUp", "4");
    Set("TouchByUser", "On");
    auto ticket = LoadDocument(Ticket(Feature(L"ns0000:JobZXApplicationTracking", L"ns0000:Old")));
    EXPECT_EQ(S_OK, ToTicket(ticket.Get()));
    EXPECT_EQ(L"ns0000:Unknown", OptionOf(ticket.Get(), L"ns0000:JobZXApplicationTracking"));

    Set("DocumentNUp", "1");
    Set("TouchByUser", "Off");
    Set("PaperSize", "A4");
    auto noMemory = LoadDocument(
        Ticket(Feature(L"psk:PageMediaType", L"psk:Plain") +
               L"<psf:Feature name='psk:DocumentNUp'><psf:Option><psf:ScoredProperty name='psk:PagesPerSheet'>"
               L"<psf:Value xsi:type='xsd:integer'>1</psf:Value></psf:ScoredProperty></psf:Option></psf:Feature>"));
    EXPECT_EQ(kNotFound, ToTicket(noMemory.Get()));
}

TEST_F(ProviderTest, WritesTheJobsPrivateFeaturesFromTheDevModeAndKeepsTheUsersChoices) {
    Set("PaperSize", "A4");
    Set("DuplexUnit", "FALSE");  // no two-sided unit: two-sided printing by hand
    Set("PageOutputQuality", "Draft");
    auto ticket = BaseTicket();
    const DebuggerOutput debugger;
    ASSERT_EQ(S_OK, ToTicket(ticket.Get()));
    // Application tracking, two-sided printing by hand, the draft resolution, then the two memories.
    const std::string made = "appendChild succeeded..\n", appended = "Element appended successfully...";
    EXPECT_EQ(made + appended + made + appended + made + made + made, debugger.Text());

    EXPECT_EQ(L"ns0000:Unknown", OptionOf(ticket.Get(), L"ns0000:JobZXApplicationTracking"));
    EXPECT_EQ(L"ns0000:ON", OptionOf(ticket.Get(), L"ns0000:JobZXPrintOnBothSidesManually"));
    EXPECT_EQ(L"ns0000:_300x300", OptionOf(ticket.Get(), L"psk:PageResolution"));
    EXPECT_EQ(L"300", TextAt(Reparsed(ticket.Get()).Get(),
                             L"//psf:Feature[@name='psk:PageResolution']/psf:Option/"
                             L"psf:ScoredProperty[@name='psk:ResolutionY']/psf:Value"));
    // The sample's rule for A4: plain paper (1.0) from the automatic source (7), normal quality.
    EXPECT_EQ(L"ns0000:_1_0", OptionOf(ticket.Get(), L"psk:PageMediaType"));
    EXPECT_EQ(L"ns0000:_7", OptionOf(ticket.Get(), L"psk:JobInputBin"));
    EXPECT_EQ(L"psk:Normal", OptionOf(ticket.Get(), L"psk:PageOutputQuality"));
    EXPECT_EQ(L"psk:None", OptionOf(ticket.Get(), L"psk:PageBorderless"));
    EXPECT_EQ(L"ns0000:_1_0", OptionOf(ticket.Get(), L"ns0000:JobMediaTypePrev"));
    EXPECT_EQ(L"ns0000:Normal", OptionOf(ticket.Get(), L"ns0000:JobOutputQualityPrev"));

    // Settings the user chose are not snapped.
    Set("DuplexUnit", "TRUE");
    Set("PageOutputQuality", "High");
    Set("TouchByUser", "On");
    ticket = BaseTicket();
    ASSERT_EQ(S_OK, ToTicket(ticket.Get()));
    EXPECT_EQ(L"psk:High", OptionOf(ticket.Get(), L"psk:PageOutputQuality"));
    EXPECT_EQ(L"psk:Plain", OptionOf(ticket.Get(), L"psk:PageMediaType"));
    EXPECT_EQ(L"ns0000:OFF", OptionOf(ticket.Get(), L"ns0000:JobZXPrintOnBothSidesManually"));
}

TEST_F(ProviderTest, UserChangesOfMediaAndQualityAreFlaggedAndRemembered) {
    const auto ticketWith = [](const wchar_t* media, const wchar_t* previousMedia, const wchar_t* quality,
                               const wchar_t* previousQuality) {
        return LoadDocument(Ticket(
            Feature(L"psk:PageMediaType", media) + Feature(L"ns0000:JobMediaTypePrev", previousMedia) +
            Feature(L"psk:PageOutputQuality", quality) + Feature(L"ns0000:JobOutputQualityPrev", previousQuality)));
    };
    auto same = ticketWith(L"ns0000:_2_0", L"ns0000:_2_0", L"psk:High", L"ns0000:High");
    ASSERT_EQ(S_OK, ToDevMode(same.Get()));
    EXPECT_EQ(0u, Block().dwUserChanges);
    EXPECT_EQ(0, CountOf(Reparsed(same.Get()).Get(), L"//psf:Feature[@name='ns0000:JobTouchByUser']"));

    auto changed = ticketWith(L"psk:Plain", L"ns0000:Plain", L"psk:High", L"ns0000:Normal");
    ASSERT_EQ(S_OK, ToDevMode(changed.Get()));
    EXPECT_EQ(0x14u, Block().dwUserChanges);
    EXPECT_EQ(L"ns0000:On", OptionOf(changed.Get(), L"ns0000:JobTouchByUser"));
    EXPECT_EQ(L"ns0000:Plain", OptionOf(changed.Get(), L"ns0000:JobMediaTypePrev"));
    EXPECT_EQ(L"ns0000:High", OptionOf(changed.Get(), L"ns0000:JobOutputQualityPrev"));

    zx::WritePrivateDevModeHeader(&Block());
    auto shortMemory = ticketWith(L"ns0000:_2_0", L"ns0000:_2_0", L"psk:High", L"High");
    ASSERT_EQ(S_OK, ToDevMode(shortMemory.Get()));
    EXPECT_EQ(0x10u, Block().dwUserChanges);  // too short to hold the prefix: a change
}

TEST(BidiConverter, WritesWhatTheDeviceReports) {
    FixedDevice mono(0, 0, 0), full(1, 1, 1);
    const auto convert = [](ISubject* device) {
        auto ticket =
            LoadDocument(Ticket(Feature(L"psk:PageOutputColor", L"psk:Color") +
                                Feature(L"ns0000:JobZXRlt", L"ns0000:_1") + Feature(L"psk:JobInputBin", L"ns0000:_7")));
        CBidiDMPTConv converter;
        if (device) converter.Update(device);
        DEVMODEW devMode{};
        VPrivateDevMode block{};
        VConversionDocument document(ticket.Get());
        EXPECT_EQ(S_OK,
                  converter.ConvertDevModeToPrintTicket(sizeof(devMode), &devMode, sizeof(block), &block, document));
        return ticket;
    };
    auto monochrome = convert(&mono);
    EXPECT_EQ(L"psk:Monochrome", OptionOf(monochrome.Get(), L"psk:PageOutputColor"));
    EXPECT_EQ(L"ns0000:_0", OptionOf(monochrome.Get(), L"ns0000:JobZXRlt"));
    EXPECT_EQ(L"ns0000:_1", OptionOf(monochrome.Get(), L"psk:JobInputBin"));

    auto colour = convert(&full);
    EXPECT_EQ(L"psk:Color", OptionOf(colour.Get(), L"psk:PageOutputColor"));
    EXPECT_EQ(L"ns0000:_7", OptionOf(colour.Get(), L"psk:JobInputBin"));
    auto unknown = convert(nullptr);
    EXPECT_EQ(L"ns0000:_7", OptionOf(unknown.Get(), L"psk:JobInputBin"));
}

// The host says how large the DEVMODE is; a header that claims more is not passed on to the core
// driver, which would read that far.
TEST(ProviderInput, DevModeHeadersClaimingMoreThanTheHostPassedAreNotBelieved) {
    FakeCoreHelper helper;
    helper.SetOption("DocumentBinding", "None");
    helper.SetOption("JobNUpAllDocumentsContiguously", "1");
    helper.SetOption("DocumentNUp", "1");
    helper.SetOption("DrawBorders", "Off");
    auto provider = CreateTicketProvider();
    ASSERT_EQ(S_OK, provider->PublishPrintTicketHelper(static_cast<IPrintOemDriverUI*>(&helper)));
    std::vector<BYTE> bytes(sizeof(DEVMODEW) + 64);
    auto* devMode = reinterpret_cast<DEVMODEW*>(bytes.data());
    devMode->dmSize = sizeof(DEVMODEW);
    devMode->dmDriverExtra = 4000;
    VPrivateDevMode block{};
    auto ticket = LoadDocument(Ticket(Feature(L"ns0000:JobZXPrintOnBothSidesManually", L"ns0000:OFF")));
    const ULONG size = static_cast<ULONG>(bytes.size());
    EXPECT_EQ(S_OK, provider->ConvertDevModeToPrintTicket(size, devMode, sizeof(block), &block, ticket.Get()));
    EXPECT_LT(3u, helper.askedDevModeSizes.size());
    EXPECT_EQ(size, helper.largestDevModeSize);
}

// Out of memory anywhere in a conversion, the provider answers with an HRESULT, and the next
// conversion is as if nothing had happened: the same ticket, each converter attached once. The
// provider is made in this program, whose allocations the test can refuse.
TEST_F(ProviderTest, AConversionThatRunsOutOfMemoryLeavesTheNextOneAsBefore) {
    const auto newProvider = [this] {
        zx::ComPtr<VPrintTicketProvider> own;
        *own.GetAddressOf() = new VPrintTicketProvider();
        BindToPrinter(own.Get());
        own->PublishPrintTicketHelper(core.CoreHelper());
        return own;
    };
    auto reference = BaseTicket();
    ASSERT_EQ(S_OK, ToTicket(reference.Get(), newProvider().Get()));

    for (AllocationSweep sweep; sweep.NextRun();) {
        auto own = newProvider();
        auto ticket = BaseTicket();
        HRESULT hr = E_UNEXPECTED;
        {
            const auto refusal = sweep.Refuse();
            hr = ToTicket(ticket.Get(), own.Get());
        }
        EXPECT_TRUE(hr == S_OK || hr == E_OUTOFMEMORY || hr == E_FAIL) << sweep.Run() << " " << std::hex << hr;
        auto next = BaseTicket();
        EXPECT_EQ(S_OK, ToTicket(next.Get(), own.Get())) << sweep.Run();
        EXPECT_EQ(XmlOf(reference.Get()), XmlOf(next.Get())) << sweep.Run();
        EXPECT_EQ(4u, own->DeviceClient()->ObserverCount()) << sweep.Run();
    }
}
