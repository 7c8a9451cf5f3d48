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

# The sanitizer build (scripts/test.sh): the same tests, where any report ends the test with a failure,
# then each fuzz target for a fixed time. Leak checking stays on: no test in CTest starts GTK or WebKit.
san=${TUNELARK_SANITIZE_BUILD_DIR:-}
if [[ -n $san && -d $san ]]; then
  sanitizers=(env "ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1}"
    "UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}")
  run "unit and integration tests with sanitizers" "${sanitizers[@]}" ctest --test-dir "$san" --output-on-failure -j2 --timeout 300
  run "fuzz targets" "${sanitizers[@]}" "$root/fuzz/run.sh" "$san" "${TUNELARK_FUZZ_SECONDS:-30}"
fi
for suite in "$root"/tests/page/run.sh "$root"/tests/e2e/test_*.sh; do
  [[ -x $suite ]] && run "$(basename "$(dirname "$suite")")/$(basename "$suite")" "$suite" "$build"
done

if ((${#failed[@]})); then
  echo "tunelark: failed suites: ${failed[*]}" >&2
  exit 1
fi
echo "tunelark: all suites passed"
