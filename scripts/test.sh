#!/usr/bin/env bash
# Builds and runs every test under Wine. Arguments are passed to ctest, for example
#   scripts/test.sh -R core_tests        one test executable
# Property-sheet tests need an X display: without one, the tests run on a virtual display.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${ZX_BUILD_DIR:-$root/build}

"$root/scripts/build.sh"

cd "$build"
if [ -z "${DISPLAY:-}" ] && command -v xvfb-run >/dev/null; then
  exec xvfb-run -a -s "-screen 0 1280x1024x24" ctest --output-on-failure "$@"
fi
exec ctest --output-on-failure "$@"
