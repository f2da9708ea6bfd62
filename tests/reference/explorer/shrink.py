"""The smallest session that still shows a difference."""

import re

from explorer.sides import compare
from world.words import FormatError, format_pair, format_value, take_word, trim_start

_PIECE = re.compile(r"<(\w+)[^<>]*>[^<>]*</\1>|<\w+[^<>]*/>|,\d+")
# Candidates that are tried at most.
MAX_TRIES = 4000


class _Shrinker:
    def __init__(self, replay, inputs):
        self._replay = replay
        self.inputs = inputs
        self._tries = 0

    def try_inputs(self, inputs):
        """Takes the inputs over if they still show a difference, and leaves out what follows it."""
        if self._tries == MAX_TRIES or not inputs:
            return False
        self._tries += 1
        difference = compare(self._replay, inputs)
        if difference is None:
            return False
        self.inputs = inputs[: difference.input + 1]
        return True

    def drop_lines(self):
        """Leaves out runs of lines, halving their length each time."""
        length = max(len(self.inputs) // 2, 1)
        while True:
            at = len(self.inputs) - length
            while at > -length:
                begin = max(at, 0)
                self.try_inputs(self.inputs[:begin] + self.inputs[begin + length :])
                at = min(at, len(self.inputs)) - length
            if length == 1:
                return
            length = max(length // 2, 1)

    def simplify_starts(self):
        """Leaves out what the driver had persisted."""
        for at, line in enumerate(self.inputs):
            if line.startswith("start "):
                self.try_inputs(self.inputs[:at] + ["start"] + self.inputs[at + 1 :])

    def drop_words(self):
        """Leaves out the key=value words of each line, one by one."""
        at = 0
        while at < len(self.inputs):
            words = split_words(self.inputs[at])
            for number in range(len(words) - 1, 0, -1):
                if at < len(self.inputs) and "=" in words[number]:
                    shorter = words[:number] + words[number + 1 :]
                    if self.try_inputs(self.inputs[:at] + [" ".join(shorter)] + self.inputs[at + 1 :]):
                        words = shorter
            at += 1


    def drop_elements(self):
        """Leaves out the innermost elements of documents, and numbers of lists, one by one."""
        at = 0
        while at < len(self.inputs):
            for match in reversed(list(_PIECE.finditer(self.inputs[at]))):
                if at < len(self.inputs):
                    line = self.inputs[at]
                    shorter = line[: match.start()] + line[match.end() :]
                    self.try_inputs(self.inputs[:at] + [shorter] + self.inputs[at + 1 :])
            at += 1


def split_words(line):
    """The words of a line as they stand; the line itself where it cannot be parted."""
    words = []
    rest = line
    try:
        while trim_start(rest):
            word, equals, rest = take_word(rest)
            words.append(format_pair(word[:equals], word[equals + 1 :]) if equals >= 0 else format_value(word))
    except FormatError:
        return [line]
    return words


def shrink(replay, inputs):
    shrinker = _Shrinker(replay, inputs)
    if not shrinker.try_inputs(inputs):
        return inputs
    before = None
    while before != shrinker.inputs:
        before = shrinker.inputs
        shrinker.drop_lines()
        shrinker.simplify_starts()
        shrinker.drop_words()
        shrinker.drop_elements()
    return shrinker.inputs
