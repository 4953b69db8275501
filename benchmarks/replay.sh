#!/usr/bin/env bash
# How fast capture logs are read, checked and played, by the ways in which they can be shown.
#
#   replay.sh BUILD FOLDER CAPTURES ROUNDS [BEFORE]
#
# Writes logs into FOLDER, with the lives of so many captures one after the other: as by hand, as
# recorded on three threads that take turns, and one by hand that is four times as long. Runs the
# tools of the build folder BUILD and infosync-replay of BEFORE, another one, in turn, and prints
# medians. Fails if a tool does, or if a capture is not reported.
set -euo pipefail
{ [ $# -eq 4 ] || [ $# -eq 5 ]; } ||
    { echo "usage: replay.sh BUILD FOLDER CAPTURES ROUNDS [BEFORE]" >&2; exit 2; }
build=$1 folder=$2 captures=$3 rounds=$4 before=${5:-}
replay=$build/tools/replay/infosync-replay
# "diff" compares a log with itself, and so reads twice the lines.
ways='quiet report stats rows diff'
[ -z "$before" ] || ways="before $ways"
ways_of() { [ "$1" = long ] && echo rows || echo "$ways"; }

# write_by_hand CAPTURES
write_by_hand() {
    awk -v captures="$1" '{ calls[NR] = $0 }
        END {
            for (capture = 1; capture <= captures; ++capture)
                for (i = 1; i <= NR; ++i) {
                    line = calls[i]
                    sub(/IMG_2000000/, "IMG_" 2000000 + capture, line)
                    print line
                }
        }' "$(dirname "$0")/data/lifecycle.jsonl"
}

write_recorded() {
    awk 'BEGIN {
            print "{\"format\":\"camInfosync capture log\",\"version\":\"1.0\"}"
        }
        {
            place = (NR - 1) % 43
            tid = place < 6 || place > 40 ? 101 : place < 25 ? 102 : 103
            printf "{\"n\":%d,\"at\":%.0f,\"thread\":\"camera-%d\",\"tid\":%d,%s\n",
                NR, 1e13 + NR * 50000, tid, tid, substr($0, 2)
        }
        END { printf "{\"end\":true,\"calls\":%d}\n", NR }'
}

# run WAY LOG
run() {
    local log=$folder/$2.jsonl
    case $1 in
    before) "$before/tools/replay/infosync-replay" "$log" --quiet ;;
    quiet) "$replay" "$log" --quiet ;;
    report) "$replay" "$log" ;;
    stats) "$replay" "$log" --stats ;;
    rows) "$replay" "$log" --quiet --rows "$folder/rows" ;;
    diff) "$build/tools/diff/infosync-diff" "$log" "$log" ;;
    esac >/dev/null 2>"$folder/said" || { cat "$folder/said" >&2; return 1; }
}

# Notes the microseconds that a run takes.
measure() {
    local begin=${EPOCHREALTIME/./}
    run "$1" "$2"
    echo $((${EPOCHREALTIME/./} - begin)) >>"$folder/$2.$1"
}

# Lines per second of each way, in thousands, and over those of the log's first way.
show() {
    local log=$1 way
    for way in $(ways_of "$log"); do
        printf '%s %s\n' "$way" \
            "$(sort -n "$folder/$log.$way" | awk '{ all[NR] = $1 } END { print all[int((NR + 1) / 2)] }')"
    done | awk -v log_="$log" -v lines="$(wc -l <"$folder/$log.jsonl")" '{
        speed = lines * ($1 == "diff" ? 2 : 1) / $2
        if (NR == 1)
            first = speed
        printf "%-10s %-8s %7.0f %8.2f\n", log_, $1, speed * 1000, speed / first
    }'
}

rm -rf "$folder"
mkdir -p "$folder"
write_by_hand "$captures" >"$folder/by-hand.jsonl"
write_by_hand $((4 * captures)) >"$folder/long.jsonl"
write_recorded <"$folder/by-hand.jsonl" >"$folder/recorded.jsonl"
for log in by-hand recorded; do
    "$replay" "$folder/$log.jsonl" --quiet --json "$folder/calls"
    reported=$(awk '/"finishReport"/ { ++count } END { print count + 0 }' "$folder/calls")
    [ "$reported" = "$captures" ] ||
        { echo "replay.sh: $reported of $captures captures of $log are reported" >&2; exit 1; }
done
for ((round = 0; round < rounds; ++round)); do
    for log in by-hand recorded long; do
        for way in $(ways_of "$log"); do
            measure "$way" "$log"
        done
    done
done
printf 'playing %d captures of 43 calls; thousand lines per second, and over the first way\n' \
    "$captures"
for log in by-hand recorded long; do
    show "$log"
done
rm -rf "$folder"
