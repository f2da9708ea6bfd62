"""Lines that audio servers send: answers in order, late, doubled, out of order or refused, and events."""

from explorer.house import SERVERS, words

EVENT_TEXTS = (
    "streamInfo:Ann - Blue sky",
    "streamInfo:x",
    "streamInfo:",
    "streamInfo:A <b> & c - \"d\"",
    "streamInfo: - ",
    "streamInfo:a - b - c",
    "streamStatus:buffering 20%",
    "streamStatus:playing",
    "streamStatus:",
    "streamCaps:NO-PAUSE",
    "streamCaps:SEEK,NO-PAUSE",
    "streamCaps:",
    "ERROR:disk",
    "ERROR:",
    "weird",
    "streaminfo:x",
    "ab",
    "a",
    "",
)
JUNK = (
    "",
    " ",
    "\r\n",
    "*\r\n",
    "5\r\n",
    "* SYS\r\n",
    "* SYS hello you\r\n",
    "* SYS hello\r\n",
    "* addmed hello\r\n",
    "* SYS addann=1\r\n",
    "* SYS =1 addann\r\n",
    "* addcli addann=1\r\n",
    "x OK x\r\n",
    "1 OK\r\n",
    "1 NO\r\n",
    "1 BAD addmed 1\r\n",
    "1 EOM addmed 1\r\n",
    "  12   OK   addcli   1\r\n",
    "1 addstr 1\r\n",
    "1 addstr stream=\r\n",
    "1 addstr stream=x",
    "1 xaddstr stream=1\r\n",
    "* addstr x=5\r\n",
    "* addstr EOM=1\r\n",
    "* SYS EOM=1 x\r\n",
    "* STREAM STREAM=1 ERROR:x\r\n",
    "* addmed WAT=1 OK\r\n",
    "* addmed OK=1\r\n",
    "* addcli OK=1\r\n",
    "* addmed NO=1\r\n",
    "* SYSTEM STREAM=1 streamStatus:x\r\n",
    "* SYS STREAMS=1 streamStatus:x\r\n",
    "1 addstr\r\n",
    "\xff\x01 \x02\r\n",
    "1 OK " + "x" * 5000 + " 1\r\n",
)


class Wire:
    def __init__(self, values):
        self.values = values
        self.dice = values.dice
        self.knowledge = values.knowledge

    def data(self, binding, text, end="\r\n"):
        return [words("data", binding, text + end)]

    def stream(self):
        """(binding, stream) of a stream that is there, most of the time."""
        streams = self.knowledge.streams
        if streams and not self.values.chance(0.04):
            binding, stream = self.dice.choice(streams[-6:])
            return binding, stream
        return self.dice.choice(SERVERS), self.values.pick(0, 1, 2, 3, 4095, 99)

    def answer(self):
        """An answer to a line that waits for one, or one that nobody waits for."""
        lines = self.knowledge.lines
        if lines and not self.values.chance(0.04):
            at = 0 if self.values.chance(0.85) else self.dice.randrange(len(lines))
            entry = lines[at]
            if not self.values.chance(0.05):
                del lines[at]
            if self.values.chance(0.02):
                return []
        elif self.knowledge.sent:
            entry = self.dice.choice(self.knowledge.sent)
        else:
            entry = (self.dice.choice(SERVERS), 1, "addstr", 0)
        return self.answer_to(*entry)

    def answer_to(self, binding, number, command, stream):
        if self.values.chance(0.03):
            number += self.values.pick(1, -1, 100)
        if self.values.chance(0.03):
            stream = self.stream()[1]
        kind = self.dice.random()
        if command in ("addstr", "addann") and kind < 0.93:
            new = self.knowledge.new_stream()
            if self.values.chance(0.05):
                new = self.values.pick(1, 0, 4095, 4294967295)
            lines = []
            if command == "addstr":
                self.knowledge.add_stream(binding, new)
            elif self.values.chance(0.5):
                lines = self.data(binding, f"* SYS addann={new}")
            return lines + self.data(binding, f"{number} {command} stream={new}")
        if kind < 0.85:
            return self.data(binding, f"{number} OK {command} {stream}")
        if kind < 0.94:
            return self.data(binding, f"{number} NO {command} {stream}")
        return self.data(binding, f"* {command} BAD={stream} no such file")

    def event(self):
        binding, stream = self.stream()
        kind = self.dice.random()
        if kind < 0.45:
            command = self.values.pick("addmed", "addmed", "addmed", "addmed", "SYS", "addstr")
            return self.data(binding, f"* {command} EOM={stream}") * self.values.pick(1, 1, 1, 1, 2, 7)
        if kind < 0.58:
            return self.data(binding, f"* addmed BAD={stream} no such file")
        if kind < 0.62:
            return self.data(binding, f"{self.values.pick(1, 2, 9)} NO addmed {stream}")
        if kind < 0.68:
            return self.data(binding, f"{self.values.pick(1, 2, 9)} OK addmed {stream}")
        return self.data(binding, f"* SYS STREAM={stream} " + self.dice.choice(EVENT_TEXTS))

    def junk(self):
        return self.data(self.dice.choice(SERVERS), self.dice.choice(JUNK), end="")
