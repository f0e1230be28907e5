#!/bin/sh
# Runs a test program with a PostgreSQL server of its own, which it may stop and restart, as root or not:
#   own-postgres.sh PROGRAM [ARGUMENT...]
# Commits reach the disk as they do elsewhere.
set -eu
# The words of the inner script are its own.
# shellcheck disable=SC2016
exec pg_virtualenv -t -o max_connections=100 -c '--locale=C.UTF-8 --encoding=UTF8' \
    sh -c 'KV_TEST_DATABASE=postgresql://$PGUSER:$PGPASSWORD@$PGHOST:$PGPORT/ exec "$@"' sh "$@"
