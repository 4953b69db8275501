#!/usr/bin/env bash
# Plays all scenarios with several builds of the library and compares the reports and the log
# texts byte for byte, and the captures by the first build's infosync-diff; plays with the first
# build what each of the others records. Each argument is a build folder, with the emulator that it
# needs in front:
#     tests/compare-toolchains.sh build/dev "qemu-aarch64 -L SYSROOT build/arm64"
set -euo pipefail
cd "$(dirname "$0")/.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Plays one scenario; leaves its rows, and the log without what differs from run to run: the Android
# log's time, process and thread, addresses, and, where several threads play, the size of the queue.
play() {
    local output=$1 scenario=$2 rows=$3
    shift 3
    local sizes='queue size:'
    grep -q '"thread"' "$scenario" && sizes='queue size: .*'
    INFOSYNC_DEBUG_MASK=1 "$@" --log-level debug --json "$output.jsonl" "$scenario" --rows "$rows" \
        >"$output.txt" 2>"$output.err"
    sed -E 's/^([^ ]+ [VDIWEF]) [0-9-]+ [0-9:]+ +[0-9]+ +[0-9]+ /\1 /
            s/(mIntentAwareImpl is|features_mgr_handle =) .*/\1 ADDRESS/
            '"s/$sizes/queue size:/" "$output.err" |
        LC_ALL=C sort >"$output.log"
    rm "$output.err"
    [ -s "$output.log" ] || { echo "no log of $scenario" >&2; exit 1; }
}

# What eight threads tell the build `recording`, recorded and played with the build `playing`.
round_trip() {
    local recording=$1 playing=$2 program=tests/record/record_round_trip
    local -a command
    read -r -a command <<<"$recording/$program"
    PLAYING=$playing/$program DIFF=$playing/tools/diff/infosync-diff \
        PLAYER=${playing##* }/tools/replay/libinfosync-player.so \
        python3 tests/record/round_trip_test.py RoundTrip.test_round_trip "${command[@]}" 2>"$work/round-trip" ||
        { cat "$work/round-trip"; echo "$playing plays otherwise what $recording records"; exit 1; } >&2
}

read -r -a comparing <<<"$1"
comparing[-1]=${comparing[-1]}/tools/diff/infosync-diff
number=0
for build in "$@"; do
    read -r -a command <<<"$build"
    command[-1]=${command[-1]}/tools/replay/infosync-replay
    number=$((number + 1))
    mkdir "$work/$number"
    for scenario in scenarios/*.jsonl; do
        name=$(basename "$scenario" .jsonl)
        play "$work/$number/$name" "$scenario" "$work/rows-$number-$name" "${command[@]}"
        "${comparing[@]}" "$work/rows-1-$name" "$work/rows-$number-$name" >"$work/differences" ||
            { cat "$work/differences"; echo "$build takes captures otherwise than $1"; exit 1; } >&2
    done
    diff -r "$work/1" "$work/$number" || { echo "$build differs from $1" >&2; exit 1; }
done
for build in "${@:2}"; do
    round_trip "$build" "$1"
done
files=("$work/1"/*)
echo "$number builds: ${#files[@]} files of reports and logs are identical;" \
    "$1 plays what the others record"
