#!/bin/sh
# Installs the Debian packages that building (and, with "check", "package" or "windows", checking, packaging or the
# installer for Windows) needs, as far as they are missing. Without those for the manual everything else is built all the same.
set -eu

build="g++ cmake ninja-build pkg-config qt6-base-dev libgl1-mesa-dev libcfitsio-dev libjpeg-dev libpng-dev libtiff-dev libraw-dev libcurl4-openssl-dev liberfa-dev
libeigen3-dev nlohmann-json3-dev libcli11-dev qt6-l10n-tools libgtest-dev libgmock-dev libbenchmark-dev libmicrohttpd-dev libqrencode-dev xvfb xauth
openbox libxcb-xtest0-dev fonts-dejavu-core zlib1g-dev indi-bin"
manual="python3 cmark-gfm"
check="clang-format clang-tidy clang libclang-rt-dev"
packaging="file fp-utils dpkg-dev fakeroot $manual"

windows="nsis fp-utils qt6-translations-l10n $manual"

wanted=$build
[ "${1:-}" = check ] && wanted="$wanted $check"
[ "${1:-}" = package ] && wanted="$wanted $packaging"
[ "${1:-}" = windows ] && wanted="$wanted $windows"

# missing PACKAGE...: those that aren't installed.
missing() {
    for package; do
        state=$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null || true)
        [ "$state" = installed ] || printf ' %s' "$package"
    done
}

# install PACKAGE...
install() {
    as_root=""
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || { echo "Please install as root: apt-get install $*" >&2; return 1; }
        as_root=sudo
    fi
    echo "Installing: $*"
    $as_root apt-get update -qq &&
        $as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "$@" >/dev/null
}

# shellcheck disable=SC2046,SC2086  # the lists are meant to be split
needed=$(missing $wanted)
[ -z "$needed" ] || install $needed
needed=$(missing $manual)
[ -z "$needed" ] || install $needed || echo "Without$needed there is no manual for Help to open." >&2
