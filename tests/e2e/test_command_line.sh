#!/usr/bin/env bash
# Command-line manners of both programs: --help and --version print and succeed without a display,
# an unknown option gives one line on standard error and status 2; the player takes a file whose name
# starts with "-" after "--".
# Usage: test_command_line.sh BUILD_DIR   (inside the session of tests/support/with-session.sh)
set -uo pipefail
build=${1:?usage: $0 BUILD_DIR}
build=$(cd "$build" && pwd)
if [[ -z ${TUNELARK_PRIVATE_BUS:-} ]]; then
  TUNELARK_PRIVATE_BUS=1 exec dbus-run-session -- "$0" "$build" 2> >(grep -v 'fd limit' >&2)
fi
work=$(mktemp -d /tmp/tunelark-e2e-cli.XXXXXX)
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")
pid=
failures=0

cleanup() {
  [[ -n $pid ]] && kill "$pid" 2>/dev/null && wait "$pid" 2>/dev/null
  rm -rf "$work"
}
trap cleanup EXIT

fail() { echo "FAIL: $*"; failures=$((failures + 1)); }
pass() { echo "ok: $*"; }
check() {
  local what=$1
  shift
  if "$@"; then pass "$what"; else fail "$what"; fi
}
# run PROGRAM ARGS...: status, stdout and stderr of one run without a display or a bus.
run() {
  env -u DISPLAY -u WAYLAND_DISPLAY -u DBUS_SESSION_BUS_ADDRESS timeout 10 "$@" >"$work/out" 2>"$work/err"
  status=$?
}
lines() { wc -l <"$1"; }

for program in tunelark tunelark-lrc; do
  exe=$build/$program
  [[ -x $exe ]] || { fail "no executable $exe"; continue; }
  for option in --help -h; do
    run "$exe" "$option"
    check "$program $option: status 0" test "$status" == 0
    check "$program $option: usage on standard output" grep -q "^Usage: $program " "$work/out"
    check "$program $option: nothing on standard error" test ! -s "$work/err"
  done
  run "$exe" --version
  check "$program --version: status 0" test "$status" == 0
  check "$program --version: '$program $version'" test "$(cat "$work/out")" == "$program $version"
  run "$exe" --no-such-option
  check "$program --no-such-option: status 2" test "$status" == 2
  check "$program --no-such-option: one line on standard error" test "$(lines "$work/err")" == 1
  check "$program --no-such-option: the line names the option" grep -q -- "--no-such-option" "$work/err"
  check "$program --no-such-option: nothing on standard output" test ! -s "$work/out"
done
run "$build/tunelark" --help --no-such-option
check "tunelark: --help wins over an unknown option" test "$status" == 0

# A file named like an option, after "--", is a file the player adds.
mkdir -p "$work/music" "$work/data"
sox -n -r 44100 -c 2 "$work/tone.wav" synth 2 sine 440 2>/dev/null && lame --quiet "$work/tone.wav" "$work/music/-dash.mp3"
(cd "$work/music" && XDG_DATA_HOME=$work/data NO_AT_BRIDGE=1 exec "$build/tunelark" -- -dash.mp3) \
  >"$work/player.out" 2>"$work/player.err" &
pid=$!
for _ in $(seq 300); do grep -q 'setPlayingFilePath\|/-dash.mp3$' "$work/player.out" && break; sleep 0.1; done
check "tunelark -- -dash.mp3 adds the file" grep -qx "file://$work/music/-dash.mp3" "$work/player.out"

if ((failures)); then
  echo "$failures failed"
  exit 1
fi
echo "command line: all checks passed"
