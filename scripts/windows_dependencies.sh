#!/bin/sh
# Installs what building for Windows needs, and makes the libraries that Debian has for Linux only: static ones for
# x86_64-w64-mingw32, from Debian's own sources. They are made once and kept in a folder whose name tells versions and
# options; the folder's name is the only thing written to standard output.
#
#   VANTREL_WINDOWS_CACHE   where those folders are; build/windows-dependencies otherwise
set -eu
cd "$(dirname "$0")/.."
cache=${VANTREL_WINDOWS_CACHE:-$PWD/build/windows-dependencies}
target=x86_64-w64-mingw32

# Source packages, and the binary package that tells the version of each.
sources="cfitsio:libcfitsio-dev erfa:liberfa-dev curl:libcurl4-openssl-dev libpng1.6:libpng-dev
libjpeg-turbo:libjpeg62-turbo-dev tiff:libtiff-dev libmicrohttpd:libmicrohttpd-dev qrencode:libqrencode-dev"
packages="g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix libz-mingw-w64-dev wine wine64 cmake ninja-build dpkg-dev
python3 libeigen3-dev nlohmann-json3-dev libcli11-dev googletest ccache"

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    else
        sudo "$@"
    fi
}

missing=""
for package in $packages; do
    state=$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$state" = installed ] || missing="$missing $package"
done
if [ -n "$missing" ]; then
    echo "Installing:$missing" >&2
    as_root apt-get update -qq >&2
    # shellcheck disable=SC2086  # a list, meant to be split
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $missing >/dev/null
fi

version_of() {
    apt-cache policy "$1" | sed -n 's/^ *Candidate: *//p' | grep -v '(none)'
}
version_of libpng-dev >/dev/null || as_root apt-get update -qq >&2

versions() {
    $target-g++-posix -dumpfullversion
    for source in $sources; do
        echo "${source%%:*} $(version_of "${source##*:}")"
    done
    dpkg-query -W -f '${Package} ${Version}\n' libz-mingw-w64-dev googletest
    cat scripts/windows_dependencies.sh # the options
}
result=$cache/$(versions | sha256sum | cut -c 1-16)
if [ -f "$result/complete" ]; then
    echo "$result"
    exit 0
fi

work=$cache/work
rm -rf "$work" "$result"
mkdir -p "$work" "$result/include" "$result/lib"
begin=$(date +%s)

# shellcheck disable=SC2046  # a list, meant to be split
scripts/debian_sources.sh "$work" $(for source in $sources; do echo "${source%%:*}"; done)
cd "$work"
cp -r /usr/src/googletest googletest
# What is put into the programs brings its licence along: Debian's collection of it where there is one.
mkdir "$result/licences"
for source in $sources; do
    name=${source%%:*}
    for file in "$name"/source/debian/copyright "$name"/source/[Ll][Ii][Cc][Ee][Nn][CcSs][Ee]* "$name"/source/COPYING*; do
        [ ! -f "$file" ] || { cp "$file" "$result/licences/$name.txt" && break; }
    done
done
for package in libz-mingw-w64-dev mingw-w64-common gcc-mingw-w64-base libeigen3-dev nlohmann-json3-dev libcli11-dev; do
    cp "/usr/share/doc/$package/copyright" "$result/licences/$package.txt"
done
echo "Fetched in $(($(date +%s) - begin)) s" >&2

flags="-O2 -ffunction-sections -fdata-sections"
cat >"$work/toolchain.cmake" <<END
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER $target-gcc-posix)
set(CMAKE_CXX_COMPILER $target-g++-posix)
set(CMAKE_RC_COMPILER $target-windres)
set(CMAKE_FIND_ROOT_PATH $result /usr/$target)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_FIND_LIBRARY_SUFFIXES .a)
END

# by_cmake NAME [OPTION...]
by_cmake() {
    name=$1
    shift
    cmake -S "$work/$name/${folder-source}" -B "$work/$name/build" -G Ninja -Wno-dev \
        -DCMAKE_TOOLCHAIN_FILE="$work/toolchain.cmake" \
        -DCMAKE_BUILD_TYPE=Release -DCMAKE_C_FLAGS_RELEASE="$flags" -DCMAKE_CXX_FLAGS_RELEASE="$flags" \
        -DCMAKE_INSTALL_PREFIX="$result" -DBUILD_SHARED_LIBS=OFF -DZLIB_LIBRARY="/usr/$target/lib/libz.a" \
        -DZLIB_INCLUDE_DIR="/usr/$target/include" -DPKG_CONFIG_EXECUTABLE=/bin/false "$@" >"$work/$name.log" 2>&1 &&
        cmake --build "$work/$name/build" --target install >>"$work/$name.log" 2>&1 || {
        tail -40 "$work/$name.log" >&2
        return 1
    }
    echo "Built $name" >&2
}

# by_configure NAME [OPTION...]
by_configure() {
    name=$1
    shift
    mkdir "$work/$name/build"
    (cd "$work/$name/build" && ../source/configure --host=$target --prefix="$result" --disable-shared --enable-static \
        CC=$target-gcc-posix CFLAGS="$flags" "$@" && make -j "$(nproc)" && make install) >"$work/$name.log" 2>&1 || {
        tail -40 "$work/$name.log" >&2
        return 1
    }
    echo "Built $name" >&2
}

# by_compiler NAME LIBRARY HEADERS OPTIONS FILE...: libraries that need no more than that. Files go into units of forty,
# since they all read the same headers.
by_compiler() {
    name=$1 library=$2 headers=$3 options=$4
    shift 4
    mkdir "$work/$name/units"
    printf '#include "%s"\n' "$@" | split -l 40 --additional-suffix=.c - "$work/$name/units/unit_"
    # shellcheck disable=SC2086  # lists, meant to be split
    (cd "$work/$name/source" && printf '%s\n' "$work/$name"/units/*.c | xargs -P "$(nproc)" -I UNIT \
        $target-gcc-posix $flags $options -w -I. -Iinclude -c UNIT -o UNIT.o)
    $target-ar crs "$result/lib/lib$library.a" "$work/$name"/units/*.o
    # shellcheck disable=SC2086  # a list, meant to be split
    (cd "$work/$name/source" && cp -r $headers "$result/include/")
    echo "Built $name" >&2
}

# Two at a time: configuring, half of the work, keeps one processor busy.
some_libraries() {
    by_cmake cfitsio -DUSE_CURL=OFF -DUSE_PTHREADS=OFF -DTESTS=OFF -DUTILS=OFF
    by_cmake libpng1.6 -DPNG_SHARED=OFF -DPNG_STATIC=ON -DPNG_TESTS=OFF
    # Without the assembler's versions, which give the same pixels.
    by_cmake libjpeg-turbo -DENABLE_SHARED=OFF -DENABLE_STATIC=ON -DWITH_SIMD=OFF -DWITH_TURBOJPEG=OFF
    folder=. by_cmake googletest -DINSTALL_GTEST=ON -DBUILD_GMOCK=ON
    cd "$work/erfa/source"
    # shellcheck disable=SC2046  # a list, meant to be split
    by_compiler erfa erfa "src/erfa.h src/erfam.h src/erfaextra.h" "-std=gnu11 -D_USE_MATH_DEFINES -Isrc" \
        $(find src -name '*.c' ! -name 't_*' ! -name erfaversion.c)
    # By the configuration that it brings for Windows: to find it out again would take some minutes.
    cd "$work/curl/source"
    by_compiler curl curl include/curl "-Ilib -DNDEBUG -DBUILDING_LIBCURL -DCURL_STATICLIB -DHTTP_ONLY -DUSE_SCHANNEL
        -DUSE_WINDOWS_SSPI -DHAVE_LIBZ -DENABLE_IPV6 -DUNICODE -D_UNICODE" lib/*.c lib/*/*.c
}
other_libraries() {
    by_configure libmicrohttpd --disable-https --disable-doc --disable-examples --disable-curl --disable-tools \
        --disable-postprocessor --disable-bauth --disable-dauth
    by_cmake qrencode -DWITH_TOOLS=NO -DWITH_TESTS=NO
    by_cmake tiff -Djpeg=OFF -Dold-jpeg=OFF -Dlzma=OFF -Dzstd=OFF -Dwebp=OFF -Djbig=OFF -Dlerc=OFF -Dlibdeflate=OFF \
        -Dcxx=OFF -Dtiff-tools=OFF -Dtiff-tests=OFF -Dtiff-contrib=OFF -Dtiff-docs=OFF
}
some_libraries &
some=$!
other_libraries
wait $some

cd "$cache"
rm -rf "$work"
touch "$result/complete"
echo "Made in $(($(date +%s) - begin)) s" >&2
echo "$result"
