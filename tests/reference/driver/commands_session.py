"""Rooms that join and leave a session; the queue of a room, found or made."""

from text import to_ulong, u32

from .protocol import split

FIRST_QUEUE_ID = 10000
MOST_ROOMS = 100


def queue_id_element(queue_id):
    return "<queueid>%d</queueid>" % queue_id


class SessionCommands:
    """Part of the driver."""

    def init_sessions(self):
        self.next_queue_id = FIRST_QUEUE_ID

    # Queues.

    def create_queue(self, room):
        """(the queue or None, whether it was made just now)"""
        if self.active_binding == 0:
            return None, False
        server = self.server_from_room(room)
        if server is not None:
            queue = server.queue_by_room(room)
            if server.binding == self.active_binding:
                if queue.input_file == "":
                    return queue, False
                # A queue that plays an input takes no media.
                self.remove_room(room, server, queue)
                if self.has_gone(server):
                    return None, False
                return self.create_queue_on(server, room), True
            self.remove_room(room, server, queue)
        server = self.create_server(self.active_binding, False)
        return self.create_queue_on(server, room), True

    def create_queue_on(self, server, room):
        queue = server.create_audio_queue(room, self.next_queue_id)
        self.next_queue_id = max(u32(self.next_queue_id + 1), FIRST_QUEUE_ID)
        self.set_queues_modes(queue, room)
        return queue

    def join(self, room, join_room):
        """The id of the queue to join, 0 for none. The room itself comes when it selects the device."""
        if room == join_room:
            return 0
        target = self.queue_from_room(join_room)
        if target is None:
            return 0
        server = self.server_from_room(room)
        if server is not None:
            self.remove_room(room, server, server.queue_by_room(room))
            self.deselect_audio_path(room)
        return target.queue_id

    # Commands.

    def on_join(self, message, ret):
        if message.get("ROOM_ID") == "":
            return
        queue_id = 0
        if message.get("JOIN_ID") != "":
            queue_id = self.join(message.number("ROOM_ID"), message.number("JOIN_ID"))
        elif message.get("QUEUE_ID") != "":
            queue_id = message.number("QUEUE_ID")
        if queue_id != 0:
            ret(queue_id_element(queue_id))

    def on_add_rooms_to_session(self, message, ret):
        self.core.log_debug("OnAddRoomsToSession: pReturn = @")
        queue, rooms = self.session_and_rooms(message)
        if queue is None:
            return
        for room in rooms:
            self.join(room, message.number("ROOM_ID"))
            select = self.core.create_message("SELECT_AUDIO_DEVICE")
            if select is not None:
                select.add("deviceid", "INT", str(self.device_id))
                select.add("queueid", "INT", str(queue.queue_id))
                self.core.send_message(room, select)
        self.update_queue_status_variable()
        self.core.log_debug("OnAddRoomsToSession: calling setReturnValue pReturn = @")
        ret(queue_id_element(queue.queue_id))

    def on_remove_rooms_from_session(self, message, _ret):
        queue, rooms = self.session_and_rooms(message)
        if queue is None:
            return
        for room in rooms:
            other = self.queue_from_room(room)
            if other is not None and other.queue_id == queue.queue_id:
                self.deselect_audio_path(room)
        self.update_queue_status_variable()

    def session_and_rooms(self, message):
        """(the queue of ROOM_ID or None, the listed rooms)"""
        if message.get("ROOM_ID") == "" or message.get("ROOM_ID_LIST") == "":
            return None, []
        rooms = [to_ulong(piece) for piece in split(message.get("ROOM_ID_LIST"), ",", MOST_ROOMS)]
        return self.queue_from_room(message.number("ROOM_ID")), rooms

    def on_remove(self, message, _ret):
        if message.get("ROOM_ID") == "":
            return
        room = message.number("ROOM_ID")
        if self.queue_from_room(room) is not None:
            self.deselect_audio_path(room)

    def on_remove_queue(self, message, _ret):
        if message.get("ROOM_ID") != "":
            self.deselect_room_and_company(message.number("ROOM_ID"))
