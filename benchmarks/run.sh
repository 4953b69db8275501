#!/usr/bin/env bash
# Builds the preset `release`, runs its benchmarks with libcaminfosync.so, with another library of
# that name, and with the recorder in front, in turn, and prints medians, spreads, and ratios.
#
#   run.sh                     all of them, and the instructions: against the hand-written baseline
#   run.sh --against FOLDER    the same against the libcaminfosync.so in FOLDER
#   run.sh --instructions      only the instructions, counted by callgrind
#   run.sh --without           what the fixed copies and locks cost, by leaving each out
#   run.sh --tools COMMIT      how fast logs are played, beside the infosync-replay of COMMIT
#   run.sh --smoke             each benchmark once
#
# --against goes with --instructions and --smoke, too. Arguments that begin with --benchmark_ go
# to Google Benchmark. Fails if a benchmark does, if one is missing, or if an operation allocates
# more often than it may.
set -euo pipefail
began_in=$PWD
cd "$(dirname "$0")/.."

say() { printf 'bench: %s\n' "$*" >&2; }
die() { say "$@"; exit 1; }
misused() { say "$@"; exit 2; }

mode=full reference=by_hand against='' before='' benchmark_arguments=()
while [ $# -gt 0 ]; do
    case $1 in
    --smoke | --instructions | --without)
        [ "$mode" = full ] || misused "--$mode and $1 exclude each other"
        mode=${1#--}
        ;;
    --against)
        [ $# -gt 1 ] || misused "--against takes the folder of another libcaminfosync.so"
        against=$(cd "$began_in" && cd "$2" 2>/dev/null && pwd) || misused "--against: no folder $2"
        reference=against
        shift
        ;;
    --tools)
        [ "$mode" = full ] || misused "--$mode and $1 exclude each other"
        [ $# -gt 1 ] || misused "--tools takes a commit to compare with"
        mode=tools
        before=$(git rev-parse --verify --quiet "$2^{commit}") || misused "--tools: no commit $2"
        shift
        ;;
    --benchmark_*) benchmark_arguments+=("$1") ;;
    *) misused "unknown argument: $1 (known: --smoke, --instructions, --without, --tools COMMIT," \
        "--against FOLDER, --benchmark_...)" ;;
    esac
    shift
done
case $mode in
without | tools)
    [ -z "$against" ] || misused "--$mode and --against exclude each other"
    ;;
esac

build=build/release
programs=$build/benchmarks
results=$programs/results

# The folder that a library lies in, by the name that it has in the results.
folder_of() {
    case $1 in
    infosync) echo "$build" ;;
    by_hand) echo "$programs/by_hand" ;;
    recorded) echo "$build/in-place" ;;
    against) echo "$against" ;;
    *) echo "$programs/without/$1" ;;
    esac
}

# Fails unless the programs would run with the library that is meant.
check_library() {
    local folder used
    folder=$(folder_of "$1")
    [ -f "$folder/libcaminfosync.so" ] || die "there is no libcaminfosync.so in $folder"
    used=$(LD_LIBRARY_PATH=$folder ldd "$programs/infosync-bench" |
        awk '$1 == "libcaminfosync.so" { print $3 }')
    [ "$used" -ef "$folder/libcaminfosync.so" ] || die "the programs take $used, not $folder"
}

# One run of all benchmarks: run_once LIBRARY ROUND ARGUMENT...
run_once() {
    local library=$1 output=$results/$1.$2.json
    shift 2
    local recording=''
    if [ "$library" = recorded ]; then
        recording=$PWD/$results/recording
        rm -rf "$recording"
        mkdir "$recording"
    fi
    # In one file: what its end costs would fall on one benchmark, always the same.
    INFOSYNC_RECORD=$recording INFOSYNC_RECORD_LIMIT=$((4 << 30)) INFOSYNC_BENCH_FILE=$results/bare-write \
        LD_LIBRARY_PATH=$(folder_of "$library") "$programs/infosync-bench" "$@" \
        "${benchmark_arguments[@]}" --benchmark_out="$output" >"$results/output.txt" 2>&1 ||
        { cat "$results/output.txt" >&2; die "infosync-bench fails with $library"; }
}

# Runs the libraries in turn, so that the machine's load meets all alike: run_rounds COUNT
# LIBRARIES ARGUMENT...
run_rounds() {
    local count=$1 round library libraries=$2
    shift 2
    for ((round = 1; round <= count; ++round)); do
        say "round $round of $count: $libraries"
        for library in $libraries; do
            run_once "$library" "$round" "$@"
        done
    done
}

# What a library prints, and its instructions as callgrind counts them.
count_once() {
    LD_LIBRARY_PATH=$(folder_of "$1") valgrind --tool=callgrind --callgrind-out-file=/dev/null \
        "$programs/infosync-instructions" "$2" "$3" 2>"$results/callgrind.txt" | tail -n 1 ||
        { cat "$results/callgrind.txt" >&2; die "infosync-instructions fails with $1"; }
    sed -n 's/.*Collected : //p' "$results/callgrind.txt"
}

# Instructions and service calls of one thing: the difference of two runs of different length.
count_instructions() {
    local few=100 many=300 least most
    mapfile -t least < <(count_once "$1" "$3" $few)
    mapfile -t most < <(count_once "$1" "$3" $many)
    [ "${#least[@]} ${#most[@]}" = "2 2" ] || die "no instructions of $3 with $1"
    echo "$2 $(((most[1] - least[1]) / (many - few))) $(((most[0] - least[0]) / (many - few)))"
}

count_all() {
    local library
    for library in $1; do
        say "counting the instructions of $library"
        for name in lifecycle/short_names/4 lifecycle/long_names/4 ${2:-}; do
            what=${name%/4}
            count_instructions "$library" "$name" "${what#*/}"
        done >"$results/$library.instructions"
    done
}

compare_loads() {
    say "loading infosync and $reference in turn"
    "$programs/infosync-bench-load" "$build/libcaminfosync.so" \
        "$(folder_of "$reference")/libcaminfosync.so" "$1"
}

# How fast a log of so many megabytes is read: read_log MEGABYTES ROUNDS
read_log() {
    say "reading a log of $1 MB"
    benchmarks/logcat.sh "$build/tools/logcat/infosync-logcat" "$results/log" "$1" "$2" ||
        die "infosync-logcat fails"
}

# How fast logs are played: play_logs CAPTURES ROUNDS [BUILD]
play_logs() {
    say "playing logs of $1 captures"
    benchmarks/replay.sh "$build" "$results/logs" "$@" || die "a tool fails"
}

# Builds the infosync-replay of a commit as this one is built.
build_before() {
    local folder=build/before
    say "building the infosync-replay of $1"
    rm -rf "$folder/source"
    mkdir -p "$folder/source"
    git archive "$1" | tar -x -C "$folder/source"
    { cmake -S "$folder/source" -B "$folder/build" --preset release &&
        cmake --build "$folder/build" -j "$(nproc)" --target infosync_replay; } \
        >"$results/build.txt" 2>&1 || { tail -n 60 "$results/build.txt" >&2; die "the build failed"; }
}

report() { benchmarks/report.py --names "$libraries ${1:-}" "$results" || die "failed"; }

# The names of all benchmarks that were asked for, to see that none is missing.
expected() {
    "$programs/infosync-bench" "${benchmark_arguments[@]}" --benchmark_list_tests 2>/dev/null |
        grep -v '^features_mgr_handle'
}

libraries="$reference infosync"
variants='record_copy algorithm_copy both_copies mutex_pass locks everything'
rm -rf "$results"
mkdir -p "$results"
targets=(benchmarks infosync_logcat infosync_replay infosync_diff)
if [ "$mode" = without ]; then
    targets+=(without)
    libraries="infosync $variants"
elif [ "$mode" = tools ]; then
    targets=(infosync_replay infosync_diff)
    libraries=
fi
say "building ${targets[*]}"
{ cmake --preset release && cmake --build "$build" -j "$(nproc)" --target "${targets[@]}"; } \
    >"$results/build.txt" 2>&1 || { tail -n 60 "$results/build.txt" >&2; die "the build failed"; }
for library in $libraries; do
    check_library "$library"
done
case $mode in
smoke)
    check_library recorded
    run_rounds 1 "$libraries recorded" --benchmark_min_time=0
    expected >"$results/expected"
    report recorded >"$results/table.txt"
    compare_loads 1 >>"$results/table.txt"
    read_log 8 1 >>"$results/table.txt"
    play_logs 20 1 >>"$results/table.txt"
    say "$(wc -l <"$results/expected") benchmarks ran once with each library, without a fault"
    ;;
instructions)
    count_all "$libraries" operation/command
    report
    ;;
without)
    run_rounds 11 "$libraries" --benchmark_min_time=0.05 --benchmark_filter='^lifecycle'
    count_all "$libraries"
    report
    ;;
tools)
    build_before "$before"
    play_logs 3000 7 build/before/build
    ;;
full)
    check_library recorded
    run_rounds 15 "$libraries recorded" --benchmark_min_time=0.05
    expected >"$results/expected"
    count_all "$libraries" operation/command
    report recorded
    compare_loads 51
    read_log 200 11
    play_logs 3000 5
    ;;
esac
[ "$mode" = smoke ] || say "done; the results are in $results"
