// Booklet binding between the DEVMODE's DocumentBinding option and the PrintTicket's
// psk:DocumentBinding.
#pragma once

#include "printschema/feature_converter.h"

struct BookletSettings {
    DWORD featureIndex = 0;    // the only booklet feature
    DWORD bindingOption = 14;  // index into the binding names; 14 is None
    DWORD gutter = 0;          // read from the ticket, not used further
};

class VBookletDMPrintticketConv final : public CFeatureDMPTConvert<BookletSettings> {
public:
    HRESULT CompletePrintCapabilities(IXMLDOMDocument2* ticket, VConversionDocument& capabilities) override;

protected:
    HRESULT ReadDevMode(PDEVMODEW devMode, ULONG devModeSize, PVOID privateBlock, ULONG privateSize,
                        BookletSettings& settings) override;
    HRESULT ReadPrintTicket(VConversionDocument& ticket, BookletSettings& settings) override;
    HRESULT WriteDevMode(const BookletSettings& settings, PDEVMODEW devMode, ULONG devModeSize, PVOID privateBlock,
                         ULONG privateSize) override;
    HRESULT WritePrintTicket(const BookletSettings& settings, VConversionDocument& ticket) override;
};
