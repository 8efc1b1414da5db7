#!/usr/bin/env bash
# Builds the release preset, takes every figure beside its yardstick and prints them with what they
# have to reach. Fails when a result is wrong, a figure is missed or a bound exceeds what it is a
# bound of. Whatever else runs on the machine shows in the figures; the table says where it did.
#   scripts/bench.sh                                  all figures, about two minutes
#   scripts/bench.sh --benchmark_filter=Figure5       some of them
#   SEAMREVISION_BENCH_SHORT=1 scripts/bench.sh       small walls, once; times are not judged
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh
cmake --preset release >/dev/null
cmake --build --preset release

# The table comes on the error output; what the benchmark library prints goes to a file.
results=build/release/benchmarks.json
build/release/bin/seamrevision_bench --benchmark_format=json "$@" >"$results"
echo "All numbers: $results"
