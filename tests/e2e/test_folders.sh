#!/usr/bin/env bash
# Folders: `tunelark DIR` and a folder dropped on the main window add every audio and lyric file inside,
# recursively, in URL order; a loop of symbolic links and an unreadable folder are each skipped with one
# console line.
# Usage: test_folders.sh BUILD_DIR   (inside tests/support/with-session.sh)
suite=folders
. "$(dirname "$0")/lib/player.sh"
# Root reads any folder through two capabilities; without them it meets the permissions as any user does.
if ((EUID == 0)); then
  launcher=(setpriv --bounding-set=-dac_override,-dac_read_search --inh-caps=-dac_override,-dac_read_search)
  "${launcher[@]}" true || give_up "running as root and setpriv cannot drop the read override"
fi
playlist_since() { calls_since "$1" | grep '^setPlayList(' | tail -1; }
lines_of() { grep -cxF -- "$1" "$out"; }

lib=$work/library
make_song "$lib/B Side" two 60
make_song "$lib/A Side" one 60
make_song "$lib/locked" hidden 5
chmod 000 "$lib/locked"
ln -s .. "$lib/A Side/back"
start_to_page "$lib"
check "the first audio file of the folder in URL order plays" \
  within 20 said_since 0 "setPlayingFilePath(\"$(url_of "$lib/A Side/one.mp3")\");"
check "the page got the tracks in URL order and their lyric files" \
  eval 'playlist_since 0 | grep -q "^setPlayList(\".*A%20Side/one.mp3.*B%20Side/two.mp3.*\",\".*one.lrc.*two.lrc"'
check "one console line for the loop of symbolic links" \
  test "$(lines_of "Skipped a loop of symbolic links: $lib/A Side/back")" == 1
check "one console line for the unreadable folder" \
  test "$(lines_of "Skipped an unreadable folder: $lib/locked (Permission denied)")" == 1
check "nothing of the unreadable folder or through the loop is listed" \
  not eval 'playlist_since 0 | grep -q -e hidden -e back/'

# A folder and a text file dragged from another program: the folder's tracks join the list; the playing
# track and the page stay (a drop the page took would load the file in its place).
make_song "$work/dropped/CD 2" three 5
echo 'not audio' >"$work/notes.txt"
mark=$(log_mark)
drag_to_main "$work/dropped" "$work/notes.txt"
check "the dropped folder's track and lyrics reach the page" \
  within 30 eval 'playlist_since "$mark" | grep -q "^setPlayList(\".*dropped/CD%202/three.mp3.*\",\".*three.lrc"'
check "the drag source saw the drop end" within 5 grep -q 'drag ended' "$work/drag.out"
check "the text file is left out" not eval 'playlist_since "$mark" | grep -q notes.txt'
check "the drop changes neither the track nor the page" not eval \
  'calls_since "$mark" | grep -q "^setPlayingFilePath(\".*three.mp3\");" || (($(grep -c oncontextmenu "$err") != 1))'

check "a second launch with a folder ends with status 0" eval 'timeout 20 "${launcher[@]}" "$exe" "$lib/B Side" >/dev/null 2>&1'
check "the running player took the folder and plays its track" \
  within 10 said_since "$mark" "setPlayingFilePath(\"$(url_of "$lib/B Side/two.mp3")\");"
chmod 700 "$lib/locked"
report
