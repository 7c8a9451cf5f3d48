#!/usr/bin/env bash
# Installs the Debian packages Tunelark builds, runs and tests with. Idempotent and quiet.
set -euo pipefail
BUILD_PKGS=(build-essential cmake pkg-config libgtk-3-dev libwebkit2gtk-4.1-dev libgstreamer1.0-dev
  libgstreamer-plugins-base1.0-dev gstreamer1.0-plugins-good gstreamer1.0-plugins-base
  gstreamer1.0-pulseaudio gstreamer1.0-tools fonts-wqy-zenhei gettext libpulse-dev libsqlite3-dev nlohmann-json3-dev)
TEST_PKGS=(googletest libgtest-dev libgmock-dev xvfb xauth pulseaudio pulseaudio-utils xdotool lame sox imagemagick
  x11-utils dbus dbus-x11 ccache python3 python3-numpy webkit2gtk-driver
  clang libclang-rt-14-dev)
# The end-to-end tests read the texts of the program's windows by OCR, in English, Chinese and Japanese.
TEST_PKGS+=(tesseract-ocr tesseract-ocr-eng tesseract-ocr-chi-sim tesseract-ocr-jpn)
# Desktop integration: the media-player interface (playerctl on a private bus), the desktop entry and
# AppStream validators, the Debian package (dpkg-dev's dpkg-shlibdeps), and a Wayland compositor with XWayland.
TEST_PKGS+=(playerctl desktop-file-utils appstream dpkg-dev weston xwayland libx11-dev)
# Window tests also run under real window managers: openbox without a compositor, xfwm4 with one.
TEST_PKGS+=(openbox xfwm4)
want=("${BUILD_PKGS[@]}")
[[ ${1:-} == --test ]] && want+=("${TEST_PKGS[@]}")
missing=()
for p in "${want[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
((${#missing[@]} == 0)) && exit 0
SUDO=; ((EUID != 0)) && SUDO=sudo
export DEBIAN_FRONTEND=noninteractive
if ! { $SUDO apt-get update -qq && $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"; } >/tmp/tunelark-apt.log 2>&1; then
  echo "tunelark: could not install Debian packages: ${missing[*]} (see /tmp/tunelark-apt.log)" >&2
  exit 1
fi
