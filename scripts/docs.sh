#!/usr/bin/env bash
# Makes one folder of HTML of README, docs and the reference, with a search, and checks every link.
# usage: scripts/docs.sh [FOLDER]     (default: build/site)
set -euo pipefail
cd "$(dirname "$0")/.."
site=$(realpath -m "${1:-build/site}")

rm -rf "$site"
mkdir -p "$site"
{
  cat Doxyfile
  cat <<SETTINGS
OUTPUT_DIRECTORY = "$(dirname "$site")"
HTML_OUTPUT = "$(basename "$site")"
INPUT += README.md CHANGELOG.md CONTRIBUTING.md SECURITY.md docs
FILTER_PATTERNS += *.md="python3 scripts/doxygen_markdown.py"
IMAGE_PATH = docs
SEARCHENGINE = YES
SETTINGS
} | doxygen -
cp -r examples "$site/examples"
python3 tests/docs/check_site.py "$site"
