// The converters between which the PrintTicket provider divides its work. Each owns one area of
// settings and moves it between the DEVMODE (the core driver's feature options and the plug-in's
// private block) and the PrintTicket, always in the same order of steps.
#pragma once

#include "ddk/prcomoem.h"
#include "device/notifier.h"
#include "printschema/conversion_document.h"
#include "util/result.h"
#include "util/scoped.h"

// The documents come wrapped for the call: every converter of one call works through the same
// handler.
class IFeatureDMPTConvert : public IObserver {
public:
    virtual ~IFeatureDMPTConvert() = default;
    virtual HRESULT ConvertPrintTicketToDevMode(VConversionDocument& ticket, ULONG devModeSize, PDEVMODEW devMode,
                                                ULONG privateSize, PVOID privateBlock) = 0;
    virtual HRESULT ConvertDevModeToPrintTicket(ULONG devModeSize, PDEVMODEW devMode, ULONG privateSize,
                                                PVOID privateBlock, VConversionDocument& ticket) = 0;
    // The PrintTicket may be null.
    virtual HRESULT CompletePrintCapabilities(IXMLDOMDocument2* ticket, VConversionDocument& capabilities) = 0;
    virtual HRESULT PublishPrintTicketHelper(IPrintCoreHelperUni* helper) = 0;
    virtual HRESULT ValidatePrintTicket(IXMLDOMDocument2* ticket) = 0;
};

namespace zx {

// The HRESULT of whatever a converter step throws: the program's own exceptions carry theirs;
// any other exception, an allocation failure included, is E_FAIL.
HRESULT ConverterExceptionToHResult() noexcept;

template <typename Body>
HRESULT GuardConverter(Body&& body) noexcept {
    try {
        return body();
    } catch (...) {
        return ConverterExceptionToHResult();
    }
}

// The checks that every conversion starts with, in this order: E_POINTER for a null DEVMODE,
// private block or ticket, E_INVALIDARG for a DEVMODE smaller than the public part or an empty
// private block. The DEVMODE steps check the same without the ticket.
HRESULT CheckConversionArguments(const void* devMode, const void* privateBlock, const void* ticket, ULONG devModeSize,
                                 ULONG privateSize) noexcept;
HRESULT CheckDevModeArguments(const void* devMode, const void* privateBlock, ULONG devModeSize,
                              ULONG privateSize) noexcept;

// The capabilities step of the converters that add nothing to PrintCapabilities: makes sure the
// document has its PrintCapabilities handler, which binds the document's query settings and
// checks that its root declares the framework namespace.
HRESULT CheckCapabilitiesDocument(VConversionDocument& capabilities);

}  // namespace zx

// The fixed order of steps, for one settings record type: a conversion from PrintTicket to
// DEVMODE reads the DEVMODE, overlays what the ticket says and writes the DEVMODE; a conversion
// from DEVMODE to PrintTicket reads the DEVMODE and writes the ticket.
template <typename Settings>
class CFeatureDMPTConvert : public IFeatureDMPTConvert {
public:
    // Keeps the accessory record of the notifying device-model client.
    void Update(ISubject* subject) override { m_deviceData = subject ? subject->GetData() : nullptr; }

    HRESULT ConvertPrintTicketToDevMode(VConversionDocument& ticket, ULONG devModeSize, PDEVMODEW devMode,
                                        ULONG privateSize, PVOID privateBlock) override {
        ZX_RETURN_IF_FAILED(
            zx::CheckConversionArguments(devMode, privateBlock, ticket.Get(), devModeSize, privateSize));
        return zx::GuardConverter([&] {
            Settings settings{};
            ZX_RETURN_IF_FAILED(ReadDevMode(devMode, devModeSize, privateBlock, privateSize, settings));
            ZX_RETURN_IF_FAILED(ReadPrintTicket(ticket, settings));
            return WriteDevMode(settings, devMode, devModeSize, privateBlock, privateSize);
        });
    }

    HRESULT ConvertDevModeToPrintTicket(ULONG devModeSize, PDEVMODEW devMode, ULONG privateSize, PVOID privateBlock,
                                        VConversionDocument& ticket) override {
        ZX_RETURN_IF_FAILED(
            zx::CheckConversionArguments(devMode, privateBlock, ticket.Get(), devModeSize, privateSize));
        return zx::GuardConverter([&] {
            Settings settings{};
            ZX_RETURN_IF_FAILED(ReadDevMode(devMode, devModeSize, privateBlock, privateSize, settings));
            return WritePrintTicket(settings, ticket);
        });
    }

    // Takes the first helper offered; a later one is ignored.
    HRESULT PublishPrintTicketHelper(IPrintCoreHelperUni* helper) override {
        if (helper == nullptr) return E_POINTER;
        if (!m_helper) m_helper = helper;
        return S_OK;
    }

    HRESULT ValidatePrintTicket(IXMLDOMDocument2* ticket) override {
        return ticket == nullptr ? E_POINTER : S_PT_NO_CONFLICT;
    }

protected:
    virtual HRESULT ReadDevMode(PDEVMODEW devMode, ULONG devModeSize, PVOID privateBlock, ULONG privateSize,
                                Settings& settings) = 0;
    virtual HRESULT ReadPrintTicket(VConversionDocument& ticket, Settings& settings) = 0;
    virtual HRESULT WriteDevMode(const Settings& settings, PDEVMODEW devMode, ULONG devModeSize, PVOID privateBlock,
                                 ULONG privateSize) = 0;
    virtual HRESULT WritePrintTicket(const Settings& settings, VConversionDocument& ticket) = 0;

    IPrintCoreHelperUni* Helper() const noexcept { return m_helper.Get(); }
    // Valid while the device-model client that handed it out lives; null before a notification.
    IBiDiData* DeviceData() const noexcept { return m_deviceData; }

private:
    zx::ComPtr<IPrintCoreHelperUni> m_helper;
    IBiDiData* m_deviceData = nullptr;
};
