#include "drvhost/command_line.h"

#include "drvhost/text.h"

namespace drvhost {
namespace {

constexpr OptionSpec kCommonOptions[] = {
    {kPrinterOption, OptionKind::Value, "NAME", "the printer to use (default: the simulated printer)"},
};

bool IsHelp(std::wstring_view argument) { return argument == L"--help" || argument == L"-h"; }
bool LooksLikeOption(std::wstring_view argument) { return argument.size() > 1 && argument[0] == L'-'; }

std::string Quoted(std::wstring_view text) { return "\"" + WideToUtf8(text) + "\""; }

const OptionSpec* FindOption(std::span<const OptionSpec> options, std::wstring_view name) {
    for (const OptionSpec& option : options) {
        if (option.name == name) return &option;
    }
    return nullptr;
}

const CommandSpec* FindCommand(std::span<const CommandSpec> commands, std::wstring_view name) {
    for (const CommandSpec& command : commands) {
        if (command.name == name) return &command;
    }
    return nullptr;
}

class Parser {
public:
    Parser(std::span<const std::wstring> arguments, std::span<const CommandSpec> commands)
        : m_arguments(arguments), m_commands(commands) {}

    CommandLine Parse() {
        while (m_next < m_arguments.size()) {
            const std::wstring& argument = m_arguments[m_next++];
            if (IsHelp(argument)) {
                m_line.help = true;
            } else if (LooksLikeOption(argument)) {
                TakeOption(argument);
            } else if (m_line.command == nullptr) {
                m_line.command = FindCommand(m_commands, argument);
                if (m_line.command == nullptr)
                    throw UsageError("unknown command " + Quoted(argument) + " (try --help)");
            } else {
                m_line.operands.push_back(argument);
            }
        }
        if (m_line.help) return m_line;
        if (m_line.command == nullptr) throw UsageError("no command given (try --help)");
        CheckOperands();
        return m_line;
    }

private:
    std::string CommandName() const {
        return m_line.command ? WideToUtf8(m_line.command->name) : std::string("drvhost");
    }

    std::string HelpHint() const {
        return m_line.command ? "try drvhost " + CommandName() + " --help" : std::string("try --help");
    }

    void TakeOption(const std::wstring& argument) {
        const size_t equals = argument.find(L'=');
        const std::wstring name = argument.substr(0, equals);
        const OptionSpec* option = FindOption(kCommonOptions, name);
        if (option == nullptr && m_line.command != nullptr) option = FindOption(m_line.command->options, name);
        if (option == nullptr) {
            throw UsageError("unknown option " + WideToUtf8(name) + " for " + CommandName() + " (" + HelpHint() + ")");
        }
        if (option->kind == OptionKind::Flag) {
            if (equals != std::wstring::npos) throw UsageError(WideToUtf8(name) + " takes no value");
            Store(*option, L"");
            return;
        }
        std::wstring value;
        if (equals != std::wstring::npos) {
            value = argument.substr(equals + 1);
        } else if (m_next < m_arguments.size() && !LooksLikeOption(m_arguments[m_next])) {
            value = m_arguments[m_next++];
        }
        if (value.empty()) {
            throw UsageError(WideToUtf8(name) + " needs a value (" + std::string(option->valueName) + ")");
        }
        if (name == kPrinterOption) {
            m_line.printerName = value;
            return;
        }
        Store(*option, value);
    }

    void Store(const OptionSpec& option, const std::wstring& value) {
        std::vector<std::wstring>& values = m_line.options[std::wstring(option.name)];
        if (!values.empty() && option.kind != OptionKind::RepeatedValue) {
            throw UsageError(WideToUtf8(option.name) + " is given more than once");
        }
        values.push_back(value);
    }

    void CheckOperands() const {
        const CommandSpec& command = *m_line.command;
        const size_t expected = command.operand.empty() ? 0 : 1;
        if (m_line.operands.size() > expected) {
            throw UsageError("unexpected argument " + Quoted(m_line.operands[expected]) + " for " + CommandName() +
                             " (" + HelpHint() + ")");
        }
        if (m_line.operands.size() < expected) {
            throw UsageError(CommandName() + " needs " + std::string(command.operand) + " (" + HelpHint() + ")");
        }
    }

    std::span<const std::wstring> m_arguments;
    std::span<const CommandSpec> m_commands;
    size_t m_next = 0;
    CommandLine m_line;
};

std::string Padded(std::string text, size_t width) {
    if (text.size() < width) text.append(width - text.size(), ' ');
    return text + " ";
}

std::string Synopsis(const CommandSpec& command) {
    std::string synopsis = WideToUtf8(command.name);
    for (const OptionSpec& option : command.options) {
        synopsis += " [" + WideToUtf8(option.name);
        if (!option.valueName.empty()) synopsis += " " + std::string(option.valueName);
        synopsis += option.kind == OptionKind::RepeatedValue ? " ...]" : "]";
    }
    if (!command.operand.empty()) synopsis += " " + std::string(command.operand);
    return synopsis;
}

std::string OptionLines(std::span<const OptionSpec> options) {
    std::string lines;
    for (const OptionSpec& option : options) {
        std::string name = WideToUtf8(option.name);
        if (!option.valueName.empty()) name += " " + std::string(option.valueName);
        lines += "    " + Padded(name, 24) + std::string(option.help) + "\n";
    }
    return lines;
}

}  // namespace

std::wstring CommandLine::Value(std::wstring_view option) const {
    const auto found = options.find(option);
    return found == options.end() || found->second.empty() ? std::wstring() : found->second.back();
}

std::vector<std::wstring> CommandLine::Values(std::wstring_view option) const {
    const auto found = options.find(option);
    return found == options.end() ? std::vector<std::wstring>() : found->second;
}

CommandLine ParseCommandLine(std::span<const std::wstring> arguments, std::span<const CommandSpec> commands) {
    return Parser(arguments, commands).Parse();
}

std::string GeneralHelp(std::span<const CommandSpec> commands) {
    std::string help = "usage: drvhost [--printer NAME] <command> [options]\n\ncommands:\n";
    for (const CommandSpec& command : commands) {
        help += "  " + Padded(WideToUtf8(command.name), 10) + std::string(command.summary) + "\n";
        help += OptionLines(command.options);
    }
    help += "\noptions of every command:\n" + OptionLines(kCommonOptions);
    help +=
        "\nThe simulated printer is installed on first use; another printer must first be installed with\n"
        "`drvhost install --printer NAME`. `install` refreshes the driver files after a build.\n"
        "`drvhost <command> --help` shows one command. Exit status: 0 done, 1 failed, 2 bad command line.\n";
    return help;
}

std::string CommandHelp(const CommandSpec& command) {
    return "usage: drvhost [--printer NAME] " + Synopsis(command) + "\n\n" + std::string(command.summary) + "\n" +
           (command.options.empty() ? std::string() : "\noptions:\n" + OptionLines(command.options));
}

}  // namespace drvhost
