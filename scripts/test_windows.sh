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
# runs_32_bits: whether Wine starts the least of programs of 32 bits; not every system lets it.
runs_32_bits() {
    mkdir -p build
    echo 'int main(void) { return 0; }' | i686-w64-mingw32-gcc-posix -x c - -o build/least32.exe &&
        VANTREL_WINE_PREFIX="$PWD/build/wine32" scripts/wine.sh build/least32.exe >/dev/null 2>&1
}
if WINEDLLPATH=$(scripts/wine_32bit.sh) && export WINEDLLPATH && runs_32_bits; then
    wine32=ON
else
    unset WINEDLLPATH
    wine32=OFF
    echo "Wine runs no programs of 32 bits here: such drivers aren't tried"
fi
# What the compiler has made is kept beside the libraries.
export CCACHE_DIR="$libraries/../compiled" CCACHE_BASEDIR="$PWD" CCACHE_NOHASHDIR=1 CCACHE_MAXSIZE=2G
export CCACHE_SLOPPINESS=pch_defines,time_macros
cmake --preset windows -DVANTREL_WINDOWS_LIBRARIES="$libraries" -DVANTREL_WINE32=$wine32 \
    -DCMAKE_CXX_COMPILER_LAUNCHER=ccache
cmake --build --preset windows
lap "Build"

export VANTREL_WINE_PREFIX="$PWD/build/windows/wine"
rm -rf "$VANTREL_WINE_PREFIX"
# Wine takes the user's folders for Windows' own, and the tests write there.
export HOME="$PWD/build/windows/home"
rm -rf "$HOME"
mkdir -p "$HOME"
scripts/wine.sh cmd /c exit >/dev/null 2>&1
# Wine's own services belong to the first program and hold on to its output: here one that stays until this script ends.
# Only when that runs may others start, or there are two of each service. COM's own one is started at once: whoever
# starts it in passing waits half a minute now and then, and then does without.
WINEPREFIX="$VANTREL_WINE_PREFIX" /usr/lib/wine/wineserver64 -k || true
WINEPREFIX="$VANTREL_WINE_PREFIX" /usr/lib/wine/wineserver64 -w || true
mkfifo "$VANTREL_WINE_PREFIX/started"
exec 8<>"$VANTREL_WINE_PREFIX/started"
tail -f /dev/null --pid=$$ | scripts/wine.sh cmd /c "net start rpcss>nul& echo started& set /p ignored=" >&8 2>/dev/null &
head -n 1 <&8 >/dev/null
status=0
ctest --preset windows || status=$?
WINEPREFIX="$VANTREL_WINE_PREFIX" /usr/lib/wine/wineserver64 -k || true
lap "Tests"
exit $status
