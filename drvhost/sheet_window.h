// Shows a session's property sheet on screen: the plug-in's pages plus the standard page that the
// core driver generates from its visible items, with the common UI's callbacks wired to the
// plug-in. Needs a display; a screenshot of the sheet can be saved as PNG.
#pragma once

#include "drvhost/ui_session.h"

#include <string>

namespace drvhost {

// True when windows can be created (an X display is available under Wine).
bool HasDisplay();

// Shows the sheet. With a screenshot path it is shown without waiting for the user, captured and
// closed; without one it stays until the user closes it. False, with the reason, when it cannot
// be shown or captured.
bool ShowSheet(UiSession& session, const std::wstring& screenshotPath, std::string& problem);

}  // namespace drvhost
