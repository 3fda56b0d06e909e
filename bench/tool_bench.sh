#!/usr/bin/env bash
# Compares the verbs that read documents with poppler's tools on the same documents, which it makes
# itself. Each pair runs in turns, and the shortest time of each counts, so that a busy machine does
# no harm.
#
# usage: bench/tool_bench.sh [BUILD-FOLDER] [RUNS]     (default: build/bench 7)
#
# Prints the times, their ratio and its limit; fails if a limit is passed.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/bench}
runs=${2:-7}
sorrelin=$build/bin/sorrelin
if [ ! -x "$sorrelin" ]; then
  echo "there is no $sorrelin: cmake --preset bench && cmake --build --preset bench" >&2
  exit 2
fi
sorrelin=$(realpath "$sorrelin")
for program in gs pdfimages pdfinfo; do
  command -v "$program" >/dev/null || { echo "needs $program (scripts/packages.sh demo)" >&2; exit 2; }
done

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

# 200 pages of text at 300 dpi.
cat >text.ps <<'PS'
%!PS
/Times-Roman findfont 11 scalefont setfont
1 1 200 { /page exch def /y 780 def
  48 { 60 y moveto page 20 string cvs show
       ( the quick brown fox jumps over the lazy dog and counts ) show
       y 20 string cvs show ( lines of text on a page) show /y y 15 sub def } repeat
  showpage } for
PS
gs -q -dBATCH -dNOPAUSE -sDEVICE=tiffg4 -r300 -sPAPERSIZE=a4 -o text.tif text.ps
"$sorrelin" make text.pdf text.tif
# 10,000 small pages.
printf 'P1 8 8\n%s\n' "$(printf '1 0 1 1 0 0 1 0 %.0s' 1 2 3 4 5 6 7 8)" >small.pbm
mapfile -t pictures < <(yes small.pbm | head -n 10000)
"$sorrelin" make small.pdf "${pictures[@]}"

# seconds COMMAND...: wall time of one run in $time.
seconds() {
  local before=$EPOCHREALTIME
  "$@" >/dev/null
  local after=$EPOCHREALTIME
  time=$(awk -v a="$before" -v b="$after" 'BEGIN { printf "%.4f", b - a }')
}

lesser() { awk -v a="$1" -v b="$2" 'BEGIN { print a < b ? a : b }'; }

failed=0
# compare NAME LIMIT OURS THEIRS: two functions, and the most that ours may take of theirs.
compare() {
  local name=$1 limit=$2 ours=999999 theirs=999999
  for ((run = 0; run < runs; ++run)); do
    seconds "$3"
    ours=$(lesser "$time" "$ours")
    seconds "$4"
    theirs=$(lesser "$time" "$theirs")
  done
  awk -v name="$name" -v a="$ours" -v b="$theirs" -v limit="$limit" 'BEGIN {
    printf "%-42s %8.3f s %8.3f s   ratio %.2f (limit %.2f)\n", name, a, b, a / b, limit
    exit a > b * limit }' || failed=1
}

count() { "$sorrelin" count small.pdf; }
info_by_poppler() { pdfinfo small.pdf; }
extract_one() { "$sorrelin" extract text.pdf --quiet --force --output all.tif; }
extract_many() { rm -rf many && mkdir many && "$sorrelin" extract text.pdf --quiet --output many/%d.tif; }
images_by_poppler() { rm -rf images && mkdir images && pdfimages -tiff text.pdf images/p; }

printf '%-42s %10s %10s\n' "" sorrelin poppler
compare "count 10,000 pages / pdfinfo" 2 count info_by_poppler
compare "extract 200 Group 4 pages, one TIFF" 1 extract_one images_by_poppler
compare "extract 200 Group 4 pages, 200 TIFF files" 1 extract_many images_by_poppler
[ "$(tail -n 1 <("$sorrelin" count small.pdf))" = 10000 ]
[ "$(find images -name '*.tif' | wc -l)" = 200 ]
[ "$(find many -name '*.tif' | wc -l)" = 200 ]
exit "$failed"
