#!/bin/sh
# Compares what callers of a library are compiled against, functions and types, with the stored
# description, or stores it anew. The library needs debug information.
# usage: interface_drift.sh check|store STORED LIBRARY INSTALLED-HEADER...
set -eu
what=$1
stored=$2
library=$3
shift 3
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# Types that no installed header defines are opaque to callers.
for header; do cp "$header" "$folder"; done
abidw --exported-interfaces-only --drop-private-types --headers-dir "$folder" --no-corpus-path \
  --no-comp-dir-path --no-show-locs --no-elf-needed --out-file "$folder/now.abi" "$library"
if [ "$what" = store ]; then
  cp "$folder/now.abi" "$stored"
else
  abidiff --harmless "$stored" "$folder/now.abi"
fi
