#!/usr/bin/env bash
# The modem scan on a real X server, driven as an operator would: two pseudo-terminal modems made by socat on
# ports 1 and 2 (CVD_COM1, CVD_COM2), the first answering "OK" to "AT", the second silent, every other port on
# a device that does not exist; Tools > Modem Scan opened from the menu, Scan pressed; exactly the box of
# port 1 is ticked, and Close ends the window.
# Usage: modem_scan_on_x.sh BIN_DIR [SCREENSHOT.png]. Exit 77 (skipped) without Xvfb, xdotool or socat.
set -euo pipefail

bin=${1:?bin dir}
shot=${2:-}

if [ "${CVD_INSIDE_X:-}" != 1 ]; then
    # shellcheck source=/dev/null
    source "$(dirname "$0")/private_environment.sh"
    need_tools xvfb-run xdotool socat
    work=$(mktemp -d)
    enter_private_environment "$work"
    # The answering modem replies to each command line ending in a carriage return; the silent one swallows all.
    cat >"$work/answer.sh" <<'ANSWER'
#!/usr/bin/env bash
while IFS= read -r -d $'\r' line; do
    case "$line" in *AT*) printf '\r\nOK\r\n' ;; esac
done
ANSWER
    chmod +x "$work/answer.sh"
    socat pty,raw,echo=0,link="$work/com1" EXEC:"$work/answer.sh" 2>/dev/null &
    modem_pid=$!
    socat pty,raw,echo=0,link="$work/com2" SYSTEM:'cat >/dev/null' 2>/dev/null &
    silent_pid=$!
    trap 'kill $modem_pid $silent_pid 2>/dev/null || true; rm -rf "$work"' EXIT
    for _ in $(seq 50); do [ -e "$work/com1" ] && [ -e "$work/com2" ] && break; sleep 0.1; done
    export CVD_COM1=$work/com1 CVD_COM2=$work/com2
    for port in $(seq 3 16); do export "CVD_COM$port=$work/none$port"; done
    status=0
    run_on_private_x "$0" "$@" || status=$?
    exit $status
fi

# shellcheck source=/dev/null
source "$(dirname "$0")/control_map.sh"
box_of() { [ "$1" = 13 ] && echo "frmModemScan/ChkCom13" || echo "frmModemScan/chkCom$1"; }

"$bin/cvd" >"$CVD_WORK/cvd.out" 2>&1 &
cvd_pid=$!
window=$(timeout 20 xdotool search --sync --name '^Corvane Desk$' | head -1) || fail "the console did not open"
sleep 0.6

xdotool windowfocus --sync "$window" key alt+t
sleep 0.3
xdotool key m
timeout 10 xdotool search --sync --name '^Scan for Modems$' >/dev/null || fail "Tools > Modem Scan opened no window"
for _ in $(seq 50); do grep -q '^frmModemScan/btnScan ' "$CVD_CONTROL_MAP" && break; sleep 0.1; done
grep -q "^frmModemScan/lblDevice1 .* $CVD_COM1\$" "$CVD_CONTROL_MAP" || fail "port 1 does not show its device"

click frmModemScan/btnScan
# Port 1 answers at once; port 2 is given its three seconds; the rest do not open.
for _ in $(seq 100); do [ "$(state_of "$(box_of 1)")" = 1 ] && break; sleep 0.1; done
sleep 4
[ -n "$shot" ] && import -window root "$shot"
for port in $(seq 1 16); do
    expected=0
    [ "$port" = 1 ] && expected=1
    [ "$(state_of "$(box_of "$port")")" = "$expected" ] || fail "port $port is not marked $expected"
done

click frmModemScan/btnClose
for _ in $(seq 30); do grep -q '^frmModemScan/' "$CVD_CONTROL_MAP" || break; sleep 0.1; done
grep -q '^frmModemScan/' "$CVD_CONTROL_MAP" && fail "the window is still open after Close"

xdotool windowfocus --sync "$window" key alt+f
sleep 0.3
xdotool key x
for _ in $(seq 100); do kill -0 "$cvd_pid" 2>/dev/null || break; sleep 0.1; done
kill -0 "$cvd_pid" 2>/dev/null && { kill "$cvd_pid"; fail "cvd still runs after File > Exit"; }
wait "$cvd_pid" || fail "cvd ended with status $?"
echo "modem scan on X: the answering modem on port 1 found, the silent one and the missing ports not"
