// The core driver's side of the PrintTicket provider: it binds the plug-in's provider to the
// printer, hands it the core helper, and brackets each conversion with its own Print Schema work
// in the order the real core driver follows.
#pragma once

#include "drvhost/driver_host.h"
#include "drvhost/xml_document.h"

#include <string>
#include <utility>
#include <vector>

namespace drvhost {

class TicketHost {
public:
    explicit TicketHost(DriverHost& host);
    ~TicketHost();

    HRESULT BindResult() const noexcept { return m_bindResult; }
    HRESULT PublishResult() const noexcept { return m_publishResult; }
    // The namespace the plug-in declared for its private features (prefix ns0000).
    const std::wstring& DeviceNamespace() const noexcept { return m_deviceNamespace; }
    IPrintOemPrintTicketProvider* Provider() const noexcept { return m_provider.Get(); }

    // The job's PrintTicket: the core driver's base ticket, completed by the plug-in.
    // `result` receives the plug-in's HRESULT; the ticket is returned even when it failed.
    ComPtr<IXMLDOMDocument2> TicketFor(JobDevMode& job, HRESULT& result);

    // Applies a PrintTicket to a job: the selections the core driver maps, then the plug-in's
    // conversion. Returns the plug-in's HRESULT.
    HRESULT ApplyTicket(IXMLDOMDocument2* ticket, JobDevMode& job);

    ComPtr<IXMLDOMDocument2> CapabilitiesFor(JobDevMode& job, HRESULT& result);
    HRESULT Validate(IXMLDOMDocument2* ticket);

private:
    DriverHost& m_host;
    ComPtr<IPrintOemPrintTicketProvider> m_provider;
    HRESULT m_bindResult = E_PENDING;
    HRESULT m_publishResult = E_PENDING;
    std::wstring m_deviceNamespace;
};

// Used for the private prefix when the plug-in's provider did not bind.
inline constexpr wchar_t kUnboundNamespace[] = L"urn:drvhost:unbound-device-namespace";

}  // namespace drvhost
