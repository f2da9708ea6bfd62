"""The audio servers, the bindings that lead to them, and how queues are found."""

from messages import message_from_xml
from text import is_true

from . import packets
from .constants import (
    DRIVER_SOURCE,
    FIRST_MEDIA_BINDING,
    LAST_MEDIA_BINDING,
    LAST_SERVER_BINDING,
)
from .protocol import InboundPacket
from .server import AudioServer

FIRST_SERVER_BINDING = 3000
DYNAMIC = 6


class Registry:
    """Part of the driver. Servers are walked in the order of their bindings."""

    def init_registry(self):
        self.servers = {}
        self.active_binding = 0
        self.last_server_binding = FIRST_SERVER_BINDING
        self.last_media_binding = FIRST_MEDIA_BINDING
        self.left_links = []  # links that queues hold though their server has gone

    def sorted_servers(self):
        return [self.servers[binding] for binding in sorted(self.servers)]

    # Bindings.

    def add_server_binding(self, binding):
        self.core.add_dynamic_binding(
            binding, DYNAMIC, False, "Digital Audio", "DIGITAL_AUDIO_SERVER", False, True
        )

    def add_media_binding(self, binding):
        self.core.add_dynamic_binding(
            binding, DYNAMIC, False, "Audio Media Storage", "AUDIO_MEDIA_STORAGE", False, True
        )

    def restore_dynamic_bindings(self):
        self.core.add_dynamic_binding(
            4000, DYNAMIC, True, "Digital Audio", "DIGITAL_AUDIO_CLIENT", False, True
        )
        # Ids that no house has must neither loop for ever nor leave a family without its first binding.
        self.last_server_binding = max(self.last_server_binding, FIRST_SERVER_BINDING)
        self.last_server_binding = min(self.last_server_binding, LAST_SERVER_BINDING)
        for binding in range(FIRST_SERVER_BINDING + 1, self.last_server_binding + 1):
            self.add_server_binding(binding)
        self.last_media_binding = max(self.last_media_binding, FIRST_MEDIA_BINDING)
        self.last_media_binding = min(self.last_media_binding, LAST_MEDIA_BINDING)
        for binding in range(FIRST_MEDIA_BINDING + 1, self.last_media_binding + 1):
            self.add_media_binding(binding)

    def binding_changed(self, binding, bound):
        """One spare binding of each family is always there, up to the family's last id."""
        if not bound:
            return
        if binding == self.last_server_binding:
            if binding == LAST_SERVER_BINDING:
                return
            self.last_server_binding += 1
            self.add_server_binding(self.last_server_binding)
        elif binding == self.last_media_binding:
            if binding == LAST_MEDIA_BINDING:
                return
            self.last_media_binding += 1
            self.add_media_binding(self.last_media_binding)
        else:
            return
        self.core.invalidate_state()

    # What arrives over a binding.

    def bound_message(self, binding, message_type, message, data, xml, ret):
        if message.name == "DATA_RECEIVED":
            server = self.servers.get(binding)
            if server is not None and server.on_data_in(InboundPacket(data)):
                self.update_queue_status_variable()
        elif message.name == "SERVER_ONLINE":
            self.create_server(binding, is_true(message.get("ALLOW_MULT_INPUT")))
            if data != "" and self.core.is_local_ipv4(data):
                self.active_binding = binding
        elif message.name == "SERVER_OFFLINE":
            self.remove_server(binding)
        if message_type == "PROTOCOL_COMMAND" and xml is not None:
            command = message_from_xml(xml)
            if command is not None:
                self.execute_command(command, ret, binding)

    def create_server(self, binding, allow_multiple_inputs):
        if binding in self.servers:
            return self.servers[binding]
        server = AudioServer(self, binding, allow_multiple_inputs)
        self.servers[binding] = server
        server.clear_playlist = self.clear_playlist
        server.link.add_to_send_queue(packets.reset().text(0))  # it may go offline inside this
        return server

    def remove_server(self, binding):
        if binding not in self.servers:
            return
        server = self.servers.pop(binding)
        if server.close():
            self.left_links.append(server.link)

    # Finding servers and queues.

    def server_of_queue(self, queue_id):
        for server in self.sorted_servers():
            if server.queue_by_id(queue_id) is not None:
                return server
        return None

    def server_in_use(self, ip, channel, port):
        for server in self.sorted_servers():
            if server.queue_by_client(ip, channel, port) is not None:
                return server
        return None

    def server_from_room(self, room):
        for server in self.sorted_servers():
            if server.contains_room(room):
                return server
        return None

    def queue_from_room(self, room):
        server = self.server_from_room(room)
        return None if server is None else server.queue_by_room(room)

    def queue_from_id(self, queue_id):
        server = self.server_of_queue(queue_id)
        return None if server is None else server.queue_by_id(queue_id)

    def get_queue(self, room, queue_id):
        """The room counts when there is one, even if it is in no queue."""
        if room != 0:
            return self.queue_from_room(room)
        if queue_id != 0:
            return self.queue_from_id(queue_id)
        return None

    def get_mp3_devices(self, device):
        devices = self.core.mp3_devices(device)
        if devices is None:
            self.core.assert_write(DRIVER_SOURCE, 1385)
            return []
        return devices

    # Announcements, on the active server.

    def announcement_server(self):
        return None if self.active_binding == 0 else self.create_server(self.active_binding, False)
