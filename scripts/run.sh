#!/bin/sh
# Opens the program; on a machine without a display, measures once with the built-in simulator instead, prints
# the log and leaves the polar plot as a picture.
set -eu

program=$(dirname "$0")/../build/release/bin/vantrel
if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
    exec "$program" "$@"
fi
echo "No display: measuring once with the built-in simulator."
QT_QPA_PLATFORM=offscreen "$program" --measure --png polar-plot.png "$@"
echo "The polar plot is in polar-plot.png."
