"""Checks a folder of HTML: every link leads to a file that is there, and every anchor to a place.

usage: check_site.py FOLDER
"""

import html.parser
import pathlib
import sys
import urllib.parse


class Page(html.parser.HTMLParser):
    def __init__(self, path):
        super().__init__(convert_charrefs=True)
        self.links, self.anchors = set(), set()
        self.feed(path.read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attrs):
        for name, value in attrs:
            if name in ("href", "src") and value:
                self.links.add(value)
            if name == "id" or (tag == "a" and name == "name"):
                self.anchors.add(value)


def broken_links(folder):
    pages = {path: Page(path) for path in sorted(folder.rglob("*.html"))}
    for path, page in pages.items():
        for link in sorted(page.links):
            parts = urllib.parse.urlsplit(link)
            if parts.scheme or parts.netloc:
                continue
            name = urllib.parse.unquote(parts.path)
            target = (path.parent / name).resolve() if name else path
            if not target.exists():
                yield f"{path.name}: there is no {link}"
            elif parts.fragment and target in pages and \
                    urllib.parse.unquote(parts.fragment) not in pages[target].anchors:
                yield f"{path.name}: {link} has no such place"
    if not pages:
        yield "there is no page"


if __name__ == "__main__":
    FOLDER = pathlib.Path(sys.argv[1]).resolve()
    BROKEN = list(broken_links(FOLDER))
    print("\n".join(BROKEN) or f"every link of {FOLDER} leads somewhere")
    sys.exit(1 if BROKEN else 0)
