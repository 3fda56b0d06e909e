#!/usr/bin/env bash
# A library for Windows: it exports the listed names, C++ apart, depends on libraries of the system
# and on Sorrelin.dll alone, and has a version.
# usage: windows_library.sh OBJDUMP LIBRARY NAME...
set -euo pipefail
objdump=$1 library=$2
shift 2
headers=$("$objdump" -p "$library")

exported=$(sed -n '/Ordinal\/Name Pointer/,/^$/s/^\t\[ *[0-9]*\] //p' <<<"$headers" | grep -v '^_Z' | sort)
listed=$(printf '%s\n' "$@" | sort)
diff <(echo "$listed") <(echo "$exported") || { echo "exports differ: < listed, > exported"; exit 1; }

foreign=$(sed -n 's/^\tDLL Name: //p' <<<"$headers" |
  grep -vixE '(advapi32|gdi32|kernel32|msvcrt|shell32|sorrelin|user32)\.dll' || true)
if [ -n "$foreign" ]; then echo "depends on $foreign"; exit 1; fi

# Strings of resources are UTF-16.
tr -d '\0' <"$library" | grep -aE "OriginalFilename.?$(basename "$library")" >/dev/null ||
  { echo "no version resource"; exit 1; }
