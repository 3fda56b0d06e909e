#!/usr/bin/env bash
# Compares the benchmarks of the library with those of another revision, for changes that should
# cost nothing.
#
# usage: bench/before_after.sh REVISION [RUNS] [OLD-BUILD] [NEW-BUILD]     (default: 7 runs)
#
# Both are built optimised, the revision from a work tree in build/before, unless build folders are
# named. They run in turns, and the shortest time of each benchmark counts, so that other work on
# the machine weighs little. Then valgrind counts instructions, which depend on no other work.
# Prints both and their ratio; fails if an instruction count is more than 3 % higher.
set -euo pipefail
cd "$(dirname "$0")/.."
revision=${1:?usage: bench/before_after.sh REVISION [RUNS] [OLD-BUILD] [NEW-BUILD]}
runs=${2:-7}
old=${3:-}
new=${4:-}
programs=(page_bench read_bench update_bench group4_page_bench)
# Of the benchmarks those that are short enough to be run by valgrind.
declare -A counted=(
  [page_bench]='FlatePage/bits:1/|Group4Page' [read_bench]='OpenDocument|LoadLastPage')

# build SOURCE: the benchmarks, optimised, in build/compare there.
build() {
  cmake -S "$1" --preset bench -B "$1/build/compare" -DSORRELIN_BUILD_TESTS=OFF \
    -DSORRELIN_BUILD_TOOL=OFF -DSORRELIN_PARTS=AUTO >/dev/null
  cmake --build "$1/build/compare" --target "${programs[@]}" >/dev/null
}

if [ -z "$old" ]; then
  if [ ! -d build/before ]; then git worktree add --detach build/before "$revision" >/dev/null; fi
  git -C build/before checkout --quiet --detach "$revision"
  build build/before
  old=build/before/build/compare
fi
if [ -z "$new" ]; then
  build .
  new=build/compare
fi

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

for ((run = 0; run < runs; ++run)); do
  for program in "${programs[@]}"; do
    for side in old new; do
      declare -n place=$side
      "$place/bin/$program" --benchmark_min_time=0.1 --benchmark_color=false 2>/dev/null |
        awk -v p="$program" '$3 ~ /^[num]s$/ { print p ":" $1, $2 }' >>"$folder/$side"
    done
  done
done
shortest() {
  awk '!($1 in best) || $2 < best[$1] { best[$1] = $2 } END { for (n in best) print n, best[n] }' \
    "$folder/$1" | sort
}
echo "shortest times of $runs runs (benchmark, before, after, ratio):"
join <(shortest old) <(shortest new) |
  awk '{ printf "  %-70s %12.4f %12.4f %6.3f\n", $1, $2, $3, $3 / $2 }'

# instructions PROGRAM FILTER
instructions() {
  valgrind --tool=callgrind --callgrind-out-file=/dev/null "$1" --benchmark_filter="$2" 2>&1 |
    sed -n 's/.*Collected : \([0-9]*\).*/\1/p'
}
echo "instructions (program, before, after, ratio):"
failed=0
for program in "${!counted[@]}"; do
  before=$(instructions "$old/bin/$program" "${counted[$program]}")
  after=$(instructions "$new/bin/$program" "${counted[$program]}")
  awk -v p="$program" -v a="$before" -v b="$after" \
    'BEGIN { printf "  %-70s %15.0f %15.0f %6.3f\n", p, a, b, b / a; exit !(b <= 1.03 * a) }' || failed=1
done
exit "$failed"
