#!/usr/bin/env bash
# Copies a folder and edits the sources in the copy: edit.sh FROM TO SCRIPT... Fails if a script
# of sed changes nothing.
set -euo pipefail
from=$1
to=$2
shift 2

copy() { rm -rf "$2" && cp -R "$1" "$2"; }

copy "$from" "$to"
for script in "$@"; do
    copy "$to" "$to.before"
    find "$to" -name '*.[ch]*' -type f -exec sed -E -i -f "$script" {} +
    if diff -rq "$to.before" "$to" >/dev/null; then
        echo "$script: matches nothing in $from" >&2
        rm -rf "$to"
        exit 1
    fi
done
