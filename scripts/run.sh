#!/usr/bin/env bash
# Installs what Tunelark needs, builds it and starts the player.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/install-deps.sh"
"$root/scripts/build.sh" -DTUNELARK_TESTS=OFF
exec "${TUNELARK_BUILD_DIR:-$root/build}/tunelark" "$@"
