"""A one-off audio file for a set of rooms, on a stream of its own."""

from . import packets
from .constants import NONE
from .packets import PacketQueue

NOTIFIER = "AnnouncementNotifier"


class Announcement:
    def __init__(self, core, link):
        self.core = core
        self.link = link
        self.stream_id = NONE
        self.waiting_for_stream = False
        self.packets = PacketQueue(link)
        self.rooms = []
        self.addresses = []

    def create_stream(self):
        self.waiting_for_stream = True
        self.packets.flush(False)
        self.forget_stream()
        self.packets.add(packets.add_announcement(), skip_waiting=True)

    def forget_stream(self):
        self.packets.reset()
        self.stream_id = NONE

    def set_stream_id(self, stream_id):
        self.stream_id = stream_id
        self.waiting_for_stream = False
        if self.core.has_service(NOTIFIER):
            self.core.announcement_stream_ready()
        if self.stream_id == stream_id:  # not given up inside the call
            self.packets.set_stream_id(stream_id)

    def add_client(self, room, ip, port):
        self.packets.add(packets.add_client(ip, port))
        self.rooms.append(room)
        self.addresses.append(ip)

    def play(self, path):
        self.packets.add(packets.add_file(path))

    def on_data_in(self, packet):
        """(whether the line was the announcement's, whether something changed)"""
        if self.stream_id == NONE:
            if self.waiting_for_stream and packet.command == "addann":
                # No acknowledgement: the next line waits until the link's timer has run out.
                self.set_stream_id(packet.stream())
                return True, False
            return False, False
        if packet.stream() != self.stream_id:
            return False, False
        changed = False
        if packet.result == "OK":
            self.link.kill_ack_timer()
        elif packet.result in ("NO", "BAD"):
            self.link.kill_ack_timer()
            if packet.command == "addmed":
                self.complete()
                changed = True
        elif packet.result == "EOM":
            self.complete()
            changed = True
        return True, changed

    def complete(self):
        if self.core.has_service(NOTIFIER):
            self.core.announcement_complete()
        self.rooms = []
        self.addresses = []

    def clean_up(self):
        self.packets.add(packets.remove_stream())
        self.packets.flush(False)
        self.forget_stream()
