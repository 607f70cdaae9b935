// The plug-in's PrintTicket provider. The core driver binds it to a printer, hands it its helper
// and then asks it whenever a DEVMODE becomes a PrintTicket or back, a PrintCapabilities document
// is completed or a PrintTicket validated. The provider does no Print Schema work itself: it runs
// the same operation on each of its converters in a fixed order (booklet, N-up, paper size,
// device data), stopping at the first failure.
#pragma once

#include "util/unknown.h"
#include "ddk/prcomoem.h"
#include "printschema/feature_converter.h"
#include "util/scoped.h"

#include <memory>
#include <vector>

class VUDMClient;

class VPrintTicketProvider : public CUnknown<IPrintOemPrintTicketProvider> {
public:
    // Throws std::bad_alloc when a converter cannot be made.
    VPrintTicketProvider();
    ~VPrintTicketProvider() override;

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

    // The device-model client made by the first BindPrinter; null before.
    const VUDMClient* DeviceClient() const noexcept { return m_deviceClient.get(); }

private:
    // Runs an operation on each converter in order while the running result is a success.
    template <typename Operation>
    HRESULT ForEachConverter(HRESULT result, Operation operation);
    // Hands the device-model client's accessory record to the converters before a conversion.
    void NotifyConverters() noexcept;

    HANDLE m_printer = nullptr;  // not owned
    zx::ComPtr<IPrintCoreHelperUni> m_helper;
    std::vector<std::unique_ptr<IFeatureDMPTConvert>> m_converters;
    zx::unique_bstr m_deviceNamespace;
    std::shared_ptr<VUDMClient> m_deviceClient;
    bool m_convertersObserveClient = false;
};
