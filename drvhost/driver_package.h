// A printer driver package as its INF lays it out, read the way the printer class installer reads
// it for one x64 model: [Manufacturer] names the models section (decorated NTamd64), whose first
// model is the driver; the model's install section gives DriverFile, ConfigFile, HelpFile,
// DataFile (also through a DataSection), CopyFiles (@file entries and file-list sections),
// Include and Needs. The plug-in configuration file (.ini) in the copy list names the UI plug-in
// in [OEMFiles] as OEMConfigFile1.
//
// The core driver's own files come from the system's printer INF through Include and Needs; the
// test bed has none and installs its simulated core driver in their place.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace drvhost {

struct DriverPackage {
    std::wstring directory;                         // ends with a backslash
    std::wstring infFile;                           // file name
    std::wstring driverName;                        // the model
    std::wstring driverFile, configFile, helpFile;  // the core driver's files; empty when not named
    std::wstring dataFile;                          // the feature description
    std::vector<std::wstring> includes, needs;
    std::vector<std::wstring> files;  // the copy list, in order, each once
    std::wstring pluginConfigFile;    // the first .ini of the copy list
    std::wstring pluginFile;          // the UI plug-in that it names

    // The copy list without the data file: the driver's dependent files.
    std::vector<std::wstring> DependentFiles() const;
};

// A package that cannot be installed: one line naming the file at fault and why.
class PackageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Reads the package whose one .inf file is in `directory`. Throws PackageError for a directory
// without exactly one INF, a missing model, install section or file-list section, a copied file
// that is not in the directory, a data file that is not copied, a core-driver file that is neither
// copied nor from an included INF, no plug-in configuration file, or one that names no UI plug-in
// or one that is not copied.
DriverPackage ReadDriverPackage(const std::wstring& directory);

// OEMConfigFile1 of the [OEMFiles] section of a plug-in configuration file's text; empty when
// there is none. Entries are `key=value` without blanks around "="; "#" starts a comment line.
std::wstring PluginNamedIn(std::wstring_view configuration);

// File names compare without regard to case, as on Windows.
bool SameFileName(std::wstring_view a, std::wstring_view b);

}  // namespace drvhost
