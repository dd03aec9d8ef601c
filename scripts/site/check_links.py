#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""Checks the pages of a folder: their links, and that they ask the network for nothing.

check_links.py FOLDER

Links to other sites are not followed. What a page loads by itself, such as a script, has to be in
the folder.
"""

import html.parser
import pathlib
import sys
import urllib.parse

LOADED = {("script", "src"), ("img", "src"), ("link", "href"), ("iframe", "src"), ("source", "src")}
# Links whose targets a page's own script makes.
MADE_BY_SCRIPTS = ("__tabbed", "__search", "__drawer")


class Page(html.parser.HTMLParser):
    """The anchors and links of a page."""

    def __init__(self, path):
        super().__init__()
        self.anchors = {""}
        self.links = []
        self.feed(path.read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attrs):
        attributes = dict(attrs)
        self.anchors.add(attributes.get("id") or "")
        if tag == "a":
            self.anchors.add(attributes.get("name") or "")
        for name in ("href", "src"):
            if attributes.get(name):
                self.links.append((tag, name, attributes[name]))


def faults_of(folder, path, page, pages):
    for tag, name, link in page.links:
        parts = urllib.parse.urlsplit(link)
        if parts.scheme in ("data", "javascript", "mailto"):
            continue
        if parts.scheme or parts.netloc:
            if (tag, name) in LOADED:
                yield f"loads {link} from the network"
            continue
        target = path
        if parts.path:
            place = urllib.parse.unquote(parts.path)
            start = folder if place.startswith("/") else path.parent
            target = (start / place.lstrip("/")).resolve()
        anchor = urllib.parse.unquote(parts.fragment)
        if not target.is_file():
            yield f"{link}: no such file"
        elif target in pages and anchor not in pages[target].anchors:
            if not anchor.startswith(MADE_BY_SCRIPTS):
                yield f"{link}: the page has no such place"


def main():
    folder = pathlib.Path(sys.argv[1]).resolve()
    pages = {path: Page(path) for path in sorted(folder.rglob("*.html"))}
    if not pages:
        sys.exit(f"check_links.py: there are no pages in {folder}")
    faults = [
        f"{path.relative_to(folder)}: {fault}"
        for path, page in pages.items()
        for fault in dict.fromkeys(faults_of(folder, path, page, pages))
    ]
    print(*faults, sep="\n", end="\n" if faults else "")
    sys.exit(1 if faults else 0)


main()
