#!/bin/sh
# Run inside a clean Debian root: installs packages with the names and files of the first release,
# upgrades them, uses what came, and removes and purges everything.
set -eu
export DEBIAN_FRONTEND=noninteractive
triplet=$(dpkg-architecture -qDEB_HOST_MULTIARCH)

quietly() { "$@" >/quiet.log 2>&1 || { cat /quiet.log; exit 1; }; }
fail() { echo "$1" >&2; exit 1; }

# old_package NAME DEPENDS FILE...: a package of release 13.1.0-1 with these files, all empty.
old_package() {
  name=$1 depends=$2
  shift 2
  for file; do mkdir -p "/old/$name$(dirname "$file")"; : >"/old/$name$file"; done
  mkdir -p "/old/$name/DEBIAN"
  printf 'Package: %s\nVersion: 13.1.0-1\nArchitecture: %s\nMaintainer: nobody <root@localhost>\n' \
    "$name" "$(dpkg --print-architecture)" >"/old/$name/DEBIAN/control"
  if [ -n "$depends" ]; then echo "Depends: $depends" >>"/old/$name/DEBIAN/control"; fi
  echo "Description: the first release" >>"/old/$name/DEBIAN/control"
  quietly dpkg-deb --root-owner-group --build "/old/$name" "/old/$name.deb"
}

echo "-- upgrade from 13.1.0"
lib=/usr/lib/$triplet
old_package libsorrelin "" "$lib/libsorrelin.so.13.1.0" "$lib/libsorrelin.so.13" \
  "$lib/libsorrelin-platform.so.13.1.0" "$lib/libsorrelin-platform.so.13"
old_package libsorrelin-dev "libsorrelin (= 13.1.0-1)" "$lib/libsorrelin.so" "$lib/libsorrelin.a" \
  /usr/include/sorrelin/frame/pdf.h
old_package sorrelin-codecs "libsorrelin (= 13.1.0-1)" "$lib/libcadwick.so" "$lib/librennick.so" \
  "$lib/libaverna.so"
old_package sorrelin "libsorrelin (= 13.1.0-1), sorrelin-codecs (= 13.1.0-1)" /usr/bin/sorrelin
quietly dpkg -i /old/*.deb
quietly apt-get -qq install -y --no-install-recommends /packages/*.deb
[ ! -e "$lib/libcadwick.so" ] || fail "the codecs of 13.1.0 are still there"
[ -e "$lib/sorrelin/libcadwick.so" ] || fail "no codecs in their private folder"
dpkg-query -W -f='${db:Status-Status}' libsorrelin 2>/dev/null | grep -qx installed &&
  fail "the library package of 13.1.0 is still there"

echo "-- find_package"
cmake -S /examples -B /built >/configure.log
cmake --build /built >/build.log
/built/write_document /c.pdf >/dev/null
/built/memory_document /cpp.pdf >/dev/null

echo "-- pkg-config"
cc -std=c11 -Wall -Wextra -Werror /examples/write_document.c -o /with_cc \
  $(pkg-config --cflags --libs sorrelin)
/with_cc /c2.pdf >/dev/null
cc -std=c11 /examples/jpeg_pages.c -o /with_coded $(pkg-config --cflags --libs sorrelin-coded)

echo "-- program and manual"
sorrelin extract /cpp.pdf --output /page-%d.png
sorrelin make /made.pdf /page-1.png /page-2.png
sorrelin count /c.pdf /c2.pdf /made.pdf
[ -e /usr/share/man/man1/sorrelin.1.gz ] || [ -e /etc/dpkg/dpkg.cfg.d/excludes ] || fail "no manual"

echo "-- printer"
[ "$(/usr/lib/cups/backend/sorrelin | cut -d' ' -f1)" = file ] || fail "the backend does not list itself"
[ "$(stat -c %a /usr/lib/cups/backend/sorrelin)" = 700 ] || fail "the backend would not be run as root"
[ -d /var/spool/sorrelin ] || fail "no folder for printed documents"
[ -e /usr/share/ppd/sorrelin/sorrelin.ppd ] || fail "no driver file"

echo "-- Python"
python3 -c 'import sorrelin; print(sorrelin.page_count("/made.pdf"), "pages")' | grep -q '2 pages'

echo "-- a codec that is missing"
quietly apt-get -qq remove -y sorrelin-codecs
printf 'P1 8 8 %064d' 0 >/white.pbm
sorrelin make /refused.pdf /white.pbm 2>/refused.log && fail "a page without its codec"
grep -q 'sorrelin-codecs' /refused.log || { cat /refused.log; exit 1; }
quietly apt-get -qq install -y --no-install-recommends /packages/sorrelin-codecs_*.deb
quietly sorrelin make /coded.pdf /white.pbm

echo "-- remove and purge"
names=$(for file in /packages/*.deb; do dpkg-deb -f "$file" Package; done)
quietly apt-get -qq remove -y $names
quietly dpkg --purge $names libsorrelin
left=$(find /usr /etc /var/lib -iname '*sorrelin*' ! -path '/usr/share/doc/*' ! -path '*/lists/*')
[ -z "$left" ] || fail "left behind: $left"
ldconfig -p | grep -q sorrelin && fail "the loader's cache still has the library"
echo "all packages work in a clean root"
