"""A line from an audio server, taken apart."""

from text import to_ulong


def split(text, delimiters, limit):
    """The pieces of a text; the last one allowed keeps the rest as it stands. No limit when it is 0 or less."""
    tokens = []
    start = skip(text, delimiters, 0)
    while start < len(text):
        end = start
        while end < len(text) and text[end] not in delimiters:
            end += 1
        if limit == 1 or end == len(text):
            tokens.append(text[start:])
            break
        tokens.append(text[start:end])
        limit -= 1
        start = skip(text, delimiters, end)
    return tokens


def skip(text, delimiters, start):
    while start < len(text) and text[start] in delimiters:
        start += 1
    return start


class InboundPacket:
    def __init__(self, line):
        self.sequence = ""
        self.command = ""
        self.result = ""
        self.stream_text = ""
        self.data = ""
        tokens = split(line, " ", 4)
        if len(tokens) >= 2:
            self.sequence = tokens[0]
            tokens += [""] * (4 - len(tokens))
            if tokens[0] == "*":
                self.read_event(tokens)
            else:
                self.read_reply(tokens)
        for line_end in "\r\n":
            self.command = self.command.partition(line_end)[0]

    def read_event(self, tokens):
        _, self.command, what, rest = tokens
        if what == "":
            return
        if "=" in what:
            self.result, _, self.stream_text = what.partition("=")
            if len(rest) >= 4:
                self.data = rest[:-2]
        elif self.command == "SYS":
            self.result = rest[:-2] if len(rest) >= 2 else rest

    def read_reply(self, tokens):
        _, first, second, third = tokens
        if first in ("OK", "NO"):
            self.result = first
            self.command = second
            self.stream_text = third
        else:
            self.command = first
            self.stream_text = second.partition("=")[2]

    def stream(self):
        return to_ulong(self.stream_text)
