#!/usr/bin/env bash
# Builds the libraries that codecs and program need on Windows and that the distribution has no
# package of: from the distribution's source packages, as static libraries, once, into a cache.
# usage: scripts/windows_parts.sh [x86_64|i686] [PART...]
# The last line of the output is the folder that holds them. Needs the packages of
# `scripts/packages.sh windows`.
set -euo pipefail
cd "$(dirname "$0")/.."

processor=${1:-x86_64}
triplet=$processor-w64-mingw32
cache=${SORRELIN_WINDOWS_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/sorrelin-windows}
prefix=$cache/$triplet
apt=$cache/apt
toolchain=$PWD/cmake/mingw-w64.cmake
mkdir -p "$prefix/built" "$prefix/lib/pkgconfig" "$cache/build"
# One run at a time, since all share the cache.
exec 9>"$cache/lock"
flock 9
# Each uses those before it.
parts=(headers libjpeg-turbo libpng1.6 libdeflate giflib libwebp libzstd xz-utils lerc tiff openjpeg2
  leptonlib lcms2 jbig2dec qpdf tesseract libde265 dav1d libheif)
if [ $# -gt 1 ]; then parts=("${@:2}"); fi

# make_source_list: the distribution's entries of the system's list, for source packages. The
# system's own set-up stays as it is.
make_source_list() {
  mkdir -p "$apt/lists.d" "$apt/state/lists/partial" "$apt/cache/archives/partial"
  cat /etc/apt/sources.list.d/*.sources 2>/dev/null |
    awk 'BEGIN { RS = ""; ORS = "\n\n" } /\/debian/ { sub(/Types:[^\n]*/, "Types: deb-src"); print }' \
      >"$apt/lists.d/system.sources"
  cat /etc/apt/sources.list /etc/apt/sources.list.d/*.list 2>/dev/null |
    sed -nE '/\/debian/ s/^deb(-src)? /deb-src /p' | sort -u >"$apt/lists.d/system.list" || true
  cat >"$apt/apt.conf" <<EOF
Dir::State "$apt/state";
Dir::State::status "/var/lib/dpkg/status";
Dir::Cache "$apt/cache";
Dir::Etc::sourcelist "/dev/null";
Dir::Etc::sourceparts "$apt/lists.d";
APT::Sandbox::User "$(id -un)";
EOF
  APT_CONFIG=$apt/apt.conf apt-get -qq update
}

# unpack PACKAGE: its source, in $source. Archives are checked by apt against the signed list. Where
# the archive lacks its newest version, the one before it is taken, and said.
unpack() {
  local package=$1 version
  source=$cache/build/$triplet/$package
  [ -f "$apt/apt.conf" ] || make_source_list
  rm -rf "$source"
  mkdir -p "$source"
  while read -r version; do
    if (cd "$source" &&
        APT_CONFIG=$apt/apt.conf apt-get -qq source --only-source "$package=$version" >"$source/log" 2>&1); then
      echo "$package $version" >"$source/version"
      source=$(find "$source" -mindepth 1 -maxdepth 1 -type d)
      return
    fi
    echo "$package $version could not be had: $(grep -m1 ^E: "$source/log")" >&2
  done < <(APT_CONFIG=$apt/apt.conf apt-cache showsrc --only-source "$package" |
    sed -n 's/^Version: //p' | sort -Vru)
  return 1
}

# by_cmake OPTION...: configures, builds and installs $source with CMake.
by_cmake() {
  cmake -S "$source" -B "$source/windows" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$toolchain" \
    -DSORRELIN_WINDOWS_PROCESSOR="$processor" -DSORRELIN_WINDOWS_PARTS="$prefix" \
    -DCMAKE_INSTALL_PREFIX="$prefix" -DCMAKE_INSTALL_LIBDIR:STRING=lib -DCMAKE_BUILD_TYPE=Release \
    -DBUILD_SHARED_LIBS=OFF "$@"
  cmake --build "$source/windows"
  cmake --install "$source/windows"
}

# by_autotools OPTION...: the same with a configure script.
by_autotools() {
  (cd "$source" && CC=$triplet-gcc-posix PKG_CONFIG_LIBDIR=$prefix/lib/pkgconfig ./configure \
    --host="$triplet" --prefix="$prefix" --disable-shared --enable-static "$@")
  make -C "$source" -j "$(nproc)"
  make -C "$source" install
}

build_headers() {
  mkdir -p "$prefix/include" "$prefix/lib/cmake"
  cp -rf /usr/include/CLI /usr/include/utf8cpp /usr/include/rapidxml "$prefix/include"
}

build_libjpeg-turbo() {
  by_cmake -DENABLE_SHARED=OFF -DWITH_JPEG8=OFF -DREQUIRE_SIMD=ON
}

build_libpng1.6() {
  by_cmake -DPNG_SHARED=OFF -DPNG_STATIC=ON -DPNG_TESTS=OFF
}

build_libdeflate() {
  make -C "$source" -j "$(nproc)" CC="$triplet-gcc-posix" AR="$triplet-ar" PREFIX="$prefix" \
    DISABLE_SHARED=1 libdeflatestatic.lib
  cp "$source/libdeflatestatic.lib" "$prefix/lib/libdeflate.a"
  cp "$source/libdeflate.h" "$prefix/include"
  write_pkgconfig libdeflate 1.14 -ldeflate
}

build_giflib() {
  make -C "$source" CC="$triplet-gcc-posix" AR="$triplet-ar" libgif.a
  cp "$source/libgif.a" "$prefix/lib"
  cp "$source/gif_lib.h" "$prefix/include"
}

build_libwebp() {
  local programs=() name
  for name in ANIM_UTILS CWEBP DWEBP GIF2WEBP IMG2WEBP VWEBP WEBPINFO WEBPMUX EXTRAS; do
    programs+=("-DWEBP_BUILD_$name=OFF")
  done
  by_cmake "${programs[@]}"
}

build_libzstd() {
  source=$source/build/cmake
  by_cmake -DZSTD_BUILD_PROGRAMS=OFF -DZSTD_BUILD_SHARED=OFF -DZSTD_MULTITHREAD_SUPPORT=OFF \
    -DZSTD_LEGACY_SUPPORT=OFF
  write_pkgconfig libzstd 1.5.4 -lzstd
}

build_xz-utils() {
  by_autotools --disable-xz --disable-xzdec --disable-lzmadec --disable-lzmainfo \
    --disable-lzma-links --disable-scripts --disable-doc --disable-nls --enable-threads=no
}

build_lerc() {
  by_cmake
}

# Without JBIG, whose library is under the GNU GPL: Averna.dll, which other programs load, has libtiff
# in it.
build_tiff() {
  by_cmake -Dtiff-tools=OFF -Dtiff-tests=OFF -Dtiff-contrib=OFF -Dtiff-docs=OFF -Djbig=OFF \
    -Dlerc=ON -Dlzma=ON -Dzstd=ON -Dwebp=ON -Dcxx=OFF \
    -DCMAKE_C_FLAGS='-DLZMA_API_STATIC -DLERC_STATIC'
}

build_openjpeg2() {
  by_cmake -DBUILD_CODEC=OFF
}

build_leptonlib() {
  by_cmake -DBUILD_PROG=OFF -DSW_BUILD=OFF -DENABLE_OPENJPEG=ON -DCMAKE_C_FLAGS=-DOPJ_STATIC
  # What it needs is left out there.
  sed -i 's/^Libs.private:.*/Libs.private: -lgif\nRequires.private: libtiff-4 libpng libwebp libopenjp2/' \
    "$prefix/lib/pkgconfig/lept.pc"
}

build_lcms2() {
  by_autotools --without-jpeg --without-tiff
}

build_jbig2dec() {
  # It takes `inline` away before the headers that use it.
  (cd "$source" && NOCONFIGURE=1 ./autogen.sh)
  by_autotools --without-libpng CFLAGS="-O2 -D__CRT__NO_INLINE"
}

build_qpdf() {
  # Its native cipher uses types of this header without including it.
  sed -i 's/^#include <stddef.h>/&\n#include <stdint.h>/' "$source/libqpdf/qpdf/rijndael.h"
  cmake -S "$source" -B "$source/windows" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$toolchain" \
    -DSORRELIN_WINDOWS_PROCESSOR="$processor" -DSORRELIN_WINDOWS_PARTS="$prefix" \
    -DCMAKE_INSTALL_PREFIX="$prefix" -DCMAKE_INSTALL_LIBDIR:STRING=lib -DCMAKE_BUILD_TYPE=Release \
    -DBUILD_SHARED_LIBS=OFF -DBUILD_DOC=OFF -DREQUIRE_CRYPTO_NATIVE=ON -DUSE_IMPLICIT_CRYPTO=OFF \
    -DALLOW_CRYPTO_NATIVE=ON
  cmake --build "$source/windows" --target libqpdf
  cmake --install "$source/windows" --component lib
  cmake --install "$source/windows" --component dev
}

# Without OpenMP, whose run-time library is a DLL, and for any processor instead of the builder's:
# what newer ones have is chosen at run time. The compiler takes the stack for aligned to 32 bytes,
# which it is not there, so vectors are moved as if they were nowhere aligned.
build_tesseract() {
  local flags=-Wa,-muse-unaligned-vector-move
  if [ "$processor" = i686 ]; then flags+=" -mstackrealign"; fi
  sed -i -e '/^install(TARGETS tesseract /d' -e 's/^add_executable(tesseract /&EXCLUDE_FROM_ALL /' \
    "$source/CMakeLists.txt"
  by_cmake -DSW_BUILD=OFF -DOPENMP_BUILD=OFF -DCOMPILER_SUPPORTS_MARCH_NATIVE=OFF \
    -DBUILD_TRAINING_TOOLS=OFF -DDISABLE_ARCHIVE=ON -DDISABLE_CURL=ON -DGRAPHICS_DISABLED=ON \
    -DCMAKE_CXX_FLAGS="$flags"
  cp "$source/tessdata/pdf.ttf" "$prefix/share/tessdata"
}

# Callers align the stack to 4 bytes alone where processors have 32 bits.
build_libde265() {
  local flags=
  if [ "$processor" = i686 ]; then flags=-mstackrealign; fi
  by_cmake -DENABLE_SDL=OFF -DENABLE_DECODER=OFF -DCMAKE_C_FLAGS="$flags" -DCMAKE_CXX_FLAGS="$flags"
}

build_dav1d() {
  cat >"$source/windows.cross" <<EOF
[binaries]
c = '$triplet-gcc-posix'
ar = '$triplet-ar'
strip = '$triplet-strip'
windres = '$triplet-windres'
[properties]
needs_exe_wrapper = true
[host_machine]
system = 'windows'
cpu_family = '${processor/i686/x86}'
cpu = '$processor'
endian = 'little'
EOF
  PKG_CONFIG_LIBDIR=$prefix/lib/pkgconfig meson setup --cross-file "$source/windows.cross" \
    --prefix "$prefix" --libdir lib --buildtype release --default-library static \
    -Denable_tools=false -Denable_tests=false -Dlogging=false "$source/windows" "$source"
  ninja -C "$source/windows" install
}

build_libheif() {
  local coders=() name
  for name in X265 AOM_ENCODER AOM_DECODER SvtEnc RAV1E; do coders+=("-DWITH_$name=OFF"); done
  sed -i '/add_definitions(-Werror)/d' "$source/CMakeLists.txt"
  by_cmake "${coders[@]}" -DENABLE_PLUGIN_LOADING=OFF -DWITH_EXAMPLES=OFF
}

# write_pkgconfig NAME VERSION LIBRARY: what the library's own build leaves out.
write_pkgconfig() {
  cat >"$prefix/lib/pkgconfig/$1.pc" <<EOF
prefix=$prefix
Name: $1
Description: $1
Version: $2
Libs: -L\${prefix}/lib $3
Cflags: -I\${prefix}/include
EOF
}

# check_format: what was installed must be for the target alone.
check_format() {
  local format=pe-x86-64 archive
  if [ "$processor" = i686 ]; then format=pe-i386; fi
  for archive in "$prefix"/lib/*.a; do
    [ -f "$archive" ] || continue
    if "$triplet-objdump" -a "$archive" | sed -n 's/.*file format //p' | grep -vx "$format"; then
      echo "$archive is not $format" >&2
      exit 1
    fi
  done
}

# give_up PART: ends the run, unless it goes on without: Averna.dll alone needs Tesseract.
give_up() {
  if [ "$1" != tesseract ] || [ "${#parts[@]}" -eq 1 ]; then exit 1; fi
}

# build PART: unless this recipe has built it before.
build() {
  local part=$1 stamp
  stamp=$(declare -f "build_$part" by_cmake by_autotools write_pkgconfig | sha256sum)
  if [ "$(cat "$prefix/built/$part" 2>/dev/null)" = "$stamp" ]; then return; fi
  echo "building $part for $triplet"
  if [ "$part" != headers ]; then
    unpack "$part" || { give_up "$part"; return; }
  fi
  # A job of its own, since a failure within `||` would not end the function.
  "build_$part" >"$cache/build/$triplet-$part.log" 2>&1 &
  wait $! || {
    tail -n 40 "$cache/build/$triplet-$part.log" >&2
    echo "$part could not be built; the whole log is $cache/build/$triplet-$part.log" >&2
    give_up "$part"
    return
  }
  check_format
  rm -f "$prefix/licenses/$part.txt"
  echo "$stamp" >"$prefix/built/$part"
}

# keep_license PART: the terms of its sources, to be shipped with whatever links it.
keep_license() {
  local text=$prefix/licenses/$1.txt
  if [ -f "$text" ] || [ ! -f "$prefix/built/$1" ]; then return; fi
  mkdir -p "$prefix/licenses"
  if [ "$1" = headers ]; then
    cat /usr/share/doc/{libcli11-dev,libutfcpp-dev,librapidxml-dev}/copyright >"$text.new"
    mv "$text.new" "$text"
    return
  fi
  source=$(find "$cache/build/$triplet/$1" -mindepth 1 -maxdepth 1 -type d 2>/dev/null) || true
  [ -n "$source" ] || unpack "$1"
  cp "$source/debian/copyright" "$text"
}

for part in "${parts[@]}"; do
  build "$part"
  keep_license "$part"
done
echo "$prefix"
