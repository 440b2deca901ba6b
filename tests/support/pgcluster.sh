#!/bin/bash
# Throwaway PostgreSQL server for the tests.
#   pgcluster.sh start DIR   initdb a fresh cluster, start it on a free loopback
#                            port and write DIR/connection.ini
#   pgcluster.sh stop DIR    stop the server and remove everything it made
#   pgcluster.sh halt DIR    stop the server at once, as if it crashed; keep it
#   pgcluster.sh resume DIR  start a halted server again on the same port
# The cluster lives in its own temporary directory (owned by the "postgres"
# user when run as root, since initdb refuses root); DIR only keeps the
# connection file and the cluster's path.
set -u

BINDIR=${PG_BINDIR:-/usr/lib/postgresql/15/bin}
ROLE=veklari_test

as_owner() {
    if [ "$(id -u)" = 0 ]; then
        runuser -u postgres -- "$@"
    else
        "$@"
    fi
}

port_in_use() {
    (exec 3<>"/dev/tcp/127.0.0.1/$1") 2>/dev/null
}

stop_cluster() {
    local dir=$1
    local cluster=""
    [ -f "$dir/cluster" ] && cluster=$(cat "$dir/cluster")
    if [ -n "$cluster" ] && [ -d "$cluster/data" ]; then
        as_owner "$BINDIR/pg_ctl" -D "$cluster/data" -m immediate -w stop >/dev/null 2>&1 || true
    fi
    if [ -n "$cluster" ] && [ -d "$cluster" ]; then
        rm -rf "$cluster"
    fi
    rm -rf "$dir"
}

start_cluster() {
    local dir=$1
    stop_cluster "$dir"
    mkdir -p "$dir" || return 1

    local cluster
    cluster=$(mktemp -d /tmp/veklari-pg.XXXXXX) || return 1
    echo "$cluster" >"$dir/cluster"
    chmod 700 "$cluster"
    if [ "$(id -u)" = 0 ]; then
        chown postgres:postgres "$cluster" || return 1
    fi

    local password
    password=$(head -c 18 /dev/urandom | base64 | tr -dc 'A-Za-z0-9')
    as_owner "$BINDIR/initdb" -D "$cluster/data" -U postgres --auth-local=trust \
        --auth-host=scram-sha-256 -E UTF8 --locale=C.UTF-8 >"$cluster/initdb.log" 2>&1 || {
        cat "$cluster/initdb.log" >&2
        return 1
    }

    local port attempt
    for attempt in $(seq 1 20); do
        port=$((20000 + RANDOM % 40000))
        port_in_use "$port" && continue
        if as_owner "$BINDIR/pg_ctl" -D "$cluster/data" -l "$cluster/server.log" -w -t 60 \
            -o "-p $port -k $cluster -c listen_addresses=127.0.0.1 -c fsync=off" \
            start >/dev/null 2>&1; then
            break
        fi
        port=""
    done
    if [ -z "$port" ]; then
        echo "PostgreSQL did not start:" >&2
        cat "$cluster/server.log" >&2
        return 1
    fi

    as_owner psql -v ON_ERROR_STOP=1 -q -h "$cluster" -p "$port" -U postgres -d postgres \
        -c "CREATE ROLE $ROLE LOGIN CREATEDB PASSWORD '$password'" || return 1

    echo "$port" >"$dir/port"
    cat >"$dir/connection.ini" <<INI
[postgresql]
host=127.0.0.1
port=$port
username=$ROLE
password=$password
socketDir=$cluster
INI
    echo "PostgreSQL test server on 127.0.0.1:$port ($cluster)"
}

halt_cluster() {
    local cluster
    cluster=$(cat "$1/cluster") || return 1
    as_owner "$BINDIR/pg_ctl" -D "$cluster/data" -m immediate -w stop >/dev/null
}

resume_cluster() {
    local cluster port
    cluster=$(cat "$1/cluster") && port=$(cat "$1/port") || return 1
    as_owner "$BINDIR/pg_ctl" -D "$cluster/data" -l "$cluster/server.log" -w -t 60 \
        -o "-p $port -k $cluster -c listen_addresses=127.0.0.1 -c fsync=off" start >/dev/null
}

case "${1:-}" in
start)
    [ $# -eq 2 ] || { echo "usage: $0 start|stop DIR" >&2; exit 2; }
    if ! start_cluster "$2"; then
        stop_cluster "$2"
        exit 1
    fi
    ;;
stop)
    [ $# -eq 2 ] || { echo "usage: $0 start|stop DIR" >&2; exit 2; }
    stop_cluster "$2"
    ;;
halt | resume)
    [ $# -eq 2 ] || { echo "usage: $0 $1 DIR" >&2; exit 2; }
    "$1_cluster" "$2"
    ;;
*)
    echo "usage: $0 start|stop|halt|resume DIR" >&2
    exit 2
    ;;
esac
