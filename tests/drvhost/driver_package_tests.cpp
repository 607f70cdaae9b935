// The driver package: its INF and plug-in configuration file as the class installer reads them,
// the collected package holding exactly what they name, refusals of packages that cannot work,
// and the printer drvhost installs from the package.
#include "drvhost/commands.h"
#include "drvhost/driver_package.h"
#include "drvhost/printer_install.h"
#include "drvhost/text.h"

#include <gtest/gtest.h>
#include <winspool.h>

#include <algorithm>
#include <fstream>
#include <set>
#include <string>
#include <vector>

using namespace drvhost;

namespace {

using Names = std::vector<std::wstring>;

const Names kCopyList = {L"zxtalu.gpd", L"zxtalu.ini",         L"zxtaluUI14.dll", L"mortalures18.dll",
                         L"unires.dll", L"mortaluDataMap.xml", L"zxtaluudm.dll",  L"zxbuio.dll"};

std::wstring CollectedPackage() { return ProgramDirectory() + L"..\\package\\"; }

std::set<std::wstring> Lowered(const Names& names) {
    std::set<std::wstring> lowered;
    for (std::wstring name : names) {
        std::transform(name.begin(), name.end(), name.begin(), ::towlower);
        lowered.insert(name);
    }
    return lowered;
}

Names FilesIn(const std::wstring& directory) {
    Names files;
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW((directory + L"*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return files;
    do {
        if (!(found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) files.push_back(found.cFileName);
    } while (FindNextFileW(search, &found));
    FindClose(search);
    return files;
}

// A package of its own in a fresh temporary folder: the INF, the configuration file and empty
// files for the other names.
class TempPackage {
public:
    TempPackage(const std::string& inf, const std::string& ini, const Names& files) {
        wchar_t temp[MAX_PATH];
        GetTempPathW(MAX_PATH, temp);
        m_directory = std::wstring(temp) + L"drvhost-package-" + std::to_wstring(++s_count) + L"\\";
        CreateDirectoryW(m_directory.c_str(), nullptr);
        for (const std::wstring& file : FilesIn(m_directory)) DeleteFileW((m_directory + file).c_str());
        if (!inf.empty()) Write(L"test.inf", inf);
        if (!ini.empty()) Write(L"test.ini", ini);
        for (const std::wstring& file : files) Write(file, "");
    }
    // Without the trailing backslash, as a user names a folder.
    std::wstring Directory() const { return m_directory.substr(0, m_directory.size() - 1); }

    std::string Error() const {
        try {
            ReadDriverPackage(Directory());
        } catch (const PackageError& e) {
            return e.what();
        }
        return "no error";
    }

private:
    void Write(const std::wstring& name, const std::string& text) {
        std::ofstream((m_directory + name).c_str(), std::ios::binary) << text;
    }

    static inline int s_count = 0;
    std::wstring m_directory;
};

constexpr char kTestInf[] = R"(; a package of the same shape as the sample's
[Version]
Signature="$Windows NT$"
[Manufacturer]
%Maker% = Maker, NTamd64.10.0   ; the x64 models
[Maker.NTamd64.10.0]
"%Maker% Model; One" = INSTALL
[INSTALL.NTamd64]
CopyFiles = @test.gpd, PLUGIN, \
            @extra.dll
DataSection = DATA
DataFile = test.gpd
Include = ntprint.inf
Needs = UNIDRV.OEM, XPSDRV.OEM
[DATA]
DriverFile = mxdwdrv.dll
ConfigFile = unidrvui.dll
[PLUGIN]
test.ini
plugin.dll
[Strings]
Maker = "Test Maker"
)";
constexpr char kTestIni[] = "# the plug-ins\r\n[OEMFiles]\r\nOEMConfigFile1=plugin.dll\r\n";
const Names kTestFiles = {L"test.gpd", L"plugin.dll", L"extra.dll"};

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
    return text.replace(text.find(from), from.size(), to);
}

}  // namespace

TEST(DriverPackage, TheCollectedPackageHoldsTheInfAndExactlyWhatItCopies) {
    const DriverPackage package = ReadDriverPackage(CollectedPackage());
    EXPECT_EQ(L"ZX Inkjet Simulator Driver", package.driverName);
    EXPECT_EQ(kCopyList, package.files);
    EXPECT_EQ(L"zxtalu.ini", package.pluginConfigFile);
    EXPECT_EQ(L"zxtaluUI14.dll", package.pluginFile);
    Names expected = package.files;
    expected.push_back(package.infFile);
    EXPECT_EQ(Lowered(expected), Lowered(FilesIn(CollectedPackage())));
}

TEST(DriverPackage, ReadsTheInfSyntaxPrinterPackagesUse) {
    const TempPackage temp(kTestInf, kTestIni, kTestFiles);
    const DriverPackage package = ReadDriverPackage(temp.Directory());
    EXPECT_EQ(L"Test Maker Model; One", package.driverName);
    EXPECT_EQ(L"mxdwdrv.dll", package.driverFile);  // from the data section
    EXPECT_EQ(L"unidrvui.dll", package.configFile);
    EXPECT_EQ(L"test.gpd", package.dataFile);
    EXPECT_EQ(Names({L"ntprint.inf"}), package.includes);
    EXPECT_EQ(Names({L"UNIDRV.OEM", L"XPSDRV.OEM"}), package.needs);
    EXPECT_EQ(Names({L"test.gpd", L"test.ini", L"plugin.dll", L"extra.dll"}), package.files);
    EXPECT_EQ(Names({L"test.ini", L"plugin.dll", L"extra.dll"}), package.DependentFiles());
    EXPECT_EQ(L"plugin.dll", package.pluginFile);
}

TEST(DriverPackage, RefusesAPackageThatCannotWorkInOneLine) {
    struct Refusal {
        std::string inf;
        std::string ini;
        Names files;
        std::string error;  // the temporary folder's name stands for itself
    };
    const std::vector<Refusal> refusals = {
        {"", kTestIni, kTestFiles, "FOLDER holds no driver package: it has no .inf file"},
        {kTestInf, kTestIni, {L"test.gpd", L"plugin.dll"}, "test.inf copies extra.dll, which is not in FOLDER"},
        {Replaced(kTestInf, "test.ini\n", ""), kTestIni, kTestFiles,
         "test.inf names no UI plug-in: its copy list has no plug-in configuration file (.ini)"},
        {kTestInf, "[OEMFiles]\nOEMConfigFile1 = plugin.dll\n", kTestFiles,
         "test.ini names no UI plug-in (no OEMConfigFile1 in [OEMFiles])"},
        {kTestInf, "[OEMFiles]\nOEMConfigFile1=other.dll\n", kTestFiles,
         "test.ini names the UI plug-in other.dll, which test.inf does not copy"},
        {Replaced(kTestInf, "[PLUGIN]", "[PLUGINS]"), kTestIni, kTestFiles,
         "test.inf copies the file list [PLUGIN], which it does not have"},
        {Replaced(kTestInf, "@test.gpd, ", ""), kTestIni, kTestFiles,
         "test.inf names the DataFile test.gpd but does not copy it"},
        {Replaced(kTestInf, "Include = ntprint.inf", ""), kTestIni, kTestFiles,
         "test.inf names the core driver file mxdwdrv.dll but neither copies it nor includes an INF"},
        {Replaced(kTestInf, "[Maker.NTamd64.10.0]", "[Maker]"), kTestIni, kTestFiles,
         "test.inf has no models section [Maker.NTamd64.10.0] with a model"},
    };
    for (const Refusal& refusal : refusals) {
        const TempPackage temp(refusal.inf, refusal.ini, refusal.files);
        std::string error = temp.Error();
        const std::string folder = WideToUtf8(temp.Directory());
        if (const size_t at = error.find(folder); at != std::string::npos) error.replace(at, folder.size(), "FOLDER");
        EXPECT_EQ(refusal.error, error);
    }
}

// The driver named after the INF's model, the simulated core driver, the feature description as
// data file and the copy list as dependent files; the plug-in loads from there.
TEST(DriverPackage, DrvhostInstallsThePrinterFromTheCollectedPackage) {
    struct Captured : Console {
        void Out(std::string_view text) override { out += text; }
        void Error(std::string_view line) override { error = line; }
        std::string out, error;
    } console;
    const std::wstring printer = L"drvhost package printer";
    ASSERT_EQ(0, RunDrvhost(Names{L"install", L"--package", CollectedPackage(), L"--printer", printer}, console))
        << console.error;

    HANDLE handle = nullptr;
    ASSERT_TRUE(OpenPrinterW(const_cast<LPWSTR>(printer.c_str()), &handle, nullptr));
    DWORD needed = 0;
    GetPrinterDriverW(handle, nullptr, 3, nullptr, 0, &needed);
    std::vector<BYTE> buffer(needed);
    ASSERT_TRUE(GetPrinterDriverW(handle, nullptr, 3, buffer.data(), needed, &needed));
    ClosePrinter(handle);
    const auto* info = reinterpret_cast<const DRIVER_INFO_3W*>(buffer.data());
    EXPECT_STREQ(L"ZX Inkjet Simulator Driver", info->pName);
    const std::wstring directory = DriverDirectoryOf(printer);
    EXPECT_EQ(directory + kCoreDriverFile, info->pDriverPath);
    EXPECT_EQ(directory + kCoreDriverFile, info->pConfigFile);
    EXPECT_EQ(directory + kDescriptionFile, info->pDataFile);
    Names dependents;
    for (const wchar_t* file = info->pDependentFiles; *file; file += wcslen(file) + 1) {
        const std::wstring path(file);
        dependents.push_back(path.substr(path.find_last_of(L'\\') + 1));
    }
    EXPECT_EQ(Lowered(Names(kCopyList.begin() + 1, kCopyList.end())), Lowered(dependents));

    console.out.clear();
    ASSERT_EQ(0, RunDrvhost(Names{L"--printer", printer, L"info"}, console)) << console.error;
    EXPECT_NE(std::string::npos, console.out.find("plug-in signature:   0x5844534D")) << console.out;
}
