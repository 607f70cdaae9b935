#include "drvhost/printer_install.h"

#include "devicesim/device_sim.h"
#include "drvhost/driver_package.h"
#include "drvhost/hresult_text.h"
#include "drvhost/text.h"
#include "util/scoped.h"

#include <winspool.h>

#include <cwchar>
#include <stdexcept>
#include <vector>

namespace drvhost {
namespace {

[[noreturn]] void Fail(const std::string& what) {
    throw std::runtime_error(what + " failed: " + Win32ErrorText(::GetLastError()));
}

void CopyInto(const std::wstring& from, const std::wstring& to, const std::string& what) {
    if (!::CopyFileW(from.c_str(), to.c_str(), FALSE)) {
        Fail("copying " + what + " " + WideToUtf8(from) + " to " + WideToUtf8(to));
    }
}

// The dependent-files list: file names separated by NULs, ending with an empty name.
std::wstring DependentFiles(const std::vector<std::wstring>& names) {
    std::wstring list;
    for (const std::wstring& name : names) list += name + L'\0';
    return list + L'\0';
}

template <typename Info>
std::vector<BYTE> QueryPrinterDriver(HANDLE printer, DWORD level) {
    DWORD needed = 0;
    ::GetPrinterDriverW(printer, nullptr, level, nullptr, 0, &needed);
    std::vector<BYTE> buffer(needed ? needed : sizeof(Info));
    if (!::GetPrinterDriverW(printer, nullptr, level, buffer.data(), static_cast<DWORD>(buffer.size()), &needed)) {
        return {};
    }
    return buffer;
}

// The directory of a full path, with its trailing backslash; empty for a bare name.
std::wstring DirectoryOf(const wchar_t* path) {
    const std::wstring text = path ? path : L"";
    const size_t slash = text.find_last_of(L'\\');
    return slash == std::wstring::npos ? std::wstring() : text.substr(0, slash + 1);
}

std::wstring PrinterDriverDirectory() {
    wchar_t directory[MAX_PATH];
    DWORD needed = 0;
    if (!::GetPrinterDriverDirectoryW(nullptr, const_cast<LPWSTR>(kDriverEnvironment), 1,
                                      reinterpret_cast<BYTE*>(directory), sizeof(directory), &needed)) {
        Fail("GetPrinterDriverDirectory");
    }
    return std::wstring(directory) + L"\\";
}

// As a driver's installer does: the files go to the printer-driver directory first, and the
// spooler copies them from there into the driver's versioned directory. The system's core
// driver files, which the package takes from the system's printer INF, are the simulated core
// driver's here.
std::wstring AddDriver(const PrinterSetup& setup) {
    const DriverPackage package = ReadDriverPackage(setup.sourceDirectory);
    const std::wstring staging = PrinterDriverDirectory();
    for (const std::wstring& file : package.files)
        CopyInto(package.directory + file, staging + file, "the driver file");
    CopyInto(ProgramDirectory() + kCoreDriverFile, staging + kCoreDriverFile, "the simulated core driver");

    std::wstring name = package.driverName, environment = kDriverEnvironment, coreDriver = kCoreDriverFile,
                 dataFile = package.dataFile, dependentList = DependentFiles(package.DependentFiles());
    DRIVER_INFO_3W info{};
    info.cVersion = 3;
    info.pName = name.data();
    info.pEnvironment = environment.data();
    info.pDriverPath = coreDriver.data();
    info.pDataFile = dataFile.data();
    info.pConfigFile = coreDriver.data();
    info.pDependentFiles = dependentList.data();
    // Replaces the files of an installed driver, so that a new build takes the old one's place.
    if (!::AddPrinterDriverExW(nullptr, 3, reinterpret_cast<BYTE*>(&info), APD_COPY_ALL_FILES)) {
        Fail("AddPrinterDriverEx");
    }
    return package.driverName;
}

bool PrinterExists(const std::wstring& printerName) {
    zx::unique_printer printer;
    return ::OpenPrinterW(const_cast<LPWSTR>(printerName.c_str()), printer.put(), nullptr) != FALSE;
}

void AddPrinter(const std::wstring& printerName, const std::wstring& driverName, const std::wstring& portName) {
    std::wstring name = printerName, driver = driverName, port = portName, processor = L"winprint", datatype = L"RAW";
    PRINTER_INFO_2W info{};
    info.pPrinterName = name.data();
    info.pPortName = port.data();
    info.pDriverName = driver.data();
    info.pPrintProcessor = processor.data();
    info.pDatatype = datatype.data();
    info.Attributes = PRINTER_ATTRIBUTE_LOCAL;
    zx::unique_printer printer(::AddPrinterW(nullptr, 2, reinterpret_cast<BYTE*>(&info)));
    if (!printer) Fail("AddPrinter");
}

bool PortExists(const std::wstring& portName) {
    DWORD needed = 0, count = 0;
    ::EnumPortsW(nullptr, 1, nullptr, 0, &needed, &count);
    std::vector<BYTE> buffer(needed ? needed : sizeof(PORT_INFO_1W));
    if (!::EnumPortsW(nullptr, 1, buffer.data(), static_cast<DWORD>(buffer.size()), &needed, &count)) return false;
    const auto* ports = reinterpret_cast<const PORT_INFO_1W*>(buffer.data());
    for (DWORD i = 0; i < count; ++i) {
        if (ports[i].pName != nullptr && portName == ports[i].pName) return true;
    }
    return false;
}

// A port of the local port monitor, added through its transceiver as the port dialogs do.
void EnsureLocalPort(const std::wstring& portName) {
    if (PortExists(portName)) return;
    std::wstring monitor = L",XcvMonitor Local Port";
    PRINTER_DEFAULTSW defaults{nullptr, nullptr, SERVER_ACCESS_ADMINISTER};
    zx::unique_printer xcv;
    if (!::OpenPrinterW(monitor.data(), xcv.put(), &defaults)) Fail("opening the local port monitor");
    DWORD needed = 0, status = 0;
    if (!::XcvDataW(xcv.get(), L"AddPort", reinterpret_cast<BYTE*>(const_cast<wchar_t*>(portName.c_str())),
                    static_cast<DWORD>((portName.size() + 1) * sizeof(wchar_t)), nullptr, 0, &needed, &status) ||
        status != ERROR_SUCCESS) {
        Fail("adding the port " + WideToUtf8(portName));
    }
}

// Points an existing printer at the package's driver and, unless `portName` is empty, at a port.
void SetDriver(const std::wstring& printerName, const std::wstring& driverName, const std::wstring& portName) {
    std::wstring name = printerName, driver = driverName, port = portName;
    PRINTER_DEFAULTSW defaults{nullptr, nullptr, PRINTER_ALL_ACCESS};
    zx::unique_printer printer;
    if (!::OpenPrinterW(name.data(), printer.put(), &defaults)) Fail("OpenPrinter");
    DWORD needed = 0;
    ::GetPrinterW(printer.get(), 2, nullptr, 0, &needed);
    std::vector<BYTE> buffer(needed ? needed : sizeof(PRINTER_INFO_2W));
    if (!::GetPrinterW(printer.get(), 2, buffer.data(), static_cast<DWORD>(buffer.size()), &needed)) Fail("GetPrinter");
    auto* info = reinterpret_cast<PRINTER_INFO_2W*>(buffer.data());
    const bool sameDriver = info->pDriverName != nullptr && driver == info->pDriverName;
    const bool samePort = port.empty() || (info->pPortName != nullptr && port == info->pPortName);
    if (sameDriver && samePort) return;
    info->pDriverName = driver.data();
    if (!port.empty()) info->pPortName = port.data();
    info->pSecurityDescriptor = nullptr;
    if (!::SetPrinterW(printer.get(), 2, buffer.data(), 0)) Fail("SetPrinter");
}

// Refused before anything is installed, so that a mistyped profile changes nothing.
void CheckReadable(const std::wstring& profile) {
    zx::unique_file file(::CreateFileW(profile.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                       FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) {
        throw std::runtime_error("cannot read the device profile " + WideToUtf8(profile) + ": " +
                                 Win32ErrorText(::GetLastError()));
    }
}

void RemoveDeviceProfile(const std::wstring& driverDirectory) {
    const std::wstring installed = driverDirectory + kDeviceProfileFile;
    if (!::DeleteFileW(installed.c_str()) && ::GetLastError() != ERROR_FILE_NOT_FOUND) {
        Fail("removing the device profile " + WideToUtf8(installed));
    }
}

}  // namespace

InstalledPrinter InstallPrinter(const PrinterSetup& setup) {
    const bool withDevice = !setup.deviceProfile.empty();
    if (withDevice) CheckReadable(setup.deviceProfile);
    const std::wstring driverName = AddDriver(setup);
    if (withDevice) EnsureLocalPort(kDevicePort);
    const bool created = !PrinterExists(setup.printerName);
    if (created) {
        AddPrinter(setup.printerName, driverName, withDevice ? kDevicePort : L"FILE:");
    } else {
        SetDriver(setup.printerName, driverName, withDevice ? kDevicePort : std::wstring());
    }
    const auto found = FindInstalledPrinter(setup.printerName);
    if (!found) Fail("GetPrinterDriver");
    InstalledPrinter installed = *found;
    installed.created = created;
    if (withDevice) {
        CopyInto(setup.deviceProfile, installed.driverDirectory + kDeviceProfileFile, "the device profile");
    } else if (setup.removeDeviceProfile) {
        RemoveDeviceProfile(installed.driverDirectory);
    }
    return installed;
}

std::optional<InstalledPrinter> FindInstalledPrinter(const std::wstring& printerName) {
    zx::unique_printer printer;
    if (!::OpenPrinterW(const_cast<LPWSTR>(printerName.c_str()), printer.put(), nullptr)) return std::nullopt;
    const std::vector<BYTE> buffer = QueryPrinterDriver<DRIVER_INFO_3W>(printer.get(), 3);
    if (buffer.empty()) return std::nullopt;
    const auto* info = reinterpret_cast<const DRIVER_INFO_3W*>(buffer.data());
    InstalledPrinter installed;
    installed.name = printerName;
    installed.driverDirectory = DirectoryOf(info->pDriverPath);
    installed.dataFile = info->pDataFile ? info->pDataFile : L"";
    for (const wchar_t* file = info->pDependentFiles; file != nullptr && *file != L'\0'; file += wcslen(file) + 1) {
        const std::wstring_view name(file);
        if (name.size() < 4 || !SameFileName(name.substr(name.size() - 4), L".ini")) continue;
        const std::wstring path = DirectoryOf(file).empty() ? installed.driverDirectory + file : std::wstring(file);
        const std::wstring plugin = PluginNamedIn(ReadTextFile(path));
        if (!plugin.empty()) installed.pluginFile = installed.driverDirectory + plugin;
        break;
    }
    return installed;
}

std::wstring DriverDirectoryOf(const std::wstring& printerName) {
    zx::unique_printer printer;
    if (!::OpenPrinterW(const_cast<LPWSTR>(printerName.c_str()), printer.put(), nullptr)) return {};
    const std::vector<BYTE> buffer = QueryPrinterDriver<DRIVER_INFO_2W>(printer.get(), 2);
    if (buffer.empty()) return {};
    return DirectoryOf(reinterpret_cast<const DRIVER_INFO_2W*>(buffer.data())->pDriverPath);
}

std::wstring ProgramDirectory() {
    wchar_t path[MAX_PATH];
    const DWORD length = ::GetModuleFileNameW(nullptr, path, MAX_PATH);
    std::wstring directory(path, length);
    return directory.substr(0, directory.find_last_of(L'\\') + 1);
}

}  // namespace drvhost
