#!/usr/bin/env bash
# The main job: builds the plug-in and drives it end to end on the simulated printer.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${ZX_BUILD_DIR:-$root/build}

"$root/scripts/build.sh" --quiet >&2
exec "$build/wine-run.sh" "$build/bin/drvhost.exe" demo "$@"
