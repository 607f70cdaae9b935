// Pages per sheet, their order and page borders, between the DEVMODE's N-up options and the
// PrintTicket's N-up features; the DEVMODE side is only read: the core driver keeps it.
#pragma once

#include "printschema/feature_converter.h"

struct NUpEntry {
    DWORD featureIndex = 0;  // 0 the job-wide N-up feature, 1 the document N-up feature
    DWORD pagesPerSheet = 1;
    DWORD direction = 0;  // RightBottom ... TopLeft
    DWORD borders = 0;    // 0 Off, 1 On
};

struct NUpSettings {
    NUpEntry entries[2];
};

class CNUpDMPTConv final : public CFeatureDMPTConvert<NUpSettings> {
public:
    HRESULT CompletePrintCapabilities(IXMLDOMDocument2* ticket, VConversionDocument& capabilities) override;

protected:
    HRESULT ReadDevMode(PDEVMODEW devMode, ULONG devModeSize, PVOID privateBlock, ULONG privateSize,
                        NUpSettings& settings) override;
    HRESULT ReadPrintTicket(VConversionDocument& ticket, NUpSettings& settings) override;
    HRESULT WriteDevMode(const NUpSettings& settings, PDEVMODEW devMode, ULONG devModeSize, PVOID privateBlock,
                         ULONG privateSize) override;
    HRESULT WritePrintTicket(const NUpSettings& settings, VConversionDocument& ticket) override;
};
