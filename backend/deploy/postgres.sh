#!/bin/sh
# A PostgreSQL server to throw away, made by pg_virtualenv, as root or not.
#   postgres.sh start FOLDER [N]      starts it; FOLDER/address then holds its address. With N, as many replicas follow it,
#                                     at FOLDER/address.1 and so on: a commit is answered when all of them show it
#   postgres.sh stop FOLDER           ends it with all its data
#   postgres.sh run FOLDER COMMAND…   runs the command with the address in KV_TEST_DATABASE
# When the process that called start is killed, the server notices and ends too. What a crash of the machine loses is
# of no use to anybody here, so nothing waits for the disk.
set -eu
action=$1
folder=$2
shift 2
here=$(cd "$(dirname "$0")" && pwd)

case $action in
start)
    rm -rf "$folder"
    mkdir -p "$folder"
    chmod 700 "$folder"
    command -v pg_virtualenv >/dev/null || { echo "postgres.sh: please install: postgresql" >&2; exit 1; }
    # Servers that are made at the same time would look for a free port at the same time and find the same one.
    port=$((12000 + $$ % 20000))
    # The words of the inner script are its own.
    # shellcheck disable=SC2016
    setsid pg_virtualenv -t -o fsync=off -o full_page_writes=off -o max_connections=300 \
        -c "--port=$port --locale=C.UTF-8 --encoding=UTF8" \
        sh -c '"$4/replicas.sh" start "$1" "$3" || { "$4/replicas.sh" stop "$1" "$3"; exit 1; }
            echo "postgresql://$PGUSER:$PGPASSWORD@$PGHOST:$PGPORT/" >"$1/address.new"
            mv "$1/address.new" "$1/address"
            while [ ! -e "$1/stop" ] && kill -0 "$2" 2>/dev/null; do sleep 0.2; done
            "$4/replicas.sh" stop "$1" "$3"' sh "$folder" "$PPID" "${1:-0}" "$here" \
        >"$folder/log" 2>&1 </dev/null &
    server=$!
    while [ ! -e "$folder/address" ]; do
        kill -0 "$server" 2>/dev/null || { cat "$folder/log" >&2; exit 1; }
        sleep 0.1
    done
    echo "$server" >"$folder/pid"
    ;;
stop)
    server=$(cat "$folder/pid")
    touch "$folder/stop"
    while kill -0 "$server" 2>/dev/null; do sleep 0.1; done
    ;;
run)
    KV_TEST_DATABASE=$(cat "$folder/address")
    export KV_TEST_DATABASE
    exec "$@"
    ;;
*)
    echo "postgres.sh: start, stop or run, not '$action'" >&2
    exit 2
    ;;
esac
