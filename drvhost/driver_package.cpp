#include "drvhost/driver_package.h"

#include "drvhost/hresult_text.h"
#include "drvhost/text.h"
#include "util/scoped.h"

#include <windows.h>

#include <algorithm>
#include <cwctype>
#include <map>
#include <optional>

namespace drvhost {
namespace {

constexpr wchar_t kX64Decoration[] = L"ntamd64";
constexpr wchar_t kPluginSection[] = L"[oemfiles]";
constexpr wchar_t kPluginKey[] = L"OEMConfigFile1=";

std::wstring Lowered(std::wstring_view text) {
    std::wstring lowered(text);
    std::transform(lowered.begin(), lowered.end(), lowered.begin(), [](wchar_t c) { return std::towlower(c); });
    return lowered;
}

std::wstring_view Trimmed(std::wstring_view text) {
    while (!text.empty() && std::iswspace(text.front())) text.remove_prefix(1);
    while (!text.empty() && std::iswspace(text.back())) text.remove_suffix(1);
    return text;
}

bool EndsWith(std::wstring_view text, std::wstring_view end) {
    return text.size() >= end.size() && SameFileName(text.substr(text.size() - end.size()), end);
}

std::string Utf8(std::wstring_view text) { return WideToUtf8(text); }

struct FindHandleTraits {
    using type = HANDLE;
    static HANDLE invalid() noexcept { return INVALID_HANDLE_VALUE; }
    static void close(HANDLE value) noexcept { ::FindClose(value); }
};
using unique_find = zx::unique_any<FindHandleTraits>;

// One line of a section: `key = field, field, ...`; the key is empty for a line without "=".
struct InfLine {
    std::wstring key;
    std::vector<std::wstring> fields;
};

// The INF syntax that printer packages use: [sections], `;` comments, quoted values, a trailing
// `\` continuing a line, and %strkey% tokens replaced from [Strings]. Names are case-insensitive.
class InfFile {
public:
    explicit InfFile(std::wstring_view text) {
        Read(text);
        ReplaceStringTokens();
    }

    const std::vector<InfLine>* Section(std::wstring_view name) const {
        const auto found = m_sections.find(Lowered(name));
        return found == m_sections.end() ? nullptr : &found->second;
    }

    // Every field of every line with the key, in order.
    std::vector<std::wstring> Values(const std::vector<InfLine>& section, std::wstring_view key) const {
        std::vector<std::wstring> values;
        for (const InfLine& line : section) {
            if (Lowered(line.key) != Lowered(key)) continue;
            for (const std::wstring& field : line.fields) {
                if (!field.empty()) values.push_back(field);
            }
        }
        return values;
    }

    std::wstring Value(const std::vector<InfLine>& section, std::wstring_view key) const {
        const std::vector<std::wstring> values = Values(section, key);
        return values.empty() ? std::wstring() : values.front();
    }

private:
    // The line without its comment; a `;` inside quotes is text.
    static std::wstring_view WithoutComment(std::wstring_view line) {
        bool quoted = false;
        for (size_t i = 0; i < line.size(); ++i) {
            if (line[i] == L'"') quoted = !quoted;
            if (line[i] == L';' && !quoted) return line.substr(0, i);
        }
        return line;
    }

    static std::vector<std::wstring> Fields(std::wstring_view text) {
        std::vector<std::wstring> fields(1);
        bool quoted = false;
        for (wchar_t c : text) {
            if (c == L'"') {
                quoted = !quoted;
            } else if (c == L',' && !quoted) {
                fields.emplace_back();
            } else {
                fields.back() += c;
            }
        }
        for (std::wstring& field : fields) field = Trimmed(field);
        return fields;
    }

    void Read(std::wstring_view text) {
        std::vector<InfLine>* section = nullptr;
        std::wstring pending;
        size_t start = 0;
        while (start <= text.size()) {
            const size_t end = std::min(text.find(L'\n', start), text.size());
            std::wstring_view line = Trimmed(WithoutComment(text.substr(start, end - start)));
            start = end + 1;
            if (!line.empty() && line.back() == L'\\') {
                pending += line.substr(0, line.size() - 1);
                continue;
            }
            const std::wstring whole = pending + std::wstring(line);
            pending.clear();
            if (whole.empty()) continue;
            if (whole.front() == L'[' && whole.back() == L']') {
                section = &m_sections[Lowered(Trimmed(std::wstring_view(whole).substr(1, whole.size() - 2)))];
                continue;
            }
            if (section == nullptr) continue;
            const size_t equals = whole.find(L'=');
            InfLine parsed;
            if (equals != std::wstring::npos) {
                parsed.key = Fields(std::wstring_view(whole).substr(0, equals)).front();
                parsed.fields = Fields(std::wstring_view(whole).substr(equals + 1));
            } else {
                parsed.fields = Fields(whole);
            }
            section->push_back(std::move(parsed));
        }
    }

    std::wstring Replaced(const std::wstring& text, const std::map<std::wstring, std::wstring>& strings) const {
        std::wstring result;
        size_t next = 0;
        while (next < text.size()) {
            const size_t open = text.find(L'%', next);
            const size_t close = open == std::wstring::npos ? open : text.find(L'%', open + 1);
            if (close == std::wstring::npos) break;
            const auto found = strings.find(Lowered(text.substr(open + 1, close - open - 1)));
            result += text.substr(next, open - next);
            result += found != strings.end() ? found->second : text.substr(open, close - open + 1);
            next = close + 1;
        }
        return result + text.substr(std::min(next, text.size()));
    }

    void ReplaceStringTokens() {
        std::map<std::wstring, std::wstring> strings;
        if (const auto* section = Section(L"Strings")) {
            for (const InfLine& line : *section) {
                if (!line.fields.empty()) strings[Lowered(line.key)] = line.fields.front();
            }
        }
        for (auto& [name, lines] : m_sections) {
            for (InfLine& line : lines) {
                line.key = Replaced(line.key, strings);
                for (std::wstring& field : line.fields) field = Replaced(field, strings);
            }
        }
    }

    std::map<std::wstring, std::vector<InfLine>> m_sections;
};

class PackageReader {
public:
    explicit PackageReader(const std::wstring& directory) : m_given(directory), m_directory(directory) {
        if (!m_directory.empty() && m_directory.back() != L'\\' && m_directory.back() != L'/') m_directory += L'\\';
    }

    DriverPackage Read() {
        m_package.directory = m_directory;
        m_package.infFile = FindInf();
        const InfFile inf(ReadTextFile(m_directory + m_package.infFile));
        const std::vector<InfLine>& install = InstallSection(inf);
        ReadInstall(inf, install);
        ReadCopyList(inf, install);
        CheckFiles();
        FindPlugin();
        return m_package;
    }

private:
    [[noreturn]] void Fail(const std::string& problem) const {
        throw PackageError(Utf8(m_package.infFile) + " " + problem);
    }

    std::wstring FindInf() const {
        WIN32_FIND_DATAW found{};
        std::vector<std::wstring> infs;
        const unique_find search(::FindFirstFileW((m_directory + L"*.inf").c_str(), &found));
        if (search) {
            do {
                if (EndsWith(found.cFileName, L".inf")) infs.push_back(found.cFileName);
            } while (::FindNextFileW(search.get(), &found));
        }
        if (::GetFileAttributesW(m_directory.c_str()) == INVALID_FILE_ATTRIBUTES) {
            throw PackageError("cannot read the driver package " + Utf8(m_given) + ": " +
                               Win32ErrorText(::GetLastError()));
        }
        if (infs.size() != 1) {
            throw PackageError(Utf8(m_given) + (infs.empty() ? " holds no driver package: it has no .inf file"
                                                             : " holds more than one .inf file"));
        }
        return infs.front();
    }

    // [Manufacturer] -> the models section for x64 -> its first model -> the install section.
    const std::vector<InfLine>& InstallSection(const InfFile& inf) {
        const auto* manufacturers = inf.Section(L"Manufacturer");
        if (manufacturers == nullptr || manufacturers->empty() || manufacturers->front().fields.empty()) {
            Fail("has no [Manufacturer] section naming a models section");
        }
        const InfLine& maker = manufacturers->front();
        std::wstring modelsName = maker.fields.front();
        for (size_t i = 1; i < maker.fields.size(); ++i) {
            const std::wstring_view decoration = maker.fields[i];
            if (SameFileName(decoration.substr(0, std::size(kX64Decoration) - 1), kX64Decoration)) {
                modelsName += L"." + maker.fields[i];
                break;
            }
        }
        const auto* models = inf.Section(modelsName);
        if (models == nullptr || models->empty() || models->front().fields.empty()) {
            Fail("has no models section [" + Utf8(modelsName) + "] with a model");
        }
        m_package.driverName = models->front().key;
        const std::wstring installName = models->front().fields.front();
        if (const auto* decorated = inf.Section(installName + L".NTamd64")) return *decorated;
        const auto* install = inf.Section(installName);
        if (install == nullptr) Fail("has no install section [" + Utf8(installName) + "]");
        return *install;
    }

    void ReadInstall(const InfFile& inf, const std::vector<InfLine>& install) {
        // A data section of this INF gives the entries that the install section leaves out.
        const std::vector<InfLine>* data = inf.Section(inf.Value(install, L"DataSection"));
        const auto entry = [&](const wchar_t* key) {
            const std::wstring value = inf.Value(install, key);
            return value.empty() && data ? inf.Value(*data, key) : value;
        };
        m_package.driverFile = entry(L"DriverFile");
        m_package.configFile = entry(L"ConfigFile");
        m_package.helpFile = entry(L"HelpFile");
        m_package.dataFile = entry(L"DataFile");
        m_package.includes = inf.Values(install, L"Include");
        m_package.needs = inf.Values(install, L"Needs");
        if (m_package.dataFile.empty()) Fail("names no DataFile");
    }

    void AddFile(const std::wstring& file) {
        for (const std::wstring& known : m_package.files) {
            if (SameFileName(known, file)) return;
        }
        m_package.files.push_back(file);
    }

    void ReadCopyList(const InfFile& inf, const std::vector<InfLine>& install) {
        for (const std::wstring& entry : inf.Values(install, L"CopyFiles")) {
            if (entry.front() == L'@') {
                AddFile(entry.substr(1));
                continue;
            }
            const auto* list = inf.Section(entry);
            if (list == nullptr) Fail("copies the file list [" + Utf8(entry) + "], which it does not have");
            for (const InfLine& line : *list) {
                if (line.key.empty() && !line.fields.front().empty()) AddFile(line.fields.front());
            }
        }
    }

    bool Copies(const std::wstring& file) const {
        return std::any_of(m_package.files.begin(), m_package.files.end(),
                           [&](const std::wstring& copied) { return SameFileName(copied, file); });
    }

    void CheckFiles() const {
        for (const std::wstring& file : m_package.files) {
            if (::GetFileAttributesW((m_directory + file).c_str()) == INVALID_FILE_ATTRIBUTES) {
                Fail("copies " + Utf8(file) + ", which is not in " + Utf8(m_given));
            }
        }
        if (!Copies(m_package.dataFile))
            Fail("names the DataFile " + Utf8(m_package.dataFile) + " but does not copy it");
        for (const std::wstring* core : {&m_package.driverFile, &m_package.configFile}) {
            if (!core->empty() && !Copies(*core) && m_package.includes.empty()) {
                Fail("names the core driver file " + Utf8(*core) + " but neither copies it nor includes an INF");
            }
        }
    }

    void FindPlugin() {
        for (const std::wstring& file : m_package.files) {
            if (EndsWith(file, L".ini")) {
                m_package.pluginConfigFile = file;
                break;
            }
        }
        if (m_package.pluginConfigFile.empty()) {
            Fail("names no UI plug-in: its copy list has no plug-in configuration file (.ini)");
        }
        m_package.pluginFile = PluginNamedIn(ReadTextFile(m_directory + m_package.pluginConfigFile));
        const std::string config = Utf8(m_package.pluginConfigFile);
        if (m_package.pluginFile.empty()) {
            throw PackageError(config + " names no UI plug-in (no OEMConfigFile1 in [OEMFiles])");
        }
        if (!Copies(m_package.pluginFile)) {
            throw PackageError(config + " names the UI plug-in " + Utf8(m_package.pluginFile) + ", which " +
                               Utf8(m_package.infFile) + " does not copy");
        }
    }

    std::wstring m_given;      // as the caller named it, for messages
    std::wstring m_directory;  // with a trailing separator
    DriverPackage m_package;
};

}  // namespace

std::vector<std::wstring> DriverPackage::DependentFiles() const {
    std::vector<std::wstring> dependents;
    for (const std::wstring& file : files) {
        if (!SameFileName(file, dataFile)) dependents.push_back(file);
    }
    return dependents;
}

DriverPackage ReadDriverPackage(const std::wstring& directory) { return PackageReader(directory).Read(); }

std::wstring PluginNamedIn(std::wstring_view configuration) {
    bool inSection = false;
    size_t start = 0;
    while (start < configuration.size()) {
        const size_t end = std::min(configuration.find(L'\n', start), configuration.size());
        const std::wstring_view line = Trimmed(configuration.substr(start, end - start));
        start = end + 1;
        if (line.empty() || line.front() == L'#') continue;
        if (line.front() == L'[') {
            inSection = Lowered(line) == kPluginSection;
        } else if (inSection && line.size() > std::size(kPluginKey) - 1 &&
                   Lowered(line.substr(0, std::size(kPluginKey) - 1)) == Lowered(kPluginKey)) {
            return std::wstring(line.substr(std::size(kPluginKey) - 1));
        }
    }
    return {};
}

bool SameFileName(std::wstring_view a, std::wstring_view b) { return a.size() == b.size() && Lowered(a) == Lowered(b); }

}  // namespace drvhost
