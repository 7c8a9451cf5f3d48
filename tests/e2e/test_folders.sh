#!/usr/bin/env bash
# Folders: `tunelark DIR` and a folder dropped on the main window add every audio and lyric file inside,
# recursively, in URL order; a loop of symbolic links and an unreadable folder are each skipped with one
# console line; a dropped folder of ten thousand tracks reaches the page.
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

# Ten thousand empty tracks (adding records only paths and bookmarks) dropped from another program, made
# in memory where the system offers it: on a disk that alone can take many seconds.
shm=$(mktemp -d /dev/shm/tl-folders.XXXXXX 2>/dev/null) && trap 'rm -rf "$shm"; cleanup' EXIT
big=${shm:-$work}/big
python3 - "$big" <<'PY'
import os, sys
for album in range(100):
    folder = os.path.join(sys.argv[1], "Album %02d" % album)
    os.makedirs(folder)
    for track in range(100):
        open(os.path.join(folder, "Track %02d.mp3" % track), "w").close()
PY
mark=$(log_mark)
drag_to_main "$big"
check "the dropped folder's ten thousand tracks reach the page" \
  within 30 eval '(($(playlist_since "$mark" | grep -o "Track%20[0-9]*\.mp3" | wc -l) == 10000))'
check "the walk counted them" console_has "Walked folders: 10000 audio and lyric files"
check "the first and last of them in URL order" eval 'playlist_since "$mark" |
  grep -q "Album%2000/Track%2000.mp3.*Album%2099/Track%2099.mp3"'
check "the drop leaves the playing track alone" not said_since "$mark" "setPlayingFilePath(\"$(url_of "$big/Album 00/Track 00.mp3")\");"

check "a second launch with a folder ends with status 0" eval 'timeout 20 "${launcher[@]}" "$exe" "$lib/B Side" >/dev/null 2>&1'
check "the running player took the folder and plays its track" \
  within 10 said_since "$mark" "setPlayingFilePath(\"$(url_of "$lib/B Side/two.mp3")\");"
chmod 700 "$lib/locked"
report
