"""Rooms that leave queues."""

from .constants import DRIVER_SOURCE


class Routing:
    """Part of the driver."""

    def deselect_audio_path(self, device):
        message = self.core.create_message("DESELECT_AUDIO_PATH")
        if message is not None:
            self.core.send_message(device, message)

    def deselect_all(self, queue):
        for room in sorted(queue.rooms):
            self.deselect_audio_path(room)

    def deselect_clients(self, queue, ip, channel, port):
        if queue is None:
            return
        rooms = [
            room
            for room in sorted(queue.rooms)
            if queue.rooms[room].is_client_the_same(ip, channel, port)
        ]
        for room in rooms:
            self.deselect_audio_path(room)

    def remove_room(self, room, server, queue):
        """Returns the queue, or None when it went: with its last room, or with its server inside a call."""
        queue.remove_room_client(room)
        if not queue.rooms:
            queue.remove_stream()
            self.interrupt_clear_timer(queue)
            server.remove_audio_queue(queue.queue_id)
            queue = None
        self.core.fire_event(2)
        self.update_room_map_info_variable()
        return None if queue is None or queue.is_closed else queue

    def deselect_room_and_company(self, room):
        queue = self.queue_from_room(room)
        if queue is not None:
            self.deselect_all(queue)

    def deselect_if_different_input(self, server, room, input_name):
        """A server that plays one input at a time: whoever hears another one lets go."""
        if server.in_use_path in ("", input_name):
            return
        queue = server.in_use_queue()
        if queue is None:
            self.core.assert_write(DRIVER_SOURCE, 2410)
            return
        queue = self.remove_room(room, server, queue)
        if queue is not None:
            self.deselect_all(queue)

    def av_deselected(self, room):
        server = self.server_from_room(room)
        if server is None:
            return
        queue = server.queue_by_room(room)
        if queue.rooms[room].ip == "":
            return
        if len(queue.rooms) == 1:
            server.clear_in_use_input(queue)
        self.remove_room(room, server, queue)
        self.update_queue_status_variable()

    def av_room_off(self, room):
        server = self.server_from_room(room)
        if server is None:
            return
        server.cancel_announcement()
        queue = server.queue_by_room(room)
        if queue is not None:
            self.remove_room(room, server, queue)
        self.update_queue_status_variable()
