#!/usr/bin/env bash
# Page tests: the main window's page in WebKitGTK with the native side recorded.
# Usage: run.sh BUILD_DIR, inside tests/support/with-session.sh.
root=$(cd "$(dirname "$0")/../.." && pwd)
runner=${1:?usage: run.sh BUILD_DIR}/tests/page_test_runner
[[ -x $runner ]] || { echo "page tests: build the target page_test_runner first" >&2; exit 1; }
exec timeout 600 "$runner" "$root/resources/www" "$root/tests/page/harness.js" "$root"/tests/page/*.test.js
