#!/usr/bin/env bash
# Measures searchable documents on twenty pages that it renders itself: English, German, French,
# Russian and Hebrew, each straight, tilted by 2 degrees, black and white, and turned.
#
# usage: bench/ocr_bench.sh [BUILD-FOLDER] [RUNS]      (default: build/bench 3; 0 runs: no times)
#
# Prints the share of words that pdftotext finds at their place, what a page costs in bytes, and
# the processor time beside ocrmypdf and Tesseract alone, each with one job and one thread, which
# other programs on the machine disturb least; fails where a limit is passed.
# Needs the Debian packages ocrmypdf, graphicsmagick, poppler-utils, fonts-dejavu-core,
# tesseract-ocr (for text2image too) and tesseract-ocr-{eng,deu,fra,rus,heb,osd}.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/bench}
runs=${2:-3}
found=$PWD/bench/ocr_found.py
sorrelin=$build/bin/sorrelin
if [ ! -x "$sorrelin" ]; then
  echo "there is no $sorrelin: cmake --preset bench && cmake --build --preset bench" >&2
  exit 2
fi
sorrelin=$(realpath "$sorrelin")
programs=(gm pdfimages pdftotext python3 text2image)
if [ "$runs" -gt 0 ]; then programs+=(ocrmypdf tesseract); fi
for program in "${programs[@]}"; do
  command -v "$program" >/dev/null || { echo "needs $program" >&2; exit 2; }
done

export OMP_THREAD_LIMIT=1
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

declare -A sentences=(
  [eng]='All human beings are born free and equal in dignity and rights. They are endowed with reason and conscience and should act towards one another in a spirit of brotherhood. Everyone has the right to life, liberty and security of person.'
  [deu]='Alle Menschen sind frei und gleich an Würde und Rechten geboren. Sie sind mit Vernunft und Gewissen begabt und sollen einander im Geist der Brüderlichkeit begegnen. Jeder hat das Recht auf Leben, Freiheit und Sicherheit der Person.'
  [fra]='Tous les êtres humains naissent libres et égaux en dignité et en droits. Ils sont doués de raison et de conscience et doivent agir les uns envers les autres dans un esprit de fraternité. Tout individu a droit à la vie et à la liberté.'
  [rus]='Все люди рождаются свободными и равными в своем достоинстве и правах. Они наделены разумом и совестью и должны поступать в отношении друг друга в духе братства. Каждый человек имеет право на жизнь и на свободу.'
  [heb]='כל בני האדם נולדו בני חורין ושווים בערכם ובזכויותיהם. כולם חוננו בתבונה ובמצפון לפיכך חובה עליהם לנהוג איש ברעהו ברוח של אחווה. כל אדם זכאי לחיים לחירות ולביטחון אישי.'
)
languages=(eng deu fra rus heb)
turns=(eng:90 deu:180 fra:270 rus:180 heb:90)

for language in "${languages[@]}"; do
  for ((i = 0; i < 8; ++i)); do echo "${sentences[$language]}"; done >"$language.txt"
  text2image --text="$language.txt" --outputbase="$language" --font='DejaVu Sans' \
    --fonts_dir=/usr/share/fonts/truetype --resolution=300 --xsize=2480 --ysize=3508 \
    --margin=240 --ptsize=11 --leading=24 --degrade_image=false --rotate_image=false \
    >/dev/null 2>&1
  gm convert "$language.tif" -type grayscale -units PixelsPerInch -density 300x300 "$language-1.png"
  gm convert "$language-1.png" -background white -rotate 2 -gravity center -crop 2480x3508+0+0 \
    +repage -units PixelsPerInch -density 300x300 "$language-2.png"
  gm convert "$language-1.png" -threshold 50% -type bilevel -units PixelsPerInch -density 300x300 \
    "$language-3.png"
done
for turn in "${turns[@]}"; do
  language=${turn%:*}
  gm convert "$language-1.png" -rotate "${turn#*:}" -units PixelsPerInch -density 300x300 \
    "$language-4.png"
done

failed=0
# check NAME FIGURE LIMIT: the figure may not pass the limit.
check() {
  local verdict=ok
  if awk -v a="$2" -v b="$3" 'BEGIN { exit !(a > b) }'; then verdict=PASSED failed=1; fi
  printf '%-44s %10s (at most %s) %s\n' "$1" "$2" "$3" "$verdict"
}

words=0 seen=0 bytes=0
for language in "${languages[@]}"; do
  "$sorrelin" make "$language.pdf" "$language"-[1-4].png
  "$sorrelin" ocr "$language.pdf" --output "$language-text.pdf" --language "$language" \
    --orientation auto
  read -r hits all < <(python3 "$found" "$language-text.pdf" 1 "$language.box" 0 \
    2 "$language.box" 2 3 "$language.box" 0 4 "$language.box" 0)
  printf '%s: %s of %s words\n' "$language" "$hits" "$all"
  words=$((words + all)) seen=$((seen + hits))
  bytes=$((bytes + $(stat -c %s "$language-text.pdf") - $(stat -c %s "$language.pdf")))
  for kind in "$language" "$language-text"; do
    mkdir "$kind"
    pdfimages -all "$kind.pdf" "$kind/picture"
  done
  cmp <(cat "$language"/*) <(cat "$language-text"/*) || failed=1
done
check "words not found of 100" \
  "$(awk -v a="$seen" -v b="$words" 'BEGIN { printf "%.2f", 100 - 100 * a / b }')" 2
check "bytes a page" "$((bytes / 20))" 12287

# seconds COMMAND...: processor time of one run in $time.
seconds() {
  local TIMEFORMAT='%U %S'
  time=$({ time "$@" >/dev/null 2>&1; } 2>&1 | awk '{ printf "%.3f", $1 + $2 }')
}
lesser() { awk -v a="$1" -v b="$2" 'BEGIN { print a < b ? a : b }'; }

ours() {
  for language in "${languages[@]}"; do
    "$sorrelin" ocr "$language.pdf" -o ours.pdf --force --language "$language" --jobs 1 --quiet
  done
}
ocrmypdf_alone() {
  for language in "${languages[@]}"; do
    ocrmypdf --jobs 1 --output-type pdf --optimize 0 -l "$language" "$language.pdf" theirs.pdf
  done
}
tesseract_alone() {
  for language in "${languages[@]}"; do
    printf '%s\n' "$language"-[1-4].png >list.txt
    tesseract list.txt theirs -l "$language" -c textonly_pdf=1 pdf
  done
}

if [ "$runs" -eq 0 ]; then exit "$failed"; fi
mine=999999 other=999999 engine=999999
for ((run = 0; run < runs; ++run)); do
  seconds ours; mine=$(lesser "$time" "$mine")
  seconds ocrmypdf_alone; other=$(lesser "$time" "$other")
  seconds tesseract_alone; engine=$(lesser "$time" "$engine")
done
# compare PEER SECONDS LIMIT: a line as bench/tool_bench.sh prints it.
compare() {
  awk -v name="20 pages with text (processor time) / $1" -v a="$mine" -v b="$2" -v limit="$3" 'BEGIN {
    printf "%-54s %8.3f s %8.3f s   ratio %.2f (limit %.2f)\n", name, a, b, a / b, limit
    exit a > b * limit }' || failed=1
}
compare ocrmypdf "$other" 0.8
compare tesseract "$engine" 1.1
exit "$failed"
