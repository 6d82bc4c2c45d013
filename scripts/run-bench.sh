#!/usr/bin/env bash
# Builds the benchmarks (RelWithDebInfo, -O2) and runs every one of them,
# then prints the results table (figure, floor, ratio, target). About five
# minutes on two cores; run it on a quiet machine.
#   bash scripts/run-bench.sh [--update-readme] [BENCHMARK FLAGS...]
# --update-readme rewrites the block between <!-- bench:begin --> and
# <!-- bench:end --> in README.md with the new table. Other arguments go to
# the benchmark binary (for example --benchmark_filter=route/progress).
set -euo pipefail
cd "$(dirname "$0")/.."

update=0
flags=()
for arg in "$@"; do
    case "$arg" in
        --update-readme) update=1 ;;
        *) flags+=("$arg") ;;
    esac
done

bash scripts/install-deps.sh benchmark
build=build-bench
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DALGOLOGIC_BUILD_BENCH=ON \
      -DALGOLOGIC_BUILD_TOOLS=ON >/dev/null
cmake --build "$build" -j"$(nproc)" --target algologic_bench

results="$build/bench-results.json"
# The benchmark filters the library's debug output itself; an inherited rule
# would switch it back on and measure the logging.
unset QT_LOGGING_RULES
"$build/bench/algologic_bench" --benchmark_repetitions=3 --benchmark_report_aggregates_only=true \
    --benchmark_min_time=0.2 --benchmark_out="$results" --benchmark_out_format=json \
    "${flags[@]+"${flags[@]}"}"

if [ "$update" -eq 1 ]; then
    python3 scripts/bench_table.py "$results" --update-readme README.md
else
    python3 scripts/bench_table.py "$results"
fi
