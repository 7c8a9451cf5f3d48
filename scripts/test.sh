#!/usr/bin/env bash
# Installs what the tests need, builds with warnings as errors, and runs every test: unit and
# integration tests (CTest), the page tests and the end-to-end tests, inside a private X and sound session.
# A second build with clang, AddressSanitizer and UndefinedBehaviorSanitizer holds only the unit and
# integration tests and the fuzz targets; the suites run those tests again there and each fuzz target
# for a short time. TUNELARK_SANITIZE_BUILD_DIR= (empty) skips that build.
set -uo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/install-deps.sh" --test || exit 1
export TUNELARK_BUILD_DIR=${TUNELARK_BUILD_DIR:-$root/build}
"$root/scripts/build.sh" -DTUNELARK_WERROR=ON -DTUNELARK_TESTS=ON || exit 1

export TUNELARK_SANITIZE_BUILD_DIR=${TUNELARK_SANITIZE_BUILD_DIR-$root/build-sanitize}
if [[ -n $TUNELARK_SANITIZE_BUILD_DIR ]]; then
  san=$TUNELARK_SANITIZE_BUILD_DIR
  # -O1 with line tables: readable reports, and quicker to compile than the release flags. Warnings are
  # the normal build's business; this one is about what the sanitizers find.
  if ! { cmake -S "$root" -B "$san" -DCMAKE_CXX_COMPILER=clang++ \
           -DCMAKE_BUILD_TYPE=Sanitize -DCMAKE_CXX_FLAGS_SANITIZE="-O1 -gline-tables-only" \
           -DTUNELARK_TESTS=ON -DTUNELARK_SANITIZE=ON -DTUNELARK_FUZZ=ON &&
         cmake --build "$san" -j"$(nproc)" --target tunelark_test_programs; } >"$san.log" 2>&1; then
    echo "tunelark: sanitizer build failed in $san (see $san.log): $(grep -m1 -E 'error|Error' "$san.log")" >&2
    exit 1
  fi
fi
exec "$root/tests/support/with-session.sh" "$root/tests/run-suites.sh"
