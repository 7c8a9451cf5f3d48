#!/usr/bin/env bash
# Configures and builds Tunelark into build/ (or $TUNELARK_BUILD_DIR). Extra arguments go to cmake.
set -uo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${TUNELARK_BUILD_DIR:-$root/build}
log=$build.log
if ! { cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@" &&
       cmake --build "$build" -j"$(nproc)"; } >"$log" 2>&1; then
  echo "tunelark: build failed in $build (see $log): $(grep -m1 -E 'error|Error' "$log")" >&2
  exit 1
fi
