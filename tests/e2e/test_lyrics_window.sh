#!/usr/bin/env bash
# The lyrics window with a stored play list: in two rows it shows two changing lines; dragging the text
# moves it; a double press on it brings the main window to the front; a two-rows size of 30 typed in the
# preferences previews a taller window, and Cancel puts it back.
# Usage: test_lyrics_window.sh BUILD_DIR   (inside tests/support/with-session.sh)
suite=lyrics-window
. "$(dirname "$0")/lib/player.sh"
make_song "$work/music" song 60
"$build/tests/tl-prepare-store" "$work/data/Tunelark/Tunelark.sqlite" "$work/music/song."{mp3,lrc} >/dev/null ||
  give_up "could not prepare the store"
start_to_page
play_row || give_up "no setIsPlaying(true); after double clicks on the row"
click_main "${LYRICS_SWITCH[@]}"
check "the switch turned the lyrics window on" within 5 switched_lyrics_on
click_main "${TWO_ROWS[@]}"
check '"Two rows" chose two rows' within 5 console_has 'TurnLyricsOnByJsHandler {"rowAmoutString":"towRows"}'
within 5 window_of lyrics Lyrics || give_up "no lyrics window"
xdotool windowraise "$lyrics"  # keep-above needs a window manager

# Bands of at least 4 pixel rows lit by text (the background is transparent, so black here).
text_bands() {
  convert "$1" -colorspace Gray -resize "1x$(identify -format %h "$1")!" -depth 8 txt:- |
    awk -F'[(),]' 'NR > 1 { if ($3 + 0 > 8) run++; else { if (run >= 4) bands++; run = 0 } }
                   END { if (run >= 4) bands++; print bands + 0 }'
}
shows_two_lines() { shot "$1" "$(area_of "$lyrics")" && (($(text_bands "$1") == 2)); } # FILE: saved there
within 10 position_reached 0 2  # from the second line on, the previous line is shown above
check "two lines of text in the lyrics window" within 3 shows_two_lines "$artifacts/lyrics_two_rows_1.png"
at=$(current_seconds 0)
within 5 position_reached 0 $((${at:-0} + 2))
check "two other lines 2 s later" within 3 eval 'shows_two_lines "$artifacts/lyrics_two_rows_2.png" &&
  ! cmp -s <(convert "$artifacts/lyrics_two_rows_1.png" rgb:-) <(convert "$artifacts/lyrics_two_rows_2.png" rgb:-)'

# A drag by the text, 300 left and 50 down in ten moves; each tick re-centres the window on its anchor.
# It also takes the window away from where the preferences open, over it.
centre() { local x y w h; read -r x y w h < <(geometry_of "$lyrics"); echo $((x + w / 2)) $((y + h / 2)); }
read -r cx cy < <(centre)
# As a hand comes: in from the left along the first row, over its glyphs (without a compositor the
# window takes the pointer only there until the hover makes the whole box its own), then to the centre.
read -r lx ly lw lh < <(geometry_of "$lyrics")
for ((px = lx - 6; px <= cx; px += 3)); do xdotool mousemove "$px" $((ly + lh / 4)); done
xdotool mousemove "$cx" "$cy" mousedown 1
for _ in $(seq 10); do xdotool mousemove_relative -- -30 5 sleep 0.05; done
xdotool mouseup 1
moved() { read -r nx ny < <(centre); ((nx - cx >= -302 && nx - cx <= -298 && ny - cy >= 48 && ny - cy <= 52)); }
check "the window followed the drag" within 3 moved
echo "  moved by ($((nx - cx)),$((ny - cy))) for (-300,50)"

# A double press raises the main window from behind another one (showing a hidden one: the lyrics-shape
# test); two presses 0.6 s apart are not a double press.
xmessage -geometry "1200x600+$main_x+$main_y" 'covering the main window' >/dev/null 2>&1 &
helpers+=($!)
within 5 window_of cover xmessage || give_up "could not cover the main window"
stack_place() { xwininfo -root -children | awk -v id="$(printf '0x%x' "$1")" '$1 ~ /^0x/ { n++ } $1 == id { print n }'; }
above() { (($(stack_place "$1") < $(stack_place "$2"))); }
xdotool windowraise "$lyrics" mousemove "$nx" "$ny" click 1 sleep 0.6 click 1 sleep 0.5
check "presses 0.6 s apart leave the main window behind" above "$cover" "$main"
xdotool sleep 0.5 click --repeat 2 --delay 100 1
check "a double press brings the main window to the front" within 3 above "$main" "$cover"

# The preferences (Ctrl+comma): the two-rows field, second in the grid, previews as it is typed.
read -r _ _ _ h0 < <(geometry_of "$lyrics")
timeout 5 xdotool windowfocus --sync "$main" key ctrl+comma
within 5 window_of prefs Preferences || give_up "Ctrl+comma opened no preferences window"
read -r px py pw ph < <(geometry_of "$prefs")
xdotool mousemove $((px + 188)) $((py + 107)) click 1 key ctrl+a type 30
taller() { read -r _ _ _ h < <(geometry_of "$lyrics"); ((h > h0 * 3 / 2)); }
check "typing 30 previews a taller lyrics window" within 3 taller
check "the preview shows two lines" within 3 shows_two_lines "$artifacts/lyrics_preview_30.png"
xdotool mousemove $((px + pw - 168)) $((py + ph - 38)) click 1  # Cancel, left of the two buttons
check "Cancel closes the preferences" within 3 not window_of prefs Preferences
check "Cancel restores the height $h0" within 3 eval '[[ $(geometry_of "$lyrics" | cut -d" " -f4) == "$h0" ]]'
check "the player ran through it all" kill -0 "$player_pid"
report
