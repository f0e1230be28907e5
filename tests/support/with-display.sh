#!/bin/bash
# with-display.sh PROGRAM [ARGUMENT...]: runs a program on a display server of its own, without hardware, and ends
# with its result. The server takes the first free number by itself, so that any number of these run at once.
set -u
command -v Xvfb >/dev/null || { echo "with-display.sh: please install: xvfb libgl1-mesa-dri" >&2; exit 1; }
dir=$(mktemp -d)
mkfifo "$dir/number"
# Opened for both directions, so that nobody waits for ever when the server does not start.
exec 4<>"$dir/number"
Xvfb -displayfd 4 -screen 0 1280x960x24 -nolisten tcp 2>"$dir/log" &
server=$!
trap 'kill $server 2>/dev/null; wait $server 2>/dev/null; rm -rf "$dir"' EXIT
if ! read -r -t 60 number <&4; then
    echo "with-display.sh: Xvfb did not start" >&2
    cat "$dir/log" >&2
    exit 1
fi
exec 4>&-
unset WAYLAND_DISPLAY
DISPLAY=:$number LIBGL_ALWAYS_SOFTWARE=1 QT_QPA_PLATFORM=xcb "$@"
