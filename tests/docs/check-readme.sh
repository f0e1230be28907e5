#!/usr/bin/env bash
# Does what README tells a newcomer to do: both files and all commands are README's own.
#     check-readme.sh README BUILD-FOLDER COMPILER CONFIGURATION
set -euo pipefail
readme=$1 build=$2 compiler=$3 configuration=$4
work=$(mktemp -d)
server=
end() {
    [ -z "$server" ] || kill "$server" 2>/dev/null || true
    rm -rf "$work"
}
trap end EXIT
fail() {
    echo "README: $*" >&2
    exit 1
}
# block LANGUAGE: the last piece of code of that language
block() {
    awk -v begin="^\`\`\`$1\$" '$0 ~ begin { text = ""; inside = 1; next } /^```$/ { inside = 0 }
        inside { text = text $0 "\n" } END { printf "%s", text }' "$readme"
}

mkdir "$work/application"
cd "$work/application"
cmake --install "$build" --prefix "$work/prefix" --config "$configuration" >/dev/null
block cmake >CMakeLists.txt
block sh | sed "s#\bPREFIX\b#$work/prefix#g" >commands
[ "$(wc -l <commands)" -eq 4 ] || fail "it has $(wc -l <commands) commands and not four"

# With a port of its own, as others may run at the same time; so the service is started before the program is built.
plan=$(eval "$(sed -n 2p commands)" | sed -n 's/.* plan \([^ ]*\) .*/\1/p')
[ -n "$plan" ] || fail "seed tells of no plan"
serve=$(sed -n 3p commands)
[[ "$serve" == *" serve "*" --port 8700 &" ]] || fail "the third command is \"$serve\""
mkfifo ready
read -ra serve <<<"${serve/ --port 8700 &/ --port 0}"
"${serve[@]}" >ready 2>log &
server=$!
read -r ready <ready || { cat log >&2; fail "the service does not start"; }
block cpp | sed "s#http://127.0.0.1:8700/#${ready##* }#" >main.cpp
grep -qF "${ready##* }" main.cpp || fail "the program does not ask http://127.0.0.1:8700/"
export CXX=$compiler
eval "$(sed -n 1p commands)" >built 2>&1 || { tail -n 60 built >&2; fail "the program does not build"; }
eval "$(sed -n 4p commands | sed "s#PLAN#$plan#")" 2>tasks || fail "the program ends with status $?"
[ "$(wc -l <tasks)" -eq 395 ] || { head -n 5 tasks >&2; fail "the program prints $(wc -l <tasks) tasks"; }
