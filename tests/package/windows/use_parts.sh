#!/usr/bin/env bash
# Uses the parts of sorrelin.exe that have libraries of their own as a new user would: without them,
# without trained data, and with both.
# usage: use_parts.sh FOLDER_OF_PROGRAM FOLDER    (with WINEPREFIX set)
set -euo pipefail
bin=$1
trained=/usr/share/tesseract-ocr/5/tessdata
mkdir "$2/parts"
cd "$2/parts"
unset TESSDATA_PREFIX
sorrelin() { wine "$bin/sorrelin.exe" "$@" 2>messages; }

# refuses TEXT ARGUMENT...: a call that must fail with the text in its message.
refuses() {
  local text=$1 code=0
  shift
  sorrelin "$@" || code=$?
  [ "$code" -eq 1 ] && grep -q "$text" messages
}

# without FILE TEXT ARGUMENT...: the same while a file of the program is elsewhere.
without() {
  local file=$1
  shift
  mv "$bin/$file" .
  refuses "$@"
  mv "$file" "$bin"
}

gs -q -dNOPAUSE -dBATCH -sDEVICE=pnggray -dTextAlphaBits=4 -r300 -g1800x600 -sOutputFile=page.png \
  -c '/Helvetica findfont 14 scalefont setfont 72 72 moveto (The old harbour lies behind a wall) show showpage'

for form in heic avif; do
  heif-enc page.png -q 95 $([ $form = heic ] || echo -A) -o "page.$form" >/dev/null
  sorrelin make "$form.pdf" "page.$form"
  [ "$(pdfimages -list "$form.pdf" | awk 'NR > 2 { print $4 "x" $5 }')" = 1800x600 ]
  without sorrelin-heif.dll 'sorrelin-heif.dll is not there' make other.pdf "page.$form"
done

if [ ! -f "$bin/Averna.dll" ]; then
  refuses 'Averna.dll is missing' words page.png
  exit
fi
refuses 'put eng.traineddata into the folder tessdata beside sorrelin.exe' words page.png
refuses 'put eng.traineddata into the folder tessdata' make other.pdf page.png --ocr eng
[ ! -e other.pdf ]
cp "$trained/eng.traineddata" "$bin/tessdata"
sorrelin words --text page.png | grep -q 'The old harbour lies behind a wall'
sorrelin make text.pdf page.png --ocr eng
pdftotext text.pdf - | grep -q 'The old harbour lies behind a wall'
without Averna.dll 'Averna.dll is missing or unusable: put it beside sorrelin.exe' words page.png
