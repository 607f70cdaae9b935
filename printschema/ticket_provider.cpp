#include "printschema/ticket_provider.h"

#include <objbase.h>

namespace {
constexpr INT kPrintSchemaVersion = 1;
}

STDMETHODIMP VPrintTicketProvider::GetSupportedVersions(HANDLE, INT* ppVersions[], INT* cVersions) {
    if (ppVersions == nullptr || cVersions == nullptr) return E_POINTER;
    *cVersions = 0;
    auto* versions = static_cast<INT*>(::CoTaskMemAlloc(sizeof(INT)));
    if (versions == nullptr) return E_OUTOFMEMORY;
    versions[0] = kPrintSchemaVersion;
    *ppVersions = versions;
    *cVersions = 1;
    return S_OK;
}

STDMETHODIMP VPrintTicketProvider::BindPrinter(HANDLE, INT, POEMPTOPTS, INT*, BSTR**) { return E_NOTIMPL; }
STDMETHODIMP VPrintTicketProvider::PublishPrintTicketHelper(IUnknown*) { return E_NOTIMPL; }
STDMETHODIMP VPrintTicketProvider::QueryDeviceDefaultNamespace(BSTR*) { return E_NOTIMPL; }
STDMETHODIMP VPrintTicketProvider::ConvertPrintTicketToDevMode(IXMLDOMDocument2*, ULONG, PDEVMODEW, ULONG, PVOID) {
    return E_NOTIMPL;
}
STDMETHODIMP VPrintTicketProvider::ConvertDevModeToPrintTicket(ULONG, PDEVMODEW, ULONG, PVOID, IXMLDOMDocument2*) {
    return E_NOTIMPL;
}
STDMETHODIMP VPrintTicketProvider::CompletePrintCapabilities(IXMLDOMDocument2*, IXMLDOMDocument2*) {
    return E_NOTIMPL;
}
STDMETHODIMP VPrintTicketProvider::ExpandIntentOptions(IXMLDOMDocument2*) { return E_NOTIMPL; }
STDMETHODIMP VPrintTicketProvider::ValidatePrintTicket(IXMLDOMDocument2*) { return E_NOTIMPL; }
