#!/usr/bin/env bash
# Reads the sources that are built for Windows by clang in its MSVC mode, with the headers of
# mingw-w64: types have MSVC's sizes and functions its calling conventions, and no extension of GCC's
# passes. Those are the sources of the library, the codecs and three folders of the program; clang does
# not take libqpdf's headers there, which most of the others include.
# usage: msvc_syntax.sh BUILD    (a cross build, for its commands and the headers that it generates)
set -euo pipefail
build=$(realpath "$1")
cd "$(dirname "$0")/../.."
headers=$(echo /usr/lib/gcc/x86_64-w64-mingw32/*-posix/include/c++)

# A line for each source: its name, and the definitions and folders of headers that it is built with.
list_sources() {
  python3 - "$build/compile_commands.json" "$PWD" <<'END'
import json, os, shlex, sys

root = sys.argv[2]
folders = ("sorrelin/", "siblings/", "tools/cli/", "tools/formats/", "tools/system/")
sources = {}
for entry in json.load(open(sys.argv[1])):
    name = os.path.relpath(entry["file"], root)
    if not name.endswith(".cpp") or not name.startswith(folders):
        continue
    words = iter(shlex.split(entry["command"]))
    flags = []
    for word in words:
        if word == "-isystem":
            flags += [word, os.path.join(entry["directory"], next(words))]
        elif word.startswith("-I"):
            flags.append("-I" + os.path.join(entry["directory"], word[2:]))
        elif word.startswith("-D"):
            flags.append(word)
    sources.setdefault(name, flags)
for name, flags in sorted(sources.items()):
    print(shlex.join([name, *flags]))
END
}

# check SOURCE FLAG...: the standard library and the system's headers are GCC's, so their extensions
# are let through.
check() {
  clang++ --target=x86_64-pc-windows-msvc -fgnuc-version=12.2.0 -D__STRICT_ANSI__ -D_UCRT \
    -fsyntax-only -std=c++20 -Wall -Wextra -Wpedantic -Wgnu -Werror "${@:2}" \
    -isystem /usr/x86_64-w64-mingw32/include -isystem "$headers" \
    -isystem "$headers/x86_64-w64-mingw32" -isystem /usr/share/mingw-w64/include "$1"
}
export -f check
export headers

sources=$(list_sources)
xargs -P "$(nproc)" -d '\n' -n 1 bash -c 'eval "check $0"' <<<"$sources"
echo "$(wc -l <<<"$sources") sources pass clang's MSVC mode"
