#!/bin/bash
# What a site relies on when several processes serve it: deploy-test.sh SET_SCRIPT PLANSERVICE
set -euo pipefail
script=$1 program=$2
work=$(mktemp -d)
fail() {
    echo "deploy-test: $*" >&2
    exit 1
}
mkfifo "$work/ready"
trap 'kill "$set" 2>/dev/null || true; wait "$set" || true; rm -rf "$work"' EXIT
# start [OPTION...]: a set with two processes more than these options say.
start() {
    "$script" --program "$program" --processes 2 --port 0 "$@" >"$work/ready" 2>"$work/errors" &
    set=$!
    read -r ready <"$work/ready" || fail "the set did not start: $(cat "$work/errors")"
    folder=${ready##* }
    front=${ready#*listening on } front=${front%% *}
    database=$(cat "$folder/database")
    mapfile -t ports <"$folder/ports"
    mapfile -t pids <"$folder/pids"
}
# Ends it, with all of it.
finish() {
    kill "$set"
    wait "$set" || fail "the set ended with code $?"
    for pid in "${pids[@]}"; do
        ! kill -0 "$pid" 2>/dev/null || fail "process $pid still runs"
    done
    [ ! -e "$folder" ] || fail "the set left $folder behind"
}
start
[ ${#pids[@]} -eq 2 ] || fail "there are ${#pids[@]} processes"

# Status of a request; the reply goes to $work/reply.
status() {
    curl -s -m 60 -o "$work/reply" -w '%{http_code}' "$@"
}
is() {
    [ "$1" = "$2" ] || fail "$3: $1 instead of $2: $(cat "$work/reply")"
}

plan=$("$program" seed --database "$database" --floors 2 | sed -E 's/.* plan ([^ ]+) .*/\1/')
is "$(status "${front}task-service/plans/$plan")" 200 "without tokens a plan is read"

# The first token counts at once, for each process.
token=$("$program" token create --database "$database" --user ann --project sample-project \
    --rights read=all,create,edit,delete | tail -n 1)
for port in "${ports[@]}"; do
    is "$(status "http://127.0.0.1:$port/task-service/plans/$plan")" 401 "a process knows of the token"
done
with=(-H "Authorization: Bearer $token")
is "$(status "${with[@]}" "${front}task-service/plans/$plan")" 200 "the front passes the token"

# What one process was told, the other one tells.
for round in 1 2 3; do
    is "$(status "${with[@]}" -X PUT -d "{\"value\": $round}" \
        "http://127.0.0.1:${ports[round % 2]}/user-service/settings/k")" 200 "a setting is written"
    is "$(status "${with[@]}" "http://127.0.0.1:${ports[1 - round % 2]}/user-service/settings/k")" 200 "it is read"
    [ "$(cat "$work/reply")" = "{\"value\":$round}" ] || fail "the other process said $(cat "$work/reply")"
done

# One process is killed while clients go on.
for client in 1 2 3 4; do
    for ((i = 0; i < 60; ++i)); do
        curl -s -m 60 -o /dev/null -w '%{http_code}\n' "${with[@]}" "${front}task-service/plans/$plan"
    done >"$work/client.$client" &
    clients+=($!)
done
until [ "$(cat "$work"/client.* | wc -l)" -ge 40 ]; do sleep 0.05; done
kill -KILL "${pids[0]}"
[ "$(cat "$work"/client.* | wc -l)" -lt 240 ] || fail "the clients were done before the process was killed"
wait "${clients[@]}"
[ "$(sort -u "$work"/client.*)" = 200 ] || fail "the clients got $(sort "$work"/client.* | uniq -c | tr '\n' ' ')"
is "$(status "${with[@]}" -X PUT -d '{"value": 4}' "${front}user-service/settings/k")" 200 "one process is enough"

finish

# With a replica, which answers what reads, and shows what was written as soon as the writer knows.
start --replicas 1
[ ${#pids[@]} -eq 3 ] || fail "there are ${#pids[@]} processes beside a replica"
reader=http://127.0.0.1:${ports[2]}/
is "$(status -X PUT -d '{"value": 0}' "${reader}user-service/settings/k")" 503 "a replica changes nothing"
grep -q '"readOnly"' "$work/reply" || fail "the replica said $(cat "$work/reply")"
for ((round = 1; round <= 100; ++round)); do
    is "$(status -X PUT -d "{\"value\": $round}" "${front}user-service/settings/k")" 200 "a writer writes"
    is "$(status "${front}user-service/settings/k")" 200 "somebody reads"
    [ "$(cat "$work/reply")" = "{\"value\":$round}" ] || fail "after $round was written the front said $(cat "$work/reply")"
done
[ "$(grep -c '"GET".*/user-service/settings' "$folder/log.3")" = 100 ] || fail "the replica was not who read: $(cat "$folder/log.3")"
# Without the process on the replica the others read.
kill -KILL "${pids[2]}"
is "$(status "${front}user-service/settings/k")" 200 "writers read where no reader does"
finish
