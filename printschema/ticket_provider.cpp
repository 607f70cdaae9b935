#include "printschema/ticket_provider.h"

#include "device/udm_client.h"
#include "printschema/bidi_converter.h"
#include "printschema/booklet_converter.h"
#include "printschema/nup_converter.h"
#include "printschema/paper_size_converter.h"
#include "printschema/print_schema_names.h"
#include "util/result.h"

#include <objbase.h>

namespace {
constexpr INT kPrintSchemaVersion = 1;
}

VPrintTicketProvider::VPrintTicketProvider()
    : CUnknown(IID_IPrintOemPrintTicketProvider), m_deviceNamespace(zx::MakeBstr(PrintSchema::Uri::Device)) {
    m_converters.push_back(std::make_unique<VBookletDMPrintticketConv>());
    m_converters.push_back(std::make_unique<CNUpDMPTConv>());
    m_converters.push_back(std::make_unique<CPaperSizeDMPTConv>());
    m_converters.push_back(std::make_unique<CBidiDMPTConv>());
}

VPrintTicketProvider::~VPrintTicketProvider() {
    if (m_deviceClient) m_deviceClient->DetachAll();
    while (!m_converters.empty()) m_converters.pop_back();  // last to first
    m_deviceClient.reset();
}

template <typename Operation>
HRESULT VPrintTicketProvider::ForEachConverter(HRESULT result, Operation operation) {
    for (const auto& converter : m_converters) {
        if (FAILED(result)) break;
        result = zx::GuardConverter([&] { return operation(*converter); });
    }
    return result;
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

STDMETHODIMP VPrintTicketProvider::BindPrinter(HANDLE hPrinter, INT version, POEMPTOPTS pOptions, INT* cNamespaces,
                                               BSTR** ppNamespaces) {
    if (pOptions == nullptr || cNamespaces == nullptr || ppNamespaces == nullptr) return E_POINTER;
    if (hPrinter == nullptr) return E_HANDLE;
    *ppNamespaces = nullptr;
    *cNamespaces = 0;

    HRESULT hr = E_VERSION_NOT_SUPPORTED;
    if (version == kPrintSchemaVersion) {
        hr = zx::CatchAll([&] {
            m_printer = hPrinter;
            zx::unique_cotaskmem array(::CoTaskMemAlloc(sizeof(BSTR)));
            if (!array) return E_OUTOFMEMORY;
            static_cast<BSTR*>(array.get())[0] = zx::MakeBstr(m_deviceNamespace.get()).release();
            *pOptions = OEMPT_NOSNAPSHOT;
            *ppNamespaces = static_cast<BSTR*>(array.release());
            *cNamespaces = 1;
            return S_OK;
        });
    }

    // The client lives as long as the provider, whatever the version asked for.
    if (!m_deviceClient) {
        zx::CatchAll([&] {
            m_deviceClient = std::make_shared<VUDMClient>(nullptr, hPrinter, m_helper.Get());
            m_deviceClient->Connect();
            return S_OK;
        });
    }
    return hr;
}

STDMETHODIMP VPrintTicketProvider::PublishPrintTicketHelper(IUnknown* pHelper) {
    if (pHelper == nullptr) return E_POINTER;
    if (!m_helper) {
        const HRESULT hr =
            pHelper->QueryInterface(IID_IPrintCoreHelperUni, reinterpret_cast<void**>(m_helper.GetAddressOf()));
        if (hr == E_NOINTERFACE) return S_OK;  // the converters work without a helper
        if (FAILED(hr)) return hr;
    }
    IPrintCoreHelperUni* helper = m_helper.Get();
    return ForEachConverter(
        S_OK, [helper](IFeatureDMPTConvert& converter) { return converter.PublishPrintTicketHelper(helper); });
}

STDMETHODIMP VPrintTicketProvider::QueryDeviceDefaultNamespace(BSTR* pbstrNamespaceUri) {
    if (pbstrNamespaceUri == nullptr) return E_POINTER;
    *pbstrNamespaceUri = ::SysAllocString(m_deviceNamespace.get());
    return *pbstrNamespaceUri ? S_OK : E_OUTOFMEMORY;
}

STDMETHODIMP VPrintTicketProvider::ConvertPrintTicketToDevMode(IXMLDOMDocument2* pPrintTicket, ULONG cbDevmode,
                                                               PDEVMODEW pDevmode, ULONG cbDrvPrivateSize,
                                                               PVOID pPrivateDevmode) {
    const HRESULT checks =
        zx::CheckConversionArguments(pDevmode, pPrivateDevmode, pPrintTicket, cbDevmode, cbDrvPrivateSize);
    VConversionDocument ticket(pPrintTicket);
    return ForEachConverter(checks, [&](IFeatureDMPTConvert& converter) {
        return converter.ConvertPrintTicketToDevMode(ticket, cbDevmode, pDevmode, cbDrvPrivateSize, pPrivateDevmode);
    });
}

// The converters observe the client from the first conversion on: all of them, or none when
// memory runs out, so that a later conversion attaches each once. Each conversion notifies them
// once, so that the device-data converter writes what the printer now reports. A notification
// that fails leaves the converters with the record they had, and the conversion goes on.
void VPrintTicketProvider::NotifyConverters() noexcept {
    if (!m_deviceClient) return;  // not bound to a printer
    try {
        if (!m_convertersObserveClient) {
            std::vector<IObserver*> observers;
            for (const auto& converter : m_converters) observers.push_back(converter.get());
            m_deviceClient->AttachAll(observers);
            m_convertersObserveClient = true;
        }
        m_deviceClient->Notify();
    } catch (...) {
    }
}

STDMETHODIMP VPrintTicketProvider::ConvertDevModeToPrintTicket(ULONG cbDevmode, PDEVMODEW pDevmode,
                                                               ULONG cbDrvPrivateSize, PVOID pPrivateDevmode,
                                                               IXMLDOMDocument2* pPrintTicket) {
    const HRESULT checks =
        zx::CheckConversionArguments(pDevmode, pPrivateDevmode, pPrintTicket, cbDevmode, cbDrvPrivateSize);
    if (FAILED(checks)) return checks;
    NotifyConverters();
    VConversionDocument ticket(pPrintTicket);
    return ForEachConverter(S_OK, [&](IFeatureDMPTConvert& converter) {
        return converter.ConvertDevModeToPrintTicket(cbDevmode, pDevmode, cbDrvPrivateSize, pPrivateDevmode, ticket);
    });
}

STDMETHODIMP VPrintTicketProvider::CompletePrintCapabilities(IXMLDOMDocument2* pPrintTicket,
                                                             IXMLDOMDocument2* pCapabilities) {
    if (pCapabilities == nullptr) return E_POINTER;
    VConversionDocument capabilities(pCapabilities);
    return ForEachConverter(S_OK, [&](IFeatureDMPTConvert& converter) {
        return converter.CompletePrintCapabilities(pPrintTicket, capabilities);
    });
}

STDMETHODIMP VPrintTicketProvider::ExpandIntentOptions(IXMLDOMDocument2*) { return S_OK; }

// Only a failure or a resolved conflict changes the verdict of a valid ticket.
STDMETHODIMP VPrintTicketProvider::ValidatePrintTicket(IXMLDOMDocument2* pBaseTicket) {
    if (pBaseTicket == nullptr) return E_POINTER;
    HRESULT verdict = S_PT_NO_CONFLICT;
    for (const auto& converter : m_converters) {
        if (FAILED(verdict)) break;
        const HRESULT hr = zx::GuardConverter([&] { return converter->ValidatePrintTicket(pBaseTicket); });
        if (FAILED(hr) || hr == S_PT_CONFLICT_RESOLVED) verdict = hr;
    }
    return verdict;
}
