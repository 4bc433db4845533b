#!/bin/sh
# Fetches Debian's sources of packages: debian_sources.sh FOLDER PACKAGE...
# Each is unpacked into FOLDER/PACKAGE/source, with Debian's changes where they can be had.
set -eu
folder=$(realpath "$1")
shift
suite=$(. /etc/os-release && echo "$VERSION_CODENAME")
state=$folder/.apt
rm -rf "$state"
mkdir -p "$state/lists/partial" "$state/archives/partial" "$state/sources.list.d"

# The machine's own places for Debian's packages are places for its sources too; the machine's lists stay as they are.
awk -v suite="$suite" '
    function is_debians(name) { return name == suite || index(name, suite "-") == 1 }
    FILENAME ~ /\.list$/ && $1 == "deb" {
        for (i = 2; i <= NF; i++) if (is_debians($i)) { $1 = "deb-src"; print; next }
    }' /etc/apt/sources.list /etc/apt/sources.list.d/*.list /dev/null 2>/dev/null >"$state/sources.list" || true
for file in /etc/apt/sources.list.d/*.sources; do
    [ -f "$file" ] && grep -q "^Suites:.*$suite" "$file" &&
        sed 's/^Types:.*/Types: deb-src/' "$file" >"$state/sources.list.d/${file##*/}"
done
sources_apt() {
    apt-get -q -o Dir::Etc::sourcelist="$state/sources.list" -o Dir::Etc::sourceparts="$state/sources.list.d" \
        -o Dir::State::lists="$state/lists" -o Dir::Cache::archives="$state/archives" -o APT::Sandbox::User= "$@" >&2
}
sources_apt update

# Mirrors may lack files of Debian's own changes; what upstream published does without them.
fetch() (
    mkdir "$folder/$1"
    cd "$folder/$1"
    sources_apt source --only-source "$1" && mv "$(find . -maxdepth 1 -mindepth 1 -type d)" source && exit 0
    echo "$1: without Debian's changes, which can't be had" >&2
    sources_apt source --only-source --download-only --tar-only "$1"
    rm -rf source
    mkdir source
    tar -xf ./*.orig.tar.?z* -C source --strip-components 1
)
for package in "$@"; do
    fetch "$package"
done
rm -rf "$state"
