# shellcheck shell=bash
# Sourced by scripts that take a while.

# progress TEXT LOG COMMAND...: runs COMMAND with its output in LOG, and follows it. A command that fails prints LOG.
progress() {
    local text=$1 log=$2 status=0
    shift 2
    "$@" >"$log" 2>&1 &
    follow "$text" "$log" $! || status=$?
    if [ "$status" -ne 0 ]; then
        tail -n 200 "$log" >&2
    fi
    return "$status"
}

# follow TEXT LOG PROCESS: waits for a child process and returns its status. After a second, a terminal shows TEXT with the
# last line of LOG; without a terminal, that line appears then and every ten seconds.
follow() {
    local text=$1 log=$2 process=$3 began=$SECONDS next=1 status=0
    while kill -0 "$process" 2>/dev/null; do
        if [ $((SECONDS - began)) -lt "$next" ]; then
            sleep 0.05
        elif [ -t 2 ]; then
            printf '\r\033[K%.*s' "$(($(tput cols 2>/dev/null || echo 80) - 1))" "$text: $(lastLine "$log")" >&2
            sleep 0.2
        else
            echo "$text, $((SECONDS - began)) s: $(lastLine "$log")" >&2
            next=$((SECONDS - began + 10))
        fi
    done
    wait "$process" || status=$?
    if [ -t 2 ]; then
        printf '\r\033[K' >&2
    fi
    return "$status"
}

lastLine() {
    tail -n 1 "$1" 2>/dev/null | tr -d '\r' | sed "s|$PWD/||g"
}
