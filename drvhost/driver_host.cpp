#include "drvhost/driver_host.h"

#include <winspool.h>

#include <stdexcept>

namespace drvhost {
namespace {

DWORD AskInfo(IPrintOemUI* ui, DWORD mode) {
    DWORD answer = 0, needed = 0;
    return SUCCEEDED(ui->GetInfo(mode, &answer, sizeof(answer), &needed)) ? answer : 0;
}

OEMDMPARAM DevModeParam(HANDLE printer, JobDevMode& job) {
    OEMDMPARAM param{};
    param.cbSize = sizeof(param);
    param.hPrinter = printer;
    param.hModule = nullptr;
    param.pPublicDMIn = job.Public();
    param.pPublicDMOut = job.Public();
    param.pOEMDMIn = job.PluginBlock();
    param.pOEMDMOut = job.PluginBlock();
    param.cbBufSize = job.PluginBlockSize();
    return param;
}

}  // namespace

DriverHost::DriverHost(PrinterDescription description, const std::wstring& pluginPath, const std::wstring& printerName)
    : m_core(std::make_unique<CoreDriver>(std::move(description))),
      m_plugin(std::make_unique<PluginHost>(pluginPath)),
      m_ui(m_plugin->CreateUi()),
      m_printerName(printerName) {
    Start();
}

DriverHost::DriverHost(PrinterDescription description, ComPtr<IPrintOemUI> ui, const std::wstring& printerName)
    : m_core(std::make_unique<CoreDriver>(std::move(description))), m_ui(std::move(ui)), m_printerName(printerName) {
    Start();
}

ComPtr<IPrintOemPrintTicketProvider> DriverHost::CreateTicketProvider() const {
    return m_plugin ? m_plugin->CreateTicketProvider() : nullptr;
}

void DriverHost::Start() {
    ::OpenPrinterW(const_cast<LPWSTR>(m_printerName.c_str()), m_printer.put(), nullptr);
    if (!m_ui) throw std::runtime_error("the plug-in gives no UI object");
    m_identity.signature = AskInfo(m_ui.Get(), OEMGI_GETSIGNATURE);
    m_identity.version = AskInfo(m_ui.Get(), OEMGI_GETVERSION);
    m_identity.requestedHelpers = AskInfo(m_ui.Get(), OEMGI_GETREQUESTEDHELPERINTERFACES);

    // The driver-UI helper is always offered; the core helper only when the plug-in asks for it.
    m_identity.publishDriverUi = m_ui->PublishDriverInterface(m_core->DriverUi());
    if (m_identity.requestedHelpers & OEMPUBLISH_IPRINTCOREHELPER) {
        m_identity.publishCoreHelper = m_ui->PublishDriverInterface(m_core->CoreHelper());
    }

    OEMDMPARAM size{};
    size.cbSize = sizeof(size);
    if (SUCCEEDED(m_ui->DevMode(OEMDM_SIZE, &size))) m_identity.privateBlockSize = size.cbBufSize;
}

DriverHost::~DriverHost() {
    // The plug-in goes before the helper objects it holds and before its module is unloaded.
    m_ui.Reset();
}

HRESULT DriverHost::RaisePrinterInitialise() const {
    if (!m_ui) return E_POINTER;
    std::wstring name = m_printerName;
    return m_ui->PrinterEvent(name.data(), PRINTER_EVENT_INITIALIZE, 0, 0);
}

std::unique_ptr<JobDevMode> DriverHost::NewDefaultJob() {
    auto job = std::make_unique<JobDevMode>(m_core->Description(), m_identity.privateBlockSize, m_printerName);
    if (m_identity.privateBlockSize > 0) {
        OEMDMPARAM param = DevModeParam(m_printer.get(), *job);
        param.pOEMDMIn = nullptr;
        param.pPublicDMIn = nullptr;
        m_ui->DevMode(OEMDM_DEFAULT, &param);
    }
    return job;
}

HRESULT DriverHost::MergeIntoJob(JobDevMode& job, const DEVMODEW* incoming, DWORD incomingSize) {
    if (!job.TakeSelectionsFrom(incoming, incomingSize)) return E_INVALIDARG;
    const DWORD incomingExtent = static_cast<DWORD>(incoming->dmSize) + incoming->dmDriverExtra;
    if (job.PluginBlockSize() == 0 || incomingSize < job.TotalSize() || incomingExtent < job.TotalSize()) return S_OK;
    // Same layout as ours: the plug-in's block follows the core driver's area.
    const DWORD blockOffset = job.TotalSize() - job.PluginBlockSize();

    OEMDMPARAM param = DevModeParam(m_printer.get(), job);
    param.pPublicDMIn = const_cast<DEVMODEW*>(incoming);
    param.pOEMDMIn = const_cast<BYTE*>(reinterpret_cast<const BYTE*>(incoming) + blockOffset);
    return m_ui->DevMode(OEMDM_MERGE, &param);
}

}  // namespace drvhost
