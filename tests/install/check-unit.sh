#!/usr/bin/env bash
# Starts the service as its unit does: with the line of the unit file, in a folder that stands for the system's root.
#     check-unit.sh PLANSERVICE UNIT [SYSTEMD-ANALYZE]
set -euo pipefail
program=$1 unit=$2 analyze=${3:-}
work=$(mktemp -d)
server=
end() {
    [ -z "$server" ] || kill "$server" 2>/dev/null || true
    rm -rf "$work"
}
trap end EXIT
fail() {
    echo "${unit##*/}: $*" >&2
    exit 1
}
value_of() { sed -n "s/^$1=//p" "$unit"; }

mkdir -p "$work/usr/bin" "$work/var/lib/$(value_of StateDirectory)" "$work/usr/lib/systemd/system"
cp "$program" "$work/usr/bin/planservice"
cp "$unit" "$work/usr/lib/systemd/system"
if [ -n "$analyze" ]; then
    # What else the unit calls comes from the system; the check asks whether it is there and may be run.
    for command in $(sed -nE 's/^Exec[A-Za-z]*=[-@:+!]*([^ ]+).*/\1/p' "$unit"); do
        [ -e "$work/usr/bin/${command##*/}" ] || cp "$(type -P "${command##*/}")" "$work/usr/bin/${command##*/}" ||
            fail "there is no program $command"
    done
    # The root has this unit alone, so the targets that it names are not looked for.
    told=$("$analyze" verify --man=no --root="$work" --recursive-errors=no \
        "$work/usr/lib/systemd/system/${unit##*/}" 2>&1) || fail "$told"
    [ -z "$(grep -F "${unit##*/}" <<<"$told")" ] || fail "$told"
fi

# A port of its own, as others may run at the same time; all else stands as it is in the unit.
[[ "$(value_of ExecStart)" == "/usr/bin/planservice "*" --port "* ]] || fail "ExecStart is \"$(value_of ExecStart)\""
read -ra line <<<"$(value_of ExecStart | sed "s#\(^\| \)/#\1$work/#g; s/ --port [0-9]*/ --port 0/")"
mkfifo "$work/ready"
umask "$(value_of UMask)"
"${line[@]}" >"$work/ready" 2>"$work/log" &
server=$!
read -r ready <"$work/ready" || { cat "$work/log" >&2; fail "the line does not start the service"; }
[[ "$ready" =~ http://127\.0\.0\.1:([0-9]+)/$ ]] || fail "it does not listen on loopback but says: $ready"
exec 3<>"/dev/tcp/127.0.0.1/${BASH_REMATCH[1]}"
printf 'GET /health HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n' >&3
read -r status <&3
[[ "$status" == "HTTP/1.1 200"* ]] || fail "/health answers $status"
database=$work/var/lib/$(value_of StateDirectory)/plans.db
[ -s "$database" ] || fail "there is no database in the state directory"
[ "$(stat -c %a "$database")" = 600 ] || fail "others may read the database: $(stat -c %A "$database")"

# As systemctl stop does; the unit allows more time than the service takes for what it has begun.
kill -TERM "$server"
wait "$server" || fail "SIGTERM ends it with status $?"
server=
