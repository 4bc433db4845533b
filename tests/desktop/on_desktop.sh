#!/bin/sh
# on_desktop.sh WIDTHxHEIGHT COMMAND...: runs the command on an X server of its own, on a screen of that size, beside a
# window manager that decorates windows.
set -eu
size=$1
shift
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
mkfifo "$folder/started"
# A window that is mapped while the window manager still starts may be left without a frame.
# shellcheck disable=SC2016  # expands in the inner shell
xvfb-run --auto-servernum --server-args="-screen 0 ${size}x24 -nolisten tcp" sh -c '
    openbox --sm-disable --startup "sh -c \"echo >$0\"" 2>/dev/null &
    read -r _ <"$0"
    exec "$@"' "$folder/started" "$@"
