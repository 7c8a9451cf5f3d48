#!/usr/bin/env bash
# The lyrics window over a green backdrop on bare X, under openbox, under xfwm4 with its compositor, and
# on bare X again once that compositor is gone, all in one run of the player: the backdrop shows around
# the glyphs, the hover grey shows whole while the pointer is over the text (gaps included), a drag by
# the text moves the window, a double press on it shows the main window, and a track without lyrics
# shows nothing at all.
# Usage: test_lyrics_shape.sh BUILD_DIR   (inside tests/support/with-session.sh)
suite=lyrics-shape
. "$(dirname "$0")/lib/player.sh"
backdrop='#20C040'
make_song "$work/music" lyrics 120
make_song "$work/music" nolyrics 120 && rm "$work/music/nolyrics.lrc"
"$build/tests/tl-prepare-store" "$work/data/Tunelark/Tunelark.sqlite" "$work/music/lyrics."{mp3,lrc} \
  "$work/music/nolyrics.mp3" >/dev/null || give_up "could not prepare the store"
xmessage -bg "$backdrop" -buttons '' -geometry 1600x420+0+480 ' ' >/dev/null 2>&1 &
helpers+=($!)
within 5 window_of cover xmessage || give_up "no backdrop"
xdotool mousemove 5 5
export G_MESSAGES_DEBUG="Tunelark Tunelark-Hover"
start_to_page
play_row || give_up "no setIsPlaying(true); after double clicks on the row"
click_main "${LYRICS_SWITCH[@]}"
check "the switch turned the lyrics window on" within 5 switched_lyrics_on
within 5 window_of lyrics Lyrics || give_up "no lyrics window"

# The share (0 to 1) of backdrop pixels in the lyrics window's area, saved to FILE as seen.
backdrop_share() {
  shot "$1" "$(area_of "$lyrics")" &&
    convert "$1" -fuzz 6% -fill black +opaque "$backdrop" -fill white -opaque "$backdrop" -format '%[fx:mean]' info:
}
share_in() { # FILE LOW HIGH: the backdrop's share of the window lies in [LOW, HIGH]
  awk -v s="$(backdrop_share "$1")" -v lo="$2" -v hi="$3" 'BEGIN { exit !(s != "" && s >= lo && s <= hi) }'
}
# The text alone: the backdrop around the glyphs (half of the box at least), and glyphs.
shows_glyphs() { share_in "$1" 0.5 0.97; }
# The grey box whole: backdrop at most in its four rounded corners.
shows_box() { share_in "$1" 0 0.02; }
# A point on a glyph: the first pixel that is not the backdrop along the middle row of the window.
glyph_point() {
  local x y w h at
  read -r x y w h < <(geometry_of "$lyrics")
  at=$(import -window root -crop "${w}x1+$x+$((y + h / 2))" +repage -depth 8 txt:- 2>/dev/null |
    awk -F'[,:]' -v bg="$backdrop" 'NR > 1 && index($0, bg) == 0 { print $1; exit }')
  [[ -n $at ]] && echo $((x + at)) $((y + h / 2))
}
centre() { local x y w h; read -r x y w h < <(geometry_of "$lyrics"); echo $((x + w / 2)) $((y + h / 2)); }

hover_lines() { tail -n +"$(($1 + 1))" "$err" | grep -ac "Tunelark-Hover-DEBUG: .*pointer $2 the lyrics text"; }
hovers() { [[ $(hover_lines "$1" entered) == "$2" && $(hover_lines "$1" left) == "$3" ]]; } # MARK ENTERED LEFT

round=0
for wm in none openbox xfwm4 none; do
  window_manager "$wm"
  # A manager that just left may still be handing its windows back to the root; let that settle.
  sleep 1
  [[ $wm == xfwm4 ]] && label="xfwm4, composited" || label="$wm, not composited"
  # Under a manager the window may have been reparented and moved: find it again, above the backdrop.
  within 5 window_of lyrics Lyrics || give_up "$label: no lyrics window"
  xdotool windowraise "$lyrics"
  shot_of="$artifacts/lyrics_shape_$((++round))_$wm"
  check "$label: only the glyphs show over the backdrop" within 5 shows_glyphs "$shot_of.png"

  # In from below onto a glyph, then right along the text to the box's padding: one entry, no leave.
  mark=$(log_mark)
  read -r gx gy < <(glyph_point) || true
  read -r x y w h < <(geometry_of "$lyrics")
  xdotool mousemove "${gx:-0}" $((y + h + 20)) mousemove "${gx:-0}" "${gy:-0}"
  for ((px = ${gx:-0}; px < x + w - 3; px += 3)); do xdotool mousemove "$px" "$gy"; done
  check "$label: across the glyphs the pointer entered once and never left" within 3 hovers "$mark" 1 0
  if [[ $wm != xfwm4 ]]; then  # with a compositor the grey lasts until the next tick, as on any screen
    check "$label: the pointer in the box keeps the grey box whole" within 3 shows_box "$shot_of-hover.png"
  fi

  read -r cx cy < <(centre)
  xdotool mousedown 1
  for _ in 1 2 3 4 5; do xdotool mousemove_relative -- -20 4 sleep 0.05; done
  # A hand rests before it lets go; a window manager that took the move over late still follows the
  # last motion before the release ends the move.
  xdotool sleep 0.2 mouseup 1
  moved() { read -r nx ny < <(centre); ((nx - cx >= -102 && nx - cx <= -98 && ny - cy >= 18 && ny - cy <= 22)); }
  check "$label: a drag from the padding moved the window by (-100,20)" within 3 moved

  xdotool windowunmap "$main"
  within 3 not viewable "$main"
  hand_click 2
  check "$label: a double press on the text shows the main window" within 3 viewable "$main"
  mark=$(log_mark)
  xdotool mousemove 5 5
  check "$label: the pointer gone, the text left once" within 3 hovers "$mark" 0 1
  check "$label: the pointer gone, only the glyphs show" within 3 shows_glyphs "$shot_of-left.png"

  # The track without lyrics, then back to the one with them.
  read -r main_x main_y _ _ < <(geometry_of "$main")  # a manager may have moved it
  play_row 2 || give_up "$label: the second track did not play"
  check "$label: a track without lyrics shows nothing" within 3 share_in "$shot_of-empty.png" 1 1
  play_row 1 || give_up "$label: the first track did not play again"
done
check "the player ran through it all" kill -0 "$player_pid"
report
