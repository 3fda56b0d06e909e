#!/usr/bin/env bash
# The filter of a print queue: pages a second, and its peak of memory for jobs of 100 and 1,000 pages of
# A4 at 300 dots per inch, black and white and colour. printer_bench.sh [BUILD [PAGES]]
# Fails from 64 MiB on, or when the longer job takes much more memory than the short one.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/bench}
pages=${2:-1000}

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
export TMPDIR=$folder

# raster KIND PAGES: a job of PWG raster, packed, with lines of text-like bars.
raster() {
  python3 - "$1" "$2" <<'END'
import struct
import sys

kind, pages = sys.argv[1], int(sys.argv[2])
width, height = 2480, 3508
bits, colours, space = (1, 1, 3) if kind == "bilevel" else (8, 3, 19)
line_bytes = (width * bits * colours + 7) // 8
header = bytearray(1796)
header[:9] = b"PwgRaster"
numbers = {276: 300, 280: 300, 372: width, 376: height, 384: bits, 388: bits * colours, 392: line_bytes,
           400: space}
for offset, number in numbers.items():
    struct.pack_into(">I", header, offset, number)


def packed(row):
    """A line whose pixels are repeated in units of one byte or three, with literals of 64."""
    unit = max(1, bits * colours // 8)
    line = bytearray()
    for at in range(0, len(row), 64 * unit):
        piece = row[at:at + 64 * unit]
        count = len(piece) // unit
        same = piece == piece[:unit] * count
        line += bytes([count - 1]) + piece[:unit] if same or count == 1 else bytes([257 - count]) + piece
    return bytes(line)


def row(number):
    """Blank lines between bars that differ from line to line."""
    blank = 0 if kind == "bilevel" else 255
    if number % 50 < 20:
        return bytes([blank]) * line_bytes
    return bytes((number * 7 + at * at // 91) % 256 if at % 300 < 100 else blank for at in range(line_bytes))


page = bytes(header)
for number in range(0, height, 4):
    page += bytes([min(4, height - number) - 1]) + packed(row(number))
sys.stdout.buffer.write(b"RaS2")
for _ in range(pages):
    sys.stdout.buffer.write(page)
END
}

failed=0
for kind in bilevel colour; do
  short=0
  for count in "$((pages / 10))" "$pages"; do
    raster "$kind" "$count" >"$folder/job.pwg"
    read -r clock cpu kib < <("$build/bin/run_measured" sh -c 'exec "$0" "$@" >"$TMPDIR/job.pdf"' \
      "$build/bin/rastertosorrelin" 1 user title 1 "" "$folder/job.pwg" 2>"$folder/messages")
    [ "$(grep -c '^PAGE' "$folder/messages")" = "$count" ] || { cat "$folder/messages"; exit 1; }
    awk -v kind="$kind" -v n="$count" -v s="$clock" -v cpu="$cpu" -v kib="$kib" -v short="$short" 'BEGIN {
      printf "%s: %d pages in %.2f s (%.2f s of a processor): %.0f pages a second; peak %.1f MiB\n", kind, n,
        s, cpu, n / s, kib / 1024
      exit kib >= 64 * 1024 || (short > 0 && kib > short + 8 * 1024)
    }' || failed=1
    short=$kib
  done
done
exit "$failed"
