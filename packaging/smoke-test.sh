#!/usr/bin/env bash
# Tries the packages of a folder as a person would.
#     smoke-test.sh FOLDER           unpacked into a fresh folder; needs what the packages depend on, but no root
#     smoke-test.sh FOLDER ROOT      installed with apt into a copy of ROOT, a fresh root of debootstrap; as root
#     smoke-test.sh FOLDER --here    installed already, on this system
set -euo pipefail
shopt -s nullglob
packages=$(cd "$1" && pwd) where=${2:-}
self=$(readlink -f "${BASH_SOURCE[0]}")
work=$(mktemp -d)
server=
end() {
    [ -z "$server" ] || kill "$server" 2>/dev/null || true
    rm -rf --one-file-system "$work"
}
trap end EXIT

fail() {
    echo "smoke-test: $*" >&2
    exit 1
}

files=("$packages"/*.deb)
for package in libkvplandata libkvplandata-dev kvplan planservice planviewer; do
    found=("$packages/${package}"_*.deb)
    [ ${#found[@]} -eq 1 ] || fail "there are ${#found[@]} packages $package in $packages"
done

case $where in
    "")
        for file in "${files[@]}"; do
            dpkg-deb -x "$file" "$work/root"
        done
        prefix=$work/root/usr
        ;;
    --here)
        prefix=/usr
        for file in "${files[@]}"; do
            name=$(dpkg-deb -f "$file" Package)
            [ "$(dpkg-query -W -f '${db:Status-Status}' "$name")" = installed ] || fail "$name is not installed"
        done
        getent passwd planservice >/dev/null || fail "there is no user planservice"
        ;;
    *)
        cp -ax "$where" "$work/root"
        mkdir "$work/root/packages"
        cp "${files[@]}" "$self" "$work/root/packages"
        cp /etc/resolv.conf "$work/root/etc/resolv.conf"
        export DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8
        chroot "$work/root" apt-get update -qq
        # A compiler beside them: -dev says what it needs of Qt, the builder brings the compiler.
        chroot "$work/root" sh -c 'apt-get install -y -qq --no-install-recommends /packages/*.deb g++ cmake make' \
            >"$work/apt.log" 2>&1 || { tail -n 20 "$work/apt.log" >&2; fail "the packages do not install"; }
        chroot "$work/root" "/packages/${self##*/}" /packages --here
        chroot "$work/root" sh -c 'apt-get purge -y -qq kvplan planservice planviewer libkvplandata libkvplandata-dev' \
            >"$work/apt.log" 2>&1 || { tail -n 20 "$work/apt.log" >&2; fail "the packages do not go away"; }
        left=$(find "$work/root/usr" -iname '*kvplan*' -o -iname '*planservice*' -o -iname '*planviewer*')
        [ -z "$left" ] || fail "left behind: $left"
        echo "smoke-test: installed into a clean root, tried and removed"
        exit 0
        ;;
esac

kvplan=$prefix/bin/kvplan service=$prefix/bin/planservice
"$kvplan" --version
"$service" --version
for page in kvplan planservice planviewer; do
    gzip -dc "$prefix/share/man/man1/$page.1.gz" | grep -q '^\.TH ' || fail "there is no manual page $page"
    bash -n "$prefix/share/bash-completion/completions/$page"
done
for file in "${files[@]}"; do
    name=$(dpkg-deb -f "$file" Package)
    # A root for containers may leave out what packages bring to share/doc, but for the copyright.
    grep -q 'KvPlanData developers' "$prefix/share/doc/$name/copyright" || fail "$name tells no copyright"
done
grep -q '^ExecStart=/usr/bin/planservice serve ' "$prefix/lib/systemd/system/planservice.service" ||
    fail "the unit does not start the service"

# The service, and a plan on it.
plan=$("$service" seed --database "$work/plans.db" --json | sed -n 's/.*"planId":"\([^"]*\)".*/\1/p')
mkfifo "$work/ready"
"$service" serve --database "$work/plans.db" --port 0 >"$work/ready" 2>"$work/log" &
server=$!
read -r ready <"$work/ready" || { cat "$work/log" >&2; fail "the service does not start"; }
export KV_BASE_API=${ready##* } KV_PROJECT_ID=sample-project KV_SETTINGS_DIR=$work/settings
"$kvplan" plans | grep -q "$plan" || fail "kvplan does not list the plan"
[ "$("$kvplan" show "$plan" --json | tr ',' '\n' | grep -c '"uniqueId"')" -eq 395 ] || fail "kvplan does not read the tasks"
"$prefix/bin/planviewer" --version
said=$(QT_QPA_PLATFORM=offscreen "$prefix/libexec/planviewer/planviewer-model" 2>&1) || true
[[ "$said" == "usage: planviewer-model FILE"* ]] || fail "planviewer's reader of models does not start: $said"
"$kvplan" simulate --help | grep -q -- --model || fail "kvplan simulate tells no options"
said=$(env -u DISPLAY -u WAYLAND_DISPLAY "$kvplan" simulate "$plan" "$work/frames" --model "$work/tower.gltf" 2>&1) || true
[[ "$said" == *"there is no display server"* ]] || fail "what draws the simulation does not start: $said"
KV_PROJECT_ID=sample-project QT_QPA_PLATFORM=offscreen "$prefix/bin/planviewer" --language en --plan "$plan" \
    --gantt "$work/gantt.svg"
grep -q '<svg' "$work/gantt.svg" || fail "planviewer does not draw the plan"

# A program of somebody else's, against the installed headers and package.
mkdir "$work/program"
cat >"$work/program/CMakeLists.txt" <<'CMAKE'
cmake_minimum_required(VERSION 3.21)
project(Program LANGUAGES CXX)
find_package(KvPlanData REQUIRED)
add_executable(program main.cpp)
target_link_libraries(program PRIVATE KvPlanData::KvPlanData)
CMAKE
cat >"$work/program/main.cpp" <<'CPP'
#include <plandata/KvPlanData.h>
#include <QtCore/QCoreApplication>
int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    KvPlan plan;
    const bool read = KvPlanData::instance()->getPlanById(QString::fromUtf8(argv[1]), plan);
    return read && plan.planNodes.size() == 395 ? 0 : 1;
}
CPP
cmake -S "$work/program" -B "$work/build" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$work/build" >/dev/null
"$work/build/program" "$plan" || fail "a program that is linked with the library does not read the plan"

kill -TERM "$server"
wait "$server" || fail "the service does not end by itself"
server=
echo "smoke-test: good"
