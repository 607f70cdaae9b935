#!/usr/bin/env bash
# The main job: builds the plug-in, installs the simulated printer in the build's Wine prefix and
# drives the plug-in end to end: its identity, the default PrintTicket, the ticket applied back,
# and a screenshot of the document property sheet (on a virtual display when there is no other).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${ZX_BUILD_DIR:-$root/build}

"$root/scripts/build.sh" --quiet >&2
cd "$root"
screenshot="$build/document-sheet.png"
run=("$build/wine-run.sh" "$build/bin/drvhost.exe" demo --screenshot "$screenshot" "$@")
if [ -z "${DISPLAY:-}" ] && command -v xvfb-run >/dev/null; then
  # Wine's lingering processes complain when the virtual display goes away; that is not news.
  exec xvfb-run -a -s "-screen 0 1280x1024x24" "${run[@]}" 2> >(grep -v '^X connection to' >&2)
fi
exec "${run[@]}"
