#!/usr/bin/env bash
# Takes the screenshot that software centres show: the main window with a play list, a track playing,
# in the desktop's default look, written small (PNG of 96 colours) to resources/desktop/main-window.png.
# Usage: tests/support/with-session.sh scripts/screenshot.sh BUILD_DIR
suite=screenshot
. "$(dirname "$0")/../tests/e2e/lib/player.sh"
target=$(cd "$(dirname "$0")/.." && pwd)/resources/desktop/main-window.png
# A folder named as a user's would be, rather than the run's temporary one.
music=/tmp/Music
[[ -e $music ]] && give_up "$music is in the way"
trap 'rm -rf "$music"; cleanup' EXIT
songs=("Harbour Lights" "Paper Kites" "Morning Train" "夜空の歌" "Slow River" "晴天" "Northern Road" "Blue Hour")
for i in "${!songs[@]}"; do make_song "$music" "${songs[$i]}" $((20 + i * 7)); done
rm "$music/Paper Kites.lrc" "$music/Slow River.lrc"  # not every track has its lyrics
"$build/tests/tl-prepare-store" "$work/data/Tunelark/Tunelark.sqlite" "$music/"* >/dev/null ||
  give_up "could not prepare the store"
start_to_page
play_first_row || give_up "the first row did not play"
within 5 position_reached 0 3 || give_up "the track did not reach 3 s"
shot "$work/window.png" "$(area_of "$main")" || give_up "no screenshot"
convert "$work/window.png" -strip -colors 96 "PNG8:$target" || give_up "could not write $target"
echo "wrote $target: $(identify -format '%wx%h' "$target"), $(stat -c %s "$target") bytes"
report
