#!/usr/bin/env bash
# Builds and runs one benchmark of bench/ with its arguments, for example
#   bash scripts/bench.sh ticket_conversion_bench --breakdown 200
#   xvfb-run -a bash scripts/bench.sh property_sheet_bench
#
# The benchmark and the Wine server run on one CPU. Every registry, spooler and debugger call of
# a Wine program is a round trip to the server: about 10 µs when both sit on one CPU, up to ten
# times that when they sit on two and the idle one has gone to sleep. Unpinned, which of the two
# a run happened to get decided its figures. The build's Wine server is let finish first, so
# that the server the benchmark starts is pinned with it. ZX_BENCH_CPU picks another CPU.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${ZX_BUILD_DIR:-$root/build}
name=${1:?usage: scripts/bench.sh BENCHMARK [ARGUMENTS...], BENCHMARK one of: $(cd "$root/bench" && ls *_bench.cpp | sed 's/\.cpp$//' | tr '\n' ' ')}
shift

"$root/scripts/build.sh" "$name" >&2
WINEPREFIX="$build/wineprefix" wineserver -w
exec taskset -c "${ZX_BENCH_CPU:-0}" "$build/wine-run.sh" "$build/bin/$name.exe" "$@"
