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
# Wine's own services start here: they would hold on to the output of the first test and keep it from ending.
scripts/wine.sh cmd /c exit >/dev/null 2>&1
WINEPREFIX="$VANTREL_WINE_PREFIX" /usr/lib/wine/wineserver64 -p >/dev/null 2>&1 || true
scripts/wine.sh cmd /c exit >/dev/null 2>&1
status=0
ctest --preset windows || status=$?
WINEPREFIX="$VANTREL_WINE_PREFIX" /usr/lib/wine/wineserver64 -k || true
lap "Tests"
exit $status
