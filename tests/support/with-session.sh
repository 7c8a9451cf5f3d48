#!/usr/bin/env bash
# Runs a command in a private desktop session: an Xvfb display, a session bus, and a PulseAudio server
# with two null sinks (tl_sink_a the default), all gone when the command ends.
set -uo pipefail
session=$(mktemp -d /tmp/tunelark-session.XXXXXX)
export XDG_RUNTIME_DIR=$session/run HOME=${HOME:-$session} NO_AT_BRIDGE=1
mkdir -p "$XDG_RUNTIME_DIR" && chmod 700 "$XDG_RUNTIME_DIR"
export PULSE_RUNTIME_PATH=$XDG_RUNTIME_DIR/pulse PULSE_STATE_PATH=$session/pulse-state
export DISPLAY=":${TUNELARK_DISPLAY:-$((100 + RANDOM % 800))}"
Xvfb "$DISPLAY" -screen 0 1600x900x24 -nolisten tcp >"$session/xvfb.log" 2>&1 &
xvfb_pid=$!
pulseaudio -n --daemonize=no --exit-idle-time=-1 --disallow-exit --log-target=file:"$session/pulse.log" \
  --load=module-native-protocol-unix --load="module-null-sink sink_name=tl_sink_a" \
  --load="module-null-sink sink_name=tl_sink_b" --load=module-always-sink >/dev/null 2>&1 &
pulse_pid=$!
trap 'kill $pulse_pid $xvfb_pid 2>/dev/null; wait $pulse_pid $xvfb_pid 2>/dev/null; rm -rf "$session"' EXIT
for _ in $(seq 100); do
  xdpyinfo >/dev/null 2>&1 && pactl info >/dev/null 2>&1 && break
  sleep 0.1
done
pactl set-default-sink tl_sink_a >/dev/null 2>&1
# A bus that starts no services (the web view would start the accessibility bus).
printf '%s\n' '<busconfig><type>session</type><listen>unix:tmpdir=/tmp</listen><auth>EXTERNAL</auth>' \
  '<policy context="default"><allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/>' \
  '<allow own="*"/></policy></busconfig>' >"$session/bus.conf"
dbus-run-session --config-file="$session/bus.conf" -- "$@" 2> >(grep --line-buffered -v 'fd limit' >&2)
