#!/usr/bin/env bash
# The desktop's media-player interface and files handed over by the desktop, on a private session bus:
# the player is started with files on its command line, then driven with playerctl and gdbus as media
# keys and sound menus drive it. Every request must reach the page as the page's own messages do (the
# page calls are read from the debug log), and the properties must read back what happened.
# Usage: test_mpris.sh BUILD_DIR   (inside the session of tests/support/with-session.sh)
set -uo pipefail
build=${1:?usage: $0 BUILD_DIR}
build=$(cd "$build" && pwd)
if [[ -z ${TUNELARK_PRIVATE_BUS:-} ]]; then
  TUNELARK_PRIVATE_BUS=1 exec dbus-run-session -- "$0" "$build" 2> >(grep -v 'fd limit' >&2)
fi
exe=$build/tunelark
artifacts=${TUNELARK_ARTIFACTS:-$build/e2e-artifacts}
work=$(mktemp -d /tmp/tunelark-e2e-mpris.XXXXXX)
export XDG_DATA_HOME=$work/data NO_AT_BRIDGE=1 G_MESSAGES_DEBUG=Tunelark
pid=
failures=0
monitor=

cleanup() {
  [[ -n $monitor ]] && kill "$monitor" 2>/dev/null
  [[ -n $pid ]] && kill "$pid" 2>/dev/null && wait "$pid" 2>/dev/null
  rm -rf "$work"
}
trap cleanup EXIT

fail() { echo "FAIL: $*"; failures=$((failures + 1)); }
pass() { echo "ok: $*"; }
check() { # check DESCRIPTION COMMAND...
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
pc() { playerctl -p tunelark "$@" 2>/dev/null; }
bus_call() { gdbus call --session --dest org.mpris.MediaPlayer2.tunelark --object-path /org/mpris/MediaPlayer2 "$@"; }
get() { bus_call --method org.freedesktop.DBus.Properties.Get "$1" "$2" 2>/dev/null; }
set_property() { bus_call --method org.freedesktop.DBus.Properties.Set org.mpris.MediaPlayer2.Player "$1" "$2"; }
status_is() { [[ $(pc status) == "$1" ]]; }
title_is() { [[ $(pc metadata xesam:title) == "$1" ]]; }
url() { python3 -c 'import pathlib, sys; print(pathlib.Path(sys.argv[1]).as_uri())' "$1"; }

# The page calls made since a mark (a line count of the debug log).
mark() { wc -l <"$work/err"; }
sent_since() { # sent_since MARK SCRIPT: the page got exactly SCRIPT after MARK
  tail -n +"$(($1 + 1))" "$work/err" | grep 'Tunelark-DEBUG' | grep -qF -- ": $2"
}
sent_within() { within 5 sent_since "$@"; }

[[ -x $exe ]] || { echo "FAIL: no executable $exe"; exit 1; }
command -v playerctl >/dev/null || { echo "FAIL: playerctl is missing (scripts/install-deps.sh --test)"; exit 1; }
mkdir -p "$artifacts" "$work/data" "$work/music"
cd "$work/music" || exit 1
tone() { sox -n -r 44100 -c 2 "$1.wav" synth "$2" sine "$3" 2>/dev/null && lame --quiet "$1.wav" "$1.mp3" && rm "$1.wav"; }
tone "Song One" 12 440 && tone two 10 550 && tone three 10 660 && tone four 10 770 ||
  { echo "FAIL: could not make the MP3 files"; exit 1; }
printf '[ti:Song One]\n[00:00.50]first line\n[00:03.00]second line\n[00:06.00]third line\n' >"Song One.lrc"
song_one=$(url "$work/music/Song One.mp3")
two=$(url "$work/music/two.mp3")

# 1. Files on the command line: added as the panel adds them, the first audio file given plays.
"$exe" "$work/music/Song One.mp3" "Song One.lrc" two.mp3 >"$work/out" 2>"$work/err" &
pid=$!
check "the player appears on the session bus" within 30 bash -c 'playerctl -l 2>/dev/null | grep -qx tunelark'
gdbus monitor --session --dest org.mpris.MediaPlayer2.tunelark >"$work/monitor" 2>/dev/null &
monitor=$!
check "the first audio file named on the command line plays" within 20 status_is Playing
check "the page got the play list with both tracks and the lyric file" \
  grep -q 'setPlayList(".*Song%20One.mp3.*two.mp3.*",".*Song%20One.lrc' "$work/err"
check "the page was told which track plays" sent_since 0 "setPlayingFilePath(\"$song_one\");"

# 2. Metadata of the playing track, with its lyric text.
within 5 title_is "Song One"
pc metadata >"$artifacts/playerctl-metadata.txt"
check "title from the display name" title_is "Song One"
check "url of the track" test "$(pc metadata xesam:url)" == "$song_one"
length=$(pc metadata mpris:length)
check "length of 12 s in microseconds ($length)" awk -v l="$length" 'BEGIN { exit !(l > 11900000 && l < 12200000) }'
check "track id is an object path of ours" grep -q "mpris:trackid *'/org/tunelark/Tunelark/track/t" \
  "$artifacts/playerctl-metadata.txt"
check "the whole lyric text" bash -c "playerctl -p tunelark metadata xesam:asText | grep -qx '\[00:03.00\]second line'"

# 3. The root interface and the fixed properties.
root=$(bus_call --method org.freedesktop.DBus.Properties.GetAll org.mpris.MediaPlayer2 2>&1)
for expected in "'Identity': <'Tunelark'>" "'DesktopEntry': <'org.tunelark.Tunelark'>" "'CanQuit': <true>" \
  "'CanRaise': <true>" "'HasTrackList': <false>" "'SupportedUriSchemes': <['file']>" \
  "'SupportedMimeTypes': <['audio/mpeg']>"; do
  check "root property $expected" grep -qF "$expected" <<<"$root"
done
player=$(bus_call --method org.freedesktop.DBus.Properties.GetAll org.mpris.MediaPlayer2.Player 2>&1)
for expected in "'MinimumRate': <0.25>" "'MaximumRate': <2.0>" "'CanControl': <true>" "'CanSeek': <true>" \
  "'CanPause': <true>" "'CanPlay': <true>" "'CanGoNext': <true>" "'CanGoPrevious': <true>" "'Rate': <1.0>" \
  "'Volume': <1.0>"; do
  check "player property $expected" grep -qF "$expected" <<<"$player"
done

# 4. Transport: each request reaches the page as its own message would.
m=$(mark); pc pause
check "Pause pauses" within 5 status_is Paused
check "Pause: the page got setIsPlaying(false)" sent_within "$m" 'setIsPlaying(false);'
m=$(mark); pc play
check "Play resumes" within 5 status_is Playing
check "Play: the page got setIsPlaying(true)" sent_within "$m" 'setIsPlaying(true);'
m=$(mark); pc play-pause
check "PlayPause while playing pauses" within 5 status_is Paused
check "PlayPause: the page got setIsPlaying(false)" sent_within "$m" 'setIsPlaying(false);'
pc play-pause
check "PlayPause while paused plays" within 5 status_is Playing
m=$(mark); pc stop
check "Stop pauses (the track stays loaded)" within 5 status_is Paused
check "Stop: the page got setIsPlaying(false)" sent_within "$m" 'setIsPlaying(false);'
m=$(mark); pc next
check "Next plays the next track" within 5 title_is two
check "Next: the page got the new track" sent_within "$m" "setPlayingFilePath(\"$two\");"
m=$(mark); pc previous
check "Previous plays the previous track" within 5 title_is "Song One"
check "Previous: the page got the track" sent_within "$m" "setPlayingFilePath(\"$song_one\");"

# 5. Seeks, through the page's slider operation (pause, move, play), each announced with Seeked.
seeked_before=$(grep -c 'Player.Seeked' "$work/monitor")
m=$(mark); pc position 7
position=$(pc position)
check "SetPosition moves to 7 s (at $position)" awk -v p="$position" 'BEGIN { exit !(p >= 6.9 && p < 8.5) }'
check "SetPosition: the page saw the seek's pause and play" bash -c \
  "tail -n +$((m + 1)) '$work/err' | grep -F 'Tunelark-DEBUG' | grep -F -e 'setIsPlaying(false);' -e 'setIsPlaying(true);' | wc -l | grep -qx 2"
pc position 3-
position=$(pc position)
check "Seek back by 3 s (at $position)" awk -v p="$position" 'BEGIN { exit !(p >= 3.9 && p < 5.5) }'
check "both seeks announced with Seeked" within 5 bash -c \
  "(( \$(grep -c 'Player.Seeked' '$work/monitor') >= $seeked_before + 2 ))"

# 6. Rate: the nearest of the eight speeds, shown on the page.
m=$(mark); set_property Rate '<1.6>' >/dev/null
check "Rate 1.6 becomes 1.5" test "$(get org.mpris.MediaPlayer2.Player Rate)" == '(<1.5>,)'
check "Rate: the page got setSpeed(\"1.50\")" sent_within "$m" 'setSpeed("1.50");'
set_property Rate '<1.0>' >/dev/null
check "Rate back to 1.0" test "$(get org.mpris.MediaPlayer2.Player Rate)" == '(<1.0>,)'

# 7. Loop status and shuffle are the three play modes.
m=$(mark); pc loop None
check "LoopStatus None" test "$(pc loop)" == None
check "LoopStatus None: the page got the sequence mode" sent_within "$m" 'setMode("sequence");'
m=$(mark); pc shuffle On
check "Shuffle on" test "$(pc shuffle)" == On
check "Shuffle on: the page got the random mode" sent_within "$m" 'setMode("random");'
check "random mode loops the play list" test "$(pc loop)" == Playlist
m=$(mark); pc shuffle Off
check "Shuffle off gives the cycle mode" sent_within "$m" 'setMode("cycle");'
if playerctl -p tunelark loop Track 2>/dev/null; then fail "LoopStatus Track was accepted"; else pass "LoopStatus Track refused"; fi
check "the mode stayed cycle" test "$(pc loop)/$(pc shuffle)" == Playlist/Off
for property in LoopStatus Shuffle Rate PlaybackStatus Metadata; do
  check "PropertiesChanged announced $property" grep -q "PropertiesChanged ('org.mpris.MediaPlayer2.Player', {.*'$property'" \
    "$work/monitor"
done

# 8. OpenUri adds and plays a file.
m=$(mark); pc open "$(url "$work/music/three.mp3")"
check "OpenUri plays the file" within 10 title_is three
check "OpenUri: the page got the play list with it" sent_within "$m" 'setPlayList("[{'
if bus_call --method org.mpris.MediaPlayer2.Player.OpenUri 'http://example.invalid/a.mp3' >/dev/null 2>&1; then
  fail "an http URI was accepted"
else
  pass "an http URI is refused"
fi

# 9. A second launch hands its files to the running player and ends.
m=$(mark)
if timeout 20 "$exe" "$work/music/four.mp3" >"$work/second.out" 2>&1; then
  pass "the second launch ended with status 0"
else
  fail "the second launch: status $?"
fi
check "the running player took the file and plays it" within 10 title_is four
check "the running player is still the one" kill -0 "$pid"
check "one player on the bus" test "$(playerctl -l 2>/dev/null | grep -c tunelark)" == 1

# 10. Raise shows the main window; Quit goes through the quit decision and ends the program.
bus_call --method org.mpris.MediaPlayer2.Raise >/dev/null 2>&1
check "Raise: the main window is visible" within 5 bash -c "xdotool search --onlyvisible --name '^Tunelark\$' | grep -q ."
bus_call --method org.mpris.MediaPlayer2.Quit >/dev/null 2>&1
if within 10 bash -c "! kill -0 $pid 2>/dev/null"; then
  wait "$pid"
  status=$?
  pid=
  check "Quit ended the program with status 0 (status $status)" test "$status" == 0
else
  fail "still running 10 s after Quit"
fi

if ((failures)); then
  echo "--- stdout"; tail -20 "$work/out"; echo "--- stderr"; grep -v 'Tunelark-DEBUG' "$work/err" | tail -20
  echo "--- monitor"; tail -20 "$work/monitor"
  echo "$failures failed"
  exit 1
fi
echo "media-player interface: all checks passed"
