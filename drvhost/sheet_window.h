// Shows a session's property sheet on screen: the plug-in's pages plus the standard page that the
// core driver generates from its visible items, with the common UI's callbacks wired to the
// plug-in. Needs a display; a screenshot of the sheet can be saved as PNG.
#pragma once

#include "drvhost/sheet_script.h"
#include "drvhost/ui_session.h"

#include <functional>
#include <string>
#include <vector>

namespace drvhost {

// True when windows can be created (an X display is available under Wine).
bool HasDisplay();

// Shows the sheet. With a screenshot path it is shown without waiting for the user, captured and
// closed; without one it stays until the user closes it. False, with the reason, when it cannot
// be shown or captured.
bool ShowSheet(UiSession& session, const std::wstring& screenshotPath, std::string& problem);

// Opens the sheet without showing it to anyone, lets it handle what its opening queued and closes
// it: the cost of a sheet's opening, for the benchmarks. False, with the reason, without a display.
bool OpenAndCloseSheet(UiSession& session, std::string& problem);

// What a scripted sheet did: one line per message box that came up ("message box CAPTION: TEXT",
// answered OK as a person would) and per step that could not be done.
struct SheetRun {
    std::vector<std::string> events;
    bool closedByStep = false;  // OK or Cancel closed the sheet
};

// Shows the sheet without waiting for the user, carries out the steps, and, unless a step closed
// it, saves the screenshot (when a path is given) and closes it as the window's close box does.
// False, with the reason, when the sheet cannot be shown, a step cannot be carried out, or a
// picture cannot be saved; the steps before stay done.
// `inspect`, when given, looks at the sheet once it is shown (steps done: 0) and after every step.
using SheetInspector = std::function<void(size_t stepsDone, HWND sheet)>;
bool RunSheet(UiSession& session, const std::vector<SheetStep>& steps, const std::wstring& screenshotPath,
              SheetRun& run, std::string& problem, const SheetInspector& inspect = {});

}  // namespace drvhost
