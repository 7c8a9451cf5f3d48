#!/usr/bin/env bash
# The desktop install: cmake --install into a fresh prefix passes the desktop validators, both installed
# programs keep their command-line manners, and the installed player finds its page under the prefix;
# then the Debian package from cpack is installed with apt-get, its player starts, and it is removed.
# Needs root or sudo; a tunelark package installed before is left installed (now this build's).
# Usage: test_install.sh BUILD_DIR   (inside tests/support/with-session.sh)
suite=install
. "$(dirname "$0")/lib/player.sh"
prefix=$work/prefix
quietly() { "$@" >"$work/said" 2>&1 || { cat "$work/said"; return 1; }; } # shows what a validator said
quietly cmake --install "$build" --prefix "$prefix" || give_up "cmake --install"
desktop=$prefix/share/applications/org.tunelark.Tunelark.desktop
check "desktop-file-validate passes" quietly desktop-file-validate "$desktop"
check "the entry opens MP3 files with the player" eval 'grep -qx "MimeType=audio/mpeg;" "$desktop" &&
  grep -qx "Exec=tunelark %F" "$desktop"'
check "appstreamcli validate passes" quietly appstreamcli validate --no-net "$prefix/share/metainfo/org.tunelark.Tunelark.metainfo.xml"
check "the icon is installed" test -s "$prefix/share/icons/hicolor/scalable/apps/org.tunelark.Tunelark.svg"
# The screenshot the AppStream data names: installed, of the size it states, small enough for a catalogue.
image=$(sed -n 's|^.*<image type="source" width="\([0-9]*\)" height="\([0-9]*\)">.*/\([^/<]*\)</image>.*$|\1x\2 \3|p' \
  "$prefix/share/metainfo/org.tunelark.Tunelark.metainfo.xml")
picture=$prefix/share/tunelark/screenshots/${image#* }
check "the screenshot ${image#* } is installed as a PNG of ${image% *} under 150 KB" eval '[[ -n $image ]] &&
  [[ $(identify -format "%m %wx%h" "$picture" 2>/dev/null) == "PNG ${image% *}" ]] && (($(stat -c %s "$picture") < 150000))'

# --help, -h and --version succeed without a display or a bus; an unknown option ends with status 2.
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")
run() {
  env -u DISPLAY -u WAYLAND_DISPLAY -u DBUS_SESSION_BUS_ADDRESS timeout 10 "$@" >"$work/o" 2>"$work/e"
  status=$?
}
for program in tunelark tunelark-lrc; do
  for option in --help -h; do
    run "$prefix/bin/$program" $option
    check "$program $option: status 0, usage on standard output only" \
      eval '((status == 0)) && grep -q "^Usage: $program " "$work/o" && test ! -s "$work/e"'
  done
  run "$prefix/bin/$program" --version
  check "$program --version: '$program $version'" eval '((status == 0)) && [[ $(<"$work/o") == "$program $version" ]]'
  run "$prefix/bin/$program" --no-such-option
  check "$program --no-such-option: status 2, one line on standard error that names it, nothing else" \
    eval '((status == 2)) && [[ $(wc -l <"$work/e") == 1 ]] && grep -q -- --no-such-option "$work/e" && test ! -s "$work/o"'
done

# The manual pages and the catalogues: the installed programs find theirs under the prefix.
for program in tunelark tunelark-lrc; do
  check "man $program is installed and reads" eval 'man -l "$prefix/share/man/man1/$program.1" 2>/dev/null |
    grep -q "^NAME" && ! groff -man -ww -z "$prefix/share/man/man1/$program.1" 2>&1 | grep -q .'
done
for language in zh_CN zh_TW ja; do
  check "the $language catalogue is installed" test -s "$prefix/share/locale/$language/LC_MESSAGES/tunelark.mo"
done
run env LANGUAGE=ja "$prefix/bin/tunelark" --help
check "tunelark --help in Japanese from the prefix" eval '((status == 0)) && grep -q "^使い方: tunelark " "$work/o"'
run env LANGUAGE=zh_TW LANG=C.UTF-8 "$prefix/bin/tunelark-lrc" --help
check "tunelark-lrc --help in Traditional Chinese from the prefix" eval '((status == 0)) && grep -q "^用法：tunelark-lrc " "$work/o"'
run env LC_ALL=C LANGUAGE=ja "$prefix/bin/tunelark" --help
check "LC_ALL=C keeps the English help" grep -q "^Usage: tunelark " "$work/o"

cd / || exit 1
exe=$prefix/bin/tunelark
start_to_page && pass "the installed player shows its page from the prefix"
stop_player

# --- The Debian package.
apt=(apt-get -y -q -o DPkg::Lock::Timeout=120 --no-install-recommends)
((EUID == 0)) || apt=(sudo "${apt[@]}")
installed() { dpkg-query -W -f='${Status}' tunelark 2>/dev/null | grep -q 'install ok installed'; }
installed && ours=no || ours=yes
trap 'cleanup; [[ $ours == yes ]] && installed && "${apt[@]}" remove tunelark >/dev/null 2>&1' EXIT
quietly cpack --config "$build/CPackConfig.cmake" -G DEB -B "$work/package" || give_up "cpack"
deb=$(ls "$work"/package/tunelark_*.deb) || give_up "cpack made no tunelark_*.deb"
depends=", $(dpkg-deb -f "$deb" Depends),"
for needed in libgtk-3-0 libwebkit2gtk-4.1-0 libgstreamer1.0-0 libpulse0 libsqlite3-0 gstreamer1.0-plugins-base \
  gstreamer1.0-plugins-good gstreamer1.0-pulseaudio; do
  check "the package depends on $needed" eval '[[ $depends =~ ,\ $needed[\ ,] ]]'
done
contents=$(dpkg-deb -c "$deb")
for file in share/man/man1/tunelark.1 share/man/man1/tunelark-lrc.1 share/locale/zh_CN/LC_MESSAGES/tunelark.mo \
  share/locale/zh_TW/LC_MESSAGES/tunelark.mo share/locale/ja/LC_MESSAGES/tunelark.mo share/tunelark/www/lang/ja.json; do
  check "the package holds /usr/$file" grep -q " \./usr/$file\$" <<<"$contents"
done
DEBIAN_FRONTEND=noninteractive quietly "${apt[@]}" install "$deb" || give_up "apt-get install"
check "apt-get installed it on the PATH" eval 'installed && [[ $(command -v tunelark) == /usr/bin/tunelark ]]'
exe=/usr/bin/tunelark
start_to_page && pass "the packaged player shows its page"
stop_player
if [[ $ours == yes ]]; then
  check "apt-get remove takes the program away" eval 'quietly "${apt[@]}" remove tunelark && test ! -e "$exe"'
fi
report
