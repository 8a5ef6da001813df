"""Checks the built pages: every internal link and anchor exists, and no page loads anything from elsewhere.

check_links.py HTML
"""

import posixpath
import re
import sys
from html.parser import HTMLParser
from pathlib import Path
from urllib.parse import unquote, urlsplit

LOADS = {("script", "src"), ("img", "src"), ("link", "href"), ("iframe", "src"), ("source", "src"), ("object", "data")}
# Links that only name another page to a program.
NOT_LOADED = {"canonical", "next", "prev", "index", "search", "genindex"}


class Page(HTMLParser):
    def __init__(self, text):
        super().__init__()
        self.ids, self.links, self.loads = set(), [], []
        self.feed(text)

    def handle_starttag(self, tag, attrs):
        values = dict(attrs)
        self.ids.update(values[key] for key in ("id", "name") if values.get(key))
        if tag == "a" and values.get("href"):
            self.links.append(values["href"])
        rel = set((values.get("rel") or "").split())
        for wanted, key in LOADS:
            if tag == wanted and values.get(key) and not (tag == "link" and rel & NOT_LOADED):
                self.loads.append(values[key])


def is_external(url):
    return bool(urlsplit(url).netloc)


def clicks(pages, start, avoided):
    """{page: the least number of links from the start page} without passing through one page."""
    depth, front = {start: 0}, [start]
    while front:
        found = []
        for name in front:
            for url in pages[name].links:
                parts = urlsplit(url)
                if parts.scheme or not parts.path:
                    continue
                target = posixpath.normpath(posixpath.join(posixpath.dirname(name), unquote(parts.path)))
                if target in pages and target not in depth and target != avoided:
                    depth[target] = depth[name] + 1
                    found.append(target)
        front = found
    return depth


def far_answers(pages):
    """What the page of questions leads to and a reader does not reach in three clicks from the start page."""
    depth = clicks(pages, "index.html", "questions.html")
    for url in pages["questions.html"].links:
        target = posixpath.normpath(unquote(urlsplit(url).path) or "questions.html")
        if not urlsplit(url).scheme and target in pages and target != "questions.html" and depth.get(target, 9) > 3:
            yield f"questions.html: {target} is {depth.get(target, 'no')} clicks away"


def main(root):
    pages = {path.relative_to(root).as_posix(): Page(path.read_text(encoding="utf-8")) for path in root.rglob("*.html")}
    faults = []
    for name, page in pages.items():
        for url in page.loads:
            if is_external(url):
                faults.append(f"{name} loads {url}")
        for url in page.links + page.loads:
            parts = urlsplit(url)
            if parts.scheme or parts.netloc:
                continue
            target = name if not parts.path else (root / name).parent.joinpath(unquote(parts.path)).resolve()
            if parts.path:
                if not target.is_file():
                    faults.append(f"{name} links to {url}, which does not exist")
                    continue
                target = target.relative_to(root.resolve()).as_posix()
            if parts.fragment and target in pages and unquote(parts.fragment) not in pages[target].ids:
                faults.append(f"{name} links to {url}: no such place")
    for path in root.rglob("*.css"):
        for url in re.findall(r"url\(['\"]?([^'\")]+)|@import\s+['\"]([^'\"]+)", path.read_text(encoding="utf-8")):
            if is_external(url[0] or url[1]):
                faults.append(f"{path.name} loads {url}")
    faults += far_answers(pages)
    if len(pages) < 10:
        faults.append(f"only {len(pages)} pages")
    print("\n".join(sorted(set(faults))), file=sys.stderr)
    print(f"{len(pages)} pages, {sum(len(p.links) for p in pages.values())} links, {len(set(faults))} faults")
    return 1 if faults else 0


sys.exit(main(Path(sys.argv[1])))
