// drvhost's command line as a user meets it: every refusal is one line with its exit status,
// names are suggested when a feature or option is mistyped, and results carry their names.
#include "drvhost/commands.h"
#include "drvhost/feature_names.h"
#include "drvhost/hresult_text.h"
#include "drvhost/printer_install.h"
#include "drvhost/text.h"
#include "devicesim/device_sim.h"

#include <gtest/gtest.h>

#include <fstream>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

using namespace drvhost;

namespace {

struct CapturedConsole : Console {
    void Out(std::string_view text) override { out += text; }
    void Error(std::string_view line) override { errors.emplace_back(line); }
    std::string out;
    std::vector<std::string> errors;
};

struct Outcome {
    int status;
    std::string error;  // the one error line, or "" when there was none
    std::string out;
};

Outcome Drvhost(std::vector<std::wstring> arguments) {
    CapturedConsole console;
    const int status = RunDrvhost(arguments, console);
    EXPECT_LE(console.errors.size(), 1u);
    return {status, console.errors.empty() ? std::string() : console.errors.front(), console.out};
}

struct Refusal {
    std::vector<std::wstring> arguments;
    int status;
    const char* line;
};

void ExpectRefusals(const std::vector<Refusal>& refusals) {
    for (const Refusal& refusal : refusals) {
        const Outcome outcome = Drvhost(refusal.arguments);
        std::string shown;
        for (const std::wstring& argument : refusal.arguments) shown += WideToUtf8(argument) + " ";
        EXPECT_EQ(refusal.status, outcome.status) << shown;
        EXPECT_EQ(refusal.line, outcome.error) << shown;
        EXPECT_EQ("", outcome.out) << shown;
    }
}

std::wstring WriteTempFile(const wchar_t* name, const std::string& bytes) {
    wchar_t directory[MAX_PATH];
    GetTempPathW(MAX_PATH, directory);
    const std::wstring path = std::wstring(directory) + name;
    std::ofstream(path.c_str(), std::ios::binary) << bytes;
    return path;
}

constexpr char kFramework[] = "http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework";

}  // namespace

TEST(CommandLine, RefusesWhatNoCommandTakesWithOneLineAndStatus2) {
    ExpectRefusals({
        {{}, 2, "no command given (try --help)"},
        {{L"print"}, 2, "unknown command \"print\" (try --help)"},
        {{L"info", L"--bogus"}, 2, "unknown option --bogus for info (try drvhost info --help)"},
        {{L"--bogus", L"info"}, 2, "unknown option --bogus for drvhost (try --help)"},
        {{L"caps", L"extra"}, 2, "unexpected argument \"extra\" for caps (try drvhost caps --help)"},
        {{L"apply"}, 2, "apply needs FILE.xml (try drvhost apply --help)"},
        {{L"apply", L"a.xml", L"b.xml"}, 2, "unexpected argument \"b.xml\" for apply (try drvhost apply --help)"},
        {{L"ticket", L"--set"}, 2, "--set needs a value (FEATURE=OPTION)"},
        {{L"ticket", L"--set", L"--set", L"A=B"}, 2, "--set needs a value (FEATURE=OPTION)"},
        {{L"ui", L"--screenshot="}, 2, "--screenshot needs a value (FILE.png)"},
        {{L"ui", L"--screenshot", L"a.png", L"--screenshot", L"b.png"}, 2, "--screenshot is given more than once"},
        {{L"ui", L"--printer-sheet=yes"}, 2, "--printer-sheet takes no value"},
        {{L"info", L"--printer"}, 2, "--printer needs a value (NAME)"},
    });
}

TEST(CommandLine, HelpComesFromTheOptionTables) {
    const Outcome general = Drvhost({L"--help"});
    EXPECT_EQ(0, general.status);
    for (const char* expected : {"install", "features", "--device PROFILE", "--set FEATURE=OPTION", "--printer-sheet",
                                 "demo", "--printer NAME", "Exit status"}) {
        EXPECT_NE(std::string::npos, general.out.find(expected)) << expected;
    }
    const Outcome ticket = Drvhost({L"ticket", L"--help"});
    EXPECT_EQ(0, ticket.status);
    EXPECT_EQ(0u, ticket.out.find("usage: drvhost [--printer NAME] ticket [--set FEATURE=OPTION ...]\n")) << ticket.out;
}

TEST(CommandLine, ResultsCarryTheirNamesAndWhatTheCoreDriverMakesOfThem) {
    EXPECT_EQ("0x00000000 S_OK", HresultText(S_OK));
    EXPECT_EQ("0x80070490 HRESULT_FROM_WIN32(ERROR_NOT_FOUND)", HresultText(HRESULT_FROM_WIN32(ERROR_NOT_FOUND)));
    EXPECT_EQ("0x80070020 HRESULT_FROM_WIN32(32)", HresultText(HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION)));
    EXPECT_EQ("0x12345678", HresultText(0x12345678));
    EXPECT_EQ("0x80004001 E_NOTIMPL: left to the core driver", PluginResultText(PluginCall::UiMethod, E_NOTIMPL));
    EXPECT_EQ("0x80004001 E_NOTIMPL", PluginResultText(PluginCall::Other, E_NOTIMPL));
    EXPECT_EQ("0x80004002 E_NOINTERFACE: ignored by the core driver, which goes on",
              PluginResultText(PluginCall::PublishDriverInterface, E_NOINTERFACE));
    EXPECT_EQ("0x80004005 E_FAIL", PluginResultText(PluginCall::UiMethod, E_FAIL));
}

TEST(CommandLine, SetNamesTheWrongPartAndTakesPrintTicketNames) {
    const auto set = [](const wchar_t* assignment) {
        return std::vector<std::wstring>{L"ticket", L"--set", assignment};
    };
    const char* noPrinter =
        "no printer named \"No Such Printer\" (install it with: drvhost install --printer \"No Such Printer\")";
    ExpectRefusals({
        {set(L"Bogus=1"), 2, "no feature \"Bogus\" (`drvhost features` lists them all)"},
        {set(L"papersize=A4"), 2, "no feature \"papersize\" (closest: PaperSize; `drvhost features` lists them all)"},
        {set(L"PaperSize=A44"), 2,
         "feature PaperSize has no option \"A44\" (closest: A4, A5, A6; `drvhost features` lists them all)"},
        {set(L"psk:PageMediaSize=psk:ISOA44"), 2,
         "feature psk:PageMediaSize has no option \"psk:ISOA44\" (closest: psk:ISOA4, psk:ISOA5, psk:ISOA6; "
         "`drvhost features` lists them all)"},
        {set(L"PaperSize"), 2, "--set takes FEATURE=OPTION, not \"PaperSize\""},
        {{L"--printer", L"No Such Printer", L"info"}, 2, noPrinter},
        {{L"features", L"--printer", L"No Such Printer"}, 2, noPrinter},
    });
    // A part of a name suggests every name holding it.
    EXPECT_EQ(std::vector<std::string>({"PageMediaSize", "MediaType"}),
              ClosestNames("Media", {"PaperSize", "PageMediaSize", "MediaType", "Duplex"}));

    const Outcome ticket = Drvhost({L"ticket", L"--set", L"psk:PageMediaSize=psk:ISOA4", L"--set", L"Duplex=VERTICAL"});
    ASSERT_EQ(0, ticket.status) << ticket.error;
    EXPECT_NE(std::string::npos, ticket.out.find("<psf:Option name=\"psk:ISOA4\"")) << ticket.out;
    EXPECT_NE(std::string::npos, ticket.out.find("<psf:Option name=\"psk:TwoSidedLongEdge\"")) << ticket.out;

    const Outcome features = Drvhost({L"features"});
    ASSERT_EQ(0, features.status) << features.error;
    EXPECT_NE(std::string::npos, features.out.find("\n  * LETTER                           psk:NorthAmericaLetter\n"));
    EXPECT_NE(std::string::npos, features.out.find("\n    A4                               psk:ISOA4\n"));
}

TEST(CommandLine, ApplyRefusesWhatIsNotAPrintTicketItCanApply) {
    const std::string framework = std::string("\"") + kFramework + "\"";
    // The file's name, its text (none: no such file) and the refusal, where FILE stands for the path.
    const std::vector<std::tuple<const wchar_t*, std::optional<std::string>, std::string>> cases = {
        {L"drvhost-missing.xml", std::nullopt, "cannot read FILE: " + Win32ErrorText(ERROR_FILE_NOT_FOUND)},
        {L"drvhost-empty.xml", "", "FILE:1:1: the file is empty"},
        {L"drvhost-text.xml", "PaperSize=A4\n", "FILE:1:1: text before the root element"},
        {L"drvhost-truncated.xml", "<psf:PrintTicket xmlns:psf=" + framework + ">\r\n  <psf:Feature",
         "FILE:2:3: the document ends inside the tag <psf:Feature>"},
        {L"drvhost-other.xml", "<?xml version=\"1.0\"?>\n<Ticket/>\n",
         "FILE is not a PrintTicket: its root element is <Ticket>, not a PrintTicket of the Print Schema framework "
         "namespace"},
        // A well-formed ticket with the framework as default namespace: the plug-in finds no prefix.
        {L"drvhost-unprefixed.xml", "<PrintTicket xmlns=" + framework + " version=\"1\"/>",
         "the plug-in's ConvertPrintTicketToDevMode returned 0x80004005 E_FAIL: FILE is not applied"},
    };
    for (const auto& [name, text, refusal] : cases) {
        const std::wstring path = WriteTempFile(name, text.value_or(""));
        if (!text) DeleteFileW(path.c_str());
        std::string line = refusal;
        line.replace(line.find("FILE"), 4, WideToUtf8(path));
        ExpectRefusals({{{L"apply", path}, 1, line.c_str()}});
    }
}

TEST(CommandLine, InstallNamesTheMissingProfileAndRemovesAnInstalledOne) {
    const std::string notFound = Win32ErrorText(ERROR_FILE_NOT_FOUND);
    ExpectRefusals({{{L"install", L"--device", L"no-such.profile"},
                     1,
                     ("cannot read the device profile no-such.profile: " + notFound).c_str()}});

    const Outcome installed = Drvhost({L"install", L"--device", ProgramDirectory() + L"devices\\mono-basic.profile"});
    ASSERT_EQ(0, installed.status) << installed.error;
    const std::wstring profile = DriverDirectoryOf(kDefaultPrinterName) + kDeviceProfileFile;
    EXPECT_NE(INVALID_FILE_ATTRIBUTES, GetFileAttributesW(profile.c_str()));

    const Outcome removed = Drvhost({L"install", L"--device", L"none"});
    ASSERT_EQ(0, removed.status) << removed.error;
    EXPECT_NE(std::string::npos, removed.out.find("device: none (the device profile is removed; no device answers)"));
    EXPECT_EQ(INVALID_FILE_ATTRIBUTES, GetFileAttributesW(profile.c_str()));
}
