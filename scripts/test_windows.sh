#!/bin/sh
# Builds the programs and tests for Windows and runs them under Wine, without a display. What it needs it installs.
set -eu
cd "$(dirname "$0")/.."
begin=$(date +%s)
lap() {
    echo "$1: $(($(date +%s) - begin)) s after the start"
}
libraries=$(scripts/windows_dependencies.sh)
lap "Libraries"
cmake --preset windows -DVANTREL_WINDOWS_LIBRARIES="$libraries"
cmake --build --preset windows
lap "Build"

export VANTREL_WINE_PREFIX="$PWD/build/windows/wine"
rm -rf "$VANTREL_WINE_PREFIX"
scripts/wine.sh cmd /c exit >/dev/null 2>&1
# Wine's own services belong to whoever is first, and hold on to his output: here somebody who has none, and stays until
# this script ends.
WINEPREFIX="$VANTREL_WINE_PREFIX" /usr/lib/wine/wineserver64 -k || true
tail -f /dev/null --pid=$$ | scripts/wine.sh cmd /c "set /p ignored=" >/dev/null 2>&1 &
scripts/wine.sh cmd /c exit >/dev/null 2>&1 # it answers from here on
status=0
ctest --preset windows || status=$?
WINEPREFIX="$VANTREL_WINE_PREFIX" /usr/lib/wine/wineserver64 -k || true
lap "Tests"
exit $status
