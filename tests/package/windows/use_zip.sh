#!/usr/bin/env bash
# Uses the zip for Windows as a stranger would: unpacked into an empty Wine prefix, with programs
# built against it alone, by mingw-w64 and with the import library for other linkers.
# usage: use_zip.sh ZIP EXAMPLES
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
# Mounts of its own, where that is allowed: one is a disk that is soon full.
if [ "${own_mounts-}" != yes ]; then
  for user in '' --map-root-user; do
    if unshare $user --mount true 2>/dev/null; then
      own_mounts=yes exec unshare $user --mount "$0" "$@"
    fi
  done
fi
zip=$(realpath "$1")
examples=$(realpath "$2")
case $zip in *i686*) processor=i686 ;; *) processor=x86_64 ;; esac
triplet=$processor-w64-mingw32
root=$(mktemp -d)
tidy_up() {
  wineserver -k 2>/dev/null || true
  umount -l "$root/disk" 2>/dev/null || true
  rm -rf "$root"
}
trap tidy_up EXIT
export WINEPREFIX=$root/wine WINEDEBUG=-all
# Wine's server opens the files, and sees what was mounted before it started.
mkdir "$root/disk"
has_disk=no
if mount -t tmpfs -o size=1m none "$root/disk" 2>/dev/null; then has_disk=yes; fi
# A server that goes with its last client may go while the next one connects.
mkdir "$WINEPREFIX"
setsid wineserver -p </dev/null >/dev/null 2>&1
setsid -w wine reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f </dev/null >/dev/null 2>&1

mkdir "$root/unpacked"
(cd "$root/unpacked" && unzip -q "$zip")
package=$(echo "$root"/unpacked/*)
cd "$package/bin"
flags=(-I "$package/include" "$package/lib/libSorrelin.dll.a" -static)

echo "-- licenses"
for library in tiff qpdf leptonlib zlib gcc mingw-w64; do
  grep -qi 'copyright' "../licenses/$library.txt"
done
grep -ohE 'common-licenses/[A-Z][A-Za-z]*(-[0-9]+(\.[0-9]+)?)?' ../licenses/*.txt | sort -u |
  while read -r terms; do [ -s "../licenses/${terms#*/}" ]; done

echo "-- headers"
(cd "$package/include" && find sorrelin -name '*.h' -o -name '*.hpp') | while read -r header; do
  echo "#include <$header>" | "$triplet-g++-posix" -std=c++20 -fsyntax-only -x c++ - "${flags[@]:0:2}"
done

echo "-- a C program"
"$triplet-gcc-posix" -std=c11 -Wall -Wextra -Werror "$examples/write_document.c" \
  -o write_document.exe "${flags[@]}"
wine write_document.exe c.pdf
[ "$(pdfimages -list c.pdf | awk 'NR > 2 { print $4 "x" $5, $6 }')" = "256x256 index" ]

echo "-- C++ programs"
"$triplet-g++-posix" -std=c++17 -Wall -Wextra -Werror "$examples/memory_document.cpp" \
  -o memory_document.exe "${flags[@]}"
wine memory_document.exe cpp.pdf
[ "$(pdfimages -list cpp.pdf | awk 'NR > 2 { print $4 "x" $5, $9 }' | sort -u)" = "800x800 ccitt" ]
"$triplet-g++-posix" -std=c++20 -Wall -Wextra -Werror "$here/class_caller.cpp" \
  -o class_caller.exe "${flags[@]}"
wine class_caller.exe | grep -q passed

echo "-- pages of coded pictures"
"$triplet-gcc-posix" -std=c11 -Wall -Wextra -Werror "$examples/jpeg_pages.c" \
  -o jpeg_pages.exe "$package/lib/libSorrelin-coded.dll.a" "${flags[@]}"
gs -q -dNOPAUSE -dBATCH -sDEVICE=jpeg -g100x80 -sOutputFile=page.jpg -c showpage
wine jpeg_pages.exe jpeg.pdf page.jpg
[ "$(pdfimages -list jpeg.pdf | awk 'NR > 2 { print $4 "x" $5, $9 }')" = "100x80 jpeg" ]

echo "-- a program that loads the library"
"$triplet-gcc-posix" -std=c11 -Wall -Wextra -Werror "$here/loading_caller.c" -o loading_caller.exe \
  -static
wine loading_caller.exe Sorrelin.dll loaded.pdf | grep -q passed

echo "-- a path of 300 characters"
deep=$(printf '%0150d' 1)/$(printf '%0150d' 2)
mkdir -p "$deep"
"$triplet-gcc-posix" -std=c11 -Wall -Wextra -Werror "$here/linked_caller.c" -o linked.exe "${flags[@]}"
wine linked.exe "\\\\?\\Z:${PWD//\//\\}\\${deep//\//\\}\\long.pdf"
[ "$(head -c 5 "$deep/long.pdf")" = "%PDF-" ]

if [ -f sorrelin.exe ]; then
  echo "-- the program"
  if [ "$processor" = i686 ]; then
    "$triplet-objdump" -p sorrelin.exe | grep "large address aware" >/dev/null
  fi
  "$here/use_program.sh" "$PWD/sorrelin.exe" "$root"
  echo "-- the program on a full drive"
  if [ "$has_disk" = yes ]; then
    "$here/use_full_drive.sh" "$PWD/sorrelin.exe" "$root/disk"
  else
    echo "no disk may be mounted here, so no drive is full"
  fi
  echo "-- the program on a console"
  "$here/use_console.sh" "$PWD/sorrelin.exe" "$root"
  echo "-- text recognition, HEIC and AVIF"
  "$here/use_parts.sh" "$PWD" "$root"
fi

if command -v clang >/dev/null && command -v lld-link >/dev/null; then
  echo "-- the import library for other linkers"
  # Objects of mingw-w64 have no list of handlers for exceptions, which 32 bits ask for.
  clang --target="$processor-pc-windows-msvc" -c -O1 -ffreestanding -fno-stack-protector \
    "$here/bare_caller.c" -o bare_caller.obj
  lld-link /nologo /safeseh:no /entry:Start /subsystem:console /nodefaultlib /out:bare_caller.exe \
    bare_caller.obj "$package/lib/Sorrelin.lib" "/usr/$triplet/lib/libkernel32.a"
  wine bare_caller.exe
fi
echo "the zip works"
