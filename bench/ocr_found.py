#!/usr/bin/env python3
"""Which share of the words of a page a searchable document has at their place.

usage: ocr_found.py DOCUMENT (PAGE BOXES TILT)...

PAGE counts from 1. BOXES is the page's box file as text2image writes it: a letter a line, with its
left, bottom, right and top edge in pixels from the lower left corner. The picture was tilted about
its middle by TILT degrees after that. Prints words found and words in all. A word is found if
pdftotext has it with a box that shares more than half of what the two cover together; the height of
a word is that of its line, as in the document.
"""
import math
import re
import subprocess
import sys

DPI = 300
WIDTH, HEIGHT = 2480, 3508  # pixels of a page as it is read


def words_of_boxes(path):
    """Words as (text, [left, bottom, right, top]) with the height of their lines."""
    words, letters, line = [], [], []

    def end_word():
        if letters:
            sides = list(zip(*(box for _, box in letters)))
            line.append(("".join(letter for letter, _ in letters),
                         [min(sides[0]), min(sides[1]), max(sides[2]), max(sides[3])]))
        letters.clear()

    def end_line():
        end_word()
        for text, box in line:
            words.append((text, [box[0], min(other[1] for _, other in line), box[2],
                                 max(other[3] for _, other in line)]))
        line.clear()

    for row in open(path, encoding="utf-8"):
        letter, *numbers = row.rstrip("\n").rsplit(" ", 5)
        box = [int(number) for number in numbers[:4]]
        if letters and box[3] < letters[-1][1][1] - 10 and letter.strip():
            end_line()
        elif line and not letters and box[3] < line[-1][1][1] - 10:
            end_line()
        if letter.strip():
            letters.append((letter, box))
        else:
            end_word()
    end_line()
    return words


def tilted(box, degrees):
    """The box around a box that was turned clockwise about the middle of the page."""
    angle = math.radians(-degrees)
    middle = WIDTH / 2, HEIGHT / 2
    corners = []
    for x in (box[0], box[2]):
        for y in (box[1], box[3]):
            dx, dy = x - middle[0], y - middle[1]
            corners.append((middle[0] + dx * math.cos(angle) - dy * math.sin(angle),
                            middle[1] + dx * math.sin(angle) + dy * math.cos(angle)))
    xs, ys = zip(*corners)
    return [min(xs), min(ys), max(xs), max(ys)]


def words_of_page(document, page):
    """Words as (text, [left, bottom, right, top]) in pixels of the page as it is read."""
    text = subprocess.run(["pdftotext", "-bbox", "-f", page, "-l", page, document, "-"], check=True,
                          capture_output=True, text=True).stdout
    scale = DPI / 72
    pattern = r'<word xMin="(.*?)" yMin="(.*?)" xMax="(.*?)" yMax="(.*?)">(.*?)</word>'
    words = []
    for left, top, right, bottom, word in re.findall(pattern, text):
        words.append((word, [float(left) * scale, HEIGHT - float(bottom) * scale,
                             float(right) * scale, HEIGHT - float(top) * scale]))
    return words


def overlap(a, b):
    width = min(a[2], b[2]) - max(a[0], b[0])
    height = min(a[3], b[3]) - max(a[1], b[1])
    if width <= 0 or height <= 0:
        return 0
    area = sum((box[2] - box[0]) * (box[3] - box[1]) for box in (a, b))
    return width * height / (area - width * height)


def main():
    document, *pages = sys.argv[1:]
    found = total = 0
    for page, boxes, tilt in zip(pages[::3], pages[1::3], pages[2::3]):
        shown = words_of_page(document, page)
        for text, box in words_of_boxes(boxes):
            place = tilted(box, float(tilt))
            # Box files have the letters from left to right, whatever the script.
            total += 1
            found += any(other in (text, text[::-1]) and overlap(place, at) > 0.5
                         for other, at in shown)
    print(found, total)


main()
