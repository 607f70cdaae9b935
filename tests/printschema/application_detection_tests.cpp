// Application detection with the process-inspection table replaced by a stand-in host, and file
// descriptions read from the version resources of real programs built beside the tests.
#include "drvhost/printer_install.h"
#include "printschema/application_detection.h"
#include "printschema/host_process.h"
#include "printschema/ticket_handler.h"
#include "tests/printschema/dom_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cwchar>
#include <string>
#include <vector>

using namespace zxtest;

namespace {

constexpr DWORD kOwnId = 77;
constexpr DWORD kClientId = 4242;
const HANDLE kClientHandle = reinterpret_cast<HANDLE>(0xc11e);

// What the stand-in host answers, and what the detection asked of it.
struct StandInHost {
    std::wstring executable;
    std::wstring commandLine = L"host.exe";
    std::vector<std::wstring> modules;
    BOOL spoolerAnswers = TRUE;
    DWORD clientId = kClientId;
    std::wstring clientExecutable;
    bool opens = true;
    std::vector<std::pair<DWORD, DWORD>> opened;  // access, process id
    int closed = 0;
    int pathReads = 0;
};
StandInHost g_host;

DWORD CopyPath(const std::wstring& path, LPWSTR buffer, DWORD capacity) {
    const DWORD length = static_cast<DWORD>(std::min<size_t>(path.size(), capacity - 1));
    std::wmemcpy(buffer, path.c_str(), length);
    buffer[length] = L'\0';
    return length;
}

const ProcessInspection kStandIn = {
    [](HMODULE, LPWSTR path, DWORD capacity) {
        return ++g_host.pathReads, CopyPath(g_host.executable, path, capacity);
    },
    [](DWORD access, BOOL, DWORD id) {
        g_host.opened.emplace_back(access, id);
        return g_host.opens ? (id == kClientId ? kClientHandle : reinterpret_cast<HANDLE>(0x5e1f)) : nullptr;
    },
    [](HANDLE) { return ++g_host.closed, TRUE; },
    []() { return kOwnId; },
    [](HANDLE, HMODULE* modules, DWORD capacityBytes, LPDWORD neededBytes) {
        for (size_t index = 0; index < std::min<size_t>(g_host.modules.size(), capacityBytes / sizeof(HMODULE));
             ++index) {
            modules[index] = reinterpret_cast<HMODULE>(index + 1);
        }
        *neededBytes = static_cast<DWORD>(g_host.modules.size() * sizeof(HMODULE));
        return TRUE;
    },
    [](HANDLE process, HMODULE module, LPWSTR path, DWORD capacity) {
        if (process != nullptr && module == nullptr) return CopyPath(g_host.clientExecutable, path, capacity);
        return CopyPath(g_host.modules.at(reinterpret_cast<size_t>(module) - 1), path, capacity);
    },
    []() { return g_host.commandLine.data(); },
    [](PrintExecutionData* data) {
        *data = {4, g_host.clientId};
        return g_host.spoolerAnswers;
    },
};

// A program built beside the tests.
std::wstring Beside(const wchar_t* name) { return drvhost::ProgramDirectory() + name; }

class ApplicationDetection : public testing::Test {
protected:
    void SetUp() override { m_platform = ReplaceProcessInspection(kStandIn); }
    void TearDown() override {
        ReplaceProcessInspection(m_platform);
        g_host = StandInHost{};
    }
    static std::wstring Detected(const std::wstring& executable) {
        g_host.executable = executable;
        return DetectPrintingApplication().c_str();
    }

private:
    ProcessInspection m_platform{};
};

}  // namespace

TEST_F(ApplicationDetection, PlainProcessesAreNamedByTheirFileDescription) {
    EXPECT_EQ(L"My_Report_Tool", Detected(Beside(L"zx_report_tool.exe")));
    EXPECT_EQ(L"WordPerfect", Detected(Beside(L"zx_print_server.exe")));
    EXPECT_EQ(L"Deutsche_Ausgabe", Detected(Beside(L"zx_two_translations.exe")));
    EXPECT_EQ(L"Unknown", Detected(Beside(L"zx_no_version.exe")));
    EXPECT_EQ(L"Unknown", Detected(Beside(L"missing.exe")));
    std::wstring digits;
    while (digits.size() < kMaxApplicationName) digits += L"0123456789";
    EXPECT_EQ(L"_" + digits.substr(0, kMaxApplicationName - 1), Detected(Beside(L"zx_long_description.exe")));
    EXPECT_TRUE(g_host.opened.empty());
}

// The option's name must be an XML name, or the host refuses every ticket of the application.
TEST(ApplicationOptionName, CharactersAnXmlNameCannotHoldBecomeUnderscores) {
    const std::pair<const wchar_t*, const wchar_t*> cases[] = {
        {L"My  Report Tool", L"My__Report_Tool"},
        {L"7-Zip File Manager", L"_7-Zip_File_Manager"},
        {L"Notepad++", L"Notepad__"},
        {L"Microsoft\u00AE Word", L"Microsoft__Word"},
        {L"Adobe Acrobat DC (32-bit)", L"Adobe_Acrobat_DC__32-bit_"},
        {L"Paint: Editor", L"Paint__Editor"},
        {L"Explorer.EXE", L"Explorer.EXE"},
        {L"\u00DCbersicht \u00B7 Fotos", L"\u00DCbersicht_\u00B7_Fotos"},
        {L"-dash", L"_-dash"},
        {L"\u00B7dot", L"_\u00B7dot"},
        {L"Photos \U0001F4F7", L"Photos_\U0001F4F7"},  // a surrogate pair stays whole
        {L"a\xD800\x0062", L"a_b"},                    // a lone surrogate does not
    };
    for (const auto& [description, option] : cases) {
        VStringBuffer name(description);
        MakeOptionName(name);
        EXPECT_STREQ(option, name.c_str());
    }
    VStringBuffer cutPair(std::wstring(kMaxApplicationName - 1, L'a').c_str());
    cutPair.Append(L"\U0001F4F7");
    MakeOptionName(cutPair);
    EXPECT_EQ(std::wstring(kMaxApplicationName - 1, L'a'), cutPair.c_str());
}

TEST_F(ApplicationDetection, ThePrintHostOf32BitApplicationsNamesTheSpoolersClient) {
    g_host.clientExecutable = Beside(L"zx_report_tool.exe");
    EXPECT_EQ(L"My_Report_Tool", Detected(L"C:\\Windows\\splwow64.exe"));
    EXPECT_EQ((std::vector<std::pair<DWORD, DWORD>>{{0x1FFFFF, kClientId}}), g_host.opened);
    EXPECT_EQ(1, g_host.closed);
    g_host.opens = false;
    EXPECT_EQ(L"Unknown", Detected(L"C:\\Windows\\splwow64.exe"));
    g_host.opened.clear();
    g_host.opens = true;
    g_host.clientId = 0;
    EXPECT_EQ(L"Unknown", Detected(L"C:\\Windows\\splwow64.exe"));
    g_host.clientId = kClientId;
    g_host.spoolerAnswers = FALSE;
    EXPECT_EQ(L"Unknown", Detected(L"C:\\Windows\\splwow64.exe"));
    EXPECT_TRUE(g_host.opened.empty());
}

// Every host is a copy of a program with a file description, so "Unknown" shows that its rule
// decided.
TEST_F(ApplicationDetection, KnownHostsAreRecognisedByTheirFirst260ModulesOrCommandLine) {
    g_host.modules = {L"C:\\Windows\\System32\\ntdll.dll", L"C:\\Program Files\\Viewer\\PhotoViewer.dll"};
    EXPECT_EQ(L"WindowsPhotoViewer", Detected(Beside(L"hosts\\DllHost.exe")));
    EXPECT_EQ((std::vector<std::pair<DWORD, DWORD>>{{0x410, kOwnId}}), g_host.opened);
    EXPECT_EQ(1, g_host.closed);
    // Explorer's path is compared upper-cased; the gallery's module path is not.
    EXPECT_EQ(L"Unknown", Detected(Beside(L"hosts\\explorer.exe")));
    g_host.modules.push_back(L"C:\\Program Files\\Windows Photo Gallery\\PhotoViewer.dll");
    EXPECT_EQ(L"WindowsPhotoGallery", Detected(Beside(L"hosts\\explorer.exe")));
    EXPECT_EQ(L"Unknown", Detected(Beside(L"hosts\\mstsc.exe")));
    EXPECT_EQ(L"Unknown", Detected(Beside(L"hosts\\PrintDialogHost.exe")));
    EXPECT_EQ(L"Unknown", Detected(Beside(L"hosts\\rundll32.exe")));
    g_host.commandLine = L"rundll32.exe C:\\Windows\\System32\\shimgvw.dll,ImageView_PrintTo";
    EXPECT_EQ(L"Microsoft_Windows_Fax_and_Scan", Detected(Beside(L"hosts\\rundll32.exe")));

    // Only the first 260 modules are looked at.
    g_host.modules.assign(300, L"C:\\Windows\\System32\\other.dll");
    g_host.modules[280] = L"C:\\PhotoViewer.dll";
    EXPECT_EQ(L"Unknown", Detected(L"C:\\Windows\\System32\\DllHost.exe"));
    g_host.modules[259] = L"C:\\PhotoViewer.dll";
    EXPECT_EQ(L"WindowsPhotoViewer", Detected(L"C:\\Windows\\System32\\DllHost.exe"));
}

// A process runs one program: its name is found once. The print host of 32-bit applications
// serves one client after another, so its name follows the client the spooler names.
TEST_F(ApplicationDetection, TheNameIsFoundOncePerProcessOrOncePerClientOfThePrintHost) {
    g_host.executable = Beside(L"zx_report_tool.exe");
    EXPECT_EQ(L"My_Report_Tool", PrintingApplicationName());
    const int pathReads = g_host.pathReads;
    g_host.executable = Beside(L"zx_print_server.exe");
    EXPECT_EQ(L"My_Report_Tool", PrintingApplicationName());
    EXPECT_EQ(pathReads, g_host.pathReads);
    ReplaceProcessInspection(kStandIn);  // a new table forgets what the old one told
    EXPECT_EQ(L"WordPerfect", PrintingApplicationName());

    ReplaceProcessInspection(kStandIn);
    g_host.executable = L"C:\\Windows\\splwow64.exe";
    g_host.clientExecutable = Beside(L"zx_report_tool.exe");
    EXPECT_EQ(L"My_Report_Tool", PrintingApplicationName());
    EXPECT_EQ(L"My_Report_Tool", PrintingApplicationName());
    EXPECT_EQ(1u, g_host.opened.size());
    g_host.clientId = kClientId + 1;
    g_host.clientExecutable = Beside(L"zx_two_translations.exe");
    EXPECT_EQ(L"Deutsche_Ausgabe", PrintingApplicationName());
}

TEST_F(ApplicationDetection, TheTrackingFeatureIsRewrittenOnlyWhenTheTicketCarriesIt) {
    auto untouched = LoadDocument(Ticket(Feature(L"psk:PageMediaType", L"psk:Plain")));
    const std::wstring before = XmlOf(untouched.Get());
    VPrintTicketHandler plain(untouched.Get());
    RecordPrintingApplication(plain);
    EXPECT_EQ(before, XmlOf(untouched.Get()));
    EXPECT_EQ(0, g_host.pathReads);

    g_host.executable = Beside(L"zx_report_tool.exe");
    auto tracked = LoadDocument(Ticket(Feature(L"ns0000:JobZXApplicationTracking", L"ns0000:Old") +
                                       Feature(L"ns0000:JobZXApplicationTracking", L"ns0000:Older") +
                                       Feature(L"psk:PageMediaType", L"psk:Plain")));
    VPrintTicketHandler handler(tracked.Get());
    RecordPrintingApplication(handler);
    auto saved = Reparsed(tracked.Get());
    EXPECT_EQ(1, CountOf(saved.Get(), L"//psf:Feature[@name = 'ns0000:JobZXApplicationTracking']/psf:Option"));
    EXPECT_EQ(L"ns0000:My_Report_Tool",
              TextAt(saved.Get(),
                     L"/psf:PrintTicket/psf:Feature[last()][@name = 'ns0000:JobZXApplicationTracking']"
                     L"/psf:Option/@name"));
}

TEST(ApplicationDetectionOnThePlatform, ATestProgramWithoutVersionResourceIsUnknown) {
    ASSERT_EQ(RealProcessInspection().getModuleFileName, CurrentProcessInspection().getModuleFileName);
    EXPECT_STREQ(L"Unknown", DetectPrintingApplication().c_str());
}
