"""A recorded terminal as a picture: recording_svg.py TYPESCRIPT PICTURE

A line that begins with "$ " is a command; it and what it prints appear one after the other, and stay.
"""

import pathlib
import re
import sys
from xml.sax.saxutils import escape

LINE, LETTER, MARGIN, BAR = 19, 8.4, 16, 28  # heights and widths in pixels
STYLE = """\
text { white-space: pre }
@media (prefers-reduced-motion: no-preference) {
  .line { animation: appear 0.01s both }
}
@keyframes appear { from { opacity: 0 } to { opacity: 1 } }"""


def shown(line: str) -> str:
    """What a terminal shows of a line in the end: after a carriage return it is written over."""
    cells: list[str] = []
    for part in line.split("\r"):
        if "\x1b[K" in part:
            cells = []
        text = re.sub(r"\x1b\[[0-9;?]*[A-Za-z]", "", part)
        cells[:len(text)] = text
    return "".join(cells).rstrip()


def lines_of(typescript: str) -> list[str]:
    lines = [shown(line) for line in typescript.split("\n")]
    while lines and not lines[-1]:
        lines.pop()
    return lines


def picture(lines: list[str]) -> str:
    width = max(map(len, lines)) * LETTER + 2 * MARGIN
    height = BAR + LINE * len(lines) + 2 * MARGIN
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width:.0f} {height}" '
             f'width="{width:.0f}" height="{height}" font-family="monospace" font-size="14" fill="#d8dee9">',
             f"<style>{STYLE}</style>",
             f'<rect width="{width:.0f}" height="{height}" rx="8" fill="#2e3440"/>']
    for number, colour in enumerate(("#bf616a", "#ebcb8b", "#a3be8c")):
        parts.append(f'<circle cx="{MARGIN + 6 + 20 * number}" cy="18" r="6" fill="{colour}"/>')
    delay = 0.0
    for number, line in enumerate(lines):
        is_command = line.startswith("$ ")
        delay += 1.2 if is_command else 0.1
        fill = ' fill="#a3be8c" font-weight="bold"' if is_command else ""
        y = BAR + MARGIN + LINE * (number + 0.7)
        parts.append(f'<text class="line" x="{MARGIN}" y="{y:.1f}"{fill} xml:space="preserve" '
                     f'style="animation-delay: {delay:.1f}s">{escape(line)}</text>')
    return "\n".join([*parts, "</svg>", ""])


if __name__ == "__main__":
    lines = lines_of(pathlib.Path(sys.argv[1]).read_bytes().decode("utf-8"))
    pathlib.Path(sys.argv[2]).write_text(picture(lines), encoding="utf-8")
