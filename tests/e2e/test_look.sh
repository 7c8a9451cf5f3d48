#!/usr/bin/env bash
# One look with the desktop: the header bar and the page follow the settings portal's colour scheme
# (a fake portal on the private bus), switching live both ways and kept by a page that is reloaded; with
# no answer from a portal the toolkit's theme decides.
# Usage: test_look.sh BUILD_DIR   (inside tests/support/with-session.sh, which gives a private bus)
suite=look
. "$(dirname "$0")/lib/player.sh"
make_song "$work/music" song 120
"$build/tests/tl-prepare-store" "$work/data/Tunelark/Tunelark.sqlite" "$work/music/song."{mp3,lrc} >/dev/null ||
  give_up "could not prepare the store"

portal_pid=
start_portal() { # [COLOR-SCHEME]
  "$build/tests/tl-fake-portal" "$@" >"$work/portal.out" 2>&1 &
  portal_pid=$!
  helpers+=("$portal_pid")
  within 5 grep -qxs ready "$work/portal.out" || give_up "the fake portal did not start: $(cat "$work/portal.out")"
}
stop_portal() { kill "$portal_pid" 2>/dev/null; wait "$portal_pid" 2>/dev/null; }
set_scheme() {
  gdbus call --session --dest org.freedesktop.portal.Desktop --object-path /org/freedesktop/portal/desktop \
    --method org.tunelark.test.Appearance.Set "$1" >/dev/null || fail "could not set the portal's scheme to $1"
}

# Grey levels (0 to 255) of three places of the main window, from a fresh screenshot in $work/look.png:
# the header bar left of its title, the page's top bar, and the empty play list below the row.
HEADER=(300 12) TOP_BAR=(500 70) LIST=(500 400)
grey_at() { convert "$work/look.png" -crop "1x1+$((main_x + $1))+$((main_y + $2))" -colorspace gray -format '%[fx:int(255*u)]' info:; }
greys() { shot "$work/look.png" && echo "$(grey_at "${HEADER[@]}") $(grey_at "${TOP_BAR[@]}") $(grey_at "${LIST[@]}")"; }
# Dark: the header bar in the theme's dark variant, the page as it was made. Light: all three light.
looks_dark() { read -r h t l < <(greys) && ((h < 90 && t < 40 && l < 40)); }
looks_light() { read -r h t l < <(greys) && ((h > 180 && t > 220 && l > 220)); }
keep_shot() { cp "$work/look.png" "$artifacts/look_$1.png"; echo "  greys of header, top bar, list: $(greys)"; }

start_portal 2
start_to_page
check "a light desktop: light header bar and light page" within 10 looks_light
keep_shot light
set_scheme 1
check "switched to dark while running: both dark" within 5 looks_dark
keep_shot dark
set_scheme 2
check "and back to light" within 5 looks_light

shown=$(grep -c '^showWindow$' "$out")
kill -KILL "$(web_process)"
within 10 eval '(($(grep -c "^showWindow$" "$out") > shown))' || fail "the page was not reloaded"
check "the reloaded page is light again" within 10 looks_light
set_scheme 0
check "the portal without a preference: the page's own dark look" within 5 looks_dark
stop_player
stop_portal

# No portal: GTK's settings decide, read at start. "Lark", a theme of the user's, is Adwaita under
# another name, with its dark variant.
theme=$XDG_DATA_HOME/themes/Lark/gtk-3.0
mkdir -p "$theme" "$work/config/gtk-3.0"
echo '@import url("resource:///org/gtk/libgtk/theme/Adwaita/gtk-contained.css");' >"$theme/gtk.css"
echo '@import url("resource:///org/gtk/libgtk/theme/Adwaita/gtk-contained-dark.css");' >"$theme/gtk-dark.css"
launcher=(env XDG_CONFIG_HOME="$work/config")
printf '[Settings]\ngtk-theme-name=Lark\n' >"$work/config/gtk-3.0/settings.ini"
start_to_page
check "no portal, a light theme chosen: light" within 10 looks_light
stop_player
printf '[Settings]\ngtk-theme-name=Lark\ngtk-application-prefer-dark-theme=true\n' >"$work/config/gtk-3.0/settings.ini"
start_to_page
check "no portal, the user prefers dark: dark" within 10 looks_dark
report
