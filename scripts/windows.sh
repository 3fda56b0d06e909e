#!/usr/bin/env bash
# Everything that must hold on Windows, from a bare clone: builds what is needed with mingw-w64, runs
# the tests under Wine, compares what the library writes and reads there with this system, and packs
# a zip that is then used as a stranger would. The last lines count what ran.
# usage: scripts/windows.sh [x86_64|i686]
#        scripts/windows.sh quick   a part in a few minutes, with the parts that are built already:
#                                   library, codecs, program, a few tests and a short comparison
set -euo pipefail
cd "$(dirname "$0")/.."

processor=${1:-x86_64}
quick=no
if [ "$processor" = quick ]; then quick=yes processor=x86_64; fi
cache=${SORRELIN_WINDOWS_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/sorrelin-windows}
parts=$cache/$processor-w64-mingw32
build=build/windows
if [ "$processor" = i686 ]; then build=build/windows32; fi
if command -v ccache >/dev/null; then
  export CMAKE_C_COMPILER_LAUNCHER=ccache CMAKE_CXX_COMPILER_LAUNCHER=ccache
  export CCACHE_SLOPPINESS=pch_defines,time_macros
fi
documents=500
with_recognition=yes
targets=()
tests=.
# Tests that start the program; those of the program for Windows are the same.
program_tests='^tool_(make|read|append|batch|ocr|words)_test\.|^tool_hostile_test\.HostileDocuments\.'
if [ "$quick" = yes ]; then
  documents=50
  targets=(--target sorrelin sorrelin-coded cadwick rennick sorrelin-tool compare_systems system_test
    sibling_loading_test tool_files_test)
  tests='^(system_test|sibling_loading_test|tool_files_test|windows_library_test\.(sorrelin|coded|cadwick|rennick))$'
  program_tests='^tool_read_test\.CountAndInfo\.'
fi

# Wine for 32-bit programs comes before the system's, which runs those of 64 bits alone.
with_wine=yes
use_wine32() {
  local commands
  commands=$(scripts/wine32.sh) && PATH=$commands:$PATH || with_wine=no
}

# What CMake has found of the parts is found anew once they have changed.
build_for_windows() {
  local fresh=
  if [ -n "$(find "$parts/built" -newer "$build/CMakeCache.txt" 2>/dev/null)" ]; then fresh=--fresh; fi
  cmake $fresh --preset windows -B "$build" -DSORRELIN_WINDOWS_PROCESSOR="$processor" \
    -DSORRELIN_WINDOWS_PARTS="$parts" -DSORRELIN_WINE="$(command -v wine)" -DSORRELIN_BUILD_TOOL=ON
  cmake --build "$build" "${targets[@]}"
}

# A desktop without a screen, whose server stays until the script ends: one that goes with its last
# client may go while the next one connects. A desktop reads its settings when it starts, so the
# first one of a new prefix is stopped once it has them. The server's first client starts what stays
# with it, so that one has none of the script's streams. A server is found by the prefix and the
# folder for temporary files, and Leptonica has paths under /tmp mean the user's own.
start_wine() {
  [ "$with_wine" = yes ] && command -v wine >/dev/null || return 1
  export WINEPREFIX=$PWD/$build/wine WINEDEBUG=-all TMPDIR=$PWD/$build/tmp
  mkdir -p "$WINEPREFIX" "$TMPDIR"
  stop_wine
  trap stop_wine EXIT
  if ! grep -qs '"Graphics"="null"' "$WINEPREFIX/user.reg"; then
    leave_out_the_screen && stop_wine || return 1
  fi
  setsid wineserver -p </dev/null >/dev/null 2>&1 && leave_out_the_screen
}

leave_out_the_screen() {
  setsid -w wine reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f </dev/null >/dev/null 2>&1
}

stop_wine() { wineserver -k 2>/dev/null || true; }

# Tests and programs of this system, in the folder of scripts/test.sh where that has built them.
build_here() {
  here=build/asan
  if [ "$quick" = yes ] && [ -x "$here/bin/compare_systems" ] && [ -x "$here/bin/tool_read_test" ]; then
    return
  fi
  if [ ! -f "$here/CMakeCache.txt" ]; then
    here=build/windows-here
    cmake -S . -B "$here" -G Ninja -DCMAKE_BUILD_TYPE=Release -DSORRELIN_BUILD_TESTS=ON \
      -DSORRELIN_BUILD_EXAMPLES=OFF -DSORRELIN_INSTALL=OFF >/dev/null
  fi
  cmake --build "$here" --target compare_systems cadwick rennick tool_make_test tool_read_test \
    tool_append_test tool_batch_test tool_ocr_test tool_words_test tool_hostile_test
}

# The tests that start the program, with the program for Windows in its place. Tests left out are
# known to CTest, or to programs with several. A limit on the size of files must not end Wine, whose
# writes then fail.
test_program() {
  local program=$PWD/$build/run-program tests_left_out
  cat >"$program" <<END
#!/bin/sh
trap '' XFSZ
export WINEPATH='$PWD/$build/lib'
export TESSDATA_PREFIX="\${TESSDATA_PREFIX-Z:$PWD/$build/tessdata}"
exec wine '$PWD/$build/bin/sorrelin.exe' "\$@"
END
  chmod +x "$program"
  tests_left_out=$(left_out |
    sed -nE "s/^([A-Za-z/]+\.[A-Z][A-Za-z0-9/]*)( \($processor\))?: .*/\1/p" | paste -sd'|')
  SORRELIN_TEST_PROGRAM=$program GTEST_FILTER="-${tests_left_out//|/:}" \
    ctest --test-dir "$here" --output-on-failure -j "$(nproc)" --timeout 600 --no-tests=error \
    -R "$program_tests" -E "\.($tests_left_out)\$"
  if [ "$quick" = yes ]; then return; fi
  tests/tools/in_step.sh "$program" "$here/tools/man/sorrelin.1" tools/completions
}

# Both print the same, or the first lines that differ are shown.
compare_systems() {
  "$here/bin/compare_systems" "$documents" 1 | sed 's/Sorrelin DLLMain end//g' >"$build/here.txt"
  WINEPATH=$build/lib wine "$build/bin/compare_systems.exe" "$documents" 1 | tr -d '\r' |
    sed 's/Sorrelin DLLMain end//g' >"$build/there.txt"
  [ "$(wc -l <"$build/there.txt")" -gt "$documents" ]
  diff "$build/here.txt" "$build/there.txt" | head -n 20
  cmp "$build/here.txt" "$build/there.txt"
}

# add_licenses FOLDER: the terms of what is linked in, with those that they refer to.
add_licenses() {
  local common=/usr/share/common-licenses
  cp -r "$parts/licenses" "$1"
  cp /usr/share/doc/libz-mingw-w64/copyright "$1/zlib.txt"
  cp "/usr/share/doc/gcc-mingw-w64-${processor/_/-}-posix-runtime/copyright" "$1/gcc.txt"
  cp /usr/share/doc/mingw-w64-common/copyright "$1/mingw-w64.txt"
  grep -ohE "$common/[A-Za-z]+(-[0-9]+(\.[0-9]+)?)?" "$1"/*.txt | sort -u |
    xargs cp --dereference -t "$1"
}

pack_zip() {
  local name stage
  name=sorrelin-$(sed -n 's/^project(sorrelin VERSION \([0-9.]*\)/\1/p' CMakeLists.txt)-windows-$processor
  stage=$build/package/$name
  rm -rf "$build/package"
  cmake --install "$build" --prefix "$PWD/$stage" --strip >/dev/null
  add_licenses "$stage/licenses"
  (cd "$build/package" && cmake -E tar cf "../$name.zip" --format=zip "$name")
  zip=$build/$name.zip
}

# The lines of tests/windows_left_out.txt that concern this build, and one for each source that needs
# Tesseract where that was not built.
left_out() {
  local other=i686 source
  if [ "$processor" = i686 ]; then other=x86_64; fi
  grep -vE "^#|^[^:]* \($other\): " tests/windows_left_out.txt
  if [ "$with_recognition" = yes ]; then return; fi
  for source in tests/siblings/averna_*test.cpp tests/tools/{ocr,words}_test.cpp; do
    echo "${source#tests/}: Tesseract was not built"
  done
}

# Every source of tests is built for Windows, or starts the program, or is among those left out.
check_left_out() {
  local source names unnamed=0
  names=$(left_out | sed "s# ($processor): #: #; s#^#tests/#")
  {
    grep -oE 'tests/[^ ]*/CMakeFiles/[^ ]*\.cpp\.obj' "$build/build.ninja"
    grep -oE 'tests/tools/CMakeFiles/tool_(make|read|append|batch|ocr|words|hostile)_test.dir/[^ ]*\.cpp\.o' "$here/build.ninja"
  } | sed -E 's#CMakeFiles/[^/]*\.dir/##; s#\.o(bj)?$##' | sort -u >"$build/tests_that_run.txt"
  while read -r source; do
    grep -qxF "$source" "$build/tests_that_run.txt" && continue
    grep -qF -e "$source: " -e "${source%/*}/: " <<<"$names" && continue
    echo "$source does not run under Wine, and tests/windows_left_out.txt does not say why" >&2
    unnamed=1
  done < <(find tests -name '*_test.cpp' | sort)
  return $unnamed
}

# passed FOLDER: the number of tests that CTest's last run in it has seen passing.
passed() {
  sed -nE 's/^\[  PASSED  \] ([0-9]+) .*/\1/p' "$1/Testing/Temporary/LastTest.log" | tr -d '\r' |
    paste -sd+ | bc
}

# Numbers of tests in the tree and under Wine, and what is left out.
count_tests() {
  local all run program
  all=$(grep -rhcE '^TEST(_F|_P)?\(' tests --include='*.cpp' | paste -sd+ | bc)
  run=$(passed "$build")
  program=$(passed "$here")
  echo "$all tests are in the tree, $run of them ran under Wine, and $program with sorrelin.exe; left out:"
  left_out
}

scripts/packages.sh windows
if [ "$quick" = no ]; then
  scripts/packages.sh test
  scripts/windows_parts.sh "$processor"
elif [ ! -f "$parts/built/tiff" ] || [ ! -f "$parts/built/leptonlib" ]; then
  echo "the parts for Windows are not built; scripts/windows.sh builds them" >&2
  exit 1
fi
if [ "$processor" = i686 ]; then use_wine32; fi
build_for_windows
if [ "$quick" = no ] && ! grep -q 'lib/Averna\.dll' "$build/build.ninja"; then
  echo "Averna.dll is left out, and text recognition with it: Tesseract was not built" >&2
  with_recognition=no
  program_tests=${program_tests/|ocr|words/}
fi
start_wine || { echo "built; without Wine nothing ran" >&2; exit 1; }
ctest --test-dir "$build" --output-on-failure -R "$tests" --no-tests=error
build_here
test_program
compare_systems
if [ "$quick" = no ]; then
  tests/build/msvc_syntax.sh "$build"
  check_left_out
  pack_zip
  tests/package/windows/use_zip.sh "$zip" examples
  count_tests
fi
echo "$documents documents written and $documents read are the same on both systems"
