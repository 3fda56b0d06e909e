#!/usr/bin/env bash
# Builds every fuzz target with clang and runs each for a number of seconds (default 60).
#
# usage: scripts/fuzz.sh [seconds] [target...]
#
# Seeds are written to build/fuzz/seeds; inputs that reached something new are kept in
# build/fuzz/corpus for the next run. An input that breaks a target is left in build/fuzz/findings,
# and the script fails. A finding is also what takes more than 5 seconds or more than 320 MB, which
# is far more than the library needs for an input of this size, since the sanitizers' shadow counts.
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${1:-60}
wanted=" ${*:2} "

scripts/packages.sh fuzz
if command -v ccache >/dev/null; then
  export CMAKE_C_COMPILER_LAUNCHER=ccache CMAKE_CXX_COMPILER_LAUNCHER=ccache
fi
build=build/fuzz
mkdir -p "$build/findings"
echo "building ..."
{
  cmake --preset fuzz
  cmake --build --preset fuzz --target fuzz_targets
} >"$build/build.log" 2>&1 || { tail -n 60 "$build/build.log"; exit 1; }

# Blocks past 256 MB are refused as if memory were short: pictures may be larger than what a
# document holds of them, and the sanitizer touches an eighth of a block when it is freed.
export ASAN_OPTIONS=allocator_may_return_null=1:max_allocation_size_mb=256:quarantine_size_mb=8
export LSAN_OPTIONS=suppressions=$PWD/tests/leaks.supp:print_suppressions=0
export TMPDIR=$PWD/$build/temp
rm -rf "$TMPDIR"
mkdir -p "$TMPDIR"
"$build/bin/write_seeds" "$build/seeds"

# end_process.cpp: the process ended as it should, and the target is started again.
ended_as_promised=78

# fuzz NAME: runs a target until its time is over.
fuzz() {
  local name=$1 end=$((SECONDS + seconds)) left code
  local folders=("$build/corpus/$name") known
  mkdir -p "${folders[0]}"
  for known in "$build/seeds/$name" "fuzz/corpus/$name"; do
    if [ -d "$known" ]; then folders+=("$known"); fi
  done
  while left=$((end - SECONDS)) && [ "$left" -gt 0 ]; do
    code=0
    "$build/fuzz/targets/$name" -max_total_time="$left" -timeout=5 -rss_limit_mb=320 \
      -malloc_limit_mb=4096 -max_len=32768 -len_control=0 -print_final_stats=1 \
      -artifact_prefix="$build/findings/$name-" "${folders[@]}" || code=$?
    if [ "$code" -ne "$ended_as_promised" ]; then return "$code"; fi
  done
}

failed=()
for program in "$build"/fuzz/targets/*; do
  name=$(basename "$program")
  [[ $wanted == "  " || $wanted == *" $name "* ]] || continue
  log=$build/$name.log
  echo "== $name: $seconds seconds"
  if fuzz "$name" >"$log" 2>&1; then
    grep -h -E 'number_of_executed_units|average_exec_per_sec' "$log" || true
  else
    tail -n 40 "$log"
    failed+=("$name")
  fi
done

if [ "${#failed[@]}" -ne 0 ]; then
  echo "failed: ${failed[*]} (inputs in $build/findings)"
  exit 1
fi
echo "all clean"
