// The simulated core driver with its plug-in loaded: what the real core configuration module
// does when it starts, sizes and defaults DEVMODEs, and merges an application's DEVMODE.
#pragma once

#include "drvhost/core_driver.h"
#include "drvhost/job_devmode.h"
#include "drvhost/plugin_host.h"
#include "util/scoped.h"

#include <memory>
#include <string>

namespace drvhost {

// What the plug-in said about itself when it was loaded.
struct PluginIdentity {
    DWORD signature = 0;
    DWORD version = 0;
    DWORD requestedHelpers = 0;
    DWORD privateBlockSize = 0;
    HRESULT publishDriverUi = E_FAIL;
    HRESULT publishCoreHelper = S_FALSE;  // S_FALSE: not requested, so not offered
};

class DriverHost {
public:
    // Loads the plug-in, asks for its identity and publishes the helper objects it requests.
    // `printerName` may name a printer that is not installed; the printer handle is then null.
    DriverHost(PrinterDescription description, const std::wstring& pluginPath, const std::wstring& printerName);
    // The same with a UI plug-in object that the caller made (tests use one of their own).
    DriverHost(PrinterDescription description, ComPtr<IPrintOemUI> ui, const std::wstring& printerName);
    ~DriverHost();

    CoreDriver& Core() noexcept { return *m_core; }
    // The plug-in's module, or null for an object the caller made.
    HMODULE PluginModule() const noexcept { return m_plugin ? m_plugin->Module() : nullptr; }
    ComPtr<IPrintOemPrintTicketProvider> CreateTicketProvider() const;
    IPrintOemUI* Ui() const noexcept { return m_ui.Get(); }
    const PluginIdentity& Identity() const noexcept { return m_identity; }
    const std::wstring& PrinterName() const noexcept { return m_printerName; }
    HANDLE Printer() const noexcept { return m_printer.get(); }

    // What the spooler does once a printer is installed: the plug-in's printer-initialise event.
    HRESULT RaisePrinterInitialise() const;

    // A DEVMODE with the printer's defaults, the plug-in's block defaulted by the plug-in.
    std::unique_ptr<JobDevMode> NewDefaultJob();

    // Takes an application's DEVMODE into a job, as the core driver does when a DEVMODE comes
    // back from an application: the feature selections, then the plug-in's merge of its block.
    HRESULT MergeIntoJob(JobDevMode& job, const DEVMODEW* incoming, DWORD incomingSize);

private:
    void Start();

    std::unique_ptr<CoreDriver> m_core;
    std::unique_ptr<PluginHost> m_plugin;
    ComPtr<IPrintOemUI> m_ui;
    PluginIdentity m_identity;
    std::wstring m_printerName;
    zx::unique_printer m_printer;
};

}  // namespace drvhost
