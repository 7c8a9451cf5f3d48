#!/usr/bin/env bash
# The main window under bare X, openbox and xfwm4 with its compositor, clicked with presses held as a
# hand holds them: a double click on the page's top bar maximises and a second one restores 1200x600
# centred on the work area; the header bar's maximise and the page's are one state; dragging the top bar
# moves the window; while minimised or covered the page gets the time but its slider stays, and moves
# again once the window is back.
# Usage: test_main_window.sh BUILD_DIR   (inside tests/support/with-session.sh)
suite=main-window
. "$(dirname "$0")/lib/player.sh"
make_song "$work/music" song 120
"$build/tests/tl-prepare-store" "$work/data/Tunelark/Tunelark.sqlite" "$work/music/song."{mp3,lrc} >/dev/null ||
  give_up "could not prepare the store"

# What is drawn of a window: x y width height, less the shadows a compositing manager is told about.
frame_of() {
  local x y w h l=0 r=0 t=0 b=0 extents
  read -r x y w h < <(geometry_of "$1")
  extents=$(xprop -id "$1" _GTK_FRAME_EXTENTS 2>/dev/null | sed -n 's/^.*= //p' | tr -d ,)
  [[ -n $extents ]] && read -r l r t b <<<"$extents"
  echo $((x + l)) $((y + t)) $((w - l - r)) $((h - t - b))
}
frame_is() { [[ $(frame_of "$main") == "$1" ]]; }
work_area() { # x y width height of the first monitor's work area, the whole screen without a window manager
  local area; area=$(xprop -root _NET_WORKAREA 2>/dev/null | sed -n 's/^.*= //p' | tr -d , | cut -d' ' -f1-4)
  [[ -n $area ]] && echo "$area" || xwininfo -root | awk '/Width:/{w=$2} /Height:/{h=$2} END{print 0, 0, w, h}'
}
maximised_state() { xprop -id "$main" _NET_WM_STATE 2>/dev/null | grep -q _NET_WM_STATE_MAXIMIZED_VERT; }
changes_of_size() { grep -ac '^MainVCNativeChangeMaxMinByJsHandler' "$out"; }
# A hand's double click at X Y from the drawn window's top left corner. Half a second first, as a hand
# takes to get there: sooner, the toolkit would count on from the last double click to a triple.
double_click_at() {
  local x y; read -r x y _ < <(frame_of "$main")
  xdotool sleep 0.5 mousemove $((x + $1)) $((y + $2))
  hand_click 2
}
TOP_BAR=(500 70) TITLE=(600 23)  # on the page's top bar, and on the header bar's title
# Saves the screen to FILE; true when the light play button is drawn 42 px above the window's bottom
# edge, left of its glyph: the page has been laid out and drawn for the window's size.
page_fills_window() {
  local x y w h
  read -r x y w h < <(frame_of "$main")
  shot "$1" && (($(convert "$1" -crop "1x1+$((x + 84))+$((y + h - 42))" -colorspace gray -format '%[fx:int(255*u)]' info:) > 200))
}

sliders_since() { calls_since "$1" | grep -c '^setSliderCurrentValue('; }
times_since() { calls_since "$1" | grep -c '^setCurrent("[0-9]'; }
ticked() { (($(times_since "$1") >= $2)); } # MARK N: N time calls since MARK
no_slider_while() { # WHAT: for ten ticks the page gets the time but no slider call
  local mark; mark=$(log_mark)
  within 3 ticked "$mark" 3  # ticks already on their way when the window left
  mark=$(log_mark)
  check "$1, the page still gets the time" within 5 ticked "$mark" 10
  check "$1, but no slider call" eval '(($(sliders_since "$mark") == 0))'
}
slider_again() { # WHAT
  local mark; mark=$(log_mark)
  check "$1, the slider moves again" within 3 eval '(($(sliders_since "$mark") > 0))'
}

for manager in none openbox xfwm4; do
  echo "--- window manager: $manager"
  window_manager "$manager"
  start_to_page
  read -r main_x main_y _ < <(frame_of "$main")  # click_main's origin: the drawn window
  play_row || give_up "no setIsPlaying(true); after double clicks on the row ($manager)"
  read -r ax ay aw ah < <(work_area)
  maximised="$ax $ay $aw $ah" restored="$((ax + (aw - 1200) / 2)) $((ay + (ah - 600) / 2)) 1200 600"

  changes=$(changes_of_size) moves=$(grep -ac '^startMoveWindow' "$out")
  double_click_at "${TOP_BAR[@]}"
  check "$manager: a hand's double click on the top bar reaches the page" within 3 eval '(($(changes_of_size) == changes + 1))'
  check "$manager: both presses asked for a move, and both releases reached the page" \
    eval '(($(grep -ac "^startMoveWindow" "$out") == moves + 2 && $(grep -ac "^stopWindow" "$out") == moves + 2))'
  check "$manager: it maximised to the work area $maximised" within 5 frame_is "$maximised"
  [[ $manager == none ]] || check "$manager: the window manager knows it maximised" within 3 maximised_state
  check "$manager: the page fills the maximised window" within 3 page_fills_window "$artifacts/main_window_${manager}_maximised.png"
  double_click_at "${TOP_BAR[@]}"
  check "$manager: a second double click restores $restored" within 5 frame_is "$restored"
  check "$manager: the window manager knows it is restored" not maximised_state
  check "$manager: the page fills the restored window" within 3 page_fills_window "$artifacts/main_window_${manager}_restored.png"

  if [[ $manager != none ]]; then  # bare X has nobody to carry out the header bar's maximise
    double_click_at "${TITLE[@]}"
    check "$manager: a double click on the header bar maximises" within 5 maximised_state
    check "$manager: to the work area" within 5 frame_is "$maximised"
    double_click_at "${TOP_BAR[@]}"
    check "$manager: the page's double click then restores $restored" within 5 frame_is "$restored"
    check "$manager: and the window manager knows" not maximised_state
  fi

  # A drag by the top bar, 200 left and 50 down in ten moves.
  read -r fx fy _ < <(frame_of "$main")
  xdotool mousemove $((fx + TOP_BAR[0])) $((fy + TOP_BAR[1])) mousedown 1
  for _ in $(seq 10); do xdotool mousemove_relative -- -20 5 sleep 0.05; done
  xdotool mouseup 1
  check "$manager: dragging the top bar moved the window" within 3 frame_is "$((fx - 200)) $((fy + 50)) 1200 600"
  echo "  now at $(frame_of "$main"), from $fx $fy"

  # Minimised (without a window manager, unmapped from outside, as nothing else can minimise there).
  if [[ $manager == none ]]; then xdotool windowunmap "$main"; else xdotool windowminimize "$main"; fi
  within 3 not viewable "$main" || fail "$manager: the window did not leave the screen"
  no_slider_while "$manager: minimised"
  if [[ $manager == none ]]; then xdotool windowmap "$main"; else xdotool windowactivate "$main"; fi
  within 3 viewable "$main" || fail "$manager: the window did not come back"
  slider_again "$manager: shown again"

  if [[ $manager != xfwm4 ]]; then  # under a compositing manager a window never counts as covered
    xmessage -geometry 1600x900+0+0 'covering the main window' >/dev/null 2>&1 &
    cover=$!
    helpers+=("$cover")
    within 5 window_of cover_window xmessage || give_up "could not cover the main window"
    no_slider_while "$manager: covered by another window"
    kill "$cover"
    within 3 not window_of cover_window xmessage
    slider_again "$manager: uncovered"
  fi
  check "$manager: the player ran through it all" kill -0 "$player_pid"
  stop_player
done
report
