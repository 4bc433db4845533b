#!/bin/sh
# Tries the installer under Wine, as a user would: installs, measures with the simulator, looks by day and by night, removes.
#
#   try_windows_installer.sh [SETUP.EXE [PICTURES]]     PICTURES: the folder for what was seen, build/windows-tried
#
# Needs wine64, Xvfb, openbox, xdotool and ImageMagick. It fails when a step does, or when something is left behind.
set -eu
cd "$(dirname "$0")/.."
setup=$(realpath "${1:-$(ls build/package/vantrel-*-windows-setup.exe)}")
pictures=${2:-build/windows-tried}
mkdir -p "$pictures"
pictures=$(realpath "$pictures")
work=$(mktemp -d)
export WINEPREFIX="$work/prefix" WINEARCH=win64 WINEDEBUG=-all
# Without what copies the start menu to the desktop that Wine runs on.
export WINEDLLOVERRIDES="mscoree=;mshtml=;winemenubuilder.exe=d"
export HOME="$work/home" PATH="$PATH:/usr/lib/wine" # the user's documents are there
mkdir "$HOME"
display=${VANTREL_TRY_DISPLAY:-:77}
export DISPLAY="$display"

Xvfb "$display" -screen 0 1920x1080x24 >/dev/null 2>&1 &
screen=$!
openbox_id=""
finish() {
    wineserver64 -k || true
    kill $openbox_id $screen 2>/dev/null || true
    rm -rf "$work"
}
trap finish EXIT
trap 'exit 1' INT TERM

fail() {
    import -window root "$pictures/failed.png" || true
    echo "FAILED: $*" >&2
    exit 1
}
step() {
    echo "$*"
}
# within SECONDS COMMAND...: asks again until it holds
within() {
    patience=$1
    shift
    while ! "$@" >/dev/null 2>&1; do
        patience=$((patience - 1))
        [ "$patience" -gt 0 ] || return 1
        sleep 1
    done
}
window() {
    xdotool search --onlyvisible --name "$1"
}
press() { # WINDOW KEY
    xdotool windowactivate --sync "$(window "$1" | head -n 1)" key --clearmodifiers "$2"
}
look() {
    sleep 2 # until everything is painted
    import -window root "$pictures/$1.png"
    step "  seen: $pictures/$1.png"
}
# What the system knows: its files, and the registry's keys without their times.
snapshot() {
    wineserver64 -w
    (cd "$WINEPREFIX/drive_c" && find . | sort) >"$work/$1.files" # without the documents
    cat "$WINEPREFIX/system.reg" "$WINEPREFIX/user.reg" | sed -e '/^#time/d' -e 's/^\(\[.*\]\) [0-9]*$/\1/' >"$work/$1.registry"
}
# Wine's own bookkeeping, which goes on whatever is installed.
ours() {
    grep -i -e vantrel -e kestavo || true
}
left_behind() { # what of ours is there after and wasn't before
    for kind in files registry; do
        diff "$work/before.$kind" "$work/after.$kind" | sed -n 's/^> //p' | ours
    done
}

within 10 xdotool getmouselocation || fail "no screen"
kill -0 $screen 2>/dev/null || fail "no screen of our own at $display"
openbox >/dev/null 2>&1 &
openbox_id=$!
wine64 wineboot --init >/dev/null 2>&1
step "An old Windows is refused"
if wine64 winecfg /v win81 >/dev/null 2>&1 && wine64 "$setup" /S; then fail "it was not"; fi
wine64 winecfg /v win10 >/dev/null 2>&1
snapshot before

step "Installs without a word"
wine64 "$setup" /S || fail "the installer returned $?"
program=$WINEPREFIX/drive_c/users/$(id -un)/AppData/Local/Programs/Vantrel
start_menu="$WINEPREFIX/drive_c/users/$(id -un)/AppData/Roaming/Microsoft/Windows/Start Menu/Programs"
uninstall_key='HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall\Vantrel'
for file in bin/vantrel.exe bin/vantrel-headless.exe bin/vantrel-solve.exe bin/vantrel-catalog.exe share/vantrel/tycho2_compact.bin \
    licences/LGPL-3.0-only.txt LICENSE.txt uninstall.exe; do
    [ -f "$program/$file" ] || fail "no $file"
done
[ -f "$start_menu/Vantrel.lnk" ] || fail "no entry in the start menu"
wine64 reg query "$uninstall_key" >/dev/null 2>&1 || fail "not among the installed programs"

step "Measures without windows"
wine64 "$program/bin/vantrel.exe" --measure 2>/dev/null >"$work/log" || fail "no measurement"
grep -q 'Alignment Run Complete' "$work/log" || fail "the measurement didn't end"

open_program() {
    wine64 "$program/bin/vantrel.exe" >/dev/null 2>&1 &
    within 60 window '^Vantrel$' || fail "no window"
}
end_program() {
    press '^Vantrel$' alt+F4
    wait $! || fail "the program ended with $?"
}
step "Measures in its windows, by day"
open_program
within 30 window '^Welcome' || fail "no welcome"
look welcome
if wine64 "$program/uninstall.exe" /S _?="$(wine64 winepath -w "$program" 2>/dev/null | tr -d '\r')"; then
    fail "removed while it runs"
fi
press '^Welcome' Return
within 30 window '^Image' || true
press '^Vantrel$' alt+r
logged() {
    grep -rqs "$1" "$HOME"
}
within 120 logged 'Error Amplitude' || fail "no measurement in the windows' log"
look measured-day
skipped() { # once the mount is back
    press '^Vantrel$' alt+k
    logged 'Alignment Run Complete'
}
within 60 skipped || fail "the correction can't be skipped"
end_program

step "By night"
open_program
press '^Vantrel$' ctrl+n
look night
end_program

step "Installs over itself"
wine64 "$setup" /S || fail "the installer returned $?"
[ -f "$program/bin/vantrel.exe" ] || fail "gone"

step "Goes without a trace"
wine64 "$program/uninstall.exe" /S /RemoveSettings || fail "the uninstaller returned $?"
gone() {
    [ ! -e "$program" ]
}
within 30 gone || fail "left: $(find "$program")"
snapshot after
left=$(left_behind)
[ -z "$left" ] || fail "left behind: $left"

step "Installs by its pages"
page() { # WINDOW KEY
    sleep 2 # the keys of a page are its own
    press "$1" "$2"
}
wine64 "$setup" >/dev/null 2>&1 &
within 30 window 'Vantrel Setup' || fail "no installer"
for key in alt+n alt+n alt+i; do # welcome, for whom, where
    page 'Vantrel Setup' $key
done
within 60 [ -f "$program/uninstall.exe" ] || fail "nothing installed"
page 'Vantrel Setup' alt+f # and opens the program
within 60 window '^Welcome' || fail "not opened"
press '^Welcome' Escape
press '^Vantrel$' alt+F4
closed() {
    ! window '^Vantrel$'
}
within 30 closed || fail "not closed"

step "Goes by its pages"
wine64 "$program/uninstall.exe" >/dev/null 2>&1 &
within 30 window 'Vantrel Uninstall' || fail "no uninstaller"
page 'Vantrel Uninstall' alt+r # with the settings
page 'Vantrel Uninstall' Return
within 30 gone || fail "left: $(find "$program")"
page 'Vantrel Uninstall' Return
snapshot after
left=$(left_behind)
[ -z "$left" ] || fail "left behind: $left"
echo "The installer passed"
