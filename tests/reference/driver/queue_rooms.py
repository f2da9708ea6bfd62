"""The rooms that hear a queue."""

from . import packets
from .link import RoomClient


class QueueRooms:
    """Part of the queue. Rooms are walked in ascending order."""

    def init_rooms(self, owner):
        self.rooms = {}
        self.owner = owner
        self.devices_in_analog_source = []

    def add_room(self, room):
        """A room whose endpoint is not known yet. A queue that has ended takes none."""
        if room not in self.rooms and not self.is_closed:
            self.rooms[room] = RoomClient(self.link)

    def add_room_client(self, room, ip, port, channel):
        client = RoomClient(self.link, ip, port, channel)
        if room in self.rooms:
            self.rooms.pop(room).close()
        self.rooms[room] = client
        self.announce_client(client)

    def announce_client(self, client):
        if client.ip != "":
            self.packets.add(packets.add_client(client.ip, client.port))

    def remove_room_client(self, room):
        if room not in self.rooms:
            return
        client = self.rooms[room]
        if not self.is_same_client_in_queue(room) and client.ip != "":
            self.packets.add(packets.remove_client(client.ip, client.port))
        if room in self.rooms:  # not taken out inside the call
            self.rooms.pop(room).close()
        if self.rooms and room == self.owner:
            self.owner = min(self.rooms)

    def add_room_clients_to_stream(self):
        for room in sorted(self.rooms):
            self.announce_client(self.rooms[room])

    def is_client_in_use(self, ip, channel, port):
        return any(client.is_client_the_same(ip, channel, port) for client in self.rooms.values())

    def is_same_client_in_queue(self, room):
        """Whether another room shares the endpoint, of which the channel is no part."""
        if room not in self.rooms:
            return False
        mine = self.rooms[room]
        return any(
            other != room and client.ip == mine.ip and client.port == mine.port
            for other, client in self.rooms.items()
        )
