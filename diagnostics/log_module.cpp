#include "diagnostics/log_module.h"

#include "util/module_instance.h"
#include "diagnostics/external_monitor.h"
#include "diagnostics/file_version_info.h"
#include "diagnostics/log_function.h"
#include "diagnostics/win32_exception.h"

#include <shlobj.h>

#include <cstdarg>
#include <cstdio>
#include <cwchar>
#include <ostream>
#include <vector>

namespace NGLogging {
namespace {

constexpr wchar_t kRootKey[] = L"Software\\ZX\\NG\\Logging";
constexpr REGSAM kReadAccess = 0x20019;  // KEY_READ
constexpr DWORD kDefaultPollMilliseconds = 30000;
constexpr size_t kPathCapacity = 260;
constexpr size_t kScratchCapacity = 260;
constexpr DWORD kSharingRetryMilliseconds = 30;
constexpr DWORD kSharingRetryLimit = 120;

// The kinds that a category lets through; the level, the mark and the attribute bits do not.
constexpr DWORD kEnablingKinds = Category::Information | Category::Exception | Category::Warning | Category::Important |
                                 Category::State | Category::Debug | Category::FunctionEntry | Category::FunctionExit |
                                 Category::Lock | Category::Parameters | Category::Result | Category::ErrorText |
                                 Category::Header;

struct Marker {
    DWORD bit;
    const wchar_t* text;
};
// In the order the markers appear; the information and mark markers carry numbers.
constexpr Marker kMarkers[] = {
    {Category::Exception, L"(EX) "}, {Category::Important, L"(##) "},     {Category::Warning, L"(WN) "},
    {Category::Header, L"(++) "},    {Category::Information, nullptr},    {Category::State, L"(ST) "},
    {Category::Debug, L"(DB) "},     {Category::FunctionEntry, L"(->) "}, {Category::FunctionExit, L"(<-) "},
    {Category::ErrorText, L"(**) "}, {Category::Lock, L"(LK) "},          {Category::Parameters, L"(IP) "},
    {Category::MarkMask, nullptr},
};

std::wstring FileNameOf(const std::wstring& path) { return path.substr(path.find_last_of(L"\\/") + 1); }

std::wstring WithoutExtension(const std::wstring& name) { return name.substr(0, name.find_last_of(L'.')); }

std::wstring ModulePath(HMODULE module) {
    wchar_t path[kPathCapacity] = {};
    ::GetModuleFileNameW(module, path, static_cast<DWORD>(kPathCapacity));
    path[kPathCapacity - 1] = L'\0';
    return path;
}

std::wstring Widen(const char* text) {
    std::wstring wide;
    for (; text && *text; ++text) wide += static_cast<wchar_t>(static_cast<unsigned char>(*text));
    return wide;
}

std::string Utf8(const std::wstring& text) {
    if (text.empty()) return {};
    const int length =
        ::WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<size_t>(length > 0 ? length : 0), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), bytes.data(), length, nullptr,
                          nullptr);
    return bytes;
}

std::wstring Format(const wchar_t* format, ...) {
    wchar_t text[kScratchCapacity];
    va_list arguments;
    va_start(arguments, format);
    const int written = std::vswprintf(text, kScratchCapacity, format, arguments);
    va_end(arguments);
    return written < 0 ? std::wstring() : std::wstring(text, static_cast<size_t>(written));
}

// Registry values keep what the record held when they are missing or of another type.
bool ReadDword(HKEY key, const wchar_t* name, DWORD& value) {
    DWORD type = 0, data = 0, size = sizeof(data);
    if (::RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(&data), &size) != ERROR_SUCCESS ||
        type != REG_DWORD || size != sizeof(data)) {
        return false;
    }
    value = data;
    return true;
}

bool ReadText(HKEY key, const wchar_t* name, std::wstring& value) {
    DWORD type = 0, size = 0;
    if (::RegQueryValueExW(key, name, nullptr, &type, nullptr, &size) != ERROR_SUCCESS || type != REG_SZ ||
        size > 64 * 1024) {
        return false;
    }
    std::wstring text(size / sizeof(wchar_t) + 1, L'\0');
    if (::RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(text.data()), &size) != ERROR_SUCCESS) {
        return false;
    }
    text.resize(std::wcslen(text.c_str()));  // the stored text may or may not carry its terminator
    value = text;
    return true;
}

zx::unique_hkey OpenKey(HKEY parent, const std::wstring& path) {
    zx::unique_hkey key;
    if (parent) ::RegOpenKeyExW(parent, path.c_str(), 0, kReadAccess, key.put());
    return key;
}

// Copies a caller's text in two guarded steps, so that a bad pointer faults where it can be
// caught; the steps only read the text and write plain memory.
std::wstring CopyCallerText(const wchar_t* text) {
    struct Measure {
        const wchar_t* text;
        size_t length;
        void operator()() { length = std::wcslen(text); }
    } measure{text, 0};
    NGUtils::CallTranslatingFaults(measure);
    std::wstring copy(measure.length, L'\0');
    struct Copy {
        const wchar_t* text;
        wchar_t* target;
        size_t length;
        void operator()() { std::wmemcpy(target, text, length); }
    } duplicate{text, copy.data(), measure.length};
    NGUtils::CallTranslatingFaults(duplicate);
    return copy;
}

}  // namespace

// The module's critical section for a scope.
class CLogModule::Lock {
public:
    explicit Lock(CRITICAL_SECTION& section) : m_section(section) { ::EnterCriticalSection(&m_section); }
    ~Lock() { ::LeaveCriticalSection(&m_section); }

private:
    CRITICAL_SECTION& m_section;
};

CLogModule::CLogModule(const wchar_t* moduleName, const char* buildDate, const char* buildTime, ULONG_PTR processValue,
                       DWORD pollSeconds)
    : m_moduleName(moduleName ? moduleName : WithoutExtension(FileNameOf(ModulePath(zx::ModuleInstance())))),
      m_executablePath(ModulePath(nullptr)),
      m_buildText(Widen(buildDate) + L" " + Widen(buildTime)),
      m_pollMilliseconds(pollSeconds ? pollSeconds * 1000 : kDefaultPollMilliseconds),
      m_processIdText(Format(L"[%ld] ", static_cast<long>(::GetCurrentProcessId()))),
      m_processValue(processValue) {
    ::InitializeCriticalSection(&m_lock);
}

CLogModule::~CLogModule() { ::DeleteCriticalSection(&m_lock); }

// Shared blocks and the external monitor wait for the first line: none of it may run while the
// loader lock is held, and the module is made when the plug-in is loaded.
bool CLogModule::EnsureInitialised() noexcept {
    if (m_initialised) return true;
    try {
        const std::wstring base = WithoutExtension(FileNameOf(ModulePath(zx::ModuleInstance()))) +
                                  Format(L"[%ld]", static_cast<long>(::GetCurrentProcessId()));
        auto registryBlock = std::make_unique<CSharedBlock>(base + L"RegValues", kRegistryBlockSize);
        auto monitorBlock = std::make_unique<CSharedBlock>(base + L"ExtMonitor", kMonitorBlockSize);
        auto monitor = std::make_unique<CExternalMonitor>(FileNameOf(m_executablePath));
        m_registryBlock = std::move(registryBlock);
        m_monitorBlock = std::move(monitorBlock);
        m_monitor = std::move(monitor);
        m_initialised = true;
    } catch (...) {
        // Out of memory: the module stays as it was.
    }
    return m_initialised;
}

bool CLogModule::RegistryDue() const {
    const bool restartPending = m_moduleSettings.file && m_moduleSettings.file->restart;
    return !m_everRead || m_moduleSettings.file == nullptr || restartPending ||
           ::GetTickCount() - m_lastReading > m_pollMilliseconds;
}

namespace {

void ReadSettingsValues(HKEY key, CLogSettings& settings,
                        const std::function<CLogFileEntry*(const std::wstring&)>& file) {
    if (!key) return;
    ReadDword(key, L"LogInfoDetailLevel", settings.detailLevel);
    if (ReadDword(key, L"LogCategories", settings.categories)) settings.categories |= Category::LevelMask;
    ReadDword(key, L"LogOptions", settings.options);
    std::wstring fileName;
    if (ReadText(key, L"LogFileName", fileName)) settings.file = fileName.empty() ? nullptr : file(fileName);
}

}  // namespace

void CLogModule::ReadRegistry() {
    const auto file = [this](const std::wstring& name) { return FileEntry(name); };
    zx::unique_hkey root = OpenKey(HKEY_LOCAL_MACHINE, kRootKey);
    if (!root) return;
    DWORD pollSeconds = 0;
    m_pollMilliseconds = ReadDword(root.get(), L"LogParmsPollTime", pollSeconds) && pollSeconds
                             ? pollSeconds * 1000
                             : kDefaultPollMilliseconds;
    ReadSettingsValues(root.get(), m_moduleSettings, file);

    const std::wstring executable = FileNameOf(m_executablePath);
    zx::unique_hkey executableKey = OpenKey(root.get(), executable);
    ReadSettingsValues(executableKey.get(), m_moduleSettings, file);
    if (executableKey && m_monitor) {
        std::wstring classId, parameterFile;
        DWORD flags = 0;
        if (ReadText(executableKey.get(), L"ExtMonitorCLSID", classId)) {
            ReadDword(executableKey.get(), L"ExtMonitorFlags", flags);
            ReadText(executableKey.get(), L"ExtMonitorParmFile", parameterFile);
            m_monitor->Configure(classId, flags, parameterFile);
        }
    }

    zx::unique_hkey moduleKey;
    if (m_moduleName != WithoutExtension(executable)) {
        const std::wstring path = std::wstring(kRootKey) + L"\\" + executable + L"\\" + m_moduleName;
        if (m_moduleSettings.categories & Category::CreateRegistryKey) {
            ::RegCreateKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE, kReadAccess,
                              nullptr, moduleKey.put(), nullptr);
        } else {
            moduleKey = OpenKey(executableKey.get(), m_moduleName);
        }
    } else {
        moduleKey = std::move(executableKey);
    }
    ReadSettingsValues(moduleKey.get(), m_moduleSettings, file);
    if (!moduleKey) return;

    // Each subkey of the module key configures one source file, read again only once changed.
    wchar_t name[kPathCapacity];
    for (DWORD index = 0;; ++index) {
        DWORD length = static_cast<DWORD>(kPathCapacity);
        FILETIME written{};
        if (::RegEnumKeyExW(moduleKey.get(), index, name, &length, nullptr, nullptr, nullptr, &written) !=
            ERROR_SUCCESS) {
            break;
        }
        const auto known = m_sourceWriteTimes.find(name);
        if (known != m_sourceWriteTimes.end() && ::CompareFileTime(&written, &known->second) <= 0) continue;
        CLogSettings source = m_moduleSettings;
        ReadSettingsValues(OpenKey(moduleKey.get(), name).get(), source, file);
        m_sources[name] = source;
        m_sourceWriteTimes[name] = written;
    }
}

CLogFileEntry* CLogModule::FileEntry(const std::wstring& configuredName) {
    wchar_t expanded[kPathCapacity];
    const DWORD length =
        ::ExpandEnvironmentStringsW(configuredName.c_str(), expanded, static_cast<DWORD>(kPathCapacity));
    if (length == 0 || length > kPathCapacity) return nullptr;
    const auto known = m_files.find(expanded);
    if (known != m_files.end()) return known->second.get();
    // Made whole before it is kept: out of memory, no half-made entry stays behind.
    auto entry = std::make_unique<CLogFileEntry>();
    entry->name = expanded;
    return m_files.emplace(expanded, std::move(entry)).first->second.get();
}

CLogSettings& CLogModule::RecordFor(const wchar_t* sourceFile) {
    if (sourceFile == nullptr) return m_moduleSettings;
    const auto found = m_sources.find(sourceFile);
    if (found == m_sources.end()) return m_moduleSettings;
    // A source without a file of its own writes to the module's.
    if (found->second.file == nullptr) found->second.file = m_moduleSettings.file;
    return found->second;
}

CLogSettings CLogModule::SettingsFor(const wchar_t* sourceFile) {
    Lock lock(m_lock);
    return RecordFor(sourceFile);
}

// The shared block is taken only to read the registry again: a disabled line then costs little
// more than a look at the settings in memory.
bool CLogModule::IsEnabled(const wchar_t* sourceFile, DWORD kind) {
    Lock lock(m_lock);
    if (!EnsureInitialised()) return false;
    if (RegistryDue()) {
        CSharedBlock::Access access(*m_registryBlock);
        if (!access) return false;
        m_everRead = true;
        m_lastReading = ::GetTickCount();
        access.Words()[1] = m_lastReading;
        ReadRegistry();
    }
    const CLogSettings& settings = RecordFor(sourceFile);
    if ((kind & settings.categories & kEnablingKinds) == 0) return false;
    return !(kind & Category::Information) || (kind & Category::LevelMask) <= settings.detailLevel;
}

std::wstring CLogModule::ComposePrefix(const CLogSettings& settings, DWORD kind, const CLogFunction* trace) {
    const DWORD options = settings.options;
    const bool compact = options & Option::Compact;
    std::wstring prefix;
    SYSTEMTIME now;
    ::GetLocalTime(&now);
    if (options & Option::Date) {
        prefix += Format(compact ? L"%04u%02u%02u" : L"%04u/%02u/%02u ", now.wYear, now.wMonth, now.wDay);
    }
    if (options & Option::Time) {
        prefix += Format(compact ? L"%02u%02u%02u" : L"%02u:%02u:%02u ", now.wHour, now.wMinute, now.wSecond);
    }
    LARGE_INTEGER counter, frequency;
    ::QueryPerformanceCounter(&counter);
    if (!::QueryPerformanceFrequency(&frequency) || frequency.QuadPart == 0) frequency.QuadPart = 1000000;
    const long long microseconds = MicrosecondsOf(counter.QuadPart, frequency.QuadPart);
    if (options & Option::Counter) {
        prefix += Format(compact ? L":%010lld " : L"%010lld ", microseconds % 10000000000LL);
    }
    if (options & Option::Elapsed) {
        const long long elapsed =
            m_lastLine.QuadPart ? (counter.QuadPart - m_lastLine.QuadPart) * 1000 / frequency.QuadPart : 0;
        prefix += Format(L"(%06lld ms) ", elapsed);
    }
    m_lastLine = counter;
    if (options & Option::ProcessId) prefix += m_processIdText;
    if (options & Option::ThreadId) prefix += Format(L"{tid: 0x%04X} ", static_cast<unsigned>(::GetCurrentThreadId()));
    if (options & Option::Counter) prefix += trace ? Format(L"%04d: ", trace->Line()) : std::wstring(6, L' ');

    const DWORD shown = kind & settings.categories;
    for (const Marker& marker : kMarkers) {
        if (!(shown & marker.bit)) continue;
        if (marker.bit == Category::Information) {
            prefix += Format(L"(I%u) ", static_cast<unsigned>(shown & Category::LevelMask));
        } else if (marker.bit == Category::MarkMask) {
            prefix += Format(L"(M%u) ", static_cast<unsigned>((shown & Category::MarkMask) >> 12));
        } else {
            prefix += marker.text;
        }
    }
    return prefix;
}

namespace {

void ReportDroppedLine(const NGUtils::CWin32Exception& fault) {
    ::OutputDebugStringW(
        (std::wstring(L"Exception Exit: InternalLogSimpleString (") + fault.Message() + L")\r\n").c_str());
}

}  // namespace

void CLogModule::WriteLine(const wchar_t* sourceFile, DWORD kind, const CLogFunction* trace, const wchar_t* text) {
    CLastErrorRestore keepLastError;
    try {
        Lock lock(m_lock);
        if (IsEnabled(sourceFile, kind)) WriteCopied(sourceFile, kind, trace, CopyCallerText(text ? text : L""));
    } catch (const NGUtils::CWin32Exception& fault) {
        ReportDroppedLine(fault);
    } catch (...) {
        // A logger never fails its caller.
    }
}

void CLogModule::WriteCopied(const wchar_t* sourceFile, DWORD kind, const CLogFunction* trace,
                             const std::wstring& text) {
    CLogSettings& settings = RecordFor(sourceFile);
    WriteComposed(settings, kind, ComposePrefix(settings, kind, trace), text);
}

void CLogModule::WriteFormat(const wchar_t* sourceFile, DWORD kind, const wchar_t* format, ...) {
    CLastErrorRestore keepLastError;
    wchar_t text[kScratchCapacity] = {};
    struct Formatter {
        wchar_t* text;
        const wchar_t* format;
        va_list* arguments;
        void operator()() { std::vswprintf(text, kScratchCapacity, format, *arguments); }
    };
    va_list arguments;
    va_start(arguments, format);
    Formatter formatter{text, format, &arguments};
    try {
        Lock lock(m_lock);
        if (format != nullptr && IsEnabled(sourceFile, kind)) {
            NGUtils::CallTranslatingFaults(formatter);
            text[kScratchCapacity - 1] = L'\0';
            WriteCopied(sourceFile, kind, nullptr, text);
        }
    } catch (const NGUtils::CWin32Exception& fault) {
        ReportDroppedLine(fault);
    } catch (...) {
    }
    va_end(arguments);
}

void CLogModule::WriteComposed(CLogSettings& settings, DWORD kind, const std::wstring& prefix,
                               const std::wstring& text) {
    const CLogFileEntry* indentationSource = settings.file ? settings.file : m_moduleSettings.file;
    std::wstring line = prefix;
    if (indentationSource && (settings.options & Option::Indent)) line += indentationSource->indentation;
    line += text;
    if (!text.empty()) line += L"\r\n";
    if ((settings.options & Option::CopyToDebugger) || (kind & Category::CopyToDebugger)) {
        ::OutputDebugStringW(line.c_str());
    }
    if (settings.file) WriteToFile(settings, *settings.file, Utf8(line));
}

// A file that stays closed in a long-running process must not hold its lines for ever.
void CLogModule::Queue(const std::string& line) {
    m_queue.push_back(line);
    m_queuedBytes += line.size();
    while (!m_queue.empty() && (m_queue.size() > kQueueLineLimit || m_queuedBytes > kQueueByteLimit)) {
        m_queuedBytes -= m_queue.front().size();
        m_queue.pop_front();
        ++m_droppedLines;
    }
}

namespace {

zx::unique_file OpenForAppending(const std::wstring& path, DWORD& error) {
    zx::unique_file file;
    for (DWORD waited = 0;; waited += kSharingRetryMilliseconds) {
        file.reset(::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
        error = file ? ERROR_SUCCESS : ::GetLastError();
        if (file || error != ERROR_SHARING_VIOLATION || waited >= kSharingRetryLimit) break;
        ::Sleep(kSharingRetryMilliseconds);
    }
    if (file) ::SetFilePointer(file.get(), 0, nullptr, FILE_END);
    return file;
}

bool Append(HANDLE file, const std::string& bytes) {
    DWORD written = 0;
    return bytes.empty() || (::WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) &&
                             written == bytes.size());
}

void ReportUnopenable(const std::wstring& path, DWORD error) {
    ::OutputDebugStringW(
        (L"Unable to open log file:\r\n<" + path + L">\r\n" + CLogModule::ErrorText(error) + L"\r\n").c_str());
}

}  // namespace

void CLogModule::WriteQueue(HANDLE file, const char* endMarker) {
    if (m_queue.empty() && m_droppedLines == 0) return;
    Append(file, "--- Queued Lines Start ---\r\n");
    if (m_droppedLines != 0) Append(file, "--- " + std::to_string(m_droppedLines) + " Queued Lines Dropped ---\r\n");
    for (const std::string& queued : m_queue) Append(file, queued);
    Append(file, endMarker);
    m_queue.clear();
    m_queuedBytes = 0;
    m_droppedLines = 0;
}

void CLogModule::WriteToFile(CLogSettings& settings, CLogFileEntry& file, const std::string& line) {
    const DWORD limit = (settings.options & Option::SizeLimitKiB) * 1024;
    if (limit && file.size >= limit) return;
    if (file.restart) {
        file.restart = false;
        file.opened = false;
    }
    DWORD error = ERROR_SUCCESS;
    std::wstring attempted;
    if (!file.opened && !OpenFirstTime(settings, file, error, attempted)) {
        Queue(line);
        ReportUnopenable(attempted, error);
        return;
    }
    zx::unique_file handle = OpenForAppending(file.fullPath, error);
    if (!handle) {
        Queue(line);
        ReportUnopenable(file.fullPath, error);
        return;
    }
    WriteQueue(handle.get(), "--- Queued Lines End ---\r\n");
    Append(handle.get(), line);
    file.size = ::GetFileSize(handle.get(), nullptr);
    if (limit && file.size >= limit) {
        Append(handle.get(),
               Utf8(Format(L"*** FILE SIZE LIMIT REACHED, LOGGING DISABLED FOR %ls MODULE ***", m_moduleName.c_str())));
        const bool restarts = (settings.options & Option::Truncate) && (settings.options & Option::UniqueName);
        file.restart = restarts;
        file.size = restarts ? 0 : ::GetFileSize(handle.get(), nullptr);
    }
}

bool CLogModule::OpenFirstTime(CLogSettings& settings, CLogFileEntry& file, DWORD& error, std::wstring& path) {
    path = file.name;
    if (path.find_first_of(L"\\/:") == std::wstring::npos) {
        wchar_t folder[MAX_PATH];
        const HRESULT found = ::SHGetFolderPathW(nullptr, CSIDL_COMMON_APPDATA | CSIDL_FLAG_CREATE, nullptr, 0, folder);
        if (FAILED(found)) {
            error = static_cast<DWORD>(found);
            return false;
        }
        path = std::wstring(folder) + L"\\" + path;
    }
    if (settings.options & Option::UniqueName) {
        const size_t slash = path.find_last_of(L"\\/");
        wchar_t unique[MAX_PATH], longPath[MAX_PATH];
        if (!::GetTempFileNameW(path.substr(0, slash).c_str(), path.substr(slash + 1).c_str(), 0, unique)) {
            error = ::GetLastError();
            return false;
        }
        path = ::GetLongPathNameW(unique, longPath, MAX_PATH) ? longPath : unique;
    }
    const DWORD disposition = (settings.options & Option::Truncate) ? CREATE_ALWAYS : OPEN_ALWAYS;
    zx::unique_file created(::CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, disposition,
                                          FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!created) {
        error = ::GetLastError();
        return false;
    }
    file.size = ::GetFileSize(created.get(), nullptr);
    created.reset();
    wchar_t full[MAX_PATH];
    file.fullPath = ::SearchPathW(nullptr, path.c_str(), nullptr, MAX_PATH, full, nullptr) ? full : path;
    file.opened = true;
    if (settings.categories & Category::Header) WriteHeader(settings);
    return true;
}

void CLogModule::WriteHeader(CLogSettings& settings) {
    WIN32_FILE_ATTRIBUTE_DATA attributes{};
    ::GetFileAttributesExW(m_executablePath.c_str(), GetFileExInfoStandard, &attributes);
    const NGUtils::CFileVersionInfo version(m_executablePath.c_str());
    const wchar_t* fileVersion = version.FileVersion();
    std::vector<std::wstring> lines = {
        L"Module File Name: " + m_executablePath + Format(L" (%ld bytes)", static_cast<long>(attributes.nFileSizeLow)),
        std::wstring(L"    Command Line: ") + ::GetCommandLineW(),
        std::wstring(L"    File Version: ") + (fileVersion ? fileVersion : L"<no version info>"),
        Format(L"      Process ID: %ld", static_cast<long>(::GetCurrentProcessId())),
        L"        Built on: " + m_buildText,
    };
    if (settings.options & Option::HeaderListsProcess)
        lines.push_back(L"         Process: " + FileNameOf(m_executablePath));
    lines.push_back(L"   Log File Name: <" + settings.file->fullPath + L">");
    for (const std::wstring& line : lines) {
        WriteComposed(settings, Category::Header, ComposePrefix(settings, Category::Header, nullptr), line);
    }
}

void CLogModule::FlushQueue() {
    Lock lock(m_lock);
    if ((m_queue.empty() && m_droppedLines == 0) || m_moduleSettings.file == nullptr ||
        !m_moduleSettings.file->opened) {
        return;
    }
    DWORD error = ERROR_SUCCESS;
    zx::unique_file handle = OpenForAppending(m_moduleSettings.file->fullPath, error);
    if (!handle) return;
    WriteQueue(handle.get(), "--- Queued Lines End (user flush) ---\r\n");
    m_moduleSettings.file->size = ::GetFileSize(handle.get(), nullptr);
}

void CLogModule::Indent(const wchar_t* sourceFile, int step) {
    Lock lock(m_lock);
    CLogSettings& settings = RecordFor(sourceFile);
    CLogFileEntry* file = settings.file ? settings.file : m_moduleSettings.file;
    if (file == nullptr || !(settings.options & Option::Indent)) return;
    if (step > 0) {
        file->indentation += L"  ";
    } else if (file->indentation.size() >= 2) {
        file->indentation.resize(file->indentation.size() - 2);
    }
}

void CLogModule::MonitorEnter(const std::wstring& className, const std::wstring& shortName) {
    Lock lock(m_lock);
    if (!m_initialised) return;
    CSharedBlock::Access access(*m_monitorBlock);
    if (access && m_monitor) m_monitor->Entered(className, shortName);
}

void CLogModule::MonitorLeave(const std::wstring& shortName) {
    Lock lock(m_lock);
    if (!m_initialised) return;
    CSharedBlock::Access access(*m_monitorBlock);
    if (access && m_monitor) m_monitor->Left(shortName);
}

void CLogModule::SerializeContents(std::wostream& stream) {
    Lock lock(m_lock);
    stream << L"gLogModuleObj.SerializeContents: ";
    for (const auto& [name, settings] : m_sources) {
        stream << L"Source File Name: <" << name << L">, dwCategoryFlags: " << settings.categories
               << L", dwDetailLevel: " << settings.detailLevel << L", dwOptionFlags: " << settings.options
               << L", wsLogFileName: <" << (settings.file ? settings.file->name : std::wstring()) << L">";
    }
}

std::wstring CLogModule::ErrorText(DWORD error) {
    std::wstring text = Format(L"[Err: 0x%08X] ", static_cast<unsigned>(error));
    wchar_t* message = nullptr;
    const DWORD length = ::FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error,
        MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT), reinterpret_cast<LPWSTR>(&message), 0, nullptr);
    const zx::unique_hlocal owner(message);
    if (length >= 2) {
        text.append(message, length - 2);  // without the line end
    } else if (length == 0 && ::GetLastError() != error) {
        const DWORD failure = ::GetLastError();
        wchar_t* reason = nullptr;
        ::FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                         nullptr, failure, MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT), reinterpret_cast<LPWSTR>(&reason),
                         0, nullptr);
        const zx::unique_hlocal reasonOwner(reason);
        text += Format(L", [GLE: 0x%08X] %ls ", static_cast<unsigned>(failure), reason ? reason : L"");
    }
    return text;
}

void CLogModule::PrepareForUnload() noexcept {
    if (m_monitor) m_monitor->Abandon();
}

long long MicrosecondsOf(long long counter, long long frequency) noexcept {
    return counter / frequency * 1000000 + counter % frequency * 1000000 / frequency;
}

namespace {
CLogModule* g_pluginLog = nullptr;
constexpr DWORD kPluginPollSeconds = 30;
}  // namespace

void CreatePluginLog() noexcept {
    if (g_pluginLog != nullptr) return;
    try {
        g_pluginLog = new CLogModule(L"zxtaluUI14", __DATE__, __TIME__, 0, kPluginPollSeconds);
    } catch (...) {
        g_pluginLog = nullptr;  // the constructor's own allocations may fail too
    }
}

CLogModule* PluginLog() noexcept { return g_pluginLog; }

void DestroyPluginLog() noexcept {
    if (g_pluginLog) g_pluginLog->PrepareForUnload();
    delete g_pluginLog;
    g_pluginLog = nullptr;
}

}  // namespace NGLogging
