#include "diagnostics/win32_exception.h"

namespace NGUtils {
namespace {

volatile LONG g_liveExceptions = 0;

// The compilers of this toolchain have no __try/__except. A fault inside a guarded call is caught
// by a vectored handler of the faulting thread that puts the thread back where the call captured
// its context, like a longjmp done by the system: the faulting frames are abandoned without
// unwinding, which is why guarded bodies may only touch plain memory. The typed exception is then
// thrown from the guarded call's own frame, where C++ unwinding is sound.
struct GuardFrame {
    CONTEXT resume;
    EXCEPTION_RECORD fault;
    volatile LONG faulted;
    GuardFrame* outer;
};

thread_local GuardFrame* t_guard = nullptr;

bool IsProcessorFault(DWORD code) {
    switch (code) {
    case EXCEPTION_ACCESS_VIOLATION:
    case EXCEPTION_IN_PAGE_ERROR:
    case EXCEPTION_DATATYPE_MISALIGNMENT:
    case EXCEPTION_ARRAY_BOUNDS_EXCEEDED:
    case EXCEPTION_INT_DIVIDE_BY_ZERO:
    case EXCEPTION_INT_OVERFLOW:
    case EXCEPTION_ILLEGAL_INSTRUCTION:
    case EXCEPTION_PRIV_INSTRUCTION:
    case EXCEPTION_FLT_DIVIDE_BY_ZERO:
    case EXCEPTION_FLT_INVALID_OPERATION:
    case EXCEPTION_FLT_OVERFLOW:
    case EXCEPTION_FLT_UNDERFLOW:
    case EXCEPTION_FLT_STACK_CHECK:
    case EXCEPTION_FLT_INEXACT_RESULT:
    case EXCEPTION_FLT_DENORMAL_OPERAND: return true;
    default:  // C++ exceptions, debugger output and the like pass on
        return false;
    }
}

// Runs for every exception of every thread while a guarded call is in progress anywhere. The
// code is tested before anything else: the first look at a thread's guard allocates that
// thread's storage, which must not happen during the dispatch of an exception not meant for us.
LONG CALLBACK ResumeAtGuard(PEXCEPTION_POINTERS info) {
    if (!IsProcessorFault(info->ExceptionRecord->ExceptionCode)) return EXCEPTION_CONTINUE_SEARCH;
    GuardFrame* guard = t_guard;
    if (guard == nullptr) return EXCEPTION_CONTINUE_SEARCH;
    guard->fault = *info->ExceptionRecord;
    guard->faulted = 1;
    *info->ContextRecord = guard->resume;
    return EXCEPTION_CONTINUE_EXECUTION;
}

// Returns twice, like setjmp: once after capturing the context, once more after a fault.
__attribute__((noinline)) bool RunGuarded(GuardFrame& guard, void (*body)(void*), void* context) {
    ::RtlCaptureContext(&guard.resume);
    if (guard.faulted) return false;
    t_guard = &guard;
    body(context);
    return true;
}

struct FaultMessage {
    DWORD code;
    const wchar_t* wide;
    const char* narrow;
};
constexpr FaultMessage kMessages[] = {
    {EXCEPTION_ACCESS_VIOLATION, L"Access violation", "Access violation"},
    {EXCEPTION_INT_DIVIDE_BY_ZERO, L"Division by zero", "Division by zero"},
};
constexpr FaultMessage kOtherFault = {0, L"Win32 exception", "Win32 exception"};

const FaultMessage& MessageFor(DWORD code) {
    for (const FaultMessage& message : kMessages) {
        if (message.code == code) return message;
    }
    return kOtherFault;
}

}  // namespace

CWin32Exception::CWin32Exception(DWORD code, const void* address) noexcept
    : m_message(MessageFor(code).wide), m_address(address), m_code(code) {
    ::InterlockedIncrement(&g_liveExceptions);
}

CWin32Exception::CWin32Exception(const CWin32Exception& other) noexcept
    : std::exception(other), m_message(other.m_message), m_address(other.m_address), m_code(other.m_code) {
    ::InterlockedIncrement(&g_liveExceptions);
}

CWin32Exception::~CWin32Exception() { ::InterlockedDecrement(&g_liveExceptions); }

const char* CWin32Exception::what() const noexcept { return MessageFor(m_code).narrow; }

long CWin32Exception::LiveCount() noexcept { return g_liveExceptions; }

void ThrowTranslated(const EXCEPTION_RECORD& record) {
    if (record.ExceptionCode == EXCEPTION_ACCESS_VIOLATION && record.NumberParameters >= 2) {
        throw CAccessViolation(record.ExceptionAddress, record.ExceptionInformation[0] == 1,
                               reinterpret_cast<const void*>(record.ExceptionInformation[1]));
    }
    throw CWin32Exception(record.ExceptionCode, record.ExceptionAddress);
}

bool CallCatchingFaults(void (*body)(void*), void* context, EXCEPTION_RECORD& fault) noexcept {
    GuardFrame guard{};
    guard.outer = t_guard;
    PVOID handler = ::AddVectoredExceptionHandler(1, &ResumeAtGuard);
    const bool completed = RunGuarded(guard, body, context);
    t_guard = guard.outer;
    if (handler) ::RemoveVectoredExceptionHandler(handler);
    if (!completed) fault = guard.fault;
    return completed;
}

}  // namespace NGUtils
