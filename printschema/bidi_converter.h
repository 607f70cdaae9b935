// What the printer reports over bidirectional communication, written into the PrintTicket: a
// device that prints black only, and a device without a second tray or photo tray.
#pragma once

#include "printschema/feature_converter.h"

struct BidiSettings {
    ULONGLONG unused = 0;
};

class CBidiDMPTConv final : public CFeatureDMPTConvert<BidiSettings> {
public:
    HRESULT CompletePrintCapabilities(IXMLDOMDocument2* ticket, VConversionDocument& capabilities) override;

protected:
    HRESULT ReadDevMode(PDEVMODEW devMode, ULONG devModeSize, PVOID privateBlock, ULONG privateSize,
                        BidiSettings& settings) override;
    HRESULT ReadPrintTicket(VConversionDocument& ticket, BidiSettings& settings) override;
    HRESULT WriteDevMode(const BidiSettings& settings, PDEVMODEW devMode, ULONG devModeSize, PVOID privateBlock,
                         ULONG privateSize) override;
    HRESULT WritePrintTicket(const BidiSettings& settings, VConversionDocument& ticket) override;
};
