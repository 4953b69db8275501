#!/usr/bin/env bash
# ./dev refuses what is mistyped before it builds anything, with status 2 and what is wrong.
set -euo pipefail
cd "$(dirname "$0")/.."
copy=$(mktemp -d)
trap 'rm -r "$copy"' EXIT
cp --parents dev scenarios/*.jsonl tools/replay/main.cpp tools/view/ViewOptions.cpp "$copy"
# What is not refused ends with the first of these.
printf '#!/bin/sh\nprintf installed\n' >"$copy/dpkg-query"
printf '#!/bin/sh\nexit 9\n' >"$copy/cmake"
chmod +x "$copy/dpkg-query" "$copy/cmake"
PATH=$copy:$PATH
failures=0

# ends STATUS SAYS ARGUMENTS...
ends() {
    local expected=$1 says=$2 said status=0
    shift 2
    said=$("$copy/dev" "$@" 2>&1) || status=$?
    if [ "$status" -ne "$expected" ] || [ "${said%%;*}" != "$says" ]; then
        printf './dev %s: status %d, and says:\n%s\n' "$*" "$status" "$said"
        failures=$((failures + 1))
    fi
}

ends 2 'dev: demo and infosync-replay do not take "--recrd"' demo --recrd
ends 2 'dev: demo and infosync-replay do not take "--jsn=x"' demo scenarios/plain-shot.jsonl --jsn=x
ends 2 'dev: demo --record takes no "x"' demo --record x
ends 2 'dev: replay cannot read the log "absent"' replay absent
ends 2 'dev: logcat cannot read "absent"' logcat absent
ends 2 'dev: diff asks for two sides: capture logs, logcats, bug reports or folders of rows' diff a
ends 2 'dev: stats asks for folders of rows' stats
ends 2 'dev: there is no command "demmo"' demmo
building='== building dev, which may take some minutes'
ends 1 "$building" demo --json=- --summary --property a=b --help
ends 1 "$building" diff --help
ends 1 "$building" demo scenarios/plain-shot.jsonl
[ "$failures" -eq 0 ]
