#!/usr/bin/env bash
# The sources that are built for Windows, read by clang as its MSVC mode sees them, with the headers
# of mingw-w64: types of MSVC's sizes and calling conventions, and no extension of GCC's.
# usage: msvc_syntax.sh BUILD    (a cross build, for the headers that it generates)
set -euo pipefail
build=$(realpath "$1")
cd "$(dirname "$0")/../.."
headers=$(echo /usr/lib/gcc/x86_64-w64-mingw32/*-posix/include/c++)
parts=$(sed -n 's/^SORRELIN_WINDOWS_PARTS:PATH=//p' "$build/CMakeCache.txt")

# The standard library and the system's headers are GCC's, so their extensions are let through.
check() {
  clang++ --target=x86_64-pc-windows-msvc -fgnuc-version=12.2.0 -D__STRICT_ANSI__ -D_UCRT \
    -DSORRELIN_BUILDING -fsyntax-only -std=c++20 -Wall -Wextra -Wpedantic -Wgnu -Werror -I. \
    -I"$build/sorrelin/include" -isystem "$build/sorrelin/ocr/include" -isystem "$parts/include" \
    -isystem "$parts/include/leptonica" \
    -isystem /usr/x86_64-w64-mingw32/include -isystem "$headers" -isystem "$headers/x86_64-w64-mingw32" -isystem /usr/share/mingw-w64/include \
    "$1"
}
export -f check
export build parts headers

sources=$(find sorrelin siblings tools/formats/heif -name '*.cpp' \
  ! -name '*_posix.cpp' ! -name load_hooks.cpp ! -path 'sorrelin/coded/*')
xargs -P "$(nproc)" -n 1 bash -c 'check "$0"' <<<"$sources"
echo "$(wc -l <<<"$sources") sources pass clang's MSVC mode"
