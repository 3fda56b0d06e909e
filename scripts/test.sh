#!/usr/bin/env bash
# Everything that must hold, from a bare clone: installs what is needed, runs every test under the
# sanitizers, and the tests of the interface, the documents and the package on an optimised build.
# The last line counts them.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/packages.sh test
if command -v ccache >/dev/null; then
  export CMAKE_C_COMPILER_LAUNCHER=ccache CMAKE_CXX_COMPILER_LAUNCHER=ccache
  # What the cache asks for to serve files that include a precompiled header.
  export CCACHE_SLOPPINESS=pch_defines,time_macros
fi

passed=0
failed=0
mkdir -p build

# run_tests PRESET [OPTION...]: builds it and adds its tests to the counts.
run_tests() {
  local preset=$1 log=build/test-$1.log
  shift
  echo "== $preset: building"
  cmake --preset "$preset" "$@" >"$log"
  cmake --build --preset "$preset" >>"$log" || { tail -n 60 "$log"; exit 1; }
  echo "== $preset: testing"
  rm -f "build/test-$preset.xml"
  # The end of each test's output is kept, where a program says how many tests it ran.
  ctest --preset "$preset" -j "$(nproc)" --test-output-truncation head \
    --output-junit "$PWD/build/test-$preset.xml" >>"$log" || true
  grep -E '^[0-9]+% tests passed|\*\*\*' "$log" || true
  local run_passed run_failed
  read -r run_passed run_failed < <(python3 scripts/count_tests.py "build/test-$preset.xml") ||
    { tail -n 60 "$log"; exit 1; }
  passed=$((passed + run_passed))
  failed=$((failed + run_failed))
  if [ "$run_failed" -ne 0 ]; then
    sed -n '/tests FAILED:/,$p' "$log"
  fi
}

# run_windows: a part of scripts/windows.sh counts as one test where that has built its parts before.
run_windows() {
  local cache=${SORRELIN_WINDOWS_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/sorrelin-windows}
  command -v x86_64-w64-mingw32-g++-posix >/dev/null && command -v wine >/dev/null || return 0
  [ -f "$cache/x86_64-w64-mingw32/built/leptonlib" ] && [ -d /usr/src/googletest ] || return 0
  echo "== windows: building and testing"
  if scripts/windows.sh quick >build/test-windows.log 2>&1; then
    passed=$((passed + 1))
  else
    failed=$((failed + 1))
    tail -n 60 build/test-windows.log
  fi
}

run_tests asan
run_tests bench -DSORRELIN_UNIT_TESTS=OFF -DSORRELIN_BUILD_BENCH=OFF
run_windows

echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]
