#!/usr/bin/env bash
# Every text the sources mark for translation has a finished translation in every po/LANG.po, and each
# catalogue compiles; run by ctest.
set -uo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
cd "$root"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mapfile -t sources < <(grep -rlE 'localized\(|catalogued\(' src --include='*.cpp' | sort)
xgettext --keyword=localized --keyword=catalogued --from-code=UTF-8 --language=C++ -o "$work/now.pot" \
  "${sources[@]}" 2>/dev/null || { echo "xgettext failed"; exit 1; }
failed=0
for po in po/*.po; do
  # msgcmp names each text of the sources without a translation in $po (missing, empty or fuzzy).
  if ! msgcmp "$po" "$work/now.pot" 2>"$work/cmp"; then
    echo "FAIL $po: texts without a translation (run scripts/update-translations.sh, then translate):"
    sed 's/^/  /' "$work/cmp" | head -20
    failed=$((failed + 1))
  elif ! msgfmt --check -o /dev/null "$po" 2>"$work/fmt"; then
    echo "FAIL $po: $(head -3 "$work/fmt")"
    failed=$((failed + 1))
  else
    echo "ok   $po"
  fi
done
((failed == 0))
