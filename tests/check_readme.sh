#!/usr/bin/env bash
# Runs the README's own command lines in a copy of what is tracked, as a reader of it would. All but
# scripts/test.sh, which runs this.
#   tests/check_readme.sh WORK_DIR
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source_dir=$PWD
work=$1

commands=$(awk '/^```sh$/ { inside = 1; next } /^```$/ { inside = 0 } inside' README.md |
    grep -vE '^scripts/test\.sh')
[[ $(wc -l <<<"$commands") -ge 10 ]] || { echo "too few command lines in README.md"; exit 1; }

rm -rf "$work"
mkdir -p "$work/clone"
git -c safe.directory="$source_dir" ls-files -z --cached --others --exclude-standard |
    while IFS= read -r -d '' file; do
        [[ ! -e "$file" ]] || printf '%s\0' "$file"
    done | xargs -0 cp --parents -t "$work/clone"

# The shell splits what pkg-config prints at blanks, which the work directory may have.
HOME=$(mktemp -d /tmp/readme.XXXXXX)
export HOME
trap 'rm -rf "$HOME"' EXIT
cd "$work/clone"
printf 'set -euxo pipefail\n%s\n' "$commands" | bash -s
