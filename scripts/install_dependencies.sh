#!/bin/sh
# Installs the Debian packages that building (and, with "check" or "package", checking or packaging) needs, as far as
# they are missing.
set -eu

build="g++ cmake ninja-build pkg-config qt6-base-dev libgl1-mesa-dev libcfitsio-dev libcurl4-openssl-dev liberfa-dev libsep-dev
libeigen3-dev nlohmann-json3-dev qt6-l10n-tools libgtest-dev libgmock-dev libbenchmark-dev xvfb xauth fonts-dejavu-core"
check="clang-format clang-tidy clang libclang-rt-dev"
packaging="file python3-minimal cmark-gfm fp-utils dpkg-dev fakeroot"

wanted=$build
[ "${1:-}" = check ] && wanted="$wanted $check"
[ "${1:-}" = package ] && wanted="$wanted $packaging"

missing=""
for package in $wanted; do
    state=$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$state" = installed ] || missing="$missing $package"
done
[ -n "$missing" ] || exit 0

as_root=""
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || { echo "Please install as root: apt-get install$missing" >&2; exit 1; }
    as_root=sudo
fi
echo "Installing:$missing"
$as_root apt-get update -qq
# shellcheck disable=SC2086  # the list is meant to be split
$as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $missing >/dev/null
