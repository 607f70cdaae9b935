// The log module configured through Wine's registry, writing real files: filtering, line
// composition, the size limit, the queue, the header, function traces and the translation of
// processor faults.
#include "diagnostics/external_monitor.h"
#include "diagnostics/file_version_info.h"
#include "diagnostics/log_function.h"
#include "diagnostics/log_module.h"
#include "diagnostics/win32_exception.h"
#include "drvhost/printer_install.h"
#include "tests/support/debugger_output.h"
#include "tests/support/failing_allocator.h"

#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <sstream>
#include <thread>

using namespace NGLogging;

// Every lookup of thread-local storage in this program passes here (the program is linked with
// --wrap for it), so that a test can count the lookups one thread makes. The first lookup of a
// thread allocates its storage.
namespace {
volatile DWORD g_watchedThread = 0;
volatile LONG g_watchedLookups = 0;
}  // namespace

extern "C" void* __real___emutls_get_address(void* object);
extern "C" void* __wrap___emutls_get_address(void* object) {
    if (g_watchedThread == ::GetCurrentThreadId()) ::InterlockedIncrement(&g_watchedLookups);
    return __real___emutls_get_address(object);
}

namespace {

constexpr wchar_t kRoot[] = L"Software\\ZX\\NG\\Logging";
constexpr wchar_t kModule[] = L"DiagModule";

// An external monitor that records each call and the thread it came on.
struct MonitorCall {
    std::string what;
    DWORD thread;
};
std::vector<MonitorCall> g_monitorCalls;

class RecordingMonitor final : public IExternalLogMonitor {
public:
    STDMETHODIMP QueryInterface(REFIID riid, void** object) override {
        const bool known = IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IDispatch) ||
                           IsEqualIID(riid, IID_IExternalLogMonitor);
        *object = known ? static_cast<IExternalLogMonitor*>(this) : nullptr;
        return known ? (AddRef(), S_OK) : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(::InterlockedIncrement(&m_count)); }
    STDMETHODIMP_(ULONG) Release() override {
        const LONG left = ::InterlockedDecrement(&m_count);
        if (left == 0) {
            Record("Release");
            delete this;
        }
        return static_cast<ULONG>(left);
    }
    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP Attach(BSTR, BSTR) override { return Record("Attach"); }
    STDMETHODIMP Detach(BSTR) override { return Record("Detach"); }
    STDMETHODIMP ClassEntered(BSTR) override { return Record("ClassEntered"); }
    STDMETHODIMP FunctionEntered(BSTR) override { return Record("FunctionEntered"); }
    STDMETHODIMP FunctionLeft(BSTR) override { return Record("FunctionLeft"); }

private:
    static HRESULT Record(const char* what) {
        g_monitorCalls.push_back({what, ::GetCurrentThreadId()});
        return S_OK;
    }
    volatile LONG m_count = 1;
};

// Registered for the calling thread's apartment while it lives.
class RegisteredMonitorClass final : public IClassFactory {
public:
    static constexpr CLSID kClass = {0x5a1f0c3e, 0x2b7d, 0x4e61, {0x9a, 0x3c, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66}};
    static constexpr wchar_t kClassText[] = L"{5A1F0C3E-2B7D-4E61-9A3C-112233445566}";

    RegisteredMonitorClass() {
        ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        EXPECT_EQ(S_OK, ::CoRegisterClassObject(kClass, this, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &m_cookie));
    }
    ~RegisteredMonitorClass() {
        ::CoRevokeClassObject(m_cookie);
        ::CoUninitialize();
    }
    STDMETHODIMP QueryInterface(REFIID riid, void** object) override {
        *object = IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IClassFactory) ? this : nullptr;
        return *object ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }  // lives on the test's stack
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP CreateInstance(IUnknown*, REFIID riid, void** object) override {
        auto* monitor = new RecordingMonitor();
        const HRESULT hr = monitor->QueryInterface(riid, object);
        monitor->Release();
        return hr;
    }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }

private:
    DWORD m_cookie = 0;
};

class LoggingTest : public testing::Test {
protected:
    void SetUp() override {
        ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, kRoot);
        wchar_t temp[MAX_PATH];
        GetTempPathW(MAX_PATH, temp);
        const std::string test = testing::UnitTest::GetInstance()->current_test_info()->name();
        logFile = std::wstring(temp) + std::wstring(test.begin(), test.end()) + L".log";
        DeleteFileW(logFile.c_str());
    }
    void TearDown() override { ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, kRoot); }

    // Settings under the root, the executable's key, the module's key or a source file's key.
    void Configure(const std::wstring& subkey, DWORD categories, DWORD options, DWORD level = 0,
                   const std::wstring* file = nullptr) {
        Set(subkey, L"LogCategories", categories);
        Set(subkey, L"LogOptions", options);
        Set(subkey, L"LogInfoDetailLevel", level);
        Set(subkey, L"LogFileName", file ? *file : logFile);
    }
    static void Set(const std::wstring& subkey, const wchar_t* name, DWORD value) {
        SetValue(subkey, name, REG_DWORD, &value, sizeof(value));
    }
    static void Set(const std::wstring& subkey, const wchar_t* name, const std::wstring& text) {
        SetValue(subkey, name, REG_SZ, text.c_str(), static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
    }
    static void SetValue(const std::wstring& subkey, const wchar_t* name, DWORD type, const void* data, DWORD size) {
        const std::wstring path = subkey.empty() ? kRoot : std::wstring(kRoot) + L"\\" + subkey;
        ASSERT_EQ(ERROR_SUCCESS, RegSetKeyValueW(HKEY_LOCAL_MACHINE, path.c_str(), name, type, data, size));
    }
    static std::wstring Executable() { return L"diagnostics_tests.exe"; }

    std::string Contents(const std::wstring& path) const {
        std::ifstream file(path.c_str(), std::ios::binary);
        std::ostringstream text;
        text << file.rdbuf();
        return text.str();
    }
    std::string Contents() const { return Contents(logFile); }

    std::wstring logFile;
};

}  // namespace

TEST_F(LoggingTest, PollIntervalComesFromTheRootKeyWithZeroMeaningThirtySeconds) {
    Configure(L"", Category::Warning, 0);
    Set(L"", L"LogParmsPollTime", 0);
    CLogModule zero(kModule, "Jan 18 2026", "09:30:15", 0, 5);
    zero.IsEnabled(nullptr, Category::Warning);
    EXPECT_EQ(30000u, zero.PollMilliseconds());

    Set(L"", L"LogParmsPollTime", 7);
    CLogModule seven(kModule, "Jan 18 2026", "09:30:15", 0, 0);
    EXPECT_EQ(30000u, seven.PollMilliseconds());  // the constructor's 0 seconds
    seven.IsEnabled(nullptr, Category::Warning);
    EXPECT_EQ(7000u, seven.PollMilliseconds());
}

// Information lines are filtered by their detail level; a bad text pointer drops its line.
TEST_F(LoggingTest, OnlyLinesOfTheLogsCategoriesAndLevelWithReadableTextAreWrittenKeepingTheLastError) {
    Configure(L"", Category::Information | Category::Warning, 0, 3);
    CLogModule log(kModule, "Jan 18 2026", "09:30:15", 0, 30);
    SetLastError(1234);
    log.WriteLine(nullptr, Category::Information | 5, nullptr, L"too detailed");
    log.WriteLine(nullptr, Category::Information | 3, nullptr, L"detailed enough");
    log.WriteLine(nullptr, Category::Debug, nullptr, L"not a category of this log");
    log.WriteLine(nullptr, Category::Warning, nullptr, L"kept");
    EXPECT_EQ(1234u, GetLastError());
    log.WriteLine(nullptr, Category::Warning, nullptr, reinterpret_cast<const wchar_t*>(0x1));
    log.WriteFormat(nullptr, Category::Warning, L"%ls", reinterpret_cast<const wchar_t*>(0x8));
    EXPECT_EQ(1234u, GetLastError());
    EXPECT_EQ(0, NGUtils::CWin32Exception::LiveCount());
    EXPECT_EQ("(I3) detailed enough\r\n(WN) kept\r\n", Contents());
}

TEST_F(LoggingTest, CompactPrefixAndDatedLinesUpToTheSizeLimitWithItsMessage) {
    Configure(L"", Category::Warning, 0x23800000);  // fourteen digits, a counter, an empty line column
    {
        CLogModule log(kModule, "Jan 18 2026", "09:30:15", 0, 30);
        log.WriteLine(nullptr, Category::Warning, nullptr, L"compact");
        EXPECT_TRUE(std::regex_match(Contents(), std::regex(R"(\d{14}:\d{10}       \(WN\) compact\r\n)")))
            << Contents();
    }
    DeleteFileW(logFile.c_str());
    Configure(L"", Category::Warning, Option::Date | Option::Time | 1);
    CLogModule log(kModule, "Jan 18 2026", "09:30:15", 0, 30);
    for (int line = 0; line < 60; ++line) log.WriteLine(nullptr, Category::Warning, nullptr, L"a line of some length");
    const std::string contents = Contents();
    const std::string message = "*** FILE SIZE LIMIT REACHED, LOGGING DISABLED FOR DiagModule MODULE ***";
    ASSERT_GE(contents.size(), 1024u);
    EXPECT_LT(contents.size(), 1024u + 80 + message.size());
    EXPECT_EQ(message, contents.substr(contents.size() - message.size()));
    EXPECT_TRUE(std::regex_search(contents, std::regex(R"(^\d{4}/\d{2}/\d{2} \d{2}:\d{2}:\d{2} \(WN\) a line)")));
}

TEST_F(LoggingTest, ExecutableAndSourceKeysOverrideTheDefaults) {
    const std::wstring sourceFile = logFile + L".source";
    DeleteFileW(sourceFile.c_str());
    Configure(L"", Category::Warning, 0);
    Configure(Executable(), Category::Debug, 0);  // overrides the root for this program
    Configure(Executable() + L"\\" + kModule + L"\\render.cpp", Category::State, Option::ProcessId, 0, &sourceFile);
    CLogModule log(kModule, "Jan 18 2026", "09:30:15", 0, 30);
    log.WriteLine(nullptr, Category::Warning, nullptr, L"root category");
    log.WriteLine(nullptr, Category::Debug, nullptr, L"executable category");
    log.WriteLine(L"render.cpp", Category::State, nullptr, L"source category");
    log.WriteLine(L"other.cpp", Category::State, nullptr, L"source without a key");
    EXPECT_EQ("(DB) executable category\r\n", Contents());
    EXPECT_EQ("[" + std::to_string(GetCurrentProcessId()) + "] (ST) source category\r\n", Contents(sourceFile));

    std::wostringstream dump;
    log.SerializeContents(dump);
    EXPECT_EQ(
        L"gLogModuleObj.SerializeContents: Source File Name: <render.cpp>, dwCategoryFlags: 271, "
        L"dwDetailLevel: 0, dwOptionFlags: 67108864, wsLogFileName: <" +
            sourceFile + L">",
        dump.str());
    DeleteFileW(sourceFile.c_str());
}

// A file that cannot be opened keeps its newest lines only, by count and by size; the debugger
// hears of every failed attempt, and the file, once it opens, of the lines dropped. Lines also
// wait while another writer holds the file.
TEST_F(LoggingTest, LinesWaitInAQueueWhileTheFileCannotBeOpenedTheNewestOnly) {
    const std::wstring folder = logFile + L".folder";
    std::wstring unopenable = folder + L"\\queued.log";
    DeleteFileW(unopenable.c_str());
    RemoveDirectoryW(folder.c_str());
    Configure(L"", Category::Warning, 0, 0, &unopenable);
    CLogModule log(kModule, "Jan 18 2026", "09:30:15", 0, 30);
    zxtest::DebuggerOutput debugger;
    for (int line = 0; line < 1500; ++line) {
        log.WriteLine(nullptr, Category::Warning, nullptr, (L"line " + std::to_wstring(line)).c_str());
    }
    const std::string report = "Unable to open log file:\r\n<" + std::string(unopenable.begin(), unopenable.end());
    EXPECT_EQ(0u, debugger.Text().find(report)) << debugger.Text().substr(0, 200);

    ASSERT_TRUE(CreateDirectoryW(folder.c_str(), nullptr));
    log.WriteLine(nullptr, Category::Warning, nullptr, L"opened");
    std::string expected = "--- Queued Lines Start ---\r\n--- 500 Queued Lines Dropped ---\r\n";
    for (int line = 500; line < 1500; ++line) expected += "(WN) line " + std::to_string(line) + "\r\n";
    EXPECT_EQ(expected + "--- Queued Lines End ---\r\n(WN) opened\r\n", Contents(unopenable));

    // A megabyte of queued lines is the most kept.
    DeleteFileW(unopenable.c_str());
    RemoveDirectoryW(folder.c_str());
    const std::wstring longLine(20000, L'x');
    for (int line = 0; line < 60; ++line) log.WriteLine(nullptr, Category::Warning, nullptr, longLine.c_str());
    ASSERT_TRUE(CreateDirectoryW(folder.c_str(), nullptr));
    log.WriteLine(nullptr, Category::Warning, nullptr, L"opened again");
    const std::string contents = Contents(unopenable);
    EXPECT_NE(std::string::npos, contents.find("--- 8 Queued Lines Dropped ---"));
    EXPECT_GT(size_t{1024 * 1024 + 1000}, contents.size());

    HANDLE holder = CreateFileW(unopenable.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, holder);
    log.WriteLine(nullptr, Category::Warning, nullptr, L"while held");
    CloseHandle(holder);
    log.WriteLine(nullptr, Category::Warning, nullptr, L"after");
    EXPECT_EQ("--- Queued Lines Start ---\r\n(WN) while held\r\n--- Queued Lines End ---\r\n(WN) after\r\n",
              Contents(unopenable).substr(contents.size()));
    DeleteFileW(unopenable.c_str());
    RemoveDirectoryW(folder.c_str());
}

TEST_F(LoggingTest, HeaderBlockOpensTheFile) {
    Configure(L"", Category::Warning | Category::Header, 0);
    CLogModule log(kModule, "Jan 18 2026", "09:30:15", 0, 30);
    log.WriteLine(nullptr, Category::Warning, nullptr, L"body");
    const std::string header = R"(\(\+\+\) Module File Name: .*diagnostics_tests\.exe \(.*\r\n)"
                               R"(\(\+\+\)     Command Line: .*\r\n)"
                               R"(\(\+\+\)     File Version: <no version info>\r\n)"
                               R"(\(\+\+\)       Process ID: )" +
                               std::to_string(GetCurrentProcessId()) +
                               R"(\r\n)"
                               R"(\(\+\+\)         Built on: Jan 18 2026 09:30:15\r\n)"
                               R"(\(\+\+\)    Log File Name: <.*\r\n)"
                               R"(\(WN\) body\r\n)";
    EXPECT_TRUE(std::regex_match(Contents(), std::regex(header))) << Contents();
}

TEST_F(LoggingTest, FunctionTracesIndentTimeAndReportTheirResults) {
    Configure(L"",
              Category::FunctionEntry | Category::FunctionExit | Category::Result | Category::ErrorText |
                  Category::Parameters,
              Option::Indent | Option::Duration);
    CLogModule log(kModule, "Jan 18 2026", "09:30:15", 0, 30);
    {
        CLogFunction outer(log, nullptr, L"zx::VPrinter::Print", 10);
        CLogFunction inner(log, nullptr, L"Render", 20, 0, false, L"page %d of %ls", 2, L"three");
        inner.ReturnBool(false);
    }
    const std::string contents = Contents();
    EXPECT_TRUE(std::regex_match(contents, std::regex("\\(->\\) zx::VPrinter::Print\r\n"
                                                      "\\(->\\) \\(IP\\)   Render, page 2 of three\r\n"
                                                      "    Return: FALSE\r\n"
                                                      "\\(<-\\)   Render \\(Dur: \\d+ us\\) \r\n"
                                                      "\\(\\*\\*\\)   \\[Err: 0x00000001\\] .+\r\n"
                                                      "\\(<-\\) VPrinter::Print \\(Dur: \\d+ us\\) \r\n")))
        << contents;
}

TEST_F(LoggingTest, AFunctionLeftByATranslatedFaultSaysSo) {
    Configure(L"", Category::FunctionEntry | Category::FunctionExit, 0);
    CLogModule log(kModule, "Jan 18 2026", "09:30:15", 0, 30);
    bool translated = false;
    try {
        CLogFunction trace(log, nullptr, L"Faulty", 1);
        struct Read {
            volatile int* address;
            int value;
            void operator()() { value = *address; }
        } read{reinterpret_cast<volatile int*>(0x10), 0};
        NGUtils::CallTranslatingFaults(read);
    } catch (const NGUtils::CAccessViolation& violation) {
        translated = !violation.IsWrite() && violation.AccessedAddress() == reinterpret_cast<void*>(0x10);
        EXPECT_STREQ(L"Access violation", violation.Message());
    }
    EXPECT_TRUE(translated);
    EXPECT_EQ(0, NGUtils::CWin32Exception::LiveCount());
    EXPECT_EQ("(->) Faulty\r\n(<-) Faulty\r\n(<-)    *** UNHANDLED EXCEPTION PENDING ***\r\n", Contents());
}

// Out of memory, logging goes quiet instead of failing its caller: no plug-in log, a module that
// writes nothing until its next line, a trace that writes nothing.
TEST_F(LoggingTest, RunningOutOfMemoryQuietensTheLogAndNeverFailsTheCaller) {
    Configure(L"", Category::Warning | Category::FunctionEntry | Category::FunctionExit, 0);
    for (zxtest::AllocationSweep sweep; sweep.NextRun();) {
        {
            const auto refusal = sweep.Refuse();
            CreatePluginLog();
        }
        if (PluginLog()) PluginLog()->WriteLine(nullptr, Category::Warning, nullptr, L"made");
        DestroyPluginLog();
    }

    // The first line makes the module's shared blocks; when that fails, the next line tries again.
    for (zxtest::AllocationSweep sweep; sweep.NextRun();) {
        DeleteFileW(logFile.c_str());
        CLogModule log(kModule, "Jan 18 2026", "09:30:15", 0, 30);
        {
            const auto refusal = sweep.Refuse();
            log.WriteLine(nullptr, Category::Warning, nullptr, L"first");
        }
        log.WriteLine(nullptr, Category::Warning, nullptr, L"second");
        EXPECT_NE(std::string::npos, Contents().find("(WN) second\r\n")) << sweep.Run();
    }

    CLogModule log(kModule, "Jan 18 2026", "09:30:15", 0, 30);
    for (zxtest::AllocationSweep sweep; sweep.NextRun();) {
        bool thrown = false;
        {
            const auto refusal = sweep.Refuse();
            try {
                CLogFunction trace(log, L"render.cpp", L"zx::VPrinter::Print", 10, 0, false, L"page %d", 2);
                trace.ReturnInt(1);
            } catch (...) {
                thrown = true;
            }
        }
        EXPECT_FALSE(thrown) << sweep.Run();
    }
}

TEST(FileVersionInfo, ValuesComeFromTheLastTranslationThatHasThem) {
    const NGUtils::CFileVersionInfo plugin((drvhost::ProgramDirectory() + L"zxtaluUI14.dll").c_str());
    EXPECT_STREQ(L"14.0.0.0", plugin.FileVersion());
    EXPECT_NE(nullptr, plugin.Fixed());
    const NGUtils::CFileVersionInfo two((drvhost::ProgramDirectory() + L"zx_two_translations.exe").c_str());
    EXPECT_STREQ(L"Deutsche Ausgabe", two.FileDescription());
    EXPECT_EQ(nullptr, NGUtils::CFileVersionInfo(L"").GetValue(L"FileVersion"));
}

// While one thread is inside a guarded call, the fault handler sees the exceptions of every
// thread. Those it does not translate, debugger output among them, pass untouched: no storage of
// the raising thread is looked up, so none is allocated during exception dispatch.
TEST(FaultTranslation, OtherThreadsExceptionsPassWithoutTouchingTheirStorage) {
    constexpr DWORD kApplicationException = 0xE0001234;
    PVOID resume = ::AddVectoredExceptionHandler(0, [](PEXCEPTION_POINTERS info) -> LONG {
        return info->ExceptionRecord->ExceptionCode == kApplicationException ? EXCEPTION_CONTINUE_EXECUTION
                                                                             : EXCEPTION_CONTINUE_SEARCH;
    });
    volatile LONG guarding = 0, done = 0;
    std::thread guarded([&] {
        struct Wait {
            volatile LONG* guarding;
            volatile LONG* done;
            void operator()() {
                *guarding = 1;
                while (*done == 0) YieldProcessor();
            }
        } wait{&guarding, &done};
        NGUtils::CallTranslatingFaults(wait);
    });
    while (guarding == 0) ::Sleep(1);
    std::thread other([] {
        g_watchedLookups = 0;
        g_watchedThread = ::GetCurrentThreadId();
        ::RaiseException(kApplicationException, 0, 0, nullptr);
        ::OutputDebugStringW(L"passes by\n");
        g_watchedThread = 0;
    });
    other.join();
    done = 1;
    guarded.join();
    ::RemoveVectoredExceptionHandler(resume);
    EXPECT_EQ(0, g_watchedLookups);
}

// The monitor belongs to the apartment of the thread that configured it: only that thread calls
// it, tells it goodbye and releases it. Traces on other threads are not reported, and a module
// destroyed on another thread leaves its monitor alone.
TEST_F(LoggingTest, TheExternalMonitorIsCalledOnlyOnTheThreadThatMadeIt) {
    const RegisteredMonitorClass monitorClass;
    Configure(L"", Category::FunctionEntry | Category::FunctionExit, 0);
    Configure(Executable(), Category::FunctionEntry | Category::FunctionExit, 0);
    Set(Executable(), L"ExtMonitorCLSID", RegisteredMonitorClass::kClassText);
    Set(Executable(), L"ExtMonitorFlags", MonitorFlag::ClassChanges | MonitorFlag::Entries | MonitorFlag::Exits);

    g_monitorCalls.clear();
    {
        CLogModule log(kModule, "Jan 18 2026", "09:30:15", 0, 30);
        { CLogFunction trace(log, nullptr, L"Sheet::Open", 1); }
        std::thread([&log] { CLogFunction trace(log, nullptr, L"Spooler::Print", 2); }).join();
    }
    auto elsewhere = std::make_unique<CLogModule>(kModule, "Jan 18 2026", "09:30:15", 0, 30);
    { CLogFunction trace(*elsewhere, nullptr, L"Sheet::Close", 3); }
    std::thread([&elsewhere] { elsewhere.reset(); }).join();

    std::vector<std::string> calls;
    for (const MonitorCall& call : g_monitorCalls) {
        EXPECT_EQ(::GetCurrentThreadId(), call.thread) << call.what;
        calls.push_back(call.what);
    }
    EXPECT_EQ((std::vector<std::string>{"Attach", "ClassEntered", "FunctionEntered", "FunctionLeft", "Detach",
                                        "Release", "Attach", "ClassEntered", "FunctionEntered", "FunctionLeft"}),
              calls);
}

TEST(LogPrefix, MicrosecondsStayExactForAnyUptime) {
    constexpr long long kTenMegahertz = 10000000;
    EXPECT_EQ(1500000, MicrosecondsOf(15000000, kTenMegahertz));
    const long long twentyDays = 20LL * 24 * 3600;
    EXPECT_EQ(twentyDays * 1000000 + 250000, MicrosecondsOf(twentyDays * kTenMegahertz + 2500000, kTenMegahertz));
    EXPECT_EQ(7, MicrosecondsOf(7, 1000000));
}
