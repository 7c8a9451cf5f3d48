#!/usr/bin/env bash
# The player started with LANGUAGE=zh_CN and with LANGUAGE=ja, as any desktop program is: the page, the
# header bar's menu and the preferences window speak that language, read off the screen by OCR and from
# the window title; the screenshots stay in the artifacts.
# Usage: test_language.sh BUILD_DIR   (inside tests/support/with-session.sh)
suite=language
. "$(dirname "$0")/lib/player.sh"
make_song "$work/music" "夜の歌 Night Song" 30
"$build/tests/tl-prepare-store" "$work/data/Tunelark/Tunelark.sqlite" "$work/music/夜の歌 Night Song."{mp3,lrc} \
  >/dev/null || give_up "could not prepare the store"
for model in chi_sim jpn; do
  tesseract --list-langs 2>/dev/null | grep -qx $model || give_up "tesseract has no $model (scripts/install-deps.sh --test)"
done

# Places in the 1200x600 main window: the play list's heading, the play-mode button's text, the menu button.
HEADING=(300x32 10 108) MODE_TEXT=(110x28 950 544) MENU_BUTTON=(1050 21)
# ocr LANG WxH X Y [dark]: the text in that part of the main window, without the spaces OCR puts between
# CJK characters. Light text on the dark page is turned dark on light first, unless "dark" is given.
ocr() {
  local shot=$work/ocr-area.png negate=-negate
  [[ ${5:-} == dark ]] && negate=
  shot "$shot" "$2+$((main_x + $3))+$((main_y + $4))" || return 1
  convert "$shot" -colorspace gray $negate -resize 300% "$work/ocr-big.png" 2>/dev/null &&
    tesseract "$work/ocr-big.png" - -l "$1" --psm 6 2>/dev/null | tr -d ' \n'
}
reads() { [[ $(ocr "${@:2}") == *"$1"* ]]; } # reads TEXT LANG AREA...: that part of the window shows TEXT

# language model heading mode menu-entry preferences-title
for case in "zh_CN chi_sim 播放列表 列表循环 首选项 首选项" "ja jpn プレイリスト 全曲リピート 設定 設定"; do
  read -r language model heading mode entry prefs_title <<<"$case"
  launcher=(env LANGUAGE="$language")
  start_to_page
  check "$language: the page's heading reads $heading" within 10 reads "$heading" "$model" "${HEADING[@]}"
  check "$language: the play mode reads $mode" within 5 reads "$mode" "$model" "${MODE_TEXT[@]}"
  shot "$artifacts/language_${language}_main.png"

  click_main "${MENU_BUTTON[@]}"
  # The menu opens below its button, towards the window's left; dark text on a light ground.
  check "$language: the menu has $entry" within 5 reads "$entry" "$model" 240x200 850 40 dark
  shot "$artifacts/language_${language}_menu.png"
  xdotool key Escape

  xdotool key ctrl+comma
  check "$language: the preferences window is titled $prefs_title" within 5 window_of prefs "$prefs_title"
  [[ -n ${prefs:-} ]] && shot "$artifacts/language_${language}_preferences.png" "$(area_of "$prefs")"
  stop_player
done
report
