#!/bin/sh
# Builds every fuzz target and runs each for a number of seconds (default 60).
#
# usage: scripts/fuzz.sh [seconds] [target...]
#
# Needs clang with its libFuzzer runtime. Inputs that were found are kept in build/fuzz/corpus for
# the next run; an input that breaks a target is left in build/fuzz/findings, and the script fails.
set -eu

cd "$(dirname "$0")/.."
seconds=${1:-60}
[ $# -eq 0 ] || shift

cmake --preset fuzz >/dev/null
cmake --build --preset fuzz

build=build/fuzz
mkdir -p "$build/findings"
failed=
for program in "$build"/fuzz/targets/*; do
  name=$(basename "$program")
  if [ $# -gt 0 ]; then
    case " $* " in
      *" $name "*) ;;
      *) continue ;;
    esac
  fi
  corpus=$build/corpus/$name
  mkdir -p "$corpus"
  seeds=fuzz/corpus/$name
  [ -d "$seeds" ] || seeds=
  echo "== $name, $seconds seconds"
  # $seeds is one folder or nothing.
  "$program" -max_total_time="$seconds" -timeout=20 -len_control=0 \
    -print_final_stats=1 -artifact_prefix="$build/findings/$name-" "$corpus" $seeds || failed="$failed $name"
done

if [ -n "$failed" ]; then
  echo "failed:$failed (see $build/findings)" >&2
  exit 1
fi
