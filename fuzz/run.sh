#!/usr/bin/env bash
# Runs each fuzz target for a number of seconds, from the corpus: fuzz/run.sh [SECONDS]
#
# Inputs that end a target are left in build/fuzz; once the fault is fixed, they belong in
# fuzz/corpus.
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${1:-60}
# Zero would run without end.
if [ $# -gt 1 ] || ! [[ $seconds =~ ^[1-9][0-9]*$ ]]; then
    echo "usage: fuzz/run.sh [SECONDS]" >&2
    exit 2
fi
build=build/fuzz
flags='-fsanitize=fuzzer-no-link,address,undefined,float-cast-overflow'
flags+=' -fno-sanitize-recover=all -fno-omit-frame-pointer -O1'

mkdir -p "$build"
# The library's link must leave the sanitizers' functions to the program.
if ! { cmake -S . -B "$build" -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DINFOSYNC_FUZZ=ON -DINFOSYNC_REQUIRE_ALL=ON -DINFOSYNC_BENCHMARKS=OFF -DBUILD_TESTING=OFF \
    -DCMAKE_COMPILE_WARNING_AS_ERROR=ON -DCMAKE_CXX_FLAGS="$flags" \
    -DCMAKE_CXX_STANDARD_LIBRARIES=-Wl,-z,undefs &&
    cmake --build "$build" -j "$(nproc)" --target library_fuzzer capture_log_fuzzer \
        logcat_fuzzer; } \
    >"$build/build.log" 2>&1; then
    tail -n 40 "$build/build.log" >&2
    exit 1
fi

# The library's target reads back what the recorder writes.
export INFOSYNC_RECORD=$PWD/$build/recorded INFOSYNC_RECORD_LIMIT=$((1 << 60))
for target in library capture_log logcat; do
    found=$build/found-$target
    mkdir -p "$found"
    rm -rf "$INFOSYNC_RECORD"
    mkdir -p "$INFOSYNC_RECORD"
    echo "== $target: $seconds s from $(find "fuzz/corpus/$target" -type f | wc -l) inputs" >&2
    # The second folder is only read. The tool's code has so many features that to count how
    # often each is seen, as the entropic schedule does, takes most of the time.
    if ! "$build/fuzz/${target}_fuzzer" -max_total_time="$seconds" -max_len=1024 -timeout=20 -entropic=0 \
        -rss_limit_mb=2048 -artifact_prefix="$build/$target-" -print_final_stats=1 \
        "$found" "fuzz/corpus/$target" >"$build/$target.log" 2>&1; then
        grep -v '^#' "$build/$target.log" | head -n 60 >&2
        exit 1
    fi
    grep -E '^stat::(number_of_executed_units|new_units_added)|DONE' "$build/$target.log"
done
