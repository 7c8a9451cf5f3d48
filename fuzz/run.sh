#!/usr/bin/env bash
# Runs every fuzz target of a build made with -DTUNELARK_FUZZ=ON: first the inputs that once failed
# (fuzz/regressions/<name>/), then fuzzing from the seeds (fuzz/corpus/<name>/) for a fixed time.
# Usage: fuzz/run.sh BUILD_DIR [SECONDS_PER_TARGET] [TARGET...]. New inputs go to a temporary folder;
# a failing input is kept in $TUNELARK_FUZZ_ARTIFACTS (default /tmp/tunelark-fuzz-artifacts).
set -uo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:?usage: fuzz/run.sh BUILD_DIR [SECONDS] [TARGET...]}
seconds=${2:-45}
shift $(($# < 2 ? $# : 2))
artifacts=${TUNELARK_FUZZ_ARTIFACTS:-/tmp/tunelark-fuzz-artifacts}
mkdir -p "$artifacts"
work=$(mktemp -d /tmp/tunelark-fuzz.XXXXXX)
trap 'rm -rf "$work"' EXIT

names=("$@")
if ((${#names[@]} == 0)); then
  for bin in "$build"/fuzz/fuzz_*; do [[ -x $bin ]] && names+=("$(basename "$bin" | sed 's/^fuzz_//')"); done
fi
if ((${#names[@]} == 0)); then
  echo "fuzz: no fuzz targets in $build/fuzz (configure with -DTUNELARK_FUZZ=ON)" >&2
  exit 1
fi

failed=()
for name in "${names[@]}"; do
  bin=$build/fuzz/fuzz_$name
  log=$work/$name.log
  regressions=("$root"/fuzz/regressions/"$name"/*)
  if [[ -e ${regressions[0]} ]] && ! "$bin" "${regressions[@]}" >"$log" 2>&1; then
    echo "fuzz $name: a regression input fails again:"; tail -n 30 "$log"
    failed+=("$name"); continue
  fi
  mkdir -p "$work/$name"
  dict=()
  [[ -f $root/fuzz/$name.dict ]] && dict=(-dict="$root/fuzz/$name.dict")
  "$bin" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
    -artifact_prefix="$artifacts/$name-" "${dict[@]}" "$work/$name" "$root/fuzz/corpus/$name" >"$log" 2>&1
  status=$?
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  cov=$(grep -oE 'cov: [0-9]+ ft: [0-9]+' "$log" | tail -n 1)
  if ((status != 0)); then
    echo "fuzz $name: FAILED after ${runs:-?} runs; the input is in $artifacts:"; grep -E 'ERROR|broken|SUMMARY|Test unit written' "$log" | head -n 20
    failed+=("$name")
  else
    echo "fuzz $name: ${runs:-?} runs in ${seconds} s, ${cov:-no coverage figures}, corpus $(ls "$work/$name" | wc -l) new inputs"
  fi
done
((${#failed[@]} == 0)) || { echo "fuzz: failed targets: ${failed[*]}" >&2; exit 1; }
