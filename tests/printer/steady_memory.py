#!/usr/bin/env python3
"""Compares the filter's memory for a short and a long job: steady_memory.py FILTER

Pages are coded to about as much as there was, more than half a megabyte, so a filter that kept any of them would grow.
"""
import os
import random
import struct
import subprocess
import sys
import tempfile

SIDE = 800  # pixels
SHORT, LONG = 10, 150  # pages
MOST_GROWTH_KIB = 8 * 1024


def page() -> bytes:
    header = bytearray(1796)
    numbers = {276: 300, 280: 300, 372: SIDE, 376: SIDE, 384: 8, 388: 8, 392: SIDE, 400: 18}
    for offset, number in numbers.items():
        struct.pack_into(">I", header, offset, number)
    return bytes(header) + random.Random(1).randbytes(SIDE * SIDE)


def peak_kib(program: str, pages: int, folder: str) -> int:
    job = os.path.join(folder, "job.ras")
    with open(job, "wb") as file:
        file.write(b"RaS3")
        for _ in range(pages):  # what this program holds would count as the filter's
            file.write(page())
    # The sanitizer would keep what is freed.
    options = os.environ.get("ASAN_OPTIONS", "") + ":quarantine_size_mb=0:thread_local_quarantine_size_kb=0"
    with open(os.path.join(folder, "job.pdf"), "wb") as document:
        child = subprocess.Popen([program, "1", "user", "title", "1", "", job], stdout=document,
                                 stderr=subprocess.DEVNULL,
                                 env={**os.environ, "ASAN_OPTIONS": options, "TMPDIR": folder})
        _, status, usage = os.wait4(child.pid, 0)
    child.returncode = os.waitstatus_to_exitcode(status)
    if child.returncode != 0 or os.path.getsize(document.name) < pages * SIDE * SIDE // 2:
        sys.exit(f"the filter fails for {pages} pages")
    return usage.ru_maxrss


def main() -> int:
    with tempfile.TemporaryDirectory() as folder:
        short, long = (peak_kib(sys.argv[1], pages, folder) for pages in (SHORT, LONG))
    print(f"{SHORT} pages: {short} KiB, {LONG} pages: {long} KiB")
    return 1 if long > short + MOST_GROWTH_KIB else 0


sys.exit(main())
