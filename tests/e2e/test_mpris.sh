#!/usr/bin/env bash
# The desktop's media-player interface, driven by playerctl and gdbus as media keys and sound menus do:
# the player starts with files on its command line, every request reaches the page as the page's own
# messages do, the properties read back what happened, and a second launch hands its file over.
# Usage: test_mpris.sh BUILD_DIR   (inside tests/support/with-session.sh, which gives a private bus)
suite=mpris
. "$(dirname "$0")/lib/player.sh"
pc() { playerctl -p tunelark "$@" 2>/dev/null; }
bus_call() { gdbus call --session --dest org.mpris.MediaPlayer2.tunelark --object-path /org/mpris/MediaPlayer2 --method "$@"; }
rate() { bus_call org.freedesktop.DBus.Properties.Get org.mpris.MediaPlayer2.Player Rate 2>/dev/null; }
status_is() { [[ $(pc status) == "$1" ]]; }
title_is() { [[ $(pc metadata xesam:title) == "$1" ]]; }
between() { awk -v v="$1" -v lo="$2" -v hi="$3" 'BEGIN { exit !(v >= lo && v < hi) }'; }
make_song "$work/music" "Song One" 12
for name in two three four; do make_song "$work/music" $name 10; done
# A track tagged as a tagger writes it (ID3v2, UTF-16 texts, a PNG cover); the cache takes its cover.
export XDG_CACHE_HOME=$work/cache
python3 -c 'import struct, sys, zlib
chunk = lambda kind, data: struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
rows = b"".join(b"\0" + b"\x20\x60\xc0" * 8 for _ in range(8))
open(sys.argv[1], "wb").write(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", 8, 8, 8, 2, 0, 0, 0))
                              + chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b""))' "$work/cover.png"
LC_ALL=C.UTF-8 lame --quiet -b 64 --id3v2-utf16 --tt '夜の歌' --ta 'Artist Ä' --tl '唱片 Album' --tn 7 \
  --ti "$work/cover.png" "$work/tone.wav" "$work/music/tagged.mp3" || give_up "could not make tagged.mp3"
one=$(url_of "$work/music/Song One.mp3") two=$(url_of "$work/music/two.mp3")
cd "$work/music" || exit 1

start_player "$work/music/Song One.mp3" "Song One.lrc" two.mp3
check "the player appears on the session bus" within 30 eval 'playerctl -l 2>/dev/null | grep -qx tunelark'
gdbus monitor --session --dest org.mpris.MediaPlayer2.tunelark >"$work/monitor" 2>/dev/null &
helpers+=($!)
check "the first audio file named on the command line plays" within 20 status_is Playing
check "the page got both tracks and the lyric file" \
  eval 'calls_since 0 | grep -q "^setPlayList(\".*Song%20One.mp3.*two.mp3.*\",\".*Song%20One.lrc"'
check "the page was told which track plays" within 5 said_since 0 "setPlayingFilePath(\"$one\");"
check "title from the file name" within 5 title_is "Song One"
check "url of the track" test "$(pc metadata xesam:url)" == "$one"
check "length of 12 s in microseconds" between "$(pc metadata mpris:length)" 11900000 12200000
check "the lyric text" eval 'pc metadata xesam:asText | grep -qxF "[00:03.00]第3行 line 3"'
root=$(bus_call org.freedesktop.DBus.Properties.GetAll org.mpris.MediaPlayer2 2>&1)
check "Identity and DesktopEntry" eval '[[ $root == *"'\''Identity'\'': <'\''Tunelark'\''>"* &&
  $root == *"'\''DesktopEntry'\'': <'\''org.tunelark.Tunelark'\''>"* ]]'

# request STATE PAGE-CALL COMMAND...: the request, its effect, and the page told of it.
request() {
  local mark state=$1 call=$2
  shift 2
  mark=$(log_mark)
  "$@" >/dev/null
  check "$*: $state" within 5 eval "$state"
  check "$*: the page got $call" within 5 said_since "$mark" "$call"
}
request "status_is Paused" 'setIsPlaying(false);' pc pause
request "status_is Playing" 'setIsPlaying(true);' pc play
request "title_is two" "setPlayingFilePath(\"$two\");" pc next
request "title_is 'Song One'" "setPlayingFilePath(\"$one\");" pc previous
request "[[ \$(rate) == '(<1.5>,)' ]]" 'setSpeed("1.50");' \
  bus_call org.freedesktop.DBus.Properties.Set org.mpris.MediaPlayer2.Player Rate '<1.6>'
request "[[ \$(pc shuffle) == On ]]" 'setMode("random");' pc shuffle On
pc position 7
check "SetPosition moves to 7 s" between "$(pc position)" 6.9 8.5
check "the seek is announced with Seeked" within 5 grep -q Player.Seeked "$work/monitor"
check "PropertiesChanged announces PlaybackStatus and Metadata" eval "grep PropertiesChanged '$work/monitor' |
  grep -q PlaybackStatus && grep PropertiesChanged '$work/monitor' | grep -q Metadata"
pc open "$(url_of "$work/music/three.mp3")"
check "OpenUri adds and plays the file" within 10 title_is three
mark=$(log_mark)
pc open "$(url_of "$work/music/tagged.mp3")"
check "a tagged track's title comes from its tag, CJK intact" within 10 title_is '夜の歌'
check "its artist, album and track number too" eval '[[ $(pc metadata xesam:artist) == "Artist Ä" &&
  $(pc metadata xesam:album) == "唱片 Album" && $(pc metadata xesam:trackNumber) == 7 ]]'
check "the tags are announced with PropertiesChanged" within 5 \
  grep -qF "'xesam:album': <'唱片 Album'>" "$work/monitor"
art=$(pc metadata mpris:artUrl)
check "its cover is a file in the cache folder" eval '[[ $art == "file://$work/cache/tunelark/covers/"*.png ]] &&
  cmp -s "${art#file://}" "$work/cover.png"'
check "the track number is sent as a 32-bit integer" eval "bus_call org.freedesktop.DBus.Properties.Get \
  org.mpris.MediaPlayer2.Player Metadata | grep -qF \"'xesam:trackNumber': <7>\""
check "the page still shows the file name" said_since "$mark" 'setMainFileName("tagged");'
check "the page is told nothing of the tags" not eval 'calls_since "$mark" | grep -q "夜の歌\|Artist Ä"'
check "an http URI is refused" not bus_call org.mpris.MediaPlayer2.Player.OpenUri http://example.invalid/a.mp3 2>/dev/null

check "a second launch with a file ends with status 0" eval 'timeout 20 "$exe" "$work/music/four.mp3" >/dev/null 2>&1'
check "the running player took the file and plays it" within 10 title_is four
check "one player on the bus" test "$(playerctl -l 2>/dev/null | grep -c tunelark)" == 1
window_of main Tunelark && xdotool windowunmap --sync "$main"
bus_call org.mpris.MediaPlayer2.Raise >/dev/null 2>&1
check "Raise shows the hidden main window" within 5 viewable "$main"

bus_call org.mpris.MediaPlayer2.Quit >/dev/null 2>&1
check "Quit ends the program with status 0" ended_ok 10
report
