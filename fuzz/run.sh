#!/usr/bin/env bash
# Usage: fuzz/run.sh BUILD_DIR [SECONDS_PER_TARGET] [TARGET...]. Replays fuzz/regressions/<name>/, then fuzzes
# from fuzz/corpus/<name>/; a failing input is kept in $TUNELARK_FUZZ_ARTIFACTS.
set -uo pipefail
shopt -s nullglob
root=$(cd "$(dirname "$0")/.." && pwd) build=${1:?usage: fuzz/run.sh BUILD_DIR [SECONDS] [TARGET...]} seconds=${2:-45}
artifacts=${TUNELARK_FUZZ_ARTIFACTS:-/tmp/tunelark-fuzz-artifacts} work=$(mktemp -d /tmp/tunelark-fuzz.XXXXXX) failed=()
trap 'rm -rf "$work"' EXIT
shift $(($# < 2 ? $# : 2))
names=("$@")
((${#names[@]})) || for bin in "$build"/fuzz/fuzz_*; do [[ -x $bin ]] && names+=("${bin##*/fuzz_}"); done
((${#names[@]})) || { echo "fuzz: no targets in $build/fuzz (configure with -DTUNELARK_FUZZ=ON)" >&2; exit 1; }
mkdir -p "$artifacts"
for name in "${names[@]}"; do
  bin=$build/fuzz/fuzz_$name log=$work/$name.log regressions=("$root/fuzz/regressions/$name"/*)
  mkdir -p "$work/$name"
  if ((${#regressions[@]})) && ! "$bin" "${regressions[@]}" >"$log" 2>&1; then
    echo "fuzz $name: a regression input fails again:"; tail -n 30 "$log"; failed+=("$name")
  elif "$bin" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
    -artifact_prefix="$artifacts/$name-" "$work/$name" "$root/fuzz/corpus/$name" >"$log" 2>&1; then
    echo "fuzz $name: ${#regressions[@]} regression input(s) pass, then $(grep -oP 'executed_units: *\K\d+' "$log") runs"
  else
    echo "fuzz $name: FAILED; the input is in $artifacts:"; grep -E 'ERROR|broken|SUMMARY|Test unit' "$log" | head
    failed+=("$name")
  fi
done
((${#failed[@]} == 0)) || { echo "fuzz: failed targets: ${failed[*]}" >&2; exit 1; }
