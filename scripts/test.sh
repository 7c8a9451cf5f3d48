#!/usr/bin/env bash
# Installs what the tests need, builds with warnings as errors, and runs every test: unit and
# integration tests (CTest), the page tests and the end-to-end tests, inside a private X and sound session.
set -uo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/install-deps.sh" --test || exit 1
export TUNELARK_BUILD_DIR=${TUNELARK_BUILD_DIR:-$root/build}
"$root/scripts/build.sh" -DTUNELARK_WERROR=ON -DTUNELARK_TESTS=ON || exit 1
exec "$root/tests/support/with-session.sh" "$root/tests/run-suites.sh"
