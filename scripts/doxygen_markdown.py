#!/usr/bin/env python3
"""Prints a page of Markdown as doxygen reads it: headings carry the anchors that their hosts give
them, and links lead to pages of the site, or to the files that scripts/docs.sh copies beside them.
"""

import collections
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
HEADERS = re.findall(r"sorrelin/\S+\.h(?:pp)?", (ROOT / "Doxyfile").read_text(encoding="utf-8"))


def page_of(path):
    """The name of a page: unique, though two of the files are called README.md."""
    name = path.relative_to(ROOT).with_suffix("").as_posix().replace("/", "-").lower()
    return name if "-" in name else f"root-{name}"


def anchor_of(title, seen):
    anchor = re.sub(r"[^\w\- ]", "", title.lower()).replace(" ", "-")
    number = seen[anchor]
    seen[anchor] += 1
    return f"{anchor}-{number}" if number else anchor


def heading(line, path, seen):
    marks, title = line.split(" ", 1)
    anchor = anchor_of(title, seen)
    if marks != "#":
        return f"{line} {{#{page_of(path)}-{anchor}}}"
    return f"{line} {{#mainpage}}" if page_of(path) == "root-readme" else f"{line} {{#{page_of(path)}}}"


def link(match, path):
    text, target = match[1], match[2]
    if re.match(r"\w+:", target) or match[0].startswith("!"):
        return match[0]
    name, _, anchor = target.partition("#")
    file = (path.parent / name).resolve() if name else path
    if file.suffix == ".md":
        page = page_of(file)
        if anchor:
            return f"[{text}](#{page}-{anchor})"
        return f"\\ref {'index' if page == 'root-readme' else page} \"{text}\""
    place = file.relative_to(ROOT).as_posix()
    if place in HEADERS:
        return f"\\ref {place} \"{text.strip('`')}\""
    return f'<a href="{place}">{text}</a>' if place.startswith("examples") else text


def translated(path):
    seen, fenced = collections.Counter(), False
    for line in path.read_text(encoding="utf-8").split("\n"):
        if line.lstrip().startswith("```"):
            fenced = not fenced
        if fenced:
            yield line
        elif re.match(r"#+ ", line):
            yield heading(line, path, seen)
        else:
            yield re.sub(r"!?\[([^\]]+)\]\(([^)\s]+)\)", lambda match: link(match, path), line)


if __name__ == "__main__":
    print("\n".join(translated(pathlib.Path(sys.argv[1]).resolve())))
