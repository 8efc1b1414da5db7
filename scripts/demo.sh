#!/usr/bin/env bash
# Builds the program, simulates an LED wall and revises its seams with both engines.
# Writes below build/ and demo-output/.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/setup.sh demo

# Quiet unless it fails.
quietly() {
    local log=demo-output/build.log
    "$@" >"$log" 2>&1 || {
        cat "$log" >&2
        return 1
    }
}

show() {
    echo
    echo "\$ seamrevise $*"
    ../build/release/bin/seamrevise "$@"
}

mkdir -p demo-output
echo "Building; the first time takes a few minutes."
quietly cmake --preset release -DSEAMREVISION_BUILD_BENCHMARKS=OFF
quietly cmake --build --preset release --target seamrevise

cd demo-output
show simulate wall.db --size 1920x1080 --grid 6x4 --band 16x16 --seed 1 --uncorrected 5,9 \
    --layers 4 --force
show revise wall.db -o single-layer --force
show revise wall.db -o layered --layers 4 --force
show verify single-layer wall.db --fresh
echo
echo "The wall and its coefficient files are in demo-output/."
