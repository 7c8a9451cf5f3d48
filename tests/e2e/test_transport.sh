#!/usr/bin/env bash
# The transport of a playing track as a user works it from the page and the desktop: the speed buttons
# change the rate and keep the pitch, the play button pauses (silence, stream corked) and resumes, a speed
# step while paused does not start playback, and the default output device moving to another sink pauses
# once and resumes when it comes back, but only when it was playing. Ends with Ctrl+Q in the main window.
# Usage: test_transport.sh BUILD_DIR   (inside the session of tests/support/with-session.sh)
set -uo pipefail
build=${1:?usage: $0 BUILD_DIR}
exe=$build/tunelark
artifacts=${TUNELARK_ARTIFACTS:-$build/e2e-artifacts}
work=$(mktemp -d /tmp/tunelark-e2e-transport.XXXXXX)
suite=transport
. "$(dirname "$0")/lib/player.sh"
need_tools xdotool xwininfo import pactl parec sox lame python3

make_song "$work/music" tone 60 || give_up "could not make the test song"
start_to_page
mark=$(log_mark)
add_through_page "$work/music" || report
within 5 eval 'scripts_since "$mark" | grep -qF "tone.mp3"' || give_up "the added song never reached the page"
sleep 0.5
mark=$(log_mark)
play_first_row "$mark" || give_up "no setIsPlaying(true); after the double click on the row"
within 10 position_reached "$mark" 1 || give_up "the position never moved"

# --- Speed: each step is reported; a step while playing keeps playing at the same pitch.
mark=$(log_mark)
click_main "${SPEED_UP[@]}"
check "the faster button posts nativeSpeedUp" within 3 console_has 'Speed Up By JS ""'
check "faster: setSpeed(\"1.25\")" within 3 said_since "$mark" 'setSpeed("1.25");'
check "faster while playing: setIsPlaying(true);" said_since "$mark" 'setIsPlaying(true);'
hears_tone tl_sink_a && pass "at 1.25 the tone keeps its pitch ($heard_freq Hz)" ||
  fail "at 1.25 tl_sink_a heard RMS $heard_rms at $heard_freq Hz"
mark=$(log_mark)
click_main "${SPEED_DOWN[@]}"
check "slower: setSpeed(\"1.0\")" within 3 said_since "$mark" 'setSpeed("1.0");'

# --- Pause and play with the page's button.
mark=$(log_mark)
click_main "${PLAY_PAUSE[@]}"
check "the pause button posts nativePause" within 3 console_has 'Native Pause By JS ""'
check "pause: setIsPlaying(false);" within 3 said_since "$mark" 'setIsPlaying(false);'
check "the paused stream is corked" within 3 stream_is "tl_sink_a yes"
hears_silence tl_sink_a && pass "silence while paused" || fail "tl_sink_a heard RMS $heard_rms while paused"
paused_at=$(current_seconds "$mark")
mark=$(log_mark)
click_main "${SPEED_UP[@]}"
check "faster while paused: setSpeed(\"1.25\")" within 3 said_since "$mark" 'setSpeed("1.25");'
sleep 0.5
! said_since "$mark" 'setIsPlaying(true);' && stream_corked && [[ $(current_seconds "$mark") == "$paused_at" ]] &&
  pass "a speed step while paused leaves the track paused at $paused_at s" ||
  fail "after a speed step while paused: $(player_stream), time $(current_seconds "$mark") (paused at $paused_at)"
click_main "${SPEED_DOWN[@]}"
within 3 said_since "$mark" 'setSpeed("1.0");' || fail "no setSpeed(\"1.0\") for the step back"

# A device change while paused: no pause of its own, and no resume when the device comes back.
mark=$(log_mark)
pactl set-default-sink tl_sink_b
sleep 0.5
pactl set-default-sink tl_sink_a
sleep 0.5
! said_since "$mark" 'setIsPlaying(true);' && ! said_since "$mark" 'setIsPlaying(false);' && stream_corked &&
  pass "a device change while paused neither pauses nor resumes" ||
  fail "device change while paused: $(scripts_since "$mark" | grep -a setIsPlaying | tr '\n' ' ')$(player_stream)"

mark=$(log_mark)
click_main "${PLAY_PAUSE[@]}"
check "the play button posts nativePlay" within 3 console_has 'Native Play By JS ""'
check "play: setIsPlaying(true);" within 3 said_since "$mark" 'setIsPlaying(true);'
check "the stream plays again on tl_sink_a" within 3 stream_is "tl_sink_a no"
within 5 position_reached "$mark" $((${paused_at:-0} + 1))
resumed=$(current_seconds "$mark")
[[ -n $resumed && -n $paused_at ]] && ((resumed > paused_at && resumed <= paused_at + 5)) &&
  pass "playback goes on from where it paused ($paused_at s, then $resumed s)" ||
  fail "after play: time '$resumed', paused at '$paused_at'"

# --- The default output device: away pauses once, back resumes.
mark=$(log_mark)
pactl set-default-sink tl_sink_b
check "default sink tl_sink_b: setIsPlaying(false);" within 2 said_since "$mark" 'setIsPlaying(false);'
check "the stream is corked after the device change" within 3 stream_corked
sleep 1
away_at=$(current_seconds "$mark")
[[ $(count_since "$mark" 'setIsPlaying(false);') == 1 ]] && ! said_since "$mark" 'setIsPlaying(true);' &&
  pass "one pause and no resume while tl_sink_b is the default" ||
  fail "calls while on tl_sink_b: $(scripts_since "$mark" | grep -a 'setIsPlaying' | tr '\n' ' ')"
hears_silence tl_sink_b && hears_silence tl_sink_a && pass "no sound on either sink while away" ||
  fail "sound while the device was away (RMS $heard_rms)"
mark=$(log_mark)
pactl set-default-sink tl_sink_a
check "default sink back to tl_sink_a: setIsPlaying(true);" within 2 said_since "$mark" 'setIsPlaying(true);'
check "the stream plays on tl_sink_a again" within 3 stream_is "tl_sink_a no"
within 5 position_reached "$mark" $((${away_at:-0} + 1))
back_at=$(current_seconds "$mark")
[[ -n $away_at && -n $back_at ]] && ((back_at > away_at)) &&
  pass "the position moves on after the resume ($away_at s, then $back_at s)" ||
  fail "position after the resume: '$away_at' then '$back_at'"
hears_tone tl_sink_a && pass "the tone is heard on tl_sink_a again (RMS $heard_rms)" ||
  fail "tl_sink_a heard RMS $heard_rms at $heard_freq Hz after the resume"

# --- Ctrl+Q in the main window.
focus_window "$main_window"
xdotool key --clearmodifiers ctrl+q
if player_ended 10; then
  [[ $quit_status -eq 0 ]] && pass "Ctrl+Q in the main window quit with status 0" || fail "Ctrl+Q: exit status $quit_status"
else
  fail "still running 10 s after Ctrl+Q in the main window"
fi
report
