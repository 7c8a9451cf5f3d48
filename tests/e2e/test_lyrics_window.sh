#!/usr/bin/env bash
# The lyrics window as a user meets it: a stored play list with a generated MP3 and a CJK lyric file
# (a line a second); double-clicking the row plays it; the page's switch and "Two rows" show the lyrics
# window with two changing lines; dragging the text moves the window; a double press on it brings the
# main window back to the front; a two-rows size of 30 typed in the preferences previews a taller window
# and Cancel puts it back. Screenshots are kept in $TUNELARK_ARTIFACTS (default BUILD_DIR/e2e-artifacts).
# Usage: test_lyrics_window.sh BUILD_DIR   (inside the session of tests/support/with-session.sh)
set -uo pipefail
build=${1:?usage: $0 BUILD_DIR}
exe=$build/tunelark
prepare=$build/tests/tl-prepare-store
artifacts=${TUNELARK_ARTIFACTS:-$build/e2e-artifacts}
work=$(mktemp -d /tmp/tunelark-e2e-lyrics.XXXXXX)
pid=
cover_pid=
failures=0

cleanup() {
  [[ -n $cover_pid ]] && kill "$cover_pid" 2>/dev/null && wait "$cover_pid" 2>/dev/null
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
said() { grep -qF -- "$1" "$work/out"; }
# The body's keys may come in either order.
said_turned_on() { grep '^TurnLyricsOnByJsHandler ' "$work/out" | grep -F '"needOn":"true"' | grep -qF '"rowAmoutString":"oneRow"'; }
window_named() { xdotool search --onlyvisible --name "$1" 2>/dev/null | head -1; }
# "W H X Y" of a window on the screen.
geometry() {
  xwininfo -id "$1" 2>/dev/null | awk '/Absolute upper-left X/{x=$4} /Absolute upper-left Y/{y=$4}
                                       /Width:/{w=$2} /Height:/{h=$2} END{print w, h, x, y}'
}
viewable() { xwininfo -id "$1" 2>/dev/null | grep -q 'Map State: IsViewable'; }
not() { ! "$@"; }
height_of() { geometry "$1" | cut -d' ' -f2; }
taller_than() { (($(height_of "$lyrics") > $1)); }
height_is() { (($(height_of "$lyrics") == $1)); }
has_window() { test -n "$(window_named "$1")"; }
above() { (($(stack_place "$1") < $(stack_place "$2"))); }
stream_playing() { test -n "$(pactl list short sink-inputs 2>/dev/null)"; }
# Place of a top-level window in the stacking order, 0 for the top-most.
stack_place() {
  xwininfo -root -children | awk -v id="$(printf '0x%x' "$1")" '$1 ~ /^0x/ {n++} $1 == id {print n - 1; exit}'
}
# Captures the screen into $artifacts/$1 and the window's rectangle into $work/$1 (the crop).
capture() {
  local name=$1 window=$2 w h x y
  read -r w h x y < <(geometry "$window")
  import -window root "$artifacts/$name" 2>/dev/null &&
    convert "$artifacts/$name" -crop "${w}x${h}+${x}+${y}" +repage "$work/$name" 2>/dev/null
}
# Bands of pixel rows lit by text in a crop: the mean grey of each row, runs of at least 4 rows above
# the transparent (black) background.
text_bands() {
  local h
  h=$(identify -format %h "$1")
  convert "$1" -colorspace Gray -resize "1x${h}!" -depth 8 txt:- |
    awk -F'[(),]' 'NR > 1 { lit = ($3 + 0) > 8; if (lit) run++; else { if (run >= 4) bands++; run = 0 } }
                   END { if (run >= 4) bands++; print bands + 0 }'
}
pixels_of() { convert "$1" rgb:- 2>/dev/null | md5sum | cut -d' ' -f1; }

[[ -x $exe ]] || { echo "FAIL: no executable $exe"; exit 1; }
[[ -x $prepare ]] || { echo "FAIL: no executable $prepare"; exit 1; }
mkdir -p "$artifacts" "$work/data" "$work/music"

# A 60-second tone and its lyrics: "第N行" and a line of a poem, one line a second.
sox -q -n -r 44100 -c 1 "$work/music/song.wav" synth 60 sine 440 vol 0.5 &&
  lame --quiet -b 64 "$work/music/song.wav" "$work/music/song.mp3" || { echo "FAIL: could not make the MP3"; exit 1; }
rm -f "$work/music/song.wav"
poem=(床前明月光 疑是地上霜 举头望明月 低头思故乡)
for i in $(seq 0 59); do
  printf '[%02d:%02d.00]第%d行 %s\n' $((i / 60)) $((i % 60)) $((i + 1)) "${poem[i % 4]}"
done >"$work/music/song.lrc"
"$prepare" "$work/data/Tunelark/Tunelark.sqlite" "$work/music/song.mp3" "$work/music/song.lrc" >/dev/null ||
  { echo "FAIL: could not prepare the store"; exit 1; }

XDG_DATA_HOME=$work/data G_MESSAGES_DEBUG=Tunelark "$exe" >"$work/out" 2>"$work/err" &
pid=$!

main=
within 30 has_window '^Tunelark$' && main=$(window_named '^Tunelark$')
if [[ -z $main ]]; then
  echo "FAIL: no visible main window"; grep -v Tunelark-DEBUG "$work/err" | tail -20; exit 1
fi
within 10 grep -qF 'setPlayList("[{' "$work/err" && pass "page got the stored play list" ||
  fail "no play list with the stored track reached the page"
sleep 1  # let the page lay the list out
read -r _ _ mx my < <(geometry "$main")

# The page's layout at 1200x600 (46 pixels of title bar above it): the first row of the list, and in
# the side panel the lyrics switch and the "Two rows" button.
xdotool mousemove $((mx + 130)) $((my + 196)) click --repeat 2 --delay 80 1
within 5 said 'Native Play Item By JS {"filePath":"file://' && pass "double-click on the row played it" ||
  fail "no nativePlayItem after the double-click"
within 5 stream_playing && pass "a stream plays into the sound server" ||
  fail "no stream reached the sound server"

xdotool mousemove $((mx + 1147)) $((my + 390)) click 1
within 5 said_turned_on &&
  pass "switch turned the lyrics window on" || fail "no nativeTurnLyricsOn with needOn true"
xdotool mousemove $((mx + 1103)) $((my + 427)) click 1
within 5 said 'TurnLyricsOnByJsHandler {"rowAmoutString":"towRows"}' && pass '"Two rows" chose two rows' ||
  fail "no nativeTurnOneRowOrTow with towRows"

lyrics=
within 5 has_window '^Lyrics$' && lyrics=$(window_named '^Lyrics$')
if [[ -z $lyrics ]]; then
  echo "FAIL: no visible lyrics window"; grep -v Tunelark-DEBUG "$work/err" | tail -20; exit 1
fi
# Without a window manager nothing keeps the lyrics window above: raise it as keep-above would.
xdotool windowraise "$lyrics"
# From the second line on, two rows show the previous line above the current one.
within 10 grep -qE 'setCurrent\("00:(0[2-9]|[1-5][0-9])"\);' "$work/err" || fail "the clock never passed 00:02"
sleep 0.3  # a tick in two-rows size
capture lyrics_two_rows_1.png "$lyrics"
sleep 1.5
capture lyrics_two_rows_2.png "$lyrics"
for shot in lyrics_two_rows_1.png lyrics_two_rows_2.png; do
  bands=$(text_bands "$work/$shot")
  [[ $bands -eq 2 ]] && pass "two lines of text in the lyrics window ($artifacts/$shot)" ||
    fail "$bands bands of text in the lyrics window ($artifacts/$shot)"
done
[[ $(pixels_of "$work/lyrics_two_rows_1.png") != "$(pixels_of "$work/lyrics_two_rows_2.png")" ]] &&
  pass "the lyrics changed within 1.5 s" || fail "the lyrics window showed the same picture 1.5 s later"

# Drag by the text: 300 left and 50 down in ten moves. Every tick re-centres the window on its anchor,
# so the centre is what must follow the pointer.
read -r w h x y < <(geometry "$lyrics")
cx=$((x + w / 2)) cy=$((y + h / 2))
xdotool mousemove "$cx" "$cy" mousedown 1
for _ in $(seq 10); do xdotool mousemove_relative -- -30 5; sleep 0.05; done
xdotool mouseup 1
sleep 0.3
read -r w h x y < <(geometry "$lyrics")
dx=$((x + w / 2 - cx)) dy=$((y + h / 2 - cy))
((dx >= -302 && dx <= -298 && dy >= 48 && dy <= 52)) && pass "the window followed the drag by ($dx,$dy)" ||
  fail "the window moved by ($dx,$dy) for a drag of (-300,50)"
capture lyrics_dragged.png "$lyrics"
cx=$((x + w / 2)) cy=$((y + h / 2))

# A double press brings the main window back to the front: first with a window over it, then with it
# hidden. Two presses 0.6 s apart are not a double press.
xmessage -geometry "1200x600+$mx+$my" 'covering the main window' >/dev/null 2>&1 &
cover_pid=$!
cover=
within 5 has_window '^xmessage$' && cover=$(window_named '^xmessage$')
if [[ -n $cover ]]; then
  xdotool windowraise "$lyrics"
  xdotool mousemove "$cx" "$cy" click 1 sleep 0.6 click 1
  sleep 0.5
  above "$cover" "$main" && pass "presses 0.6 s apart left the main window behind" ||
    fail "presses 0.6 s apart raised the main window"
  sleep 0.5
  xdotool click --repeat 2 --delay 100 1
  within 3 above "$main" "$cover" &&
    pass "a double press brought the main window to the front" || fail "the main window stayed behind the other window"
  kill "$cover_pid" 2>/dev/null && wait "$cover_pid" 2>/dev/null
  cover_pid=
else
  fail "could not open a window over the main window"
fi
xdotool windowunmap "$main"
within 3 not viewable "$main"
sleep 0.5
xdotool mousemove "$cx" "$cy" click --repeat 2 --delay 100 1
within 3 viewable "$main" && pass "a double press showed the hidden main window" || fail "the main window stayed hidden"

# The preferences by the main window's accelerator; 30 in the two-rows field previews at once.
read -r _ h0 _ _ < <(geometry "$lyrics")
xdotool windowfocus --sync "$main" key ctrl+comma
prefs=
within 5 has_window '^Preferences$' && prefs=$(window_named '^Preferences$')
if [[ -n $prefs ]]; then
  pass "Ctrl+comma opened the preferences"
  read -r pw ph px py < <(geometry "$prefs")
  # The two-rows field is the second row of the grid; Cancel is the left of the two buttons at the end.
  xdotool mousemove $((px + 188)) $((py + 107)) click 1 key ctrl+a type 30
  within 3 taller_than $((h0 * 3 / 2)) &&
    pass "typing 30 previewed a taller lyrics window" || fail "the lyrics window kept its height while 30 was typed"
  sleep 0.3
  capture lyrics_preview_30.png "$lyrics"
  read -r _ h _ _ < <(geometry "$lyrics")
  [[ $(text_bands "$work/lyrics_preview_30.png") -eq 2 ]] && pass "preview of $h pixels shows two lines ($artifacts/lyrics_preview_30.png)" ||
    fail "preview does not show two lines ($artifacts/lyrics_preview_30.png)"
  xdotool mousemove $((px + pw - 168)) $((py + ph - 38)) click 1
  within 3 not has_window '^Preferences$' && pass "Cancel closed the preferences" || fail "preferences still open after Cancel"
  within 3 height_is "$h0" && pass "Cancel restored the height $h0" ||
    fail "height $(height_of "$lyrics") after Cancel, $h0 before"
  capture lyrics_after_cancel.png "$lyrics"
else
  fail "Ctrl+comma opened no preferences window"
fi

kill -0 "$pid" 2>/dev/null && pass "the player ran through it all" || fail "the player ended on its own"

if ((failures)); then
  echo "--- stdout"; tail -20 "$work/out"; echo "--- stderr"; grep -v 'Tunelark-DEBUG' "$work/err" | tail -20
  echo "$failures failed"
  exit 1
fi
echo "lyrics window: all checks passed"
