# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
"""Each allocation failing once: in the toolkit by a program of its own, in the tool by forks of it."""

import bisect
import collections
import os
import re
import shutil
import signal
import subprocess

from setting import Setting, expect, expect_same, expect_whole, files_in, same_files

# Each with its options; {out} is a folder that is empty each time.
COMMANDS = {
    "simulate": ("--frames", "2", "--width", "8", "--height", "6", "--format", "npy", "-o", "out"),
    "transform": ("night", "--quiet", "--format", "npy", "--resume", "-o", "out"),
    "calibrate": ("--manifest", "stack/stack.csv", "-o", "out/camera.json"),
    "measure": ("night", "-o", "out/table.csv"),
    "view": ("night/frame_0001.pgm", "-o", "out/sheet.png"),
    "info": ("night/frame_0001.pgm",),
    "compare": ("night", "other"),
}


def run(setting: Setting) -> str:
    folder = setting.work / "toolkit"
    program = setting.program("endurance_allocations")
    done = subprocess.run(
        [program, str(folder), "197" if setting.quick else "1"], env=setting.environment(),
        capture_output=True, text=True, timeout=3600, check=False,
    )  # fmt: skip
    expect(done.returncode == 0, done.stdout)
    aborts = unexplained(program, done.stderr)
    expect(not aborts, f"toolkit: ended by std::terminate: {aborts[:1]}")
    return " ".join(done.stdout.split()) + " tool: " + of_tool(setting)


def _on_one_core() -> None:
    """So that the allocations of a run are always the same ones."""
    os.sched_setaffinity(0, [min(os.sched_getaffinity(0))])


class Forks:
    """The tool, held before main(); each run is a fork whose allocation of a number fails."""

    def __init__(self, setting: Setting, words: tuple[str, ...]) -> None:
        self.streams = setting.work / "streams"
        self.streams.mkdir(exist_ok=True)
        self.process = subprocess.Popen(
            [setting.tool, *words], preexec_fn=_on_one_core, cwd=setting.work, text=True, bufsize=1,
            stdin=subprocess.PIPE, stdout=subprocess.PIPE,
            env=setting.environment(LD_PRELOAD=setting.program("endurance_fork_server.so"),
                                    KV_FORK_STREAMS=str(self.streams)),
        )  # fmt: skip

    def run(self, number: int) -> tuple[int, bool, str, str]:
        """Exit status (below 0 a signal), whether the allocation was reached, output and errors."""
        assert self.process.stdin and self.process.stdout
        self.process.stdin.write(f"{number}\n")
        self.process.stdin.flush()
        answer = self.process.stdout.readline().split()
        texts = [(self.streams / name).read_text(errors="replace") for name in ("out", "error")]
        return os.waitstatus_to_exitcode(int(answer[0])), answer[1] == "1", texts[0], texts[1]

    def end(self) -> None:
        assert self.process.stdin
        self.process.stdin.close()
        self.process.wait(60)


def allocations_of(setting: Setting, words: tuple[str, ...]) -> int:
    """How many allocations a command makes, about."""
    forks = Forks(setting, words)
    step = 4096
    number = 0
    while step:
        if forks.run(number + step)[1]:
            number += step
        else:
            step //= 2
        shutil.rmtree(setting.work / "out", ignore_errors=True)
        (setting.work / "out").mkdir()
    forks.end()
    return number


def of_tool(setting: Setting) -> str:
    # No TIFF but the stack's: libtiff may crash when its small allocations fail.
    size = ("--format", "pgm", "--width", "8", "--height", "6", "--bit-depth", "12", "--sensor", "1")
    setting.made("simulate", "--frames", "2", *size, "-o", "night")
    setting.made("simulate", "--frames", "2", *size, "-o", "other")
    stack = ("--width", "16", "--height", "16", "--bit-depth", "12", "--sensor", "1")
    setting.made("simulate", "--calibration-stack", *stack, "-o", "stack")
    (setting.work / "out").mkdir(exist_ok=True)
    # What all commands have in common is tried with the first one alone.
    common = allocations_of(setting, ("--version",))
    figures = []
    for place, (command, options) in enumerate(COMMANDS.items()):
        first = 1 if place == 0 else max(common - 50, 1)
        figures.append(command + " " + fail_each(setting, (command, *options), first))
    return f"{common} allocations before a command; " + ", ".join(figures)


def fail_each(setting: Setting, words: tuple[str, ...], first: int) -> str:
    out = setting.work / "out"
    command_reads_tiff = words[0] == "calibrate"

    def empty() -> None:
        shutil.rmtree(out, ignore_errors=True)
        out.mkdir()

    forks = Forks(setting, words)
    empty()
    expected = forks.run(0)
    whole = files_in(out)
    stride = 601 if setting.quick else 11
    outcomes: collections.Counter[str] = collections.Counter()
    wrong = []
    number = first
    while True:
        empty()
        status, reached, output, error = forks.run(number)
        if not reached:
            break
        what = f"{' '.join(words)}, allocation {number}: status {status}, {error.strip()[:300]}"
        # As of SIGKILL, by functions of C++ libraries that let nothing out and ask for memory.
        if status == -signal.SIGABRT and re.search("libstdc|nlohmann", error):
            outcomes["aborted"] += 1
            expect_whole(out, whole, what, partials=True)
        elif status == -signal.SIGSEGV and command_reads_tiff:
            outcomes["crashed in libtiff"] += 1
            expect_whole(out, whole, what, partials=True)
        elif status == -signal.SIGALRM and same_files(files_in(out), whole):
            outcomes["never left the loader's lock, with all done"] += 1
        elif status == expected[0] and same_files(files_in(out), whole) and output == expected[2]:
            outcomes["went on"] += 1
        elif status in (1, 2) and "kv-polarize: " in error:
            outcomes["told"] += 1
            # A table lacks the frame that was told of.
            table = {name: content for name, content in files_in(out).items() if name == "table.csv"}
            expect_whole(out, whole | table, what)
        else:
            wrong.append(what)
        if number % 50 == 1 and words[0] == "transform":
            expect(forks.run(0)[0] == 0, f"{what}: the next run failed")
            expect_same(out, whole, f"{what}: the next run")
        number += stride
    forks.end()
    for line in wrong:
        print(line)
    expect(not wrong, f"{len(wrong)} wrong outcomes, such as: {wrong[:1]}")
    counts = ", ".join(f"{count} {outcome}" for outcome, count in sorted(outcomes.items()))
    return f"{first} to {number - stride} ({counts})"


def unexplained(program: str, error: str) -> list[str]:
    """Backtraces of std::terminate but those from the destructor of nlohmann's JSON values, which
    lets nothing out, and asks for memory."""
    symbols = []
    for line in subprocess.run(
        ["nm", "-C", program], capture_output=True, text=True, check=True
    ).stdout.splitlines():
        parts = line.split(" ", 2)
        if parts[0]:
            symbols.append((int(parts[0], 16), parts[-1]))
    symbols.sort()
    addresses = [address for address, _ in symbols]
    own = re.escape(os.path.basename(program))
    traces = []
    for block in re.split(r"(?m)^.*_Unwind_Resume.*$|^.*__cxa_throw.*$", error)[1:]:
        calls = [int(found, 16) for found in re.findall(own + r"\(\+0x([0-9a-f]+)\)", block)]
        names = [symbols[bisect.bisect(addresses, call) - 1][1] for call in calls]
        if not any("basic_json" in name for name in names[:4]):
            traces.append(" <- ".join(name[:80] for name in names[:6]))
    return traces if traces or "[0x" in error else ["no backtrace"] * ("terminate" in error)
