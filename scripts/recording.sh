#!/usr/bin/env bash
# Makes docs/recording.svg: a terminal in which a document is made, looked at and taken apart. The
# commands run, and what they print is what the picture shows.
# usage: scripts/recording.sh [BUILD-FOLDER]     (default: build/release)
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
program=$(realpath "${1:-build/release}/bin/sorrelin")
for tool in gm gs script; do
  command -v "$tool" >/dev/null || { echo "needs $tool (scripts/packages.sh demo)" >&2; exit 2; }
done

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
export PATH=$(dirname "$program"):$PATH LC_ALL=C.UTF-8 SOURCE_DATE_EPOCH=0
gs -q -dBATCH -dNOPAUSE -sDEVICE=tiffg4 -r300 -sPAPERSIZE=a4 -o letter.tif \
  -c '/Times-Roman findfont 24 scalefont setfont 72 720 moveto (A letter) show showpage'
gm convert logo: -units PixelsPerInch -density 96 drawing.png
gm convert rose: -resize 400% -units PixelsPerInch -density 100 -quality 92 photo.jpg

commands=(
  'sorrelin make scan.pdf letter.tif drawing.png photo.jpg --verbose'
  'sorrelin info scan.pdf'
  'sorrelin extract scan.pdf --output page-%d && ls page-*'
)
for command in "${commands[@]}"; do
  echo "\$ $command"
  script --quiet --return --command "stty cols 90; $command" /dev/null </dev/null
done >typescript
python3 "$root/scripts/recording_svg.py" typescript "$root/docs/recording.svg"
