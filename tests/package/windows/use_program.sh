#!/usr/bin/env bash
# Uses sorrelin.exe as a new user would: pictures into documents and back, under names of every
# script and on long paths.
# usage: use_program.sh PROGRAM FOLDER    (with WINEPREFIX set)
set -euo pipefail
program=$1
mkdir "$2/work"
cd "$2/work"
sorrelin() { wine "$program" "$@" 2>messages; }

# refuses TEXT ARGUMENT...: a call that must fail with the text in its message.
refuses() {
  local text=$1 code=0
  shift
  sorrelin "$@" || code=$?
  [ "$code" -eq 1 ] && grep -q "$text" messages
}

{
  printf 'P6\n32 24\n255\n'
  for value in $(seq 2304); do printf "\\x$(printf %02x $((value * 7 % 256)))"; done
} >page.ppm
sorrelin make first.pdf page.ppm
for kind in png tiff jpg; do sorrelin extract first.pdf --output "page.$kind" --quiet; done

name='Größe Жук 漢字.pdf'
sorrelin make "$name" page.png page.tiff page.jpg --title 'Größe'
[ "$(sorrelin count "$name")" = 3 ]
[ "$(pdfimages -list "$name" | awk 'NR > 2 { print $4 "x" $5 }' | sort -u)" = 32x24 ]
pdfinfo "$name" | grep -q 'Title: *Größe$'
sorrelin append "$name" page.png
[ "$(sorrelin count "$name")" = 4 ]
for page in 1 2 4; do
  sorrelin extract "$name" --pages $page --output back.ppm --force --quiet
  cmp page.ppm back.ppm
done

sorrelin make - - <page.png >piped.pdf
[ "$(sorrelin count piped.pdf)" = 1 ]
deep=$(printf '%0150d' 1)/$(printf '%0150d' 2)
mkdir -p "$deep"
sorrelin make "$deep/long.pdf" page.png
[ "$(sorrelin count "$deep/long.pdf")" = 1 ]

printf '{"output": "%s", "pictures": ["page.png", "page.jpg"]}\n' one.pdf 'zwei Жук.pdf' >list.jsonl
sorrelin batch list.jsonl
[ "$(sorrelin count 'zwei Жук.pdf')" = 2 ]
sorrelin batch list.jsonl
[ "$(cat messages)" = 'sorrelin: list.jsonl: 2 kept' ]
sorrelin info "$name" | grep -q '^Pages: *4'

# As a command line of Windows has them, whose shell expands nothing.
sorrelin make patterns.pdf 'page.*' 'p?ge.PNG' --title '*'
[ "$(sorrelin count patterns.pdf)" = 5 ]
[ "$(sorrelin count '*.pdf' | wc -l)" = "$(ls *.pdf | wc -l)" ]

share=$WINEPREFIX/dosdevices/unc/server/share
mkdir -p "$share"
for folder in 'C:' 'C:\windows/temp\' '\\?\C:\windows\temp\' '\\server\share\' '//server/share/'; do
  sorrelin make "${folder}place.pdf" page.png --force
  sorrelin append "${folder}place.pdf" page.png
  sorrelin append "${folder}place.pdf" page.png --in-place
  [ "$(sorrelin count "${folder}place.pdf")" = 3 ]
  sorrelin extract "${folder}place.pdf" --pages 3 --output "${folder}place.png" --force --quiet
done
[ "$(ls -A "$share" | paste -sd' ')" = 'place.pdf place.png' ]

cp piped.pdf kept.pdf
refuses 'exists already' make piped.pdf page.png
cmp piped.pdf kept.pdf
refuses 'is the name of a device' make con.pdf page.png
refuses 'No such file' make other.pdf none.png
refuses 'Path not found\|No such file' make none/other.pdf page.png
refuses 'scanner' scan other.pdf
cp piped.pdf protected.pdf
chmod a-w protected.pdf
refuses 'is read-only' make protected.pdf page.png --force
refuses 'make it writable' append protected.pdf page.png
cmp piped.pdf protected.pdf
[ -z "$(find . -name '*.tmp' -o -name 'other.pdf')" ]
