#include "diagnostics/log_function.h"

#include "diagnostics/win32_exception.h"

#include <cstdarg>
#include <cstdio>
#include <vector>

namespace NGLogging {
namespace {

constexpr size_t kNameScanLimit = 255;
constexpr size_t kParameterCapacity = 260;

const wchar_t* SourceOrModule(const std::wstring& sourceFile) {
    return sourceFile.empty() ? nullptr : sourceFile.c_str();
}

}  // namespace

void SplitFunctionName(const std::wstring& name, std::wstring& shortName, std::wstring& className) {
    std::vector<size_t> separators;  // positions of "::" outside angle brackets
    int depth = 0;
    const size_t scanned = std::min(name.size(), kNameScanLimit);
    for (size_t i = 0; i < scanned; ++i) {
        if (name[i] == L'<') ++depth;
        if (name[i] == L'>' && depth > 0) --depth;
        if (depth == 0 && i + 1 < scanned && name[i] == L':' && name[i + 1] == L':') separators.push_back(i++);
    }
    className.clear();
    if (separators.empty()) {
        shortName = name;
        return;
    }
    const size_t last = separators.back();
    const size_t classStart = separators.size() >= 2 ? separators[separators.size() - 2] + 2 : 0;
    shortName = name.substr(classStart);
    className = name.substr(classStart, last - classStart);
}

CLogFunction::CLogFunction(CLogModule& module, const wchar_t* sourceFile, const wchar_t* functionName, int line,
                           DWORD initialResult, bool unhandledException)
    : m_result(initialResult),
      m_exceptionState(unhandledException ? TraceState::Unhandled : TraceState::None),
      m_line(line),
      m_module(module) {
    if (TakeNames(sourceFile, functionName)) Enter(Category::FunctionEntry, m_functionName);
}

CLogFunction::CLogFunction(CLogModule& module, const wchar_t* sourceFile, const wchar_t* functionName, int line,
                           DWORD initialResult, bool unhandledException, const wchar_t* parameters, ...)
    : m_result(initialResult),
      m_exceptionState(unhandledException ? TraceState::Unhandled : TraceState::None),
      m_line(line),
      m_module(module) {
    if (!TakeNames(sourceFile, functionName)) return;
    wchar_t formatted[kParameterCapacity] = {};
    va_list arguments;
    va_start(arguments, parameters);
    struct Formatter {
        wchar_t* text;
        const wchar_t* format;
        va_list* arguments;
        void operator()() { std::vswprintf(text, kParameterCapacity, format, *arguments); }
    } formatter{formatted, parameters ? parameters : L"", &arguments};
    bool readable = true;
    try {
        NGUtils::CallTranslatingFaults(formatter);
    } catch (const NGUtils::CWin32Exception&) {
        readable = false;  // unreadable parameters: the entry line names the function only
    }
    va_end(arguments);
    formatted[kParameterCapacity - 1] = L'\0';
    if (!readable) {
        Enter(Category::FunctionEntry, m_functionName);
        return;
    }
    try {
        Enter(Category::FunctionEntry | Category::Parameters, m_functionName + L", " + formatted);
    } catch (...) {
        m_quiet = true;  // no memory for the entry line's text
    }
}

bool CLogFunction::TakeNames(const wchar_t* sourceFile, const wchar_t* functionName) noexcept {
    try {
        m_sourceFile = sourceFile ? sourceFile : L"";
        m_functionName = functionName ? functionName : L"";
        SplitFunctionName(m_functionName, m_shortName, m_className);
    } catch (...) {
        m_quiet = true;
    }
    return !m_quiet;
}

// Out of memory the trace keeps what it managed to do; the exit undoes only that.
void CLogFunction::Enter(DWORD kind, const std::wstring& text) noexcept {
    CLastErrorRestore keepLastError;
    ::QueryPerformanceCounter(&m_start);
    try {
        m_module.WriteLine(SourceOrModule(m_sourceFile), kind, this, text.c_str());
        m_module.Indent(SourceOrModule(m_sourceFile), +1);
        m_indented = true;
        m_module.MonitorEnter(m_className, FunctionText());
    } catch (...) {
    }
}

CLogFunction::~CLogFunction() {
    if (m_quiet) return;
    CLastErrorRestore keepLastError;
    try {
        if (m_indented) m_module.Indent(SourceOrModule(m_sourceFile), -1);
        std::wstring text = FunctionText();
        if (m_module.SettingsFor(SourceOrModule(m_sourceFile)).options & Option::Duration) {
            LARGE_INTEGER now, frequency;
            ::QueryPerformanceCounter(&now);
            if (!::QueryPerformanceFrequency(&frequency) || frequency.QuadPart == 0) frequency.QuadPart = 1000000;
            wchar_t duration[64];
            std::swprintf(duration, 64, L" (Dur: %lld us) ",
                          MicrosecondsOf(now.QuadPart - m_start.QuadPart, frequency.QuadPart));
            text += duration;
        }
        if (m_exceptionState == TraceState::Handled) text += L"(handled exception) ";
        if (m_exceptionState == TraceState::Unhandled) text += L"(*unhandled exception*) ";
        m_module.WriteLine(SourceOrModule(m_sourceFile), Category::FunctionExit, nullptr, text.c_str());
        // A translated structured exception alive while the trace ends: the function is being
        // left by stack unwinding.
        if (NGUtils::CWin32Exception::LiveCount() >= 1) {
            m_module.WriteLine(SourceOrModule(m_sourceFile), Category::FunctionExit, nullptr,
                               L"   *** UNHANDLED EXCEPTION PENDING ***");
        }
        if (m_result != 0) {
            m_module.WriteLine(SourceOrModule(m_sourceFile), Category::ErrorText, nullptr,
                               CLogModule::ErrorText(m_result).c_str());
        }
        m_module.MonitorLeave(FunctionText());
    } catch (...) {
        // A trace never fails its function.
    }
}

void CLogFunction::WriteResult(const wchar_t* text, DWORD value) {
    CLastErrorRestore keepLastError;
    m_result = value;
    if (!m_quiet) m_module.WriteLine(SourceOrModule(m_sourceFile), Category::Result, nullptr, text);
}

void CLogFunction::ReturnInt(int value) {
    wchar_t text[32];
    std::swprintf(text, 32, L"Return: %d", value);
    WriteResult(text, static_cast<DWORD>(value));
}

void CLogFunction::ReturnHex(DWORD value) {
    wchar_t text[32];
    std::swprintf(text, 32, L"Return: 0x%08X", static_cast<unsigned>(value));
    WriteResult(text, value);
}

void CLogFunction::ReturnBool(bool value) { WriteResult(value ? L"Return: TRUE" : L"Return: FALSE", value ? 0 : 1); }

}  // namespace NGLogging
