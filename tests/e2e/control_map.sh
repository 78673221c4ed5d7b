# Sourced on the private X server by the scripts that drive cvd: the control map the console rewrites every half
# second (a line a control: name, x, y, width, height, then its caption or state) read by control name, and
# clicks by control name. A script sets cvd_pid once cvd runs, so that a failure also ends cvd.
cvd_pid=

fail() {
    echo "FAIL: $*" >&2
    [ -f "$CVD_CONTROL_MAP" ] && sed 's/^/  map: /' "$CVD_CONTROL_MAP" >&2
    [ -f "$CVD_WORK/cvd.out" ] && sed 's/^/  cvd: /' "$CVD_WORK/cvd.out" >&2
    [ -n "$cvd_pid" ] && kill "$cvd_pid" 2>/dev/null
    exit 1
}

on_map() {
    [ -f "$CVD_CONTROL_MAP" ] && awk -v name="$1" '$1 == name { found = 1 } END { exit !found }' "$CVD_CONTROL_MAP"
}

# Waits until the control is on the map, that is until its window is open and drawn, or until it has left it.
wait_for() {
    for _ in $(seq 100); do on_map "$1" && return 0; sleep 0.1; done
    fail "${2:-$1 did not appear}"
}
wait_gone() {
    for _ in $(seq 100); do on_map "$1" || return 0; sleep 0.1; done
    fail "$1 did not go away"
}

# The centre of a control in screen pixels; a second argument moves that many rows further down (rows of a
# list are as high as its first).
centre_of() {
    awk -v name="$1" -v rows="${2:-0}" '$1 == name {
            printf "%d %d\n", $2 + $4 / 2, $3 + $5 / 2 + rows * $5; found = 1 } END { exit !found }' \
        "$CVD_CONTROL_MAP"
}
caption_of() {
    awk -v name="$1" '$1 == name { $1 = $2 = $3 = $4 = $5 = ""; sub(/^ +/, ""); print }' "$CVD_CONTROL_MAP"
}
state_of() {
    awk -v name="$1[checked]" '$1 == name { print $6 }' "$CVD_CONTROL_MAP"
}

# Clicks at a point of the screen. A move onto the spot the pointer already holds brings no motion for --sync
# to wait for (it would wait some fifteen seconds), so there the click is given where the pointer is.
click_at() {
    local here
    here=$(xdotool getmouselocation --shell | awk -F= '$1 == "X" || $1 == "Y" { printf "%s ", $2 }')
    if [ "$here" = "$1 $2 " ]; then
        xdotool click 1
    else
        xdotool mousemove --sync "$1" "$2" click 1
    fi
}

# Clicks the middle of a control (or of a row below its first, as centre_of), then gives the window time to
# answer: click_pause seconds, by default longer than one rewrite of the map.
click() {
    local where
    wait_for "$1"
    where=$(centre_of "$1" "${2:-0}") || fail "no control $1 on the screen"
    # shellcheck disable=SC2086
    click_at $where
    sleep "${click_pause:-0.6}"
}
