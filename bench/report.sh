#!/usr/bin/env bash
# Makes docs/performance.md and its plots from one run of all benchmarks that compare with a peer.
# usage: bench/report.sh [BUILD-FOLDER] [RUNS]     (default: build/bench 7)
# RUNS is for jobs of the program; recognition, which takes minutes, has at most three.
# A limit that is passed is reported, and the page is made all the same.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/bench}
runs=${2:-7}
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
log=$folder/log
programs=(page_bench read_bench group4_bench group4_page_bench)
for program in "${programs[@]}"; do
  [ -x "$build/bin/$program" ] && continue
  echo "there is no $build/bin/$program: cmake --preset bench -DSORRELIN_BUILD_BENCH=ON &&" \
    "cmake --build --preset bench" >&2
  exit 2
done

bench/tool_bench.sh "$build" "$runs" | tee "$log" || echo "a limit was passed" >&2
bench/ocr_bench.sh "$build" "$((runs < 3 ? runs : 3))" | tee -a "$log" || echo "a limit was passed" >&2
results=()
for program in "${programs[@]}"; do
  results+=("$folder/$program.json")
  "$build/bin/$program" --benchmark_filter='^((Flate|Group4|Jpeg|Raw|Whole)Page|Encoding|Decoding)' \
    --benchmark_out="$folder/$program.json" --benchmark_out_format=json
done

version_of() { dpkg-query -W -f='${Version}' "$1"; }
load=$(cut -d ' ' -f 2 /proc/loadavg)
processor=$(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -n 1)
python3 bench/report.py "$log" docs "${results[@]}" <<MACHINE
Measured on $(LC_ALL=C date -u +'%-d %B %Y') with $("$build/bin/sorrelin" --version | head -n 1) on
$(. /etc/os-release && echo "$PRETTY_NAME"), $(nproc) processors ($processor),
$(awk '/^MemTotal/ { printf "%.0f", $2 / 1048576 }' /proc/meminfo) GiB of memory and a load of $load (other work
makes all of these times longer), beside
img2pdf $(version_of img2pdf), libtiff and its tiff2pdf $(version_of libtiff-tools), pdfimages and
pdfinfo of poppler $(version_of poppler-utils), ocrmypdf $(version_of ocrmypdf), Tesseract
$(version_of tesseract-ocr), zlib $(version_of zlib1g), and libjpeg-turbo $(version_of libjpeg62-turbo).
MACHINE
