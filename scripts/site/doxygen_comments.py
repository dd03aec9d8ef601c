#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""Doxygen's input filter: hands a header out with its comments in Doxygen's forms.

The headers are written to be read as they are. What Doxygen has to be told of them:

- The comment behind the licence is that of the file: `@file`.
- In C, comments are plain ones: `/**`, and `/**<` behind an enumerator.
- Columns in a comment are kept as they stand, and a few words alone are a heading.
- A comment stands for all declarations up to the next empty line: `@{` to `@}`.
- Private members, and copies, moves and comparisons that need no words, are left out.

No line moves, so that warnings name the header's own lines.
"""

import re
import sys

COLUMNS = re.compile(r"\S {2,}\S")
SELF_EVIDENT = re.compile(
    r"^ +(~?(\w+)\(((const )?\2&&?)?\)( noexcept)?( = \w+)?;"
    r"|(\w+)& operator=\((const )?\7&&?\)( noexcept)?( = \w+)?;"
    r"|(constexpr )?bool operator==\(.*\) const = default;)$",
    re.MULTILINE,
)
PRIVATE = re.compile(r"^ private:\n(.*\n)*?(?=};)", re.MULTILINE)
COMMENT = re.compile(r" *(///|/\*\*(?!<))(?! @file)")
COMMENTS = re.compile(r" *//.*$|/\*(.|\n)*?\*/", re.MULTILINE)
OPENING = re.compile(r"^(/\*\*@}\*/)?$|\{$|(public|protected):$")
CLOSING = re.compile(r"$| *(private|protected):")
CLASS = re.compile(r"(template.*\n(requires.*\n)?)?(struct|class|enum class)\b")


def c_comments(source):
    source = re.sub(r"^/\* SPDX.*$", "", source, flags=re.MULTILINE)
    source = re.sub(r"^/\*(?=\s)", "/**", source, flags=re.MULTILINE)
    source = re.sub(r"(?<=\S)( +)/\*(?= )", r"\1/**<", source)
    source = re.sub(r"/\*\*(?=\n)", "/** @file", source, count=1)
    return re.sub(r"^/\*\*(?!<)(.|\n)*?\*/", as_markdown, source, flags=re.MULTILINE)


def as_markdown(comment):
    return "\n *\n".join(laid_out(paragraph) for paragraph in comment[0].split("\n *\n"))


def laid_out(paragraph):
    lines = paragraph.split("\n")
    if any(COLUMNS.search(line.removeprefix(" *").removeprefix("/**")) for line in lines):
        return "\n".join(re.sub(r"^ \* ", " *     ", line) for line in lines)
    return re.sub(r"^ \* ([A-Z][a-z]+( [a-z]+)*)$", r" * <b>\1</b>", paragraph)


def mark_groups(lines):
    for start, line in enumerate(lines):
        if COMMENT.match(line) and OPENING.search(lines[start - 1]):
            end = end_of_paragraph(lines, start)
            if is_group("\n".join(lines[start:end])):
                lines[start - 1] += "/**@{*/"
                lines[end] = "/**@}*/" + lines[end]


def end_of_paragraph(lines, start):
    depth = 0
    for index in range(start, len(lines)):
        code = COMMENTS.sub("", lines[index])
        depth += code.count("{") - code.count("}")
        if depth < 0 or CLOSING.match(lines[index]):
            return index
    return len(lines) - 1


def is_group(paragraph):
    code = COMMENTS.sub("", paragraph)
    whole = code.count("{") == code.count("}") and not CLASS.match(code.strip())
    return whole and len(re.findall(r"[;}]$", code, re.MULTILINE)) > 1


def main():
    with open(sys.argv[1], encoding="utf-8") as header:
        source = header.read()
    if source.startswith("/*"):
        source = c_comments(source)
    source = PRIVATE.sub(lambda part: "\n" * part[0].count("\n"), source)
    source = SELF_EVIDENT.sub("", source)
    source = source.replace("#pragma once\n\n///", "#pragma once\n\n/// @file\n///", 1)
    lines = source.split("\n")
    mark_groups(lines)
    sys.stdout.write("\n".join(lines))


main()
