#!/usr/bin/env bash
# Compares the verbs that read documents with poppler's tools, and make with img2pdf and tiff2pdf, on
# files that it makes itself. Each pair runs in turns, and the shortest time of each counts, so that a busy machine does
# no harm.
#
# usage: bench/tool_bench.sh [BUILD-FOLDER] [RUNS]     (default: build/bench 7)
#
# Prints the times, their ratio and its limit, and the sizes of what was written; fails if a limit is
# passed. bench/report.sh makes a page of it.
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
for program in gs img2pdf pdfimages pdfinfo qpdf tiff2pdf tiffcp; do
  command -v "$program" >/dev/null || { echo "needs $program (scripts/packages.sh test)" >&2; exit 2; }
done

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

# 200 pages of text at 300 dpi. The words are random: lines that repeat would be no ordinary text.
awk 'BEGIN {
  srand(5)
  letters = "eeeetttaaaooiinnsshhrrddlucmfwypvbgk"
  for (w = 0; w < 3000; ++w) {
    word[w] = ""
    for (l = 2 + int(rand() * 9); l > 0; --l) word[w] = word[w] substr(letters, 1 + int(rand() * 36), 1)
  }
  print "%!PS\n/Times-Roman findfont 11 scalefont setfont"
  for (page = 1; page <= 200; ++page) {
    for (y = 780; y > 50; y -= 15) {
      line = page " " y
      for (w = 0; w < 13; ++w) line = line " " word[int(rand() * 3000)]
      print 60, y, "moveto (" line ") show"
    }
    print "showpage"
  }
}' >text.ps
gs -q -dBATCH -dNOPAUSE -sDEVICE=tiffg4 -r300 -sPAPERSIZE=a4 -o text.tif text.ps
"$sorrelin" make text.pdf text.tif
# 10,000 small pages.
printf 'P1 8 8\n%s\n' "$(printf '1 0 1 1 0 0 1 0 %.0s' 1 2 3 4 5 6 7 8)" >small.pbm
mapfile -t pictures < <(yes small.pbm | head -n 10000)
"$sorrelin" make small.pdf "${pictures[@]}"
# The same pages in object streams. The warnings are of keys that the coder writes twice.
qpdf --warning-exit-0 --no-warn --object-streams=generate small.pdf packed.pdf
# The text as JPEG, and as grey Flate data.
gs -q -dBATCH -dNOPAUSE -sDEVICE=jpeg -r150 -sPAPERSIZE=a4 -o page%03d.jpg text.ps
img2pdf page*.jpg -o photos.pdf
gs -q -dBATCH -dNOPAUSE -sDEVICE=pdfimage8 -r100 -sPAPERSIZE=a4 -o flate.pdf text.ps

# seconds COMMAND...: wall time of one run in $time.
seconds() {
  local before=$EPOCHREALTIME
  "$@" >/dev/null
  local after=$EPOCHREALTIME
  time=$(awk -v a="$before" -v b="$after" 'BEGIN { printf "%.4f", b - a }')
}

lesser() { awk -v a="$1" -v b="$2" 'BEGIN { print a < b ? a : b }'; }

failed=0
# bytes FILE-OR-FOLDER: its size, or that of all files in it.
bytes() { find "$1" -type f -printf '%s\n' | awk '{ sum += $1 } END { print sum }'; }

# compare NAME LIMIT OURS THEIRS [FILE FILE]: two functions, the most that ours may take of theirs,
# and what they write.
compare() {
  local name=$1 limit=$2 ours=999999 theirs=999999 sizes=
  for ((run = 0; run < runs; ++run)); do
    seconds "$3"
    ours=$(lesser "$time" "$ours")
    seconds "$4"
    theirs=$(lesser "$time" "$theirs")
  done
  if [ $# -gt 4 ]; then sizes="   bytes $(bytes "$5") $(bytes "$6")"; fi
  awk -v name="$name" -v a="$ours" -v b="$theirs" -v limit="$limit" -v sizes="$sizes" 'BEGIN {
    printf "%-54s %8.3f s %8.3f s   ratio %.2f (limit %.2f)%s\n", name, a, b, a / b, limit, sizes
    exit a > b * limit }' || failed=1
}

# kept NAME OPTION...: the pictures of NAME.pdf in a new directory, as our verb writes them.
kept() {
  rm -rf kept && mkdir kept
  "$sorrelin" extract "$1.pdf" --quiet --output kept/%d "${@:2}"
}
# images NAME OPTION: the same by poppler.
images() { rm -rf images && mkdir images && pdfimages "$2" "$1.pdf" images/p; }

count() { "$sorrelin" count small.pdf; }
info_by_poppler() { pdfinfo small.pdf; }
count_packed() { "$sorrelin" count packed.pdf; }
packed_by_poppler() { pdfinfo packed.pdf; }
keep_fax() { kept text --format keep; }
fax_by_poppler() { images text -ccitt; }
extract_one() { "$sorrelin" extract text.pdf --quiet --force --output all.tif; }
extract_many() { kept text --format tiff; }
images_by_poppler() { images text -tiff; }
keep_photos() { kept photos --format keep; }
photos_by_poppler() { images photos -j; }
extract_png() { kept flate --format png --jobs 1; }
png_by_poppler() { images flate -png; }

printf '%-54s %10s %10s\n' "" sorrelin poppler
compare "count 10,000 pages / pdfinfo" 1 count info_by_poppler
compare "count 10,000 pages in object streams / pdfinfo" 1 count_packed packed_by_poppler
compare "keep 200 Group 4 pages / pdfimages" 1 keep_fax fax_by_poppler kept images
compare "extract 200 Group 4 pages, one TIFF / pdfimages" 1 extract_one images_by_poppler all.tif images
compare "extract 200 Group 4 pages, 200 TIFF files / pdfimages" 0.25 extract_many images_by_poppler kept images
compare "keep 200 JPEG pages / pdfimages" 1 keep_photos photos_by_poppler kept images
compare "extract 200 Flate pages, PNG / pdfimages" 0.3 extract_png png_by_poppler kept images
[ "$(count)" = 10000 ]
[ "$(count_packed)" = 10000 ]
[ "$(find images -name '*.png' | wc -l)" = 200 ]
[ "$(find kept -type f | wc -l)" = 200 ]

# Pictures: eight RGB pages of 150 dpi, 40 of black and white, the text as TIFF of several codings.
gs -q -dBATCH -dNOPAUSE -sDEVICE=png16m -r150 -sPAPERSIZE=a4 -dLastPage=8 -o rgb%d.png text.ps
gs -q -dBATCH -dNOPAUSE -sDEVICE=pngmono -r300 -sPAPERSIZE=a4 -dLastPage=40 -o mono%d.png text.ps
gs -q -dBATCH -dNOPAUSE -sDEVICE=jpeg -r150 -sPAPERSIZE=a4 -dLastPage=8 -o photo%d.jpg text.ps
tiffcp -c g4 -r 64 text.tif strips.tif
tiffcp -c none text.tif raw.tif

make() { "$sorrelin" make made.pdf --quiet --force "$@"; }
make_rgb() { make rgb*.png; }
rgb_by_img2pdf() { img2pdf rgb*.png -o peer.pdf; }
make_mono() { make mono*.png; }
mono_by_img2pdf() { img2pdf mono*.png -o peer.pdf; }
make_photos() { make photo*.jpg; }
photos_by_img2pdf() { img2pdf photo*.jpg -o peer.pdf; }
make_strips() { make strips.tif; }
strips_by_tiff2pdf() { tiff2pdf -o peer.pdf strips.tif; }
make_strip() { make text.tif --jobs 2; }
strip_by_tiff2pdf() { tiff2pdf -o peer.pdf text.tif; }
make_raw() { make raw.tif --jobs 2; }
raw_by_tiff2pdf() { tiff2pdf -o peer.pdf raw.tif; }
make_auto() { make mono*.png --plain --jobs 1; }
make_group_4() { make mono*.png --plain --compression g4 --jobs 1; }

printf '%-54s %10s %10s\n' "" sorrelin peer
compare "8 RGB PNG pages / img2pdf" 0.25 make_rgb rgb_by_img2pdf made.pdf peer.pdf
[ "$(bytes made.pdf)" -le "$(bytes peer.pdf)" ] || failed=1
compare "40 bilevel PNG files / img2pdf" 0.35 make_mono mono_by_img2pdf made.pdf peer.pdf
compare "8 JPEG files / img2pdf" 0.25 make_photos photos_by_img2pdf made.pdf peer.pdf
compare "Group 4 TIFF of many strips / tiff2pdf" 0.3 make_strips strips_by_tiff2pdf made.pdf peer.pdf
compare "Group 4 TIFF of one strip / tiff2pdf" 2 make_strip strip_by_tiff2pdf made.pdf peer.pdf
compare "200 raw bilevel pages / tiff2pdf" 0.2 make_raw raw_by_tiff2pdf made.pdf peer.pdf
compare "text, the smaller coding / Group 4 alone" 1.3 make_auto make_group_4
exit "$failed"
