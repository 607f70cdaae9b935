// The string libraries: where they are loaded from, what a missing one does, their lifetime with
// the UI plug-in objects; the message box and the system version.
#include "core/resource_libraries.h"
#include "core/ui_interface.h"
#include "drvhost/printer_install.h"
#include "tests/settings/settings_support.h"

#include <gtest/gtest.h>

using namespace zxtest;
using F = FakePlatform;

namespace {

const std::wstring kDriverDirectory = L"C:\\drivers\\x64\\3\\";

class FakeSpoolerTest : public testing::Test {
protected:
    ~FakeSpoolerTest() override { zx::FreeResourceLibraries(); }
    ScopedResourcePlatform platform{F::Reset(kDriverDirectory + L"zxcoresim.dll", true)};
};

}  // namespace

TEST_F(FakeSpoolerTest, BothLibrariesComeFromTheDriverFilesDirectoryOnceForTheProcess) {
    EXPECT_EQ(S_OK, zx::LoadResourceLibraries(L"Printer"));
    EXPECT_EQ((std::vector<std::wstring>{kDriverDirectory + L"mortalures18.dll", kDriverDirectory + L"unires.dll"}),
              F::loaded);
    EXPECT_EQ(F::MadeUpModule(1), zx::UiStringLibrary());
    EXPECT_EQ(F::MadeUpModule(2), zx::FallbackStringLibrary());
    EXPECT_EQ(2, F::opened);
    EXPECT_EQ(2, F::closed);

    EXPECT_EQ(S_OK, zx::LoadResourceLibraries(L"Printer"));  // a second sheet reuses them
    EXPECT_EQ(2u, F::loaded.size());
    zx::FreeResourceLibraries();
    EXPECT_EQ((std::vector<HMODULE>{F::MadeUpModule(1), F::MadeUpModule(2)}), F::freed);
    EXPECT_EQ(nullptr, zx::UiStringLibrary());
}

TEST_F(FakeSpoolerTest, AMissingUniresFreesMortalures18Again) {
    F::missing = L"\\unires.dll";
    EXPECT_EQ(E_FAIL, zx::LoadResourceLibraries(L"Printer"));
    EXPECT_EQ(2u, F::loaded.size());
    EXPECT_EQ(std::vector<HMODULE>{F::MadeUpModule(1)}, F::freed);
    EXPECT_EQ(nullptr, zx::UiStringLibrary());
    EXPECT_EQ(nullptr, zx::FallbackStringLibrary());
}

TEST_F(FakeSpoolerTest, WithoutThePrinterOrItsDriverFileNothingIsLoaded) {
    F::openFails = true;
    EXPECT_EQ(nullptr, zx::LoadResourceLibrary(L"Printer", L"unires"));
    F::openFails = false;
    EXPECT_EQ(nullptr, zx::LoadResourceLibrary(nullptr, L"unires"));
    EXPECT_EQ(nullptr, zx::LoadResourceLibrary(L"Printer", nullptr));
    F::driverQueryFails = true;
    EXPECT_EQ(nullptr, zx::LoadResourceLibrary(L"Printer", L"unires"));
    F::driverQueryFails = false;
    F::driverPath = L"zxcoresim.dll";  // no directory: never searched for elsewhere
    EXPECT_EQ(nullptr, zx::LoadResourceLibrary(L"Printer", L"unires"));
    EXPECT_TRUE(F::loaded.empty());
    EXPECT_EQ(F::opened, F::closed);

    // The caller's printer handle is used as it is and not closed.
    const int opened = F::opened;
    F::driverPath = kDriverDirectory + L"zxcoresim.dll";
    const auto callersPrinter = reinterpret_cast<HANDLE>(static_cast<ULONG_PTR>(0x77));
    EXPECT_EQ(F::MadeUpModule(1), zx::LoadResourceLibrary(nullptr, L"unires", callersPrinter));
    EXPECT_EQ(callersPrinter, F::queriedPrinters.back());
    EXPECT_EQ(opened, F::opened);
    EXPECT_EQ(opened, F::closed);
}

TEST_F(FakeSpoolerTest, TheLastUiObjectTakesTheLibrariesWithIt) {
    ASSERT_EQ(0, VUIInterfaceImpl::LiveCount());
    zx::ComPtr<VUIInterfaceImpl> first, second;
    *first.GetAddressOf() = new VUIInterfaceImpl();
    *second.GetAddressOf() = new VUIInterfaceImpl();
    ASSERT_EQ(S_OK, zx::LoadResourceLibraries(L"Printer"));
    first.Reset();
    EXPECT_TRUE(F::freed.empty());
    second.Reset();
    EXPECT_EQ(2u, F::freed.size());
    EXPECT_EQ(nullptr, zx::UiStringLibrary());
}

TEST(StringLibraries, AnInstalledPrinterLoadsTheBuiltLibrariesFromItsDriverDirectory) {
    drvhost::PrinterSetup setup;
    setup.printerName = L"settings test printer";
    setup.sourceDirectory = drvhost::ProgramDirectory();
    const drvhost::InstalledPrinter printer = drvhost::InstallPrinter(setup);
    zx::ResourcePlatform platform = F::Reset(L"", false);
    platform.openPrinter = zx::RealResourcePlatform().openPrinter;
    platform.getPrinterDriver = zx::RealResourcePlatform().getPrinterDriver;
    platform.closePrinter = zx::RealResourcePlatform().closePrinter;
    ScopedResourcePlatform realSpooler(platform);

    ASSERT_EQ(S_OK, zx::LoadResourceLibraries(setup.printerName.c_str()));
    EXPECT_EQ((std::vector<std::wstring>{printer.driverDirectory + L"mortalures18.dll",
                                         printer.driverDirectory + L"unires.dll"}),
              F::loaded);
    EXPECT_EQ(L"Plain Paper", LoadedText(zx::UiStringLibrary(), 501));
    EXPECT_EQ(L"Flip on long edge", LoadedText(zx::FallbackStringLibrary(), 11041));
    EXPECT_EQ(L"", LoadedText(zx::UiStringLibrary(), 11041));
    zx::FreeResourceLibraries();
}

TEST(UiMessages, ArabicAndHebrewUsersReadMessagesRightToLeft) {
    BuiltStringLibraries libraries;
    const std::pair<LANGID, UINT> cases[] = {{0x0409, MB_OK},
                                             {0x040D, MB_OK | MB_RTLREADING},
                                             {0x0401, MB_OK | MB_RTLREADING},
                                             {0x0C01, MB_OK | MB_RTLREADING},
                                             {0x0429, MB_OK}};
    for (const auto& [language, type] : cases) {
        F::language = language;
        EXPECT_EQ(IDOK, zx::ShowUiMessage(nullptr, 39, 41));
        EXPECT_EQ(type, F::messageType) << std::hex << language;
    }
    EXPECT_EQ(L"Type a name for the printing shortcut.", F::messageText);
    EXPECT_EQ(L"Printing Shortcuts", F::messageCaption);
    zx::ShowUiMessage(nullptr, 9999, 41);  // a text the library lacks shows empty
    EXPECT_EQ(L"", F::messageText);
}

TEST(SystemVersion, MajorVersionIsSixWhenItCannotBeRead) {
    zx::ResourcePlatform platform = zx::RealResourcePlatform();
    platform.osVersion = [](RTL_OSVERSIONINFOW*) { return false; };
    {
        ScopedResourcePlatform unreadable(platform);
        EXPECT_EQ(6u, zx::GetSystemMajorVersion());
    }
    EXPECT_GE(zx::GetSystemMajorVersion(), 6u);  // Wine answers as Windows 7 or later
}
