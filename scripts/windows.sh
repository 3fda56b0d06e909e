#!/usr/bin/env bash
# Builds the library for Windows with mingw-w64 and, if Wine is at hand, runs the tests that Windows
# has of its own, on a desktop without a screen. Debian packages: g++-mingw-w64-x86-64
# libz-mingw-w64-dev googletest wine64.
set -euo pipefail
cd "$(dirname "$0")/.."

cmake --preset windows
cmake --build --preset windows
if command -v wine >/dev/null; then
  export WINEPREFIX=$PWD/build/windows/wine WINEDEBUG=-all
  wine reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f >/dev/null
  wineserver -w
fi
ctest --preset windows
