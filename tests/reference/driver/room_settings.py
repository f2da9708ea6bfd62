"""Shuffle and repeat as each room last had them."""

from nodes import Node
from text import to_ulong

from .constants import DRIVER_SOURCE


class RoomSettings:
    """Part of the driver."""

    def init_room_settings(self):
        self.room_shuffle = {}
        self.room_repeat = {}

    def add_rooms_shuffle_state(self, room, on):
        self.room_shuffle[room] = on
        self.update_rooms_queue_settings_variable(None)

    def add_rooms_repeat_state(self, room, on):
        self.room_repeat[room] = on
        self.update_rooms_queue_settings_variable(None)

    def room_queue_settings(self):
        """Only rooms with a shuffle entry are listed; each of them gets a repeat entry by that."""
        settings = Node("room_queue_settings")
        for room in sorted(self.room_shuffle):
            info = settings.add("room_info")
            info.add("roomid", room)
            info.add("shuffle", int(self.room_shuffle[room]))
            info.add("repeat", int(self.room_repeat.setdefault(room, False)))
        return settings

    def update_rooms_queue_settings_variable(self, parent):
        settings = self.room_queue_settings()
        self.core.set_variable(1003, settings.to_text())
        if parent is not None:
            parent.append(settings)

    def restore_room_queue_settings(self, persist):
        settings = None if persist is None else persist.find("room_queue_settings")
        if settings is None:
            return
        for child in settings.children:
            if child.name != "room_info":
                self.core.assert_write(DRIVER_SOURCE, 463)
            room = to_ulong(child.value("roomid"))
            self.room_shuffle[room] = to_ulong(child.value("shuffle")) != 0
            self.room_repeat[room] = to_ulong(child.value("repeat")) != 0

    def set_queues_modes(self, queue, room):
        """A new queue starts as the room last had it: shuffle first, then repeat."""
        shuffle = self.room_shuffle.setdefault(room, False)
        if shuffle != queue.shuffle:
            queue.set_shuffle(shuffle)
        repeat = self.room_repeat.setdefault(room, False)
        if repeat != queue.repeat:
            queue.repeat = repeat
