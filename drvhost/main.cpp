// drvhost: stands in for the printer driver's core configuration module. It installs the
// simulated printer, loads the plug-in the way the core driver does, and shows what it does.
#include "drvhost/commands.h"

#include <string>
#include <vector>

int wmain(int argc, wchar_t** argv) {
    const std::vector<std::wstring> arguments(argv + 1, argv + argc);
    drvhost::StandardConsole console;
    return drvhost::RunDrvhost(arguments, console);
}
