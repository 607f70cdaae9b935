// The document property sheet of the sample printer as a person meets it: the plug-in loaded from
// the printer's driver directory by the simulated core driver, the sheet shown on the display and
// driven by steps, and what a test reads off the shown windows.
#pragma once

#include "drvhost/driver_host.h"
#include "drvhost/sheet_window.h"
#include "drvhost/ui_session.h"
#include "tests/shortcuts/shortcut_bed.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace zxtest {

// Skips the test when no window can be created (no X display).
#define ZX_REQUIRE_DISPLAY() \
    if (!drvhost::HasDisplay()) GTEST_SKIP() << "no display: property sheets need an X display (xvfb-run)"

// Tests of the shown sheets: a display, the shortcut test printer installed, no stored shortcut.
class ShownSheetTest : public ShortcutPrinterTest {
protected:
    void SetUp() override { ZX_REQUIRE_DISPLAY(); }
};

// One opening of a property sheet of the shortcut test printer with a new default job.
class PageBed {
public:
    // `jobSettings` are the job's settings before the sheet opens: feature keyword and option index.
    explicit PageBed(drvhost::FeatureSheet sheet = drvhost::FeatureSheet::Document,
                     DWORD flags = drvhost::kDocumentSheetMode,
                     const std::vector<std::pair<std::string, DWORD>>& jobSettings = {});

    // Shows the sheet, carries out the steps ("shortcut=NAME", "setting=LABEL=ENTRY", ...) and
    // closes it; `inspect` sees the sheet after opening and after every step.
    drvhost::SheetRun Run(const std::vector<std::wstring>& steps, const drvhost::SheetInspector& inspect = {});

    std::unique_ptr<drvhost::DriverHost> host;
    std::unique_ptr<drvhost::JobDevMode> job;
    std::unique_ptr<drvhost::UiSession> session;

    // The option index the core driver's item of a feature now has.
    LONG ItemSelection(std::string_view feature);
    // The job's selection of a feature (what the core driver keeps in the DEVMODE).
    DWORD JobSelection(std::string_view feature) const;
};

// Reading the shown Printing Shortcuts page.
HWND ShortcutPageOf(HWND sheet);
std::vector<std::wstring> ListTexts(HWND page);
int SelectedListItem(HWND page);
std::wstring ControlText(HWND page, int id);
std::wstring ComboText(HWND page, int id);
bool Enabled(HWND page, int id);
bool Visible(HWND page, int id);

}  // namespace zxtest
