"""Takes down what a run gives, line by line."""

from world.words import format_text, format_value


def bare(value):
    """A number or flag as a word."""
    if isinstance(value, bool):
        return "true" if value else "false"
    return str(value)


class Recorder:
    def __init__(self):
        self.lines = []

    def input(self, line):
        self.lines.append(line)

    def world_input(self, line):
        """An input that the world produced by itself."""
        self.lines.append("= " + line)

    def output(self, name, *words, text=None):
        """Numbers and flags stand as they are, other words as values; the text is the rest of the line."""
        pieces = ["< " + name]
        pieces += [format_value(word) if isinstance(word, str) else bare(word) for word in words]
        if text:
            pieces.append(format_text(text))
        self.lines.append(" ".join(pieces))

    def output_pairs(self, name, words, pairs):
        """The same, with words that stand already as they are to be printed behind."""
        self.output(name, *words)
        self.lines[-1] += "".join(" " + pair for pair in pairs)

    def fault(self, text):
        """Never right: an exception that came out of the driver, or another breach of its contract."""
        self.output("fault", text=text)
