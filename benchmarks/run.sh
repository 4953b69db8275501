#!/usr/bin/env bash
# Runs the benchmarks of a release build and prints medians, spreads, and ratios to the
# hand-written baseline.
#
#   run.sh [ARGS]           all of them, 20 interleaved repetitions; ARGS go to Google Benchmark
#   run.sh --smoke          each one once; fails if one does not run or allocates too often
#   run.sh --instructions   instructions per lifecycle, counted by callgrind
#   run.sh --without        what the fixed copies and locks cost, by leaving each out
#
# INFOSYNC_BENCH_BUILD names the build folder, build/release if unset.
set -euo pipefail
cd "$(dirname "$0")/.."

build=${INFOSYNC_BENCH_BUILD:-build/release}
programs=$build/benchmarks
results=$programs/results
mkdir -p "$results"

# Runs both programs with the given arguments; only the results are printed.
run_all() {
    for program in infosync-bench infosync-bench-load; do
        "$programs/$program" "$@" --benchmark_out="$results/$program.json" >"$results/$program.txt" \
            2>&1 || { cat "$results/$program.txt" >&2; return 1; }
    done
}

# The names of all benchmarks, to see that none is missing from the results.
list_all() {
    for program in infosync-bench infosync-bench-load; do
        "$programs/$program" --benchmark_list_tests 2>/dev/null | grep -v '^features_mgr_handle'
    done
}

# Instructions per lifecycle: the difference of two runs of different length.
instructions() {
    local file=benchmarks/data/$1.jsonl implementation=${2:-infosync} few=100 many=300 count counts=()
    for count in $few $many; do
        counts+=("$(valgrind --tool=callgrind --callgrind-out-file=/dev/null \
            "$programs/infosync-instructions" "$file" "$count" "$implementation" 2>&1 |
            sed -n 's/.*Collected : //p')")
    done
    echo $(((counts[1] - counts[0]) / (many - few)))
}

# The median time of a lifecycle with one thing left out.
median() { benchmarks/report.py --median "infosync/lifecycle/$1/4" "$results/$2".*.json; }

case ${1:-} in
--smoke)
    shift
    run_all --benchmark_min_time=0 "$@"
    list_all | benchmarks/report.py --complete "$results"/infosync-bench{,-load}.json >/dev/null
    echo "every benchmark ran"
    ;;
--instructions)
    printf '%-24s %12s %12s %8s\n' 'per lifecycle' infosync 'by hand' ratio
    for file in lifecycle lifecycle-long-names; do
        ours=$(instructions "$file")
        theirs=$(instructions "$file" by_hand)
        printf '%-24s %12d %12d %8s\n' "$file" "$ours" "$theirs" \
            "$(awk "BEGIN { printf \"%.2f\", $ours / $theirs }")"
    done
    ;;
--without)
    cmake --build "$build" --target without >/dev/null
    variants=(nothing record_copy algorithm_copy both_copies mutex_pass locks)
    for round in {1..11}; do  # in turn, so that the machine's load meets all alike
        for left_out in "${variants[@]}"; do
            LD_LIBRARY_PATH=$programs/without/$left_out "$programs/infosync-bench" \
                --benchmark_filter='^infosync/lifecycle' --benchmark_min_time=0.05 \
                --benchmark_out="$results/$left_out.$round.json" >/dev/null 2>&1
        done
    done
    printf '%-16s %36s %36s\n' without 'short names: instructions, ns' 'long names: instructions, ns'
    for left_out in "${variants[@]}"; do
        export LD_LIBRARY_PATH=$programs/without/$left_out
        printf '%-16s %24d %11.0f %24d %11.0f\n' "$left_out" \
            "$(instructions lifecycle)" "$(median short_names "$left_out")" \
            "$(instructions lifecycle-long-names)" "$(median long_names "$left_out")"
    done
    ;;
*)
    run_all --benchmark_repetitions=20 --benchmark_enable_random_interleaving=true \
        --benchmark_min_time=0.05 "$@"
    benchmarks/report.py "$results"/infosync-bench{,-load}.json
    ;;
esac
