#!/usr/bin/env python3
"""Checks the site that scripts/docs makes: check_links.py FOLDER

Every link must lead to a file, and to a place in it, and docs/index.html to every page of docs. Prints what does not and
fails if there is any. Links to the web are not followed.
"""
import functools
import html.parser
import pathlib
import sys
import urllib.parse

# Doxygen's own link, in a class whose only inner class is private.
NOWHERE = "#nested-classes"
LINKS = {"a": "href", "link": "href", "img": "src", "script": "src", "iframe": "src"}


class Page(html.parser.HTMLParser):
    """The links of a page, and the places that links can lead to."""

    def __init__(self):
        super().__init__()
        self.links = []
        self.places = set()

    def handle_starttag(self, tag, attrs):
        attributes = dict(attrs)
        self.places.update(attributes.get(key) for key in ("id", "name"))
        if tag in LINKS and attributes.get(LINKS[tag]):
            self.links.append((attributes[LINKS[tag]], self.getpos()[0]))


@functools.cache
def read(path):
    page = Page()
    page.feed(path.read_text(encoding="utf-8", errors="replace"))
    return page


def leads_nowhere(page, link):
    parts = urllib.parse.urlsplit(link)
    if parts.scheme or parts.netloc or link == NOWHERE:
        return False
    target = page.parent / urllib.parse.unquote(parts.path) if parts.path else page
    if not target.exists():
        return True
    place = urllib.parse.unquote(parts.fragment)
    return bool(place) and target.suffix == ".html" and place not in read(target.resolve()).places


def pages_without_entry(root):
    index = root / "docs" / "index.html"
    entries = {(index.parent / link).resolve() for link, _ in read(index).links}
    return sorted(set(index.parent.glob("*.html")) - entries - {index})


def main():
    root = pathlib.Path(sys.argv[1]).resolve()
    pages = sorted(root.rglob("*.html"))
    wrong = [f"{page.relative_to(root)}:{line}: {link}"
             for page in pages for link, line in read(page).links if leads_nowhere(page, link)]
    wrong += [f"docs/index.html has no link to {page.name}" for page in pages_without_entry(root)]
    print("\n".join(wrong) or f"{len(pages)} pages, every link leads somewhere")
    return 1 if wrong or not pages else 0


sys.exit(main())
