#!/usr/bin/env python3
"""Which folder may include which: include_directions.py ROOT

Dependencies point one way; only the session's headers are for everybody. System headers stand in
the platform layer, and in the few files that exist on Windows alone.
"""
import pathlib
import re
import sys

MAY_INCLUDE = {
    "sorrelin/platform": set(),
    "sorrelin/channel": {"platform"},
    "sorrelin/image": {"platform"},
    "sorrelin/ocr": {"image", "platform"},
    "sorrelin/syntax": {"channel", "platform"},
    "sorrelin/document": {"syntax", "image", "channel", "platform"},
    "sorrelin/writer": {"document", "syntax", "image", "channel", "platform"},
    "sorrelin/coded": {"platform"},
    "sorrelin/frame": {"writer", "document", "syntax", "image", "channel", "platform"},
    "siblings": {"image/codecs/sibling.h", "platform"},
}
# What the other folders of the library may know of frame.
SESSION = {
    "frame/banner.h",
    "frame/pdf.h",
    "frame/session.h",
    "frame/session_state.h",
    "frame/string_error.h",
    "frame/trace.h",
}
WITHOUT_SESSION = {"sorrelin/platform", "sorrelin/channel", "sorrelin/syntax", "sorrelin/document",
                   "siblings"}
SYSTEM_HEADER = re.compile(
    r"(windows|unistd|fcntl|dlfcn|pthread|poll|signal|termios|spawn|iconv|langinfo)\.h|sys/.*")
INCLUDE = re.compile(r'^\s*#\s*include\s*[<"]([^>"]+)[>"]', re.MULTILINE)


def allowed(folder: str, header: str) -> bool:
    own = folder.removeprefix("sorrelin/")
    target = header.removeprefix("sorrelin/")
    if target.split("/")[0] == own or header.startswith(folder + "/"):
        return True
    if target in SESSION and folder not in WITHOUT_SESSION:
        return True
    return target in MAY_INCLUDE[folder] or target.split("/")[0] in MAY_INCLUDE[folder]


def may_ask_the_system(path: pathlib.Path) -> bool:
    return "platform" in path.parts or path.stem.endswith("_windows") or path.stem == "dll_main"


def problems_of(path: pathlib.Path, folder: str) -> list[str]:
    problems = []
    for header in INCLUDE.findall(path.read_text(encoding="ascii")):
        if header.startswith(("sorrelin/", "siblings/")) and not allowed(folder, header):
            problems.append(f"{path}: {folder} does not build on {header}")
        if SYSTEM_HEADER.fullmatch(header) and not may_ask_the_system(path):
            problems.append(f"{path}: {header} belongs into the platform layer")
    return problems


def main() -> int:
    root = pathlib.Path(sys.argv[1])
    files = 0
    problems = []
    for folder in MAY_INCLUDE:
        for path in sorted((root / folder).rglob("*")):
            if path.suffix in (".h", ".cpp"):
                files += 1
                problems += problems_of(path, folder)
    print("\n".join(problems) if problems else f"{files} files include what they may")
    return 1 if problems or files == 0 else 0


sys.exit(main())
