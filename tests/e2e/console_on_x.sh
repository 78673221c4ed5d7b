#!/usr/bin/env bash
# The console on a real X server, driven from outside as an operator would: a fresh environment with an
# address book imported by cvdctl, two recipients and a group picked with mouse clicks, a text typed, SEND
# pressed; then the rows in the database, the "Pend:" panel, and File > Exit asking "Quit While Sending?".
# Usage: console_on_x.sh BIN_DIR FIXTURE_DIR [SCREENSHOT.png]. Exit 77 (skipped) without Xvfb or xdotool.
set -euo pipefail

bin=${1:?bin dir}
fixtures=${2:?fixture dir}
shot=${3:-}

if [ "${CVD_INSIDE_X:-}" != 1 ]; then
    # shellcheck source=/dev/null
    source "$(dirname "$0")/private_environment.sh"
    need_tools xvfb-run xdotool sqlite3
    work=$(mktemp -d)
    trap 'rm -rf "$work"' EXIT
    enter_private_environment "$work"
    import_address_book "$bin" "$fixtures"
    run_on_private_x "$0" "$@"
    exit
fi

# shellcheck source=/dev/null
source "$(dirname "$0")/control_map.sh"
global_db="$CVD_COMMON_APPDATA/Halvern/Corvane Desk/5.0/cvd.mdb"

"$bin/cvd" >"$CVD_WORK/cvd.out" 2>&1 &
cvd_pid=$!
window=$(timeout 20 xdotool search --sync --name '^Corvane Desk$' | head -1) || fail "the console did not open"
for _ in $(seq 50); do [ -s "$CVD_CONTROL_MAP" ] && break; sleep 0.1; done
sleep 0.6

# The unpicked list is sorted, so its first row is each time the next entry: the group first ("(G) On Call
# Team"), then Alice Brandt and Bob Chen.
for _ in 1 2 3; do click 'unpicked[0]'; done
click message
xdotool windowfocus --sync "$window" type --delay 20 'Boiler 2 pressure high'
sleep 0.3
click send
sleep 1.5

rows=$(sqlite3 "$global_db" "select count(*) from cv_messages where cv_transaction > 0 and cv_message = 'Boiler 2 pressure high'")
pending=$(sqlite3 "$global_db" "select group_concat(cv_recipient, ' ') from (select cv_recipient from cv_messages where cv_scheduled <> 0 and cv_sent = 0 and cv_transaction > 0 order by cv_recipient)")
[ "$rows" = 4 ] || fail "expected 4 live rows (alice, bob and the group's carol and dave), found $rows"
[ "$pending" = "alice bob carol dave" ] || fail "pending rows are '$pending'"
panel=$(caption_of sbrCounters_panel3)
[ "$panel" = "Pend: 4" ] || fail "the Pend panel shows '$panel'"

[ -n "$shot" ] && import -window root "$shot"

# File > Exit asks, since messages are pending; Yes ends the program in order.
xdotool windowfocus --sync "$window" key alt+f
sleep 0.3
xdotool key x
question=$(timeout 10 xdotool search --sync --name '^Quit While Sending\?$' | head -1) || fail "no question at File > Exit"
xdotool windowfocus --sync "$question" key Return
for _ in $(seq 100); do kill -0 "$cvd_pid" 2>/dev/null || break; sleep 0.1; done
kill -0 "$cvd_pid" 2>/dev/null && fail "cvd still runs after Yes"
wait "$cvd_pid" || fail "cvd ended with status $?"
echo "console on X: picked, sent, counted and closed as an operator would"
