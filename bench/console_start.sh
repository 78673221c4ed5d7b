#!/usr/bin/env bash
# How long `cvd` takes from its start to a shown main window whose recipient list is filled, and how much
# memory the console then holds, with 10,000 recipients in the address book. Measured from outside on a
# private Xvfb server. Usage: bench/console_start.sh [BIN_DIR] [RECIPIENTS] [RUNS]
set -euo pipefail
bin=${1:-build/bin}
count=${2:-10000}
runs=${3:-5}
bin=$(cd "$bin" && pwd)

if [ "${CVD_INSIDE_X:-}" != 1 ]; then
    work=$(mktemp -d)
    trap 'rm -rf "$work"' EXIT
    # shellcheck source=/dev/null
    source "$(dirname "$0")/../tests/e2e/private_environment.sh"
    enter_private_environment "$work"
    {
        echo '"Version","Name","FullName","Id","Carrier","MaxChars","Alpha","OnCall","AdHoc","DropControl","Group","SendSubject","RemoveFrom","Extra1","Extra2","Priority"'
        awk -v n="$count" 'BEGIN { for (i = 1; i <= n; i++)
            printf "\"500\",\"r%05d\",\"Recipient %05d\",\"555%05d\",\"Metro Paging\",160,#TRUE#,#FALSE#,#FALSE#,#FALSE#,#FALSE#,#FALSE#,#FALSE#,\"\",\"\",1\r\n", i, i, i }'
    } >"$work/recipients.txt"
    "$bin/cvdctl" import recipients "$work/recipients.txt" >/dev/null
    CVD_INSIDE_X=1 exec xvfb-run -a -s "-screen 0 1280x1024x24" "$0" "$bin" "$count" "$runs"
fi

best=
for run in $(seq "$runs"); do
    rm -f "$CVD_CONTROL_MAP"
    start=$(date +%s%N)
    "$bin/cvd" >/dev/null 2>&1 &
    pid=$!
    # The map is written once the window is shown with its lists filled.
    for _ in $(seq 3000); do [ -s "$CVD_CONTROL_MAP" ] && break; sleep 0.005; done
    shown=$(date +%s%N)
    xdotool search --sync --name '^Corvane Desk$' >/dev/null
    ms=$(((shown - start) / 1000000))
    sleep 1
    rss=$(awk '/^VmRSS/ { print int($2 / 1024) }' "/proc/$pid/status")
    kill -TERM "$pid"
    wait "$pid" || true
    echo "run $run: shown and filled after $ms ms, resident $rss MB"
    if [ -z "$best" ] || [ "$ms" -lt "$best" ]; then best=$ms; fi
done
echo "best of $runs with $count recipients: $best ms"
