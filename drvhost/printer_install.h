// Installs a printer in the running Windows (the Wine prefix) from a driver package: the driver
// that the package's INF describes, with the files of its copy list in the driver directory and
// the simulated core driver in place of the system's core driver files, and a printer on "FILE:".
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

namespace drvhost {

inline constexpr wchar_t kDefaultPrinterName[] = L"ZX Inkjet Simulator";
inline constexpr wchar_t kDriverEnvironment[] = L"Windows x64";
// Stands in for the core driver's files (its driver and configuration modules); installed from
// beside the running program.
inline constexpr wchar_t kCoreDriverFile[] = L"zxcoresim.dll";
// The sample package's plug-in and feature description.
inline constexpr wchar_t kPluginFile[] = L"zxtaluUI14.dll";
inline constexpr wchar_t kDescriptionFile[] = L"zxtalu.gpd";
// The local port of a printer whose device the device simulator plays.
inline constexpr wchar_t kDevicePort[] = L"USB001";

struct PrinterSetup {
    std::wstring printerName = kDefaultPrinterName;
    std::wstring sourceDirectory;  // the driver package: its INF and the files it copies
    // A device profile for the device simulator: copied into the driver directory, and the
    // printer is attached to the local port kDevicePort, on which the plug-in finds the device.
    // Empty: the printer keeps its port (FILE: when it is new) and the installed profile stays,
    // unless removeDeviceProfile asks to delete it (no device answers then).
    std::wstring deviceProfile;
    bool removeDeviceProfile = false;
};

struct InstalledPrinter {
    std::wstring name;
    std::wstring driverDirectory;  // ends with a backslash
    std::wstring dataFile;         // the feature description, a full path
    // The UI plug-in that the driver's plug-in configuration file names, a full path; empty when
    // the driver has no such file.
    std::wstring pluginFile;
    bool created = false;  // false: it was there already
};

// Adds or refreshes the package's driver and adds the printer if it is missing. Throws
// std::runtime_error naming the file or the step that failed and the reason in words (a
// PackageError for a package that cannot be installed); a package or device profile that cannot
// be read is refused before anything changes.
InstalledPrinter InstallPrinter(const PrinterSetup& setup);

// The printer as installed; its plug-in is the one named by the first plug-in configuration file
// (.ini) among the driver's dependent files. Nullopt when there is no printer of that name.
std::optional<InstalledPrinter> FindInstalledPrinter(const std::wstring& printerName);

// The printer's driver directory, or empty when the printer is not installed.
std::wstring DriverDirectoryOf(const std::wstring& printerName);

// The directory of the running program, with its trailing backslash.
std::wstring ProgramDirectory();

}  // namespace drvhost
