#!/bin/sh
# Run inside a clean Debian root: installs the packages, builds the examples and runs the program.
set -eu
export DEBIAN_FRONTEND=noninteractive
apt-get -qq install -y --no-install-recommends /packages/*.deb >/install.log 2>&1 || {
  cat /install.log
  exit 1
}

echo "-- find_package"
cmake -S /examples -B /built >/configure.log
cmake --build /built >/build.log
/built/write_document /c.pdf >/dev/null
/built/memory_document /cpp.pdf >/dev/null

echo "-- pkg-config"
cc -std=c11 -Wall -Wextra -Werror /examples/write_document.c -o /with_cc \
  $(pkg-config --cflags --libs sorrelin)
/with_cc /c2.pdf >/dev/null

echo "-- program"
sorrelin extract /cpp.pdf --output /page-%d.png
sorrelin make /made.pdf /page-1.png /page-2.png
sorrelin count /c.pdf /c2.pdf /made.pdf

echo "-- removal"
apt-get -qq remove -y libsorrelin >/dev/null 2>&1
[ -z "$(ls /usr/lib/*/libsorrelin* 2>/dev/null)" ]
echo "all packages work in a clean root"
