#!/usr/bin/env bash
# The address book on a real X server, filled from an empty start only with mouse clicks and typed keys:
# Carriers > Add with TAP chosen, a name and a phone number typed, Apply; Recipients > Add on that carrier,
# the short name left to be made from the full name; Groups > Add, then Groups > Members with the recipient
# moved across and Apply; File > Exit. Then the rows of cv_carriers, cv_recipients and cv_groups, every column.
# Usage: address_book_on_x.sh BIN_DIR [SCREENSHOT.png]. Exit 77 (skipped) without Xvfb, xdotool or sqlite3.
set -euo pipefail

bin=${1:?bin dir}
shot=${2:-}

if [ "${CVD_INSIDE_X:-}" != 1 ]; then
    # shellcheck source=/dev/null
    source "$(dirname "$0")/private_environment.sh"
    need_tools xvfb-run xdotool sqlite3
    work=$(mktemp -d)
    trap 'rm -rf "$work"' EXIT
    enter_private_environment "$work"
    status=0
    run_on_private_x "$0" "$@" || status=$?
    exit $status
fi

# shellcheck source=/dev/null
source "$(dirname "$0")/control_map.sh"
click_pause=0.2 # each click waits for its control
type_into() {
    click "$1"
    xdotool key ctrl+a
    xdotool type --delay 20 "$2"
}
menu() {
    xdotool windowfocus --sync "$window" key "alt+$1"
    sleep 0.3
    xdotool key "$2"
}
# The box that Apply shows: its text checked, then Return closes it.
answer_box() {
    wait_for messageBox/qt_msgbox_label
    local said
    said=$(caption_of messageBox/qt_msgbox_label)
    [ "$said" = "$1" ] || fail "the box says '$said', not '$1'"
    xdotool key Return
    wait_gone messageBox
}
global_db="$CVD_COMMON_APPDATA/Halvern/Corvane Desk/5.0/cvd.mdb"

"$bin/cvd" >"$CVD_WORK/cvd.out" 2>&1 &
cvd_pid=$!
window=$(timeout 20 xdotool search --sync --name '^Corvane Desk$' | head -1) || fail "the console did not open"
wait_for send
for table in cv_carriers cv_recipients cv_groups; do
    [ "$(sqlite3 "$global_db" "select count(*) from $table")" = 0 ] || fail "$table is not empty at the start"
done

# Carriers > Add opens on SMTP; TAP is picked by typing its name into the open protocol list. A blank in the
# name is refused and the window stays; a name without one is stored and the window closes.
menu c a
click frmAddCarrier/cmbSmtpProtocol
xdotool type TAP
xdotool key Return
type_into frmAddCarrier/txtTapName 'acme paging'
type_into frmAddCarrier/txtTapPhoneNumber '1-800-555-0100'
click frmAddCarrier/btnTapApply
answer_box 'Illegal Character in the Carrier Name'
type_into frmAddCarrier/txtTapName acme.paging
click frmAddCarrier/btnTapApply
answer_box 'Carrier record added'
wait_gone frmAddCarrier # a carrier added closes its window

# Recipients > Add opens on the only carrier's frame; leaving the full name makes the short name.
menu r a
wait_for frmAddRecipient/fraTap
[ "$(caption_of frmAddRecipient/cmbTapCarrier)" = Carrier ] || fail "the recipient window shows no carrier list"
type_into frmAddRecipient/txtTapFullName 'Dana Reyes'
type_into frmAddRecipient/txtTapId 55512345
click frmAddRecipient/btnTapApply
answer_box 'Recipient record added'
click frmAddRecipient/btnTapClose
wait_gone frmAddRecipient

menu g a
type_into add_group/fuser nights
type_into add_group/ffull_name 'Night Shift'
type_into add_group/fExtra1 'Building 4'
click add_group/Command1
answer_box 'Group record added'
click add_group/btnClose
wait_gone add_group

# Groups > Members: the group picked in the list, its recipient clicked across, Apply.
menu g m
click 'list_groups/lstgroups[0]'
[ "$(caption_of 'list_groups/lstgroups[0]')" = nights ] || fail "the group list does not start with the group"
click list_groups/btnEdit
click 'group_maint/non_list[0]'
wait_for 'group_maint/member_list[0]'
[ "$(caption_of 'group_maint/member_list[0]')" = 'Dana Reyes' ] || fail "the recipient did not move to the members"
[ -n "$shot" ] && import -window root "$shot"
click group_maint/Command3
wait_gone group_maint
click list_groups/btnClose
wait_gone list_groups

menu f x
for _ in $(seq 100); do kill -0 "$cvd_pid" 2>/dev/null || break; sleep 0.1; done
kill -0 "$cvd_pid" 2>/dev/null && fail "cvd still runs after File > Exit"
wait "$cvd_pid" || fail "cvd ended with status $?"
cvd_pid=

# Every column: the typed values, and the defaults of a new TAP carrier, of a TAP recipient and of a group.
table() { sqlite3 -header -nullvalue NULL "$global_db" "select * from $1 order by $2"; }
expect_table() {
    local found
    found=$(table "$1" "$2")
    [ "$found" = "$3" ] || fail "$1 holds
$found
instead of
$3"
}
expect_table cv_carriers cv_name "\
cv_name|cv_phone_number|cv_modem_settings|cv_maxchars|cv_init_string|cv_retries|cv_message_limit|cv_dial_type|\
cv_auth_type|cv_auth_user|cv_auth_pass|cv_relay_mail|cv_relay_server|cv_priority
acme.paging|1-800-555-0100|1200,e,7,1|160|(auto)|0|0|tap|0|||0||100"
expect_table cv_recipients cv_name "\
cv_name|cv_full_name|cv_id|cv_carrier|cv_maxchars|cv_alpha|cv_on_call|cv_ad_hoc|cv_drop_control|cv_group|\
cv_SendSubject|cv_extra1|cv_extra2|cv_remove_from|cv_priority
dana_reyes|Dana Reyes|55512345|acme.paging|240|-1|0|0|-1|0|0|||0|100
nights|Night Shift|||1024|0|0|0|0|-1|0|Building 4||0|100"
expect_table cv_groups "cv_group, cv_recipient" "\
cv_group|cv_recipient
nights|dana_reyes"
echo "address book on X: a TAP carrier, a recipient on it and a group of that recipient, stored as typed"
