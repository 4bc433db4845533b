#!/bin/sh
# Makes the installer for Windows, "build/package/vantrel-VERSION-windows-setup.exe". What it needs it installs; Qt and
# the other libraries are made once (windows_qt.sh, windows_dependencies.sh).
#
#   VANTREL_WINDOWS_QT   the folder of another Qt for Windows, with its licences in licences/
set -eu
cd "$(dirname "$0")/.."
scripts/install_dependencies.sh windows
libraries=$(scripts/windows_dependencies.sh)
qt=${VANTREL_WINDOWS_QT:-$(scripts/windows_qt.sh)}
cmake --preset windows-desktop -DVANTREL_WINDOWS_LIBRARIES="$libraries" -DVANTREL_WINDOWS_QT="$qt"
cmake --build --preset windows-desktop --target vantrel vantrel-headless vantrel-solve vantrel-catalog vantrel-com32 manual

build=$PWD/build/windows-desktop
content=$build/content
rm -rf "$content"
cmake --install "$build" --prefix "$content" --strip >/dev/null

# Every file by name, for the way there and for the way back; folders go after what is in them.
(cd "$content" && find . -type f | sort | sed 's,^\./,,') |
    awk -v content="$content" '{
        windows = $0
        gsub("/", "\\", windows)
        folder = windows
        if (!sub(/\\[^\\]*$/, "", folder)) folder = ""
        if (NR == 1 || folder != last) printf "SetOutPath \"$INSTDIR%s\"\n", folder == "" ? "" : "\\" folder
        last = folder
        printf "File \"%s/%s\"\n", content, $0
    }' >"$build/files_install.nsh"
{
    (cd "$content" && find . -type f | sed 's,^\./,,') | tr / '\\' | sed 's,.*,Delete "$INSTDIR\\&",'
    (cd "$content" && find . -mindepth 1 -type d | sort -r | sed 's,^\./,,') | tr / '\\' | sed 's,.*,RMDir "$INSTDIR\\&",'
} >"$build/files_remove.nsh"

version=$(sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
mkdir -p build/package
installer=$PWD/build/package/vantrel-$version-windows-setup.exe
makensis -V2 -NOCD -INPUTCHARSET UTF8 -DWORK="$build" -DOUTPUT="$installer" "$build/packaging/windows/installer.nsi"
ls -l "$installer"
