#!/bin/sh
# Compares the exported symbols of a shared library with a list: check_exports.sh LIBRARY LIST
set -eu
actual=$(nm -DC --defined-only "$1" | sed 's/^[0-9a-f]* [A-Za-z] //' | LC_ALL=C sort -u)
printf '%s\n' "$actual" | diff "$2" - && echo "exports are as listed"
