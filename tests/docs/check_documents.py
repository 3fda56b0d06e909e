"""Checks the documents: every block of code compiles and runs, every link leads somewhere, and what
is named in them exists.

usage: check_documents.py links SOURCE
       check_documents.py blocks SOURCE BUILD LIBDIR

Blocks marked c, cpp, python and sh are run, each in an empty folder of its own, against what BUILD
installs. A C or C++ block with main() is a whole program. Any other one is a piece of
one, and so a comment in front of it names a file of tests/docs/frames that it is put into:

    <!-- frame: writing, pages: scan.pdf 2 -->

The part after the comma is a check: how many pages the document has in the end. A block that is
only to be read (output, a file's layout) has no language.
"""

import collections
import os
import pathlib
import re
import subprocess
import sys
import tempfile

DOCUMENTS = ["README.md", "CHANGELOG.md", "CONTRIBUTING.md", "SECURITY.md", "docs/*.md"]
COMMENT = re.compile(r"<!--\s*frame:\s*([\w.]*)\s*(?:,\s*pages:\s*(\S+)\s+(\d+)\s*)?-->")
WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Werror"]


class Block:
    def __init__(self, document, line, language, comment, text):
        self.where = f"{document}:{line}"
        self.language = language
        self.text = text
        match = COMMENT.search(comment)
        self.frame = match[1] if match else ""
        self.pages = (match[2], int(match[3])) if match and match[2] else None


def documents(source):
    return [path for pattern in DOCUMENTS for path in sorted(source.glob(pattern))]


def blocks_of(path, name):
    lines = path.read_text(encoding="utf-8").split("\n")
    number = 0
    while number < len(lines):
        opened = re.fullmatch(r"(\s*)```(\w*)\s*", lines[number])
        if not opened:
            number += 1
            continue
        end = next(at for at in range(number + 1, len(lines)) if lines[at].strip() == "```")
        before = next((text for text in reversed(lines[:number]) if text.strip()), "")
        indent = len(opened[1])
        text = "\n".join(line[indent:] for line in lines[number + 1:end]) + "\n"
        yield Block(name, number + 1, opened[2], before, text)
        number = end + 1


class Runner:
    def __init__(self, source, prefix, libdir):
        self.source = source
        self.libdir = prefix / libdir
        self.flags = [f"-I{prefix}/include", f"-L{self.libdir}", "-lsorrelin",
                      "-lsorrelin-platform", "-pthread", f"-Wl,-rpath,{self.libdir}"]
        self.environment = {
            **os.environ,
            "PATH": f"{prefix}/bin:{os.environ['PATH']}",
            "PKG_CONFIG_PATH": f"{self.libdir}/pkgconfig",
            "CMAKE_PREFIX_PATH": str(prefix),
            "SORRELIN": str(source),
            "SORRELIN_LIBRARY": f"{self.libdir}/libsorrelin.so",
            "PYTHONPATH": str(source / "python"),
            "PYTHONDONTWRITEBYTECODE": "1",
        }

    def run(self, block):
        """What is wrong with the block, or nothing."""
        with tempfile.TemporaryDirectory(prefix="sorrelin-docs-") as name:
            folder = pathlib.Path(name)
            try:
                for command in self.commands(block, folder):
                    done = subprocess.run(command, cwd=folder, env=self.environment, timeout=60,
                                          capture_output=True, text=True, check=False)
                    if done.returncode != 0:
                        return f"exit code {done.returncode}\n{done.stdout}{done.stderr}"
            except (ValueError, subprocess.TimeoutExpired) as failure:
                return str(failure)
            return self.check_pages(block, folder)

    def commands(self, block, folder):
        text = self.framed(block)
        if block.language == "python":
            return [[sys.executable, self.store(folder, "block.py", text)]]
        if block.language == "sh":
            return [["bash", "-euo", "pipefail", self.store(folder, "block.sh", text)]]
        compiler = ["cc", "-std=c11"] if block.language == "c" else ["c++", "-std=c++20"]
        if block.frame:
            compiler.append("-Wno-unused")  # a piece need not use all that it or its frame has
        file = self.store(folder, f"block.{block.language}", text)
        return [[compiler[0], *WARNINGS, *compiler[1:], file, "-o", "block", *self.flags],
                ["./block", "made.pdf"]]

    def framed(self, block):
        if not block.frame:
            if block.language in ("c", "cpp") and "main(" not in block.text:
                raise ValueError("a piece of a program that names no frame")
            return block.text
        name = f"{block.frame}.{'py' if block.language == 'python' else block.language}"
        if not (self.source / "tests/docs/frames" / name).exists():
            raise ValueError(f"no frame {name}")
        frame = (self.source / "tests/docs/frames" / name).read_text(encoding="utf-8")
        before, _, after = re.split(r"^([ \t]*(?:/\* BLOCK \*/|# BLOCK).*\n)", frame, 1, re.M)
        return before + block.text + after

    @staticmethod
    def store(folder, name, text):
        (folder / name).write_text(text, encoding="utf-8")
        return name

    @staticmethod
    def check_pages(block, folder):
        if block.pages is None:
            return ""
        name, wanted = block.pages
        info = subprocess.run(["pdfinfo", name], cwd=folder, capture_output=True, text=True,
                              check=False)
        found = re.search(r"^Pages:\s*(\d+)", info.stdout, re.M)
        count = int(found[1]) if found else None
        return "" if count == wanted else f"{name} has {count} pages and not {wanted}"


def install(build, prefix):
    """Installs the build under another prefix than it was made for."""
    subprocess.run(["cmake", "--install", build, "--prefix", prefix], check=True,
                   capture_output=True)


def check_blocks(source, build, libdir):
    with tempfile.TemporaryDirectory(prefix="sorrelin-installed-") as name:
        prefix = pathlib.Path(name)
        install(build, prefix)
        return run_blocks(source, Runner(source, prefix, libdir))


def run_blocks(source, runner):
    count, failures = 0, 0
    for path in documents(source):
        for block in blocks_of(path, path.relative_to(source)):
            if block.language not in ("c", "cpp", "python", "sh"):
                continue
            count += 1
            failure = runner.run(block)
            if failure:
                failures += 1
                print(f"{block.where}: {failure}")
    print(f"{count} blocks, {failures} failed")
    return failures == 0 and count > 0


def anchors_of(path):
    """The anchors of a document's headings, as its hosts make them."""
    text = re.sub(r"^```.*?^```", "", path.read_text(encoding="utf-8"), flags=re.M | re.S)
    anchors, seen = set(), collections.Counter()
    for title in re.findall(r"^#+ (.*)$", text, re.M):
        anchor = re.sub(r"[^\w\- ]", "", title.lower()).replace(" ", "-")
        anchors.add(f"{anchor}-{seen[anchor]}" if seen[anchor] else anchor)
        seen[anchor] += 1
    return anchors


def prose_of(path):
    return re.sub(r"^\s*```.*?^\s*```", "", path.read_text(encoding="utf-8"), flags=re.M | re.S)


def broken_link(path, target):
    if re.match(r"\w+:", target):
        return False
    name, _, anchor = target.partition("#")
    file = (path.parent / name).resolve() if name else path
    if not file.exists():
        return True
    return bool(anchor) and anchor not in anchors_of(file)


def unknown_names(source, prose):
    """Names between backticks that look like ours and are not."""
    interface = "".join((source / name).read_text(encoding="utf-8") for name in (
        "sorrelin/frame/pdf.h", "sorrelin/frame/session.h", "sorrelin/image/codecs/sibling.h",
        "sorrelin/coded/coded_pages.h", "sorrelin/platform/codes.h"))
    folders = {path.name for path in source.iterdir() if path.is_dir()} - {"build"}
    roots = "|".join(name for name in folders if name.isalpha())
    for name in re.findall(r"`([^`\n]+)`", prose):
        if re.fullmatch(r"(pdf_|PDF_(ERROR|COMPRESSION)_)\w+", name):
            if not re.search(rf"\b{name}\b", interface):
                yield name
        elif re.fullmatch(rf"({roots})/[\w./-]*", name) and not (source / name).exists():
            yield name


def unknown_commands(source, prose):
    """Scripts and presets in indented blocks, which take too long to be run here."""
    presets = (source / "CMakePresets.json").read_text(encoding="utf-8")
    for command in re.findall(r"^    (\S.*)$", prose, re.M):
        script = re.match(r"scripts/\S+", command)
        if script and not os.access(source / script[0], os.X_OK):
            yield script[0]
        preset = re.search(r"--preset (\w+)", command)
        if preset and f'"name": "{preset[1]}"' not in presets:
            yield f"the preset {preset[1]}"


def check_links(source):
    failures = 0
    for path in documents(source):
        prose = prose_of(path)
        broken = [target for target in re.findall(r"\]\(([^)\s]+)\)", prose)
                  if broken_link(path, target)]
        for what in [*broken, *unknown_names(source, prose), *unknown_commands(source, prose)]:
            failures += 1
            print(f"{path.relative_to(source)}: nothing is behind {what}")
    return failures == 0


def main(arguments):
    source = pathlib.Path(arguments[2]).resolve()
    if arguments[1] == "links":
        return check_links(source)
    return check_blocks(source, pathlib.Path(arguments[3]).resolve(), arguments[4])


if __name__ == "__main__":
    sys.exit(0 if main(sys.argv) else 1)
