#!/bin/sh
# Installs a build into an empty folder and uses what is there.
# use_installed.sh BUILD EXAMPLES LIBDIR
set -eu
build=$1
examples=$2
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
prefix=$root/usr

cmake --install "$build" --prefix "$prefix" >"$root/install.log"

echo "-- find_package"
cmake -S "$examples" -B "$root/cmake" -DCMAKE_PREFIX_PATH="$prefix" >"$root/configure.log"
cmake --build "$root/cmake" >"$root/build.log"
python3 "$examples/../tests/examples/examples_test.py" "$root/cmake"
"$root/cmake/write_document" "$root/c.pdf"
"$root/cmake/memory_document" "$root/cpp.pdf"

echo "-- pkg-config"
PKG_CONFIG_PATH=$prefix/$3/pkgconfig
export PKG_CONFIG_PATH
flags=$(pkg-config --cflags --libs sorrelin)
cc -std=c11 -Wall -Wextra -Werror "$examples/write_document.c" -o "$root/with_cc" $flags \
  -Wl,-rpath,"$prefix/$3"
for standard in 17 20; do
  c++ -std=c++$standard -Wall -Wextra -Werror "$examples/memory_document.cpp" \
    -o "$root/with_cxx$standard" $flags -Wl,-rpath,"$prefix/$3"
  "$root/with_cxx$standard" "$root/cpp$standard.pdf"
done
"$root/with_cc" "$root/c2.pdf"
cc -std=c11 -Wall -Wextra -Werror "$examples/jpeg_pages.c" -o "$root/with_coded" \
  $(pkg-config --cflags --libs sorrelin-coded) -Wl,-rpath,"$prefix/$3"
pdftoppm -r 72 -jpeg -singlefile "$root/cpp.pdf" "$root/photo"
"$root/with_coded" "$root/coded.pdf" "$root/photo.jpg"

echo "-- documents"
for document in c c2; do
  [ "$(pdfimages -list "$root/$document.pdf" | awk 'NR > 2 { print $4 "x" $5, $6 }')" = "256x256 index" ]
done
for document in cpp cpp17 cpp20; do
  [ "$(pdfimages -list "$root/$document.pdf" | awk 'NR > 2 { print $4 "x" $5, $9 }' | sort -u)" = "800x800 ccitt" ]
  [ "$(pdfinfo "$root/$document.pdf" | awk '/^Pages/ { print $2 }')" = 2 ]
done
[ "$(pdfimages -list "$root/coded.pdf" | awk 'NR > 2 { print $9 }')" = jpeg ]

echo "-- program"
pdftoppm -r 72 -singlefile "$root/c.pdf" "$root/page"
"$prefix/bin/sorrelin" make "$root/made.pdf" "$root/page.ppm"
qpdf --check "$root/made.pdf" >/dev/null
echo "-- manual and completions"
for file in man/man1/sorrelin.1 bash-completion/completions/sorrelin \
  fish/vendor_completions.d/sorrelin.fish zsh/*/_sorrelin; do
  [ -s "$prefix"/share/$file ]
done
echo "all of the package works"
