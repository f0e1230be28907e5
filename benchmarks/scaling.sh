#!/bin/bash
# How a site grows, and what a read of a whole plan costs against a static file:
#   benchmarks/scaling.sh [PLANSERVICE] [SECONDS]
# One process on SQLite, then one, two, and one with a replica on PostgreSQL behind the same nginx, answer for single nodes:
# requests a second, and CPU time of all planservice processes and of each server a request, which tells where cores are
# too few to show the first; and how long it takes to store a setting. Then nginx serves the bytes of
# a plan of 10,000 nodes as a file, and planservice, on SQLite, the plan itself, as it is kept and, with nothing kept, from
# the database each time.
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
for program in wrk nginx pg_virtualenv psql curl; do
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
# Of a PostgreSQL server and all that it has started, by its address.
cpu_of_server() {
    local any main pid stat sum
    any=$(psql -AtX -c "SELECT pid FROM pg_stat_activity WHERE backend_type = 'checkpointer'" "$1")
    read -r -a stat <"/proc/$any/stat"
    main=${stat[3]}
    read -r -a stat <"/proc/$main/stat"
    sum=$((stat[13] + stat[14] + stat[15] + stat[16]))
    for pid in $(pgrep -P "$main"); do
        ! read -r -a stat 2>/dev/null <"/proc/$pid/stat" || sum=$((sum + stat[13] + stat[14]))
    done
    echo "$sum"
}
# per_request BEFORE AFTER RATE: ticks of a run of these seconds as microseconds a request.
per_request() {
    awk -v t=$(($2 - $1)) -v n="$3" -v s="$((seconds + 1))" -v hz="$(getconf CLK_TCK)" \
        'BEGIN { printf "%.0f\n", t * 1e6 / hz / (n * s) }'
}
# Median milliseconds of one client that stores a setting.
store_time() {
    echo 'wrk.method = "PUT"; wrk.body = "{\"value\": 1}"' >"$work/put.lua"
    wrk -t 1 -c 1 -d "$seconds" --latency -s "$work/put.lua" "$1" >"$work/wrk"
    ! grep -q 'Non-2xx\|Socket errors' "$work/wrk" || { cat "$work/wrk" >&2; exit 1; }
    awk '$1 == "50%" { v = $2; f = v ~ /us$/ ? 0.001 : v ~ /ms$/ ? 1 : 1000; sub(/[a-z]+$/, "", v)
                       printf "%.2f\n", v * f }' "$work/wrk"
}
# load URL [PID...]: requests a second, and CPU microseconds of the processes a request
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

node_of() {
    curl -fs "$1" | grep -oE '"_id":"[^"]+"' | sed -n 3p | cut -d '"' -f 4
}
plan_of() {
    sed -E 's/.*"planId":"([^"]+)".*/\1/'
}

plan=$("$service" seed --database "$work/small.db" --json | plan_of)
mkfifo "$work/ready.small"
"$service" serve --database "$work/small.db" --port 0 --log /dev/null >"$work/ready.small" &
running=($!)
read -r ready <"$work/ready.small"
front=${ready##* }
node=$(node_of "${front}task-service/plans/$plan")
read -r rate cost < <(load "${front}task-service/planNodes/$node" "${running[0]}")
echo "SQLite, 1 planservice: $rate nodes a second, $cost us of its CPU time each;" \
    "a setting is stored in $(store_time "${front}user-service/settings/k") ms"
kill "${running[0]}"
wait "${running[0]}"
running=()

for kind in "1 0" "2 0" "1 1"; do
    read -r count replicas <<<"$kind"
    mkfifo "$work/ready.$count.$replicas"
    "$here/backend/deploy/set.sh" --program "$service" --processes "$count" --replicas "$replicas" --port 0 \
        -- --log /dev/null >"$work/ready.$count.$replicas" &
    set=$!
    running=("$set")
    read -r ready <"$work/ready.$count.$replicas"
    folder=${ready##* }
    front=${ready#*listening on } front=${front%% *}
    plan=$("$service" seed --database "$(cat "$folder/database")" --json | plan_of)
    node=$(node_of "${front}task-service/plans/$plan")
    mapfile -t pids <"$folder/pids"
    servers=("$folder/postgres/address"*)
    before=() server_costs=
    for i in "${!servers[@]}"; do
        before[i]=$(cpu_of_server "$(cat "${servers[i]}")postgres")
    done
    read -r rate cost < <(load "${front}task-service/planNodes/$node" "${pids[@]}")
    for i in "${!servers[@]}"; do
        server_costs+=" $(per_request "${before[i]}" "$(cpu_of_server "$(cat "${servers[i]}")postgres")" "$rate")"
    done
    echo "PostgreSQL, $count planservice, $replicas replicas: $rate nodes a second, $cost us of planservice's CPU time each," \
        "of the servers'$server_costs us; a setting is stored in $(store_time "${front}user-service/settings/k") ms"
    if [ "$replicas" = 0 ]; then
        rates[count]=$rate costs[count]=$cost
    fi
    kill "$set"
    wait "$set"
    running=()
done
awk -v a="${rates[1]}" -v b="${rates[2]}" -v c="${costs[1]}" -v d="${costs[2]}" \
    'BEGIN { printf "two against one: %.2f in throughput, %.2f in CPU time a request\n", b / a, d / c }'

plan=$("$service" seed --database "$work/plans.db" --nodes 10000 --json | plan_of)
# serve NAME OPTION...: starts a service on that database; $url is the plan.
serve() {
    mkfifo "$work/ready.$1"
    "$service" serve --database "$work/plans.db" --port 0 --log /dev/null "${@:2}" >"$work/ready.$1" &
    running+=($!)
    read -r ready <"$work/ready.$1"
    url=${ready##* }task-service/plans/$plan
}
serve reads --plan-cache 0
reads_url=$url
serve keeps
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
read -r -a nginx_workers < <(cat "/proc/${running[2]}/task/${running[2]}/children" && echo)
read -r static static_cost < <(load "http://127.0.0.1:$port/plan.json" "${nginx_workers[@]}")
read -r own cost < <(load "$url" "${running[1]}")
read -r uncached uncached_cost < <(load "$reads_url" "${running[0]}")
echo "plan of 10,000 nodes, $(stat -c %s "$work/static/plan.json") bytes, a second, with CPU time of the server each:" \
    "$static by nginx as a file ($static_cost us), $own kept ($cost us), $uncached from the database ($uncached_cost us)"
awk -v a="$own" -v b="$static" -v c="$uncached" \
    'BEGIN { printf "against nginx: %.3f kept, %.3f from the database\n", a / b, c / b }'
[ -z "${KV_RATIOS:-}" ] || awk -v a="$own" -v b="$static" -v u="$uncached" -v one="${rates[1]}" -v two="${rates[2]}" -v c="${costs[1]}" -v d="${costs[2]}" \
    'BEGIN { printf "scaling\tplan of 10,000 nodes / the same bytes as a file by nginx\t%.3f\t2\t0\n", b / a
             printf "scaling\tthe same read from the database each time / a file by nginx\t%.3f\t0\t0\n", b / u
             printf "scaling\tCPU time of a node, two processes / one\t%.3f\t0\t0\n", d / c }' >>"$KV_RATIOS"
