#!/bin/sh
# Makes Qt for x86_64-w64-mingw32 from Debian's own source: only what the windows need, as DLLs. Some twenty minutes on
# two processors; it is made once and kept in a folder whose name tells version and options. The folder's name is the
# only thing written to standard output. The tools that run while building (moc, rcc, lrelease) are Debian's, of the same
# version.
#
#   VANTREL_WINDOWS_CACHE   where that folder is; build/windows-dependencies otherwise
set -eu
cd "$(dirname "$0")/.."
cache=${VANTREL_WINDOWS_CACHE:-$PWD/build/windows-dependencies}
target=x86_64-w64-mingw32

versions() {
    $target-g++-posix -dumpfullversion
    dpkg-query -W -f '${Package} ${Version}\n' qt6-base-dev
    cat scripts/windows_qt.sh # the options
}
result=$cache/qt-$(versions | sha256sum | cut -c 1-16)
if [ -f "$result/complete" ]; then
    echo "$result"
    exit 0
fi

begin=$(date +%s)
work=$cache/qt-work
rm -rf "$work" "$result"
mkdir -p "$work"
scripts/debian_sources.sh "$work" qt6-base
echo "Fetched Qt in $(($(date +%s) - begin)) s" >&2

cat >"$work/toolchain.cmake" <<END
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER $target-gcc-posix)
set(CMAKE_CXX_COMPILER $target-g++-posix)
set(CMAKE_RC_COMPILER $target-windres)
set(CMAKE_FIND_ROOT_PATH /usr/$target)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
END
# Linked statically, the DLLs need no run-time libraries of the compiler. Tablets need a header that the source lacks.
without="sql dbus xml concurrent network printsupport opengl vulkan direct2d androiddeployqt windeployqt qmake pkg_config
system_zlib icu glib zstd gif jpeg tabletevent directwrite directwrite3"
options=""
for feature in $without; do
    options="$options -DFEATURE_$feature=OFF"
done
export PKG_CONFIG_LIBDIR=/nonexistent
# shellcheck disable=SC2086  # a list, meant to be split
{
    cmake -S "$work/qt6-base/source" -B "$work/build" -G Ninja -Wno-dev \
        -DCMAKE_TOOLCHAIN_FILE="$work/toolchain.cmake" -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$result" \
        -DCMAKE_SHARED_LINKER_FLAGS=-static -DCMAKE_MODULE_LINKER_FLAGS=-static \
        -DQT_HOST_PATH=/usr -DQT_HOST_PATH_CMAKE_DIR=/usr/lib/x86_64-linux-gnu/cmake \
        -DQT_QMAKE_TARGET_MKSPEC=win32-g++ -DBUILD_SHARED_LIBS=ON -DINPUT_opengl=no \
        -DQT_BUILD_EXAMPLES=OFF -DQT_BUILD_TESTS=OFF $options &&
        cmake --build "$work/build" -j "$(nproc)" &&
        cmake --install "$work/build" --strip
} >"$cache/qt.log" 2>&1 || {
    tail -40 "$cache/qt.log" >&2
    exit 1
}
# Its licences go with the programs.
mkdir -p "$result/licences"
cp "$work"/qt6-base/source/LICENSES/* "$result/licences/"

rm -rf "$work"
touch "$result/complete"
echo "Made Qt in $(($(date +%s) - begin)) s" >&2
echo "$result"
