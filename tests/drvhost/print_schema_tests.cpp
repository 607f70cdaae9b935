// The core driver's base PrintTicket and PrintCapabilities, the selections it reads back from a
// ticket, and the simulated printer installed in the real spooler with the real plug-in.
#include "drvhost/driver_host.h"
#include "drvhost/print_schema.h"
#include "drvhost/printer_install.h"
#include "drvhost/ticket_host.h"
#include "drvhost/xml_document.h"
#include "printschema/print_schema_names.h"
#include "tests/printschema/dom_support.h"

#include <gtest/gtest.h>

using namespace drvhost;

namespace {

constexpr const wchar_t* kDevice = PrintSchema::Uri::Device;

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

// The text the query selects in a ticket or capabilities document, or "<none>".
std::wstring Select(IXMLDOMDocument2* document, const wchar_t* query) {
    return zxtest::TextAt(zxtest::Reparsed(document).Get(), query);
}

class PrintSchemaTest : public testing::Test {
protected:
    PrinterDescription printer = Printer();
    std::vector<DWORD> selections = {1, 1, 1, 1, 1, 0};
    SelectionSource selectionOf = [this](size_t feature) { return selections[feature]; };
};

}  // namespace

TEST_F(PrintSchemaTest, NamesByKeywordOrInTheDeviceNamespaceAndCapabilitiesListEveryOption) {
    EXPECT_EQ("psk:PageMediaSize", SchemaFeatureName(printer.features[0]));
    EXPECT_EQ("psk:ISOA4", SchemaOptionName(printer.features[0].options[0]));
    EXPECT_EQ("ns0000:ZX_4X6_IN", SchemaOptionName(printer.features[0].options[1]));
    EXPECT_EQ("ns0000:_7", SchemaOptionName(printer.features[3].options[0]));
    EXPECT_EQ("ns0000:JobTouchByUser", SchemaFeatureName(printer.features[4]));
    EXPECT_EQ("ns0000:DocumentPageRanges", SchemaFeatureName(printer.features[5]));

    auto capabilities = ParseXml(BuildPrintCapabilities(printer, kDevice));
    EXPECT_EQ(L"psk:PickOne", Select(capabilities.Get(),
                                     L"//psf:Feature[@name='psk:PageMediaSize']/"
                                     L"psf:Property[@name='psf:SelectionType']/psf:Value"));
    EXPECT_EQ(L"ns0000:ZX_4X6_IN",
              Select(capabilities.Get(), L"//psf:Feature[@name='psk:PageMediaSize']/psf:Option[2]/@name"));
}

TEST_F(PrintSchemaTest, BaseTicketCarriesTheSelectionsWithNUpStructureAndReadsBack) {
    auto ticket = ParseXml(BuildPrintTicket(printer, selectionOf, kDevice));
    EXPECT_EQ(L"ns0000:ZX_4X6_IN", Select(ticket.Get(), L"//psf:Feature[@name='psk:PageMediaSize']/psf:Option/@name"));
    EXPECT_EQ(L"4", Select(ticket.Get(),
                           L"//psf:Feature[@name='psk:DocumentNUp']/psf:Option/"
                           L"psf:ScoredProperty[@name='psk:PagesPerSheet']/psf:Value"));
    // The direction is nested in the N-up feature, not beside it.
    EXPECT_EQ(L"psk:TopLeft", Select(ticket.Get(),
                                     L"/psf:PrintTicket/psf:Feature[@name='psk:DocumentNUp']/"
                                     L"psf:Feature[@name='psk:PresentationDirection']/psf:Option/@name"));
    EXPECT_EQ(L"<none>", Select(ticket.Get(), L"/psf:PrintTicket/psf:Feature[@name='psk:PresentationDirection']"));
    EXPECT_EQ(L"ns0000:On", Select(ticket.Get(), L"//psf:Feature[@name='ns0000:JobTouchByUser']/psf:Option/@name"));

    // Read back whatever prefixes the ticket uses.
    std::vector<std::pair<size_t, size_t>> expected = {{0, 1}, {1, 1}, {2, 1}, {3, 1}, {4, 1}, {5, 0}};
    EXPECT_EQ(expected, ReadTicketSelections(ticket.Get(), printer, kDevice));

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

TEST(SimulatedPrinter, InstallsIdempotentlyAndLoadsThePluginFromItsDriverDirectory) {
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
    EXPECT_EQ(0x5844534Du, host.Identity().signature);
    EXPECT_EQ(64u, host.Identity().privateBlockSize);
    EXPECT_EQ(S_OK, host.Identity().publishCoreHelper);

    TicketHost tickets(host);
    HRESULT result = S_OK;
    auto ticket = tickets.TicketFor(*host.NewDefaultJob(), result);
    EXPECT_EQ(L"psk:NorthAmericaLetter",
              Select(ticket.Get(), L"//psf:Feature[@name='psk:PageMediaSize']/psf:Option/@name"));
}
