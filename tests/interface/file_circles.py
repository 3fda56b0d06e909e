#!/usr/bin/env python3
"""No two files of the library depend on each other in a circle: file_circles.py NM ROOT OBJECT...

A file depends on the files that it includes, and a source on those whose functions and data its
object refers to.
"""
import pathlib
import posixpath
import re
import subprocess
import sys

INCLUDE = re.compile(r'^\s*#\s*include\s*<(sorrelin/[^>"]+)>', re.MULTILINE)
DEFINED = set("TDBR")  # strong symbols; weak ones are copies of what headers define


def source_of(path: str) -> str:
    return posixpath.normpath("sorrelin/" + path.split(".dir/")[1].removesuffix(".o"))


def symbols_of(nm: str, path: str) -> tuple[set[str], set[str]]:
    lines = subprocess.run([nm, path], capture_output=True, text=True, check=True).stdout
    defined, wanted = set(), set()
    for line in lines.splitlines():
        kind, name = line.split()[-2:]
        if kind in DEFINED:
            defined.add(name)
        elif kind == "U":
            wanted.add(name)
    return defined, wanted


def calls(nm: str, objects: list[str]) -> dict[str, set[str]]:
    symbols = {source_of(path): symbols_of(nm, path) for path in objects}
    home = {name: source for source, (defined, _) in symbols.items() for name in defined}
    return {source: {home[name] for name in wanted if name in home}
            for source, (_, wanted) in symbols.items()}


def includes(root: pathlib.Path) -> dict[str, set[str]]:
    graph = {}
    for path in (root / "sorrelin").rglob("*"):
        if path.suffix in (".h", ".cpp"):
            text = path.read_text(encoding="ascii")
            graph[str(path.relative_to(root))] = set(INCLUDE.findall(text))
    return graph


def circles(graph: dict[str, set[str]]) -> list[list[str]]:
    """The strongly connected components of more than one file (Tarjan)."""
    index, low, stack, found = {}, {}, [], []

    def visit(node: str) -> None:
        index[node] = low[node] = len(index)
        stack.append(node)
        for other in sorted(graph.get(node, ())):
            if other not in index:
                visit(other)
            if other in stack:
                low[node] = min(low[node], low[other])
        if low[node] == index[node]:
            at = stack.index(node)
            if len(stack) - at > 1:
                found.append(sorted(stack[at:]))
            del stack[at:]

    for node in sorted(graph):
        if node not in index:
            visit(node)
    return found


def main() -> int:
    nm, root, objects = sys.argv[1], pathlib.Path(sys.argv[2]), sys.argv[3:]
    graph = includes(root)
    for source, others in calls(nm, objects).items():
        graph[source] |= others - {source}
    found = circles(graph)
    for circle in found:
        print("a circle of files:", *circle, sep="\n  ")
    print(f"{len(graph)} files, {len(found)} circles")
    return 1 if found or not objects else 0


sys.setrecursionlimit(10000)
sys.exit(main())
