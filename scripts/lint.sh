#!/usr/bin/env bash
# Checks layout (clang-format) and the checks of .clang-tidy, over the sources that this branch changes
# since it left BASE (default: main), uncommitted and new ones included.
#
# usage: scripts/lint.sh [--all] [--format] [BASE]
#
# --all checks every source; --format checks the layout alone, which takes seconds.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/packages.sh lint

all='' format='' base=main
for argument in "$@"; do
  case $argument in
    --all) all=yes ;;
    --format) format=yes ;;
    -*) sed -n '5s/# //p' "$0" >&2; exit 2 ;;
    *) base=$argument ;;
  esac
done

list_sources() {
  if [ -n "$all" ]; then
    find . -path ./build -prune -o -type f \( -name '*.c' -o -name '*.cpp' -o -name '*.h' -o -name '*.hpp' \) -printf '%P\n'
  else
    git diff --name-only --merge-base "$base" -- '*.c' '*.cpp' '*.h' '*.hpp'
    git ls-files --others --exclude-standard -- '*.c' '*.cpp' '*.h' '*.hpp'
  fi
}

# What a header declares is checked where it is included; one source for each is enough.
list_includers() {
  local header
  for header in "$@"; do
    git grep --untracked -l -F "$(basename "$header")" -- '*.c' '*.cpp' | head -n 1 || true
  done
}

mapfile -t sources < <(list_sources | sort -u | while read -r file; do
  if [ -f "$file" ]; then echo "$file"; fi
done)
if [ "${#sources[@]}" -eq 0 ]; then echo "nothing to check"; exit 0; fi

clang-format --dry-run --Werror "${sources[@]}"
echo "layout: ${#sources[@]} files"
if [ -n "$format" ]; then exit 0; fi

# Clang cannot read the compiler's precompiled headers.
mkdir -p build
cmake --preset dev -B build/lint -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON -DSORRELIN_BUILD_BENCH=ON \
  >build/lint.log
mapfile -t headers < <(printf '%s\n' "${sources[@]}" | grep '\.h\(pp\)\?$' || true)
{
  printf '%s\n' "${sources[@]}" | grep -v '\.h\(pp\)\?$' || true
  list_includers "${headers[@]}"
} | sort -u | while read -r file; do
  # Sources of other systems and of programs outside the build have no command.
  if grep -q -F "\"file\": \"$PWD/$file\"" build/lint/compile_commands.json; then echo "$file"; fi
done >build/lint/checked
xargs -r -P "$(nproc)" -n 1 clang-tidy --quiet --warnings-as-errors='*' -p build/lint \
  <build/lint/checked 2>build/lint/notes || { echo "clang-tidy found faults"; exit 1; }
echo "checks: $(wc -l <build/lint/checked) sources"
