// Cost of the plug-in's PrintTicket conversions and PrintCapabilities completion on the sample
// printer's default job, through drvhost, against the floor that any DOM-based conversion pays:
// loading and serialising the same document with MSXML 6. Two printers are measured side by
// side, one on FILE: (no device answers) and one on the device simulator's port with the
// colour-duplex profile (a device that answers).
//
// Every call is timed on its own. Floors and conversions are interleaved call by call, in an
// order that rotates from round to round, and the first rounds are dropped as warm-up; each
// series is summed up by its median and its 10th and 90th percentiles, and the ratios are ratios
// of medians, so that a busy machine moves them little. With --breakdown, the median of each
// converter and of the provider's own steps follows, measured on the plug-in's code linked into
// this program, with what one debugger line costs and how many each conversion writes. Last, the process's memory and handles after 100 and after N conversions
// (10 000 unless a number is given). One figure per line: name, then value.
#include "bench/bench_timing.h"
#include "device/udm_client.h"
#include "drvhost/driver_host.h"
#include "drvhost/print_schema.h"
#include "drvhost/printer_install.h"
#include "drvhost/ticket_host.h"
#include "drvhost/xml_document.h"
#include "printschema/application_detection.h"
#include "printschema/bidi_converter.h"
#include "printschema/booklet_converter.h"
#include "printschema/nup_converter.h"
#include "printschema/paper_size_converter.h"
#include "printschema/ticket_handler.h"
#include "printschema/ticket_provider.h"

#include <psapi.h>

#include <algorithm>
#include <cstdio>
#include <cwchar>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

using namespace drvhost;
using bench::MicrosecondsOf;
using bench::Print;
using bench::PrintSeries;
using bench::Series;

namespace {

constexpr int kWarmUpRounds = 20;
constexpr int kTimedRounds = 200;
constexpr int kLeakCheckConversions = 10000;  // the argument may ask for fewer

// A timed step: what runs untimed before it, and the call that is timed.
struct Step {
    Step(std::string name, std::function<void()> prepare, std::function<void()> call)
        : name(std::move(name)), prepare(std::move(prepare)), call(std::move(call)) {}

    std::string name;
    std::function<void()> prepare;
    std::function<void()> call;
    Series series;
};

// Runs every step once per round, starting each round one step further on, and keeps the times
// of the rounds after the warm-up.
void RunInterleaved(std::vector<Step>& steps) {
    for (int round = 0; round < kWarmUpRounds + kTimedRounds; ++round) {
        for (size_t i = 0; i < steps.size(); ++i) {
            Step& step = steps[(i + static_cast<size_t>(round)) % steps.size()];
            if (step.prepare) step.prepare();
            const double microseconds = MicrosecondsOf(step.call);
            if (round >= kWarmUpRounds) step.series.Add(microseconds);
        }
    }
}

const Series& SeriesNamed(const std::vector<Step>& steps, const std::string& name) {
    return std::find_if(steps.begin(), steps.end(), [&name](const Step& step) { return step.name == name; })->series;
}

// Counted by probing: the process handle count is not reported under every Windows.
long OpenHandles() {
    long open = 0;
    for (ULONG_PTR value = 4; value < 0x10000; value += 4) {
        DWORD flags = 0;
        if (::GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags)) ++open;
    }
    return open;
}

SIZE_T CommittedBytes() {
    PROCESS_MEMORY_COUNTERS counters{};
    counters.cb = sizeof(counters);
    ::GetProcessMemoryInfo(::GetCurrentProcess(), &counters, sizeof(counters));
    return counters.PagefileUsage;
}

// One installed printer with the plug-in loaded by drvhost, its provider bound, its default job
// and the documents its conversions start from.
struct Printer {
    Printer(const char* label, const std::wstring& name, const std::wstring& deviceProfile) : label(label) {
        PrinterSetup setup;
        setup.printerName = name;
        setup.sourceDirectory = ProgramDirectory();
        setup.deviceProfile = deviceProfile;
        const InstalledPrinter installed = InstallPrinter(setup);
        host = std::make_unique<DriverHost>(LoadPrinterDescription(installed.driverDirectory + kDescriptionFile),
                                            installed.driverDirectory + kPluginFile, installed.name);
        tickets = std::make_unique<TicketHost>(*host);
        job = host->NewDefaultJob();
        baseTicket = BuildPrintTicket(
            host->Core().Description(), [this](size_t f) { return job->Selection(f); }, tickets->DeviceNamespace());
        capabilities = BuildPrintCapabilities(host->Core().Description(), tickets->DeviceNamespace());
        auto ticket = ParseXml(baseTicket);
        if (FAILED(ToTicket(ticket.Get()))) throw std::runtime_error("the conversion to a PrintTicket fails");
        convertedTicket = SerializeXml(ticket.Get());
        ticket = ParseXml(convertedTicket);
        if (FAILED(ToDevMode(ticket.Get()))) throw std::runtime_error("the conversion to a DEVMODE fails");
    }

    HRESULT ToTicket(IXMLDOMDocument2* ticket) {
        return tickets->Provider()->ConvertDevModeToPrintTicket(job->TotalSize(), job->Public(), job->PluginBlockSize(),
                                                                job->PluginBlock(), ticket);
    }
    HRESULT ToDevMode(IXMLDOMDocument2* ticket) {
        return tickets->Provider()->ConvertPrintTicketToDevMode(ticket, job->TotalSize(), job->Public(),
                                                                job->PluginBlockSize(), job->PluginBlock());
    }

    std::string label;
    std::unique_ptr<DriverHost> host;
    std::unique_ptr<TicketHost> tickets;
    std::unique_ptr<JobDevMode> job;
    std::wstring baseTicket, convertedTicket, capabilities;
};

// The three provider calls of a printer, each on a freshly parsed document.
void AddProviderSteps(std::vector<Step>& steps, Printer& printer) {
    auto ticket = std::make_shared<ComPtr<IXMLDOMDocument2>>();
    auto capabilities = std::make_shared<ComPtr<IXMLDOMDocument2>>();
    steps.push_back({printer.label + ".devmode_to_printticket",
                     [&printer, ticket] { *ticket = ParseXml(printer.baseTicket); },
                     [&printer, ticket] { printer.ToTicket(ticket->Get()); }});
    steps.push_back({printer.label + ".printticket_to_devmode",
                     [&printer, ticket] { *ticket = ParseXml(printer.convertedTicket); },
                     [&printer, ticket] { printer.ToDevMode(ticket->Get()); }});
    steps.push_back({printer.label + ".complete_printcapabilities",
                     [&printer, ticket, capabilities] {
                         *ticket = ParseXml(printer.convertedTicket);
                         *capabilities = ParseXml(printer.capabilities);
                     },
                     [&printer, ticket, capabilities] {
                         printer.tickets->Provider()->CompletePrintCapabilities(ticket->Get(), capabilities->Get());
                     }});
}

// The provider's work taken apart, on the plug-in's code linked into this program: the steps
// the provider takes around its converters, then each converter in the provider's order.
class Breakdown {
public:
    explicit Breakdown(Printer& printer)
        : m_printer(printer),
          m_helper(printer.host->Core().CoreHelper()),
          m_client(nullptr, printer.host->Printer(), printer.host->Core().CoreHelper()) {
        m_client.Connect();
        m_converters.push_back({"booklet", std::make_unique<VBookletDMPrintticketConv>()});
        m_converters.push_back({"nup", std::make_unique<CNUpDMPTConv>()});
        m_converters.push_back({"paper_size", std::make_unique<CPaperSizeDMPTConv>()});
        m_converters.push_back({"bidi", std::make_unique<CBidiDMPTConv>()});
        for (auto& [name, converter] : m_converters) {
            converter->PublishPrintTicketHelper(m_helper);
            m_client.Attach(converter.get());
        }
    }
    ~Breakdown() { m_client.DetachAll(); }

    void AddSteps(std::vector<Step>& steps) {
        const std::string prefix = "breakdown." + m_printer.label + ".";
        steps.push_back({prefix + "binding", nullptr, [this] { Bind(); }});
        steps.push_back({prefix + "notification", nullptr, [this] { m_client.Notify(); }});
        steps.push_back({prefix + "device_query", nullptr, [this] { m_client.GetData(); }});
        steps.push_back({prefix + "application_detection", nullptr, [] { PrintingApplicationName(); }});
        // What each line a conversion writes to the debugger costs.
        steps.push_back({prefix + "debugger_line", nullptr, [] { ::OutputDebugStringW(L"appendChild succeeded..\n"); }});
        steps.push_back({prefix + "ticket_handler", [this] { Load(m_printer.baseTicket); },
                         [this] { m_document->Ticket(); }});
        steps.push_back({prefix + "capabilities_handler", [this] { Load(m_printer.capabilities); },
                         [this] { m_document->Capabilities(); }});
        JobDevMode& job = *m_printer.job;
        // Each converter on a document whose handler is made: the provider makes it once per call.
        for (auto& [name, converter] : m_converters) {
            IFeatureDMPTConvert* each = converter.get();
            steps.push_back({prefix + name + ".devmode_to_printticket",
                             [this] {
                                 Load(m_printer.baseTicket).Ticket();
                                 m_client.Notify();
                             },
                             [each, &job, this] {
                                 each->ConvertDevModeToPrintTicket(job.TotalSize(), job.Public(), job.PluginBlockSize(),
                                                                   job.PluginBlock(), *m_document);
                             }});
            steps.push_back({prefix + name + ".printticket_to_devmode",
                             [this] { Load(m_printer.convertedTicket).Ticket(); },
                             [each, &job, this] {
                                 each->ConvertPrintTicketToDevMode(*m_document, job.TotalSize(), job.Public(),
                                                                   job.PluginBlockSize(), job.PluginBlock());
                             }});
            steps.push_back({prefix + name + ".complete_printcapabilities",
                             [this] { Load(m_printer.capabilities).Capabilities(); },
                             [each, this] { each->CompletePrintCapabilities(nullptr, *m_document); }});
        }
    }

private:
    VConversionDocument& Load(const std::wstring& text) {
        m_document.reset();
        m_xml = ParseXml(text);
        m_document.emplace(m_xml.Get());
        return *m_document;
    }

    void Bind() {
        zx::ComPtr<VPrintTicketProvider> provider;
        *provider.GetAddressOf() = new VPrintTicketProvider();
        OEMPTOPTS options;
        INT count = 0;
        BSTR* namespaces = nullptr;
        provider->BindPrinter(m_printer.host->Printer(), 1, &options, &count, &namespaces);
        for (INT i = 0; i < count; ++i) ::SysFreeString(namespaces[i]);
        ::CoTaskMemFree(namespaces);
    }

    Printer& m_printer;
    IPrintCoreHelperUni* m_helper;
    VUDMClient m_client;
    std::vector<std::pair<std::string, std::unique_ptr<IFeatureDMPTConvert>>> m_converters;
    ComPtr<IXMLDOMDocument2> m_xml;
    std::optional<VConversionDocument> m_document;
};

// The lines one call writes to the debugger, counted from the debug-print exceptions it raises.
LONG g_debuggerLines = 0;

LONG CALLBACK CountDebuggerLine(PEXCEPTION_POINTERS info) {
    if (info->ExceptionRecord->ExceptionCode == DBG_PRINTEXCEPTION_C) ++g_debuggerLines;
    return EXCEPTION_CONTINUE_SEARCH;
}

long DebuggerLinesOf(const std::function<void()>& call) {
    g_debuggerLines = 0;
    PVOID handler = ::AddVectoredExceptionHandler(1, CountDebuggerLine);
    call();
    ::RemoveVectoredExceptionHandler(handler);
    return g_debuggerLines;
}

void PrintDebuggerLines(Printer& printer) {
    const long toTicket = DebuggerLinesOf([&printer] { printer.ToTicket(ParseXml(printer.baseTicket).Get()); });
    const long toDevMode = DebuggerLinesOf([&printer] { printer.ToDevMode(ParseXml(printer.convertedTicket).Get()); });
    Print("breakdown." + printer.label + ".devmode_to_printticket_debugger_lines", toTicket);
    Print("breakdown." + printer.label + ".printticket_to_devmode_debugger_lines", toDevMode);
}

void PrintRatios(const std::vector<Step>& steps, const Printer& printer) {
    const double ticketFloor = SeriesNamed(steps, "floor.printticket").Median();
    const double capabilitiesFloor = SeriesNamed(steps, "floor.printcapabilities").Median();
    const std::pair<const char*, double> calls[] = {{".devmode_to_printticket", ticketFloor},
                                                    {".printticket_to_devmode", ticketFloor},
                                                    {".complete_printcapabilities", capabilitiesFloor}};
    for (const auto& [call, floor] : calls) {
        const std::string name = printer.label + call;
        PrintSeries(name, SeriesNamed(steps, name));
        Print(name + "_ratio_to_floor", SeriesNamed(steps, name).Median() / floor);
    }
}

void CheckForLeaks(Printer& printer, int conversions) {
    for (int conversion = 1; conversion <= conversions; ++conversion) {
        auto ticket = ParseXml(printer.baseTicket);
        printer.ToTicket(ticket.Get());
        ticket = ParseXml(printer.convertedTicket);
        printer.ToDevMode(ticket.Get());
        if (conversion == 100 || conversion == conversions) {
            const std::string after = std::to_string(conversion);
            std::printf("committed_bytes_after_%s %zu\n", after.c_str(), static_cast<size_t>(CommittedBytes()));
            std::printf("handles_after_%s %ld\n", after.c_str(), OpenHandles());
        }
    }
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
    bool breakdown = false;
    int leakCheckConversions = kLeakCheckConversions;
    for (int i = 1; i < argc; ++i) {
        if (std::wcscmp(argv[i], L"--breakdown") == 0) {
            breakdown = true;
        } else {
            leakCheckConversions = std::max(100, _wtoi(argv[i]));
        }
    }
    try {
        ComApartment com;
        Printer plain("no_device", L"ZX Benchmark Printer", L"");
        Printer device("device", L"ZX Benchmark Printer With Device",
                       ProgramDirectory() + L"devices\\colour-duplex.profile");

        std::vector<Step> steps;
        steps.push_back({"floor.printticket", nullptr, [&plain] { SerializeXml(ParseXml(plain.baseTicket).Get()); }});
        steps.push_back(
            {"floor.printcapabilities", nullptr, [&plain] { SerializeXml(ParseXml(plain.capabilities).Get()); }});
        AddProviderSteps(steps, plain);
        AddProviderSteps(steps, device);
        std::vector<std::unique_ptr<Breakdown>> breakdowns;
        if (breakdown) {
            for (Printer* printer : {&plain, &device}) {
                breakdowns.push_back(std::make_unique<Breakdown>(*printer));
                breakdowns.back()->AddSteps(steps);
            }
        }
        RunInterleaved(steps);

        PrintSeries("floor.printticket", SeriesNamed(steps, "floor.printticket"));
        PrintSeries("floor.printcapabilities", SeriesNamed(steps, "floor.printcapabilities"));
        PrintRatios(steps, plain);
        PrintRatios(steps, device);
        for (const Step& step : steps) {
            if (step.name.starts_with("breakdown.")) Print(step.name + "_median_us", step.series.Median());
        }
        if (breakdown) {
            PrintDebuggerLines(plain);
            PrintDebuggerLines(device);
        }
        breakdowns.clear();
        CheckForLeaks(plain, leakCheckConversions);
        return 0;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "ticket_conversion_bench: %s\n", e.what());
        return 1;
    }
}
