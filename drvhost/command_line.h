// drvhost's command line: each command declares its options in a table, and one parser checks
// every command's arguments against its table. A new option is one row; a new command is one
// entry in the command table (drvhost/commands.cpp).
#pragma once

#include <map>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace drvhost {

class Console;
struct CommandLine;

enum class OptionKind {
    Flag,           // --printer-sheet
    Value,          // --screenshot FILE (given once)
    RepeatedValue,  // --set FEATURE=OPTION (given any number of times)
};

struct OptionSpec {
    std::wstring_view name;
    OptionKind kind;
    std::string_view valueName;  // how the help names the value; empty for a flag
    std::string_view help;
};

struct CommandSpec {
    std::wstring_view name;
    std::string_view summary;
    std::span<const OptionSpec> options;
    std::string_view operand;  // the one argument the command requires ("FILE.xml"); empty: none
    int (*run)(const CommandLine&, Console&);
};

// Options every command takes, before or after the command's name.
inline constexpr wchar_t kPrinterOption[] = L"--printer";

struct CommandLine {
    const CommandSpec* command = nullptr;  // null: general help was asked for
    bool help = false;                     // --help: show the help of `command` (or the general one)
    std::wstring printerName;              // empty: the default printer
    std::map<std::wstring, std::vector<std::wstring>, std::less<>> options;
    std::vector<std::wstring> operands;

    bool Has(std::wstring_view option) const { return options.find(option) != options.end(); }
    // The option's value, or empty when the option was not given.
    std::wstring Value(std::wstring_view option) const;
    std::vector<std::wstring> Values(std::wstring_view option) const;
    std::wstring Operand() const { return operands.empty() ? std::wstring() : operands.front(); }
};

// A command line that asks for something that is not there: drvhost says so in one line and
// exits with 2.
class UsageError : public std::invalid_argument {
public:
    using std::invalid_argument::invalid_argument;
};

// Throws UsageError for an unknown command or option, a missing value or operand, or an
// unexpected argument.
CommandLine ParseCommandLine(std::span<const std::wstring> arguments, std::span<const CommandSpec> commands);

std::string GeneralHelp(std::span<const CommandSpec> commands);
std::string CommandHelp(const CommandSpec& command);

}  // namespace drvhost
