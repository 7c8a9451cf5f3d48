#!/usr/bin/env bash
# Builds the Debian package with cpack, installs it on this machine with apt-get as a user would, starts
# the installed player and sees its main window, then removes the package again. Needs root (or sudo).
# A tunelark package installed before the test is put back afterwards rather than removed.
# Usage: test_package.sh BUILD_DIR   (inside the session of tests/support/with-session.sh)
set -uo pipefail
build=${1:?usage: $0 BUILD_DIR}
build=$(cd "$build" && pwd)
work=$(mktemp -d /tmp/tunelark-e2e-package.XXXXXX)
export XDG_DATA_HOME=$work/data NO_AT_BRIDGE=1 G_MESSAGES_DEBUG=Tunelark DEBIAN_FRONTEND=noninteractive
SUDO=
((EUID != 0)) && SUDO=sudo
apt=($SUDO apt-get -y -q -o DPkg::Lock::Timeout=120 --no-install-recommends)
pid=
installed_by_us=no
failures=0

cleanup() {
  [[ -n $pid ]] && kill "$pid" 2>/dev/null && wait "$pid" 2>/dev/null
  [[ $installed_by_us == yes ]] && "${apt[@]}" remove tunelark >/dev/null 2>&1
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
main_window_shown() { xdotool search --onlyvisible --name '^Tunelark$' 2>/dev/null | grep -q .; }
package_installed() { dpkg-query -W -f='${Status}' tunelark 2>/dev/null | grep -q 'install ok installed'; }

mkdir -p "$work/data"
if ! cpack --config "$build/CPackConfig.cmake" -G DEB -B "$work/package" >"$work/cpack.log" 2>&1; then
  echo "FAIL: cpack"; tail -20 "$work/cpack.log"; exit 1
fi
deb=$(ls "$work"/package/tunelark_*.deb 2>/dev/null | head -1)
[[ -n $deb ]] || { echo "FAIL: cpack made no tunelark_*.deb"; ls "$work/package"; exit 1; }
pass "cpack built $(basename "$deb")"
depends=$(dpkg-deb -f "$deb" Depends)
for needed in libgtk-3-0 libwebkit2gtk-4.1-0 libgstreamer1.0-0 libpulse0 libsqlite3-0 gstreamer1.0-plugins-good \
  gstreamer1.0-plugins-base gstreamer1.0-pulseaudio; do
  check "the package depends on $needed" grep -q "\(^\|, \)$needed\( \|,\|$\)" <<<"$depends"
done
contents=$(dpkg-deb -c "$deb")
for file in ./usr/bin/tunelark ./usr/bin/tunelark-lrc ./usr/share/tunelark/www/index.html \
  ./usr/share/applications/org.tunelark.Tunelark.desktop \
  ./usr/share/icons/hicolor/scalable/apps/org.tunelark.Tunelark.svg \
  ./usr/share/metainfo/org.tunelark.Tunelark.metainfo.xml; do
  check "the package holds ${file#.}" grep -q " $file\$" <<<"$contents"
done

package_installed && before=yes || before=no
if (cd "$work/package" && "${apt[@]}" install "./$(basename "$deb")") >"$work/apt.log" 2>&1; then
  [[ $before == no ]] && installed_by_us=yes
  pass "apt-get installed the package"
else
  echo "FAIL: apt-get install"; tail -20 "$work/apt.log"; exit 1
fi
check "dpkg knows the package" package_installed
check "the installed program is on the PATH" test "$(command -v tunelark)" == /usr/bin/tunelark
check "tunelark --version from the package" bash -c "/usr/bin/tunelark --version | grep -qx 'tunelark [0-9.]*'"

(cd / && exec /usr/bin/tunelark) >"$work/out" 2>"$work/err" &
pid=$!
check "the packaged player shows its main window" within 30 main_window_shown
check "its page got the play list" within 10 grep -qF 'setPlayList("[]","[]");' "$work/err"
kill "$pid" 2>/dev/null
wait "$pid" 2>/dev/null
pid=

if [[ $installed_by_us == yes ]]; then
  if "${apt[@]}" remove tunelark >"$work/remove.log" 2>&1; then
    installed_by_us=no
    check "removing the package takes the program away" test ! -e /usr/bin/tunelark
    check "and its desktop entry" test ! -e /usr/share/applications/org.tunelark.Tunelark.desktop
  else
    fail "apt-get remove"; tail -5 "$work/remove.log"
  fi
else
  echo "note: a tunelark package was installed before the test; it is left installed (now this build's)"
fi

if ((failures)); then
  echo "--- stderr"; grep -v 'Tunelark-DEBUG' "$work/err" 2>/dev/null | tail -20
  echo "$failures failed"
  exit 1
fi
echo "package: all checks passed"
