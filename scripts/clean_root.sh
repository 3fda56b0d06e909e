#!/usr/bin/env bash
# Does what "Build and install" of README.md says, word for word, in fresh Debian roots that have
# nothing else, and then what users do with a build. Needs root and a network, and takes minutes.
#
# usage: scripts/clean_root.sh [g++|clang++|minimal]...     (default: all three)
#
# g++ and clang++ build with that compiler; minimal builds with g++ and without any optional part.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/packages.sh package

sources=/etc/apt/sources.list
grep -qs '^deb' "$sources" || sources=/etc/apt/sources.list.d/debian.sources
suite=$(. /etc/os-release && echo "$VERSION_CODENAME")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export SORRELIN_SOURCES=$work/sources.tar
tar --exclude=./build --exclude=./.git -cf "$SORRELIN_SOURCES" .

# try_in_root COMPILER MODE [PACKAGE...]
try_in_root() {
  local compiler=$1 mode=$2
  shift 2
  echo "== $compiler, $mode"
  mmdebstrap --quiet --variant=apt --format=null --dpkgopt=force-unsafe-io \
    --include="$(echo ca-certificates "$@" | tr ' ' ,)" \
    --customize-hook='mkdir "$1/root/Quellen für alle"' \
    --customize-hook='tar -xf "$SORRELIN_SOURCES" -C "$1/root/Quellen für alle"' \
    --customize-hook="env -i PATH=\"\$PATH\" HOME=/root CXX=$compiler chroot \"\$1\" \
      bash '/root/Quellen für alle/tests/package/from_readme.sh' $mode" \
    "$suite" /dev/null "$sources"
}

for trial in "${@:-g++ clang++ minimal}"; do
  for name in $trial; do
    case $name in
      g++) try_in_root g++ build ;;
      clang++) try_in_root clang++ build clang ;;
      minimal) try_in_root g++ minimal ;;
      *) sed -n '5s/# //p' "$0" >&2; exit 2 ;;
    esac
  done
done
echo "every clean root works"
