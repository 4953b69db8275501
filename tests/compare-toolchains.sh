#!/usr/bin/env bash
# Plays all scenarios with several builds of the library and compares the reports and the log
# texts byte for byte; plays with the first build what each of the others records. Each argument is
# a build folder, with the emulator that it needs in front:
#     tests/compare-toolchains.sh build/dev "qemu-aarch64 -L SYSROOT build/arm64"
set -euo pipefail
cd "$(dirname "$0")/.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Plays one scenario; the log without what differs from run to run: the Android log's time,
# process and thread, addresses, and, where several threads play, the size of the queue.
play() {
    local output=$1 scenario=$2
    shift 2
    local sizes='queue size:'
    grep -q '"thread"' "$scenario" && sizes='queue size: .*'
    INFOSYNC_DEBUG_MASK=1 "$@" --log-level debug --json "$output.jsonl" "$scenario" \
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
    PLAYING=$playing/$program PLAYER=${playing##* }/tools/replay/libinfosync-player.so \
        python3 tests/record/round_trip_test.py RoundTrip.test_round_trip "${command[@]}" 2>"$work/round-trip" ||
        { cat "$work/round-trip"; echo "$playing plays otherwise what $recording records"; exit 1; } >&2
}

number=0
for build in "$@"; do
    read -r -a command <<<"$build"
    command[-1]=${command[-1]}/tools/replay/infosync-replay
    number=$((number + 1))
    mkdir "$work/$number"
    for scenario in scenarios/*.jsonl; do
        play "$work/$number/$(basename "$scenario" .jsonl)" "$scenario" "${command[@]}"
    done
    diff -r "$work/1" "$work/$number" || { echo "$build differs from $1" >&2; exit 1; }
done
for build in "${@:2}"; do
    round_trip "$build" "$1"
done
files=("$work/1"/*)
echo "$number builds: ${#files[@]} files of reports and logs are identical;" \
    "$1 plays what the others record"
