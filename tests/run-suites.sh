#!/usr/bin/env bash
# Runs every suite against the build in $TUNELARK_BUILD_DIR; expects the session of with-session.sh.
set -uo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${TUNELARK_BUILD_DIR:-$root/build}
failed=()

run() {
  local name=$1
  shift
  echo "== $name"
  if "$@"; then echo "== $name: passed"; else echo "== $name: FAILED"; failed+=("$name"); fi
}

run "unit and integration tests" ctest --test-dir "$build" --output-on-failure -j2 --timeout 180
for suite in "$root"/tests/page/run.sh "$root"/tests/e2e/test_*.sh; do
  [[ -x $suite ]] && run "$(basename "$(dirname "$suite")")/$(basename "$suite")" "$suite" "$build"
done

if ((${#failed[@]})); then
  echo "tunelark: failed suites: ${failed[*]}" >&2
  exit 1
fi
echo "tunelark: all suites passed"
