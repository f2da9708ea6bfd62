"""The two sides that must agree: the real driver under korvel-replay, and the plain one."""

import os
import resource
import shlex
import subprocess
import tempfile
from dataclasses import dataclass

from world.session import Session
from world.words import FormatError

# What the real driver may take for one call of korvel-replay, in seconds of the processor.
MAX_SECONDS = 120


# What korvel-replay ends with when a session has an input that cannot be run.
STATUS_REFUSED = 2


@dataclass
class Run:
    """What the real side gave."""

    lines: list
    status: int
    trouble: str = ""


@dataclass
class Difference:
    input: int  # which of the session's inputs
    expected: str  # what the plain driver gave; "" for nothing more
    given: str  # what the real one gave

    def describe(self):
        return f"  plain: {self.expected or '(nothing more)'}\n  real:  {self.given or '(nothing more)'}"


def _limit():
    resource.setrlimit(resource.RLIMIT_CPU, (MAX_SECONDS, MAX_SECONDS))


class Replay:
    """The real side: the program as words of a shell, and another plug-in than the one beside it if there is one."""

    def __init__(self, program, plugin=None):
        self._command = shlex.split(program) + (["--plugin", plugin] if plugin else [])

    def run_files(self, paths):
        """All that the files give, one after the other."""
        done = subprocess.run(self._command + paths, capture_output=True, preexec_fn=_limit, check=False)
        lines = done.stdout.decode("latin-1").split("\n")[:-1]
        trouble = f"status {done.returncode}: {done.stderr.decode('latin-1').strip()}" if done.returncode else ""
        return Run(lines, done.returncode, trouble)

    def run(self, sessions):
        """The same for sessions of input lines."""
        with tempfile.TemporaryDirectory(prefix="explore-") as folder:
            paths = []
            for number, inputs in enumerate(sessions):
                paths.append(os.path.join(folder, f"{number}.txt"))
                with open(paths[-1], "w", encoding="latin-1", newline="\n") as file:
                    file.writelines(line + "\n" for line in inputs)
            return self.run_files(paths)


def run_plain(inputs):
    """A block of lines per input, each with the input first; an input that cannot be run is the last."""
    session = Session()
    blocks = []
    for line in inputs:
        try:
            blocks.append(session.execute(line))
        except FormatError:
            blocks.append(session.world.recorder.lines)
            break
    return blocks


def first_difference(blocks, run):
    """Where the run first does not give the lines of the blocks, or ends other than it should; None without that."""
    at = 0
    for number, block in enumerate(blocks):
        for line in block:
            if at == len(run.lines):
                return Difference(number, line, run.trouble)
            if run.lines[at] != line:
                return Difference(number, line, run.lines[at])
            at += 1
    if at < len(run.lines):
        return Difference(len(blocks) - 1, "", run.lines[at])
    if run.status not in (0, STATUS_REFUSED):
        return Difference(len(blocks) - 1, "", run.trouble)
    return None


def compare(replay, inputs):
    """Plays a session to both sides."""
    return first_difference(run_plain(inputs), replay.run([inputs]))
