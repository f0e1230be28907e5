#!/bin/bash
# Several planservice processes on one PostgreSQL database, behind one address, all on loopback:
#   set.sh [--database postgresql://…] [--replicas N] [--processes N] [--port N] [--program PLANSERVICE]
#          [-- options of serve]
# Without --database a PostgreSQL server to throw away is started; it may have replicas, each with a planservice of its own
# that answers what reads, and shows every change as soon as it was answered. Prints the address when all is ready, and a
# folder: "database" in it holds the database's address, "ports" and "pids" those of the processes, "log.N" what they
# say; those of replicas come last.
# Ctrl+C or SIGTERM ends everything, each process after the requests that it has begun.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
database= replicas=0 processes=2 port=8700 program=planservice

complain() {
    echo "set.sh: $*" >&2
    exit 2
}
while [ $# -gt 0 ]; do
    case $1 in
        --database | --replicas | --processes | --port | --program)
            [ $# -gt 1 ] || complain "$1 needs a value"
            printf -v "${1#--}" %s "$2"
            shift 2
            ;;
        --) shift; break ;;
        *) complain "there is no option '$1'; see the beginning of this file" ;;
    esac
done
[ -z "$database" ] || [ "$replicas" = 0 ] || complain "--replicas are those of a server to throw away; leave out --database"
PATH=$PATH:/usr/sbin
command -v nginx >/dev/null || complain "please install: nginx-light"
command -v "$program" >/dev/null || complain "there is no program '$program'; name it with --program"
[ "$port" != 0 ] ||
    port=$(perl -MIO::Socket::INET -e 'print IO::Socket::INET->new(Listen => 1, LocalAddr => "127.0.0.1")->sockport')

folder=$(mktemp -d)
services=() nginx= own_server=
end() {
    trap '' INT TERM
    [ -z "$nginx" ] || kill -QUIT "$nginx" 2>/dev/null || true
    [ -z "$nginx" ] || wait "$nginx" || true
    [ ${#services[@]} -eq 0 ] || kill "${services[@]}" 2>/dev/null || true
    [ ${#services[@]} -eq 0 ] || wait "${services[@]}" || true
    [ -z "$own_server" ] || "$here/postgres.sh" stop "$folder/postgres"
    rm -rf "$folder"
}
trap end EXIT
trap 'exit 0' INT TERM

if [ -z "$database" ]; then
    "$here/postgres.sh" start "$folder/postgres" "$replicas"
    own_server=yes
    database=$(cat "$folder/postgres/address")postgres
fi
(umask 077 && echo "$database" >"$folder/database")

# serve DATABASE [OPTION...]: starts a process; $line then describes it to nginx.
serve() {
    local number=$((${#services[@]} + 1)) ready address
    mkfifo "$folder/ready.$number"
    "$program" serve --database "$@" --port 0 >"$folder/ready.$number" 2>"$folder/log.$number" &
    services+=($!)
    read -r ready <"$folder/ready.$number" || { cat "$folder/log.$number" >&2; exit 1; }
    address=${ready##*http://}
    address=${address%/}
    echo "${address##*:}" >>"$folder/ports"
    echo "${services[-1]}" >>"$folder/pids"
    # One that ends is left out for a moment; what it had not begun goes to another.
    line="server $address max_fails=1 fail_timeout=2s"
}
writers= readers=
for ((i = 1; i <= processes; ++i)); do
    serve "$database" --create "$@"
    writers+="$line; "
    # They read as well, where no replica does.
    readers+="$line$([ "$replicas" = 0 ] || echo " backup"); "
done
for ((i = 1; i <= replicas; ++i)); do
    serve "$(cat "$folder/postgres/address.$i")postgres" "$@"
    readers+="$line; "
done

cat >"$folder/nginx.conf" <<CONF
daemon off;
pid $folder/nginx.pid;
error_log $folder/nginx.log;
events { worker_connections 4096; }
http {
    access_log off;
    client_max_body_size 256m;
    client_body_temp_path $folder/nginx-body;
    proxy_temp_path $folder/nginx-proxy;
    fastcgi_temp_path $folder/nginx-fastcgi;
    uwsgi_temp_path $folder/nginx-uwsgi;
    scgi_temp_path $folder/nginx-scgi;
    upstream writers { least_conn; $writers keepalive 64; }
    upstream readers { least_conn; $readers keepalive 64; }
    map \$request_method \$planservice { GET readers; HEAD readers; default writers; }
    server {
        listen 127.0.0.1:$port;
        location / {
            proxy_pass http://\$planservice;
            proxy_http_version 1.1;
            proxy_set_header Connection "";
            proxy_read_timeout 300s;
        }
    }
}
CONF
nginx -e "$folder/nginx.log" -c "$folder/nginx.conf" &
nginx=$!
until curl -fs -o "$folder/health" "http://127.0.0.1:$port/health"; do
    kill -0 "$nginx" 2>/dev/null || { cat "$folder/nginx.log" >&2; exit 1; }
    sleep 0.1
done
echo "planservice listening on http://127.0.0.1:$port/ with $processes processes$([ "$replicas" = 0 ] || echo " and $replicas replicas"); more in $folder"
wait "$nginx"
complain "nginx ended: $(cat "$folder/nginx.log")"
