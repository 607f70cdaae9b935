// Installs the simulated printer in the running Windows (the Wine prefix): its driver, with the
// plug-in and the files that live beside it in the driver directory, and a printer on "FILE:".
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace drvhost {

inline constexpr wchar_t kDefaultPrinterName[] = L"ZX Inkjet Simulator";
inline constexpr wchar_t kDriverName[] = L"ZX Inkjet Simulator Driver";
inline constexpr wchar_t kDriverEnvironment[] = L"Windows x64";
inline constexpr wchar_t kCoreDriverFile[] = L"zxcoresim.dll";
inline constexpr wchar_t kPluginFile[] = L"zxtaluUI14.dll";
inline constexpr wchar_t kDescriptionFile[] = L"zxtalu.gpd";
// The local port of a printer whose device the device simulator plays.
inline constexpr wchar_t kDevicePort[] = L"USB001";

struct PrinterSetup {
    std::wstring printerName = kDefaultPrinterName;
    std::wstring sourceDirectory;  // where the built driver files are
    // Further files of the driver directory, installed when the build has them.
    std::vector<std::wstring> extraFiles = {L"mortalures18.dll", L"unires.dll", L"zxtaluudm.dll", L"zxbuio.dll",
                                            L"mortaluDataMap.xml"};
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
    bool created = false;          // false: it was there already
};

// Adds or refreshes the driver and adds the printer if it is missing. Throws std::runtime_error
// naming the file or the step that failed and the reason in words; a device profile that cannot
// be read is refused before anything changes.
InstalledPrinter InstallPrinter(const PrinterSetup& setup);

// The printer's driver directory, or empty when the printer is not installed.
std::wstring DriverDirectoryOf(const std::wstring& printerName);

// The directory of the running program, with its trailing backslash.
std::wstring ProgramDirectory();

}  // namespace drvhost
