#!/usr/bin/env bash
# Gathers the native texts to translate into po/tunelark.pot and merges it into each po/LANG.po, whose
# new or changed entries then need a translator.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
mapfile -t sources < <(grep -rlE 'localized\(|catalogued\(' src --include='*.cpp' | sort)
xgettext --keyword=localized --keyword=catalogued --from-code=UTF-8 --language=C++ --package-name=tunelark \
  --msgid-bugs-address= -o po/tunelark.pot "${sources[@]}" 2>/dev/null
for po in po/*.po; do msgmerge --quiet --update --backup=none "$po" po/tunelark.pot; done
