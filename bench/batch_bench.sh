#!/usr/bin/env bash
# `sorrelin batch` on a list of documents of one bilevel A4 scan each: what two workers gain over one,
# and what a shard of 100 documents costs beyond its pictures. Makes its own inputs.
# batch_bench.sh [BUILD [DOCUMENTS [RUNS]]]
#
# One worker and two take turns, and the best run of each counts, so that other work on the machine
# weighs little. Workers are processes with a shard each, as a scheduler starts them. Fails below 1.85
# times one worker, from 2 percent for a shard on, or when documents differ.
set -euo pipefail
cd "$(dirname "$0")/.."
build=$(realpath "${1:-build/bench}")
documents=${2:-10000}
runs=${3:-3}

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
"$build/bin/write_text_page" 300 >"$folder/page.pbm"
gm convert "$folder/page.pbm" -monochrome -density 300x300 "$folder/page.png"
cd "$folder"
for ((n = 0; n < documents; ++n)); do
  echo "{\"output\": \"$n.pdf\", \"pictures\": [\"page.png\"]}"
done >list
head -n 100 list >shard
export SOURCE_DATE_EPOCH=0

# work WORKERS: makes all documents with that many, from nothing.
work() {
  local workers=$1 pids=() part
  find . -name '*.pdf' -delete
  rm -f ./*.results
  for ((part = 1; part <= workers; ++part)); do
    "$build/bin/sorrelin" batch list --shard "$part/$workers" --jobs 1 --quiet &
    pids+=($!)
  done
  for pid in "${pids[@]}"; do wait "$pid"; done
}

# least A B: the smaller number; A may be empty.
least() { awk -v a="$1" -v b="$2" 'BEGIN { print a == "" || b < a ? b : a }'; }

failed=0
best1='' best2=''
for ((run = 0; run < runs; ++run)); do
  for workers in 1 2; do
    start=$(date +%s.%N)
    work "$workers"
    took=$(awk -v a="$start" -v b="$(date +%s.%N)" 'BEGIN { print b - a }')
    declare -n best=best$workers
    best=$(least "$best" "$took")
    sum=$(cat ./*.pdf | sha256sum)
    if [ "$sum" != "${first:=$sum}" ]; then
      echo "the documents differ" >&2
      failed=1
    fi
  done
done
awk -v n="$documents" -v one="$best1" -v two="$best2" 'BEGIN {
  printf "%d documents, one worker %.2f s, two workers %.2f s: %.2f times as fast\n", n, one, two, one / two
  exit one / two < 1.85 }' || failed=1

# A shard whose documents are all kept has a start, a list, results and pictures to look at, and makes
# nothing. Seconds of processors, which other work changes least.
whole='' beyond=''
for ((run = 0; run < 3 * runs; ++run)); do
  rm -f shard.results
  read -r _ cpu kib < <("$build/bin/run_measured" "$build/bin/sorrelin" batch shard --jobs 1 --force --quiet)
  whole=$(least "$whole" "$cpu")
  read -r _ cpu _ < <("$build/bin/run_measured" "$build/bin/sorrelin" batch shard --jobs 1 --quiet)
  beyond=$(least "$beyond" "$cpu")
done
awk -v whole="$whole" -v beyond="$beyond" -v kib="$kib" -v bytes="$(stat -c %s 0.pdf)" 'BEGIN {
  printf "a shard of 100 documents: %.3f s of a processor, %.3f s of it beyond the pictures (%.2f percent); ",
    whole, beyond, 100 * beyond / whole
  printf "peak %.1f MiB; %.1f kB a document\n", kib / 1024, bytes / 1000
  exit beyond / whole >= 0.02 }' || failed=1
exit "$failed"
