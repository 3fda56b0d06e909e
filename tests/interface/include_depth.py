#!/usr/bin/env python3
"""Bounds how deep the library's sources include each other: include_depth.py ROOT

The depth of a file is the longest chain of the library's own headers that it includes: 1 for a file
that only includes headers without any.
"""
import functools
import pathlib
import re
import statistics
import sys

MOST = 6
MEDIAN = 3
INCLUDE = re.compile(r"^\s*#\s*include\s*<(sorrelin/[^>]+)>", re.MULTILINE)
ROOT = pathlib.Path(sys.argv[1])


@functools.lru_cache(maxsize=None)
def chain(name: str) -> tuple[str, ...]:
    """The longest chain of headers from a file on, without the file; generated headers are none."""
    text = (ROOT / name).read_text(encoding="ascii")
    headers = [header for header in INCLUDE.findall(text) if (ROOT / header).exists()]
    return max(((header, *chain(header)) for header in headers), key=len, default=())


def main() -> int:
    sources = [str(path.relative_to(ROOT)) for path in sorted((ROOT / "sorrelin").rglob("*.cpp"))]
    median = statistics.median(len(chain(source)) for source in sources)
    deepest = max(sources, key=lambda source: len(chain(source)))
    longest = len(chain(deepest))
    print(f"{len(sources)} sources, include depth: median {median:g}, longest {longest}:")
    print(" > ".join((deepest, *chain(deepest))))
    return 1 if longest > MOST or median > MEDIAN else 0


sys.exit(main())
