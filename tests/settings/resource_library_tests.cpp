// The string libraries: where they are loaded from, what a missing one does, their lifetime; the
// message box and the system version; the name tables and paper helpers measured against them.
#include "core/class_factory.h"
#include "core/ui_interface.h"
#include "resources/paper_names.h"
#include "resources/resource_libraries.h"
#include "resources/resource_names.h"
#include "resources/string_ids.h"
#include "settings/paper.h"
#include "tests/settings/settings_support.h"
#include "tests/support/fake_core_helper.h"
#include "util/spooler_platform.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <set>
#include <sstream>
#include <thread>

using namespace zxtest;

namespace {

const std::wstring kDriverDirectory = L"C:\\drivers\\x64\\3\\";

// What the test platform was told and what it saw. A path ending with `missing` fails to load.
struct {
    bool fakeSpooler = false;
    std::wstring driverPath = kDriverDirectory + L"zxcoresim.dll";
    bool openFails = false, driverQueryFails = false;
    int opened = 0, closed = 0;
    std::wstring missing;
    std::vector<std::wstring> loaded;
    std::vector<HMODULE> freed;
    LANGID language = 0x0409;
    std::wstring messageText, messageCaption;
    UINT messageType = 0;
} fake;

HMODULE MadeUpModule(size_t load) { return reinterpret_cast<HMODULE>(0x10000 * load); }

struct TestPlatforms {
    zx::ResourcePlatform resources;
    zx::SpoolerPlatform spooler;
};

// A platform that records library loads and message boxes. With `fakeSpooler` it answers for one
// printer whose driver file is `fake.driverPath`, fails a query for a null printer, and hands
// out made-up modules instead of loading.
TestPlatforms TestPlatform(bool fakeSpooler) {
    fake = {};
    fake.fakeSpooler = fakeSpooler;
    zx::ResourcePlatform platform = zx::RealResourcePlatform();
    platform.loadLibrary = [](LPCWSTR path, HANDLE, DWORD flags) {
        fake.loaded.emplace_back(path);
        if (!fake.missing.empty() && fake.loaded.back().ends_with(fake.missing)) return HMODULE{};
        return fake.fakeSpooler ? MadeUpModule(fake.loaded.size()) : ::LoadLibraryExW(path, nullptr, flags);
    };
    platform.freeLibrary = [](HMODULE module) -> BOOL {
        fake.freed.push_back(module);
        return fake.fakeSpooler || ::FreeLibrary(module);
    };
    platform.userDefaultUILanguage = [] { return fake.language; };
    platform.messageBox = [](HWND, LPCWSTR text, LPCWSTR caption, UINT type) {
        std::tie(fake.messageText, fake.messageCaption, fake.messageType) = std::tuple(text, caption, type);
        return IDOK;
    };
    zx::SpoolerPlatform spooler = zx::RealSpoolerPlatform();
    if (!fakeSpooler) return {platform, spooler};
    spooler.openPrinter = [](LPWSTR, LPHANDLE printer, LPPRINTER_DEFAULTSW) -> BOOL {
        *printer = fake.openFails ? nullptr : reinterpret_cast<HANDLE>(ULONG_PTR{++fake.opened + 0x5150u});
        return !fake.openFails;
    };
    spooler.closePrinter = [](HANDLE) -> BOOL { return ++fake.closed > 0; };
    // Answers level 2 as the spooler does: the structure, then the path it points at.
    spooler.getPrinterDriver = [](HANDLE printer, LPWSTR, DWORD level, LPBYTE buffer, DWORD size,
                                  LPDWORD needed) -> BOOL {
        if (fake.driverQueryFails || printer == nullptr || level != 2) return FALSE;
        const DWORD pathBytes = static_cast<DWORD>((fake.driverPath.size() + 1) * sizeof(wchar_t));
        *needed = sizeof(DRIVER_INFO_2W) + pathBytes;
        if (buffer == nullptr || size < *needed) return FALSE;
        auto* info = reinterpret_cast<DRIVER_INFO_2W*>(buffer);
        info->pDriverPath = reinterpret_cast<LPWSTR>(buffer + sizeof(DRIVER_INFO_2W));
        std::memcpy(info->pDriverPath, fake.driverPath.c_str(), pathBytes);
        return TRUE;
    };
    return {platform, spooler};
}

// A platform in force for a scope; the libraries loaded through it are freed on leaving.
struct PlatformScope {
    explicit PlatformScope(const TestPlatforms& platforms)
        : previous{zx::ReplaceResourcePlatform(platforms.resources), zx::ReplaceSpoolerPlatform(platforms.spooler)} {}
    ~PlatformScope() {
        zx::FreeResourceLibraries();
        zx::ReplaceResourcePlatform(previous.resources);
        zx::ReplaceSpoolerPlatform(previous.spooler);
    }
    TestPlatforms previous;
};

// The string libraries built beside the tests, installed with a printer and loaded through the
// spooler by the plug-in's own code.
struct BuiltStringLibraries : PlatformScope {
    BuiltStringLibraries() : PlatformScope(TestPlatform(false)) {
        EXPECT_EQ(S_OK, zx::LoadResourceLibraries(kSettingsPrinter));
    }
    const std::wstring driverDirectory = InstallSamplePrinter(kSettingsPrinter);
};

std::wstring LoadedText(HMODULE library, UINT id) {
    zx::UiString text;
    zx::LoadUiString(library, id, text);
    return text;
}

std::vector<std::string> SplitAt(const std::string& text, char separator) {
    std::stringstream stream(text);
    std::vector<std::string> pieces;
    for (std::string piece; std::getline(stream, piece, separator);) pieces.push_back(piece);
    return pieces;
}

struct FakeSpoolerTest : testing::Test, PlatformScope {
    FakeSpoolerTest() : PlatformScope(TestPlatform(true)) {}
};

}  // namespace

// Loaded together from the driver file's directory, once for the process, until the last UI
// object goes, however many providers print threads make meanwhile (each request passes a UI
// object through the factory); a missing unires frees mortalures18 again.
TEST_F(FakeSpoolerTest, BothLibrariesOrNeither) {
    ASSERT_EQ(0, VUIInterfaceImpl::LiveCount());
    zx::ComPtr<VUIInterfaceImpl> first, second;
    *first.GetAddressOf() = new VUIInterfaceImpl();
    *second.GetAddressOf() = new VUIInterfaceImpl();
    EXPECT_EQ(S_OK, zx::LoadResourceLibraries(L"Printer"));
    EXPECT_EQ((std::vector<std::wstring>{kDriverDirectory + L"mortalures18.dll", kDriverDirectory + L"unires.dll"}),
              fake.loaded);
    EXPECT_EQ(std::pair(MadeUpModule(1), MadeUpModule(2)),
              std::pair(zx::UiStringLibrary(), zx::FallbackStringLibrary()));
    EXPECT_EQ(std::pair(2, 2), std::pair(fake.opened, fake.closed));

    EXPECT_EQ(S_OK, zx::LoadResourceLibraries(L"Printer"));  // a second sheet reuses them
    EXPECT_EQ(2u, fake.loaded.size());
    first.Reset();
    zx::ComPtr<IClassFactory> factory;
    *factory.GetAddressOf() = new VUIClassFactory();
    std::vector<std::thread> printThreads;
    for (int thread = 0; thread < 4; ++thread) {
        printThreads.emplace_back([&factory] {
            for (int request = 0; request < 20000; ++request) {
                IUnknown* provider = nullptr;
                if (SUCCEEDED(factory->CreateInstance(nullptr, IID_IPrintOemPrintTicketProvider,
                                                      reinterpret_cast<void**>(&provider)))) {
                    provider->Release();
                }
            }
        });
    }
    for (std::thread& thread : printThreads) thread.join();
    EXPECT_EQ(1, VUIInterfaceImpl::LiveCount());
    EXPECT_TRUE(fake.freed.empty());
    second.Reset();
    EXPECT_EQ((std::vector<HMODULE>{MadeUpModule(1), MadeUpModule(2)}), fake.freed);

    fake.missing = L"\\unires.dll";
    EXPECT_EQ(E_FAIL, zx::LoadResourceLibraries(L"Printer"));
    EXPECT_EQ((std::vector<HMODULE>{MadeUpModule(1), MadeUpModule(2), MadeUpModule(3)}), fake.freed);
    EXPECT_EQ((std::pair<HMODULE, HMODULE>()), std::pair(zx::UiStringLibrary(), zx::FallbackStringLibrary()));
}

TEST_F(FakeSpoolerTest, WithoutThePrinterOrItsDriverFileNothingIsLoaded) {
    fake.openFails = true;
    EXPECT_EQ(nullptr, zx::LoadResourceLibrary(L"Printer", L"unires"));
    fake.openFails = false;
    EXPECT_EQ(nullptr, zx::LoadResourceLibrary(nullptr, L"unires"));
    EXPECT_EQ(nullptr, zx::LoadResourceLibrary(L"Printer", nullptr));
    fake.driverQueryFails = true;
    EXPECT_EQ(nullptr, zx::LoadResourceLibrary(L"Printer", L"unires"));
    fake.driverQueryFails = false;
    fake.driverPath = L"zxcoresim.dll";  // no directory: never searched for elsewhere
    EXPECT_EQ(nullptr, zx::LoadResourceLibrary(L"Printer", L"unires"));
    EXPECT_TRUE(fake.loaded.empty());
    EXPECT_EQ(fake.opened, fake.closed);

    // The caller's printer handle is used as it is and not closed.
    const std::pair openedAndClosed(fake.opened, fake.closed);
    fake.driverPath = kDriverDirectory + L"zxcoresim.dll";
    const auto callersPrinter = reinterpret_cast<HANDLE>(ULONG_PTR{0x77});
    EXPECT_EQ(MadeUpModule(1), zx::LoadResourceLibrary(nullptr, L"unires", callersPrinter));
    EXPECT_EQ(openedAndClosed, std::pair(fake.opened, fake.closed));
}

TEST(StringLibraries, ATextForEveryNumberThePluginLoadsAndTheSamplePrintersDisplayNames) {
    const BuiltStringLibraries libraries;
    EXPECT_EQ((std::vector<std::wstring>{libraries.driverDirectory + L"mortalures18.dll",
                                         libraries.driverDirectory + L"unires.dll"}),
              fake.loaded);
    std::set<UINT> numbers(StringId::kDirectlyLoaded.begin(), StringId::kDirectlyLoaded.end());
    for (const zx::ResourceNameEntry& entry : zx::ResourceNameEntries()) {
        if (!std::string_view(entry.name).starts_with("IDB_")) numbers.insert(static_cast<UINT>(entry.number));
    }
    for (const zx::PaperNameRow& row : zx::PaperNameRows()) numbers.insert(static_cast<UINT>(row.stringId));

    for (UINT number : numbers) {
        HMODULE holder = zx::UiStringLibrary(), other = zx::FallbackStringLibrary();
        if (number >= 10000) std::swap(holder, other);
        EXPECT_FALSE(LoadedText(holder, number).empty()) << number;
        EXPECT_TRUE(LoadedText(other, number).empty()) << number;
    }

    // Snapping selects a media type, and the shortcuts page a paper size, by display name.
    const drvhost::PrinterDescription printer = SamplePrinter();
    const auto feature = [&](std::string_view keyword) -> const drvhost::FeatureDescription& {
        return printer.features[printer.FindFeature(keyword).value()];
    };
    const zx::PrintShortcutNameTable names;
    const auto textOf = [&](const std::string& name) {
        return LoadedText(zx::UiStringLibrary(), static_cast<UINT>(names.LookupResourceName(name).value_or(0)));
    };

    // The all-settings list names every media type in the core driver's order, after the chosen key.
    const auto& media = feature("MediaType").options;
    const std::wstring& allSettings = feature("AllSettingsfor_PS").options[0].displayName;
    const std::vector<std::string> mediaKeys = SplitAt(std::string(allSettings.begin(), allSettings.end()), ';');
    ASSERT_EQ(media.size() + 1, mediaKeys.size());
    for (size_t i = 0; i < media.size(); ++i) EXPECT_EQ(media[i].displayName, textOf(mediaKeys[i + 1]));

    for (const auto& rule : feature("SnappingData").options) {
        const std::wstring mediaName = textOf(SplitAt(rule.keyword, ':').at(4));
        EXPECT_EQ(1, std::ranges::count(media, mediaName, &drvhost::OptionDescription::displayName)) << rule.keyword;
    }

    for (const auto& paper : feature("PaperSize").options) {
        if (paper.keyword == "CUSTOMSIZE") continue;
        const UINT number = zx::PaperStringId(paper.keyword).value_or(0);
        EXPECT_EQ(paper.displayName, LoadedText(zx::UiStringLibrary(), number)) << paper.keyword;
    }
}

TEST(ResourceNames, ExactLookupsAndARepeatedNameKeepsItsFirstNumber) {
    const zx::ResourceNameEntry repeated[] = {{"AB", 1}, {"B", 2}, {"AB", 3}};
    const zx::PrintShortcutNameTable table(repeated);
    EXPECT_EQ(2u, table.Size());
    EXPECT_EQ(1, table.LookupResourceName("AB").value_or(-1));
    for (const char* unknown : {"ab", "A", "ABC", ""}) EXPECT_FALSE(table.LookupResourceName(unknown)) << unknown;
}

TEST(PaperIndex, CountsThePaperOptionsWithoutTheCustomSize) {
    FakeCoreHelper helper;
    helper.SetOptionList("PaperSize", {"A4", "CUSTOMSIZE", "LETTER"});
    const std::pair<const char*, DWORD> cases[] = {{"LETTER", 1}, {"A4", 0}, {"CUSTOMSIZE", 0}, {"B5", 0}};
    for (const auto& [current, index] : cases) {
        helper.SetOption("PaperSize", current);
        EXPECT_EQ(index, zx::CurrentPaperIndex(&helper)) << current;
        EXPECT_EQ(std::string_view(current) == "CUSTOMSIZE", zx::IsCustomPaperSize(&helper)) << current;
    }
    EXPECT_EQ(std::vector<DWORD>(helper.askedDevModeSizes.size(), 0), helper.askedDevModeSizes);

    const PCSTR twoCustom[] = {"CUSTOMSIZE", "A4", nullptr, "CUSTOMSIZE", "LETTER"};
    EXPECT_EQ(2u, zx::PaperIndexAmong(twoCustom, "LETTER"));
    EXPECT_EQ(0u, zx::PaperIndexAmong({}, "LETTER"));
    helper.behaviour = FakeCoreHelper::Behaviour::FailEveryCall;
    EXPECT_EQ(0u, zx::CurrentPaperIndex(&helper));
    EXPECT_FALSE(zx::IsCustomPaperSize(&helper));
}

// The index skips the custom size; unknown papers give no name; the item's option is found by
// display name in any letter case.
TEST(PaperDisplayName, NamesByPaperIndexAndTheItemPositionOfTheName) {
    const BuiltStringLibraries libraries;
    SheetBed sheet(R"(*Feature: PaperSize {
        *Option: CUSTOMSIZE { *Name: "Custom" } *Option: LETTER { *Name: "LETTER" } *Option: A4 { *Name: "a4" }
        *Option: ZX_UNKNOWN { *Name: "Unknown" } })");
    // ZX_UNKNOWN is not in the paper table; there is no fourth paper.
    const std::pair<DWORD, const wchar_t*> cases[] = {{1, L"A4"}, {0, L"Letter"}, {2, nullptr}, {3, nullptr}};
    for (const auto& [index, name] : cases) {
        zx::UiString text = L"sentinel";
        EXPECT_EQ(name != nullptr, zx::PaperDisplayName(sheet.core.CoreHelper(), index, text)) << index;
        EXPECT_STREQ(name ? name : L"sentinel", text);
    }
    EXPECT_EQ(std::tuple(2, 1, 0),
              std::tuple(sheet.properties.PaperItemPosition(1), sheet.properties.PaperItemPosition(0),
                         sheet.properties.PaperItemPosition(2)));
    sheet.Item("PaperSize")->pOptType->pOptParam[2].pData = reinterpret_cast<LPWSTR>(ULONG_PTR{575});
    EXPECT_EQ(0, sheet.properties.PaperItemPosition(1));  // a resource number is never a match
}

TEST(UiMessages, ArabicAndHebrewUsersReadMessagesRightToLeft) {
    const BuiltStringLibraries libraries;
    // Any Arabic sublanguage counts; Persian, though written right to left, does not.
    const std::pair<LANGID, UINT> cases[] = {
        {0x0409, MB_OK}, {0x040D, MB_OK | MB_RTLREADING}, {0x0C01, MB_OK | MB_RTLREADING}, {0x0429, MB_OK}};
    for (const auto& [language, type] : cases) {
        fake.language = language;
        EXPECT_EQ(IDOK, zx::ShowUiMessage(nullptr, 39, 41));
        EXPECT_EQ(type, fake.messageType) << std::hex << language;
    }
    EXPECT_EQ(L"Type a name for the printing shortcut.", fake.messageText);
    EXPECT_EQ(L"Printing Shortcuts", fake.messageCaption);
    zx::ShowUiMessage(nullptr, 9999, 41);  // a text the library lacks shows empty
    EXPECT_EQ(L"", fake.messageText);
}

TEST(SystemVersion, MajorVersionIsSixWhenItCannotBeRead) {
    EXPECT_GE(zx::GetSystemMajorVersion(), 6u);  // Wine answers as Windows 7 or later
    TestPlatforms platforms{zx::RealResourcePlatform(), zx::RealSpoolerPlatform()};
    platforms.resources.osVersion = [](RTL_OSVERSIONINFOW*) { return false; };
    const PlatformScope unreadable(platforms);
    EXPECT_EQ(6u, zx::GetSystemMajorVersion());
}
