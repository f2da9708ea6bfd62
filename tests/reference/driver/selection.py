"""A room selects the driver as its source: on which server and in which queue it listens."""

from .constants import DRIVER_SOURCE, END, LAST_SERVER_BINDING, NONE
from .media import CHANNEL, DIGITAL, NOTHING, RADIO, TRACK

ANNOUNCING_PORT = ":6330"
NEEDS_A_QUEUE = ("SONG", "PLAYLIST", "BROADCAST_AUDIO")
HAS_A_LOCATION = ("SONG", "BROADCAST_AUDIO", "ALBUM", "ALBUM_MP3", "ALBUM_CD")
KIND_NAMES = {TRACK: "RHAPSODY", CHANNEL: "RHAPSODY_CHANNEL"}


class Selection:
    """Part of the driver."""

    def av_selected(self, wish, result):
        if wish.kind == "DIGITAL_MEDIA":
            return
        if wish.kind == "ANNOUNCEMENT":
            server = self.announcement_server()
            if server is not None:
                server.add_client_to_announcement(wish.room, wish.ip, wish.port)
            return
        if wish.kind == "ANNOUNCEMENT_COMPLETE":
            self.update_room_map_info_variable()
            return
        kind = wish.kind
        if wish.location_kind != "GENERIC_MEDIA":
            binding = wish.binding
            if binding == 0 or binding > LAST_SERVER_BINDING:
                binding = self.active_binding
                if binding == 0:
                    self.core.log(7, "Default binding for audio server is invalid")
                    return
            if wish.input == "":
                binding = self.active_binding
            else:
                kind = "QUEUE"
            self.route(wish, kind, binding, result)
        self.confirm(wish, kind)
        if result.handled and self.queue_from_id(result.queue) is None:
            result.handled = False

    def route(self, wish, kind, binding, result):
        if wish.ip == "" or wish.room == 0 or wish.port == 0:
            return
        if kind in NEEDS_A_QUEUE and wish.queue == 0:
            return
        if binding == 0:  # no server at all: the selection is confirmed all the same
            return
        server = self.create_server(binding, False)
        in_use = self.server_in_use(wish.ip, wish.channel, wish.port)
        self.leave_other_server(wish, server)
        self.free_endpoint(wish, kind, server, in_use)
        if self.has_gone(server):
            return
        if wish.input != "" and not server.allow_multiple_inputs:
            self.deselect_if_different_input(server, wish.room, wish.input)
        queue, input_name = self.choose_queue(wish, kind, server, in_use)
        if queue is None or queue.is_closed:
            return
        self.attach(wish, queue)
        if queue.is_closed:
            return
        self.pass_on_analog_source(wish, queue)
        if wish.queue == 0:
            self.fill_record(result, queue, unrequested=True)
        elif kind == "QUEUE":
            self.play_queue(wish, server, queue, input_name, result)
        elif kind == "PLAYLIST":
            self.play_playlist(wish, queue, result)
        elif kind in ("SONGS", "ALBUM", "SONG", "BROADCAST_AUDIO"):
            self.play_media(wish, kind, queue, result)
        self.update_queue_status_variable()

    def has_gone(self, server):
        """Inside a call that told somebody about a room's removal."""
        return self.servers.get(server.binding) is not server

    def confirm(self, wish, kind):
        message = self.core.create_message("MEDIA_SELECTED")
        if message is None:
            return
        if wish.media:
            message.add("location", "STRING", self.core.get_location(wish.media[0], kind) or "")
        message.add("idRoom", "INT", str(wish.room))
        self.core.send_message(wish.target, message)

    # Where the room and its endpoint were before.

    def leave_other_server(self, wish, server):
        current = self.server_from_room(wish.room)
        if current is not None and current is not server:
            self.remove_room(wish.room, current, current.queue_by_room(wish.room))

    def free_endpoint(self, wish, kind, server, in_use):
        if in_use is None:
            return
        queue = in_use.queue_by_client(wish.ip, wish.channel, wish.port)
        if queue is None or self.keeps_endpoint(wish, kind, server, in_use, queue):
            return
        queue = self.remove_room(wish.room, in_use, queue)
        self.deselect_clients(queue, wish.ip, wish.channel, wish.port)

    def keeps_endpoint(self, wish, kind, server, in_use, queue):
        is_requested = wish.queue == queue.queue_id
        if wish.queue != 0 and in_use.queue_by_id(wish.queue) is None:
            return False
        if in_use is not server:
            return wish.queue != 0 and is_requested
        if wish.input != "":
            return wish.input == queue.input_file
        if queue.input_file == "":
            if wish.queue != 0:
                return is_requested
            if kind == "BROADCAST_AUDIO":
                return wish.room in queue.rooms
            return True
        if ANNOUNCING_PORT in queue.input_file or kind == "BROADCAST_AUDIO":
            return False
        return wish.queue == 0 or is_requested

    # The queue that the room is to hear.

    def choose_queue(self, wish, kind, server, in_use):
        """(the queue or None, the name of the input that is to play)"""
        queue = None
        if wish.queue != 0 and kind == "QUEUE":
            queue = server.queue_by_id(wish.queue)
            present = server.queue_by_room(wish.room)
            if present is not None and present is not queue:
                if not present.waiting_for_add_response and present.stream_id != NONE:
                    self.remove_room(wish.room, server, present)
                    queue = server.queue_by_id(wish.queue)
        if queue is None:
            queue = server.queue_by_room(wish.room)
        input_name = wish.input
        if queue is not None:
            if queue.input_file != "":
                input_name = queue.input_file
            if input_name != "" or self.may_stay(wish, server, queue):
                return queue, input_name
            self.remove_room(wish.room, server, queue)
        if self.has_gone(server):
            return None, input_name
        if wish.queue != 0 and in_use is not None:
            queue = in_use.queue_by_id(wish.queue)
            if queue is not None:
                return queue, input_name
        return self.create_queue_on(server, wish.room), input_name

    def may_stay(self, wish, server, queue):
        """Without any input: songs are kept, and so is an empty queue that its room selects again."""
        if queue.songs:
            return queue.input_file == ""
        if wish.input == queue.input_file and server.contains_room(wish.room):
            self.core.log(6, "Not removing room on reselect due to same source and server")
            return True
        return False

    def attach(self, wish, queue):
        queue.add_room_client(wish.room, wish.ip, wish.port, wish.channel)
        self.core.fire_event(1)
        self.update_room_map_info_variable()

    def pass_on_analog_source(self, wish, queue):
        if queue.stream_id == NONE or queue.input_file == "" or queue.source_device == wish.source:
            return
        room = self.core.analog_source(wish.room)
        if room is None:
            return
        room.take_source_device(queue.source_device)
        for device in queue.devices_in_analog_source:
            if device == self.device_id or queue.is_closed:
                break
            room.select_device(device)

    # What it plays there.

    def fill_record(self, result, queue, unrequested=False):
        result.queue = queue.queue_id
        result.handled = True
        self.fill_media(result, queue.get_current_media(), unrequested)

    def fill_media(self, result, media, unrequested):
        if media.type == DIGITAL:
            result.kind = "SONG"
            result.media = media.media_id
        elif media.type in KIND_NAMES:
            result.kind = KIND_NAMES[media.type]
        elif media.type == RADIO:
            if unrequested:
                self.core.assert_write(DRIVER_SOURCE, 2655)
            else:
                result.kind = "INTERNET_MEDIA"

    def start_queue(self, queue):
        if queue.stream_id == NONE and not queue.waiting_for_add_response:
            queue.create_stream()
        if queue.state == END:
            queue.play_next_song(True, False)

    def lose_room(self, room, queue):
        server = self.server_of_queue(queue.queue_id)
        if server is not None:  # else it went inside a call
            self.remove_room(room, server, queue)

    def play_queue(self, wish, server, queue, input_name, result):
        if input_name != "":
            self.play_input(wish, server, queue, input_name, result)
        elif queue.songs or queue.input_file != "":
            queue.source_device = wish.source
            self.fill_record(result, queue)
            self.start_queue(queue)
        else:
            self.lose_room(wish.room, queue)

    def play_input(self, wish, server, queue, input_name, result):
        queue.source_device = wish.source
        result.queue = queue.queue_id
        result.handled = True
        if len(queue.rooms) == 1:
            room = self.core.analog_source(wish.room)
            if room is not None:
                queue.devices_in_analog_source = room.devices()
                if queue.is_closed:  # it went inside the call
                    result.handled = False
                    return
        if queue.stream_id != NONE:
            if queue.state == END:
                queue.play_next_song(True, False)
            return
        other = server.queue_by_input(input_name)
        if other is None or other is queue:
            server.set_in_use_input(input_name, queue)
            queue.input_file = input_name
            if not queue.waiting_for_add_response:
                queue.create_stream()
        else:
            self.lose_room(wish.room, queue)
            if other.is_closed:  # it went inside a call: the room is in no queue
                result.handled = False
                return
            self.attach(wish, other)
            result.queue = other.queue_id

    def play_playlist(self, wish, queue, result):
        self.playlist_load(wish.room, wish.media[0] if wish.media else 0, queue, 0)
        if not queue.songs and queue.input_file == "":
            self.lose_room(wish.room, queue)
            return
        self.start_queue(queue)
        self.fill_record(result, queue)
        if queue.get_current_media().type == NOTHING:
            self.fill_media(result, queue.peek_next_song(), False)

    def play_media(self, wish, kind, queue, result):
        if kind != "BROADCAST_AUDIO" and not wish.media:
            self.lose_room(wish.room, queue)
            return
        result.queue = queue.queue_id
        result.handled = True
        if kind == "BROADCAST_AUDIO":
            queue.clear_notifications()
            queue.set_is_radio(True)
            queue.add_media_ids(wish.media)
            if queue.stream_id != NONE:
                queue.play_first_song()
            else:
                queue.create_stream()
        else:
            queue.add_media_ids(wish.media)
            self.start_queue(queue)

    def av_add_location_info(self, wish):
        if wish.kind in HAS_A_LOCATION and wish.media:
            location = self.core.get_location(wish.media[0], wish.kind)
            if location is not None:
                wish.location = location
