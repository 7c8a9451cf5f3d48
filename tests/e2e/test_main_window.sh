#!/usr/bin/env bash
# Starts the built player as a user would, with an empty store: the main window stays hidden until the
# page says it is ready, then shows 1200x600 centred with the page drawn; the page receives the empty
# play list and the encoding names; closing the window ends the program with status 0.
# Usage: test_main_window.sh BUILD_DIR   (inside the session of tests/support/with-session.sh)
set -uo pipefail
build=${1:?usage: $0 BUILD_DIR}
exe=$build/tunelark
artifacts=${TUNELARK_ARTIFACTS:-$build/e2e-artifacts}
work=$(mktemp -d /tmp/tunelark-e2e-main.XXXXXX)
pid=
failures=0

cleanup() {
  [[ -n $pid ]] && kill "$pid" 2>/dev/null && wait "$pid" 2>/dev/null
  rm -rf "$work"
}
trap cleanup EXIT

fail() { echo "FAIL: $*"; failures=$((failures + 1)); }
pass() { echo "ok: $*"; }
# Polls a command every 0.1 s for at most $1 seconds.
within() {
  local seconds=$1
  shift
  for _ in $(seq $((seconds * 10))); do "$@" && return 0; sleep 0.1; done
  return 1
}
visible_main_window() { xdotool search --onlyvisible --name '^Tunelark$' 2>/dev/null | head -1; }
said_show_window() { grep -qx 'showWindow' "$work/out"; }

[[ -x $exe ]] || { echo "FAIL: no executable $exe"; exit 1; }
mkdir -p "$artifacts" "$work/data"

XDG_DATA_HOME=$work/data G_MESSAGES_DEBUG=Tunelark "$exe" >"$work/out" 2>"$work/err" &
pid=$!

# Nothing may be visible before the page's "showWindow" (the console line comes before the showing, so
# a window seen while the line is still missing was shown too early).
shown_early=no
for _ in $(seq 300); do
  window=$(visible_main_window)
  said_show_window && break
  [[ -n $window ]] && shown_early=yes
  kill -0 "$pid" 2>/dev/null || break
  sleep 0.1
done
said_show_window && pass "page said showWindow" || fail "no showWindow line within 30 s"
[[ $shown_early == no ]] && pass "window hidden until showWindow" || fail "window visible before showWindow"

if within 10 test -n "$(visible_main_window)"; then
  window=$(visible_main_window)
  sleep 1  # let the page paint
  geometry=$(xwininfo -id "$window" | awk '/Absolute upper-left X/{x=$4} /Absolute upper-left Y/{y=$4}
                                           /Width:/{w=$2} /Height:/{h=$2} END{print w "x" h "+" x "+" y}')
  # The session's screen is 1600x900: centred means 200 from the left and 150 from the top.
  [[ $geometry == 1200x600+200+150 ]] && pass "window 1200x600 centred" || fail "window geometry $geometry"
else
  fail "no visible window named Tunelark"
  window=
fi

log=$work/err
# Each page script is one debug line "...Tunelark-DEBUG: <time>: <script>".
script_line() {
  SCRIPT=": $1" awk '{ s = ENVIRON["SCRIPT"] }
    index($0, "Tunelark-DEBUG") && substr($0, length($0) - length(s) + 1) == s { print NR; exit }' "$log"
}
playlist_at=$(script_line 'setPlayList("[]","[]");')
[[ -n $playlist_at ]] && pass 'page got setPlayList("[]","[]");' || fail 'no setPlayList("[]","[]"); in the debug log'

charsets=$(grep -o 'setAllSupportedCharsetNames(.*' "$log" | head -1)
charsets_at=$(grep -n -F 'setAllSupportedCharsetNames(' "$log" | head -1 | cut -d: -f1)
names=$(printf '%s' "$charsets" | grep -o '\\"[^"\\]*\\"' | wc -l)
if [[ $charsets == 'setAllSupportedCharsetNames("[\"'*'\"]");' && $names -eq 46 ]]; then
  pass "page got the 46 encoding names"
else
  fail "encoding names call: ${charsets:0:120}... ($names names)"
fi
[[ -n $charsets_at && -n $playlist_at && $charsets_at -lt $playlist_at ]] &&
  pass "encoding names before the play list" || fail "encoding names not sent before the play list"
script_line "document.body.setAttribute('oncontextmenu', 'event.preventDefault();');" | grep -q . &&
  pass "context menu switched off after the load" || fail "no context-menu script after the load"

shot=$artifacts/main_window.png
rm -f "$shot"
if import -window root "$shot" 2>/dev/null; then
  # The page area below the title bar must show a drawn interface, not a blank or single-colour fill.
  colours=$(convert "$shot" -crop 1200x554+200+196 +repage -format %k info: 2>/dev/null)
  [[ ${colours:-0} -gt 64 ]] && pass "page drawn ($colours colours, $shot)" || fail "page area looks blank (${colours:-?} colours)"
else
  fail "could not capture the screen"
fi

if [[ -n $window ]]; then
  read -r x y w < <(xwininfo -id "$window" | awk '/Absolute upper-left X/{x=$4} /Absolute upper-left Y/{y=$4}
                                                   /Width:/{w=$2} END{print x, y, w}')
  # The close button sits at the right end of the 46-pixel title bar.
  xdotool mousemove $((x + w - 23)) $((y + 23)) click 1
fi
if within 10 bash -c "! kill -0 $pid 2>/dev/null"; then
  wait "$pid"
  status=$?
  pid=
  [[ $status -eq 0 ]] && pass "closing the window ended the program with status 0" || fail "exit status $status"
else
  fail "program still running 10 s after its window was closed"
fi

if ((failures)); then
  echo "--- stdout"; tail -20 "$work/out"; echo "--- stderr"; grep -v 'Tunelark-DEBUG' "$work/err" | tail -20
  echo "$failures failed"
  exit 1
fi
echo "main window: all checks passed"
