#!/usr/bin/env bash
# The lyric checker as a user runs it: results on stdout only, the engine's console line on stderr, the exit
# status of each failure, the encoding list and detection. Usage: test_lrc_tool.sh BUILD_DIR
set -uo pipefail
tool=${1:?usage: $0 BUILD_DIR}/tunelark-lrc
work=$(mktemp -d /tmp/tunelark-e2e-lrc.XXXXXX)
trap 'rm -rf "$work"' EXIT
failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }
[[ -x $tool ]] || { echo "FAIL: no executable $tool"; exit 1; }
# check STATUS STDOUT ARGS...: in a neutral locale (LANGUAGE from $language); STDOUT "-" is not compared.
check() {
  local status=$1 out=$2; shift 2
  env -u LC_ALL -u LC_MESSAGES LANGUAGE="${language:-}" LANG=C.UTF-8 "$tool" "$@" >"$work/out" 2>"$work/err"
  local got=$?
  if [[ $got == "$status" && ($out == - || $(cat "$work/out") == "$out") ]]; then echo "ok: $*"; else
    fail "$*: status $got (wanted $status), stdout '$(cat "$work/out")', stderr '$(cat "$work/err")'"; fi
}
# has out|err LINE...: each line is in the output.
has() { local file=$work/$1; shift; for line; do grep -qxF -- "$line" "$file" || fail "$file lacks '$line'"; done; }

printf '[00:10.00]A\n[00:20.00]B\n' >"$work/two.lrc"
check 0 '{"charset":"utf8","shown":"utf8","entries":[[10,"A"],[20,"B"]],"positions":[{"at":9.99,"current":0,"later":1},{"at":19.99,"current":1,"later":null}]}' \
  --json "$work/two.lrc" 9.99 19.99
has err utf8
check 0 "$(printf 'charset: utf8\nshown: utf8\nentries: 2\n0\t10\tA\n1\t20\tB\nat 19.99: current 1, later none')" "$work/two.lrc" 19.99
printf '[00:01.50]\xd6\xd0\xce\xc4\r\n' >"$work/gb.lrc"  # GB18030 for "中文"
gb='{"charset":"GB18030","shown":"GB18030","entries":[[1.5,"中文"]],"positions":[]}'
check 0 "$gb" --language zh-Hans-CN --json "$work/gb.lrc"
language=zh_CN.UTF-8:en check 0 "$gb" --json "$work/gb.lrc"
check 0 '{"charset":"iso_8859_1","shown":"iso_8859_1","entries":[[1.5,"ÖÐÎÄ"]],"positions":[]}' \
  --charset iso_8859_1 --language zh-Hans-CN --json "$work/gb.lrc"
check 2 '' "$work/gb.lrc"
has err "Can not decode $work/gb.lrc in charset utf8"
check 2 '' --charset gbk "$work/gb.lrc"
has err "Can not decode $work/gb.lrc in charset gbk" utf8
check 1 '' "$work/missing.lrc"
grep -q missing.lrc "$work/err" || fail "the missing file is not named"
check 1 '' "$work"
check 2 '' --frobnicate "$work/two.lrc"
[[ $(wc -l <"$work/err") == 1 ]] || fail "an unknown option takes one line: $(cat "$work/err")"
check 2 '' "$work/two.lrc" soon
check 2 ''
check 0 - --list
names=$(cat "$work/out")
[[ $(wc -l <<<"$names") == 46 && $(head -3 <<<"$names" | tr '\n' ' ') == "utf8 utf16 utf32 " && $(tail -2 <<<"$names" | tr '\n' ' ') == "KOI8_R KOI8_U " ]] ||
  fail "--list: $names"
check 0 "[\"$(sed -z 's/\n$//; s/\n/","/g' <<<"$names")\"]" --list --json
check 0 - --detect "$work/gb.lrc"
has out GB2312 GBK GB18030 EUC_CN iso_8859_1
grep -xF -e utf8 -e ISO_2022_CN -e ISO_2022_JP -e iso_8859_3 "$work/out" && fail "detected an encoding that cannot decode"
[[ $(grep -xF -f "$work/out" <<<"$names") == $(cat "$work/out") ]] || fail "detected names out of catalogue order"
check 1 '' --detect "$work/missing.lrc"
((failures == 0)) || { echo "test_lrc_tool: $failures failure(s)"; exit 1; }
echo "test_lrc_tool: all passed"
