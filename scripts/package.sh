#!/usr/bin/env bash
# Builds the Debian packages in build/package and checks them with lintian. With --try they are
# installed over the first release, used and removed in a clean Debian root; --try needs root and a
# network.
#
# usage: scripts/package.sh [--try]
#
# Name the maintainer of packages that are distributed: SORRELIN_MAINTAINER="Name <address>".
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/packages.sh package
rm -rf build/package
mkdir -p build/package/source
find . -mindepth 1 -maxdepth 1 ! -name build ! -name '.?*' -exec cp -r -t build/package/source {} +
cp -r packaging/debian build/package/source/debian
if [ -n "${SORRELIN_MAINTAINER:-}" ]; then
  sed -i "s/Unreleased build <root@localhost>/$SORRELIN_MAINTAINER/" \
    build/package/source/debian/{control,changelog}
fi

log=$PWD/build/package/build.log
echo "building (build/package/build.log) ..."
(cd build/package/source && DEB_BUILD_OPTIONS="parallel=$(nproc) nocheck noautodbgsym" dpkg-buildpackage -us -uc -b) \
  >"$log" 2>&1 || { tail -n 40 "$log"; exit 1; }
ls build/package/*.deb
lintian --allow-root --fail-on error,warning build/package/*.deb
echo "lintian finds nothing that is not named in packaging/debian/owner.lintian-overrides"

if [ "${1:-}" != --try ]; then exit 0; fi
sources=/etc/apt/sources.list
grep -qs '^deb' "$sources" || sources=/etc/apt/sources.list.d/debian.sources
suite=$(. /etc/os-release && echo "$VERSION_CODENAME")
export repository=$PWD
mmdebstrap --quiet --variant=apt --format=null --include=g++,cmake,dpkg-dev,make,pkg-config \
  --dpkgopt=force-unsafe-io \
  --customize-hook='mkdir "$1/packages"; cp "$repository"/build/package/*.deb "$1/packages"' \
  --customize-hook='cp -r "$repository/examples" "$repository/tests/package/in_clean_root.sh" "$1"' \
  --customize-hook='env -i PATH="$PATH" HOME=/root chroot "$1" sh /in_clean_root.sh' \
  "$suite" /dev/null "$sources"
