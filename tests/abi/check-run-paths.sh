#!/usr/bin/env bash
# Holds that no installed library or program looks for libraries in a folder that only the
# building machine has: check-run-paths.sh PREFIX FOLDER...
set -euo pipefail
prefix=$1
shift
failures=0 files=0

# Whether a run path's entry is one of the folders, or in one of them, but not the prefix.
forbidden() {
    local folder
    for folder in "${@:2}"; do
        case $1/ in "$folder"/*) return 0 ;; esac
    done
    return 1
}

while IFS= read -r -d '' file; do
    dynamic=$(readelf -dW "$file" 2>/dev/null) || continue
    [[ $dynamic == *NEEDED* ]] || continue
    files=$((files + 1))
    while IFS= read -r entry; do
        # The loader takes an empty entry for the working directory.
        if [ -z "$entry" ] || forbidden "$entry" "$@"; then
            echo "$file: its run path names \"$entry\"" >&2
            failures=1
        fi
    done < <(sed -nE 's/.*\((RPATH|RUNPATH)\).*\[(.*)\]/\2/p' <<<"$dynamic" | tr ':' '\n')
done < <(find "$prefix" -type f -print0)
[ "$files" -gt 0 ] || { echo "$prefix holds no library" >&2; exit 1; }
exit $failures
