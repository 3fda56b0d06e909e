#!/usr/bin/env bash
# From a bare clone to a document and back: installs what is needed, builds, turns a scan, a palette
# picture and a photograph into one PDF, lets three viewers show it, and takes the pictures out again.
# demo.sh [FOLDER] puts everything into FOLDER; the default is build/demo.
set -euo pipefail
cd "$(dirname "$0")/.."
out=${1:-build/demo}
mkdir -p "$out"

scripts/packages.sh demo

echo "building ..."
{
  cmake --preset release -B build/demo-build
  cmake --build build/demo-build --parallel "$(nproc)"
} >"$out/build.log" 2>&1 || { tail -n 40 "$out/build.log" >&2; exit 1; }
sorrelin=$PWD/build/demo-build/bin/sorrelin

# A printed page, as a scanner gives it: bilevel, 300 dpi, Group 4.
cat >"$out/letter.ps" <<'PS'
%!PS
/Times-Roman findfont 13 scalefont setfont
/y 760 def
{ currentfile 200 string readline not { exit } if
  dup (END) eq { pop exit } if
  72 y moveto show /y y 17 sub def } loop
PS
{ sed -n '1,38p' README.md; echo END; echo showpage; } >>"$out/letter.ps"
gs -q -dBATCH -dNOPAUSE -sDEVICE=tiffg4 -r300 -sPAPERSIZE=a4 -o "$out/scan.tif" "$out/letter.ps"
gm convert logo: "$out/palette.gif"
gm convert rose: -resize 400% -density 100 -units PixelsPerInch -quality 92 "$out/photograph.jpg"

document=$out/pictures.pdf
"$sorrelin" make --force --title "Three pictures" "$document" \
  "$out/scan.tif" "$out/palette.gif" "$out/photograph.jpg"

pdftoppm -r 50 -png "$document" "$out/poppler"
mutool draw -q -r 50 -o "$out/mupdf-%d.png" "$document"
gs -q -dBATCH -dNOPAUSE -sDEVICE=png16m -r50 -o "$out/ghostscript-%d.png" "$document"

echo "pages: $(pdfinfo "$document" | sed -n 's/^Pages: *//p'), shown by poppler, MuPDF and Ghostscript as $out/*.png"

echo
echo "and back: $("$sorrelin" count "$document") pages"
"$sorrelin" info "$document"
back() { "$sorrelin" extract "$document" --force --quiet --pages "$1" --output "$out/back-$2"; }
back 1 scan.tif
back 2 palette.png
back 3 photograph.jpg
equal_pixels() {
  gm compare -maximum-error 0 -metric MAE "$out/$1" "$out/$2" >/dev/null ||
    { echo "$1 and $2 are different pictures" >&2; exit 1; }
  echo "$2 shows the same pixels as $1"
}
echo
equal_pixels scan.tif back-scan.tif
equal_pixels palette.gif back-palette.png
cmp "$out/photograph.jpg" "$out/back-photograph.jpg"
echo "back-photograph.jpg is photograph.jpg, byte for byte"
echo "the document: $(realpath "$document")"
