#!/usr/bin/env bash
# A user's first session: the main window appears once its page is ready; tracks and lyric files with CJK
# names are added through "Add files" and the open panel, and survive SIGKILL right after; a track is
# played with a double click, heard, and followed in the lyrics window; speed, pause and the output
# device moving away and back; an encoding chosen, a track moved and one removed from the page; Ctrl+Q
# in the lyrics window quits, a restart shows the same play list, and the close button ends the program.
# Usage: test_playback.sh BUILD_DIR   (inside tests/support/with-session.sh)
suite=playback
. "$(dirname "$0")/lib/player.sh"
music=$work/音乐/周末
make_song "$music" 晴天 60
for name in 稻香 阳光 黄昏; do make_song "$music" $name 5; done  # in this order after 晴天 by URL
iconv -f UTF-8 -t GB18030 "$music/稻香.lrc" >"$work/gb.lrc" && mv "$work/gb.lrc" "$music/稻香.lrc"
echo 'not for the player' >"$music/notes.txt"
mp3=$(url_of "$music/晴天.mp3") daoxiang=$(url_of "$music/稻香.mp3") yangguang=$(url_of "$music/阳光.mp3")
huanghun=$(url_of "$music/黄昏.mp3")
last_list() { calls_since "${1:-0}" | grep '^setPlayList(' | tail -1; }
# The order of the tracks in the page's list $1, by their names.
track_order() { grep -o '\\"fileName\\":\\"[^.]*\.mp3' <<<"$1" | sed 's/.*"//' | tr '\n' ' '; }
# The open panel starts in the working directory.
mkdir -p "$work/config/glib-2.0/settings"
printf "[org/gtk/settings/file-chooser]\nstartup-mode='cwd'\n" >"$work/config/glib-2.0/settings/keyfile"
export GSETTINGS_BACKEND=keyfile XDG_CONFIG_HOME=$work/config
cd "$music" || exit 1

# --- The first start: nothing shown before the page says showWindow, then 1200x600 in the middle.
start_player
early=no
shown() { window_of main Tunelark && ! console_has showWindow && early=yes; console_has showWindow; }
within 30 shown || give_up "the page never said showWindow"
check "no window before showWindow" test $early == no
centred() { window_of main Tunelark && [[ $(area_of "$main") == 1200x600+200+150 ]]; }
check "the main window is 1200x600 in the middle of the 1600x900 screen" within 10 centred
main_x=200 main_y=150
check 'the page got setPlayList("[]","[]");' within 10 said_since 0 'setPlayList("[]","[]");'
names=$(calls_since 0 | grep -m1 '^setAllSupportedCharsetNames("\[\\".*\\"\]");$' | grep -o '\\"[^"\\]*\\"' | wc -l)
check "the page got the 46 encoding names before the play list ($names)" eval \
  '((names == 46)) && calls_since 0 | grep -m1 -e ^setPlayList -e ^setAllSupported | grep -q ^setAll'
drawn() { shot "$artifacts/main_window.png" 1200x554+200+196 && (($(convert "$artifacts/main_window.png" -format %k info:) > 64)); }
check "the page is drawn" within 5 drawn

# --- Adding: the button, OK in the alert that explains, all files the panel shows in the folder.
mark=$(log_mark)
click_main "${ADD_FILES[@]}"
title='Please Choose the mp3 file(s) and the lrc file(s):'
alert_shown() { alert=$(windows_titled Tunelark | grep -vx "$main" | tail -1); [[ -n $alert ]]; }
within 5 alert_shown || give_up "no alert after Add files"
for try in 1 2 3; do  # its one button spans its bottom
  alert_shown && read -r x y w h < <(geometry_of "$alert") && xdotool mousemove $((x + w / 2)) $((y + h - 16)) click 1
  within 3 window_of panel "$title" && break
done
[[ -n $panel ]] || give_up "no open panel titled with the choosing message"
timeout 5 xdotool windowfocus --sync "$panel"
for try in 1 2 3 4 5; do  # the panel may list the folder late
  xdotool key --clearmodifiers ctrl+a Return
  within 2 not window_of panel "$title" && break
done
added() { list=$(last_list "$mark"); [[ $(track_order "$list") == "晴天.mp3 稻香.mp3 阳光.mp3 黄昏.mp3 " ]]; }
check "the page got the four tracks in order" within 5 added
check "and their lyric files, not the text file" eval '[[ $(grep -o "\.lrc" <<<"$list" | wc -l) == 8 && $list != *notes.txt* ]]'

# --- Killed right after adding: the next start has the whole list.
kill -KILL "$player_pid" && wait "$player_pid" 2>/dev/null
player_pid=
start_to_page
check "after SIGKILL right after adding, a restart gets the same play list" test "$(last_list)" == "$list"

# --- Playing: the double click, the time, the sound.
mark=$(log_mark)
play_row || give_up "no setIsPlaying(true); after double clicks on the row"
for call in "setPlayingFilePath(\"$mp3\");" 'setDuration("01:00");' 'setMainFileName("晴天");'; do
  check "the page got $call" said_since "$mark" "$call"
done
within 10 position_reached "$mark" 2
first=$(current_seconds "$mark")
within 5 position_reached "$mark" $((${first:-0} + 2))
second=$(current_seconds "$mark")
check "the time advances ($first s, then $second s)" eval '((${first:-0} >= 2 && ${second:-0} > first))'
check "the stream plays on the default sink tl_sink_a" within 3 stream_is "tl_sink_a no"
check "the 440 Hz tone reaches tl_sink_a" hears_tone tl_sink_a

# --- The lyrics window shows the line of the time ("line N" starts at N s), and follows it.
click_main "${LYRICS_SWITCH[@]}"
check "the switch posts nativeTurnLyricsOn with needOn true and one row" within 3 switched_lyrics_on
within 5 window_of lyrics Lyrics || give_up "no lyrics window"
read_line() { # FILE: the lyrics window, saved there, shows the line of the time give or take 1 s
  shot "$1" "$(area_of "$lyrics")"
  shown_at=$(current_seconds "$mark") text=$(read_text "$1") line=$(grep -o 'line [0-9]*' <<<"$text" | head -1 | cut -c6-)
  [[ -n $line ]] && ((line >= shown_at - 1 && line <= shown_at + 1))
}
check "the lyrics window shows the line of the time" within 3 read_line "$artifacts/lyrics-window.png"
echo "  read '$text' at $shown_at s"
before=${line:-0}
within 5 position_reached "$mark" $((${shown_at:-0} + 2))
check "later it shows a later line" within 3 eval 'read_line "$work/later.png" && ((line > before))'
echo "  read '$text' at $shown_at s"

# --- Speed and pause from the page.
mark=$(log_mark)
click_main "${SPEED_UP[@]}"
check 'faster: setSpeed("1.25");' within 3 said_since "$mark" 'setSpeed("1.25");'
click_main "${SPEED_DOWN[@]}"
check 'slower: setSpeed("1.0");' within 3 said_since "$mark" 'setSpeed("1.0");'
mark=$(log_mark)
click_main "${PLAY_PAUSE[@]}"
check "pause: setIsPlaying(false);" within 3 said_since "$mark" 'setIsPlaying(false);'
check "the paused stream is corked" within 3 stream_is "tl_sink_a yes"
check "silence while paused" hears_silence tl_sink_a
paused_at=$(current_seconds "$mark")
mark=$(log_mark)
click_main "${PLAY_PAUSE[@]}"
check "play: setIsPlaying(true);" within 3 said_since "$mark" 'setIsPlaying(true);'
within 10 position_reached "$mark" $((${paused_at:-0} + 1))
resumed=$(current_seconds "$mark")
check "it goes on from where it paused ($paused_at s, then $resumed s)" \
  eval '((${resumed:-0} > ${paused_at:-99} && resumed <= paused_at + 5))'

# --- The default output device moves away (one pause, silence) and back (it plays again).
mark=$(log_mark)
pactl set-default-sink tl_sink_b
check "the device moving away pauses: setIsPlaying(false);" within 2 said_since "$mark" 'setIsPlaying(false);'
check "the stream is corked" within 3 eval '[[ $(player_stream) == *" yes" ]]'
sleep 1  # time for a wrong second call
check "one pause and no resume while away" eval '[[ $(calls_since "$mark" | grep -c "^setIsPlaying(") == 1 ]]'
check "no sound on tl_sink_b" hears_silence tl_sink_b
mark=$(log_mark)
pactl set-default-sink tl_sink_a
check "the device coming back resumes: setIsPlaying(true);" within 2 said_since "$mark" 'setIsPlaying(true);'
check "the tone is heard on tl_sink_a again" within 3 eval 'stream_is "tl_sink_a no" && hears_tone tl_sink_a'

# --- Editing from the page: 稻香.lrc is read as GB18030; 黄昏 moves to the top by keyboard; 阳光 goes.
row() { echo "${FIRST_ROW[0]} $((FIRST_ROW[1] + 52 * ($1 - 1)))"; }  # the page's rows are 52 pixels apart
# A console line with the message's prefix and these "key":"value" pairs (the page's keys come in any order).
posted() { grep -a "^$1 {" "$out" | grep -F -- "\"$2\"" | grep -qF -- "\"$3\""; }
mark=$(log_mark)
choose_gb18030() { # in the encoding menu of the second row: utf8 and nine down; again if the menu came late
  local try
  for try in 1 2 3; do
    click_main 759 "$(row 2 | cut -d' ' -f2)"
    sleep 0.5
    xdotool key --delay 60 Down Down Down Down Down Down Down Down Down Return
    within 3 posted "Set Charset By JS" 'charset":"GB18030' "mainPathFileName\":\"${daoxiang%.mp3}" && return 0
    xdotool key Escape
  done
  return 1
}
check "the encoding menu posts GB18030 for 稻香.lrc" choose_gb18030
timeout 5 xdotool windowfocus --sync "$main"
click_main $(row 4)
xdotool key --delay 150 alt+Up alt+Up alt+Up
check "Alt+Up three times moves 黄昏 to the top" within 3 posted "Move Item By JS" 'fromIndex":"1' 'toIndex":"0'
click_main $(row 4)
xdotool key Delete
check "Delete removes 阳光" within 3 console_has "Native Remove By JS {\"filePath\":\"$yangguang\"}"
edited() {
  list=$(last_list "$mark")
  [[ $(track_order "$list") == "黄昏.mp3 晴天.mp3 稻香.mp3 " ]] && grep -q '稻香\.lrc[^}]*\\"charset\\":\\"GB18030' <<<"$list"
}
check "the page's list is 黄昏, 晴天, 稻香, with 稻香.lrc in GB18030" within 5 edited

# --- Ctrl+Q in the lyrics window quits; the play list stays.
timeout 5 xdotool windowfocus --sync "$lyrics"
xdotool key --clearmodifiers ctrl+q
check "Ctrl+Q in the lyrics window quit with status 0" ended_ok 10
check "no stream is left on the sound server" within 3 eval '[[ -z $(pactl list short sink-inputs) ]]'
start_to_page
check "after a restart the page gets the same play list" test "$(last_list)" == "$list"
click_main 1177 21  # the close button at the right end of the title bar
check "the window's close button ends the program with status 0" ended_ok 10
report
