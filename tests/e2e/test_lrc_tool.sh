#!/usr/bin/env bash
# Runs the lyric checker as a user would: JSON and text results on standard output only, the engine's
# console line on standard error, the exit status of each failure, the encoding list and detection.
# Usage: test_lrc_tool.sh BUILD_DIR
set -uo pipefail
build=${1:?usage: $0 BUILD_DIR}
tool=$build/tunelark-lrc
work=$(mktemp -d /tmp/tunelark-e2e-lrc.XXXXXX)
trap 'rm -rf "$work"' EXIT
failures=0

fail() { echo "FAIL: $*"; failures=$((failures + 1)); }
pass() { echo "ok: $*"; }
# Runs the tool with a neutral locale; leaves stdout, stderr and the status in $work/out, $work/err, $status.
lrc() {
  env -u LANGUAGE -u LC_ALL -u LC_MESSAGES LANG=C.UTF-8 "$tool" "$@" >"$work/out" 2>"$work/err"
  status=$?
}
expect_status() {
  local want=$1 what=$2
  if [[ $status == "$want" ]]; then pass "$what: status $want"; else fail "$what: status $status, wanted $want"; fi
}
expect_out() {
  local want=$1 what=$2
  if [[ $(cat "$work/out") == "$want" ]]; then pass "$what"; else fail "$what: stdout was '$(cat "$work/out")'"; fi
}
expect_err_line() {
  local want=$1 what=$2
  if grep -qxF -- "$want" "$work/err"; then pass "$what"; else fail "$what: stderr was '$(cat "$work/err")'"; fi
}

[[ -x $tool ]] || { echo "FAIL: no executable $tool"; exit 1; }

printf '[00:10.00]A\n[00:20.00]B\n' >"$work/two.lrc"
lrc --json "$work/two.lrc" 9.99 19.99
expect_status 0 "json example"
expect_out '{"charset":"utf8","shown":"utf8","entries":[[10,"A"],[20,"B"]],"positions":[{"at":9.99,"current":0,"later":1},{"at":19.99,"current":1,"later":null}]}' \
  "json example gives the entries and the current and later lines"
expect_err_line "utf8" "the chosen encoding is logged on stderr, not stdout"

lrc "$work/two.lrc" 19.99
expect_out "$(printf 'charset: utf8\nshown: utf8\nentries: 2\n0\t10\tA\n1\t20\tB\nat 19.99: current 1, later none')" \
  "text result lists entries and positions"

# GB18030 text ("中文" after a tag) read with the Simplified Chinese default, by option and from the locale.
printf '[00:01.50]\xd6\xd0\xce\xc4\r\n' >"$work/gb.lrc"
lrc --language zh-Hans-CN --json "$work/gb.lrc"
expect_out '{"charset":"GB18030","shown":"GB18030","entries":[[1.5,"中文"]],"positions":[]}' \
  "Simplified Chinese language decodes GB18030 by default"
env -u LC_ALL -u LC_MESSAGES LANGUAGE=zh_CN.UTF-8:en LANG=C.UTF-8 "$tool" --json "$work/gb.lrc" >"$work/out" 2>"$work/err"
expect_out '{"charset":"GB18030","shown":"GB18030","entries":[[1.5,"中文"]],"positions":[]}' \
  "language from LANGUAGE picks GB18030"
lrc --charset iso_8859_1 --language zh-Hans-CN --json "$work/gb.lrc"
expect_out '{"charset":"iso_8859_1","shown":"iso_8859_1","entries":[[1.5,"ÖÐÎÄ"]],"positions":[]}' \
  "a stored encoding wins over the language"

# Failures: undecodable, unknown stored name, missing, unreadable, bad usage.
lrc "$work/gb.lrc"
expect_status 2 "GB18030 bytes as utf8"
expect_err_line "Can not decode $work/gb.lrc in charset utf8" "decode failure names the file and encoding"
[[ -s $work/out ]] && fail "nothing on stdout after a decode failure" || pass "stdout empty after a decode failure"
lrc --charset gbk "$work/gb.lrc"
expect_status 2 "unknown stored name falls back to utf8"
expect_err_line "Can not decode $work/gb.lrc in charset gbk" "the message names the stored text"
expect_err_line "utf8" "the fallback case is logged"

lrc "$work/missing.lrc"
expect_status 1 "missing file"
grep -q "missing.lrc" "$work/err" && pass "missing file is named" || fail "missing file message: $(cat "$work/err")"
lrc "$work"
expect_status 1 "a folder is unreadable"

lrc --frobnicate "$work/two.lrc"
expect_status 2 "unknown option"
[[ $(wc -l <"$work/err") == 1 ]] && pass "unknown option: one line" || fail "unknown option: $(cat "$work/err")"
lrc "$work/two.lrc" soon
expect_status 2 "seconds that are not a number"
lrc
expect_status 2 "no file"

# The list and detection.
lrc --list
expect_status 0 "list"
names=$(cat "$work/out")
[[ $(wc -l <<<"$names") == 46 ]] && pass "46 names" || fail "list has $(wc -l <<<"$names") lines"
[[ $(head -3 <<<"$names" | tr '\n' ' ') == "utf8 utf16 utf32 " ]] && pass "list begins in order" || fail "list begins: $(head -3 <<<"$names")"
[[ $(tail -2 <<<"$names" | tr '\n' ' ') == "KOI8_R KOI8_U " ]] && pass "list ends in order" || fail "list ends: $(tail -2 <<<"$names")"
lrc --list --json
[[ $(cat "$work/out") == '["utf8","utf16","utf32",'*'"KOI8_R","KOI8_U"]' ]] && pass "list as JSON" || fail "list as JSON: $(cat "$work/out")"

lrc --detect "$work/gb.lrc"
detected=" $(tr '\n' ' ' <"$work/out")"
for name in GB2312 GBK GB18030 EUC_CN iso_8859_1; do
  [[ $detected == *" $name "* ]] && pass "detect finds $name" || fail "detect misses $name: $detected"
done
for name in utf8 ISO_2022_CN ISO_2022_JP iso_8859_3; do
  [[ $detected != *" $name "* ]] && pass "detect rejects $name" || fail "detect lists $name: $detected"
done
[[ $(grep -xF -f "$work/out" <<<"$names" | tr '\n' ' ') == "$(tr '\n' ' ' <"$work/out")" ]] &&
  pass "detected names keep catalogue order" || fail "detected names out of order: $detected"
lrc --detect "$work/missing.lrc"
expect_status 1 "detect on a missing file"

if ((failures)); then
  echo "test_lrc_tool: $failures failure(s)"
  exit 1
fi
echo "test_lrc_tool: all passed"
