# Shared pieces of the end-to-end scripts that drive the running player as a user does: fixtures, starting
# and stopping it, reading the page conversation from its debug log, clicking places of the page, and
# looking at the screen and the sound server. Sourced by tests/e2e/test_*.sh after they set $exe, $work
# (a temp dir, removed at exit) and $artifacts; $suite names the script in its last line.

failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }
pass() { echo "ok: $*"; }
check() {  # check WHAT COMMAND...: passes when the command succeeds
  local what=$1
  shift
  if "$@"; then pass "$what"; else fail "$what"; fi
}
report() {
  if ((failures)); then
    echo "--- stdout (last 20 lines)"; tail -20 "$out"
    echo "--- stderr without page scripts"; grep -av 'Tunelark-DEBUG' "$err" | tail -20
    echo "$suite: $failures failed"
    exit 1
  fi
  echo "$suite: all checks passed"
  exit 0
}
give_up() { fail "$*"; report; }

cleanup() {
  stop_player
  pactl set-default-sink tl_sink_a >/dev/null 2>&1
  if [[ -n ${TUNELARK_E2E_KEEP:-} ]]; then echo "kept $work"; else rm -rf "$work"; fi
}
trap cleanup EXIT

need_tools() {
  local tool
  for tool in "$@"; do
    command -v "$tool" >/dev/null || give_up "missing tool $tool (scripts/install-deps.sh --test installs it)"
  done
  [[ -x $exe ]] || give_up "no executable $exe"
  mkdir -p "$artifacts" "$work/data"
}

# Polls a command every 0.1 s for at most $1 seconds (fractions allowed), then tries it once more.
within() {
  local tenths i
  tenths=$(awk -v s="$1" 'BEGIN { printf "%d", s * 10 }')
  shift
  for ((i = 0; i < tenths; i++)); do "$@" && return 0; sleep 0.1; done
  "$@"
}

# --- Fixtures

# DIR/NAME.mp3, a 440 Hz tone of SECONDS, and DIR/NAME.lrc in UTF-8 with the line "第N行 line N" at N s.
make_song() {
  local dir=$1 name=$2 seconds=$3 i
  mkdir -p "$dir"
  sox -n -r 44100 -c 1 -b 16 "$work/tone.wav" synth "$seconds" sine 440 vol 0.5 &&
    lame --quiet -b 64 "$work/tone.wav" "$dir/$name.mp3" || return 1
  {
    printf '[ti:%s]\n' "$name"
    for ((i = 0; i < seconds; i++)); do printf '[%02d:%02d.00]第%d行 line %d\n' $((i / 60)) $((i % 60)) "$i" "$i"; done
  } >"$dir/$name.lrc"
}
url_of() { python3 -c 'import sys, urllib.parse; print("file://" + urllib.parse.quote(sys.argv[1]))' "$1"; }

# --- The player and its log

player_pid=
runs=0
# Starts the player with the store in $work/data; $out and $err name the stdout and stderr of this run.
start_player() {
  runs=$((runs + 1))
  out=$work/out.$runs
  err=$work/err.$runs
  XDG_DATA_HOME=$work/data G_MESSAGES_DEBUG=Tunelark "$exe" >"$out" 2>"$err" &
  player_pid=$!
}
stop_player() {
  if [[ -n $player_pid ]] && kill -0 "$player_pid" 2>/dev/null; then
    kill "$player_pid" 2>/dev/null
    wait "$player_pid" 2>/dev/null
  fi
  player_pid=
}
# Waits up to $1 seconds for the player to end by itself; quit_status then holds its exit status.
player_ended() {
  quit_status=
  within "$1" eval '! kill -0 "$player_pid" 2>/dev/null' || return 1
  wait "$player_pid"
  quit_status=$?
  player_pid=
}

# Page scripts as evaluated by native code, one a line, from line $1 + 1 of this run's debug log on.
scripts_since() {
  tail -n +"$(($1 + 1))" "$err" | grep -a 'Tunelark-DEBUG: ' | sed 's/^.*Tunelark-DEBUG: [0-9:.]*: //'
}
log_mark() { wc -l <"$err"; }
said_since() { scripts_since "$1" | grep -qxF -- "$2"; }
count_since() { scripts_since "$1" | grep -cxF -- "$2"; }
# The last setCurrent("mm:ss") after line $1, as seconds.
current_seconds() {
  scripts_since "${1:-0}" | sed -n 's/^setCurrent("\([0-9]*\):\([0-9][0-9]\)");$/\1 \2/p' | tail -1 |
    awk 'NF == 2 { print $1 * 60 + $2 }'
}
# True once the position reported after line $1 has reached $2 seconds.
position_reached() {
  local now
  now=$(current_seconds "$1")
  [[ -n $now ]] && ((now >= $2))
}
console_has() { grep -qxF -- "$1" "$out"; }

# --- Windows

# Visible windows whose title is exactly $1, oldest first (xdotool's own search ignores case, and GTK's
# tooltips are titled with the program's lower-case name).
windows_titled() {
  local id
  for id in $(xdotool search --onlyvisible --name . 2>/dev/null); do
    [[ $(xdotool getwindowname "$id" 2>/dev/null) == "$1" ]] && echo "$id"
  done
}
window_named() { windows_titled "$1" | tail -1; }
# x y width height of a window in root coordinates.
geometry_of() {
  xwininfo -id "$1" 2>/dev/null | awk '/Absolute upper-left X/{x=$4} /Absolute upper-left Y/{y=$4}
                                       /Width:/{w=$2} /Height:/{h=$2} END{print x, y, w, h}'
}
# Gives a window the keyboard focus, as a window manager does for the window a user clicks.
focus_window() { timeout 5 xdotool windowfocus --sync "$1" 2>/dev/null; }

main_window= main_x=0 main_y=0
find_main_window() {
  main_window=$(windows_titled Tunelark | head -1)
  [[ -n $main_window ]] || return 1
  read -r main_x main_y _ _ < <(geometry_of "$main_window")
}

# Places of the page's controls in the 1200x600 main window, from its top left corner (the 46-pixel title
# bar included), as resources/www lays them out.
ADD_FILES=(935 71)
FIRST_ROW=(300 196)
LYRICS_SWITCH=(1148 390)
PLAY_PAUSE=(96 558)
SPEED_DOWN=(1081 558)
SPEED_UP=(1159 558)
SLIDER=(260 546 580 24)  # x y width height
click_main() { xdotool mousemove $((main_x + $1)) $((main_y + $2)) click 1; }
double_click_main() { xdotool mousemove $((main_x + $1)) $((main_y + $2)) click --repeat 2 --delay 80 1; }
# Moves the pointer off the window, so that no tooltip covers a screenshot.
pointer_away() { xdotool mousemove 0 0; }

# Starts the player and waits until its page has shown the window and received a play list.
start_to_page() {
  start_player
  within 30 console_has showWindow || give_up "the page never said showWindow"
  within 10 find_main_window || give_up "no visible main window"
  within 10 eval 'scripts_since 0 | grep -q "^setPlayList("' || give_up "no play list reached the page"
  sleep 0.5  # let the page paint
}

# Adds every file the open panel lists in folder $1 as a user does: the page's "Add files" button, OK in
# the explaining alert, the folder typed into the panel's location bar, all its files chosen. With $2 the
# alert is saved there and alert_text gets what OCR reads in it; with $3 the panel with its choice is saved.
add_through_page() {
  local folder=$1 alert_png=${2:-} panel_png=${3:-} alert panel ax ay aw ah
  alert_text=
  click_main "${ADD_FILES[@]}"
  find_alert() { alert=$(windows_titled Tunelark | grep -vx "$main_window" | tail -1); [[ -n $alert ]]; }
  within 5 find_alert || { fail "no alert after Add files"; return 1; }
  sleep 0.3
  read -r ax ay aw ah < <(geometry_of "$alert")
  if [[ -n $alert_png ]]; then
    shot "$alert_png" "${aw}x${ah}+$ax+$ay"
    alert_text=$(read_text "$alert_png")
  fi
  xdotool mousemove $((ax + aw / 2)) $((ay + ah - 16)) click 1  # its one button spans its bottom
  find_panel() { panel=$(window_named 'Please Choose the mp3 file(s) and the lrc file(s):'); [[ -n $panel ]]; }
  within 5 find_panel || { fail "no open panel titled with the choosing message after the alert"; return 1; }
  sleep 0.5
  focus_window "$panel"
  xdotool key --clearmodifiers ctrl+l
  sleep 0.3
  xdotool type --delay 15 "$folder/"
  # The bar offers the files' common start, selected, once it has read the folder: drop that, then go in.
  sleep 1.5
  xdotool key Delete Return
  sleep 1.2
  xdotool key --clearmodifiers ctrl+a
  sleep 0.3
  [[ -n $panel_png ]] && shot "$panel_png"
  xdotool key Return
  if ! within 5 eval '! find_panel'; then
    # On a busy machine the folder may have been read only after the selection: select again.
    xdotool key --clearmodifiers ctrl+a
    sleep 0.5
    xdotool key Return
    within 10 eval '! find_panel' || { fail "the open panel did not close"; return 1; }
  fi
}

# Double-clicks the first row and waits for the page to hear that it plays.
play_first_row() {
  double_click_main "${FIRST_ROW[@]}"
  within 5 said_since "$1" 'setIsPlaying(true);'
}

# --- Screen

# Saves the screen or a part of it: shot FILE [WxH+X+Y].
shot() {
  if [[ -n ${2:-} ]]; then import -window root -crop "$2" +repage "$1" 2>/dev/null; else import -window root "$1" 2>/dev/null; fi
}
colours_of() { convert "$1" -format %k info: 2>/dev/null; }
# Text in a picture, read by OCR after turning light text on a dark ground into dark text on light.
read_text() {
  convert "$1" -colorspace gray -negate -resize 300% "$work/ocr.png" 2>/dev/null &&
    tesseract "$work/ocr.png" - --psm "${2:-6}" 2>/dev/null | tr -s ' \n' ' '
}

# --- Sound

# The player's stream on the sound server as "SINK CORKED" (sink name, yes or no); empty without one.
player_stream() {
  local index corked
  read -r index corked < <(LC_ALL=C pactl list sink-inputs 2>/dev/null | awk -v pid="$player_pid" '
    /^Sink Input #/ { sink = ""; corked = "" }
    /^\tSink: / { sink = $2 }
    /^\tCorked: / { corked = $2 }
    /application.process.id = / { gsub(/"/, "", $3); if ($3 == pid) found = sink " " corked }
    END { print found }')
  [[ -n $index ]] && echo "$(pactl list short sinks | awk -v i="$index" '$1 == i { print $2 }') $corked"
}
stream_is() { [[ $(player_stream) == "$1" ]]; }
stream_corked() { [[ $(player_stream) == *" yes" ]]; }
# "RMS FREQUENCY" of about a second recorded from the monitor of sink $1.
listen() {
  local raw=$work/listen.raw
  timeout 1.2 parec -d "$1.monitor" --format=s16le --rate=44100 --channels=1 --raw >"$raw" 2>/dev/null
  sox -t raw -r 44100 -e signed -b 16 -c 1 "$raw" -n stat 2>&1 |
    awk '/RMS +amplitude/{r=$3} /Rough +frequency/{f=$3} END{print r + 0, f + 0}'
}
# True when sink $1 carries the 440 Hz tone.
hears_tone() {
  read -r heard_rms heard_freq < <(listen "$1")
  awk -v r="$heard_rms" -v f="$heard_freq" 'BEGIN { exit !(r > 0.1 && f > 420 && f < 460) }'
}
hears_silence() {
  read -r heard_rms heard_freq < <(listen "$1")
  awk -v r="$heard_rms" 'BEGIN { exit !(r < 0.01) }'
}
