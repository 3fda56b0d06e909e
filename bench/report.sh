#!/usr/bin/env bash
# Makes docs/performance.md and its plots from one run of bench/tool_bench.sh.
# usage: bench/report.sh [BUILD-FOLDER] [RUNS]     (default: build/bench 7)
# A limit that is passed is reported, and the page is made all the same.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/bench}
log=$(mktemp)
trap 'rm -f "$log"' EXIT

bench/tool_bench.sh "$build" "${2:-7}" | tee "$log" || echo "a limit was passed" >&2

version_of() { dpkg-query -W -f='${Version}' "$1"; }
load=$(cut -d ' ' -f 2 /proc/loadavg)
processor=$(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -n 1)
python3 bench/report.py "$log" docs <<MACHINE
Measured on $(LC_ALL=C date -u +'%-d %B %Y') with $("$build/bin/sorrelin" --version | head -n 1) on
$(. /etc/os-release && echo "$PRETTY_NAME"), $(nproc) processors ($processor),
$(awk '/^MemTotal/ { printf "%.0f", $2 / 1048576 }' /proc/meminfo) GiB of memory and a load of $load (other work
makes all of these times longer), beside
img2pdf $(version_of img2pdf), tiff2pdf of libtiff $(version_of libtiff-tools), and pdfimages and
pdfinfo of poppler $(version_of poppler-utils).
MACHINE
