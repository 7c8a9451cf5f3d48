#!/usr/bin/env bash
# Files dragged from another program (as from a file manager) onto the main window are added to the play
# list as the add operation adds them, playback is left alone, and the page stays where it is.
# Usage: test_file_drop.sh BUILD_DIR   (inside the session of tests/support/with-session.sh)
set -uo pipefail
build=${1:?usage: $0 BUILD_DIR}
build=$(cd "$build" && pwd)
exe=$build/tunelark
source_exe=$build/tests/tl-drag-source
work=$(mktemp -d /tmp/tunelark-e2e-drop.XXXXXX)
export XDG_DATA_HOME=$work/data NO_AT_BRIDGE=1 G_MESSAGES_DEBUG=Tunelark
pid=
source_pid=
failures=0

cleanup() {
  [[ -n $source_pid ]] && kill "$source_pid" 2>/dev/null
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
within() {
  local seconds=$1
  shift
  for _ in $(seq $((seconds * 10))); do "$@" && return 0; sleep 0.1; done
  return 1
}
window_named() { xdotool search --onlyvisible --name "^$1\$" 2>/dev/null | head -1; }
has_window() { [[ -n $(window_named "$1") ]]; }
centre() { # centre WINDOW: "x y"
  local X Y WIDTH HEIGHT
  eval "$(xdotool getwindowgeometry --shell "$1" | grep -E '^(X|Y|WIDTH|HEIGHT)=')"
  echo "$((X + WIDTH / 2)) $((Y + HEIGHT / 2))"
}
page_loads() { grep -c "oncontextmenu" "$work/err"; }

[[ -x $exe && -x $source_exe ]] || { echo "FAIL: no $exe or $source_exe"; exit 1; }
mkdir -p "$work/data" "$work/music"
cd "$work/music" || exit 1
for name in first second; do
  sox -n -r 44100 -c 2 "$name.wav" synth 3 sine 440 2>/dev/null && lame --quiet "$name.wav" "$name.mp3" && rm "$name.wav"
done
printf '[00:00.50]a line\n' >first.lrc
printf 'not audio\n' >notes.txt

"$exe" >"$work/out" 2>"$work/err" &
pid=$!
within 30 has_window Tunelark || { echo "FAIL: no main window"; tail -n 5 "$work/out" "$work/err"; exit 1; }
sleep 1  # the page's first play list
"$source_exe" "$work/music/second.mp3" "$work/music/first.lrc" "$work/music/first.mp3" "$work/music/notes.txt" \
  >"$work/source.out" 2>&1 &
source_pid=$!
within 10 has_window tl-drag-source || { echo "FAIL: no drag source window"; exit 1; }

read -r sx sy < <(centre "$(window_named tl-drag-source)")
read -r tx ty < <(centre "$(window_named Tunelark)")
xdotool mousemove "$sx" "$sy"
sleep 0.2
xdotool mousedown 1
for step in $(seq 1 10); do
  xdotool mousemove $((sx + (tx - sx) * step / 10)) $((sy + (ty - sy) * step / 10))
  sleep 0.1
done
sleep 0.3
xdotool mouseup 1

list_with_both() { grep -q 'setPlayList("\[{.*first.mp3.*second.mp3.*",".*first.lrc' "$work/err"; }
check "the dropped audio and lyric files reach the page's play list" within 10 list_with_both
check "the drag source was told the drop ended" within 5 grep -q 'drag ended' "$work/source.out"
items=$(grep -o 'native mp3FileItemsJsonString::::.*' "$work/out" | tail -1 | tr -d '\\')
check "added in sorted order, numbered as the panel's files" \
  grep -q '"fileName":"first.mp3"[^}]*"no":1[,}].*"fileName":"second.mp3"[^}]*"no":2[,}]' <<<"$items"
check "the file that is neither audio nor lyrics is left out" bash -c "! grep -q 'notes.txt' <(grep setPlayList '$work/err')"
check "a drop starts no playback" bash -c "! grep -q 'setIsPlaying(true);' '$work/err'"
check "the page did not navigate away (loaded once)" test "$(page_loads)" == 1
check "the program still runs" kill -0 "$pid"

if ((failures)); then
  echo "--- stdout"; tail -20 "$work/out"; echo "--- stderr"; grep -v 'Tunelark-DEBUG' "$work/err" | tail -20
  echo "$failures failed"
  exit 1
fi
echo "file drop: all checks passed"
