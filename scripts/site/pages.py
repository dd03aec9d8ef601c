# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""mkdocs' hook: pages for the project's files that others link to, beside those of docs/.

Pages link to files of the project by relative paths, as they lie. Those outside of docs/ get pages
below source/: Markdown as it is, a folder as a list, any other file as its text.
"""

import os
import pathlib
import posixpath
import re
import shutil
import sys

from mkdocs.structure.files import File

sys.path.insert(0, os.path.dirname(__file__))  # mkdocstrings looks extensions up by name

ROOT = pathlib.Path(__file__).resolve().parents[2]
GENERATED = ROOT / "build" / "pages"
AS_THEY_ARE = (".md", ".png", ".svg")
LANGUAGES = {".h": "cpp", ".cpp": "cpp", ".c": "c", ".py": "python", ".ini": "ini", ".cfg": "ini"}
# Fenced code holds no links.
LINK = re.compile(r"^```.*?^```|\]\(([^)\s]+)", re.MULTILINE | re.DOTALL)


def path_of(page):
    """The project's file that a page, as mkdocs names sources, is made of."""
    if page.startswith("source/"):
        return page.removeprefix("source/").removesuffix(".page.md")
    return f"docs/{page}"


def page_of(path):
    if path.startswith("docs/"):
        return path.removeprefix("docs/")
    return f"source/{path}" if path.endswith(AS_THEY_ARE) else f"source/{path}.page.md"


def links_to_files(text, path):
    """The links to the project's files in a file's text: the match, the file, the place in it."""
    for match in LINK.finditer(text):
        link, _, anchor = (match[1] or "").partition("#")
        target = posixpath.normpath(posixpath.join(posixpath.dirname(path), link))
        if link and not link.startswith("/") and (ROOT / target).exists():
            yield match, target, anchor


def on_config(config):
    config["nav"] = [unfolded(entry) for entry in config["nav"]]
    return config


def unfolded(entry):
    """An entry of the navigation, with the pages of a folder in place of its name."""
    if isinstance(entry, str) and entry.endswith("/"):
        others = sorted(path.name for path in (ROOT / "docs" / entry).glob("*.md"))
        return sorted((entry + name for name in others), key=lambda page: "/index.md" not in page)
    if isinstance(entry, dict):
        return {title: unfolded(value) for title, value in entry.items()}
    return [unfolded(value) for value in entry] if isinstance(entry, list) else entry


def on_files(files, config):
    shutil.rmtree(GENERATED, ignore_errors=True)
    pages = [file.src_uri for file in files if file.src_uri.endswith(".md")]
    pages += [page for page in listed(config["nav"]) if page.startswith("source/")]
    for page in pages:  # grows
        if page.startswith("source/"):
            generate(page)
            files.append(File(page, str(GENERATED), config["site_dir"], use_directory_urls=False))
        if page.endswith(".md"):
            path = path_of(page)
            for _, target, _ in links_to_files(text_of(path), path):
                if page_of(target).startswith("source/") and page_of(target) not in pages:
                    pages.append(page_of(target))
    return files


def listed(nav):
    for entry in nav:
        for value in entry.values() if isinstance(entry, dict) else [entry]:
            yield from listed(value) if isinstance(value, list) else [value]


def generate(page):
    path = path_of(page)
    target = GENERATED / page
    target.parent.mkdir(parents=True, exist_ok=True)
    if page.endswith(".md"):
        target.write_text(text_of(path), encoding="utf-8")
    else:
        shutil.copyfile(ROOT / path, target)


def text_of(path):
    file = ROOT / path
    if file.is_dir():
        names = [entry.name for entry in sorted(file.iterdir()) if entry.name[0] not in "._"]
        return f"# {path}\n\n" + "".join(f"- [{name}]({file.name}/{name})\n" for name in names)
    text = file.read_text(encoding="utf-8")
    if path.endswith(".md"):
        return text
    return f"# {file.name}\n\n`{path}`\n\n````{LANGUAGES.get(file.suffix, 'text')}\n{text}````\n"


def on_page_markdown(markdown, page, **_):
    """Turns links to the project's files into links to their pages."""
    folder = posixpath.dirname(page.file.src_uri)
    links = links_to_files(markdown, path_of(page.file.src_uri))
    for match, target, anchor in reversed(list(links)):
        link = posixpath.relpath(page_of(target), folder) + (f"#{anchor}" if anchor else "")
        markdown = markdown[: match.start(1)] + link + markdown[match.end(1) :]
    return markdown
