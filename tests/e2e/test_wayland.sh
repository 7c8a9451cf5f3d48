#!/usr/bin/env bash
# On a Wayland desktop (a headless weston with XWayland) the player runs through XWayland, so its windows
# are X11 windows; GDK_BACKEND set by the user still wins; without XWayland it starts on Wayland itself.
# Usage: test_wayland.sh BUILD_DIR   (inside tests/support/with-session.sh)
suite=wayland
. "$(dirname "$0")/lib/player.sh"
socket=tunelark-wayland-$$
weston --backend=headless-backend.so --width=1600 --height=900 --socket="$socket" --xwayland --idle-time=0 \
  --no-config --log="$work/weston.log" >/dev/null 2>&1 &
helpers+=($!)
xwayland() { xdisplay=$(sed -n 's/.*xserver listening on display \(:[0-9]*\).*/\1/p' "$work/weston.log" 2>/dev/null); [[ -n $xdisplay ]]; }
within 10 xwayland || give_up "weston started no XWayland: $(tail -5 "$work/weston.log")"
# start ENV...: the player in the compositor's session with ENV, the X display of the session hidden.
start() { stop_player; launcher=(env -u GDK_BACKEND -u DISPLAY WAYLAND_DISPLAY=$socket "$@"); start_player; }
x_window() { DISPLAY=$xdisplay windows_titled Tunelark | grep -q .; }

start DISPLAY="$xdisplay"
check "by default the main window is an XWayland window" within 30 x_window
start DISPLAY="$xdisplay" GDK_BACKEND=wayland
check "with GDK_BACKEND=wayland the page asks to be shown" within 30 console_has showWindow
check "and no X11 window appears" eval 'sleep 1; ! x_window && kill -0 $player_pid'
start
check "without XWayland the page asks to be shown, and it keeps running" \
  eval 'within 30 console_has showWindow && sleep 1 && kill -0 $player_pid'
report
