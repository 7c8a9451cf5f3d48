#!/usr/bin/env bash
# A page that posts 20,000 messages as fast as it can while a track plays (storm_page.html, in a resources
# folder beside a copy of the program): every speed step comes back in order, every mode change comes
# back, the state at the end follows the last messages, a later round trip takes under a second, and
# every page call the program made reached the page.
# Usage: test_storm.sh BUILD_DIR   (inside tests/support/with-session.sh)
suite=storm
. "$(dirname "$0")/lib/player.sh"
make_song "$work/music" one 60
make_song "$work/music" two 60
mkdir -p "$work/bin" && cp "$exe" "$work/bin/" && cp -r "$build/resources" "$work/bin/" || give_up "could not copy the program"
rm -rf "$work/bin/resources/www" && mkdir "$work/bin/resources/www" &&
  cp "$(dirname "$0")/storm_page.html" "$work/bin/resources/www/index.html" || give_up "could not place the page"
exe=$work/bin/tunelark
start_player "$work/music/"{one,two}.{mp3,lrc}
reported() { grep -a -m1 '^nativeDoCopy{"text":"storm ' "$out" >"$work/report"; }
within 240 reported || give_up "the page reported nothing: $(tail -3 "$out")"
# value KEY: the page's report as Python reads it.
value() { python3 -c 'import json, sys; r = json.loads(json.loads(open(sys.argv[1]).read()[12:])["text"][6:]); print(eval(sys.argv[2], {}, r))' "$work/report" "$1"; }
echo "report: $(value 'dict((k, v) for k, v in locals().items() if k != "counts")')"
check "every speed step answered, in order" test "$(value 'allAnswered and speedsInOrder')" == True
check "one mode call for each mode change, the last the mode stepped to" \
  test "$(value 'modeCalls == modeMessages and lastMode == wantedMode')" == True
check "the speed and the play state follow the last messages" \
  test "$(value 'lastSpeed == wantedSpeed and lastIsPlaying is False')" == True
check "a round trip after the storm under a second" test "$(value 'probed and probeMs < 1000')" == True
check "the stream on the sound server is paused" within 5 eval '[[ $(player_stream) == *" yes" ]]'
# The page calls of the debug log, by function, against what the page got (ticks still come: left out).
for name in setPlayList setMode setIsPlaying setPlayingFilePath setMainFileName setDuration setSpeed; do
  logged=$(calls_since 0 | grep -c "^$name(")
  check "each $name reached the page ($logged)" test "$(value "counts.get('$name', 0)")" == "$logged"
done
check "the program still runs" kill -0 "$player_pid"
report
