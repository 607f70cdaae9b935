// Media type, quality, resolution, two-sided printing, the printing application and the settings
// that belong to the job's paper size: written into the PrintTicket from the DEVMODE, and the
// user's changes of media type and quality recorded when a PrintTicket comes back.
#pragma once

#include "printschema/feature_converter.h"
#include "settings/private_devmode.h"

#include <memory>

struct PaperSizeData {
    DWORD value = 2;  // not used: the converter works through its DEVMODE context
};

// The DEVMODE of the conversion under way; replaced at the start of every conversion and valid
// only during it.
struct DevModeContext {
    zx::ComPtr<IPrintCoreHelperUni> helper;
    PDEVMODEW devMode = nullptr;
    ULONG devModeSize = 0;
    VPrivateDevMode* privateBlock = nullptr;
    ULONG privateSize = 0;

    // ORs a user-change bit into the private block, when the block is large enough to hold it.
    void AddUserChange(DWORD flag) const noexcept;
    // The DEVMODE's current option of a feature; S_OK only with a keyword.
    HRESULT Option(PCSTR feature, PCSTR* option) const noexcept;
};

class CPaperSizeDMPTConv final : public CFeatureDMPTConvert<PaperSizeData> {
public:
    HRESULT CompletePrintCapabilities(IXMLDOMDocument2* ticket, VConversionDocument& capabilities) override;

protected:
    HRESULT ReadDevMode(PDEVMODEW devMode, ULONG devModeSize, PVOID privateBlock, ULONG privateSize,
                        PaperSizeData& settings) override;
    HRESULT ReadPrintTicket(VConversionDocument& ticket, PaperSizeData& settings) override;
    HRESULT WriteDevMode(const PaperSizeData& settings, PDEVMODEW devMode, ULONG devModeSize, PVOID privateBlock,
                         ULONG privateSize) override;
    HRESULT WritePrintTicket(const PaperSizeData& settings, VConversionDocument& ticket) override;

private:
    std::unique_ptr<DevModeContext> m_context;
};
