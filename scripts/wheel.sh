#!/usr/bin/env bash
# Makes the Python wheel in build/wheel, and tries it in empty virtual environments of each Python that
# is named (default: python3), without a compiler and with no library of the system's.
# usage: scripts/wheel.sh [PYTHON...]
set -euo pipefail
cd "$(dirname "$0")/.."

rm -rf build/wheel
mkdir -p build/wheel
python3 -m pip --quiet wheel --no-deps --wheel-dir build/wheel .
wheel=$(realpath build/wheel/*.whl)
echo "$wheel"

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
for python in "${@:-python3}"; do
  rm -rf "$folder/venv"
  "$python" -m venv "$folder/venv"
  "$folder/venv/bin/pip" --quiet install --no-index "$wheel"
  (cd "$folder" && env -i PATH="$folder/venv/bin" "$folder/venv/bin/python" - <<'PROGRAM'
import sys
import sorrelin
picture = memoryview(bytes(x % 256 for x in range(64 * 64))).cast("B", (64, 64))
bilevel = memoryview(bytes((x // 8) % 2 for x in range(64 * 64))).cast("?", (64, 64))
with sorrelin.PdfWriter("out.pdf") as pdf:
    pdf.add_page(picture)
    pdf.add_page(bilevel)
    pdf.add_page(picture, compression=sorrelin.Compression.JPEG)
with sorrelin.PdfReader("out.pdf") as pdf:
    assert pdf[0].pixels.tolist() == picture.tolist()
    assert pdf[1].pixels.tolist() == bilevel.tolist()
    assert len(pdf[0:2]) == 2 and len(pdf) == 3
loaded = {line.split()[-1] for line in open("/proc/self/maps") if "sorrelin" in line and ".so" in line}
assert all("/venv/" in path for path in loaded), loaded
print(f"Python {sys.version.split()[0]}: sorrelin {sorrelin.__version__} works in an empty environment")
PROGRAM
  )
done
