// Cost of the document property sheet with the plug-in, through drvhost on the sample printer: the
// whole opening (CommonUIProp, DocumentPropertySheets, the sheet and its start page, the Printing
// Shortcuts page, created and closed) against the same sheet of the core driver without a
// plug-in, timed call by call and interleaved; and the Printing Shortcuts page's WM_INITDIALOG
// alone with 25 stored shortcuts. Needs a display. Argument: rounds (default 40).
#include "bench/bench_timing.h"
#include "drvhost/driver_host.h"
#include "drvhost/plugin_stub.h"
#include "drvhost/printer_install.h"
#include "drvhost/sheet_window.h"
#include "drvhost/ui_session.h"
#include "util/scoped.h"

#include <commctrl.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>

using namespace drvhost;

namespace {

constexpr int kWarmUpRounds = 3;
constexpr int kDefaultRounds = 40;
constexpr int kStoredShortcuts = 25;
constexpr wchar_t kShortcutDataKey[] = L"PrinterDriverData\\PrintShortcutData";
// A printer of its own, so that the stored shortcuts do not show on the simulated printer.
constexpr wchar_t kBenchmarkPrinter[] = L"ZX Sheet Benchmark Printer";

// A UI plug-in that leaves everything to the core driver: the sheet as it is without the plug-in.
class CoreDriverOnly final : public PluginStub {
public:
    STDMETHODIMP GetInfo(DWORD mode, PVOID buffer, DWORD, PDWORD needed) override {
        *needed = sizeof(DWORD);
        *static_cast<DWORD*>(buffer) = mode == OEMGI_GETREQUESTEDHELPERINTERFACES ? 0 : 1;
        return S_OK;
    }
    STDMETHODIMP DevMode(DWORD, POEMDMPARAM param) override {
        param->cbBufSize = 0;
        return S_OK;
    }
    STDMETHODIMP PublishDriverInterface(IUnknown*) override { return S_OK; }
};

void StoreShortcuts(const std::wstring& printerName) {
    std::wstring name = printerName;
    zx::unique_printer printer;
    PRINTER_DEFAULTSW defaults{nullptr, nullptr, PRINTER_ALL_ACCESS};
    if (!::OpenPrinterW(name.data(), printer.put(), &defaults)) throw std::runtime_error("cannot open the printer");
    const std::wstring text = L"0,0,154,";
    for (int i = 0; i < kStoredShortcuts; ++i) {
        const std::wstring value = L"Benchmark shortcut " + std::to_wstring(i);
        ::SetPrinterDataExW(printer.get(), kShortcutDataKey, value.c_str(), REG_SZ,
                            reinterpret_cast<BYTE*>(const_cast<wchar_t*>(text.c_str())),
                            static_cast<DWORD>(text.size() * sizeof(wchar_t)));
    }
}

void OpenAndClose(DriverHost& host) {
    auto job = host.NewDefaultJob();
    UiSession session(host, FeatureSheet::Document, job.get());
    session.Open();
    std::string problem;
    if (!OpenAndCloseSheet(session, problem)) throw std::runtime_error(problem);
}

// The page's dialog made from the description the plug-in handed over, as the sheet makes it:
// its WM_INITDIALOG runs inside the creation.
double InitDialogMicroseconds(const std::vector<BYTE>& description, HWND parent) {
    PROPSHEETPAGEW page{};
    std::memcpy(&page, description.data(), std::min(description.size(), sizeof(page)));
    HWND dialog = nullptr;
    const double elapsed = bench::MicrosecondsOf([&] {
        dialog = ::CreateDialogParamW(page.hInstance, page.pszTemplate, parent, page.pfnDlgProc,
                                      reinterpret_cast<LPARAM>(&page));
    });
    if (dialog == nullptr) throw std::runtime_error("the page's dialog could not be made");
    ::DestroyWindow(dialog);
    return elapsed;
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
    try {
        const int rounds = argc > 1 ? std::max(5, _wtoi(argv[1])) : kDefaultRounds;
        INITCOMMONCONTROLSEX controls{sizeof(controls), ICC_WIN95_CLASSES | ICC_STANDARD_CLASSES};
        ::InitCommonControlsEx(&controls);
        if (!HasDisplay()) throw std::runtime_error("no display (run under xvfb-run)");

        PrinterSetup setup;
        setup.printerName = kBenchmarkPrinter;
        setup.sourceDirectory = ProgramDirectory();
        const InstalledPrinter printer = InstallPrinter(setup);
        StoreShortcuts(printer.name);
        const PrinterDescription description = LoadPrinterDescription(printer.dataFile);
        DriverHost withPlugin(description, printer.pluginFile, printer.name);
        CoreDriverOnly plain;
        DriverHost withoutPlugin(description, ComPtr<IPrintOemUI>(&plain), printer.name);

        bench::Series with, without;
        for (int round = 0; round < kWarmUpRounds + rounds; ++round) {
            // The order alternates, so that neither kind always runs after the other.
            const bool pluginFirst = round % 2 == 0;
            const double first = bench::MicrosecondsOf([&] { OpenAndClose(pluginFirst ? withPlugin : withoutPlugin); });
            const double second =
                bench::MicrosecondsOf([&] { OpenAndClose(pluginFirst ? withoutPlugin : withPlugin); });
            if (round < kWarmUpRounds) continue;
            with.Add(pluginFirst ? first : second);
            without.Add(pluginFirst ? second : first);
        }
        bench::PrintSeries("sheet_without_plugin", without);
        bench::PrintSeries("sheet_with_plugin", with);
        bench::Print("sheet_with_plugin_ratio_to_without", with.Median() / without.Median());

        auto job = withPlugin.NewDefaultJob();
        UiSession session(withPlugin, FeatureSheet::Document, job.get());
        session.Open();
        if (session.PageDescriptions().empty()) throw std::runtime_error("the plug-in added no page");
        HWND parent =
            ::CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 800, 600, nullptr, nullptr, nullptr, nullptr);
        bench::Series initDialog;
        for (int round = 0; round < kWarmUpRounds + rounds; ++round) {
            const double elapsed = InitDialogMicroseconds(session.PageDescriptions().front(), parent);
            if (round >= kWarmUpRounds) initDialog.Add(elapsed);
        }
        ::DestroyWindow(parent);
        bench::PrintSeries("shortcuts_page_initdialog_with_25_stored", initDialog);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "property_sheet_bench: %s\n", error.what());
        return 1;
    }
}
