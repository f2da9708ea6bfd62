"""Rooms and audio servers that answer by themselves, each after the present input has returned."""

import re

from world.words import format_pair, format_value

# More answers than these to one input are a loop between the driver and its world.
MAX_ANSWERS = 10000

_WORD = re.compile(r"[^ \t\n\v\f\r]+")


class LiveWorld:
    def __init__(self):
        self.rooms = {}  # room: (address, port, channel)
        self._streams = {}  # binding: the last stream number that it gave
        self._answers = []

    def add_engine(self, binding):
        """An engine that is there already goes on with its stream numbers."""
        self._streams.setdefault(binding, 0)

    def on_message(self, device, message):
        if device not in self.rooms:
            return
        if message.name == "DESELECT_AUDIO_PATH":
            self._answers.append(f"deselect {device}")
        elif message.name == "SELECT_AUDIO_DEVICE":
            address, port, channel = self.rooms[device]
            pairs = [
                ("queue", str(message.number("queueid"))),
                ("kind", "QUEUE"),
                ("ip", address),
                ("port", str(port)),
                ("channel", str(channel)),
                ("target", str(device)),
            ]
            self._answers.append(f"select {device} " + " ".join(format_pair(*pair) for pair in pairs))

    def on_line(self, binding, line):
        """`line` is "NUMBER COMMAND ...\\r\\n"."""
        if binding not in self._streams:
            return
        number, command, stream = (_WORD.findall(line) + ["", "", ""])[:3]
        if command in ("addstr", "addann"):
            self._streams[binding] += 1
            if command == "addann":
                self._answer(binding, f"* SYS addann={self._streams[binding]}")
            self._answer(binding, f"{number} {command} stream={self._streams[binding]}")
        else:
            self._answer(binding, " ".join(word for word in (number, "OK", command, stream) if word))

    def _answer(self, binding, text):
        self._answers.append(f"data {binding} {format_value(text + chr(13) + chr(10))}")

    def take_answer(self):
        return self._answers.pop(0) if self._answers else None

    def drop_answers(self):
        self._answers.clear()
