#!/usr/bin/env bash
# On a Wayland desktop: under a headless weston with XWayland, the player runs through XWayland by
# default, so its main window and its lyrics window are X11 windows (keep-above and placement work);
# GDK_BACKEND set by the user still wins; without XWayland it still starts, on Wayland itself.
# The compositor has no input devices, so the page's lyrics switch is clicked with events sent to the
# window (GTK reads them with GDK_CORE_DEVICE_EVENTS=1).
# Usage: test_wayland.sh BUILD_DIR   (inside the session of tests/support/with-session.sh)
set -uo pipefail
build=${1:?usage: $0 BUILD_DIR}
build=$(cd "$build" && pwd)
# One private session bus for the whole test (every run of the player registers on it).
if [[ -z ${TUNELARK_PRIVATE_BUS:-} ]]; then
  TUNELARK_PRIVATE_BUS=1 exec dbus-run-session -- "$0" "$build" 2> >(grep -v 'fd limit' >&2)
fi
exe=$build/tunelark
click=$build/tests/tl-x11-click
work=$(mktemp -d /tmp/tunelark-e2e-wayland.XXXXXX)
socket=tunelark-wayland-$$
weston_pid=
pid=
failures=0

stop_player() {
  [[ -n $pid ]] && kill "$pid" 2>/dev/null && wait "$pid" 2>/dev/null
  pid=
}
cleanup() {
  stop_player
  [[ -n $weston_pid ]] && kill "$weston_pid" 2>/dev/null && wait "$weston_pid" 2>/dev/null
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
within() {
  local seconds=$1
  shift
  for _ in $(seq $((seconds * 10))); do "$@" && return 0; sleep 0.1; done
  return 1
}
# Windows of the XWayland display.
x_window() { DISPLAY=$xdisplay xdotool search --onlyvisible --name "^$1\$" 2>/dev/null | head -1; }
has_x_window() { [[ -n $(x_window "$1") ]]; }
no_x_window() { [[ -z $(x_window "$1") ]]; }
said() { grep -qxF -- "$1" "$work/out"; }
# start ENV...: the player with a fresh store, in the compositor's session plus ENV.
start() {
  rm -rf "$work/data"
  mkdir -p "$work/data"
  env -u GDK_BACKEND -u DISPLAY WAYLAND_DISPLAY=$socket XDG_DATA_HOME=$work/data NO_AT_BRIDGE=1 \
    GDK_CORE_DEVICE_EVENTS=1 "$@" "$exe" >"$work/out" 2>"$work/err" &
  pid=$!
}

for tool in weston Xwayland xdotool dbus-run-session; do
  command -v "$tool" >/dev/null || { echo "FAIL: missing $tool (scripts/install-deps.sh --test)"; exit 1; }
done
[[ -x $exe && -x $click ]] || { echo "FAIL: no $exe or $click"; exit 1; }

weston --backend=headless-backend.so --width=1600 --height=900 --socket="$socket" --xwayland --idle-time=0 \
  --no-config --log="$work/weston.log" >/dev/null 2>&1 &
weston_pid=$!
xdisplay=
for _ in $(seq 100); do
  xdisplay=$(sed -n 's/.*xserver listening on display \(:[0-9]*\).*/\1/p' "$work/weston.log" 2>/dev/null)
  [[ -n $xdisplay ]] && break
  sleep 0.1
done
[[ -n $xdisplay ]] || { echo "FAIL: weston started no XWayland"; tail -20 "$work/weston.log"; exit 1; }
pass "weston runs with XWayland on $xdisplay"

# 1. By default: X11 through XWayland.
start DISPLAY="$xdisplay"
check "the main window is an XWayland window" within 30 has_x_window Tunelark
main=$(x_window Tunelark)
check "the page asked to be shown" within 10 said showWindow
sleep 1  # the page's first layout
# The lyrics switch of the page at 1200x600 (46 pixels of title bar above the page).
[[ -n $main ]] && DISPLAY=$xdisplay "$click" "$main" 1148 390
check "the page's switch turned the lyrics window on" within 5 \
  grep -q '^TurnLyricsOnByJsHandler .*"needOn":"true"' "$work/out"
check "the lyrics window is an XWayland window" within 10 has_x_window Lyrics
stop_player

# 2. GDK_BACKEND set by the user wins: a Wayland client, no X11 window.
start DISPLAY="$xdisplay" GDK_BACKEND=wayland
check "with GDK_BACKEND=wayland the page asks to be shown" within 30 said showWindow
sleep 1  # the window is shown right after that line
check "and no X11 window appears" no_x_window Tunelark
check "and it keeps running" kill -0 "$pid"
stop_player

# 3. A Wayland session without XWayland: it still starts, on Wayland.
start
check "without XWayland the page asks to be shown" within 30 said showWindow
check "and it keeps running" kill -0 "$pid"
stop_player

if ((failures)); then
  echo "--- stdout"; tail -20 "$work/out"; echo "--- stderr"; tail -20 "$work/err"
  echo "--- weston"; tail -20 "$work/weston.log"
  echo "$failures failed"
  exit 1
fi
echo "wayland: all checks passed"
