#!/bin/sh
# Runs a Windows program under Wine, without a display: wine.sh PROGRAM [ARGUMENT...]
# The folder that plays the user's Windows is VANTREL_WINE_PREFIX, or one of the build's own; it is made at first use.
set -eu
prefix=${VANTREL_WINE_PREFIX:-$(cd "$(dirname "$0")/.." && pwd)/build/wine}
unset DISPLAY WAYLAND_DISPLAY
export WINEPREFIX="$prefix" WINEARCH=win64 WINEDLLOVERRIDES="mscoree=;mshtml=" WINEDEBUG=-all
export PATH="$PATH:/usr/lib/wine"
if [ ! -f "$prefix/ready" ]; then
    mkdir -p "$prefix"
    (
        flock 9
        if [ ! -f "$prefix/ready" ]; then
            wine64 wineboot --init
            # No driver for displays: none is needed then.
            wine64 reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f
            wine64 wineboot --shutdown || true
            touch "$prefix/ready"
        fi
    ) 9>"$prefix.lock" >/dev/null 2>&1
fi
exec wine64 "$@"
