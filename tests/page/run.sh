#!/usr/bin/env bash
# Page tests: the page of the main window in WebKitGTK with the native side recorded, then a screenshot
# of it with sample data. Usage: run.sh BUILD_DIR (inside an X session, see tests/support/with-session.sh).
set -uo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
build=${1:?usage: run.sh BUILD_DIR}
runner=$build/tests/page_test_runner
if [[ ! -x $runner ]]; then
  echo "page tests: $runner is missing; build the target page_test_runner" >&2
  exit 1
fi
here=$root/tests/page
timeout 600 "$runner" --www "$root/resources/www" --harness "$here/harness.js" "$here"/*.test.js || exit 1
shot=$build/page-screenshot.png
if ! timeout 60 "$runner" --www "$root/resources/www" --screenshot "$shot" "$here/demo.js"; then
  echo "page tests: the screenshot failed" >&2
  exit 1
fi
echo "page tests: screenshot in $shot"
