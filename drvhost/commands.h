// drvhost's commands, run with a console that tests can capture.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace drvhost {

class Console {
public:
    virtual ~Console() = default;
    virtual void Out(std::string_view text) = 0;
    // One line of an error, without the program's name and the line end.
    virtual void Error(std::string_view line) = 0;

    // printf-style output.
    void Print(const char* format, ...) __attribute__((format(__MINGW_PRINTF_FORMAT, 2, 3)));
};

// Standard output and standard error, errors prefixed "drvhost: ".
class StandardConsole : public Console {
public:
    void Out(std::string_view text) override;
    void Error(std::string_view line) override;
};

// Runs the command line (the arguments after the program's name). Returns the exit status:
// 0 done, 1 the work failed, 2 the command line asks for something that is not there.
int RunDrvhost(std::span<const std::wstring> arguments, Console& console);

}  // namespace drvhost
