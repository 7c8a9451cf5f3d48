#!/usr/bin/env bash
# Installs the build into a fresh prefix with cmake --install: both programs, the resources, the desktop
# entry, the icon and the AppStream data; the desktop files pass their validators; the installed player
# finds its page under the prefix and shows its main window.
# Usage: test_install.sh BUILD_DIR   (inside the session of tests/support/with-session.sh)
set -uo pipefail
build=${1:?usage: $0 BUILD_DIR}
build=$(cd "$build" && pwd)
work=$(mktemp -d /tmp/tunelark-e2e-install.XXXXXX)
prefix=$work/prefix
export XDG_DATA_HOME=$work/data NO_AT_BRIDGE=1 G_MESSAGES_DEBUG=Tunelark
pid=
failures=0

cleanup() {
  [[ -n $pid ]] && kill "$pid" 2>/dev/null && wait "$pid" 2>/dev/null
  rm -rf "$work"
}
trap cleanup EXIT

fail() { echo "FAIL: $*"; failures=$((failures + 1)); }
pass() { echo "ok: $*"; }
check() {
  local what=$1
  shift
  if "$@"; then pass "$what"; else fail "$what"; fi
}
within() {
  local seconds=$1
  shift
  for _ in $(seq $((seconds * 10))); do "$@" && return 0; sleep 0.1; done
  return 1
}
# Runs a validator, showing what it said only when it fails.
quietly() { "$@" >"$work/said" 2>&1 || { cat "$work/said"; return 1; }; }
main_window_shown() { xdotool search --onlyvisible --name '^Tunelark$' 2>/dev/null | grep -q .; }

mkdir -p "$work/data"
if ! cmake --install "$build" --prefix "$prefix" >"$work/install.log" 2>&1; then
  echo "FAIL: cmake --install"; cat "$work/install.log"; exit 1
fi
for file in bin/tunelark bin/tunelark-lrc share/tunelark/index.html share/tunelark/www/index.html \
  share/tunelark/tunelark.appinfo share/applications/org.tunelark.Tunelark.desktop \
  share/icons/hicolor/scalable/apps/org.tunelark.Tunelark.svg share/metainfo/org.tunelark.Tunelark.metainfo.xml; do
  check "installed $file" test -s "$prefix/$file"
done
check "the programs are executable" test -x "$prefix/bin/tunelark" -a -x "$prefix/bin/tunelark-lrc"
check "the desktop files are not copied into the page's resources" test ! -e "$prefix/share/tunelark/desktop"

desktop=$prefix/share/applications/org.tunelark.Tunelark.desktop
check "desktop-file-validate passes" quietly desktop-file-validate "$desktop"
check "the entry opens MP3 files" grep -qx 'MimeType=audio/mpeg;' "$desktop"
check "the entry is a music player" grep -qx 'Categories=AudioVideo;Audio;Player;' "$desktop"
check "the entry passes files to the program" grep -qx 'Exec=tunelark %F' "$desktop"
metainfo=$prefix/share/metainfo/org.tunelark.Tunelark.metainfo.xml
check "appstreamcli validate passes" quietly appstreamcli validate --no-net "$metainfo"
check "the AppStream data has a screenshot's caption" grep -q '<caption>.\+</caption>' "$metainfo"
check "the AppStream data names the installed desktop entry" \
  grep -q '<launchable type="desktop-id">org.tunelark.Tunelark.desktop</launchable>' "$metainfo"
check "the icon is an SVG drawing" python3 -c '
import sys, xml.etree.ElementTree as tree
root = tree.parse(sys.argv[1]).getroot()
sys.exit(0 if root.tag == "{http://www.w3.org/2000/svg}svg" and len(list(root.iter())) > 5 else 1)' \
  "$prefix/share/icons/hicolor/scalable/apps/org.tunelark.Tunelark.svg"

check "installed tunelark --version" bash -c "'$prefix/bin/tunelark' --version | grep -qx 'tunelark [0-9.]*'"
check "installed tunelark-lrc --version" bash -c "'$prefix/bin/tunelark-lrc' --version | grep -qx 'tunelark-lrc [0-9.]*'"

# From the prefix, not the build tree: the page is found under share/tunelark.
(cd / && exec "$prefix/bin/tunelark") >"$work/out" 2>"$work/err" &
pid=$!
check "the installed player shows its main window" within 30 main_window_shown
check "the installed player's page asked to be shown" within 10 grep -qx showWindow "$work/out"
check "its page got the play list" within 10 grep -qF 'setPlayList("[]","[]");' "$work/err"

if ((failures)); then
  echo "--- stdout"; tail -20 "$work/out"; echo "--- stderr"; grep -v 'Tunelark-DEBUG' "$work/err" | tail -20
  echo "$failures failed"
  exit 1
fi
echo "install: all checks passed"
