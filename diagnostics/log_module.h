// The driver components' diagnostic logging. Each component owns one log module; its lines are
// filtered by category and detail level taken from the registry (HKEY_LOCAL_MACHINE
// "Software\ZX\NG\Logging"), prefixed with time stamps and markers, and written to a log file,
// to the debugger, or both. The registry is read again at most once per poll interval, so
// logging can be switched on in a running process. Nothing here ever fails its caller: every
// failure of the logger is swallowed.
#pragma once

#include "diagnostics/shared_block.h"

#include <windows.h>

#include <deque>
#include <functional>
#include <iosfwd>
#include <map>
#include <memory>
#include <string>

namespace NGLogging {

// Line kinds and categories share their bits.
namespace Category {
inline constexpr DWORD LevelMask = 0x0000000F;
inline constexpr DWORD Information = 0x00000010;
inline constexpr DWORD Exception = 0x00000020;
inline constexpr DWORD Warning = 0x00000040;
inline constexpr DWORD Important = 0x00000080;
inline constexpr DWORD State = 0x00000100;
inline constexpr DWORD Debug = 0x00000200;
inline constexpr DWORD FunctionEntry = 0x00000400;
inline constexpr DWORD FunctionExit = 0x00000800;
inline constexpr DWORD MarkMask = 0x0000F000;
inline constexpr DWORD CreateRegistryKey = 0x01000000;
inline constexpr DWORD Lock = 0x02000000;
inline constexpr DWORD Parameters = 0x04000000;
inline constexpr DWORD CopyToDebugger = 0x08000000;
inline constexpr DWORD Result = 0x10000000;
inline constexpr DWORD ErrorText = 0x20000000;
inline constexpr DWORD Header = 0x40000000;
}  // namespace Category

namespace Option {
inline constexpr DWORD SizeLimitKiB = 0x0000FFFF;
inline constexpr DWORD Truncate = 0x00010000;
inline constexpr DWORD UniqueName = 0x00020000;
inline constexpr DWORD CopyToDebugger = 0x00080000;
inline constexpr DWORD HeaderListsProcess = 0x00100000;
inline constexpr DWORD Indent = 0x00200000;
inline constexpr DWORD Duration = 0x00400000;
inline constexpr DWORD Compact = 0x00800000;
inline constexpr DWORD Date = 0x01000000;
inline constexpr DWORD Time = 0x02000000;
inline constexpr DWORD ProcessId = 0x04000000;
inline constexpr DWORD ThreadId = 0x08000000;
inline constexpr DWORD Elapsed = 0x10000000;
inline constexpr DWORD Counter = 0x20000000;
}  // namespace Option

// One log file, shared by every module record and source record that names it.
struct CLogFileEntry {
    std::wstring name;      // as configured, environment variables expanded
    std::wstring fullPath;  // once opened
    DWORD size = 0;         // bytes written so far
    bool opened = false;
    bool restart = false;  // the size limit was reached and the file starts anew
    std::wstring indentation;
};

struct CLogSettings {
    DWORD detailLevel = 0;
    DWORD categories = 0;
    DWORD options = 0;
    CLogFileEntry* file = nullptr;
};

class CLogFunction;
class CExternalMonitor;

class CLogModule {
public:
    // moduleName null: the base name of this module's file. A poll of 0 seconds means 30.
    CLogModule(const wchar_t* moduleName, const char* buildDate, const char* buildTime, ULONG_PTR processValue,
               DWORD pollSeconds);
    virtual ~CLogModule();
    CLogModule(const CLogModule&) = delete;
    CLogModule& operator=(const CLogModule&) = delete;

    // Whether a line of this kind from this source file (null: the module itself) is written now.
    bool IsEnabled(const wchar_t* sourceFile, DWORD kind);

    // Writes one line when its kind is enabled. A trace object gives the line-number column.
    void WriteLine(const wchar_t* sourceFile, DWORD kind, const CLogFunction* trace, const wchar_t* text);
    // printf-style (%ls for wide text) into a line.
    void WriteFormat(const wchar_t* sourceFile, DWORD kind, const wchar_t* format, ...);

    // Writes the lines that could not be written yet.
    void FlushQueue();

    // The module's settings and records, for diagnostics.
    void SerializeContents(std::wostream& stream);

    // "[Err: 0x%08X] " and the system's message for the error.
    static std::wstring ErrorText(DWORD error);

    const std::wstring& ModuleName() const noexcept { return m_moduleName; }
    DWORD PollMilliseconds() const noexcept { return m_pollMilliseconds; }

    // The indentation text of the file a source writes to; function traces grow and shrink it.
    void Indent(const wchar_t* sourceFile, int step);
    // The settings in force for a source (the module's own when it has none).
    CLogSettings SettingsFor(const wchar_t* sourceFile);

    // Leaves the external monitor without calling it: the module is about to be destroyed while
    // the loader lock is held, when COM may not be called.
    void PrepareForUnload() noexcept;

    // Tells the external monitor, if one is loaded, about a function trace.
    void MonitorEnter(const std::wstring& className, const std::wstring& shortName);
    void MonitorLeave(const std::wstring& shortName);

private:
    class Lock;
    // False when memory for it cannot be had; the next line tries again.
    bool EnsureInitialised() noexcept;
    bool RegistryDue() const;
    void ReadRegistry();
    CLogSettings& RecordFor(const wchar_t* sourceFile);
    CLogFileEntry* FileEntry(const std::wstring& configuredName);
    std::wstring ComposePrefix(const CLogSettings& settings, DWORD kind, const CLogFunction* trace);
    void WriteCopied(const wchar_t* sourceFile, DWORD kind, const CLogFunction* trace, const std::wstring& text);
    void WriteComposed(CLogSettings& settings, DWORD kind, const std::wstring& prefix, const std::wstring& text);
    void WriteToFile(CLogSettings& settings, CLogFileEntry& file, const std::string& line);
    // False when the file cannot be made; error and path then tell why and where.
    bool OpenFirstTime(CLogSettings& settings, CLogFileEntry& file, DWORD& error, std::wstring& path);
    void WriteHeader(CLogSettings& settings);
    void Queue(const std::string& line);
    // Writes the queued lines, between their start marker and endMarker, and empties the queue.
    void WriteQueue(HANDLE file, const char* endMarker);

    std::wstring m_moduleName;
    std::wstring m_executablePath;
    std::wstring m_buildText;
    DWORD m_pollMilliseconds;
    std::wstring m_processIdText;
    ULONG_PTR m_processValue;

    CRITICAL_SECTION m_lock;
    bool m_initialised = false;
    std::unique_ptr<CSharedBlock> m_registryBlock;
    std::unique_ptr<CSharedBlock> m_monitorBlock;
    std::unique_ptr<CExternalMonitor> m_monitor;

    CLogSettings m_moduleSettings;
    std::map<std::wstring, CLogSettings> m_sources;
    std::map<std::wstring, FILETIME> m_sourceWriteTimes;
    std::map<std::wstring, std::unique_ptr<CLogFileEntry>> m_files;
    DWORD m_lastReading = 0;
    bool m_everRead = false;
    LARGE_INTEGER m_lastLine{};
    // Lines that wait for their file to open: at most kQueueLineLimit lines and kQueueByteLimit
    // bytes, the oldest dropped first and counted.
    std::deque<std::string> m_queue;
    size_t m_queuedBytes = 0;
    unsigned long m_droppedLines = 0;
};

inline constexpr size_t kQueueLineLimit = 1000;
inline constexpr size_t kQueueByteLimit = 1024 * 1024;

// Microseconds since the performance counter's start; exact for any uptime (counter * 1000000
// would overflow after about 10.7 days at 10 MHz).
long long MicrosecondsOf(long long counter, long long frequency) noexcept;

// The plug-in's own log module "zxtaluUI14": made when the plug-in is loaded (only what is safe
// under the loader lock happens then), destroyed when it is unloaded. Without memory for it the
// plug-in has no log.
void CreatePluginLog() noexcept;
CLogModule* PluginLog() noexcept;
void DestroyPluginLog() noexcept;

}  // namespace NGLogging
