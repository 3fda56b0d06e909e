#!/usr/bin/env bash
# Run inside a clean Debian root: the lines of "Build and install" of README.md, then what users do
# with a build. from_readme.sh build|minimal
set -euo pipefail
cd "$(dirname "$0")/../.."
mode=$1
readme=$PWD/README.md

# lines NUMBER: the block of that number in the section, as a reader would type it.
lines() {
  awk -v wanted="$1" '
    /^## / { inside = $0 == "## Build and install" }
    inside && /^    / { if (!block) ++number; block = 1; if (number == wanted) print substr($0, 5) }
    !/^    / { block = 0 }' "$readme"
}

echo "-- build and install"
lines 1 | sed "s/packages.sh build/packages.sh $mode/" >/tmp/install.sh
grep -q "cmake --install build" /tmp/install.sh
bash -euo pipefail /tmp/install.sh >/tmp/install.log 2>&1 || { tail -n 40 /tmp/install.log; exit 1; }
grep -A 12 '^-- part ' /tmp/install.log | grep 'SORRELIN_' || true
if grep -E 'Werror|warning:' /tmp/install.log; then exit 1; fi

echo "-- test"
(cd /tmp && lines 2 >test.sh && bash -euo pipefail test.sh) >/tmp/test.log 2>&1 || { cat /tmp/test.log; exit 1; }
cat /tmp/test.log
[ "$(tail -n 1 /tmp/test.log | tr -dc 0-9)" = 1 ]

echo "-- a prefix with blanks, beside the other"
prefix='/opt/Übrige Programme'
cmake --install build --prefix "$prefix" >/dev/null
[ "$("$prefix/bin/sorrelin" count /tmp/white.pdf | tr -dc 0-9)" = 1 ]
ldd "$prefix/bin/sorrelin" | grep sorrelin-platform | grep -q "$prefix"
export PKG_CONFIG_PATH=$prefix/lib/pkgconfig
eval "cc -std=c11 examples/write_document.c -o /tmp/with_pkg_config" \
  "$(pkg-config --cflags --libs sorrelin)"
LD_LIBRARY_PATH=$prefix/lib /tmp/with_pkg_config /tmp/c.pdf >/dev/null

echo "-- DESTDIR"
DESTDIR=/tmp/stage cmake --install build --prefix /usr >/dev/null
[ -x /tmp/stage/usr/bin/sorrelin ] && [ ! -e /usr/bin/sorrelin ]

echo "-- a source tree that cannot be written"
su nobody -s /bin/bash -c "touch README.md" 2>/dev/null && exit 1
chmod 755 /root
own="'/tmp/nobodys Gebäude'"
su nobody -s /bin/bash -c "cmake -B $own && cmake --build $own --target cadwick" \
  >/tmp/nobody.log 2>&1 || { tail -n 20 /tmp/nobody.log; exit 1; }

if [ "$mode" = minimal ]; then
  echo "-- parts that are missing"
  sorrelin=$prefix/bin/sorrelin
  printf '\0\0\0\014jP  \r\n\207\n\0\0\0\024ftypjp2 ' >/tmp/photo.jp2
  printf '\0\0\0\030ftypheic\0\0\0\0heicmif1' >/tmp/photo.heic
  # named PART ARGUMENT...: the program's message has the name of the part.
  named() {
    local part=$1 message
    shift
    message=$("$sorrelin" "$@" 2>&1 >/dev/null || true)
    grep -q "$part" <<<"$message" || { echo "$part is not named: $message"; exit 1; }
  }
  named OpenJPEG make --force /tmp/refused.pdf /tmp/photo.jp2
  named sorrelin-heif make --force /tmp/refused.pdf /tmp/photo.heic
  named sorrelin-ocr words /tmp/white.pbm
fi

echo "-- uninstall"
DESTDIR= cmake --install build >/dev/null
lines 3 >/tmp/remove.sh
bash -euo pipefail /tmp/remove.sh >/dev/null
[ -z "$(find /usr/local -iname '*sorrelin*' -o -name 'libcadwick*')" ]
ldconfig

echo "-- a codec that is missing, and one of another architecture"
codec=$(find "$prefix" -name libcadwick.so)
message() { "$prefix/bin/sorrelin" make --force /tmp/refused.pdf /tmp/white.pbm 2>&1 >/dev/null || true; }
printf '\177ELF\002\001\001%09d\003\000\267\000' 0 | tr 0 '\000' >"$codec"
message | grep -q 'sorrelin-codecs' || { message; exit 1; }
rm "$codec"
message | grep -q 'sorrelin-codecs' || { message; exit 1; }

echo "-- all of README works ($CXX, $mode)"
