#!/usr/bin/env bash
# fuzz/run.sh BUILD SECONDS [TARGET...]: each fuzzer of the build for so many seconds, one after another.
set -euo pipefail
build=$1 seconds=$2
shift 2
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

if [ $# -eq 0 ]; then
    for folder in "$here"/seeds/*/; do
        set -- "$@" "$(basename "$folder")"
    done
fi

export TZ=Asia/Shanghai QT_HASH_SEED=0
export LSAN_OPTIONS="suppressions=$here/../tests/leak-suppressions.txt:print_suppressions=0"
if [ -w /dev/shm ]; then # where the settings' files cost no disk
    TMPDIR=$(mktemp -d /dev/shm/kvplandata-fuzz-XXXXXX)
    export TMPDIR
    trap 'rm -rf "$TMPDIR"' EXIT
fi
mkdir -p "$build/findings"
result=0
for target in "$@"; do
    options=("-max_total_time=$seconds" "-artifact_prefix=$build/findings/$target-" -timeout=10 -rss_limit_mb=2048
        -print_final_stats=1)
    [ ! -f "$here/dictionaries/$target" ] || options+=("-dict=$here/dictionaries/$target")
    inputs=("$build/corpus/$target" "$here/seeds/$target")
    [ ! -d "$here/found/$target" ] || inputs+=("$here/found/$target")
    data=$here/../tests/model/data
    case $target in
        codec | body) inputs+=("$data/codec") ;;
        exchange) inputs+=("$data/exchange") ;;
    esac
    mkdir -p "$build/corpus/$target"
    outcome=clean
    "$build/fuzz/fuzz_$target" "${options[@]}" "${inputs[@]}" >"$build/findings/$target.log" 2>&1 || outcome=FOUND
    executions=$(sed -nE 's/^stat::number_of_executed_units: *([0-9]+).*/\1/p' "$build/findings/$target.log")
    echo "$target: $outcome, ${executions:-0} executions"
    if [ "$outcome" != clean ]; then
        result=1
        grep -vE '^(#|INFO|stat::)' "$build/findings/$target.log" | tail -n 40
        echo "The input is one of $build/findings/$target-*. Keep it in fuzz/found/$target, mend, and run ./dev test."
    fi
done
exit $result
