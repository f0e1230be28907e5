#!/bin/sh
# Replicas of a PostgreSQL server to throw away, for postgres.sh, in the environment that pg_virtualenv makes:
#   replicas.sh start FOLDER N     the server gets N replicas; FOLDER/address.1 and so on hold their addresses
#   replicas.sh stop FOLDER N
set -eu
action=$1
folder=$2
count=$3
[ "$count" -gt 0 ] || exit 0
programs=/usr/lib/postgresql/$PGVERSION/bin
work=$(dirname "$PG_CLUSTER_CONF_ROOT")

# The server never runs as root.
as_server() {
    if [ "$(id -u)" = 0 ]; then
        (cd / && setpriv --reuid=postgres --regid=postgres --init-groups "$@")
    else
        "$@"
    fi
}

if [ "$action" = stop ]; then
    for i in $(seq "$count"); do
        as_server "$programs/pg_ctl" -D "$work/replica.$i" -s -m immediate stop || true
    done
    exit 0
fi

for i in $(seq "$count"); do
    data=$work/replica.$i
    port=$((PGPORT + i))
    as_server "$programs/pg_basebackup" --pgdata="$data" --write-recovery-conf --checkpoint=fast
    # Its settings are those of the server it follows. Readers must not be ended, nor hold up what is written.
    as_server "$programs/pg_ctl" -D "$data" -s -w -l "$data.log" -o "-p $port \
        -c config_file=$PG_CLUSTER_CONF_ROOT/$PGVERSION/regress/postgresql.conf -c data_directory=$data \
        -c external_pid_file=$data.pid -c unix_socket_directories= -c hot_standby_feedback=on" start
    echo "postgresql://$PGUSER:$PGPASSWORD@$PGHOST:$port/" >"$folder/address.$i"
done
psql -qX -c "ALTER SYSTEM SET synchronous_standby_names = 'FIRST $count (*)'" \
    -c "ALTER SYSTEM SET synchronous_commit = remote_apply" -c "SELECT pg_reload_conf()" >"$folder/replicas.log"
until [ "$(psql -AtX -c "SELECT count(*) FROM pg_stat_replication WHERE sync_state = 'sync'")" = "$count" ]; do
    sleep 0.1
done
