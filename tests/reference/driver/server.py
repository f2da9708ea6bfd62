"""One audio server: its queues, its link, its announcement, and what its lines mean."""

from nodes import Node

from . import packets
from .announcement import Announcement
from .constants import END, NONE, PLAY, SERVER_SOURCE
from .link import Link
from .media import CHANNEL, NOTHING
from .queue import AudioQueue
from text import i32


class AudioServer:
    def __init__(self, driver, binding, allow_multiple_inputs):
        self.driver = driver
        self.core = driver.core
        self.binding = binding
        self.allow_multiple_inputs = allow_multiple_inputs
        self.has_rhapsody = driver.has_rhapsody  # a server that comes while the driver starts never has it
        self.queues = {}
        self.announcement = None
        self.link = Link(self.core, binding)
        self.in_use_queue_id = 0
        self.in_use_path = ""
        self.clear_playlist = False

    def close(self):
        """Its queues are left behind with the link that they hold; returns them."""
        left_behind = self.sorted_queues()
        self.queues = {}
        for queue in left_behind:
            queue.leave_behind()
        if self.announcement is not None:
            self.announcement.clean_up()
        self.driver.to_free.append(self)
        return left_behind

    def free(self):
        self.link.release()

    # Queues, in the order of their ids.

    def sorted_queues(self):
        return [self.queues[queue_id] for queue_id in sorted(self.queues)]

    def first_queue(self, fits):
        for queue in self.sorted_queues():
            if fits(queue):
                return queue
        return None

    def create_audio_queue(self, room, queue_id):
        """A queue whose id is taken already works, but nobody finds it."""
        queue = AudioQueue(self.driver, self.link, queue_id, room, self.has_rhapsody)
        self.queues.setdefault(queue_id, queue)
        return queue

    def remove_audio_queue(self, queue_id):
        if queue_id not in self.queues:
            return
        queue = self.queues.pop(queue_id)
        if queue.rooms:
            self.core.assert_write(SERVER_SOURCE, 368)
        queue.close()

    def queue_by_id(self, queue_id):
        return self.queues.get(queue_id)

    def queue_by_input(self, path):
        return self.first_queue(lambda queue: queue.input_file != "" and queue.input_file == path)

    def queue_by_room(self, room):
        return self.first_queue(lambda queue: room in queue.rooms)

    def contains_room(self, room):
        return self.queue_by_room(room) is not None

    def queue_by_stream(self, stream):
        return self.first_queue(lambda queue: queue.stream_id == stream)

    def pending_queue(self):
        return self.queue_by_stream(NONE)

    def next_queue(self, queue_id):
        """The one with the next higher id, whether or not this one is still there; with 0 the first, after the last None."""
        return self.first_queue(lambda queue: queue.queue_id > queue_id)

    def queue_by_client(self, ip, channel, port):
        return self.first_queue(lambda queue: queue.is_client_in_use(ip, channel, port))

    # The one input that may be in use.

    def set_in_use_input(self, path, queue):
        self.in_use_path = path
        self.in_use_queue_id = queue.queue_id

    def clear_in_use_input(self, queue):
        if queue.queue_id != self.in_use_queue_id:
            return False
        self.in_use_queue_id = 0
        self.in_use_path = ""
        return True

    def in_use_queue(self):
        return self.queue_by_input(self.in_use_path)

    # The announcement.

    def create_announcement(self):
        if self.announcement is None:
            self.announcement = Announcement(self.core, self.link)
        self.announcement.create_stream()

    def cancel_announcement(self):
        if self.announcement is not None:
            self.announcement.clean_up()

    def play_announcement(self, path):
        if self.announcement is not None:
            self.announcement.play(path)

    def add_client_to_announcement(self, room, ip, port):
        if self.announcement is not None:
            self.announcement.add_client(room, ip, port)

    # What the server says.

    def send_error_to_ui(self, text):
        error = Node("DA_ERROR").set("Error", text)
        self.core.log(3, "Send error to navs: " + error.to_text())
        self.core.send_data_to_ui(error)

    def on_data_in(self, packet):
        """Whether a queue's state or list may have changed."""
        if self.announcement is not None:
            taken, changed = self.announcement.on_data_in(packet)
            if taken:
                return changed
        if packet.result in ("OK", "addann"):
            return self.on_accepted(packet)
        if packet.result in ("NO", "BAD"):
            return self.on_refused(packet)
        if packet.result == "EOM":
            return self.on_end_of_media(packet)
        if packet.command == "addstr" and packet.result == "":
            return self.on_stream_created(packet)
        if packet.command == "SYS" and packet.result == "STREAM":
            self.on_stream_report(packet)
        return False

    def on_accepted(self, packet):
        self.link.kill_ack_timer()
        if "addmed" in packet.command:
            queue = self.queue_by_stream(packet.stream())
            if queue is None:
                return False
            if queue.peek_next_song().type == CHANNEL and self.has_rhapsody:
                self.core.rhapsody_get_current_song_info(str(queue.queue_id), i32(queue.stream_id))
        if "addcli" in packet.command:
            self.core.log(3, "Client added")
        if "addmed" in packet.command:
            self.core.log(3, "Media added")
        return False

    def on_refused(self, packet):
        self.link.kill_ack_timer()
        if "remmed" not in packet.command:
            self.send_error_to_ui("Unable to play selected media")
        if "addmed" not in packet.command:
            return False
        queue = self.queue_by_stream(packet.stream())
        if queue is None:
            return False
        if not queue.is_radio:
            following = queue.peek_next_song()
            queue.remove_song(queue.get_current_media())
            queue.set_next_song(following)
            queue.play_next_song(True, False)
        if not queue.songs or queue.is_radio:
            self.let_rooms_go(queue)
        return True

    def let_rooms_go(self, queue):
        message = self.core.create_message("DESELECT_AUDIO_PATH")
        if message is None:
            return
        for room in sorted(queue.rooms):
            if room in queue.rooms and not queue.is_closed:  # not gone inside an earlier call
                self.core.send_message(room, message)

    def on_end_of_media(self, packet):
        queue = self.queue_by_stream(packet.stream())
        if queue is None:
            return False
        if queue.should_stop_playback():
            self.core.log(3, "Stopping playback due to too many skips or errors.")
            return False
        played = False
        if not queue.is_radio:
            played = queue.play_next_song(True, True)
            if queue.is_closed:
                return True
        if played:
            self.driver.interrupt_clear_timer(queue)
        elif self.clear_playlist:
            self.driver.start_clear_timer(queue)
        if queue.is_radio:
            queue.set_queue_state(END)
        return True

    def on_stream_created(self, packet):
        self.link.kill_ack_timer()
        queue = self.pending_queue()
        if queue is None:
            self.link.add_to_send_queue(packets.remove_stream().text(packet.stream()))
            self.core.log(3, "Unable to add stream - error returned from server")
            self.send_error_to_ui("Error occurred while initializing audio")
            return False
        queue.waiting_for_add_response = False
        queue.set_stream_id(packet.stream())
        queue.add_room_clients_to_stream()
        following = queue.peek_next_song()
        if queue.state == PLAY:
            return False
        if following.type != NOTHING:
            queue.set_queue_state(PLAY)
        else:
            queue.play_first_song()
        return True

    def on_stream_report(self, packet):
        for prefix, report in (
            ("streamInfo:", self.on_stream_info),
            ("streamStatus:", lambda queue, text: queue.update_stream_status(text)),
            ("streamCaps:", lambda queue, text: queue.update_caps(text)),
        ):
            if packet.data.startswith(prefix):
                queue = self.queue_by_stream(packet.stream())
                if queue is not None:
                    report(queue, packet.data[len(prefix):])
                return
        text = packet.data
        if text.startswith("ERROR:"):
            text = text[len("ERROR:"):]
        self.send_error_to_ui("Stream Error: " + text)

    def on_stream_info(self, queue, text):
        queue.update_current_song_meta_data(text)
        queue.update_room_media_variable(queue.get_current_media(), None, False)
