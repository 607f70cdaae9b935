#!/usr/bin/env bash
# Runs drvhost (build/bin/drvhost.exe) with the given arguments in the build's Wine prefix. Without
# an X display it runs on a virtual one, so that `ui` and `demo` can show property sheets.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${ZX_BUILD_DIR:-$root/build}

run=("$build/wine-run.sh" "$build/bin/drvhost.exe" "$@")
if [ -n "${DISPLAY:-}" ] || ! command -v xvfb-run >/dev/null; then
  exec "${run[@]}"
fi
# Wine's lingering processes complain when the virtual display goes away; that is not news.
lost_display='^(X connection to .* broken|XIO: +fatal IO error|      after [0-9]+ requests)'
set +e
{ xvfb-run -a -s "-screen 0 1280x1024x24" "${run[@]}" 2>&1 1>&3 3>&- |
    grep --line-buffered -v -E "$lost_display" >&2; } 3>&1
exit "${PIPESTATUS[0]}"
