#!/usr/bin/env bash
# Runs a command inside a private desktop session: an Xvfb display and a PulseAudio server with two
# null sinks (tl_sink_a is the default), both gone when the command ends.
set -uo pipefail
session=$(mktemp -d /tmp/tunelark-session.XXXXXX)
export XDG_RUNTIME_DIR=$session/run HOME=${HOME:-$session}
mkdir -p "$XDG_RUNTIME_DIR" && chmod 700 "$XDG_RUNTIME_DIR"
export PULSE_RUNTIME_PATH=$XDG_RUNTIME_DIR/pulse PULSE_STATE_PATH=$session/pulse-state

display=${TUNELARK_DISPLAY:-$((100 + RANDOM % 800))}
Xvfb ":$display" -screen 0 1600x900x24 -nolisten tcp >"$session/xvfb.log" 2>&1 &
xvfb_pid=$!
export DISPLAY=":$display"

pulseaudio -n --daemonize=no --exit-idle-time=-1 --disallow-exit --log-target=file:"$session/pulse.log" \
  --load="module-native-protocol-unix" \
  --load="module-null-sink sink_name=tl_sink_a" \
  --load="module-null-sink sink_name=tl_sink_b" \
  --load="module-always-sink" >/dev/null 2>&1 &
pulse_pid=$!

cleanup() {
  kill "$pulse_pid" "$xvfb_pid" 2>/dev/null
  wait "$pulse_pid" "$xvfb_pid" 2>/dev/null
  rm -rf "$session"
}
trap cleanup EXIT

for _ in $(seq 100); do
  xdpyinfo >/dev/null 2>&1 && pactl info >/dev/null 2>&1 && break
  sleep 0.1
done
pactl set-default-sink tl_sink_a >/dev/null 2>&1
"$@"
