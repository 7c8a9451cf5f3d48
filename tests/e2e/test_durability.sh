#!/usr/bin/env bash
# A play list of 1,000 files survives being killed: the player's adding and editing code (tl-store-churn)
# works one store and is killed with SIGKILL at 30 random moments; after each kill SQLite finds the file
# sound and the store holds exactly the last finished save, or the one that was being written.
# Usage: test_durability.sh BUILD_DIR   (inside tests/support/with-session.sh)
suite=durability
. "$(dirname "$0")/lib/player.sh"
churn=$build/tests/tl-store-churn store=$work/data/Tunelark/Tunelark.sqlite
[[ -x $churn ]] || give_up "no $churn"
mkdir -p "$work/files" "${store%/*}"
# 600 songs and 400 lyric files, with names a file manager may hold.
for ((i = 1; i <= 600; i++)); do
  printf 'ID3' >"$work/files/$i 歌 \"q\" \\ $i.mp3"
  ((i <= 400)) && printf '[00:01.00]x\n' >"$work/files/$i 歌 \"q\" \\ $i.lrc"
done
sound() { python3 -c 'import sqlite3, sys; print(sqlite3.connect(sys.argv[1]).execute("PRAGMA integrity_check").fetchone()[0])' "$store"; }
# The digests the store may hold: the last saved state and, when a save had begun after it, that one.
allowed() { awk '/^saved /{ d = $2; p = "" } /^saving /{ p = $2 } END { print d; if (p != "") print p }' "$1"; }

phases=() kills=0
for ((run = 1; run <= 30; run++)); do
  "$churn" "$store" "$work/files" "$run" >"$work/churn.$run" 2>&1 &
  pid=$!
  sleep "$(awk -v r="$RANDOM" 'BEGIN { printf "%.2f", 0.2 + 6 * r / 32767 }')"
  kill -0 "$pid" 2>/dev/null || { fail "run $run: the churn ended by itself: $(tail -3 "$work/churn.$run")"; continue; }
  kill -KILL "$pid"
  wait "$pid" 2>/dev/null
  kills=$((kills + 1)) phases+=("$(awk '/^saving /{ w = $3 } END { print w }' "$work/churn.$run")")
  [[ $(sound) == ok ]] || fail "run $run: integrity check: $(sound)"
  digest=$("$churn" --digest "$store")
  allowed "$work/churn.$run" | grep -qxF -- "$digest" ||
    fail "run $run: the store holds $digest, not one of: $(allowed "$work/churn.$run" | tr '\n' ' ')"
done
echo "killed $kills times while: $(printf '%s\n' "${phases[@]}" | sort | uniq -c | awk '{ printf "%s %s, ", $1, $2 }')entries at the end: ${digest#*/}"
check "30 kills, each leaving the store sound and holding a finished save" test "$kills" -eq 30
check "the kills came while adding and while editing" eval 'printf "%s\n" "${phases[@]}" | grep -q add && printf "%s\n" "${phases[@]}" | grep -qE "move|remove"'
report
