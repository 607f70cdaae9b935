// The core driver's base PrintTicket and PrintCapabilities, the selections it reads back from a
// ticket, and the simulated printer installed in the real spooler with the real plug-in.
#include "drvhost/driver_host.h"
#include "drvhost/print_schema.h"
#include "drvhost/printer_install.h"
#include "drvhost/ticket_host.h"
#include "drvhost/xml_document.h"
#include "util/scoped.h"

#include <gtest/gtest.h>

using namespace drvhost;

namespace {

constexpr wchar_t kDevice[] = L"http://example.com/device";

PrinterDescription Printer() {
    return ParsePrinterDescription(R"(
*Feature: PaperSize { *PrintSchemaKeywordMap: "PageMediaSize"
    *Option: A4 { *PrintSchemaKeywordMap: "ISOA4" } *Option: ZX_4X6_IN { } }
*Feature: DocumentNUp { *PrintSchemaKeywordMap: "DocumentNUp" *Option: 1 { } *Option: 4 { } }
*Feature: PresentationDirection { *PrintSchemaKeywordMap: "PresentationDirection"
    *Option: RightBottom { *PrintSchemaKeywordMap: "RightBottom" } *Option: TopLeft { *PrintSchemaKeywordMap: "TopLeft" } }
*Feature: InputBin { *PrintSchemaKeywordMap: "JobInputBin" *Option: 7 { } *Option: 1 { } }
*Feature: TouchByUser { *Option: Off { } *Option: On { } }
*Feature: DocumentPageRanges { *PrintSchemaKeywordMap: "ns0000:DocumentPageRanges" *Option: AllPages { } }
)",
                                   "printer.gpd");
}

void SetProperty(IXMLDOMDocument2* document, const wchar_t* name, const std::wstring& value) {
    zx::unique_variant text;
    text.get()->vt = VT_BSTR;
    text.get()->bstrVal = zx::MakeBstr(value.c_str()).release();
    document->setProperty(zx::MakeBstr(name).get(), *text);
}

std::wstring Select(IXMLDOMDocument2* document, const wchar_t* query) {
    SetProperty(document, L"SelectionLanguage", L"XPath");
    SetProperty(document, L"SelectionNamespaces",
                std::wstring(L"xmlns:psf='") + kFrameworkUri + L"' xmlns:psk='" + kKeywordsUri + L"' xmlns:ns0000='" +
                    kDevice + L"'");
    ComPtr<IXMLDOMNode> node;
    if (document->selectSingleNode(zx::MakeBstr(query).get(), &node) != S_OK) return L"(none)";
    zx::unique_bstr text;
    node->get_text(text.put());
    return text.get();
}

// The name of a feature's option, of the first one where the feature lists several.
std::wstring OptionName(IXMLDOMDocument2* document, const std::wstring& feature) {
    return Select(document, (L"//psf:Feature[@name='" + feature + L"']/psf:Option/@name").c_str());
}

class PrintSchemaTest : public testing::Test {
protected:
    ComApartment com;
    PrinterDescription printer = Printer();
    std::vector<DWORD> selections = {1, 1, 1, 1, 1, 0};
    SelectionSource selectionOf = [this](size_t feature) { return selections[feature]; };
};

}  // namespace

// Mapped names are keywords, other names are in the device namespace; an explicit prefix stays.
TEST_F(PrintSchemaTest, BaseTicketCarriesTheSelectionsByTheirSchemaNamesWithNUpStructure) {
    auto ticket = ParseXml(BuildPrintTicket(printer, selectionOf, kDevice));
    EXPECT_EQ(L"ns0000:ZX_4X6_IN", OptionName(ticket.Get(), L"psk:PageMediaSize"));
    EXPECT_EQ(L"ns0000:AllPages", OptionName(ticket.Get(), L"ns0000:DocumentPageRanges"));
    EXPECT_EQ(L"4", Select(ticket.Get(),
                           L"//psf:Feature[@name='psk:DocumentNUp']/psf:Option/"
                           L"psf:ScoredProperty[@name='psk:PagesPerSheet']/psf:Value"));
    // The direction is nested in the N-up feature, not beside it.
    EXPECT_EQ(L"psk:TopLeft", Select(ticket.Get(),
                                     L"/psf:PrintTicket/psf:Feature[@name='psk:DocumentNUp']/"
                                     L"psf:Feature[@name='psk:PresentationDirection']/psf:Option/@name"));
    EXPECT_EQ(L"(none)", Select(ticket.Get(), L"/psf:PrintTicket/psf:Feature[@name='psk:PresentationDirection']"));
    EXPECT_EQ(L"ns0000:On", OptionName(ticket.Get(), L"ns0000:JobTouchByUser"));
}

TEST_F(PrintSchemaTest, ReadsBackWhatItWroteWhateverPrefixesTheTicketUses) {
    auto ticket = ParseXml(BuildPrintTicket(printer, selectionOf, kDevice));
    auto pairs = ReadTicketSelections(ticket.Get(), printer, kDevice);
    std::vector<std::pair<size_t, size_t>> expected = {{0, 1}, {1, 1}, {2, 1}, {3, 1}, {4, 1}, {5, 0}};
    EXPECT_EQ(expected, pairs);

    auto renamed =
        ParseXml(std::wstring(L"<f:PrintTicket xmlns:f='") + kFrameworkUri + L"' xmlns:k='" + kKeywordsUri +
                 L"' xmlns:d='" + kDevice +
                 L"' xmlns:other='urn:x'>"
                 L"<!-- a comment --><f:Feature name='k:PageMediaSize'><f:Option name='k:ISOA4'/></f:Feature>"
                 L"<f:Feature name='k:JobInputBin'><f:Option name='d:_1'/></f:Feature>"
                 L"<f:Feature name='other:PageMediaSize'><f:Option name='k:ISOA4'/></f:Feature>"
                 L"<f:Feature name='k:DocumentNUp'><f:Option><f:ScoredProperty name='k:PagesPerSheet'>"
                 L"<f:Value>4</f:Value></f:ScoredProperty></f:Option></f:Feature>"
                 L"<f:Feature name='k:Unknown'><f:Option name='k:X'/></f:Feature></f:PrintTicket>");
    expected = {{0, 0}, {3, 1}, {1, 1}};
    EXPECT_EQ(expected, ReadTicketSelections(renamed.Get(), printer, kDevice));
}

TEST_F(PrintSchemaTest, CapabilitiesListEveryOptionWithItsDisplayName) {
    auto capabilities = ParseXml(BuildPrintCapabilities(printer, kDevice));
    EXPECT_EQ(L"psk:PickOne", Select(capabilities.Get(),
                                     L"//psf:Feature[@name='psk:PageMediaSize']/"
                                     L"psf:Property[@name='psf:SelectionType']/psf:Value"));
    EXPECT_EQ(L"ns0000:ZX_4X6_IN",
              Select(capabilities.Get(), L"//psf:Feature[@name='psk:PageMediaSize']/psf:Option[2]/@name"));
}

// The simulated printer in Wine's real spooler, with the plug-in built beside this test.
TEST(SimulatedPrinter, InstallsIdempotentlyAndLoadsThePluginFromItsDriverDirectory) {
    ComApartment com;
    PrinterSetup setup;
    setup.printerName = L"drvhost test printer";
    setup.sourceDirectory = ProgramDirectory();
    const InstalledPrinter first = InstallPrinter(setup);
    const InstalledPrinter second = InstallPrinter(setup);
    EXPECT_FALSE(second.created);
    ASSERT_FALSE(first.driverDirectory.empty());
    EXPECT_EQ(L'\\', first.driverDirectory.back());
    EXPECT_NE(INVALID_FILE_ATTRIBUTES, GetFileAttributesW((first.driverDirectory + kPluginFile).c_str()));

    DriverHost host(LoadPrinterDescription(first.driverDirectory + kDescriptionFile),
                    first.driverDirectory + kPluginFile, setup.printerName);
    EXPECT_NE(nullptr, host.Printer());
    EXPECT_EQ(0x5844534Du, host.Identity().signature);  // the plug-in's own answers are checked with it
    EXPECT_EQ(S_OK, host.Identity().publishCoreHelper);

    auto job = host.NewDefaultJob();
    TicketHost tickets(host);
    HRESULT result = S_OK;
    EXPECT_EQ(L"psk:NorthAmericaLetter", OptionName(tickets.TicketFor(*job, result).Get(), L"psk:PageMediaSize"));
}
