#!/usr/bin/env bash
# How long small requests take while whole plans of 100,000 nodes are being read: the 99th percentile against that of a
# quiet service, in turns. It installs nothing.
#
#   benchmarks/planservice-fairness.sh [BUILD_DIR]     default: build/bench, as ./dev bench leaves it
#
# PLAN_CACHE (0) is what the service has to keep plans in, in MiB; with none each read goes through the database.
# READERS ("1 6") says how many clients read plans, SECONDS_EACH (4) how long one run is, ROUNDS (5) how often each is run;
# the median counts. Other work on the machine shows in both numbers, and most in the quiet one.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

build=${1:-build/bench}
seconds=${SECONDS_EACH:-4}
rounds=${ROUNDS:-5}
service=$build/backend/planservice
wanted=5

missing=0
for tool in wrk curl; do
    command -v "$tool" >/dev/null || { echo "$0: '$tool' is missing; the Debian package has the same name" >&2; missing=1; }
done
[ -x "$service" ] || { echo "$0: '$service' is missing; build the target planservice first" >&2; missing=1; }
[ $missing -eq 0 ] || exit 1

dir=$(mktemp -d)
pids=()
finish() {
    [ ${#pids[@]} -eq 0 ] || kill "${pids[@]}" 2>/dev/null || true
    rm -rf "$dir"
}
trap finish EXIT

"$service" seed --database "$dir/plans.db" --nodes 100000 --json >"$dir/seeded"
plan=$(sed -E 's/.*"planId":"([^"]+)".*/\1/' "$dir/seeded")
mkfifo "$dir/ready"
"$service" serve --database "$dir/plans.db" --port 0 --log /dev/null --plan-cache "${PLAN_CACHE:-0}" >"$dir/ready" 2>"$dir/errors" &
pids+=($!)
read -r line <"$dir/ready" || { cat "$dir/errors" >&2; exit 1; }
base=${line##* }
small=${base}task-service/planNodes/${plan:0:16}00000010

# percentile: that of small requests on 4 connections, in microseconds; an answer that is no 200 ends the script.
percentile() {
    local out
    out=$(wrk -t 1 -c 4 -d "${seconds}s" --latency "$small")
    if grep -q -E 'Non-2xx|Socket errors' <<<"$out"; then
        echo "$0: requests failed" >&2
        echo "$out" >&2
        exit 1
    fi
    awk '$1 == "99%" { v = $2; f = v ~ /us$/ ? 1 : v ~ /ms$/ ? 1000 : 1000000; sub(/[a-z]+$/, "", v); print int(v * f) }' <<<"$out"
}

median() {
    sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'
}

read_plans() {
    while [ ! -e "$dir/enough" ]; do
        curl -s -o /dev/null "${base}task-service/plans/$plan" || return 0
    done
}

echo "$(awk -F': ' '/model name/ { print $2; exit }' /proc/cpuinfo), $(nproc) processors, load $(cut -d ' ' -f 1 /proc/loadavg) before"
echo "4 connections, $rounds runs of $seconds seconds each in turns, medians; clients and server share the machine"
echo
result=0
for readers in ${READERS:-1 6}; do
    : >"$dir/quiet"
    : >"$dir/busy"
    for ((i = 0; i < rounds; i++)); do
        percentile >>"$dir/quiet"
        reading=()
        for ((r = 0; r < readers; r++)); do
            read_plans &
            reading+=($!)
        done
        percentile >>"$dir/busy"
        # Each reads its plan to the end, so that nobody reads while it is quiet.
        touch "$dir/enough"
        wait "${reading[@]}"
        rm "$dir/enough"
    done
    awk -v q="$(median <"$dir/quiet")" -v b="$(median <"$dir/busy")" -v n="$readers" -v wanted=$wanted 'BEGIN {
        printf "99%% of small requests, quiet        %8d us\n", q
        printf "99%% of them, plans read by %-9d %8d us\n", n, b
        printf "ratio                               %8.2f  (wanted: at most %s)\n\n", b / q, wanted
        exit b <= wanted * q ? 0 : 1
    }' || result=1
done
exit $result
