#!/usr/bin/env bash
# `sorrelin make` on 1,000 bilevel A4 scans at 300 dpi: what --jobs 2 gains over one job, and the
# peak of memory. Makes its own inputs. make_bench.sh [BUILD [SCANS [RUNS]]]
# The two take turns, and the best run of each counts, so that other work on the machine weighs
# little. Then the same pages come on standard input, as one TIFF file and as PBM, PNG and JPEG
# pictures in a row. Fails below 1.8 times one job, from 64 MiB on, or when the documents differ.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/bench}
scans=${2:-1000}
runs=${3:-3}

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# Ten pages that differ, as PNG and as TIFF coded with LZW, both to be decoded and recoded.
"$build/bin/write_text_page" 300 >"$folder/page.pbm"
for kind in png tif; do mkdir "$folder/$kind"; done
for i in 0 1 2 3 4 5 6 7 8 9; do
  gm convert "$folder/page.pbm" -roll "+$((i * 37))+$((i * 53))" -monochrome -density 300x300 \
    "$folder/one.png"
  gm convert "$folder/one.png" -compress LZW "$folder/one.tif"
  for ((n = i; n < scans; n += 10)); do
    for kind in png tif; do cp "$folder/one.$kind" "$folder/$kind/scan$n.$kind"; done
  done
done

export SOURCE_DATE_EPOCH=0
failed=0
for kind in png tif; do
  best1='' best2='' peak=0 cpu2=0
  for ((run = 0; run < runs; ++run)); do
    for jobs in 1 2; do
      read -r clock cpu kib < <("$build/bin/run_measured" "$build/bin/sorrelin" make --force \
        "$folder/$jobs.pdf" "$folder/$kind" --sort natural --jobs "$jobs" --quiet)
      declare -n best=best$jobs
      if [ -z "$best" ] || awk "BEGIN { exit !($clock < $best) }"; then
        best=$clock
        if [ "$jobs" = 2 ]; then cpu2=$cpu; fi
      fi
      if [ "$kib" -gt "$peak" ]; then peak=$kib; fi
    done
  done
  cmp "$folder/1.pdf" "$folder/2.pdf" || failed=1
  awk -v kind="$kind" -v n="$scans" -v one="$best1" -v two="$best2" -v cpu="$cpu2" -v kib="$peak" '
    BEGIN {
      printf "%s: %d scans, one job %.2f s, two jobs %.2f s: %.2f times as fast; ", kind, n, one, two,
        one / two
      printf "%.2f processors in use; peak %.1f MiB\n", cpu / two, kib / 1024
      exit one / two < 1.8 || kib >= 64 * 1024
    }' || failed=1
done

# A stream is not held whole, however many pages it has.
tiffcp -c none "$folder"/tif/scan{0,1,2,3,4,5,6,7,8,9}.tif "$folder/ten.tif"
tens=()
for ((n = 0; n < scans; n += 10)); do tens+=("$folder/ten.tif"); done
tiffcp -c none "${tens[@]}" "$folder/stream.tif"
for ((n = 0; n < scans; ++n)); do cat "$folder/page.pbm"; done >"$folder/stream.pbm"
cat "$folder"/png/*.png >"$folder/stream.png"
gm convert "$folder/one.png" -colorspace Gray "$folder/one.jpg"
for ((n = 0; n < scans; ++n)); do cat "$folder/one.jpg"; done >"$folder/stream.jpg"
for kind in tif pbm png jpg; do
  read -r clock cpu kib < <("$build/bin/run_measured" "$build/bin/sorrelin" make --force \
    "$folder/stream.pdf" - --jobs 2 --quiet <"$folder/stream.$kind")
  awk -v kind="$kind" -v n="$scans" -v kib="$kib" 'BEGIN {
    printf "%s stream: %d pages, peak %.1f MiB\n", kind, n, kib / 1024
    exit kib >= 64 * 1024 }' || failed=1
done
exit "$failed"
