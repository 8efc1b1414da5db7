#!/usr/bin/env bash
# A PostgreSQL server for tests, in a new directory and on a socket there, without TCP.
#   tests/postgres.sh start STATE   starts one; STATE is a file that then holds the directory, or
#                                   "none: " and the reason why there is no server
#   tests/postgres.sh crash STATE   ends it as a crash would; again STATE starts it once more
#   tests/postgres.sh stop STATE    ends it and removes its directory and STATE
# Nobody needs to have it in mind: half an hour later it ends by itself.
set -euo pipefail

command=$1
state=$2
programs=$(pg_config --bindir 2>/dev/null || true)
[[ -x "$programs/initdb" ]] || programs=$(ls -d /usr/lib/postgresql/*/bin 2>/dev/null | tail -n1)

# The server refuses to run as root.
unprivileged() {
    if [[ "$(id -u)" -eq 0 ]]; then
        (cd / && runuser -u postgres -- "$@")
    else
        "$@"
    fi
}

none() {
    rm -rf "${dir:-}"
    echo "none: $1" >"$state"
    exit 0
}

run_server() {
    # Neither its output nor its input is that of whoever waits for this script.
    unprivileged timeout --signal=INT 30m "$programs/postgres" -D "$dir/data" -k "$dir" \
        -c listen_addresses= -c fsync=off -c shared_buffers=512MB \
        </dev/null >>"$dir/log" 2>&1 &
    for ((i = 0; i < 300; i++)); do
        "$programs/pg_isready" -q -h "$dir" && return 0
        sleep 0.1
    done
    return 1
}

end_server() {
    unprivileged "$programs/pg_ctl" stop -s -w -D "$dir/data" -m "$1" >/dev/null 2>&1 || true
}

if [[ "$command" != start ]]; then
    dir=$(cat "$state" 2>/dev/null || echo none)
    [[ -d "$dir/data" ]] || exit 0
fi
case $command in
start)
    [[ -e "$state" ]] && "$0" stop "$state"
    [[ -x "$programs/initdb" ]] || none "PostgreSQL is not installed"
    [[ "$(id -u)" -ne 0 ]] || runuser -u postgres -- true 2>/dev/null ||
        none "the server cannot run as root, and there is no user postgres"
    dir=$(mktemp -d /tmp/seamrevise-postgres.XXXXXX)
    [[ "$(id -u)" -ne 0 ]] || chown postgres "$dir"
    chmod 711 "$dir"
    unprivileged "$programs/initdb" -D "$dir/data" -U station -E UTF8 --locale=C.UTF-8 \
        --auth=trust --no-sync >"$dir.log" 2>&1 || none "initdb fails: $(tail -n1 "$dir.log")"
    mv "$dir.log" "$dir/log"
    [[ "$(id -u)" -ne 0 ]] || chown postgres "$dir/log"
    echo "local all guarded scram-sha-256" | cat - "$dir/data/pg_hba.conf" >"$dir/hba"
    cat "$dir/hba" >"$dir/data/pg_hba.conf"
    run_server || none "the server does not start: $(tail -n1 "$dir/log")"
    echo "$dir" >"$state"
    ;;
crash) end_server immediate ;;
again) run_server ;;
stop)
    end_server immediate
    rm -rf "$dir" "$state"
    ;;
esac
