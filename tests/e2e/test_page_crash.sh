#!/usr/bin/env bash
# The page's process killed while a track plays, with the lyrics window on in two rows and the speed
# raised: the player says so on the console, reloads the page and gives it the play list, mode, speed,
# playing track and lyrics switches again; the page is drawn again where the window was, and the track
# plays on.
# Usage: test_page_crash.sh BUILD_DIR   (inside tests/support/with-session.sh)
suite=page-crash
. "$(dirname "$0")/lib/player.sh"
make_song "$work/music" song 180  # long enough not to end, and start again, while checks wait
"$build/tests/tl-prepare-store" "$work/data/Tunelark/Tunelark.sqlite" "$work/music/song."{mp3,lrc} >/dev/null ||
  give_up "could not prepare the store"
mp3=$(url_of "$work/music/song.mp3")

start_to_page
play_row || give_up "no setIsPlaying(true); after double clicks on the row"
click_main "${LYRICS_SWITCH[@]}"
within 5 switched_lyrics_on || give_up "the switch did not turn the lyrics window on"
click_main "${TWO_ROWS[@]}"
within 5 console_has 'TurnLyricsOnByJsHandler {"rowAmoutString":"towRows"}' || give_up '"Two rows" was not heard'
mark=$(log_mark)
click_main "${SPEED_UP[@]}"
within 3 said_since "$mark" 'setSpeed("1.25");' || give_up "the speed did not go up"
place=$(area_of "$main")

old=$(web_process)
[[ $old =~ ^[0-9]+$ ]] || give_up "no single page process below the player: '$old'"
mark=$(log_mark) shown_before=$(grep -c '^showWindow$' "$out")
kill -KILL "$old"

check "the console says the page process ended and the page reloads" \
  within 10 console_has 'Page process ended: crashed; reloading the page'
another() { now=$(web_process); [[ -n $now && $now != "$old" ]]; }
check "a new page process runs" within 10 another
environment_of() { tr '\0' '\n' <"/proc/$1/environ" 2>/dev/null; }
check "the new page process hands large memory blocks back" \
  eval 'environment_of "$now" | grep -qx MALLOC_MMAP_THRESHOLD_=131072'
check "and keeps its scripts off the optimising compiler" \
  eval 'environment_of "$now" | grep -qx JSC_useDFGJIT=false'
check "the reloaded page said showWindow" within 10 eval '(($(grep -c "^showWindow$" "$out") > shown_before))'
for call in 'setMode("cycle");' 'setSpeed("1.25");' "setPlayingFilePath(\"$mp3\");" 'setIsPlaying(true);' \
  'setDuration("03:00");' 'setMainFileName("song");' 'setLyricsSwitches("true","towRows");'; do
  check "the page got $call again" within 5 said_since "$mark" "$call"
done
check "the page got the play list again" within 5 eval 'calls_since "$mark" | grep -q "^setPlayList(\"\[{.*song\.mp3"'
check "and the encoding names" eval 'calls_since "$mark" | grep -q "^setAllSupportedCharsetNames("'
drawn() { shot "$artifacts/page_after_crash.png" "$1" && (($(convert "$artifacts/page_after_crash.png" -format %k info:) > 64)); }
read -r w h x y < <(tr 'x+' '  ' <<<"$place")
check "the page is drawn again" within 10 drawn "${w}x$((h - 46))+$x+$((y + 46))"
# A dead page keeps its last picture on screen; a live one follows the clock in its bottom bar.
bar="${w}x84+$x+$((y + 46 + 470))"
shot "$work/bar.png" "$bar"
bar_changed() { shot "$work/bar_now.png" "$bar" && ! cmp -s <(convert "$work/bar.png" rgb:- 2>/dev/null) <(convert "$work/bar_now.png" rgb:- 2>/dev/null); }
check "the drawn page follows the clock" within 5 bar_changed
check "the window stayed at $place" test "$(area_of "$main")" == "$place"

at=$(current_seconds "$mark")
check "the time goes on (from ${at:-nothing} s)" within 5 position_reached "$mark" $((${at:-0} + 2))
check "the tone is still heard" hears_tone tl_sink_a
report
