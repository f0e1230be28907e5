#!/usr/bin/env bash
# planservice under load on loopback. Prints rates and their ratios, which alone mean something on another machine:
# a small plan against the HTTP library answering as many constant bytes, and a page of 50 among 100,000 plans
# against one among 1,000. It installs nothing.
#
#   benchmarks/planservice-load.sh [BUILD_DIR]     default: build/bench, as ./dev bench leaves it
#
# SECONDS_EACH (4) is the length of one run, ROUNDS (3) how often each is run, in turns; the median counts.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

build=${1:-build/bench}
seconds=${SECONDS_EACH:-4}
rounds=${ROUNDS:-3}
service=$build/backend/planservice
constant=$build/benchmarks/constant_server
fill=$build/benchmarks/fill_plans

missing=0
for tool in wrk curl; do
    command -v "$tool" >/dev/null || { echo "$0: '$tool' is missing; the Debian package has the same name" >&2; missing=1; }
done
for program in "$service" "$constant" "$fill"; do
    [ -x "$program" ] || { echo "$0: '$program' is missing; build the target ${program##*/} first" >&2; missing=1; }
done
[ $missing -eq 0 ] || exit 1

dir=$(mktemp -d)
pids=()
finish() {
    [ ${#pids[@]} -eq 0 ] || kill "${pids[@]}" 2>/dev/null || true
    rm -rf "$dir"
}
trap finish EXIT

# start NAME COMMAND...: runs a server and sets $address to what its first line ends with.
start() {
    local name=$1 line
    shift
    mkfifo "$dir/$name"
    "$@" >"$dir/$name" 2>"$dir/$name.log" &
    pids+=($!)
    read -r line <"$dir/$name" || { cat "$dir/$name.log" >&2; exit 1; }
    address=${line##* }
}

# rate URL: requests per second; an answer that is no 200 ends the script.
rate() {
    local out
    out=$(wrk -t 1 -c 16 -d "${seconds}s" "$1")
    if grep -q -E 'Non-2xx|Socket errors' <<<"$out"; then
        echo "$0: requests failed: $1" >&2
        echo "$out" >&2
        exit 1
    fi
    awk '/Requests\/sec/ { print int($2) }' <<<"$out"
}

median() {
    sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'
}

# compare NAME URL NAME URL TARGET: both in turns, their medians, and the first in relation to the second.
compare() {
    local i
    : >"$dir/a"
    : >"$dir/b"
    for ((i = 0; i < rounds; i++)); do
        rate "$2" >>"$dir/a"
        rate "$4" >>"$dir/b"
    done
    awk -v a="$(median <"$dir/a")" -v b="$(median <"$dir/b")" -v an="$1" -v bn="$3" -v target="$5" 'BEGIN {
        printf "%-34s %8d requests/s\n%-34s %8d requests/s\n", an, a, bn, b
        printf "%-34s %8.2f  (wanted: at least %s)\n\n", "ratio", a / b, target
        exit a / b >= target ? 0 : 1
    }'
}

"$service" seed --database "$dir/plans.db" --nodes 1 --json >"$dir/seeded"
plan=$(sed -E 's/.*"planId":"([^"]+)".*/\1/' "$dir/seeded")
"$fill" "$dir/plans.db" thousand 1000
"$fill" "$dir/plans.db" hundred-thousand 100000

start service "$service" serve --database "$dir/plans.db" --port 0 --log /dev/null
base=$address
bytes=$(curl -fsS "${base}task-service/plans/$plan" | wc -c)
start constant "$constant" "$bytes"

echo "$(awk -F': ' '/model name/ { print $2; exit }' /proc/cpuinfo), $(nproc) processors, load $(cut -d ' ' -f 1 /proc/loadavg) before"
echo "16 connections, $rounds runs of $seconds seconds each in turns, medians; client and server share the machine"
echo
result=0
compare "plan of $bytes bytes" "${base}task-service/plans/$plan" "constant of $bytes bytes" "$address" 0.4 || result=1
page="plans?where=%7B%7D&skip=500&limit=50"
compare "page of 50 among 100,000 plans" "${base}task-service/projects/hundred-thousand/$page" \
    "page of 50 among 1,000 plans" "${base}task-service/projects/thousand/$page" 0.8 || result=1
exit $result
