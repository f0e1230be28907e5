#!/bin/bash
# What more processes on one PostgreSQL database bring, and what a read of a whole plan costs against a static file:
#   benchmarks/scaling.sh [PLANSERVICE] [SECONDS]
# One and two processes behind the same nginx answer for single nodes: requests a second, and CPU time of all
# planservice processes a request, which tells where cores are too few to show the first. Then nginx serves the bytes of
# a plan of 10,000 nodes as a file, and planservice, on SQLite, the plan itself.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
service=${1:-$here/build/bench/backend/planservice} seconds=${2:-5}
work=$(mktemp -d)
running=()
end() {
    [ ${#running[@]} -eq 0 ] || kill "${running[@]}" 2>/dev/null || true
    [ ${#running[@]} -eq 0 ] || wait "${running[@]}" || true
    rm -rf "$work"
}
trap end EXIT
for program in wrk nginx pg_virtualenv curl; do
    PATH=$PATH:/usr/sbin command -v "$program" >/dev/null || { echo "scaling.sh: $program is missing" >&2; exit 1; }
done

# In clock ticks, of all processes named.
cpu() {
    local pid sum=0 stat
    for pid in "$@"; do
        read -r -a stat <"/proc/$pid/stat"
        sum=$((sum + stat[13] + stat[14]))
    done
    echo "$sum"
}
# load URL [PID...]: requests a second, errors and CPU microseconds of the processes a request
load() {
    local url=$1 before after requests
    shift
    wrk -t 1 -c 16 -d 1 "$url" >/dev/null
    before=$(cpu "$@")
    wrk -t 1 -c 16 -d "$seconds" "$url" >"$work/wrk"
    after=$(cpu "$@")
    ! grep -q 'Non-2xx\|Socket errors' "$work/wrk" || { cat "$work/wrk" >&2; exit 1; }
    requests=$(awk '/requests in/ { print $1 }' "$work/wrk")
    awk -v n="$requests" -v s="$seconds" -v t=$((after - before)) -v hz="$(getconf CLK_TCK)" \
        'BEGIN { printf "%.1f %.0f\n", n / s, t * 1e6 / hz / n }'
}

cores=$(nproc)
echo "$cores cores, load before $(cut -d ' ' -f 1 /proc/loadavg)"
for count in 1 2; do
    mkfifo "$work/ready.$count"
    "$here/backend/deploy/set.sh" --program "$service" --processes "$count" --port 0 -- --log /dev/null \
        >"$work/ready.$count" &
    set=$!
    running=("$set")
    read -r ready <"$work/ready.$count"
    folder=${ready##* }
    front=${ready#*listening on } front=${front%% *}
    plan=$("$service" seed --database "$(cat "$folder/database")" --json | sed -E 's/.*"planId":"([^"]+)".*/\1/')
    node=$(curl -fs "${front}task-service/plans/$plan" | grep -oE '"_id":"[^"]+"' | sed -n 3p | cut -d '"' -f 4)
    mapfile -t pids <"$folder/pids"
    read -r rate cost < <(load "${front}task-service/planNodes/$node" "${pids[@]}")
    echo "PostgreSQL, $count planservice: $rate nodes a second, $cost us of their CPU time each"
    rates[count]=$rate costs[count]=$cost
    kill "$set"
    wait "$set"
    running=()
done
awk -v a="${rates[1]}" -v b="${rates[2]}" -v c="${costs[1]}" -v d="${costs[2]}" \
    'BEGIN { printf "two against one: %.2f in throughput, %.2f in CPU time a request\n", b / a, d / c }'

"$service" seed --database "$work/plans.db" --nodes 10000 --json >"$work/seeded"
plan=$(sed -E 's/.*"planId":"([^"]+)".*/\1/' "$work/seeded")
mkfifo "$work/ready"
"$service" serve --database "$work/plans.db" --port 0 --log /dev/null >"$work/ready" &
running=($!)
read -r ready <"$work/ready"
url=${ready##* }task-service/plans/$plan
mkdir "$work/static"
curl -fs "$url" >"$work/static/plan.json"
port=$(perl -MIO::Socket::INET -e 'print IO::Socket::INET->new(Listen => 1, LocalAddr => "127.0.0.1")->sockport')
cat >"$work/nginx.conf" <<CONF
daemon off; pid $work/nginx.pid; error_log $work/nginx.log; worker_processes 2;
events { worker_connections 512; }
http { access_log off; sendfile on; tcp_nopush on; default_type application/json;
    client_body_temp_path $work/n1; proxy_temp_path $work/n2; fastcgi_temp_path $work/n3;
    uwsgi_temp_path $work/n4; scgi_temp_path $work/n5;
    server { listen 127.0.0.1:$port; root $work/static; } }
CONF
chmod 755 "$work" "$work/static"
PATH=$PATH:/usr/sbin nginx -e "$work/nginx.log" -c "$work/nginx.conf" &
running+=($!)
until curl -fs -o /dev/null "http://127.0.0.1:$port/plan.json"; do sleep 0.1; done
read -r static _ < <(load "http://127.0.0.1:$port/plan.json" $$)
read -r own cost < <(load "$url" "${running[0]}")
awk -v a="$own" -v b="$static" -v c="$cost" -v n="$(stat -c %s "$work/static/plan.json")" \
    'BEGIN { printf "plan of 10,000 nodes, %.1f MB: %.1f a second, %.0f us of CPU time each; as a file by nginx %.1f; ratio %.3f\n",
             n / 1e6, a, c, b, a / b }'
[ -z "${KV_RATIOS:-}" ] || awk -v a="$own" -v b="$static" -v one="${rates[1]}" -v two="${rates[2]}" -v c="${costs[1]}" -v d="${costs[2]}" \
    'BEGIN { printf "scaling\tplan of 10,000 nodes / the same bytes as a file by nginx\t%.3f\t0\n", b / a
             printf "scaling\tCPU time of a node, two processes / one\t%.3f\t0\n", d / c }' >>"$KV_RATIOS"
