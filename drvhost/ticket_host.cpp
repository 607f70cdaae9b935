#include "drvhost/ticket_host.h"

#include "drvhost/print_schema.h"
#include "util/scoped.h"

#include <objbase.h>

namespace drvhost {
namespace {

constexpr INT kPrintSchemaVersion = 1;

SelectionSource SelectionsOf(const JobDevMode& job) {
    return [&job](size_t feature) { return job.Selection(feature); };
}

}  // namespace

TicketHost::TicketHost(DriverHost& host) : m_host(host), m_deviceNamespace(kUnboundNamespace) {
    m_provider = host.CreateTicketProvider();
    if (!m_provider) {
        m_bindResult = E_NOINTERFACE;
        return;
    }
    OEMPTOPTS options = OEMPT_DEFAULT;
    INT count = 0;
    BSTR* namespaces = nullptr;
    m_bindResult = m_provider->BindPrinter(host.Printer(), kPrintSchemaVersion, &options, &count, &namespaces);
    if (SUCCEEDED(m_bindResult) && namespaces != nullptr) {
        if (count > 0 && namespaces[0] != nullptr) m_deviceNamespace = namespaces[0];
        for (INT i = 0; i < count; ++i) ::SysFreeString(namespaces[i]);
    }
    ::CoTaskMemFree(namespaces);
    m_publishResult = m_provider->PublishPrintTicketHelper(host.Core().CoreHelper());
}

TicketHost::~TicketHost() = default;

ComPtr<IXMLDOMDocument2> TicketHost::TicketFor(JobDevMode& job, HRESULT& result) {
    ComPtr<IXMLDOMDocument2> ticket =
        ParseXml(BuildPrintTicket(m_host.Core().Description(), SelectionsOf(job), m_deviceNamespace));
    result = m_provider ? m_provider->ConvertDevModeToPrintTicket(job.TotalSize(), job.Public(), job.PluginBlockSize(),
                                                                  job.PluginBlock(), ticket.Get())
                        : E_NOINTERFACE;
    return ticket;
}

HRESULT TicketHost::ApplyTicket(IXMLDOMDocument2* ticket, JobDevMode& job) {
    const auto selections = ReadTicketSelections(ticket, m_host.Core().Description(), m_deviceNamespace);
    for (const auto& [feature, option] : selections) job.SetSelection(feature, static_cast<DWORD>(option));
    if (!m_provider) return E_NOINTERFACE;
    return m_provider->ConvertPrintTicketToDevMode(ticket, job.TotalSize(), job.Public(), job.PluginBlockSize(),
                                                   job.PluginBlock());
}

ComPtr<IXMLDOMDocument2> TicketHost::CapabilitiesFor(JobDevMode& job, HRESULT& result) {
    ComPtr<IXMLDOMDocument2> capabilities =
        ParseXml(BuildPrintCapabilities(m_host.Core().Description(), m_deviceNamespace));
    HRESULT ticketResult = S_OK;
    ComPtr<IXMLDOMDocument2> ticket = TicketFor(job, ticketResult);
    result = m_provider ? m_provider->CompletePrintCapabilities(ticket.Get(), capabilities.Get()) : E_NOINTERFACE;
    return capabilities;
}

HRESULT TicketHost::Validate(IXMLDOMDocument2* ticket) {
    return m_provider ? m_provider->ValidatePrintTicket(ticket) : E_NOINTERFACE;
}

}  // namespace drvhost
