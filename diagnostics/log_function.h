// Function tracing for the log module: a scope object that writes a function's entry and exit
// lines, with its duration, result and exception state; and a scope object that keeps the
// thread's last error unchanged across logging.
#pragma once

#include "diagnostics/log_module.h"

#include <string>

namespace NGLogging {

class CLastErrorRestore {
public:
    CLastErrorRestore() noexcept : m_lastError(::GetLastError()) {}
    virtual ~CLastErrorRestore() { ::SetLastError(m_lastError); }
    CLastErrorRestore(const CLastErrorRestore&) = delete;
    CLastErrorRestore& operator=(const CLastErrorRestore&) = delete;

private:
    DWORD m_lastError;
};

// Exception states of a trace.
namespace TraceState {
inline constexpr DWORD None = 0;
inline constexpr DWORD Handled = 2;
inline constexpr DWORD Unhandled = 3;
}  // namespace TraceState

// Without memory for its texts a trace writes nothing; it never throws to its function.
class CLogFunction {
public:
    // Writes the entry line. A set exception flag starts the trace in the unhandled state.
    CLogFunction(CLogModule& module, const wchar_t* sourceFile, const wchar_t* functionName, int line,
                 DWORD initialResult = 0, bool unhandledException = false);
    // The same, the entry line carrying the call's parameters (printf-style, %ls for wide text).
    CLogFunction(CLogModule& module, const wchar_t* sourceFile, const wchar_t* functionName, int line,
                 DWORD initialResult, bool unhandledException, const wchar_t* parameters, ...);
    virtual ~CLogFunction();
    CLogFunction(const CLogFunction&) = delete;
    CLogFunction& operator=(const CLogFunction&) = delete;

    // Result lines; a non-zero stored result adds the error text after the exit line.
    void ReturnInt(int value);
    void ReturnHex(DWORD value);
    void ReturnBool(bool value);  // stores 0 for true and 1 for false
    void SetExceptionState(DWORD state) noexcept { m_exceptionState = state; }

    int Line() const noexcept { return m_line; }
    DWORD Result() const noexcept { return m_result; }
    // Class::Method of ns::Class::Method; the class name is the component before the last "::".
    const std::wstring& ShortName() const noexcept { return m_shortName; }
    const std::wstring& ClassName() const noexcept { return m_className; }

private:
    // Takes the names; false when memory for them cannot be had.
    bool TakeNames(const wchar_t* sourceFile, const wchar_t* functionName) noexcept;
    void Enter(DWORD kind, const std::wstring& text) noexcept;
    void WriteResult(const wchar_t* text, DWORD value);
    const std::wstring& FunctionText() const { return m_shortName.empty() ? m_functionName : m_shortName; }

    DWORD m_result;
    DWORD m_exceptionState;
    int m_line;
    CLogModule& m_module;
    std::wstring m_sourceFile;
    LARGE_INTEGER m_start{};
    std::wstring m_functionName;
    std::wstring m_className;
    std::wstring m_shortName;
    bool m_quiet = false;     // writes nothing at all
    bool m_indented = false;  // the entry grew the file's indentation
};

// Splits a function name at its "::" separators outside angle brackets (the first 255
// characters are looked at): the short name and the class name.
void SplitFunctionName(const std::wstring& name, std::wstring& shortName, std::wstring& className);

}  // namespace NGLogging
