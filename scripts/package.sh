#!/usr/bin/env bash
# Makes the Debian packages libsorrelin, libsorrelin-dev, sorrelin-codecs and sorrelin in
# build/package/packages. With --try they are installed into a clean Debian root that is made for it,
# where the examples are built and run with nothing but what the packages brought. --try needs root.
# Further options go to cmake, as -DSORRELIN_MAINTAINER="Name <address>".
set -euo pipefail
cd "$(dirname "$0")/.."

try=
if [ "${1:-}" = --try ]; then try=yes; shift; fi
scripts/packages.sh package
cmake --preset release -B build/package -DCMAKE_INSTALL_PREFIX=/usr -DSORRELIN_PARTS=ON "$@" >/dev/null
cmake --build build/package --parallel "$(nproc)"
rm -rf build/package/packages
(cd build/package && cpack >cpack.log 2>&1) || { cat build/package/cpack.log; exit 1; }
ls build/package/packages/*.deb
if [ -z "$try" ]; then exit 0; fi

sources=/etc/apt/sources.list
grep -qs '^deb' "$sources" || sources=/etc/apt/sources.list.d/debian.sources
suite=$(. /etc/os-release && echo "$VERSION_CODENAME")
export repository=$PWD
mmdebstrap --quiet --variant=apt --format=null --include=g++,cmake,make,pkg-config \
  --dpkgopt=force-unsafe-io \
  --customize-hook='mkdir "$1/packages"; cp "$repository"/build/package/packages/*.deb "$1/packages"' \
  --customize-hook='cp -r "$repository/examples" "$repository/tests/package/in_clean_root.sh" "$1"' \
  --customize-hook='env -i PATH="$PATH" HOME=/root chroot "$1" sh /in_clean_root.sh' \
  "$suite" /dev/null "$sources"
