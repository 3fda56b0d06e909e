#!/usr/bin/env python3
"""Prints a header with its plain comments as doc comments, which is how doxygen reads them.

The headers follow one form. The comment at the top belongs to the file. The comment that begins a
paragraph (the lines between two empty lines) applies to each declaration in it, if there is no other;
other comments are for the declaration below or to the left. "Name (folder/)" and "---- Name ----"
open a family of declarations.
"""

import re
import sys

FAMILY = re.compile(r"\s*// ([A-Z][\w -]*) \((\w+)/\):?(.*)")
SECTION = re.compile(r"/\* ---- (.*) ---- \*/")


def is_comment(line):
    return re.match(r"\s*(//|/\*|\*( |/|$))", line) is not None


def escaped(text):
    """Text in which no character means anything to doxygen."""
    text = text.replace("&", "&amp;").replace("<", "&lt;").replace(">", "&gt;")
    return re.sub(r"([\\@#%])", r"\\\1", text)


def text_of(lines):
    """A comment's lines without their marks."""
    text = [re.sub(r"^\s*(//|/\*|\*/?) ?", "", line) for line in lines]
    return [escaped(re.sub(r"\s*\*/\s*$", "", line).rstrip()) for line in text]


def doc(lines, first=""):
    return ["/** " + first] + [" * " + line for line in lines] + [" */"]


def with_trailing_docs(line):
    if re.match(r"\s*#(if|ifn?def|endif|else)|.*^}", line) or line.startswith("}"):
        return line
    found = re.match(r"(.*\S\s+)(?://|/\*) (.*?)\s*(?:\*/)?$", line)
    return f"{found[1]}/**< {escaped(found[2])} */" if found and '"' not in found[1] else line


def is_declaration(line):
    return line.rstrip().endswith(";") or line.startswith("#define")


def paragraph(lines):
    leading = 0
    while leading < len(lines) and is_comment(lines[leading]):
        leading += 1
    code = lines[leading:]
    shared = (leading > 0 and not any(is_comment(line) for line in code)
              and not any("{" in line for line in code)
              and sum(is_declaration(line) for line in code) > 1)
    return repeated(text_of(lines[:leading]), code) if shared else mixed(lines)


def repeated(comment, code):
    """The comment in front of each declaration."""
    out, is_start = [], True
    for line in code:
        out += doc(comment) if is_start else []
        out.append(line)
        is_start = is_declaration(line)
    return out


def mixed(lines):
    out, comment = [], []
    for line in lines:
        if is_comment(line):
            comment.append(line)
            continue
        out += doc(text_of(comment)) if comment else []
        comment = []
        out.append(with_trailing_docs(line))
    return out


def paragraphs(lines):
    current = []
    for line in lines + [""]:
        if line.strip():
            current.append(line)
        if current and (not line.strip() or line == " public:"):
            yield current
            current = []


def family(title, text, is_open):
    return (["/** @} */"] if is_open else []) + ["/** @name " + title, *(" * " + t for t in text),
                                                 " * @{ */"]


def convert(lines):
    out, is_open, is_top = [], False, True
    for block in paragraphs(lines):
        found, section = FAMILY.match(block[0]), SECTION.match(block[0])
        if is_top and is_comment(block[0]):
            end = next((i for i, line in enumerate(block) if not is_comment(line)), len(block))
            out += doc(text_of(block[:end]), "@file") + block[end:]
        elif found and is_comment(block[-1]):
            text = text_of(["// " + found[3].strip()] + block[1:])
            out += family(found[1], text, is_open)
            is_open = True
        elif found:
            out += family(found[1], [], is_open) + paragraph(block[1:])
            is_open = True
        elif section:
            continue
        elif " private:" in block[0]:
            out += (["/** @} */"] if is_open else []) + mixed(block)
            is_open = False
        else:
            out += paragraph(block)
        out.append("")
        is_top = False
    return out


def main(path):
    with open(path, encoding="utf-8") as file:
        print("\n".join(convert(file.read().split("\n"))))


if __name__ == "__main__":
    main(sys.argv[1])
