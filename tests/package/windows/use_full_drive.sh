#!/usr/bin/env bash
# Uses sorrelin.exe on a drive that is too small: what does not fit is named, and nothing is lost.
# usage: use_full_drive.sh PROGRAM FOLDER    (with WINEPREFIX set; FOLDER is on a disk of a megabyte)
set -euo pipefail
program=$1
disk=$2
ln -sfn "$disk" "$WINEPREFIX/dosdevices/f:"
cd "$(mktemp -d -p "$WINEPREFIX")"
sorrelin() { wine "$program" "$@" 2>messages; }

# fails ARGUMENT...: a call that must fail for want of room, and leave the disk as it was.
fails() {
  local code=0
  sorrelin "$@" || code=$?
  [ "$code" -eq 1 ] && grep -q 'room' messages || { cat messages; exit 1; }
  [ "$(ls -A "$disk" | paste -sd' ')" = small.pdf ]
  cmp small.pdf "$disk/small.pdf"
}

printf 'P6\n2 1\n255\nabcdef' >small.ppm
{ printf 'P6\n1000 700\n255\n'; head -c 2100000 /dev/urandom; } >large.ppm
sorrelin make large.pdf large.ppm
sorrelin make 'F:\small.pdf' small.ppm
cp "$disk/small.pdf" .

fails make 'F:\large.pdf' large.ppm
fails make 'F:\small.pdf' large.ppm --force
fails append 'F:\small.pdf' large.ppm
fails append 'F:\small.pdf' large.ppm --in-place
fails extract large.pdf --output 'F:\large.png'

code=0
sorrelin make - large.ppm >"$disk/out.pdf" || code=$?
[ "$code" -eq 1 ]
grep -q 'standard output: cannot be written' messages
rm "$disk/out.pdf"

{
  printf '{"output": "F:/large.pdf", "pictures": ["large.ppm"]}\n'
  printf '{"output": "F:/other.pdf", "pictures": ["small.ppm"]}\n'
} >list.jsonl
code=0
sorrelin batch list.jsonl || code=$?
[ "$code" -eq 1 ]
grep -q 'large.pdf' messages
[ "$(ls -A "$disk" | paste -sd' ')" = 'other.pdf small.pdf' ]
[ "$(sorrelin count 'F:\other.pdf')" = 1 ]
