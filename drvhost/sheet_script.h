// What a person does with a shown property sheet, written as steps that drvhost carries out by
// sending the messages that the person's clicks and keys send: pick a printing shortcut, change
// one of its settings, name it (Save as), delete it, switch pages, pick an option on the standard
// page, Apply, OK, Cancel, and take a screenshot after any step.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace drvhost {

struct SheetStep {
    enum class Action {
        SelectShortcut,  // shortcut=NAME             click the shortcut of that name in the list
        ChangeSetting,   // setting=FEATURE=ENTRY     choose an entry of the setting's combo box
        SaveAs,          // save-as=NAME              click Save as, type the name, press Enter
        Delete,          // delete                    click Delete
        SwitchPage,      // page=TITLE                click the page's tab
        SelectOption,    // option=FEATURE=ENTRY      choose an option on the standard page
        Revert,          // revert                    click Undo Changes on the standard page
        Apply,           // apply                     click Apply
        Ok,              // ok                        click OK
        Cancel,          // cancel                    click Cancel
        Screenshot,      // screenshot=FILE           save a picture of the sheet as PNG
    };
    Action action;
    std::wstring name;   // the shortcut, feature, page title or file
    std::wstring entry;  // an entry's text, or its position when all digits
};

// One step from its text; nothing, with the reason, for a text that is not a step.
std::optional<SheetStep> ParseSheetStep(std::wstring_view text, std::string& problem);

// The steps' syntax, one line each, for the help text.
const char* SheetStepHelp();

// The position an entry names among `entries`: its number when it is all digits, else the first
// entry of that text (ignoring case). Nothing when there is no such entry.
std::optional<size_t> FindEntry(const std::vector<std::wstring>& entries, const std::wstring& entry);

}  // namespace drvhost
