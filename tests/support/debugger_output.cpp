#include "tests/support/debugger_output.h"

#include <windows.h>

namespace zxtest {
namespace {

constexpr DWORD kDebugPrint = 0x40010006;  // DBG_PRINTEXCEPTION_C: length, then the narrow text

std::string* g_capture = nullptr;
DWORD g_capturingThread = 0;

LONG CALLBACK Capture(PEXCEPTION_POINTERS info) {
    const EXCEPTION_RECORD& record = *info->ExceptionRecord;
    if (record.ExceptionCode == kDebugPrint && record.NumberParameters >= 2 && g_capture != nullptr &&
        g_capturingThread == ::GetCurrentThreadId()) {
        const auto* text = reinterpret_cast<const char*>(record.ExceptionInformation[1]);
        if (text != nullptr) g_capture->append(text);
    }
    return EXCEPTION_CONTINUE_SEARCH;
}

}  // namespace

DebuggerOutput::DebuggerOutput() : m_handler(::AddVectoredExceptionHandler(1, &Capture)) {
    g_capture = &m_text;
    g_capturingThread = ::GetCurrentThreadId();
}

DebuggerOutput::~DebuggerOutput() {
    g_capture = nullptr;
    g_capturingThread = 0;
    ::RemoveVectoredExceptionHandler(m_handler);
}

}  // namespace zxtest
