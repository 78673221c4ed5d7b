#!/usr/bin/env bash
# Fails when a source file includes a header of a higher layer. The layers, lowest first; folders on one
# line are peers and may include each other's headers.
set -euo pipefail
cd "$(dirname "$0")/.."

layers=(
    "platform"
    "store"
    "core"
    "queue engine_link intake addressbook exchange reports devices desk"
    "dispatch"
    "terminal"
    "console"
    "tools"
    "app"
)

rank_of() {
    local folder=$1 rank
    for rank in "${!layers[@]}"; do
        for name in ${layers[$rank]}; do
            if [ "$name" = "$folder" ]; then
                echo "$rank"
                return
            fi
        done
    done
    echo -1
}

status=0
while IFS= read -r file; do
    folder=${file#src/}
    folder=${folder%%/*}
    own=$(rank_of "$folder")
    [ "$own" -ge 0 ] || continue
    while IFS= read -r included; do
        target=$(rank_of "$included")
        if [ "$target" -gt "$own" ]; then
            echo "layer check: $file includes a header of $included/"
            status=1
        fi
    done < <(sed -n 's|^#include "\([a-z_]*\)/.*|\1|p' "$file" | sort -u)
done < <(git ls-files 'src/*.cpp' 'src/*.h')
# cvdctl never links the program or its windows.
if grep -rqE '#include "(app|console)/' src/tools; then
    echo "layer check: cvdctl includes the program or its windows"
    status=1
fi
exit $status
