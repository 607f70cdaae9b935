// The plug-in's PrintTicket provider: the core driver binds it to a printer and has it convert
// DEVMODEs to PrintTickets and back.
#pragma once

#include "core/unknown.h"
#include "ddk/prcomoem.h"

class VPrintTicketProvider : public CUnknown<IPrintOemPrintTicketProvider> {
public:
    VPrintTicketProvider() noexcept : CUnknown(IID_IPrintOemPrintTicketProvider) {}

    STDMETHODIMP GetSupportedVersions(HANDLE hPrinter, INT* ppVersions[], INT* cVersions) override;
    STDMETHODIMP BindPrinter(HANDLE hPrinter, INT version, POEMPTOPTS pOptions, INT* cNamespaces,
                             BSTR** ppNamespaces) override;
    STDMETHODIMP PublishPrintTicketHelper(IUnknown* pHelper) override;
    STDMETHODIMP QueryDeviceDefaultNamespace(BSTR* pbstrNamespaceUri) override;
    STDMETHODIMP ConvertPrintTicketToDevMode(IXMLDOMDocument2* pPrintTicket, ULONG cbDevmode, PDEVMODEW pDevmode,
                                             ULONG cbDrvPrivateSize, PVOID pPrivateDevmode) override;
    STDMETHODIMP ConvertDevModeToPrintTicket(ULONG cbDevmode, PDEVMODEW pDevmode, ULONG cbDrvPrivateSize,
                                             PVOID pPrivateDevmode, IXMLDOMDocument2* pPrintTicket) override;
    STDMETHODIMP CompletePrintCapabilities(IXMLDOMDocument2* pPrintTicket, IXMLDOMDocument2* pCapabilities) override;
    STDMETHODIMP ExpandIntentOptions(IXMLDOMDocument2* pPrintTicket) override;
    STDMETHODIMP ValidatePrintTicket(IXMLDOMDocument2* pBaseTicket) override;
};
