# Shared by tests/e2e/test_*.sh, which set $suite and source this with BUILD_DIR as $1 (inside
# tests/support/with-session.sh): checks and bounded waits, the player and the page calls of its debug
# log, windows, screen and sound. Nothing here waits a fixed time for something it could poll.
set -uo pipefail
build=$(cd "${1:?usage: $0 BUILD_DIR}" && pwd) || exit 1
exe=$build/tunelark
artifacts=${TUNELARK_ARTIFACTS:-$build/e2e-artifacts}
work=$(mktemp -d "/tmp/tunelark-e2e-$suite.XXXXXX")
export XDG_DATA_HOME=$work/data NO_AT_BRIDGE=1 G_MESSAGES_DEBUG=Tunelark
mkdir -p "$artifacts" "$work/data"
failures=0 runs=0 player_pid= out=/dev/null err=/dev/null helpers=() launcher=()

fail() { echo "FAIL: $*"; failures=$((failures + 1)); return 1; }
pass() { echo "ok: $*"; }
check() { if "${@:2}"; then pass "$1"; else fail "$1"; fi; } # check WHAT COMMAND...
report() {
  ((failures)) || { echo "$suite: all checks passed"; exit 0; }
  echo "--- stdout"; tail -10 "$out"; echo "--- stderr without page calls"; grep -av Tunelark-DEBUG "$err" | tail -20
  echo "$suite: $failures failed"; exit 1
}
give_up() { fail "$*"; report; }
cleanup() {
  stop_player
  ((${#helpers[@]})) && kill "${helpers[@]}" 2>/dev/null
  pactl set-default-sink tl_sink_a >/dev/null 2>&1
  if [[ -n ${TUNELARK_E2E_KEEP:-} ]]; then echo "kept $work"; else rm -rf "$work"; fi
}
trap cleanup EXIT
# Polls a command every 0.1 s for at most $1 whole seconds, then tries it once more.
within() {
  local end=$((${EPOCHREALTIME//[.,]/} + $1 * 1000000))
  shift
  while ((${EPOCHREALTIME//[.,]/} < end)); do "$@" && return 0; sleep 0.1; done
  "$@"
}
not() { ! "$@"; }

# DIR/NAME.mp3, a 440 Hz tone of SECONDS, and DIR/NAME.lrc with the line "第N行 line N" at N s.
make_song() {
  local i; mkdir -p "$1"
  sox -n -r 44100 -c 1 -b 16 "$work/tone.wav" synth "$3" sine 440 vol 0.5 &&
    lame --quiet -b 64 "$work/tone.wav" "$1/$2.mp3" || give_up "could not make $2.mp3"
  for ((i = 0; i < $3; i++)); do printf '[%02d:%02d.00]第%d行 line %d\n' $((i / 60)) $((i % 60)) "$i" "$i"; done >"$1/$2.lrc"
}
url_of() { python3 -c 'import pathlib, sys; print(pathlib.Path(sys.argv[1]).as_uri())' "$1"; }

# --- The player: start_player ARGS... runs $exe (after the command in $launcher, if any) with this
# run's stdout in $out and stderr in $err.
start_player() {
  runs=$((runs + 1)) out=$work/out.$runs err=$work/err.$runs
  "${launcher[@]}" "$exe" "$@" >"$out" 2>"$err" &
  player_pid=$!
}
stop_player() {
  [[ -n $player_pid ]] && kill "$player_pid" 2>/dev/null && wait "$player_pid" 2>/dev/null
  player_pid=
}
ended_ok() { # true when the player ends by itself within $1 seconds with status 0
  within "$1" not kill -0 "$player_pid" 2>/dev/null && wait "$player_pid" && player_pid=
}
log_mark() { wc -l <"$err"; }
# Page calls as native code evaluated them, one a line, after line $1 of this run's debug log.
calls_since() { tail -n +"$(($1 + 1))" "$err" | LC_ALL=C sed -n 's/^.*Tunelark-DEBUG: [0-9:.]*: //p'; }
said_since() { calls_since "$1" | grep -qxF -- "$2"; }
console_has() { grep -qxF -- "$1" "$out"; }
# The position in seconds of the last setCurrent("mm:ss") after line $1.
current_seconds() {
  calls_since "$1" | sed -n 's/^setCurrent("\([0-9]*\):\([0-9][0-9]\)");$/\1 \2/p' | tail -1 | awk '{ print $1 * 60 + $2 }'
}
position_reached() { # MARK SECONDS
  local now; now=$(current_seconds "$1")
  [[ -n $now ]] && ((now >= $2))
}

# --- Windows. Visible windows titled exactly $1, oldest first (xdotool's --name ignores case, and GTK's
# tooltips carry the program's name).
windows_titled() {
  local id
  for id in $(xdotool search --onlyvisible --name . 2>/dev/null); do
    [[ $(xdotool getwindowname "$id" 2>/dev/null) == "$1" ]] && echo "$id"
  done
}
# window_of VAR TITLE: VAR becomes the newest visible window titled TITLE; false when there is none.
window_of() { printf -v "$1" %s "$(windows_titled "$2" | tail -1)"; [[ -n ${!1} ]]; }
geometry_of() { # x y width height
  xwininfo -id "$1" 2>/dev/null | awk '/Absolute upper-left X/{x=$4} /Absolute upper-left Y/{y=$4}
                                       /Width:/{w=$2} /Height:/{h=$2} END{print x, y, w, h}'
}
area_of() { geometry_of "$1" | awk '{ print $3 "x" $4 "+" $1 "+" $2 }'; } # WxH+X+Y
viewable() { xwininfo -id "$1" 2>/dev/null | grep -q 'IsViewable'; }

# --- Window managers. window_manager NAME runs openbox (no compositor) or xfwm4 with its compositor for
# what follows, "none" for bare X; the one before is ended, and so is the last one with the suite.
wm_pid= wm=none
wm_ready() { # the manager has announced itself, and its compositor when it runs one
  xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q 'window id' || return 1
  [[ $wm != xfwm4 ]] || composited
}
composited() { python3 "$(dirname "${BASH_SOURCE[0]}")/x_selection.py" _NET_WM_CM_S0 >/dev/null; }
window_manager() {
  if [[ -n $wm_pid ]]; then kill "$wm_pid" 2>/dev/null; wait "$wm_pid" 2>/dev/null; fi
  wm_pid= wm=$1
  within 5 not eval 'xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q "window id"'
  case $1 in
    none) return 0 ;;
    openbox) openbox --sm-disable >"$work/wm.log" 2>&1 & ;;
    xfwm4) xfwm4 --compositor=on --sm-client-disable >"$work/wm.log" 2>&1 & ;;
    *) give_up "unknown window manager $1" ;;
  esac
  wm_pid=$!
  helpers+=("$wm_pid")
  within 10 wm_ready || give_up "$1 did not start: $(tail -3 "$work/wm.log")"
}
# Presses as a hand makes them: each held 80 ms. hand_click [N] clicks N times (default 1), 0.15 s apart.
hand_click() {
  local i
  for ((i = 0; i < ${1:-1}; i++)); do
    ((i)) && sleep 0.15
    xdotool mousedown 1 sleep 0.08 mouseup 1
  done
}

# Starts the player (ARGS...) and waits for the main window ($main at $main_x $main_y) and a play list.
start_to_page() {
  start_player "$@"
  within 30 console_has showWindow || give_up "the page never said showWindow"
  within 10 window_of main Tunelark || give_up "no visible main window"
  read -r main_x main_y _ _ < <(geometry_of "$main")
  within 10 eval 'calls_since 0 | grep -q "^setPlayList("' || give_up "no play list reached the page"
}
# Places of the page's controls in the 1200x600 main window, its 46-pixel title bar included.
ADD_FILES=(935 71) FIRST_ROW=(300 196) LYRICS_SWITCH=(1148 390) TWO_ROWS=(1103 427)
PLAY_PAUSE=(96 558) SPEED_DOWN=(1081 558) SPEED_UP=(1159 558)
click_main() { xdotool mousemove $((main_x + $1)) $((main_y + $2)) click "${@:3}" 1; } # X Y [CLICK OPTIONS]
# Double-clicks row N (default 1; rows are 52 pixels apart) until the page hears it plays (the list may
# still be laid out).
play_row() {
  local mark try; mark=$(log_mark)
  for try in 1 2 3; do
    click_main "${FIRST_ROW[0]}" $((FIRST_ROW[1] + 52 * (${1:-1} - 1))) --repeat 2 --delay 80
    within 3 said_since "$mark" 'setIsPlaying(true);' && return 0
  done
  return 1
}
# drag_to_main FILE...: tl-drag-source offers the files and the pointer drags them, as a hand does, from
# it to the middle of the main window.
drag_to_main() {
  local x y w h step
  "$build/tests/tl-drag-source" "$@" >"$work/drag.out" 2>&1 &
  helpers+=($!)
  within 10 window_of source tl-drag-source || give_up "no window to drag from"
  read -r x y w h < <(geometry_of "$main")
  xdotool mousemove 80 60 mousedown 1
  for step in $(seq 10); do xdotool mousemove $((80 + (x + w / 2 - 80) * step / 10)) $((60 + (y + h / 2 - 60) * step / 10)) sleep 0.1; done
  xdotool mouseup 1
}
switched_lyrics_on() { grep -a '^TurnLyricsOnByJsHandler {' "$out" | grep -aF '"needOn":"true"' | grep -qaF '"rowAmoutString":"oneRow"'; }

# The page's process: the WebKitWebProcess among the player's descendants ("comm" keeps 15 characters).
descendants() { local child; for child in $(pgrep -P "$1"); do echo "$child"; descendants "$child"; done; }
web_process() {
  local p
  for p in $(descendants "$player_pid"); do [[ $(cat "/proc/$p/comm" 2>/dev/null) == WebKitWebProces* ]] && echo "$p"; done
}

# --- Screen: shot FILE [WxH+X+Y] saves the screen or a part of it.
shot() { import -window root ${2:+-crop "$2" +repage} "$1" 2>/dev/null; }
# Text in a picture, read by OCR after turning light text on a dark ground into dark text on light.
read_text() {
  convert "$1" -colorspace gray -negate -resize 300% "$work/ocr.png" 2>/dev/null &&
    tesseract "$work/ocr.png" - --psm 7 2>/dev/null | tr -s ' \n' ' '
}

# --- Sound: the player's stream on the sound server as "SINK CORKED" (yes or no), empty without one.
player_stream() {
  local index corked
  read -r index corked < <(LC_ALL=C pactl list sink-inputs 2>/dev/null | awk -v pid="$player_pid" '
    /^Sink Input #/ { sink = ""; corked = "" } /^\tSink: / { sink = $2 } /^\tCorked: / { corked = $2 }
    /application.process.id = / { gsub(/"/, "", $3); if ($3 == pid) found = sink " " corked }
    END { print found }')
  [[ -n $index ]] && echo "$(pactl list short sinks | awk -v i="$index" '$1 == i { print $2 }') $corked"
}
stream_is() { [[ $(player_stream) == "$1" ]]; }
# "RMS FREQUENCY" of about a second from the monitor of sink $1 into $heard.
listen() {
  timeout 1.2 parec -d "$1.monitor" --format=s16le --rate=44100 --channels=1 --raw >"$work/heard.raw" 2>/dev/null
  heard=$(sox -t raw -r 44100 -e signed -b 16 -c 1 "$work/heard.raw" -n stat 2>&1 |
    awk '/RMS +amplitude/{r=$3} /Rough +frequency/{f=$3} END{print r + 0, f + 0}')
}
hears_tone() { listen "$1" && awk -v h="$heard" 'BEGIN { split(h, a, " "); exit !(a[1] > 0.1 && a[2] > 420 && a[2] < 460) }'; }
hears_silence() { listen "$1" && awk -v h="$heard" 'BEGIN { split(h, a, " "); exit !(a[1] < 0.01) }'; }
