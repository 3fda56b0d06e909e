"""Builds the wheel of the Python package: the module, and the libraries that it loads (PEP 517).

Everything but the C library is carried along, so the wheel works where nothing is installed. Only the
standard library of Python is used.
"""

import base64
import hashlib
import os
import pathlib
import platform
import re
import subprocess
import tempfile
import zipfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
NAMES = ["libsorrelin.so.13", "libsorrelin-platform.so.13", "libsorrelin-coded.so.13",
         "libcadwick.so", "librennick.so"]
# The C library is the system's: it cannot be carried along.
SYSTEM = re.compile(r"(ld-linux|libc|libm|libdl|libpthread|librt|linux-vdso)[.\-]")
TAG = f"py3-none-linux_{platform.machine()}"


def version():
    text = (ROOT / "CMakeLists.txt").read_text(encoding="utf-8")
    return re.search(r"project\(sorrelin VERSION ([\d.]+)", text)[1]


def build_libraries(build):
    """Compiles the libraries; the paths of those that the wheel carries, by name."""
    flags = "-static-libstdc++ -static-libgcc"
    environment = {**os.environ, "LDFLAGS": f"{os.environ.get('LDFLAGS', '')} {flags}".strip()}
    subprocess.run(["cmake", "-S", ROOT, "-B", build, "-DSORRELIN_BUILD_TOOL=OFF",
                    "-DSORRELIN_AVERNA=OFF", "-DSORRELIN_RENNICK=ON", "-DSORRELIN_CADWICK=ON",
                    "-DSORRELIN_LOAD_LINE=OFF"], check=True, env=environment)
    subprocess.run(["cmake", "--build", build, "--parallel", str(os.cpu_count() or 1)],
                   check=True, env=environment)
    libraries = {name: (build / "lib" / name).resolve() for name in NAMES}
    for path in list(libraries.values()):
        libraries.update(dependencies_of(path, libraries))
    return libraries


def dependencies_of(path, known):
    lines = subprocess.run(["ldd", path], check=True, capture_output=True,
                           text=True).stdout.splitlines()
    found = (re.match(r"\s*(\S+) => (/\S+)", line) for line in lines)
    return {match[1]: pathlib.Path(match[2]).resolve() for match in found
            if match and match[1] not in known and not SYSTEM.match(match[1])}


class Wheel:
    """A zip file whose last member lists the others with their digests."""

    def __init__(self, path):
        self.zip = zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED)
        self.record = []

    def add(self, name, data, executable=False):
        info = zipfile.ZipInfo(name, (1980, 1, 1, 0, 0, 0))
        info.compress_type = zipfile.ZIP_DEFLATED
        info.external_attr = (0o100755 if executable else 0o100644) << 16
        self.zip.writestr(info, data)
        digest = base64.urlsafe_b64encode(hashlib.sha256(data).digest()).rstrip(b"=").decode()
        self.record.append(f"{name},sha256={digest},{len(data)}")

    def close(self, record_name):
        self.zip.writestr(record_name, "\n".join([*self.record, f"{record_name},,"]) + "\n")
        self.zip.close()


def metadata():
    return ("Metadata-Version: 2.1\nName: sorrelin\n"
            f"Version: {version()}\nSummary: Bitmaps to PDF documents and back\n"
            "Requires-Python: >=3.9\n").encode()


def build_wheel(wheel_directory, config_settings=None, metadata_directory=None):
    name = f"sorrelin-{version()}-{TAG}.whl"
    info = f"sorrelin-{version()}.dist-info"
    wheel = Wheel(pathlib.Path(wheel_directory) / name)
    for path in sorted((ROOT / "python/sorrelin").iterdir()):
        if path.is_file():
            wheel.add(f"sorrelin/{path.name}", path.read_bytes())
    with tempfile.TemporaryDirectory(prefix="sorrelin-wheel-") as build:
        for library, path in sorted(build_libraries(pathlib.Path(build)).items()):
            wheel.add(f"sorrelin/{library}", path.read_bytes(), executable=True)
    wheel.add(f"{info}/METADATA", metadata())
    wheel.add(f"{info}/WHEEL", ("Wheel-Version: 1.0\nGenerator: sorrelin\nRoot-Is-Purelib: false\n"
                                f"Tag: {TAG}\n").encode())
    wheel.close(f"{info}/RECORD")
    return name
