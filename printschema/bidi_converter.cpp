#include "printschema/bidi_converter.h"

#include "printschema/print_schema_names.h"
#include "printschema/ticket_writer.h"
#include "util/result.h"

namespace {

using PrintSchema::Prefix::Framework;
using PrintSchema::Prefix::Private;

class VBidiPrintTicketHandler final : public VTicketWriter {
public:
    using VTicketWriter::VTicketWriter;

    // A device that prints black only gets a monochrome job, and reduced-colour output off.
    void WriteMonochrome() {
        if (FAILED(FindFeature(L"PageOutputColor"))) return;
        VStringBuffer monochrome(KeywordsPrefix());
        monochrome.Append(L"Monochrome");
        SetSelectedOption(L"PageOutputColor", monochrome.c_str());
        ReplacePrivateFeature(L"JobZXRlt", L"_0");  // when the ticket has it
    }

    // A device with neither a second tray nor a photo tray feeds from its first tray.
    HRESULT WriteInputBin(const IBiDiData& device) {
        zx::unique_bstr selected;
        ZX_RETURN_IF_FAILED(GetSelectedOption(L"JobInputBin", selected.put()));
        if (device.GetTrayState2() != 0 || device.GetPhotoTray() != 0) return S_OK;
        return ReplaceStandardFeature(L"JobInputBin", L"_1", Private);
    }
};

}  // namespace

HRESULT CBidiDMPTConv::ReadDevMode(PDEVMODEW devMode, ULONG devModeSize, PVOID privateBlock, ULONG privateSize,
                                   BidiSettings&) {
    return zx::CheckDevModeArguments(devMode, privateBlock, devModeSize, privateSize);
}

HRESULT CBidiDMPTConv::ReadPrintTicket(IXMLDOMDocument2*, BidiSettings&) { return S_OK; }

HRESULT CBidiDMPTConv::WriteDevMode(const BidiSettings&, PDEVMODEW devMode, ULONG devModeSize, PVOID privateBlock,
                                    ULONG privateSize) {
    return zx::CheckDevModeArguments(devMode, privateBlock, devModeSize, privateSize);
}

HRESULT CBidiDMPTConv::WritePrintTicket(const BidiSettings&, IXMLDOMDocument2* ticket) {
    if (ticket == nullptr) return E_POINTER;
    const IBiDiData* device = DeviceData();
    if (device == nullptr) return S_OK;
    VBidiPrintTicketHandler handler(ticket);
    if (device->GetColorPrinting() == 0) handler.WriteMonochrome();
    return handler.WriteInputBin(*device);
}

HRESULT CBidiDMPTConv::CompletePrintCapabilities(IXMLDOMDocument2*, IXMLDOMDocument2* capabilities) {
    return zx::CheckCapabilitiesDocument(capabilities);
}
