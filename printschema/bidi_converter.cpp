#include "printschema/bidi_converter.h"

#include "printschema/print_schema_names.h"
#include "printschema/ticket_writer.h"
#include "util/result.h"

namespace {

using PrintSchema::Prefix::Framework;
using PrintSchema::Prefix::Private;

// A device that prints black only gets a monochrome job, and reduced-colour output off.
void WriteMonochrome(VTicketWriter& ticket) {
    if (FAILED(ticket.FindFeature(L"PageOutputColor"))) return;
    VStringBuffer monochrome(ticket.KeywordsPrefix());
    monochrome.Append(L"Monochrome");
    ticket.SetSelectedOption(L"PageOutputColor", monochrome.c_str());
    ticket.ReplacePrivateFeature(L"JobZXRlt", L"_0");  // when the ticket has it
}

// A device with neither a second tray nor a photo tray feeds from its first tray.
HRESULT WriteInputBin(VTicketWriter& ticket, const IBiDiData& device) {
    zx::unique_bstr selected;
    ZX_RETURN_IF_FAILED(ticket.GetSelectedOption(L"JobInputBin", selected.put()));
    if (device.GetTrayState2() != 0 || device.GetPhotoTray() != 0) return S_OK;
    return ticket.ReplaceStandardFeature(L"JobInputBin", L"_1", Private);
}

}  // namespace

HRESULT CBidiDMPTConv::ReadDevMode(PDEVMODEW devMode, ULONG devModeSize, PVOID privateBlock, ULONG privateSize,
                                   BidiSettings&) {
    return zx::CheckDevModeArguments(devMode, privateBlock, devModeSize, privateSize);
}

HRESULT CBidiDMPTConv::ReadPrintTicket(VConversionDocument&, BidiSettings&) { return S_OK; }

HRESULT CBidiDMPTConv::WriteDevMode(const BidiSettings&, PDEVMODEW devMode, ULONG devModeSize, PVOID privateBlock,
                                    ULONG privateSize) {
    return zx::CheckDevModeArguments(devMode, privateBlock, devModeSize, privateSize);
}

HRESULT CBidiDMPTConv::WritePrintTicket(const BidiSettings&, VConversionDocument& ticket) {
    if (ticket.Get() == nullptr) return E_POINTER;
    const IBiDiData* device = DeviceData();
    if (device == nullptr) return S_OK;
    VTicketWriter& writer = ticket.Ticket();
    if (device->GetColorPrinting() == 0) WriteMonochrome(writer);
    return WriteInputBin(writer, *device);
}

HRESULT CBidiDMPTConv::CompletePrintCapabilities(IXMLDOMDocument2*, VConversionDocument& capabilities) {
    return zx::CheckCapabilitiesDocument(capabilities);
}
