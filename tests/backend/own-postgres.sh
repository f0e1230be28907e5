#!/bin/sh
# Runs a test program with a PostgreSQL server of its own, which it may stop and restart, as root or not:
#   own-postgres.sh PROGRAM [ARGUMENT...]
# Commits reach the disk as they do elsewhere.
set -eu
command -v pg_virtualenv >/dev/null || { echo "own-postgres.sh: please install: postgresql" >&2; exit 1; }
# Servers that are made at the same time would look for a free port at the same time and find the same one.
port=$((12000 + $$ % 20000))
# The words of the inner script are its own.
# shellcheck disable=SC2016
exec pg_virtualenv -t -o max_connections=100 -c "--port=$port --locale=C.UTF-8 --encoding=UTF8" \
    sh -c 'KV_TEST_DATABASE=postgresql://$PGUSER:$PGPASSWORD@$PGHOST:$PGPORT/ exec "$@"' sh "$@"
