"""A transcript file: its input lines."""

import re

from world.words import FormatError, trim_end, trim_start


def read_inputs(text):
    """(exact, [(line number, input line)]); exact is whether the first line but for comments is that word."""
    exact = False
    first = True
    inputs = []
    for number, line in enumerate(text.split("\n"), 1):
        line = line[:-1] if line.endswith("\r") else line
        if not trim_start(line) or line.startswith("#"):
            continue
        if first and trim_end(line) == "exact":
            exact = True
        elif re.match("[a-zA-Z]", line):
            inputs.append((number, line))
        elif line[0] not in "<=!":
            raise FormatError(f"{number}: a line starts with a letter or with one of # < = !")
        elif not inputs:
            raise FormatError(f"{number}: an expectation stands under an input line")
        first = False
    return exact, inputs
