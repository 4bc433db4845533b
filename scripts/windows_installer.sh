#!/bin/sh
# Makes the installer for Windows, "build/package/vantrel-VERSION-windows-setup.exe". What it needs it installs; Qt and
# the other libraries are made once (windows_qt.sh, windows_dependencies.sh).
set -eu
cd "$(dirname "$0")/.."
scripts/install_dependencies.sh windows
libraries=$(scripts/windows_dependencies.sh)
qt=$(scripts/windows_qt.sh)
cmake --preset windows-desktop -DVANTREL_WINDOWS_LIBRARIES="$libraries" -DVANTREL_WINDOWS_QT="$qt"
cmake --build --preset windows-desktop --target vantrel vantrel-headless vantrel-solve manual

build=$PWD/build/windows-desktop
content=$build/content
rm -rf "$content"
cmake --install "$build" --prefix "$content" --strip >/dev/null

# Every file by name, folders before what is in them; and the other way round for the way back.
windows_name() {
    printf '%s' "$1" | tr / '\\'
}
(cd "$content" && find . -mindepth 1 -type d | sort | sed 's,^\./,,') >"$build/folders.txt"
(cd "$content" && find . -type f | sort | sed 's,^\./,,') >"$build/files.txt"
{
    while read -r file; do
        echo "SetOutPath \"\$INSTDIR\\$(windows_name "$(dirname "$file")")\""
        echo "File \"$content/$file\""
    done <"$build/files.txt"
} | sed 's,\\\."$,",' | awk '!/^SetOutPath/ || $0 != last; /^SetOutPath/ { last = $0 }' >"$build/files_install.nsh"
{
    while read -r file; do
        echo "Delete \"\$INSTDIR\\$(windows_name "$file")\""
    done <"$build/files.txt"
    sort -r "$build/folders.txt" | while read -r folder; do
        echo "RMDir \"\$INSTDIR\\$(windows_name "$folder")\""
    done
} >"$build/files_remove.nsh"

version=$(sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
mkdir -p build/package
installer=$PWD/build/package/vantrel-$version-windows-setup.exe
makensis -V2 -NOCD -INPUTCHARSET UTF8 -DWORK="$build" -DOUTPUT="$installer" "$build/packaging/windows/installer.nsi"
ls -l "$installer"
