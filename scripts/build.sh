#!/usr/bin/env bash
# Installs what the machine lacks, then configures and builds everything into build/ (or $ZX_BUILD_DIR).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${ZX_BUILD_DIR:-$root/build}

if [ "$(id -u)" = 0 ]; then
  "$root/scripts/install-deps.sh"
fi

if [ ! -f "$build/build.ninja" ]; then
  echo "First build into $build: about 4 minutes for the main job, 6 with the tests (two cores)." >&2
  cmake -S "$root" -B "$build" -G Ninja ${ZX_CMAKE_ARGS:-} >/dev/null
elif [ -n "${ZX_CMAKE_ARGS:-}" ]; then
  cmake "$build" ${ZX_CMAKE_ARGS} >/dev/null
fi
ninja -C "$build" "$@"
