#!/usr/bin/env bash
# Builds the preset dev and runs all tests. Says little unless something fails.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/setup.sh

mkdir -p build
log=build/test.log
run() {
    "$@" >"$log" 2>&1 </dev/null || {
        cat "$log" >&2
        exit 1
    }
}

echo "Building; the first time takes a few minutes."
run cmake --preset dev
run cmake --build --preset dev
echo "Testing."
run ctest --preset dev -j"$(nproc)"
grep -E '^Total Test time|tests passed' "$log" | tac
# ctest starts a PostgreSQL server and ends it; what is left says why it could not.
no_server=build/dev/tests/tmp/postgres
[[ ! -e "$no_server" ]] || echo "Not tested on PostgreSQL: $(sed 's/^none: //' "$no_server")"
