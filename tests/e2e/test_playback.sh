#!/usr/bin/env bash
# A user's first session with the player, on a track and its lyric file with CJK names: adds them through
# the page's "Add files" button, the explaining alert and the open panel; plays the row with a double click
# and hears it on the default sink while time and slider move; follows the lyrics in the lyrics window;
# quits with Ctrl+Q while the lyrics window has the keyboard focus, and finds the play list again after a
# restart with the same data folder.
# Usage: test_playback.sh BUILD_DIR   (inside the session of tests/support/with-session.sh)
set -uo pipefail
build=${1:?usage: $0 BUILD_DIR}
exe=$build/tunelark
artifacts=${TUNELARK_ARTIFACTS:-$build/e2e-artifacts}
work=$(mktemp -d /tmp/tunelark-e2e-play.XXXXXX)
suite=playback
. "$(dirname "$0")/lib/player.sh"
need_tools xdotool xwininfo import convert compare tesseract pactl parec sox lame python3
rm -f "$artifacts"/{add-alert,open-panel,play-list,playing,lyrics-window,restarted}.png

music=$work/音乐/周末
make_song "$music" 晴天 40 || give_up "could not make the test song"
echo 'not for the player' >"$music/notes.txt"
mp3_url=$(url_of "$music/晴天.mp3")
lrc_url=$(url_of "$music/晴天.lrc")
main_path=${mp3_url%.mp3}
# The page receives both lists as JSON texts inside script strings, so their quotes come escaped.
expected_list=$(printf 'setPlayList("%s","%s");' \
  "[{\\\"fileName\\\":\\\"晴天.mp3\\\",\\\"filePath\\\":\\\"$mp3_url\\\",\\\"no\\\":1,\\\"duration\\\":\\\"\\\",\\\"mainPathFileName\\\":\\\"$main_path\\\"}]" \
  "[{\\\"fileName\\\":\\\"晴天.lrc\\\",\\\"filePath\\\":\\\"$lrc_url\\\",\\\"charset\\\":\\\"utf8\\\",\\\"mainPathFileName\\\":\\\"$main_path\\\"}]")

start_to_page
said_since 0 'setPlayList("[]","[]");' || give_up "the store was not empty at the first start"

# --- Adding the files: button, explaining alert, open panel, play list.
mark=$(log_mark)
add_through_page "$music" "$artifacts/add-alert.png" "$artifacts/open-panel.png" || report
pass "an alert, then the open panel titled with the choosing message, which took the folder and closed"
check "the button posts nativeToAddMp3" console_has 'MainVCNativeToAddMp3ByJsHandler""'
# OCR reads "lrc" as "Irc" in this font, so the words around it are compared.
[[ $alert_text == *"To Add to the play list, Please Choose the mp3 file(s) and the"*"must be in the same folder with the related mp3 file!"* ]] &&
  pass "the alert explains how to choose" || fail "alert text read as: $alert_text"
if within 5 said_since "$mark" "$expected_list"; then
  pass "the page got the play list with the track and its lyric file"
else
  fail "play list sent: $(scripts_since "$mark" | grep -a '^setPlayList' | tail -1)"
fi
chosen=$(grep -axE 'file://[^ ]*\.(lrc|mp3|txt)' "$out" | tr '\n' ' ')
[[ $chosen == "$lrc_url $mp3_url " ]] && pass "exactly the two offered files were added, the lyric file first" ||
  fail "files handled: $chosen"
pointer_away
sleep 0.5
shot "$artifacts/play-list.png" "1200x600+$main_x+$main_y"

# --- A double click on the row plays it.
mark=$(log_mark)
play_first_row "$mark" || give_up "no setIsPlaying(true); after the double click on the row"
check "the double click posts nativePlayItem" console_has "Native Play Item By JS {\"filePath\":\"$mp3_url\"}"
scripts_since "$mark" >"$work/start"
for script in "setPlayingFilePath(\"$mp3_url\");" 'setCurrent("00:00");' 'setDuration("00:40");' \
  'setMainFileName("晴天");' 'setSliderCurrentValue(0);'; do
  grep -qxF -- "$script" "$work/start" && pass "page got $script" || fail "page never got $script"
done
# Positions are read from the log; a loaded machine may start the sound a moment late.
within 10 position_reached "$mark" 2
first=$(current_seconds "$mark")
slider_area="${SLIDER[2]}x${SLIDER[3]}+$((main_x + SLIDER[0]))+$((main_y + SLIDER[1]))"
shot "$work/slider-1.png" "$slider_area"
within 5 position_reached "$mark" $((${first:-0} + 2))
second=$(current_seconds "$mark")
shot "$work/slider-2.png" "$slider_area"
[[ -n $first && -n $second && $first -ge 2 && $second -gt $first ]] &&
  pass "the time advances ($first s, then $second s)" || fail "the time did not advance: '$first' then '$second'"
# Each tick sends the time and then the slider from one position: the slider value is that position in
# ten-thousandths of the 40 s track.
read -r tick_time slider < <(scripts_since "$mark" | awk '
  /^setCurrent\("[0-9]+:[0-9][0-9]"\);$/ { split(substr($0, 13, 5), t, ":"); time = t[1] * 60 + t[2] }
  /^setSliderCurrentValue\([0-9]+\);$/ { pair = time " " substr($0, 23) + 0 }
  END { print pair }')
[[ -n $slider ]] && ((slider >= tick_time * 245 && slider <= (tick_time + 1) * 250)) &&
  pass "slider value $slider goes with the time $tick_time s of 40" || fail "slider value '$slider' with time '$tick_time' s"
moved=$(compare -metric AE "$work/slider-1.png" "$work/slider-2.png" null: 2>&1 | cut -d' ' -f1)
[[ ${moved:-0} -gt 0 ]] && pass "the page's slider moved ($moved pixels changed)" || fail "the page's slider did not move"
check "the player's stream plays on tl_sink_a" within 3 stream_is "tl_sink_a no"
hears_tone tl_sink_a && pass "the 440 Hz tone reaches tl_sink_a (RMS $heard_rms, $heard_freq Hz)" ||
  fail "tl_sink_a heard RMS $heard_rms at $heard_freq Hz"

# --- The lyrics window follows the position.
click_main "${LYRICS_SWITCH[@]}"
# The body's keys come in no fixed order.
switched_on() { grep -a '^TurnLyricsOnByJsHandler {' "$out" | grep -aF '"needOn":"true"' | grep -qaF '"rowAmoutString":"oneRow"'; }
check "the switch posts nativeTurnLyricsOn with needOn true and one row" within 3 switched_on
lyrics=
find_lyrics() { lyrics=$(window_named Lyrics); [[ -n $lyrics ]]; }
within 5 find_lyrics && pass "a lyrics window appeared" || give_up "no lyrics window"
# Reads the number of the line the lyrics window shows ("line N"), and the position reported with it.
read_lyric_line() {
  local file=$1 x y w h
  read -r x y w h < <(geometry_of "$lyrics")
  shot "$file" "${w}x${h}+$x+$y"
  shown_at=$(current_seconds "$mark")
  shown_text=$(read_text "$file" 7)
  shown_line=$(grep -o 'line [0-9]*' <<<"$shown_text" | head -1 | cut -d' ' -f2)
  shown_colours=$(colours_of "$file")
}
pointer_away
sleep 1
shot "$artifacts/playing.png"
read_lyric_line "$artifacts/lyrics-window.png"
((${shown_colours:-0} > 8)) && pass "the lyrics window shows text ($shown_colours colours)" ||
  fail "the lyrics window looks blank (${shown_colours:-?} colours)"
# Line N starts at N s; the time text is whole seconds, read a moment apart from the picture.
[[ -n $shown_line && -n $shown_at ]] && ((shown_line >= shown_at - 1 && shown_line <= shown_at + 1)) &&
  pass "it shows line $shown_line at $shown_at s" || fail "lyrics window read '$shown_text' at '$shown_at' s"
before=$shown_line
within 5 position_reached "$mark" $((${shown_at:-0} + 2))
read_lyric_line "$work/lyrics-later.png"
[[ -n $shown_line && -n $before ]] && ((shown_line > before && shown_line >= shown_at - 1 && shown_line <= shown_at + 1)) &&
  pass "later it shows line $shown_line at $shown_at s" ||
  fail "the lyrics did not follow: line '$before', then read '$shown_text' at '$shown_at' s"

# --- Ctrl+Q quits, also while the lyrics window has the keyboard focus; the play list stays.
focus_window "$lyrics"
xdotool key --clearmodifiers ctrl+q
if player_ended 10; then
  [[ $quit_status -eq 0 ]] && pass "Ctrl+Q in the lyrics window quit with status 0" || fail "Ctrl+Q: exit status $quit_status"
else
  fail "still running 10 s after Ctrl+Q in the lyrics window"
  stop_player
fi
check "no stream is left on the sound server" within 3 eval '[[ -z $(pactl list short sink-inputs) ]]'

start_to_page
said_since 0 "$expected_list" && pass "after a restart the page gets the same play list" ||
  fail "play list after the restart: $(scripts_since 0 | grep -a '^setPlayList' | tail -1)"
pointer_away
sleep 0.5
shot "$artifacts/restarted.png" "1200x600+$main_x+$main_y"
stop_player

echo "screenshots: $artifacts/{add-alert,open-panel,play-list,playing,lyrics-window,restarted}.png"
report
