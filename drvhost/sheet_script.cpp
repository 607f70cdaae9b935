#include "drvhost/sheet_script.h"

#include "drvhost/text.h"

#include <windows.h>

#include <cwctype>
#include <iterator>

namespace drvhost {
namespace {

struct StepSyntax {
    const wchar_t* keyword;
    SheetStep::Action action;
    int parts;  // after the keyword: 0 none, 1 "=NAME", 2 "=NAME=ENTRY"
};

constexpr StepSyntax kSteps[] = {
    {L"shortcut", SheetStep::Action::SelectShortcut, 1},
    {L"setting", SheetStep::Action::ChangeSetting, 2},
    {L"save-as", SheetStep::Action::SaveAs, 1},
    {L"delete", SheetStep::Action::Delete, 0},
    {L"page", SheetStep::Action::SwitchPage, 1},
    {L"option", SheetStep::Action::SelectOption, 2},
    {L"revert", SheetStep::Action::Revert, 0},
    {L"apply", SheetStep::Action::Apply, 0},
    {L"ok", SheetStep::Action::Ok, 0},
    {L"cancel", SheetStep::Action::Cancel, 0},
    {L"screenshot", SheetStep::Action::Screenshot, 1},
};

bool AllDigits(const std::wstring& text) {
    if (text.empty()) return false;
    for (wchar_t c : text) {
        if (!std::iswdigit(c)) return false;
    }
    return true;
}

}  // namespace

std::optional<SheetStep> ParseSheetStep(std::wstring_view text, std::string& problem) {
    const size_t equals = text.find(L'=');
    const std::wstring_view keyword = text.substr(0, equals);
    const std::wstring_view rest = equals == std::wstring_view::npos ? std::wstring_view() : text.substr(equals + 1);
    for (const StepSyntax& syntax : kSteps) {
        if (keyword != syntax.keyword) continue;
        SheetStep step{syntax.action, {}, {}};
        if (syntax.parts == 0) {
            if (equals == std::wstring_view::npos) return step;
            problem = "step '" + WideToUtf8(std::wstring(keyword)) + "' takes no value";
            return std::nullopt;
        }
        const size_t second = syntax.parts == 2 ? rest.find(L'=') : std::wstring_view::npos;
        step.name = std::wstring(rest.substr(0, second));
        if (second != std::wstring_view::npos) step.entry = std::wstring(rest.substr(second + 1));
        if (step.name.empty() || (syntax.parts == 2 && second == std::wstring_view::npos)) {
            problem = "step '" + WideToUtf8(std::wstring(text)) + "' lacks its value (see --help)";
            return std::nullopt;
        }
        return step;
    }
    problem = "no step '" + WideToUtf8(std::wstring(keyword)) + "' (see --help)";
    return std::nullopt;
}

const char* SheetStepHelp() {
    return "  shortcut=NAME           click the printing shortcut NAME in the list\n"
           "  setting=FEATURE=ENTRY   choose ENTRY (its text or position) in the shortcut setting's box\n"
           "  save-as=NAME            click Save as, type NAME, press Enter\n"
           "  delete                  click Delete\n"
           "  page=TITLE              click the tab of the page TITLE\n"
           "  option=FEATURE=ENTRY    choose ENTRY of FEATURE on the standard page\n"
           "  revert                  click Undo Changes on the standard page\n"
           "  apply | ok | cancel     click Apply, OK or Cancel\n"
           "  screenshot=FILE         save a picture of the sheet (PNG)\n";
}

std::optional<size_t> FindEntry(const std::vector<std::wstring>& entries, const std::wstring& entry) {
    if (AllDigits(entry)) {
        if (entry.size() > 9) return std::nullopt;
        const size_t position = std::stoul(entry);
        if (position < entries.size()) return position;
        return std::nullopt;
    }
    for (size_t position = 0; position < entries.size(); ++position) {
        if (::CompareStringOrdinal(entries[position].c_str(), -1, entry.c_str(), -1, TRUE) == CSTR_EQUAL) {
            return position;
        }
    }
    return std::nullopt;
}

}  // namespace drvhost
