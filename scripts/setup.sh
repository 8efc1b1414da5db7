#!/usr/bin/env bash
# Installs the Debian packages that are needed, where they are missing.
#   scripts/setup.sh demo   to build and run the library and the program
#   scripts/setup.sh        also what scripts/test.sh and scripts/bench.sh need
#   scripts/setup.sh ci     also the second compiler, the formatter and the linter
set -euo pipefail

packages=(
    g++ cmake ninja-build pkg-config
    qtbase5-dev libqt5sql5-sqlite libcli11-dev libpq-dev
)
tests=(
    git
    libgtest-dev libbenchmark-dev
    libssl-dev openssl postgresql libqt5sql5-psql python3-numpy python3-jsonschema
)
checks=(
    clang clang-format clang-tidy libclang-rt-dev
)
case "${1:-}" in
    demo) ;;
    "") packages+=("${tests[@]}") ;;
    ci) packages+=("${tests[@]}" "${checks[@]}") ;;
    *)
        echo "setup: there is no group $1; demo, ci or nothing" >&2
        exit 2
        ;;
esac

is_installed() {
    [[ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null)" == "installed" ]]
}

if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
    echo "setup: no apt on this machine; these packages (Debian 12 names) are needed:" >&2
    echo "    ${packages[*]}" >&2
    exit 0
fi

missing=()
for package in "${packages[@]}"; do
    is_installed "$package" || missing+=("$package")
done
[[ ${#missing[@]} -eq 0 ]] && exit 0

as_root=()
if [[ "$(id -u)" -ne 0 ]]; then
    if ! command -v sudo >/dev/null || ! sudo -n true 2>/dev/null; then
        echo "setup: packages are missing and this is not root; install them with" >&2
        echo "    sudo apt-get install ${missing[*]}" >&2
        exit 1
    fi
    as_root=(sudo -n)
fi

echo "setup: installing ${missing[*]}"
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
