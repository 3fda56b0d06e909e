#!/usr/bin/env bash
# Makes Wine for 32-bit programs on a machine of amd64, whose set-up stays as it is: a small Debian
# root of i386 in the cache, once, and the commands `wine` and `wineserver`, which run in it with the
# files of this system.
# usage: scripts/wine32.sh
# The last line of the output is the folder of the commands. Needs the packages of
# `scripts/packages.sh windows`, a network for the first run, and root or user namespaces.
set -euo pipefail

cache=${SORRELIN_WINDOWS_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/sorrelin-windows}
root=$cache/wine32-root
commands=$cache/wine32
mkdir -p "$commands"

# Archives of the distribution itself: the list of security updates may name files that a mirror does
# not have for every architecture, and Wine is used for tests alone here.
list_archives() {
  cat /etc/apt/sources.list.d/*.sources 2>/dev/null |
    awk 'BEGIN { RS = ""; ORS = "\n\n" } /URIs:[^\n]*\/debian\/?(\n|$)/' >"$commands/archives.sources" || true
  cat /etc/apt/sources.list /etc/apt/sources.list.d/*.list 2>/dev/null |
    grep -E '^deb [^#]*/debian/? ' >"$commands/archives.list" || true
}

# The folders of this system that are no part of a distribution get a place to be mounted on.
make_root() {
  list_archives
  rm -rf "$root.new"  # of a run that was interrupted
  mmdebstrap --quiet --architectures=i386 --variant=apt --format=directory \
    --dpkgopt=force-unsafe-io --include=wine,wine32 \
    --customize-hook='for folder in /*/; do mkdir -p "$1$folder"; done' \
    "$(. /etc/os-release && echo "$VERSION_CODENAME")" "$root.new" \
    "$commands/archives.sources" "$commands/archives.list"
  mv "$root.new" "$root"
}

# write_command NAME: a mount namespace for each run, in which the root has the trees of this system
# that the working folder and Wine's own are in, and those of users and devices.
write_command() {
  local user=
  if [ "$(id -u)" -ne 0 ]; then user=--map-root-user; fi
  cat >"$commands/$1" <<END
#!/bin/sh
exec unshare $user --mount sh -c '
root=\$1 folder=\$2
shift 2
for place in "\$folder" "\$WINEPREFIX" /home/ /root/ /tmp/ /dev/ /proc/ /sys/; do
  place=\${place#/}
  place=/\${place%%/*}
  case \$place in / | /bin | /etc | /lib* | /sbin | /usr | /var) continue ;; esac
  mountpoint -q "\$root\$place" || mount --rbind "\$place" "\$root\$place" || exit 1
done
exec chroot "\$root" sh -c "cd \"\\\$0\" && exec \"\\\$@\"" "\$folder" "\$@"
' sh '$root' "\$PWD" /usr/bin/$1 "\$@"
END
  chmod +x "$commands/$1"
}

if [ ! -x "$root/usr/lib/wine/wine" ]; then make_root >&2; fi
write_command wine
write_command wineserver
"$commands/wineserver" --version >/dev/null 2>&1 || {
  echo "32-bit programs, or the mounts that they need, are not allowed here" >&2
  exit 1
}
echo "$commands"
