// What the calling thread sends to the debugger (OutputDebugString) while a capture lives. The
// text arrives as the debug-print exception that the system raises for every debugger line;
// the capture reads it and lets it pass on.
#pragma once

#include <string>

namespace zxtest {

class DebuggerOutput {
public:
    DebuggerOutput();
    ~DebuggerOutput();
    DebuggerOutput(const DebuggerOutput&) = delete;
    DebuggerOutput& operator=(const DebuggerOutput&) = delete;

    // Everything sent so far, one text after the other.
    const std::string& Text() const noexcept { return m_text; }

private:
    std::string m_text;
    void* m_handler;
};

}  // namespace zxtest
