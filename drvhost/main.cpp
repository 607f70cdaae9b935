// drvhost: stands in for the printer driver's core configuration module. It installs the
// simulated printer, loads the plug-in the way the core driver does, and shows what it does.
#include "drvhost/driver_host.h"
#include "drvhost/print_schema.h"
#include "drvhost/printer_install.h"
#include "drvhost/sheet_window.h"
#include "drvhost/text.h"
#include "drvhost/ticket_host.h"
#include "drvhost/ui_session.h"
#include "drvhost/xml_format.h"
#include "util/scoped.h"

#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace drvhost {
namespace {

constexpr char kUsage[] =
    "usage: drvhost [--printer NAME] <command> [options]\n"
    "\n"
    "commands:\n"
    "  install [--device PROFILE]  install or refresh the simulated printer and its driver files;\n"
    "                              with a device profile, the device simulator answers as the\n"
    "                              printer's device on the port USB001\n"
    "  info                        load the plug-in and print what it reports about itself\n"
    "  ticket [--set F=O ...]      print the PrintTicket of the default job, with features set first\n"
    "  apply FILE.xml              apply a PrintTicket to the default job and print the selections\n"
    "  caps                        print the PrintCapabilities\n"
    "  ui [--printer-sheet] [--screenshot FILE.png]\n"
    "                              open the document (or printer) property sheet with the plug-in\n"
    "  demo [--screenshot FILE.png]\n"
    "                              the simulated printer end to end\n"
    "\n"
    "The printer is installed on first use; `install` refreshes the driver files after a build.\n";

struct Arguments {
    std::wstring printerName = kDefaultPrinterName;
    std::wstring command;
    std::vector<std::wstring> rest;
};

Arguments ParseArguments(int argc, wchar_t** argv) {
    Arguments arguments;
    for (int i = 1; i < argc; ++i) {
        const std::wstring argument = argv[i];
        if (argument == L"--printer" && arguments.command.empty()) {
            if (++i == argc) throw std::invalid_argument("--printer needs a name");
            arguments.printerName = argv[i];
        } else if (arguments.command.empty()) {
            arguments.command = argument;
        } else {
            arguments.rest.push_back(argument);
        }
    }
    return arguments;
}

// The value after a flag in the remaining arguments, or empty.
std::wstring OptionValue(const std::vector<std::wstring>& rest, const wchar_t* flag) {
    for (size_t i = 0; i + 1 < rest.size(); ++i) {
        if (rest[i] == flag) return rest[i + 1];
    }
    return {};
}

bool HasFlag(const std::vector<std::wstring>& rest, const wchar_t* flag) {
    for (const std::wstring& argument : rest) {
        if (argument == flag) return true;
    }
    return false;
}

std::string Hex(HRESULT hr) {
    char text[16];
    std::snprintf(text, sizeof(text), "0x%08lX", static_cast<unsigned long>(hr));
    return text;
}

InstalledPrinter EnsureInstalled(const std::wstring& printerName, bool refresh,
                                 const std::wstring& deviceProfile = {}) {
    if (!refresh) {
        const std::wstring directory = DriverDirectoryOf(printerName);
        if (!directory.empty()) return {printerName, directory, false};
    }
    PrinterSetup setup;
    setup.printerName = printerName;
    setup.sourceDirectory = ProgramDirectory();
    setup.deviceProfile = deviceProfile;
    return InstallPrinter(setup);
}

std::unique_ptr<DriverHost> LoadDriver(const std::wstring& printerName, bool refresh = false) {
    const InstalledPrinter printer = EnsureInstalled(printerName, refresh);
    return std::make_unique<DriverHost>(LoadPrinterDescription(printer.driverDirectory + kDescriptionFile),
                                        printer.driverDirectory + kPluginFile, printerName);
}

void PrintIdentity(DriverHost& host, TicketHost& tickets) {
    const PluginIdentity& id = host.Identity();
    std::printf("printer:             %s\n", WideToUtf8(host.PrinterName()).c_str());
    std::printf("features:            %zu\n", host.Core().Description().features.size());
    std::printf("plug-in signature:   0x%08lX\n", id.signature);
    std::printf("plug-in version:     %lu\n", id.version);
    std::printf("requested helpers:   0x%lX%s\n", id.requestedHelpers,
                (id.requestedHelpers & OEMPUBLISH_IPRINTCOREHELPER) ? " (core helper)" : "");
    std::printf("driver UI published: %s\n", Hex(id.publishDriverUi).c_str());
    std::printf("core helper:         %s\n", Hex(id.publishCoreHelper).c_str());
    std::printf("private DEVMODE:     %lu bytes\n", id.privateBlockSize);
    std::printf("provider bound:      %s\n", Hex(tickets.BindResult()).c_str());
    std::printf("device namespace:    %s\n", WideToUtf8(tickets.DeviceNamespace()).c_str());
}

void SetFeatures(DriverHost& host, JobDevMode& job, const std::vector<std::wstring>& rest) {
    const PrinterDescription& description = host.Core().Description();
    for (size_t i = 0; i + 1 < rest.size(); ++i) {
        if (rest[i] != L"--set") continue;
        const std::string assignment = WideToUtf8(rest[i + 1]);
        const size_t equals = assignment.find('=');
        const auto feature = description.FindFeature(assignment.substr(0, equals));
        const auto option = feature && equals != std::string::npos
                                ? description.features[*feature].FindOption(assignment.substr(equals + 1))
                                : std::nullopt;
        if (!option) throw std::invalid_argument("no such feature and option: " + assignment);
        job.SetSelection(*feature, static_cast<DWORD>(*option));
    }
}

void PrintSelections(DriverHost& host, const JobDevMode& job) {
    const PrinterDescription& description = host.Core().Description();
    for (size_t i = 0; i < description.features.size(); ++i) {
        const FeatureDescription& feature = description.features[i];
        if (feature.sheet != FeatureSheet::Document) continue;
        std::printf("%-36s %s\n", feature.keyword.c_str(), feature.options[job.Selection(i)].keyword.c_str());
    }
}

void PrintChangedSelections(DriverHost& host, const JobDevMode& before, const JobDevMode& after) {
    const PrinterDescription& description = host.Core().Description();
    for (size_t i = 0; i < description.features.size(); ++i) {
        if (before.Selection(i) == after.Selection(i)) continue;
        const FeatureDescription& feature = description.features[i];
        std::printf("%-36s %s -> %s\n", feature.keyword.c_str(), feature.options[before.Selection(i)].keyword.c_str(),
                    feature.options[after.Selection(i)].keyword.c_str());
    }
}

// The plug-in's private block as 32-bit words, for the flags the plug-in sets in it.
void PrintPluginBlock(JobDevMode& job) {
    std::printf("plug-in block:");
    const auto* words = static_cast<const DWORD*>(job.PluginBlock());
    for (DWORD i = 0; i < job.PluginBlockSize() / sizeof(DWORD); ++i) std::printf(" %08lX", words[i]);
    std::printf("\n");
}

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

std::wstring ReadTicketFile(const std::wstring& path) {
    FILE* file = _wfopen(path.c_str(), L"rb");
    if (file == nullptr) throw std::runtime_error("cannot read " + WideToUtf8(path));
    std::string bytes;
    char buffer[4096];
    size_t read = 0;
    while ((read = std::fread(buffer, 1, sizeof(buffer), file)) > 0) bytes.append(buffer, read);
    std::fclose(file);
    if (bytes.rfind("\xEF\xBB\xBF", 0) == 0) bytes.erase(0, 3);
    return Utf8ToWide(bytes);
}

int RunInstall(const Arguments& arguments) {
    const InstalledPrinter printer =
        EnsureInstalled(arguments.printerName, true, OptionValue(arguments.rest, L"--device"));
    std::printf("%s %s\ndriver directory: %s\n", printer.created ? "installed" : "refreshed",
                WideToUtf8(printer.name).c_str(), WideToUtf8(printer.driverDirectory).c_str());
    const std::wstring device = OptionValue(arguments.rest, L"--device");
    if (!device.empty()) {
        std::printf("device: %s on port %s\n", WideToUtf8(device).c_str(), WideToUtf8(kDevicePort).c_str());
    }
    return 0;
}

int RunInfo(const Arguments& arguments) {
    auto host = LoadDriver(arguments.printerName);
    TicketHost tickets(*host);
    PrintIdentity(*host, tickets);
    return 0;
}

int RunTicket(const Arguments& arguments) {
    auto host = LoadDriver(arguments.printerName);
    TicketHost tickets(*host);
    auto job = host->NewDefaultJob();
    SetFeatures(*host, *job, arguments.rest);
    HRESULT result = S_OK;
    auto ticket = tickets.TicketFor(*job, result);
    if (FAILED(result)) std::fprintf(stderr, "drvhost: the plug-in's conversion returned %s\n", Hex(result).c_str());
    std::printf("%s", WideToUtf8(FormatXml(ticket.Get())).c_str());
    return 0;
}

int RunApply(const Arguments& arguments) {
    if (arguments.rest.empty()) throw std::invalid_argument("apply needs a PrintTicket file");
    auto host = LoadDriver(arguments.printerName);
    TicketHost tickets(*host);
    auto job = host->NewDefaultJob();
    auto ticket = ParseXml(ReadTicketFile(arguments.rest.front()));
    const HRESULT result = tickets.ApplyTicket(ticket.Get(), *job);
    if (FAILED(result)) std::fprintf(stderr, "drvhost: the plug-in's conversion returned %s\n", Hex(result).c_str());
    PrintSelections(*host, *job);
    PrintPluginBlock(*job);
    return 0;
}

int RunCaps(const Arguments& arguments) {
    auto host = LoadDriver(arguments.printerName);
    TicketHost tickets(*host);
    auto job = host->NewDefaultJob();
    HRESULT result = S_OK;
    auto capabilities = tickets.CapabilitiesFor(*job, result);
    if (FAILED(result)) std::fprintf(stderr, "drvhost: the plug-in's completion returned %s\n", Hex(result).c_str());
    std::printf("%s", WideToUtf8(FormatXml(capabilities.Get())).c_str());
    return 0;
}

void RunSheet(DriverHost& host, bool printerSheet, const std::wstring& screenshot) {
    auto job = host.NewDefaultJob();
    UiSession session(host, printerSheet ? FeatureSheet::Printer : FeatureSheet::Document, job.get());
    session.Open();
    std::printf("CommonUIProp:           %s\n", Hex(session.CommonUIPropResult()).c_str());
    if (!printerSheet) std::printf("DocumentPropertySheets: %s\n", Hex(session.PropertySheetsResult()).c_str());
    std::printf("pages added by plug-in: %zu%s\n", session.Pages().size(),
                session.StartPage() ? " (one is the start page)" : "");
    DWORD hidden = 0;
    for (DWORD i = 0; i < session.Items().Count(); ++i)
        hidden += (session.Items().Items()[i].Flags & OPTIF_HIDE) ? 1 : 0;
    std::printf("items:                  %lu (%lu hidden by the plug-in)\n", session.Items().Count(), hidden);

    if (screenshot.empty()) return;
    std::string problem;
    if (ShowSheet(session, screenshot, problem)) {
        std::printf("screenshot:             %s\n", WideToUtf8(screenshot).c_str());
    } else {
        std::printf("screenshot:             none (%s)\n", problem.c_str());
    }
}

int RunUi(const Arguments& arguments) {
    auto host = LoadDriver(arguments.printerName);
    RunSheet(*host, HasFlag(arguments.rest, L"--printer-sheet"), OptionValue(arguments.rest, L"--screenshot"));
    return 0;
}

int RunDemo(const Arguments& arguments) {
    std::printf("== Simulated printer ==\n");
    auto host = LoadDriver(arguments.printerName, true);
    TicketHost tickets(*host);
    PrintIdentity(*host, tickets);

    std::printf("\n== PrintTicket of the default job ==\n");
    auto job = host->NewDefaultJob();
    HRESULT result = S_OK;
    auto ticket = tickets.TicketFor(*job, result);
    std::printf("(plug-in conversion: %s)\n%s", Hex(result).c_str(), WideToUtf8(FormatXml(ticket.Get())).c_str());

    std::printf("\n== An application asks for A4 booklets on glossy photo paper ==\n");
    auto changed = host->NewDefaultJob();
    SetFeatures(*host, *changed,
                {L"--set", L"PaperSize=A4", L"--set", L"DocumentBinding=Booklet", L"--set", L"DocumentNUp=2", L"--set",
                 L"Duplex=VERTICAL"});
    auto changedTicket = tickets.TicketFor(*changed, result);
    SetTicketOption(changedTicket.Get(), L"psk:PageMediaType", L"psk:PhotographicGlossy");
    auto applied = host->NewDefaultJob();
    result = tickets.ApplyTicket(changedTicket.Get(), *applied);
    std::printf("(plug-in conversion: %s)\n", Hex(result).c_str());
    PrintChangedSelections(*host, *job, *applied);
    PrintPluginBlock(*applied);

    std::printf("\n== Document property sheet ==\n");
    RunSheet(*host, false, OptionValue(arguments.rest, L"--screenshot"));
    return 0;
}

struct Command {
    const wchar_t* name;
    int (*run)(const Arguments&);
};

constexpr Command kCommands[] = {
    {L"install", RunInstall}, {L"info", RunInfo}, {L"ticket", RunTicket}, {L"apply", RunApply},
    {L"caps", RunCaps},       {L"ui", RunUi},     {L"demo", RunDemo},
};

}  // namespace
}  // namespace drvhost

int wmain(int argc, wchar_t** argv) {
    using namespace drvhost;
    try {
        const Arguments arguments = ParseArguments(argc, argv);
        if (arguments.command == L"--help" || arguments.command == L"-h") {
            std::fputs(kUsage, stdout);
            return 0;
        }
        for (const Command& command : kCommands) {
            if (arguments.command != command.name) continue;
            ComApartment com;
            return command.run(arguments);
        }
        std::fprintf(
            stderr, "drvhost: %s (try --help)\n",
            arguments.command.empty() ? "no command" : ("unknown command " + WideToUtf8(arguments.command)).c_str());
        return 2;
    } catch (const std::invalid_argument& e) {
        std::fprintf(stderr, "drvhost: %s\n", e.what());
        return 2;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "drvhost: %s\n", e.what());
        return 1;
    }
}
