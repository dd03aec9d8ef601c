# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""Runs the files named on standard input as one program, and prints a line END after each."""

import sys

if __name__ == "__main__":  # as processes that a page starts import this file again
    names = {"__name__": "__main__"}
    for line in sys.stdin:
        file = line.rstrip("\n")
        with open(file) as text:
            exec(compile(text.read(), file, "exec"), names)
        print("END", flush=True)
