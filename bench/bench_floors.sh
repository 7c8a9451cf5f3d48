#!/usr/bin/env bash
# The player beside the floors of its design (shared/perf: the cheapest GTK 3 + WebKitGTK 4.1 + playbin
# programs doing the least the player must do), measured in one desktop session so that the ratios hold
# on a shared machine whose absolute figures move by a third from run to run:
#   1. CPU while playing with the main window shown and the lyrics window in two rows, all our processes,
#      split by process and thread (treecpu.py), against floor-cpu playing the same MP3, whose label's
#      lines are the player's lyrics: median of RUNS;
#   2. exec -> main window visible with 1,000 items (500 with lyrics), against floor-start: median of RUNS;
#   3. CPU playing with the main window minimised, against the shown figure;
#   4. a storm of 20,000 page messages posted in 0.5 s while playing (tests/e2e/storm_page.html beside a
#      copy of the program, row modes in the mix), then one more: its round trip, and when all was answered
#      and when the program fell quiet (its last page call but the clock's);
#   5. PSS of all our processes after 100 and after CHANGES track changes (two MPRIS Next, one Previous,
#      around a 100-item list), and its growth over the first 100.
# Figures only: nothing passes or fails. Exit status 1 only when something could not be measured.
#
# Each CPU figure is taken over 60 s: the kernel counts a thread's time in hundredths of a second, and a
# thread that uses under 1 % of a core needs a minute for that to fall below a few per cent of its figure.
# Run (about 15 minutes; --quick: one run of 10 s and 500 changes, about 3 minutes):
#   cmake --build build --target tunelark tl-prepare-store && bench/bench_floors.sh [--quick] [build]
# It starts its own session (tests/support/with-session.sh: Xvfb, PulseAudio null sinks) with openbox,
# as minimising needs a window manager; all figures are taken under it. It needs what the end-to-end tests
# need (scripts/install-deps.sh --test) and gcc with the GTK, WebKitGTK and GStreamer headers for the floors,
# which are built from ../shared/perf (or /work/shared/perf) by their own scripts into /tmp.
set -uo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
usage="usage: bench/bench_floors.sh [--quick] [--runs N] [--seconds S] [--changes N] [BUILD_DIR (default build)]"
rounds=3 seconds=60 changes=2000 build=$root/build
while (($#)); do
  case $1 in
    --quick) rounds=1 seconds=10 changes=500 ;;
    --runs) rounds=${2:?$usage} && shift ;;
    --seconds) seconds=${2:?$usage} && shift ;;
    --changes) changes=${2:?$usage} && shift ;;
    -h | --help) echo "$usage"; exit 0 ;;
    -*) echo "$usage" >&2; exit 2 ;;
    *) build=$1 ;;
  esac
  shift
done
[[ $rounds =~ ^[1-9][0-9]*$ && $seconds =~ ^[1-9][0-9]*$ && $changes =~ ^[1-9][0-9]*$ ]] || { echo "$usage" >&2; exit 2; }
if [[ -z ${BENCH_FLOORS_SESSION:-} ]]; then
  BENCH_FLOORS_SESSION=1 exec "$root/tests/support/with-session.sh" "$0" --runs "$rounds" --seconds "$seconds" \
    --changes "$changes" "$build"
fi

perf=$(cd "$root/../shared/perf" 2>/dev/null && pwd)
[[ -f $perf/floor-cpu.sh ]] || perf=/work/shared/perf
set -- "$build"
suite=bench-floors
. "$root/tests/e2e/lib/player.sh"
give_up() { echo "bench_floors: could not measure: $*" >&2; exit 1; }
unset G_MESSAGES_DEBUG  # the page log would cost CPU of its own
for tool in xdotool openbox sox lame dbus-send gcc pkg-config python3; do
  command -v "$tool" >/dev/null || give_up "$tool is missing"
done
[[ -f $perf/floor-cpu.sh && -f $perf/floor-start.sh && -f $perf/treecpu.py ]] || give_up "no floors in ../shared/perf"
[[ -x $exe && -x $build/tests/tl-prepare-store ]] || give_up "build tunelark and tl-prepare-store in $build first"
prepare_store="$build/tests/tl-prepare-store"
# treecpu.py adds the X server's CPU, where drawing lands.
for p in $(pgrep -x Xvfb); do
  tr '\0' ' ' <"/proc/$p/cmdline" | grep -q " $DISPLAY " && export SESSION_XVFB=$p
done
window_manager openbox

# --- Tracks: a 192 kbps stereo MP3 with lyrics for the CPU figures (both programs play it), two for the
# storm, and a library of 1,000 names for one short track, every other one with lyrics.
music=$work/music
make_song "$music" song $((2 * seconds + 40))
sox "$work/tone.wav" -c 2 "$work/stereo.wav" && lame --quiet -b 192 "$work/stereo.wav" "$music/song.mp3" ||
  give_up "could not make the 192 kbps track"
# Its lyrics are floor-cpu's label: the same two lines, changing every two seconds.
for ((i = 0; i < 2 * seconds + 40; i += 2)); do
  printf '[%02d:%02d.00]Line number %d of the measured song\n' $((i / 60)) $((i % 60)) $((i / 2))
done >"$music/song.lrc"
make_song "$music" one 60
make_song "$music" two 60
make_song "$music" item 20
mkdir -p "$work/library"
library=()
for i in $(seq -w 0 999); do
  ln "$music/item.mp3" "$work/library/Song $i.mp3" && library+=("$work/library/Song $i.mp3") || give_up "no library"
  ((10#$i % 2)) || { ln "$music/item.lrc" "$work/library/Song $i.lrc" && library+=("$work/library/Song $i.lrc"); }
done
"$prepare_store" "$work/start-store/Tunelark/Tunelark.sqlite" "${library[@]}" >/dev/null ||
  give_up "could not store 1,000 items"
"$prepare_store" "$work/pss-data/Tunelark/Tunelark.sqlite" "${library[@]:0:150}" >/dev/null ||
  give_up "could not store 100 items"

echo "bench_floors: $rounds run(s) of $seconds s, $changes track changes; openbox on Xvfb; floors from $perf"
mpris() { dbus-send --session --print-reply --dest=org.mpris.MediaPlayer2.tunelark /org/mpris/MediaPlayer2 \
  "org.mpris.MediaPlayer2.Player.$1" >/dev/null; }
started_and_shown() { # waits for the page's showWindow and the main window ($main at $main_x $main_y)
  within 30 console_has showWindow 2>/dev/null || give_up "the page never said showWindow: $(tail -3 "$err")"
  within 10 window_of main Tunelark || give_up "no visible main window"
  read -r main_x main_y _ < <(geometry_of "$main")
}
playing() { within "${1:-10}" stream_is "tl_sink_a no"; }
tree_of() { local c; echo "$1"; for c in $(pgrep -P "$1"); do tree_of "$c"; done; }
pss_mib() { # of the player and its descendants
  local p
  for p in $(tree_of "$player_pid"); do cat "/proc/$p/smaps_rollup" 2>/dev/null; done |
    awk '/^Pss:/ { k += $2 } END { printf "%.1f", k / 1024 }'
}
pss_split() { # the same, process by process
  local p
  for p in $(tree_of "$player_pid"); do
    printf '%s %s MiB, ' "$(cat "/proc/$p/comm")" "$(awk '/^Pss:/ { printf "%.1f", $2 / 1024 }' "/proc/$p/smaps_rollup")"
  done 2>/dev/null | sed 's/, $//'
}
indent() { sed 's/^/    /'; }

# --- 1 and 3: CPU, each run the player shown, then minimised, then the floor, one after the other.
for ((r = 1; r <= rounds; r++)); do
  echo "CPU run $r of $rounds"
  export XDG_DATA_HOME=$work/cpu-data.$r
  start_player "$music/song."{mp3,lrc}
  started_and_shown
  playing || give_up "the player did not play the track it was given"
  click_main "${LYRICS_SWITCH[@]}"
  within 5 switched_lyrics_on || { click_main "${LYRICS_SWITCH[@]}"; within 5 switched_lyrics_on; } ||
    give_up "the lyrics switch was not heard"
  click_main "${TWO_ROWS[@]}"
  within 5 console_has 'TurnLyricsOnByJsHandler {"rowAmoutString":"towRows"}' || give_up '"Two rows" was not heard'
  within 5 window_of lyrics Lyrics || give_up "no lyrics window"
  xdotool mousemove 0 0  # no hover on the page
  sleep 3
  python3 "$perf/treecpu.py" "$player_pid" "$seconds" >"$work/cpu.shown.$r" || give_up "treecpu.py failed"
  echo "  tunelark, shown:"; indent <"$work/cpu.shown.$r"
  xdotool windowminimize --sync "$main"
  within 3 not viewable "$main" || give_up "the main window did not minimise"
  sleep 1
  python3 "$perf/treecpu.py" "$player_pid" "$seconds" >"$work/cpu.minimised.$r" || give_up "treecpu.py failed"
  echo "  tunelark, minimised:"; indent <"$work/cpu.minimised.$r"
  stop_player
  bash "$perf/floor-cpu.sh" "$music/song.mp3" "$seconds" >"$work/cpu.floor.$r" 2>"$work/floor-cpu.err" &&
    grep -q '^cpu ' "$work/cpu.floor.$r" || give_up "floor-cpu.sh: $(tail -3 "$work/floor-cpu.err")"
  echo "  floor-cpu:"; indent <"$work/cpu.floor.$r"
done

# --- 2: exec -> a visible main window, 1,000 items; timed as floor-start.sh times its floor.
echo "start with 1,000 items"
bash "$perf/floor-start.sh" "$rounds" >"$work/start.floor" 2>"$work/floor-start.err" || true
grep -q '^floor start #' "$work/start.floor" || give_up "floor-start.sh: $(tail -3 "$work/floor-start.err")"
indent <"$work/start.floor"
for ((r = 1; r <= rounds; r++)); do
  rm -rf "$work/start-data" && cp -r "$work/start-store" "$work/start-data" && export XDG_DATA_HOME=$work/start-data
  t0=$(date +%s%N)
  start_player
  for _ in $(seq 1500); do
    [[ -n $(xdotool search --onlyvisible --pid "$player_pid" 2>/dev/null | head -1) ]] && break
    sleep 0.02
  done
  echo "tunelark start #$r: $((($(date +%s%N) - t0) / 1000000)) ms" | tee -a "$work/start.player" | indent
  console_has showWindow || give_up "the player did not show its main window in 30 s"
  stop_player
done

# --- 4: the storm, from the storm test's page beside a copy of the program, timing what follows it.
echo "storm of 20,000 page messages"
mkdir -p "$work/bin" && cp "$build/tunelark" "$work/bin/" && cp -r "$build/resources" "$work/bin/" &&
  rm -rf "$work/bin/resources/www" && mkdir "$work/bin/resources/www" || give_up "could not copy the program"
sed 's|<head>|&<script>window.stormOptions = { rowModes: true, postOverMs: 500, timing: true };</script>|' \
  "$root/tests/e2e/storm_page.html" >"$work/bin/resources/www/index.html"
export XDG_DATA_HOME=$work/storm-data
exe=$work/bin/tunelark
start_player "$music/"{one,two}.{mp3,lrc}
stormed() { grep -a -m1 '^nativeDoCopy{"text":"storm ' "$out" >"$work/storm.report"; }
within 900 stormed || give_up "the storm page reported nothing: $(tail -3 "$out")"
stop_player
exe=$build/tunelark
python3 - "$work/storm.report" >"$work/storm.json" <<'PY' || give_up "the storm page's report was not read"
import json, sys
r = json.loads(json.loads(open(sys.argv[1]).read()[12:])["text"][6:])
if "error" in r: sys.exit("storm page: " + r["error"])
r.pop("counts")
print(json.dumps(r))
PY
indent <"$work/storm.json"

# --- 5: PSS over track changes around a 100-item list (50 with lyrics), the main window shown.
echo "PSS over $changes track changes"
export XDG_DATA_HOME=$work/pss-data
start_player
started_and_shown
mpris Next && playing || give_up "Next did not start the first item"
sleep 3
pss0=$(pss_mib) split0=$(pss_split) t0=$EPOCHREALTIME
for ((i = 1; i <= changes; i++)); do
  if ((i % 3)); then mpris Next; else mpris Previous; fi || give_up "change $i: the player did not answer"
  if ((i == 100)); then sleep 2 && pss100=$(pss_mib) split100=$(pss_split); fi
done
per_change=$(awk -v a="$t0" -v b="$EPOCHREALTIME" -v n="$changes" 'BEGIN { printf "%.1f", (b - a) * 1000 / n }')
sleep 2
pss_end=$(pss_mib)
kill -0 "$player_pid" 2>/dev/null || give_up "the player died over the track changes"
printf '%s\n' "PSS $pss0 MiB at the first track, ${pss100:-?} after 100 changes, $pss_end after $changes" \
  "by process at the first track: $split0" "by process after 100 changes: ${split100:-?}" \
  "a change every $per_change ms (MPRIS round trips one after the other, pauses included)" | indent
stop_player

# --- The table.
python3 - "$work" "$rounds" "$seconds" "$changes" "$pss0" "${pss100:-nan}" "$pss_end" <<'PY'
import json, re, sys
work, runs, seconds, changes = sys.argv[1], int(sys.argv[2]), sys.argv[3], int(sys.argv[4])
pss0, pss100, pss_end = (float(v) for v in sys.argv[5:8])

def treecpu(path):
    """The figures of one treecpu.py report: total, main thread, other threads of the program, web and
    network processes, X server."""
    text = open(path).read()
    procs = {n: float(v) for n, v in re.findall(r'([\w.-]+) ([\d.]+)', re.search(r'^by process: (.*)$', text, re.M).group(1))}
    threads = {}  # the first of a name is the busiest: other threads may carry the main thread's name
    for n, v in re.findall(r'(\S+/.+?) ([\d.]+)(?:,|$)', re.search(r'^busiest threads: (.*)$', text, re.M).group(1)):
        threads.setdefault(n, float(v))
    total, x = (float(v) for v in re.search(r'^cpu ([\d.]+) %.*X server ([\d.]+) %', text, re.M).groups())
    program = next((n for n in procs if not n.startswith('WebKit')), None)
    main = threads.get('%s/%s' % (program, program), 0.0)
    return dict(total=total, main=main, others=procs.get(program, 0.0) - main, web=procs.get('WebKitWebProces', 0.0),
                network=procs.get('WebKitNetworkPr', 0.0), x=x)

def median_run(name):  # the run whose total is the median (the lower middle one for an even count)
    figures = sorted((treecpu('%s/cpu.%s.%d' % (work, name, r)) for r in range(1, runs + 1)), key=lambda f: f['total'])
    return figures[(len(figures) - 1) // 2], [f['total'] for f in figures]

def median(values):
    values = sorted(values)
    return values[(len(values) - 1) // 2]

def ratio(a, b):
    return '%.2f' % (a / b) if b > 0 else '-'

shown, shown_all = median_run('shown')
floor, floor_all = median_run('floor')
minimised, minimised_all = median_run('minimised')
start = [int(v) for v in re.findall(r'#\d+: (\d+) ms', open(work + '/start.player').read())]
floor_start = [int(v) for v in re.findall(r'#\d+: (\d+) ms', open(work + '/start.floor').read())]
storm = json.load(open(work + '/storm.json'))

rows = [('Figure', 'tunelark', 'floor', 'ratio or growth')]
def row(what, ours, theirs='-', r='-'):
    rows.append((what, ours, theirs, r))
pct = lambda v: '%.2f %%' % v
row('CPU playing, shown, lyrics in two rows', pct(shown['total']), pct(floor['total']),
    ratio(shown['total'], floor['total']) + ' x floor-cpu')
row('  main thread', pct(shown['main']), pct(floor['main']), ratio(shown['main'], floor['main']))
row('  other threads of the program', pct(shown['others']), pct(floor['others']), ratio(shown['others'], floor['others']))
row('  web process', pct(shown['web']), pct(floor['web']), ratio(shown['web'], floor['web']))
row('  network process', pct(shown['network']), pct(floor['network']), ratio(shown['network'], floor['network']))
row('  X server (not counted above)', pct(shown['x']), pct(floor['x']), ratio(shown['x'], floor['x']))
row('exec -> main window visible, 1,000 items', '%d ms' % median(start), '%d ms' % median(floor_start),
    ratio(median(start), median(floor_start)) + ' x floor-start')
row('CPU playing, main window minimised', pct(minimised['total']), '-', ratio(minimised['total'], shown['total']) + ' x shown')
row('  main thread / web process', '%.2f / %.2f' % (minimised['main'], minimised['web']))
row('storm: 20,000 messages posted in', '%d ms' % storm['postMs'])
row('  one more right behind: its round trip', '%d ms' % storm['roundTripMs'] + ('' if storm['roundTripAnswered'] else ' (no answer)'))
row('  every speed and mode step answered by', '%d ms' % storm['drainMs'] + ('' if storm['allAnswered'] else ' (not all)'))
row('  quiet by (last page call but the clock\'s)', '%d ms' % storm['quietMs'])
row('  a round trip once quiet', '%d ms' % storm['probeMs'] + ('' if storm['probed'] else ' (no answer)'))
row('PSS, all processes, at the first track', '%.1f MiB' % pss0)
if pss100 == pss100:  # measured when there were 100 changes
    row('  after 100 track changes', '%.1f MiB' % pss100, '-', '%+.1f MiB' % (pss100 - pss0))
row('  after %d track changes' % changes, '%.1f MiB' % pss_end, '-', '%+.1f MiB' % (pss_end - pss0))

print('\nbench_floors: medians of %d run(s) of %s s (CPU in %% of one core; storm times marked "by" count from its first post)' % (runs, seconds))
print('  CPU totals by run: shown %s, minimised %s, floor-cpu %s; starts: tunelark %s ms, floor-start %s ms' % (
    ' '.join('%.2f' % v for v in shown_all), ' '.join('%.2f' % v for v in minimised_all),
    ' '.join('%.2f' % v for v in floor_all), ' '.join(map(str, start)), ' '.join(map(str, floor_start))))
widths = [max(len(r[i]) for r in rows) for i in range(4)]
for i, r in enumerate(rows):
    print('  ' + '  '.join(c.ljust(w) if k == 0 else c.rjust(w) for k, (c, w) in enumerate(zip(r, widths))).rstrip())
    if i == 0:
        print('  ' + '-' * (sum(widths) + 6))
PY
