#include "drvhost/commands.h"

#include "drvhost/command_line.h"
#include "drvhost/driver_host.h"
#include "drvhost/feature_names.h"
#include "drvhost/hresult_text.h"
#include "drvhost/print_schema.h"
#include "drvhost/printer_install.h"
#include "drvhost/sheet_window.h"
#include "drvhost/text.h"
#include "drvhost/ticket_host.h"
#include "drvhost/ui_session.h"
#include "drvhost/xml_format.h"
#include "util/scoped.h"

#include <cstdarg>
#include <cstdio>
#include <exception>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace drvhost {
namespace {

constexpr wchar_t kDeviceOption[] = L"--device";
constexpr wchar_t kPackageOption[] = L"--package";
constexpr wchar_t kNoDevice[] = L"none";
constexpr wchar_t kSetOption[] = L"--set";
constexpr wchar_t kScreenshotOption[] = L"--screenshot";
constexpr wchar_t kPrinterSheetOption[] = L"--printer-sheet";
constexpr wchar_t kStepOption[] = L"--step";
constexpr wchar_t kPrinterScreenshotOption[] = L"--printer-screenshot";
constexpr wchar_t kLayoutScreenshotOption[] = L"--layout-screenshot";
// The device of the main job's printer sheet: one without a two-sided unit.
constexpr wchar_t kDemoDevice[] = L"devices\\mono-basic.profile";

std::wstring PrinterNameOf(const CommandLine& line) {
    return line.printerName.empty() ? std::wstring(kDefaultPrinterName) : line.printerName;
}

std::string Quoted(const std::wstring& text) { return "\"" + WideToUtf8(text) + "\""; }

InstalledPrinter Install(const std::wstring& printerName, const std::wstring& package = {},
                         const std::wstring& deviceProfile = {}, bool removeDeviceProfile = false) {
    PrinterSetup setup;
    setup.printerName = printerName;
    setup.sourceDirectory = package.empty() ? ProgramDirectory() : package;
    setup.deviceProfile = deviceProfile;
    setup.removeDeviceProfile = removeDeviceProfile;
    return InstallPrinter(setup);
}

// The printer a command works on. The simulated printer is installed on first use; any other
// printer must have been installed with `install --printer NAME`. `refresh` copies the driver
// files again, as after a build.
InstalledPrinter PrinterFor(const CommandLine& line, bool refresh = false) {
    const std::wstring name = PrinterNameOf(line);
    const std::optional<InstalledPrinter> installed = FindInstalledPrinter(name);
    if (!installed && !line.printerName.empty()) {
        throw UsageError("no printer named " + Quoted(name) + " (install it with: drvhost install --printer " +
                         Quoted(name) + ")");
    }
    if (installed && !installed->pluginFile.empty() && !refresh) return *installed;
    return Install(name);
}

std::unique_ptr<DriverHost> LoadDriver(const InstalledPrinter& printer) {
    return std::make_unique<DriverHost>(LoadPrinterDescription(printer.dataFile), printer.pluginFile, printer.name);
}

void PrintIdentity(Console& console, DriverHost& host, TicketHost& tickets) {
    const PluginIdentity& id = host.Identity();
    console.Print("printer:             %s\n", WideToUtf8(host.PrinterName()).c_str());
    console.Print("features:            %zu\n", host.Core().Description().features.size());
    console.Print("plug-in signature:   0x%08lX\n", id.signature);
    console.Print("plug-in version:     %lu\n", id.version);
    console.Print("requested helpers:   0x%lX%s\n", id.requestedHelpers,
                  (id.requestedHelpers & OEMPUBLISH_IPRINTCOREHELPER) ? " (core helper)" : "");
    console.Print("driver UI published: %s\n",
                  PluginResultText(PluginCall::PublishDriverInterface, id.publishDriverUi).c_str());
    const bool coreHelperOffered = (id.requestedHelpers & OEMPUBLISH_IPRINTCOREHELPER) != 0;
    console.Print("core helper:         %s\n",
                  coreHelperOffered ? PluginResultText(PluginCall::PublishDriverInterface, id.publishCoreHelper).c_str()
                                    : "not requested, so not offered");
    console.Print("private DEVMODE:     %lu bytes\n", id.privateBlockSize);
    console.Print("provider bound:      %s\n", HresultText(tickets.BindResult()).c_str());
    console.Print("device namespace:    %s\n", WideToUtf8(tickets.DeviceNamespace()).c_str());
}

void SetFeatures(DriverHost& host, JobDevMode& job, const std::vector<std::wstring>& assignments) {
    for (const std::wstring& assignment : assignments) {
        const FeatureSelection selection = ResolveSelection(host.Core().Description(), WideToUtf8(assignment));
        job.SetSelection(selection.feature, static_cast<DWORD>(selection.option));
    }
}

void PrintSelections(Console& console, DriverHost& host, const JobDevMode& job) {
    const PrinterDescription& description = host.Core().Description();
    for (size_t i = 0; i < description.features.size(); ++i) {
        const FeatureDescription& feature = description.features[i];
        if (feature.sheet != FeatureSheet::Document) continue;
        console.Print("%-36s %s\n", feature.keyword.c_str(), feature.options[job.Selection(i)].keyword.c_str());
    }
}

// Returns how many changed.
size_t PrintChangedSelections(Console& console, DriverHost& host, const JobDevMode& before, const JobDevMode& after) {
    const PrinterDescription& description = host.Core().Description();
    size_t changed = 0;
    for (size_t i = 0; i < description.features.size(); ++i) {
        if (before.Selection(i) == after.Selection(i)) continue;
        const FeatureDescription& feature = description.features[i];
        console.Print("%-36s %s -> %s\n", feature.keyword.c_str(), feature.options[before.Selection(i)].keyword.c_str(),
                      feature.options[after.Selection(i)].keyword.c_str());
        ++changed;
    }
    return changed;
}

// The plug-in's private block as 32-bit words, for the flags the plug-in sets in it.
void PrintPluginBlock(Console& console, JobDevMode& job) {
    console.Print("plug-in block:");
    const auto* words = static_cast<const DWORD*>(job.PluginBlock());
    for (DWORD i = 0; i < job.PluginBlockSize() / sizeof(DWORD); ++i) console.Print(" %08lX", words[i]);
    console.Print("\n");
}

void PrintXml(Console& console, IXMLDOMNode* document) { console.Out(WideToUtf8(FormatXml(document))); }

// Changes a ticket's selection, as an application's print dialog does.
void SetTicketOption(IXMLDOMDocument2* ticket, const std::wstring& feature, const std::wstring& option) {
    BindFrameworkPrefix(ticket);
    ComPtr<IXMLDOMNode> node;
    const std::wstring query = L"//psf:Feature[@name='" + feature + L"']/psf:Option";
    if (ticket->selectSingleNode(zx::MakeBstr(query.c_str()).get(), &node) != S_OK) return;
    ComPtr<IXMLDOMElement> element;
    if (SUCCEEDED(node->QueryInterface(IID_IXMLDOMElement, reinterpret_cast<void**>(element.GetAddressOf())))) {
        zx::unique_variant value;
        value.get()->vt = VT_BSTR;
        value.get()->bstrVal = zx::MakeBstr(option.c_str()).release();
        element->setAttribute(zx::MakeBstr(L"name").get(), *value);
    }
}

// A document whose root is psf:PrintTicket; anything else is refused with what its root is.
void RequirePrintTicket(IXMLDOMDocument2* document, const std::wstring& path) {
    ComPtr<IXMLDOMElement> root;
    zx::unique_bstr name, uri;
    if (FAILED(document->get_documentElement(&root)) || !root) {
        throw std::runtime_error(WideToUtf8(path) + " is not a PrintTicket: it has no root element");
    }
    root->get_nodeName(name.put());
    root->get_namespaceURI(uri.put());
    zx::unique_bstr localName;
    root->get_baseName(localName.put());
    const bool isTicket = localName && std::wstring_view(localName.get()) == L"PrintTicket" && uri &&
                          std::wstring_view(uri.get()) == kFrameworkUri;
    if (!isTicket) {
        throw std::runtime_error(WideToUtf8(path) + " is not a PrintTicket: its root element is <" +
                                 WideToUtf8(name ? name.get() : L"") +
                                 ">, not a PrintTicket of the Print Schema framework namespace");
    }
}

[[noreturn]] void ConversionFailed(const char* method, HRESULT result, const std::string& what) {
    throw std::runtime_error("the plug-in's " + std::string(method) + " returned " + HresultText(result) + ": " + what);
}

int RunInstall(const CommandLine& line, Console& console) {
    const std::wstring device = line.Value(kDeviceOption);
    const bool removeDevice = device == kNoDevice;
    const InstalledPrinter printer =
        Install(PrinterNameOf(line), line.Value(kPackageOption), removeDevice ? std::wstring() : device, removeDevice);
    console.Print("%s %s\ndriver directory: %s\nUI plug-in: %s\n", printer.created ? "installed" : "refreshed",
                  WideToUtf8(printer.name).c_str(), WideToUtf8(printer.driverDirectory).c_str(),
                  WideToUtf8(printer.pluginFile).c_str());
    console.Print("printer-initialise event: %s\n",
                  PluginResultText(PluginCall::UiMethod, LoadDriver(printer)->RaisePrinterInitialise()).c_str());
    if (removeDevice) {
        console.Print("device: none (the device profile is removed; no device answers)\n");
    } else if (!device.empty()) {
        console.Print("device: %s on port %s\n", WideToUtf8(device).c_str(), WideToUtf8(kDevicePort).c_str());
    }
    return 0;
}

int RunInfo(const CommandLine& line, Console& console) {
    auto host = LoadDriver(PrinterFor(line));
    TicketHost tickets(*host);
    PrintIdentity(console, *host, tickets);
    return 0;
}

int RunFeatures(const CommandLine& line, Console& console) {
    const InstalledPrinter printer = PrinterFor(line);
    console.Print("Features of %s: GPD keyword, then PrintTicket name; * marks the default option.\n",
                  WideToUtf8(printer.name).c_str());
    console.Out(DescribeFeatures(LoadPrinterDescription(printer.dataFile)));
    return 0;
}

int RunTicket(const CommandLine& line, Console& console) {
    auto host = LoadDriver(PrinterFor(line));
    TicketHost tickets(*host);
    auto job = host->NewDefaultJob();
    SetFeatures(*host, *job, line.Values(kSetOption));
    HRESULT result = S_OK;
    auto ticket = tickets.TicketFor(*job, result);
    if (FAILED(result)) ConversionFailed("ConvertDevModeToPrintTicket", result, "no PrintTicket for this job");
    PrintXml(console, ticket.Get());
    return 0;
}

int RunApply(const CommandLine& line, Console& console) {
    const std::wstring path = line.Operand();
    auto host = LoadDriver(PrinterFor(line));
    auto ticket = LoadXmlFile(path);
    RequirePrintTicket(ticket.Get(), path);
    TicketHost tickets(*host);
    auto job = host->NewDefaultJob();
    const HRESULT result = tickets.ApplyTicket(ticket.Get(), *job);
    if (FAILED(result)) ConversionFailed("ConvertPrintTicketToDevMode", result, WideToUtf8(path) + " is not applied");
    PrintSelections(console, *host, *job);
    PrintPluginBlock(console, *job);
    return 0;
}

int RunCaps(const CommandLine& line, Console& console) {
    auto host = LoadDriver(PrinterFor(line));
    TicketHost tickets(*host);
    auto job = host->NewDefaultJob();
    HRESULT result = S_OK;
    auto capabilities = tickets.CapabilitiesFor(*job, result);
    if (FAILED(result)) ConversionFailed("CompletePrintCapabilities", result, "no PrintCapabilities");
    PrintXml(console, capabilities.Get());
    return 0;
}

std::vector<SheetStep> ParseSteps(const std::vector<std::wstring>& texts) {
    std::vector<SheetStep> steps;
    for (const std::wstring& text : texts) {
        std::string problem;
        const std::optional<SheetStep> step = ParseSheetStep(text, problem);
        if (!step) throw UsageError(problem);
        steps.push_back(*step);
    }
    return steps;
}

// The printer sheet's configuration items as they stand: option and whether the user can change it.
void PrintConfiguration(Console& console, DriverHost& host, UiSession& session) {
    for (const FeatureDescription& feature : host.Core().Description().features) {
        const POPTITEM item = session.Item(feature.keyword);
        if (feature.sheet != FeatureSheet::Printer || item == nullptr || item->Sel < 0 ||
            static_cast<size_t>(item->Sel) >= feature.options.size()) {
            continue;
        }
        console.Print("%-24s %s%s\n", feature.keyword.c_str(),
                      WideToUtf8(feature.options[item->Sel].displayName).c_str(),
                      (item->Flags & OPTIF_DISABLED) ? " (disabled)" : "");
    }
}

struct SheetRequest {
    bool printerSheet = false;
    std::vector<SheetStep> steps;
    std::wstring screenshot;
    std::vector<std::wstring> jobSettings;
};

// Opens a property sheet as the core driver does, carries out the steps and reports what the
// plug-in answered, what came up and what changed in the job. False when the sheet could not be
// shown or a step could not be done.
bool OpenSheet(Console& console, DriverHost& host, const SheetRequest& request) {
    auto job = host.NewDefaultJob();
    SetFeatures(host, *job, request.jobSettings);
    const auto before = std::make_unique<JobDevMode>(*job);
    UiSession session(host, request.printerSheet ? FeatureSheet::Printer : FeatureSheet::Document, job.get());
    session.Open();
    console.Print("CommonUIProp:           %s\n",
                  PluginResultText(PluginCall::UiMethod, session.CommonUIPropResult()).c_str());
    if (!request.printerSheet) {
        console.Print("DocumentPropertySheets: %s\n",
                      PluginResultText(PluginCall::UiMethod, session.PropertySheetsResult()).c_str());
        console.Print("pages added by plug-in: %zu%s\n", session.Pages().size(),
                      session.StartPage() ? " (the Printing Shortcuts page is the start page)" : "");
    }
    DWORD hidden = 0;
    for (DWORD i = 0; i < session.Items().Count(); ++i)
        hidden += (session.Items().Items()[i].Flags & OPTIF_HIDE) ? 1 : 0;
    console.Print("items:                  %lu (%lu hidden by the plug-in)\n", session.Items().Count(), hidden);
    if (request.printerSheet) PrintConfiguration(console, host, session);

    if (request.steps.empty() && request.screenshot.empty()) return true;
    SheetRun run;
    std::string problem;
    const bool done = RunSheet(session, request.steps, request.screenshot, run, problem);
    for (const std::string& event : run.events) console.Print("%s\n", event.c_str());
    for (const SheetStep& step : request.steps) {
        if (step.action == SheetStep::Action::Screenshot) {
            console.Print("screenshot:             %s\n", WideToUtf8(step.name).c_str());
        }
    }
    if (!request.printerSheet && !request.steps.empty()) {
        console.Print("job settings changed:\n");
        if (PrintChangedSelections(console, host, *before, *job) == 0) console.Print("(none)\n");
    }
    if (!done) {
        console.Error(problem);
        return false;
    }
    if (!request.screenshot.empty() && !run.closedByStep) {
        console.Print("screenshot:             %s\n", WideToUtf8(request.screenshot).c_str());
    }
    return true;
}

int RunUi(const CommandLine& line, Console& console) {
    auto host = LoadDriver(PrinterFor(line));
    SheetRequest request;
    request.printerSheet = line.Has(kPrinterSheetOption);
    request.steps = ParseSteps(line.Values(kStepOption));
    request.screenshot = line.Value(kScreenshotOption);
    request.jobSettings = line.Values(kSetOption);
    return OpenSheet(console, *host, request) ? 0 : 1;
}

int RunDemo(const CommandLine& line, Console& console) {
    console.Print("== Simulated printer ==\n");
    auto host = LoadDriver(PrinterFor(line, true));
    TicketHost tickets(*host);
    PrintIdentity(console, *host, tickets);

    console.Print("\n== PrintTicket of the default job ==\n");
    auto job = host->NewDefaultJob();
    HRESULT result = S_OK;
    auto ticket = tickets.TicketFor(*job, result);
    console.Print("(ConvertDevModeToPrintTicket: %s)\n", HresultText(result).c_str());
    PrintXml(console, ticket.Get());

    console.Print("\n== An application asks for A4 booklets on glossy photo paper ==\n");
    auto changed = host->NewDefaultJob();
    SetFeatures(*host, *changed, {L"PaperSize=A4", L"DocumentBinding=Booklet", L"DocumentNUp=2", L"Duplex=VERTICAL"});
    auto changedTicket = tickets.TicketFor(*changed, result);
    SetTicketOption(changedTicket.Get(), L"psk:PageMediaType", L"psk:PhotographicGlossy");
    auto applied = host->NewDefaultJob();
    result = tickets.ApplyTicket(changedTicket.Get(), *applied);
    console.Print("(ConvertPrintTicketToDevMode: %s)\n", HresultText(result).c_str());
    PrintChangedSelections(console, *host, *job, *applied);
    PrintPluginBlock(console, *applied);

    console.Print("\n== Document property sheet ==\n");
    SheetRequest document;
    document.screenshot = line.Value(kScreenshotOption);
    if (line.Has(kLayoutScreenshotOption)) {
        // The start page first, then the core driver's own page with the plug-in's labels.
        if (!document.screenshot.empty()) document.steps = ParseSteps({L"screenshot=" + document.screenshot});
        document.steps.push_back(ParseSteps({L"page=Layout and Quality"}).front());
        document.screenshot = line.Value(kLayoutScreenshotOption);
    }
    if (!OpenSheet(console, *host, document)) return 1;

    console.Print("\n== The user picks the shortcut \"Photo Printing - Borderless\" and clicks OK ==\n");
    SheetRequest shortcut;
    shortcut.steps = ParseSteps({L"shortcut=Photo Printing - Borderless", L"ok"});
    if (!OpenSheet(console, *host, shortcut)) return 1;

    console.Print("\n== Printer property sheet, the printer on a device without a two-sided unit ==\n");
    const InstalledPrinter printer = Install(PrinterNameOf(line), {}, ProgramDirectory() + kDemoDevice);
    auto onDevice = LoadDriver(printer);
    console.Print("printer-initialise event: %s\n",
                  PluginResultText(PluginCall::UiMethod, onDevice->RaisePrinterInitialise()).c_str());
    SheetRequest printerSheet;
    printerSheet.printerSheet = true;
    printerSheet.screenshot = line.Value(kPrinterScreenshotOption);
    const bool shown = OpenSheet(console, *onDevice, printerSheet);
    // The device goes again, and the printer forgets its answers, as after an installation.
    LoadDriver(Install(PrinterNameOf(line), {}, {}, true))->RaisePrinterInitialise();
    return shown ? 0 : 1;
}

constexpr OptionSpec kInstallOptions[] = {
    {kPackageOption, OptionKind::Value, "DIR",
     "the driver package to install from (default: the one built beside drvhost, build/bin)"},
    {kDeviceOption, OptionKind::Value, "PROFILE",
     "the device simulator answers from PROFILE on port USB001; \"none\" removes the installed profile"},
};
constexpr OptionSpec kTicketOptions[] = {
    {kSetOption, OptionKind::RepeatedValue, "FEATURE=OPTION",
     "select an option first (GPD keywords or PrintTicket names, see `features`)"},
};
constexpr OptionSpec kUiOptions[] = {
    {kPrinterSheetOption, OptionKind::Flag, "", "the printer property sheet instead of the document one"},
    {kSetOption, OptionKind::RepeatedValue, "FEATURE=OPTION", "the job's option before the sheet opens"},
    {kStepOption, OptionKind::RepeatedValue, "STEP",
     "do what a person does, in order (several --step); STEP is one of:\n"
     "  shortcut=NAME, setting=LABEL=ENTRY, save-as=NAME, delete, page=TITLE,\n"
     "  option=FEATURE=ENTRY, revert, apply, ok, cancel, screenshot=FILE.png"},
    {kScreenshotOption, OptionKind::Value, "FILE.png", "show the sheet, save a picture of it and close it"},
};
constexpr OptionSpec kDemoOptions[] = {
    {kScreenshotOption, OptionKind::Value, "FILE.png", "save a picture of the document property sheet"},
    {kLayoutScreenshotOption, OptionKind::Value, "FILE.png",
     "save a picture of the document sheet's Layout and Quality page"},
    {kPrinterScreenshotOption, OptionKind::Value, "FILE.png", "save a picture of the printer property sheet"},
};

constexpr CommandSpec kCommands[] = {
    {L"install", "install or refresh the printer and its driver files (--printer NAME adds that printer)",
     kInstallOptions, "", RunInstall},
    {L"info", "load the plug-in and print what it reports about itself", {}, "", RunInfo},
    {L"features", "list the printer's features and options", {}, "", RunFeatures},
    {L"ticket", "print the PrintTicket of the default job", kTicketOptions, "", RunTicket},
    {L"apply", "apply a PrintTicket to the default job and print the selections", {}, "FILE.xml", RunApply},
    {L"caps", "print the PrintCapabilities", {}, "", RunCaps},
    {L"ui", "open the document (or printer) property sheet with the plug-in", kUiOptions, "", RunUi},
    {L"demo", "the simulated printer end to end (the main job)", kDemoOptions, "", RunDemo},
};

}  // namespace

void Console::Print(const char* format, ...) {
    char buffer[1024];
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(buffer, sizeof(buffer), format, arguments);
    va_end(arguments);
    if (length > 0) Out(std::string_view(buffer, std::min<size_t>(static_cast<size_t>(length), sizeof(buffer) - 1)));
}

void StandardConsole::Out(std::string_view text) { std::fwrite(text.data(), 1, text.size(), stdout); }

void StandardConsole::Error(std::string_view line) {
    std::fflush(stdout);
    std::fprintf(stderr, "drvhost: %.*s\n", static_cast<int>(line.size()), line.data());
}

int RunDrvhost(std::span<const std::wstring> arguments, Console& console) {
    try {
        const CommandLine line = ParseCommandLine(arguments, kCommands);
        if (line.help) {
            console.Out(line.command ? CommandHelp(*line.command) : GeneralHelp(kCommands));
            return 0;
        }
        ComApartment com;
        return line.command->run(line, console);
    } catch (const UsageError& e) {
        console.Error(e.what());
        return 2;
    } catch (const std::exception& e) {
        console.Error(e.what());
        return 1;
    }
}

}  // namespace drvhost
