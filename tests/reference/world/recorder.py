"""Takes down what a run gives, line by line."""

from world.words import format_text, format_value


def as_word(value):
    """A text as a value, a number or flag as it stands."""
    if isinstance(value, str):
        return format_value(value)
    if isinstance(value, bool):
        return "true" if value else "false"
    return str(value)


def as_words(values):
    return [as_word(value) for value in values]


class Recorder:
    def __init__(self):
        self.lines = []
        self.listener = lambda output: None  # is told each output once it is taken down

    def input(self, line):
        self.lines.append(line)

    def world_input(self, line):
        """An input that the world produced by itself."""
        self.lines.append("= " + line)

    def output(self, name, *words, text=None):
        """Numbers and flags stand as they are, other words as values; the text is the rest of the line."""
        self._add(" ".join(["< " + name] + as_words(words) + ([format_text(text)] if text else [])))

    def output_pairs(self, name, words, pairs):
        """The same, with pairs behind that stand already as they are to be printed."""
        self._add(" ".join(["< " + name] + as_words(words) + pairs))

    def _add(self, line):
        self.lines.append(line)
        self.listener(line[2:])

    def fault(self, text):
        """Never right: an exception that came out of the driver, or another breach of its contract."""
        self.output("fault", text=text)
