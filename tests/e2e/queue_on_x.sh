#!/usr/bin/env bash
# The queue folders and the history on a real X server, driven from outside as an operator would: a fresh
# environment with an address book imported by cvdctl; Alice Brandt picked, a text typed, the schedule dialog
# opened from its toolbar button, the send time stepped later with the arrow keys and applied, SEND pressed;
# the row found in Scheduled Messages (opened from the "Sched:" panel), selected and cancelled there; then
# found in Bad Messages and in View > History as "Failed"; its flags read back with sqlite3; File > Exit.
# Usage: queue_on_x.sh BIN_DIR FIXTURE_DIR [SCREENSHOT_PREFIX]. Exit 77 (skipped) without Xvfb or xdotool.
# With a prefix, each window is photographed as PREFIX-<window>.png.
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
    # The date picker's order of day, month and year follows the locale; this one writes "25 Nov 2026".
    export LC_ALL=C.UTF-8
    unset LANG LC_TIME
    import_address_book "$bin" "$fixtures"
    status=0
    run_on_private_x "$0" "$@" || status=$?
    exit $status
fi

# shellcheck source=/dev/null
source "$(dirname "$0")/control_map.sh"

# The name of the first control whose caption starts with that text.
named_by_caption() {
    awk -v start="$1" '{ name = $1; $1 = $2 = $3 = $4 = $5 = ""; sub(/^ +/, "") }
        index($0, start) == 1 { print name; found = 1; exit } END { exit !found }' "$CVD_CONTROL_MAP"
}
click_left() {
    local where
    where=$(awk -v name="$1" '$1 == name { printf "%d %d\n", $2 + 8, $3 + $5 / 2; found = 1 } END { exit !found }' \
        "$CVD_CONTROL_MAP") || fail "no control $1 on the screen"
    # shellcheck disable=SC2086
    click_at $where
}
await_caption() {
    for _ in $(seq 30); do [ "$(caption_of "$1")" = "$2" ] && return 0; sleep 0.1; done
    return 1
}
window_titled() {
    timeout 10 xdotool search --sync --onlyvisible --name "^$1\$" | head -1
}
photo() {
    [ -n "$shot" ] && import -window root "$shot-$1.png"
    return 0
}
global_db="$CVD_COMMON_APPDATA/Halvern/Corvane Desk/5.0/cvd.mdb"
text='Chiller 3 restart at dawn'
row_of_text="select cv_message_id from cv_messages where cv_message = '$text'"

"$bin/cvd" >"$CVD_WORK/cvd.out" 2>&1 &
cvd_pid=$!
window=$(timeout 20 xdotool search --sync --name '^Corvane Desk$' | head -1) || fail "the console did not open"
wait_for 'unpicked[0]' "the console wrote no map"
sleep 0.6
# The activity monitor opens beside the console and rises with it; put away, it covers no folder's buttons.
xdotool windowfocus --sync "$window" key alt+v
sleep 0.3
xdotool key m
for _ in $(seq 30); do xdotool search --onlyvisible --name '^Activity Monitor' >/dev/null || break; sleep 0.1; done

# The unpicked list is sorted with the group first; Alice Brandt is the row below it.
first=$(caption_of 'unpicked[0]')
[ "$first" = "(G) On Call Team" ] || fail "the first unpicked entry is '$first'"
click 'unpicked[0]' 1
click message
xdotool windowfocus --sync "$window" type --delay 20 "$text"
sleep 0.3

opened=$(date '+%Y-%m-%d %H:%M')
click tbrSchedule
window_titled 'Schedule Message' >/dev/null || fail "the toolbar button opened no schedule dialog"
wait_for frmSchedule/btnApply "the schedule dialog is not in the map"
# The pickers open on the present minute. The arrow keys step the section under the cursor: the hour two up
# is later today; late in the evening the day one up is tomorrow; on the last evening of a month, where the
# day cannot step, the year steps instead. The dialog may have opened a minute after $opened.
if [ "$(date -d "$opened" +%-H)" -lt 22 ]; then
    click_left frmSchedule/dtpStartTime
    xdotool key Home Up Up
    when=$(date -d "$opened 2 hours" '+%Y-%m-%d %H:%M')
elif [ "$(date -d "$opened 1 day" +%-d)" != 1 ]; then
    click_left frmSchedule/dtpStartDate
    xdotool key Home Up
    when=$(date -d "$opened 1 day" '+%Y-%m-%d %H:%M')
else
    click_left frmSchedule/dtpStartDate
    xdotool key End Up
    when=''
fi
sleep 0.3
photo schedule
click frmSchedule/btnApply
for _ in $(seq 30); do grep -q '^frmSchedule/' "$CVD_CONTROL_MAP" || break; sleep 0.1; done
grep -q '^frmSchedule/' "$CVD_CONTROL_MAP" && fail "Apply left the schedule dialog open"
click send
id=''
for _ in $(seq 30); do
    id=$(sqlite3 "$global_db" "$row_of_text")
    [ -n "$id" ] && break
    sleep 0.1
done
[ -n "$id" ] || fail "SEND stored no row"
requested=$(sqlite3 "$global_db" "select substr(cv_date_time_requested, 1, 16), cv_scheduled, cv_sent, cv_error,
    cv_recipient from cv_messages where cv_message_id = $id")
if [ -n "$when" ]; then
    later=$(date -d "$when 1 minute" '+%Y-%m-%d %H:%M')
    [ "$requested" = "$when|0|0|0|alice" ] || [ "$requested" = "$later|0|0|0|alice" ] ||
        fail "the stored row is '$requested', not scheduled for alice at $when"
else
    [[ "$requested" > "$opened" && "$requested" == *"|0|0|0|alice" ]] || fail "the stored row is '$requested'"
fi

# Waiting for its time it has no flag set; the status bar counts it, and a click on that panel opens the folder.
sched_panel=$(named_by_caption 'Sched:') || fail "no Sched: panel"
await_caption "$sched_panel" "Sched: 1" || fail "the Sched panel shows '$(caption_of "$sched_panel")'"
click "$sched_panel"
window_titled 'Scheduled Messages' >/dev/null || fail "the Sched panel opened no folder"
wait_for 'sched_form/Status_Grid[0]' "the scheduled folder shows no row"
photo scheduled
[[ "$(caption_of 'sched_form/Status_Grid[0]')" == *"| Alice Brandt | $text" ]] ||
    fail "the scheduled folder's row reads '$(caption_of 'sched_form/Status_Grid[0]')'"
click 'sched_form/Status_Grid[0]'
click sched_form/btnDelete
for _ in $(seq 30); do on_map 'sched_form/Status_Grid[0]' || break; sleep 0.1; done
on_map 'sched_form/Status_Grid[0]' && fail "the cancelled row is still in the scheduled folder"
flags=$(sqlite3 "$global_db" "select cv_scheduled, cv_sent, cv_error from cv_messages where cv_message_id = $id")
[ "$flags" = "-1|-1|-1" ] || fail "the cancelled row has the flags '$flags'"
click sched_form/btnClose

bad_panel=$(named_by_caption 'Bad:') || fail "no Bad: panel"
await_caption "$bad_panel" "Bad: 1" || fail "the Bad panel shows '$(caption_of "$bad_panel")'"
click "$bad_panel"
window_titled 'Bad Messages' >/dev/null || fail "the Bad panel opened no folder"
wait_for 'bad_form/Status_Grid[0]' "the bad folder shows no row"
photo bad
[[ "$(caption_of 'bad_form/Status_Grid[0]')" == *"| Alice Brandt | $text" ]] ||
    fail "the bad folder's row reads '$(caption_of 'bad_form/Status_Grid[0]')'"
click bad_form/btnClose

xdotool windowfocus --sync "$window" key alt+v
sleep 0.3
xdotool key h
window_titled 'Message History' >/dev/null || fail "View > History opened no window"
wait_for 'log_form/Status_Grid[0]' "the history shows no row"
photo history
row=$(caption_of 'log_form/Status_Grid[0]')
# Requested | Sent | Status | Sent To | Sent From | Message
[[ "$row" == *" | Failed | Alice Brandt |"*"| $text" ]] || fail "the history row reads '$row'"
click log_form/Command2
for _ in $(seq 30); do on_map log_form/Command2 || break; sleep 0.1; done
on_map log_form/Command2 && fail "Close left the history open"

# Nothing is waiting or pending any more, so File > Exit ends the program without a question.
xdotool windowfocus --sync "$window" key alt+f
sleep 0.3
xdotool key x
for _ in $(seq 100); do kill -0 "$cvd_pid" 2>/dev/null || break; sleep 0.1; done
kill -0 "$cvd_pid" 2>/dev/null && fail "cvd still runs after File > Exit"
wait "$cvd_pid" || fail "cvd ended with status $?"
echo "queue on X: scheduled, cancelled, found in Bad Messages and in the history as Failed"
