// The string libraries: where they are loaded from, what a missing one does, their lifetime with
// the UI plug-in objects; the message box, window text and system version helpers.
#include "core/resource_libraries.h"
#include "core/ui_interface.h"
#include "drvhost/printer_install.h"
#include "tests/settings/settings_support.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace zxtest;

namespace {

// Library loads and frees through the platform table, recorded. A load whose path ends with
// `missing` fails; the others get made-up handles, or real modules with `forwardToSystem`.
struct LibraryLog {
    static inline std::vector<std::wstring> loaded;
    static inline std::vector<HMODULE> freed;
    static inline std::wstring missing;
    static inline bool forwardToSystem = false;

    static HMODULE Module(size_t load) { return reinterpret_cast<HMODULE>(static_cast<ULONG_PTR>(0x10000 * load)); }

    static HMODULE WINAPI Load(LPCWSTR path, HANDLE, DWORD flags) {
        loaded.emplace_back(path);
        if (!missing.empty() && loaded.back().ends_with(missing)) return nullptr;
        return forwardToSystem ? ::LoadLibraryExW(path, nullptr, flags) : Module(loaded.size());
    }
    static BOOL WINAPI Free(HMODULE module) {
        freed.push_back(module);
        return forwardToSystem ? ::FreeLibrary(module) : TRUE;
    }
    static zx::ResourcePlatform Platform(zx::ResourcePlatform base, bool system = false) {
        loaded.clear();
        freed.clear();
        missing.clear();
        forwardToSystem = system;
        base.loadLibrary = &Load;
        base.freeLibrary = &Free;
        return base;
    }
};

const std::wstring kDriverDirectory = L"C:\\drivers\\x64\\3\\";

zx::ResourcePlatform SpoolerWithDriverDirectory() {
    FakeSpooler::Reset(kDriverDirectory + L"zxcoresim.dll");
    return LibraryLog::Platform(FakeSpooler::Platform());
}

class FakeSpoolerTest : public testing::Test {
protected:
    FakeSpoolerTest() : platform(SpoolerWithDriverDirectory()) {}
    ~FakeSpoolerTest() override { zx::FreeResourceLibraries(); }

    ScopedResourcePlatform platform;
};

}  // namespace

TEST_F(FakeSpoolerTest, BothLibrariesComeFromTheDriverFilesDirectoryOnceForTheProcess) {
    EXPECT_EQ(S_OK, zx::LoadResourceLibraries(L"Printer"));
    const std::vector<std::wstring> paths = {kDriverDirectory + L"mortalures18.dll", kDriverDirectory + L"unires.dll"};
    EXPECT_EQ(paths, LibraryLog::loaded);
    EXPECT_EQ(LibraryLog::Module(1), zx::UiStringLibrary());
    EXPECT_EQ(LibraryLog::Module(2), zx::FallbackStringLibrary());
    EXPECT_EQ(2, FakeSpooler::opened);
    EXPECT_EQ(2, FakeSpooler::closed);

    EXPECT_EQ(S_OK, zx::LoadResourceLibraries(L"Printer"));  // a second sheet reuses them
    EXPECT_EQ(2u, LibraryLog::loaded.size());

    zx::FreeResourceLibraries();
    EXPECT_EQ((std::vector<HMODULE>{LibraryLog::Module(1), LibraryLog::Module(2)}), LibraryLog::freed);
    EXPECT_EQ(nullptr, zx::UiStringLibrary());
    EXPECT_EQ(nullptr, zx::FallbackStringLibrary());
}

TEST_F(FakeSpoolerTest, AMissingUniresFreesMortalures18Again) {
    LibraryLog::missing = L"\\unires.dll";
    EXPECT_EQ(E_FAIL, zx::LoadResourceLibraries(L"Printer"));
    EXPECT_EQ(2u, LibraryLog::loaded.size());
    EXPECT_EQ(std::vector<HMODULE>{LibraryLog::Module(1)}, LibraryLog::freed);
    EXPECT_EQ(nullptr, zx::UiStringLibrary());
    EXPECT_EQ(nullptr, zx::FallbackStringLibrary());
    EXPECT_EQ(FakeSpooler::opened, FakeSpooler::closed);
}

TEST_F(FakeSpoolerTest, WithoutThePrinterOrItsDriverFileNothingIsLoaded) {
    FakeSpooler::openFails = true;
    EXPECT_EQ(nullptr, zx::LoadResourceLibrary(L"Printer", L"unires"));
    FakeSpooler::openFails = false;
    EXPECT_EQ(nullptr, zx::LoadResourceLibrary(nullptr, L"unires"));
    EXPECT_EQ(nullptr, zx::LoadResourceLibrary(L"Printer", nullptr));
    FakeSpooler::driverQueryFails = true;
    EXPECT_EQ(nullptr, zx::LoadResourceLibrary(L"Printer", L"unires"));
    FakeSpooler::driverQueryFails = false;
    FakeSpooler::driverPath = L"zxcoresim.dll";  // no directory: never searched for elsewhere
    EXPECT_EQ(nullptr, zx::LoadResourceLibrary(L"Printer", L"unires"));
    EXPECT_TRUE(LibraryLog::loaded.empty());
    EXPECT_EQ(FakeSpooler::opened, FakeSpooler::closed);

    // A printer handle of the caller's is used as it is, and not closed.
    const int opened = FakeSpooler::opened;
    FakeSpooler::driverPath = kDriverDirectory + L"zxcoresim.dll";
    const auto callersPrinter = reinterpret_cast<HANDLE>(static_cast<ULONG_PTR>(0x77));
    EXPECT_EQ(LibraryLog::Module(1), zx::LoadResourceLibrary(nullptr, L"unires", callersPrinter));
    EXPECT_EQ(callersPrinter, FakeSpooler::queriedPrinters.back());
    EXPECT_EQ(opened, FakeSpooler::opened);
    EXPECT_EQ(opened, FakeSpooler::closed);
}

TEST_F(FakeSpoolerTest, TheLastUiObjectTakesTheLibrariesWithIt) {
    ASSERT_EQ(0, VUIInterfaceImpl::LiveCount());
    zx::ComPtr<VUIInterfaceImpl> first, second;
    *first.GetAddressOf() = new VUIInterfaceImpl();
    *second.GetAddressOf() = new VUIInterfaceImpl();
    ASSERT_EQ(S_OK, zx::LoadResourceLibraries(L"Printer"));
    first.Reset();
    EXPECT_TRUE(LibraryLog::freed.empty());
    EXPECT_NE(nullptr, zx::UiStringLibrary());
    second.Reset();
    EXPECT_EQ(2u, LibraryLog::freed.size());
    EXPECT_EQ(nullptr, zx::UiStringLibrary());
}

TEST(StringLibraries, AnInstalledPrinterLoadsTheBuiltLibrariesFromItsDriverDirectory) {
    drvhost::PrinterSetup setup;
    setup.printerName = L"settings test printer";
    setup.sourceDirectory = drvhost::ProgramDirectory();
    const drvhost::InstalledPrinter printer = drvhost::InstallPrinter(setup);
    ScopedResourcePlatform platform(LibraryLog::Platform(zx::RealResourcePlatform(), true));

    ASSERT_EQ(S_OK, zx::LoadResourceLibraries(setup.printerName.c_str()));
    const std::vector<std::wstring> paths = {printer.driverDirectory + L"mortalures18.dll",
                                             printer.driverDirectory + L"unires.dll"};
    EXPECT_EQ(paths, LibraryLog::loaded);
    EXPECT_EQ(L"Plain Paper", LoadedText(zx::UiStringLibrary(), 501));
    EXPECT_EQ(L"Flip on long edge", LoadedText(zx::FallbackStringLibrary(), 11041));
    EXPECT_EQ(L"", LoadedText(zx::UiStringLibrary(), 11041));
    zx::FreeResourceLibraries();
    EXPECT_EQ(2u, LibraryLog::freed.size());
}

namespace {

struct MessageLog {
    static inline LANGID language = 0x0409;
    static inline HWND owner = nullptr;
    static inline std::wstring text, caption;
    static inline UINT type = 0;

    static LANGID WINAPI Language() { return language; }
    static int WINAPI Show(HWND window, LPCWSTR shownText, LPCWSTR shownCaption, UINT shownType) {
        owner = window;
        text = shownText;
        caption = shownCaption;
        type = shownType;
        return IDOK;
    }
    static zx::ResourcePlatform Platform() {
        zx::ResourcePlatform platform = zx::RealResourcePlatform();
        platform.userDefaultUILanguage = &Language;
        platform.messageBox = &Show;
        return platform;
    }
};

}  // namespace

TEST(UiMessages, ArabicAndHebrewUsersReadMessagesRightToLeft) {
    BuiltStringLibraries libraries(MessageLog::Platform());
    const auto owner = reinterpret_cast<HWND>(static_cast<ULONG_PTR>(0x4242));
    const std::pair<LANGID, UINT> cases[] = {{0x0409, MB_OK}, {0x040D, MB_OK | MB_RTLREADING},
                                             {0x0401, MB_OK | MB_RTLREADING}, {0x0C01, MB_OK | MB_RTLREADING},
                                             {0x0429, MB_OK}};
    for (const auto& [language, type] : cases) {
        MessageLog::language = language;
        EXPECT_EQ(IDOK, zx::ShowUiMessage(owner, 39, 41));
        EXPECT_EQ(type, MessageLog::type) << std::hex << language;
    }
    EXPECT_EQ(owner, MessageLog::owner);
    EXPECT_EQ(L"Type a name for the printing shortcut.", MessageLog::text);
    EXPECT_EQ(L"Printing Shortcuts", MessageLog::caption);

    EXPECT_EQ(IDOK, zx::ShowUiMessage(owner, 9999, 41));  // a text the library lacks shows empty
    EXPECT_EQ(L"", MessageLog::text);
}

TEST(UiText, WindowsGetTextsOfMortalures18) {
    BuiltStringLibraries libraries;
    HWND window = ::CreateWindowExW(0, L"STATIC", L"before", 0, 0, 0, 10, 10, HWND_MESSAGE, nullptr, nullptr, nullptr);
    if (window == nullptr) GTEST_SKIP() << "no window can be created here";
    wchar_t text[64];
    EXPECT_TRUE(zx::SetUiText(window, 22));
    ::GetWindowTextW(window, text, 64);
    EXPECT_STREQ(L"Print on both sides manually", text);
    zx::SetUiText(window, 9999);
    ::GetWindowTextW(window, text, 64);
    EXPECT_STREQ(L"", text);
    ::DestroyWindow(window);
}

TEST(SystemVersion, MajorVersionIsSixWhenItCannotBeRead) {
    zx::ResourcePlatform platform = zx::RealResourcePlatform();
    platform.osVersion = [](RTL_OSVERSIONINFOW*) { return false; };
    {
        ScopedResourcePlatform unreadable(platform);
        EXPECT_EQ(6u, zx::GetSystemMajorVersion());
    }
    platform.osVersion = [](RTL_OSVERSIONINFOW* version) {
        version->dwMajorVersion = 5;
        return true;
    };
    {
        ScopedResourcePlatform older(platform);
        EXPECT_EQ(5u, zx::GetSystemMajorVersion());
    }
    EXPECT_GE(zx::GetSystemMajorVersion(), 6u);  // Wine answers as Windows 7 or later
}
