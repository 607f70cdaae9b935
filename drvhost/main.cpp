// drvhost: stands in for the printer driver's core configuration module, loads the plug-in the
// way it does and shows what the plug-in does.
#include "drvhost/plugin_host.h"

#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>

namespace {

void PrintIdentity(const drvhost::PluginHost& host) {
    auto ui = host.CreateUi();
    if (!ui) throw std::runtime_error("the plug-in gives no UI object");
    DWORD value = 0, needed = 0;
    ui->GetInfo(OEMGI_GETSIGNATURE, &value, sizeof(value), &needed);
    std::printf("signature:          0x%08lX\n", value);
    ui->GetInfo(OEMGI_GETVERSION, &value, sizeof(value), &needed);
    std::printf("version:            %lu\n", value);
    ui->GetInfo(OEMGI_GETREQUESTEDHELPERINTERFACES, &value, sizeof(value), &needed);
    std::printf("requested helpers:  0x%lX%s\n", value, (value & OEMPUBLISH_IPRINTCOREHELPER) ? " (core helper)" : "");
    OEMDMPARAM param{};
    param.cbSize = sizeof(param);
    ui->DevMode(OEMDM_SIZE, &param);
    std::printf("private DEVMODE:    %lu bytes\n", param.cbBufSize);

    auto provider = host.CreateTicketProvider();
    INT* versions = nullptr;
    INT count = 0;
    if (provider && SUCCEEDED(provider->GetSupportedVersions(nullptr, &versions, &count)) && count > 0) {
        std::printf("PrintTicket schema: version %d\n", versions[0]);
        ::CoTaskMemFree(versions);
    }
    std::printf("XPS converter:      %s\n", host.CreateXpsConverter() ? "adjusts imageable area, compression, dpi" : "absent");
}

int Usage(FILE* out) {
    std::fputs("usage: drvhost <command>\n"
               "  info    load the plug-in and print what it reports about itself\n"
               "  demo    run the simulated printer end to end\n",
               out);
    return out == stdout ? 0 : 2;
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
    if (argc < 2) return Usage(stderr);
    const std::wstring command = argv[1];
    if (command == L"--help" || command == L"-h") return Usage(stdout);
    try {
        if (command == L"info" || command == L"demo") {
            drvhost::PluginHost host(drvhost::PluginBesideProgram());
            PrintIdentity(host);
            return 0;
        }
        std::fprintf(stderr, "drvhost: unknown command (try --help)\n");
        return 2;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "drvhost: %s\n", e.what());
        return 1;
    }
}
