#!/usr/bin/env python3
"""Checks which folder includes which: include_directions.py ROOT

Dependencies point one way, between folders, and in the library between files too: none is included
by one that it includes itself. System headers belong to the platform layer, and to the few files that exist on
Windows alone.
"""
import pathlib
import re
import sys

# Each folder builds on those that are named here, and on itself.
MAY_INCLUDE = {
    "sorrelin/platform": {"sorrelin/version.h"},
    "sorrelin/channel": {"sorrelin/platform"},
    "sorrelin/syntax": {"sorrelin/channel", "sorrelin/platform"},
    "sorrelin/image": {"sorrelin/channel", "sorrelin/platform"},
    "sorrelin/ocr": {"sorrelin/image", "sorrelin/platform"},
    "sorrelin/document": {"sorrelin/syntax", "sorrelin/image", "sorrelin/channel",
                          "sorrelin/platform"},
    "sorrelin/writer": {"sorrelin/document", "sorrelin/syntax", "sorrelin/image",
                        "sorrelin/channel", "sorrelin/platform", "sorrelin/version.h"},
    "sorrelin/frame": {"sorrelin/writer", "sorrelin/document", "sorrelin/syntax",
                       "sorrelin/image", "sorrelin/channel", "sorrelin/platform"},
    "sorrelin/coded": {"sorrelin/frame", "sorrelin/writer", "sorrelin/image",
                       "sorrelin/platform"},
    "siblings": {"sorrelin/image/codecs/sibling.h", "sorrelin/platform"},
    "tools/system": {"sorrelin"},
    "tools/cli": {"tools/system", "sorrelin"},
    "tools/formats": {"tools/cli", "tools/system", "sorrelin", "siblings/cadwick"},
    "tools/documents": {"tools/formats", "tools/cli", "tools/system", "sorrelin"},
    "tools/ocr": {"tools/extract", "tools/documents", "tools/formats", "tools/cli",
                  "tools/system", "sorrelin", "siblings"},
    "tools/extract": {"tools/documents", "tools/formats", "tools/cli", "tools/system", "sorrelin",
                      "siblings/cadwick"},
    "tools/extract/colour": {"tools/documents", "sorrelin"},
    "tools/extract/codings": {"tools/extract/colour", "tools/documents", "tools/formats", "sorrelin",
                              "siblings/cadwick"},
    "tools/extract/page": {"tools/extract/codings", "tools/documents", "tools/formats", "sorrelin"},
    "tools/extract/output": {"tools/extract/page", "tools/extract/codings", "tools/documents",
                             "tools/formats", "sorrelin", "siblings/cadwick"},
    "tools/make": {"tools/ocr", "tools/extract", "tools/documents", "tools/formats", "tools/cli",
                   "tools/system", "sorrelin"},
    "tools/batch": {"tools/make", "tools/documents", "tools/formats", "tools/cli",
                    "tools/system", "sorrelin"},
    "tools/printer": {"tools/make", "tools/formats", "tools/cli", "sorrelin", "siblings/cadwick"},
    "tools/scan": {"tools/make", "tools/ocr", "tools/documents", "tools/formats", "tools/cli", "sorrelin"},
    "tools/verbs": {"tools/batch", "tools/scan", "tools/make", "tools/ocr", "tools/extract", "tools/documents",
                    "tools/formats", "tools/cli", "sorrelin"},
}
OURS = ("sorrelin/", "siblings/", "tools/")
SYSTEM_HEADER = re.compile(
    r"(windows|unistd|fcntl|dlfcn|pthread|poll|signal|termios|spawn|iconv|langinfo)\.h|sys/.*")
INCLUDE = re.compile(r'^\s*#\s*include\s*[<"]([^>"]+)[>"]', re.MULTILINE)


def allowed(folder: str, header: str) -> bool:
    return any(header == part or header.startswith(part + "/")
               for part in {folder} | MAY_INCLUDE[folder])


def may_ask_the_system(path: pathlib.Path) -> bool:
    return ("platform" in path.parts or "tools" in path.parts or path.stem.endswith("_windows")
            or path.stem == "dll_main")


def problems_of(path: pathlib.Path, folder: str, headers: list[str]) -> list[str]:
    problems = []
    for header in headers:
        if header.startswith(OURS) and not allowed(folder, header):
            problems.append(f"{path}: {folder} does not build on {header}")
        if SYSTEM_HEADER.fullmatch(header) and not may_ask_the_system(path):
            problems.append(f"{path}: {header} belongs to the platform layer")
    return problems


def circles(includes: dict[str, list[str]]) -> list[str]:
    """Headers that reach themselves; a source counts as one file with its header."""
    graph: dict[str, set[str]] = {}
    for name, headers in includes.items():
        graph.setdefault(name, set()).update(h for h in headers if h in includes and h != name)

    found = []
    state: dict[str, int] = {}

    def walk(name: str, trail: list[str]) -> None:
        state[name] = 1
        for target in sorted(graph[name]):
            if state.get(target) == 1:
                found.append(" -> ".join(trail[trail.index(target):] + [target]))
            elif target not in state:
                walk(target, trail + [target])
        state[name] = 2

    for name in sorted(graph):
        if name not in state:
            walk(name, [name])
    return found


def unknown_folders(root: pathlib.Path) -> list[str]:
    """Folders of the program without a rule, or without a line in the description."""
    described = (root / "docs/architecture.md").read_text(encoding="utf-8")
    folders = {path.parent.relative_to(root).as_posix() for path in (root / "tools").rglob("*.cpp")}
    folders.discard("tools")
    problems = [f"{folder}/: no line in docs/architecture.md" for folder in sorted(folders)
                if f"`{folder}/`" not in described]
    return problems + [f"{folder}: no rule for what it includes" for folder in sorted(folders)
                       if "/".join(folder.split("/")[:2]) not in MAY_INCLUDE]


def main() -> int:
    root = pathlib.Path(sys.argv[1])
    includes: dict[str, list[str]] = {}
    problems = []
    for folder in MAY_INCLUDE:
        for path in sorted((root / folder).rglob("*")):
            if path.suffix in (".h", ".cpp"):
                headers = INCLUDE.findall(path.read_text(encoding="ascii"))
                problems += problems_of(path, folder, headers)
                name = str(path.relative_to(root).with_suffix(".h"))
                includes.setdefault(name, []).extend(headers)
    problems += unknown_folders(root)
    library = {name: headers for name, headers in includes.items() if name.startswith("sorrelin/")}
    problems += [f"circle: {circle}" for circle in circles(library)]
    print("\n".join(problems) if problems else f"{len(includes)} files include what they may")
    return 1 if problems or not includes else 0


sys.exit(main())
