// Structured (processor) exceptions as typed C++ exceptions, for the logging library: a fault
// while a line is written must drop the line, not the process.
#pragma once

#include <windows.h>

#include <exception>

namespace NGUtils {

class CWin32Exception : public std::exception {
public:
    CWin32Exception(DWORD code, const void* address) noexcept;
    CWin32Exception(const CWin32Exception& other) noexcept;
    CWin32Exception& operator=(const CWin32Exception&) = delete;
    ~CWin32Exception() override;

    const char* what() const noexcept override;
    // "Access violation", "Division by zero" or "Win32 exception".
    virtual const wchar_t* Message() const noexcept { return m_message; }
    DWORD Code() const noexcept { return m_code; }
    const void* Address() const noexcept { return m_address; }

    // Translated exceptions alive in the process: a function trace that is left while one exists
    // is being left by stack unwinding.
    static long LiveCount() noexcept;

private:
    const wchar_t* m_message;
    const void* m_address;
    DWORD m_code;
};

class CAccessViolation : public CWin32Exception {
public:
    CAccessViolation(const void* address, bool write, const void* accessed) noexcept
        : CWin32Exception(EXCEPTION_ACCESS_VIOLATION, address), m_write(write), m_accessed(accessed) {}

    bool IsWrite() const noexcept { return m_write; }
    const void* AccessedAddress() const noexcept { return m_accessed; }

private:
    bool m_write;
    const void* m_accessed;
};

// Throws the typed exception for a structured exception record.
[[noreturn]] void ThrowTranslated(const EXCEPTION_RECORD& record);

// Runs body(context), which must only read and write plain memory (no allocations, no objects
// with destructors, no C++ exceptions). A processor fault inside it ends the call: false, and
// the record of the fault.
bool CallCatchingFaults(void (*body)(void*), void* context, EXCEPTION_RECORD& fault) noexcept;

// Runs a callable of the same restricted kind; a processor fault inside it is thrown as
// CWin32Exception or CAccessViolation.
template <typename Body>
void CallTranslatingFaults(Body& body) {
    EXCEPTION_RECORD fault;
    if (!CallCatchingFaults([](void* callable) { (*static_cast<Body*>(callable))(); }, &body, fault)) {
        ThrowTranslated(fault);
    }
}

}  // namespace NGUtils
