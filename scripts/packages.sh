#!/usr/bin/env bash
# Installs what a fresh Debian machine needs and does not have.
# usage: scripts/packages.sh minimal|build|cluster|demo|fuzz|lint|package|printer|test|windows
# minimal is a build without any optional part. Needs root, or sudo, when something is missing.
set -euo pipefail

packages=(
  cmake g++ make pkg-config
  zlib1g-dev libtiff-dev libjpeg62-turbo-dev libturbojpeg0-dev libpng-dev libutfcpp-dev
  libdeflate-dev liblcms2-dev libqpdf-dev libwebp-dev librapidxml-dev libleptonica-dev
  libcli11-dev)
optional=(libtesseract-dev libopenjp2-7-dev libjbig2dec0-dev libheif-dev libsane-dev)
viewers=(ghostscript graphicsmagick mupdf-tools poppler-utils)
packaging=(build-essential debhelper dh-python doxygen lintian mmdebstrap python3)
cluster=(slurm-wlm munge python3-distributed parallel openssh-server openssh-client procps util-linux)
printer=(cups cups-client cups-filters graphicsmagick poppler-utils python3)
fuzzing=(ninja-build clang libclang-rt-14-dev)
witnesses=(ninja-build ccache libgtest-dev libgmock-dev libbenchmark-dev qpdf
  img2pdf imagemagick jbig2dec giflib-tools libheif-examples libjpeg-turbo-progs libopenjp2-tools
  libpng-tools libtiff-tools netpbm ocrmypdf sane-utils webp fonts-dejavu-core fonts-vlgothic
  tesseract-ocr tesseract-ocr-deu tesseract-ocr-eng tesseract-ocr-fra tesseract-ocr-heb
  tesseract-ocr-jpn-vert tesseract-ocr-osd tesseract-ocr-rus
  doxygen python3 python3-numpy python3-pil mypy man-db mandoc zsh fish tmux clang-format abigail-tools)
# Wine needs its preloader: without it, Linux puts the heap where a page of Wine's own must be in one
# start of thousands, which then ends with code 1 and says nothing.
windows=(ninja-build ccache g++-mingw-w64-x86-64 g++-mingw-w64-i686 libz-mingw-w64-dev googletest
  wine64 wine64-preloader wine nasm autoconf automake libtool meson dpkg-dev clang lld llvm zip unzip
  poppler-utils bc mmdebstrap arch-test util-linux)

case "${1:-}" in
  minimal) optional=() ;;
  build) ;;
  cluster) packages+=("${cluster[@]}" graphicsmagick) ;;
  demo) packages+=("${viewers[@]}") ;;
  package) packages+=("${packaging[@]}") ;;
  printer) packages+=("${printer[@]}") ;;
  lint) packages+=("${viewers[@]}" "${witnesses[@]}" clang-tidy) ;;
  fuzz) packages+=("${fuzzing[@]}") ;;
  test) packages+=("${viewers[@]}" "${witnesses[@]}") ;;
  windows) packages+=("${windows[@]}") ;;
  *) echo "usage: packages.sh minimal|build|cluster|demo|fuzz|lint|package|printer|test|windows" >&2; exit 2 ;;
esac

installed() { dpkg-query -W -f='${Status}' "$1" 2>/dev/null | grep -q 'ok installed'; }

missing=()
for package in "${packages[@]}" "${optional[@]}"; do
  installed "$package" || missing+=("$package")
done
if [ "${#missing[@]}" -eq 0 ]; then exit 0; fi

as_root=()
if [ "$(id -u)" -ne 0 ]; then as_root=(sudo); fi
echo "installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get -qq update || true  # without a network, the cache may have the packages
"${as_root[@]}" apt-get -qq install -y --no-install-recommends "${missing[@]}" >/dev/null || {
  echo "these packages cannot be installed: ${missing[*]}" >&2
  exit 1
}
