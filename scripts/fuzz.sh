#!/usr/bin/env bash
# Builds every fuzz target with clang and runs each for a number of seconds (default 60).
#
# usage: scripts/fuzz.sh [seconds] [target...]
#
# Inputs that reached something new are kept in build/fuzz/corpus for the next run. An input that
# breaks a target is left in build/fuzz/findings, and the script fails.
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${1:-60}
wanted=" ${*:2} "

scripts/packages.sh test
if command -v ccache >/dev/null; then
  export CMAKE_C_COMPILER_LAUNCHER=ccache CMAKE_CXX_COMPILER_LAUNCHER=ccache
fi
build=build/fuzz
mkdir -p "$build/findings"
cmake --preset fuzz >"$build/build.log"
cmake --build --preset fuzz >>"$build/build.log" || { tail -n 60 "$build/build.log"; exit 1; }

failed=()
for program in "$build"/fuzz/targets/*; do
  name=$(basename "$program")
  [[ $wanted == "  " || $wanted == *" $name "* ]] || continue
  folders=("$build/corpus/$name")
  mkdir -p "${folders[0]}"
  if [ -d "fuzz/corpus/$name" ]; then folders+=("fuzz/corpus/$name"); fi
  log=$build/$name.log
  echo "== $name: $seconds seconds"
  if "$program" -max_total_time="$seconds" -timeout=20 -len_control=0 -print_final_stats=1 \
    -artifact_prefix="$build/findings/$name-" "${folders[@]}" >"$log" 2>&1; then
    grep number_of_executed_units "$log"
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
