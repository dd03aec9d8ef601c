# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""Griffe's extension: takes comments that begin with `#:` as the documentation of attributes.

They stand behind an attribute, or in the lines above it.
"""

from griffe.agents.extensions import VisitorExtension, When
from griffe.dataclasses import Docstring

MARK = "#:"


class CommentedAttributes(VisitorExtension):
    """Gives the attributes of modules and classes their comments."""

    when = When.after_children

    def visit_module(self, node):
        self._visit_members(node)

    def visit_classdef(self, node):
        self._visit_members(node)

    def _visit_members(self, node):
        lines = self.visitor.code.splitlines()
        for member in self.visitor.current.members.values():
            if not member.is_alias and member.is_attribute and member.docstring is None:
                comment = comment_of(lines, member.lineno, member.endlineno)
                if comment:
                    member.docstring = Docstring(comment, lineno=member.lineno, parent=member)


def comment_of(lines, first, last):
    """That of the attribute in these lines, which are counted from 1."""
    _, mark, behind = lines[(last or first) - 1].partition(MARK)
    if mark:
        return behind.strip()
    above = []
    for line in reversed(lines[: first - 1]):
        if not line.strip().startswith(MARK):
            break
        above.insert(0, line.strip().removeprefix(MARK).strip())
    return "\n".join(above)


Extension = CommentedAttributes
