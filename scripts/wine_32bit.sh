#!/bin/sh
# Debian's Wine for 64 bits can run programs of 32 bits when it has their libraries: this fetches them and writes the
# folder to standard output, for WINEDLLPATH. Nothing of the other architecture is installed. Fails where Debian's package
# index has no libraries of Wine's own version.
#
#   VANTREL_WINDOWS_CACHE   where the folder is; build/windows-dependencies otherwise
set -eu
cd "$(dirname "$0")/.."
cache=${VANTREL_WINDOWS_CACHE:-$PWD/build/windows-dependencies}
version=$(dpkg-query -W -f '${Version}' libwine)
result=$cache/wine32-$(echo "$version" | tr -c 'A-Za-z0-9.\n' -)
if [ ! -f "$result/complete" ]; then
    work=$cache/wine32-work
    rm -rf "$work" "$result"
    mkdir -p "$work/lists/partial" "$work/archives/partial" "$result"
    apt() {
        apt-get -qq -o APT::Architecture=i386 -o APT::Architectures=i386 -o Dir::State::lists="$work/lists" \
            -o Dir::Cache="$work" -o APT::Sandbox::User=root "$@" >&2
    }
    apt update || echo "Not all of the package index could be had" >&2
    (cd "$work" && apt download "libwine=$version")
    dpkg-deb --fsys-tarfile "$work"/libwine_*.deb |
        tar -x -C "$result" --strip-components=5 ./usr/lib/i386-linux-gnu/wine/i386-windows
    touch "$result/complete"
    rm -rf "$work"
fi
echo "$result"
