"""What a session has shown so far, so that the next inputs mean something."""

import re

_STATUS = re.compile(r"< set 1006 (.*)")
_QUEUE = re.compile(r"<queue><id>(\d+)</id>.*?</queue>")
_ROOMS = re.compile(r"<rooms>(.*?)</rooms>")
_ID = re.compile(r"<id>(\d+)</id>")
_ANSWERED = re.compile(r"< return <queueid>(\d+)</queueid>")
_SENT = re.compile(r'< send (\d+) "(\d+) (\w+) ?(\d*)')
_STREAM = re.compile(r"= data (\d+) \"\d+ addstr stream=(\d+)")
_MESSAGE = re.compile(r"< message (\d+) (\w+)(.*)")
_QUEUE_ID = re.compile(r"queueid:INT=(\d+)")
_BINDING = re.compile(r"< binding (\d+) \d+ \w+ (\".*?\")")
_PERSIST = re.compile(r"< persist (.*)")
# Streams that are remembered.
_MAX_STREAMS = 12


class Knowledge:
    def __init__(self):
        self.forget()
        self.persisted = ""
        self.live_rooms = set()
        self.live_engines = set()

    def forget(self):
        """A driver that is gone takes all this with it."""
        self.queues = {}  # id: rooms
        self.old_queues = []
        self.lines = []  # [(binding, number, command, stream)] that nobody answered yet
        self.sent = []  # the latest lines, answered or not
        self.streams = []  # [(binding, stream)], the newest last
        self.wishes = []  # [(room, queue or None)]: rooms that were asked to select or to let go
        self.last_stream = 0
        self.bindings = {}  # family: the newest binding that the driver offered

    def new_stream(self):
        self.last_stream += 1
        return self.last_stream

    def read(self, lines):
        for line in lines:
            if line.startswith("< set 1006 "):
                self._read_status(line)
            elif line.startswith("< send "):
                self._read_send(line)
            elif line.startswith("< message "):
                self._read_message(line)
            elif line.startswith("= data "):
                self._read_live(line)
            elif match := _ANSWERED.match(line):
                self._add_queue(int(match[1]))
            elif match := _BINDING.match(line):
                self.bindings[match[2]] = int(match[1])
            elif match := _PERSIST.match(line):
                self.persisted = match[1]

    def _add_queue(self, queue):
        self.queues.setdefault(queue, [])

    def _read_status(self, line):
        found = {}
        for match in _QUEUE.finditer(line):
            rooms = _ROOMS.search(match[0])
            found[int(match[1])] = [int(room) for room in _ID.findall(rooms[1])] if rooms else []
        self.old_queues += [queue for queue in self.queues if queue not in found and queue not in self.old_queues]
        self.old_queues = self.old_queues[-4:]
        self.queues = found

    def _read_send(self, line):
        if match := _SENT.match(line):
            entry = (int(match[1]), int(match[2]), match[3], int(match[4] or 0))
            self.sent = self.sent[-7:] + [entry]
            if entry[0] not in self.live_engines:
                self.lines = self.lines[-15:] + [entry]

    def _read_live(self, line):
        if match := _STREAM.match(line):
            self.add_stream(int(match[1]), int(match[2]))

    def add_stream(self, binding, stream):
        self.streams = [pair for pair in self.streams[-_MAX_STREAMS:] if pair != (binding, stream)]
        self.streams.append((binding, stream))
        self.last_stream = max(self.last_stream, stream)

    def _read_message(self, line):
        match = _MESSAGE.match(line)
        room = int(match[1])
        if room in self.live_rooms:
            return
        if match[2] == "DESELECT_AUDIO_PATH":
            self.wishes.append((room, None))
        elif match[2] == "SELECT_AUDIO_DEVICE" and (queue := _QUEUE_ID.search(match[3])):
            self.wishes.append((room, int(queue[1])))
        self.wishes = self.wishes[-12:]

    def newest_bindings(self):
        return list(self.bindings.values()) or [3000, 3501]

    def queue_of(self, room):
        for queue, rooms in self.queues.items():
            if room in rooms:
                return queue
        return 0
