// Cost of the plug-in's PrintTicket conversions on the sample printer's default job, through
// drvhost, against the floor that any DOM-based conversion pays: loading and serialising the
// same ticket with MSXML 6. Also the process's memory and handles after 100 and after 10 000
// conversions. One figure per line: name, then value.
#include "drvhost/driver_host.h"
#include "drvhost/print_schema.h"
#include "drvhost/printer_install.h"
#include "drvhost/ticket_host.h"
#include "drvhost/xml_document.h"

#include <psapi.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <string>

using namespace drvhost;

namespace {

constexpr int kTimedCalls = 200;
constexpr int kLeakCheckConversions = 10000;  // the argument may ask for fewer

class Stopwatch {
public:
    Stopwatch() { ::QueryPerformanceFrequency(&m_frequency); }
    void Start() { ::QueryPerformanceCounter(&m_start); }
    void Stop() {
        LARGE_INTEGER now;
        ::QueryPerformanceCounter(&now);
        m_ticks += now.QuadPart - m_start.QuadPart;
    }
    double MicrosecondsPer(int calls) const {
        return 1e6 * static_cast<double>(m_ticks) / m_frequency.QuadPart / calls;
    }

private:
    LARGE_INTEGER m_frequency{}, m_start{};
    long long m_ticks = 0;
};

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

struct Conversions {
    IPrintOemPrintTicketProvider* provider;
    JobDevMode& job;
    const std::wstring& baseTicket;
    std::wstring convertedTicket;

    HRESULT ToTicket(Stopwatch* clock) {
        auto ticket = ParseXml(baseTicket);
        if (clock) clock->Start();
        const HRESULT hr = provider->ConvertDevModeToPrintTicket(job.TotalSize(), job.Public(), job.PluginBlockSize(),
                                                                 job.PluginBlock(), ticket.Get());
        if (clock) clock->Stop();
        if (convertedTicket.empty()) convertedTicket = SerializeXml(ticket.Get());
        return hr;
    }

    HRESULT ToDevMode(Stopwatch* clock) {
        auto ticket = ParseXml(convertedTicket);
        if (clock) clock->Start();
        const HRESULT hr = provider->ConvertPrintTicketToDevMode(ticket.Get(), job.TotalSize(), job.Public(),
                                                                 job.PluginBlockSize(), job.PluginBlock());
        if (clock) clock->Stop();
        return hr;
    }
};

void Print(const char* name, double value) { std::printf("%s %.3f\n", name, value); }

}  // namespace

int wmain(int argc, wchar_t** argv) {
    const int leakCheckConversions = argc > 1 ? std::max(100, _wtoi(argv[1])) : kLeakCheckConversions;
    try {
        ComApartment com;
        PrinterSetup setup;
        setup.sourceDirectory = ProgramDirectory();
        const InstalledPrinter printer = InstallPrinter(setup);
        DriverHost host(LoadPrinterDescription(printer.driverDirectory + kDescriptionFile),
                        printer.driverDirectory + kPluginFile, printer.name);
        TicketHost tickets(host);
        auto job = host.NewDefaultJob();
        const std::wstring base = BuildPrintTicket(
            host.Core().Description(), [&job](size_t f) { return job->Selection(f); }, tickets.DeviceNamespace());
        Conversions conversions{tickets.Provider(), *job, base, {}};
        if (FAILED(conversions.ToTicket(nullptr)) || FAILED(conversions.ToDevMode(nullptr))) {
            std::fprintf(stderr, "the plug-in's conversions fail on the default job\n");
            return 1;
        }

        Stopwatch floor, toTicket, toDevMode;
        for (int i = 0; i < kTimedCalls; ++i) {
            floor.Start();
            auto ticket = ParseXml(base);
            SerializeXml(ticket.Get());
            floor.Stop();
            conversions.ToTicket(&toTicket);
            conversions.ToDevMode(&toDevMode);
        }
        const double floorUs = floor.MicrosecondsPer(kTimedCalls);
        Print("msxml_load_and_serialise_us", floorUs);
        Print("devmode_to_printticket_us", toTicket.MicrosecondsPer(kTimedCalls));
        Print("devmode_to_printticket_ratio_to_floor", toTicket.MicrosecondsPer(kTimedCalls) / floorUs);
        Print("printticket_to_devmode_us", toDevMode.MicrosecondsPer(kTimedCalls));
        Print("printticket_to_devmode_ratio_to_floor", toDevMode.MicrosecondsPer(kTimedCalls) / floorUs);

        for (int conversion = 1; conversion <= leakCheckConversions; ++conversion) {
            conversions.ToTicket(nullptr);
            conversions.ToDevMode(nullptr);
            if (conversion == 100 || conversion == leakCheckConversions) {
                const std::string after = std::to_string(conversion);
                std::printf("committed_bytes_after_%s %zu\n", after.c_str(), static_cast<size_t>(CommittedBytes()));
                std::printf("handles_after_%s %ld\n", after.c_str(), OpenHandles());
            }
        }
        return 0;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "ticket_conversion_bench: %s\n", e.what());
        return 1;
    }
}
