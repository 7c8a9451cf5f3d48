#!/usr/bin/env bash
# Runs every suite against the build in $TUNELARK_BUILD_DIR, inside tests/support/with-session.sh.
set -uo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${TUNELARK_BUILD_DIR:-$root/build}
failed=()
run() { # NAME COMMAND...
  echo "== $1"
  if "${@:2}"; then echo "== $1: passed"; else echo "== $1: FAILED"; failed+=("$1"); fi
}

run "unit and integration tests" ctest --test-dir "$build" --output-on-failure -j2 --timeout 180
# The sanitizer build (scripts/test.sh): the same tests, any report a failure, then each fuzz target for a
# fixed time. Leak checking stays on; the one test that starts a web view leaves the process-long caches
# of two system libraries behind, which tests/support/lsan.supp names.
san=${TUNELARK_SANITIZE_BUILD_DIR:-}
if [[ -n $san && -d $san ]]; then
  sanitizers=(env "ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1}"
    "LSAN_OPTIONS=${LSAN_OPTIONS:-suppressions=$root/tests/support/lsan.supp:print_suppressions=0}"
    "UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}")
  run "unit and integration tests with sanitizers" "${sanitizers[@]}" ctest --test-dir "$san" --output-on-failure -j2 --timeout 300
  run "fuzz targets" "${sanitizers[@]}" "$root/fuzz/run.sh" "$san" "${TUNELARK_FUZZ_SECONDS:-30}"
fi
for suite in "$root"/tests/page/run.sh "$root"/tests/e2e/test_*.sh; do
  [[ -x $suite ]] && run "${suite#"$root"/tests/}" "$suite" "$build"
done
((${#failed[@]})) && { echo "tunelark: failed suites: ${failed[*]}" >&2; exit 1; }
echo "tunelark: all suites passed"
