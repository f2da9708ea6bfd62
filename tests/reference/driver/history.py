"""The playlists that were used last in each room."""

from nodes import Node

MOST_ENTRIES = 10  # a list that grows to this loses its oldest entry


class RoomHistories:
    def __init__(self):
        self.rooms = {}  # room -> [(playlist id, name)], newest first

    def add_playlist(self, room, playlist_id, name):
        entries = self.rooms.setdefault(room, [])
        for index, entry in enumerate(entries):
            if entry[0] == playlist_id:
                del entries[index]
                break
        entries.insert(0, (playlist_id, name))
        if len(entries) == MOST_ENTRIES:
            entries.pop()

    def playlists_of(self, room):
        """None for a room without history."""
        if room not in self.rooms:
            return None
        playlists = Node("playlists")
        for playlist_id, name in self.rooms[room]:
            playlists.add("playlist").set("id", playlist_id).set("name", name)
        return playlists


class History:
    """Part of the driver."""

    def update_room_history_variable(self):
        """The variable stays empty: the history is asked for with a command."""
        self.core.set_variable(1002, Node("histories").to_text())

    def on_get_room_history(self, message, ret):
        room_text = message.get("ROOM_ID")
        if room_text == "":
            return
        room = message.number("ROOM_ID")
        if self.queue_from_room(room) is None:
            ret("<history></history>\n")
            return
        text = "<history>\n <room>%d</room>\n" % room
        playlists = self.histories.playlists_of(room)
        if playlists is not None:
            text += playlists.to_text()
        ret(text + "</history>\n")
