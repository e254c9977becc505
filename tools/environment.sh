# What programs that play find around them: music, state, a sound server, a display.
# shellcheck shell=bash disable=SC2034,SC2154 # variables of the other files

# Where music and state are; a caller's choice stands.
use_environment() {
    if [[ -z ${SONOLET_MUSIC:-}${SONOLET_SERVER:-} && $1 == demo ]]; then
        "$build/bin/sonolet-demo" "$build/demo" >&2
        SONOLET_MUSIC=$build/demo
    fi
    export SONOLET_MUSIC
    export SONOLET_STATE=${SONOLET_STATE:-${XDG_STATE_HOME:-$HOME/.local/state}/sonolet}
}

has_sound_server() {
    local runtime=${XDG_RUNTIME_DIR:-/run/user/$EUID}
    [[ -n ${PULSE_SERVER:-} || -S $runtime/pulse/native || -S $runtime/pipewire-0 ]]
}

# Sets DISPLAY to a virtual display that goes with this script.
start_virtual_display() {
    install_missing xvfb
    local number
    # In a session of its own: Ctrl+C is for the browser, which still needs it to close.
    coproc VIRTUAL {
        exec setsid Xvfb -displayfd 1 -terminate -screen 0 1920x1200x24 -nolisten tcp 2>/dev/null
    }
    # shellcheck disable=SC2064 # the process of now
    trap "kill $VIRTUAL_PID 2>/dev/null || true" EXIT
    read -r number <&"${VIRTUAL[0]}" || fail "Xvfb does not start"
    export DISPLAY=:$number
}
