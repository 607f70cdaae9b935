#!/usr/bin/env bash
# The main job: builds what it runs (the plug-in, its string libraries, the device simulator and
# drvhost; the tests build the rest), installs the simulated printer in the build's Wine prefix
# and drives the plug-in end to end: its identity, the default PrintTicket, a changed ticket
# applied back, the document property sheet with the Printing Shortcuts page (screenshot), a
# shortcut chosen and applied, and the printer property sheet on a device without a two-sided
# unit (screenshot).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${ZX_BUILD_DIR:-$root/build}

# Ninja shows its progress on one updating line on a terminal, and a line per step otherwise.
"$root/scripts/build.sh" zxtaluUI14 mortalures18 unires zxcoresim zxtaluudm zxbuio drvhost >&2
cd "$root"
exec "$root/scripts/drvhost.sh" demo --screenshot "$build/document-sheet.png" \
  --layout-screenshot "$build/layout-page.png" --printer-screenshot "$build/printer-sheet.png" "$@"
