# Sourced by ./run and ./bench: programs in the background that end with the script, and a private
# audio session made of them. The script calls `open_session` first; from then on it may just exit.

private_folder=
private_home=() # put before a command that must not touch the user's settings
started_pids=()

# open_session: makes the folder for logs and sockets, and has everything ended and removed when the
# script exits, for whatever reason.
open_session() {
    # A background job of a script is born with Ctrl-C ignored, which a trap cannot change; see
    # default_interrupts.
    trap 'exit 130' INT
    trap 'exit 143' TERM
    trap 'exit 129' HUP
    trap close_session EXIT
    # Not below a long $TMPDIR: socket names have room for 107 bytes.
    local parent=${TMPDIR:-/tmp}
    ((${#parent} <= 40)) || parent=/tmp
    private_folder=$(mktemp -d "$parent/tonvale-XXXXXX") || fail "no folder can be made in $parent"
    mkdir -m 0700 "$private_folder"/{config,library,log,run,sockets,state}
    private_home=(env "XDG_CONFIG_HOME=$private_folder/config"
        "XDG_STATE_HOME=$private_folder/state")
}

close_session() {
    local status=$?
    trap '' INT TERM HUP
    trap - EXIT
    local index pid
    for ((index = ${#started_pids[@]} - 1; index >= 0; --index)); do
        stop "${started_pids[index]}"
    done
    # What was started in the very moment that the signal came.
    for pid in $(jobs -pr); do
        stop "$pid"
    done
    [[ -z $private_folder ]] || rm -rf -- "$private_folder"
    exit "$status"
}

# default_interrupts ARGUMENTS...: starts the script anew when it was started with Ctrl-C ignored.
default_interrupts() {
    if [[ $(trap -p INT) == *"''"* ]]; then
        exec env --default-signal=INT,QUIT bash "$root/${0##*/}" "$@"
    fi
}

# start NAME COMMAND...: starts a program in the background and sets started_pid. It gets a process
# group of its own, so that Ctrl-C reaches only this script, which then ends everything in order,
# the last one first; default signal actions, which a script's background jobs lack; and SIGTERM
# should the script vanish. It has the script's output; start_logged sends that to log_of NAME.
start() {
    shift
    setsid env --default-signal setpriv --pdeathsig TERM -- "$@" </dev/null &
    started_pid=$!
    started_pids+=("$started_pid")
}

start_logged() {
    start "$@" >"$(log_of "$1")" 2>&1
}

log_of() {
    printf '%s/log/%s' "$private_folder" "$1"
}

# is_running PID: also false for a program that has ended and whose number went to another.
is_running() {
    [[ " $(jobs -pr | tr '\n' ' ')" == *" $1 "* ]]
}

# stop PID: ends a started program and its group, gently for ten seconds; true when it had to.
stop() {
    is_running "$1" || return 1
    kill -TERM -- "-$1" 2>/dev/null || kill -TERM "$1" 2>/dev/null
    local tries
    for ((tries = 0; tries < 200; ++tries)); do
        is_running "$1" || return 0
        sleep 0.05
    done
    kill -KILL -- "-$1" 2>/dev/null
    wait "$1" 2>/dev/null
    return 0
}

# run_step COMMAND...: runs a long command to its end, but lets signals end it and the script.
run_step() {
    setsid env --default-signal setpriv --pdeathsig TERM -- "$@" </dev/null &
    local pid=$!
    started_pids+=("$pid")
    wait "$pid"
}

# await SECONDS PID COMMAND...: waits until the command succeeds, at most so long and only while the
# program runs. The command's output is dropped.
await() {
    local end=$((SECONDS + $1)) pid=$2
    shift 2
    until "$@" >/dev/null 2>&1; do
        ((SECONDS < end)) && kill -0 "$pid" 2>/dev/null || return 1
        sleep 0.05
    done
}

# await_service NAME COMMAND...: await for the program just started; ends the script when in vain.
await_service() {
    local name=$1
    shift
    await 20 "$started_pid" "$@" || fail_with_log "$name" "$name did not come up"
}

# fail_with_log NAME MESSAGE: ends the script with the message and the end of the program's log.
fail_with_log() {
    note "$2; the end of what it said:"
    tail -n 20 -- "$(log_of "$1")" | sed 's/^/    /' >&2
    exit 1
}

audio_server_answers() {
    timeout 5 pw-cli info 0 >/dev/null 2>&1
}

has_session_bus() {
    [[ -n ${DBUS_SESSION_BUS_ADDRESS:-} || -S ${XDG_RUNTIME_DIR:-/nowhere}/bus ]]
}

# start_private_bus: a session bus for what the script starts from here on.
start_private_bus() {
    export DBUS_SESSION_BUS_ADDRESS=unix:path=$private_folder/run/bus
    start_logged dbus-daemon dbus-daemon --nofork "--address=$DBUS_SESSION_BUS_ADDRESS" \
        "--config-file=$root/scripts/session/bus.conf" --print-address
    await_service dbus-daemon grep -q guid= "$(log_of dbus-daemon)"
}

# start_private_audio: bus, PipeWire, WirePlumber and the PulseAudio service in a runtime folder of
# their own, with a null sink as the output. They keep their settings and state in the private
# folder. Tonvale's socket moves there too.
start_private_audio() {
    # A Wayland display is found in the runtime folder unless it is a whole path.
    if [[ -n ${WAYLAND_DISPLAY:-} && ${WAYLAND_DISPLAY:0:1} != / ]]; then
        export WAYLAND_DISPLAY=${XDG_RUNTIME_DIR:-}/$WAYLAND_DISPLAY
    fi
    unset PIPEWIRE_REMOTE PIPEWIRE_RUNTIME_DIR PIPEWIRE_CONFIG_DIR WIREPLUMBER_CONFIG_DIR
    unset PULSE_RUNTIME_PATH PULSE_SINK PULSE_SOURCE
    export XDG_RUNTIME_DIR=$private_folder/run
    export PULSE_SERVER=unix:$private_folder/run/pulse/native
    export TONVALE_SOCKET_DIR=$private_folder/sockets
    cp -r "$root/scripts/session/." "$private_folder/config"

    # The PulseAudio service fails to start when a client makes its folder in the same moment.
    mkdir -m 0700 "$private_folder/run/pulse"
    start_private_bus
    start_audio_service pipewire
    await_service pipewire audio_server_answers
    start_audio_service wireplumber
    await_service wireplumber default_sink_is_chosen
    start_audio_service pipewire-pulse
    await_service pipewire-pulse pactl info
}

start_audio_service() {
    start_logged "$1" "${private_home[@]}" "$1"
}

default_sink_is_chosen() {
    pw-metadata -n default 0 default.audio.sink | grep -q tonvale-test
}

# start_virtual_display [SIZE]
start_virtual_display() {
    start_logged Xvfb Xvfb -displayfd 1 -screen 0 "${1:-1280x800x24}" -nolisten tcp -noreset
    await_service Xvfb grep -qxE '[0-9]+' "$(log_of Xvfb)"
    DISPLAY=:$(grep -xE '[0-9]+' "$(log_of Xvfb)")
    export DISPLAY
}
