"""The states of a queue and what is told to the audio server on the way."""

from nodes import parse_document
from text import is_true, u32

from . import packets
from .constants import CORE_CODE, END, NONE, PAUSE, PLAY, STATE_NAMES, STOP
from .media import CHANNEL, DIGITAL, NOTHING, RADIO, TRACK, Media

ERROR_PERIOD_MS = 60000
MAX_ERRORS = 5
ROOM_CODE = 20  # added to a room's id for the room service


class QueuePlayback:
    """Part of the queue."""

    def init_playback(self):
        self.state = STOP
        self.state_time = self.core.time()
        self.stream_id = NONE
        self.source_device = 0
        self.waiting_for_add_response = False
        self.can_pause = True
        self.is_channel = False
        self.is_radio = False
        self.error_period_start = 0
        self.error_count = 0
        self.stopped_by_errors = False

    def change_queue_state(self, new):
        """Playing again is announced again: another song has begun."""
        if new == self.state and new != PLAY:
            return
        old, old_time = self.state, self.state_time
        self.state = new
        self.state_time = self.core.time()
        if self.notification_device == 0 or self.is_closed:
            return
        message = self.core.create_message("QUEUE_STATE_CHANGED")
        if message is None:
            return
        message.add("QUEUE_ID", "INT", str(self.queue_id))
        message.add("PREV_QUEUE_STATE", "STRING", STATE_NAMES.get(old, ""))
        message.add("PREV_QUEUE_STATE_TIME", "INT", str(u32(self.state_time - old_time)))
        message.add("QUEUE_STATE", "STRING", STATE_NAMES.get(new, ""))
        if self.queue_info != "":
            message.add("QUEUE_INFO", "STRING", self.queue_info)
        self.core.send_message(self.notification_device, message)

    def set_queue_state(self, requested):
        self.error_count = 0
        self.stopped_by_errors = False
        if requested == PAUSE and not self.can_pause:
            requested = STOP
        if requested == STOP:
            if self.state != STOP:
                self.packets.add(packets.remove_media())
                self.change_queue_state(STOP)
                self.set_next_song(self.get_first_song())
        elif requested == PAUSE:
            if self.state in (PLAY, END):
                self.packets.add(packets.change_state(PAUSE))
                self.change_queue_state(PAUSE)
        elif requested == PLAY:
            if self.state == END:
                self.play_first_song()
            elif self.state == STOP:
                self.play_next_song(True, False)
            elif self.state == PAUSE:
                self.packets.add(packets.change_state(PLAY))
                self.change_queue_state(PLAY)
        elif requested == END:
            if self.state != END:
                self.update_secondary_info(False, None, None, None, None, None)
                self.update_room_media_variable(self.get_current_media(), None, False)
                self.end_of_queue()

    def play_first_song(self):
        media = self.get_first_song()
        if media.type in (DIGITAL, RADIO):
            if media.media_id != 0:
                self.add_song_to_stream(media)
            self.change_queue_state(PLAY)
        elif media.type == TRACK:
            if media.external_id != "":
                self.add_song_to_stream(media)
                self.change_queue_state(PLAY)
        elif media.type != CHANNEL:
            if self.input_file != "":
                self.add_file_to_stream()
            self.change_queue_state(PLAY)

    def play_next_song(self, forward, end_if_none):
        media = self.get_next_song() if forward else self.get_previous_song()
        if media.type == CHANNEL:
            return self.play_channel()
        playable = media.type in (DIGITAL, RADIO) and (media.media_id != 0 or media.external_id != "")
        if playable or (media.type == TRACK and media.external_id != ""):
            self.change_queue_state(PLAY)
            self.add_song_to_stream(media)
            return True
        if end_if_none:
            kind = media.type if media.type in (DIGITAL, TRACK, RADIO) else NOTHING
            self.update_room_media_variable(Media(kind), None, False)
            self.end_of_queue()
        return False

    def play_channel(self):
        media = self.get_previous_song()
        media.external_id = "channel-" + media.external_id
        if self.songs:
            self.change_queue_state(PLAY)
            if self.songs:  # not emptied inside the call
                self.songs[0].meta_data = ""
        self.add_song_to_stream(media)
        return True

    def end_of_queue(self):
        self.change_queue_state(END)
        for room in sorted(self.rooms):
            if not self.is_closed:
                self.core.queue_ended(CORE_CODE, u32(room + ROOM_CODE))
        self.packets.add(packets.end_of_stream())

    def add_song_to_stream(self, media):
        self.can_pause = True
        if self.is_closed:
            return
        packet = packets.create_add_media(self.core, media, self.is_radio, lambda: not self.is_closed)
        if packet is not None:
            if self.packets.remove_added_media():
                self.core.log(6, "Digital Audio addmed entry superceeded")
            self.packets.add(packet)
        self.update_room_media_variable(media, None, False)

    def create_stream(self):
        self.waiting_for_add_response = True
        self.packets.add(packets.add_stream(), skip_waiting=True)

    def remove_stream(self):
        self.waiting_for_add_response = False
        self.packets.add(packets.remove_stream())

    def add_file_to_stream(self):
        self.packets.add(packets.add_media(self.input_file))

    def set_stream_id(self, stream_id):
        self.waiting_for_add_response = False
        if stream_id == self.stream_id:
            return
        self.stream_id = stream_id
        self.can_pause = True
        self.packets.set_stream_id(stream_id)

    def should_stop_playback(self):
        """More than five ends within a minute are errors, not songs."""
        now = self.core.monotonic()
        if u32(now - self.error_period_start) < ERROR_PERIOD_MS:
            self.error_count += 1
            if self.error_count > MAX_ERRORS:
                self.stopped_by_errors = True
                self.error_period_start = now
                self.error_count = 0
                return True
        else:
            self.error_count = 0
            self.error_period_start = now
        self.stopped_by_errors = False
        return False

    def update_caps(self, text):
        self.can_pause = "NO-PAUSE" not in text.split(",")

    def handle_room_command(self, name, room_text):
        """Whether the registered device deals with a room's command itself."""
        if self.notification_device == 0 or self.is_closed:
            return False
        message = self.core.create_message(name)
        if message is None:
            return False
        message.add("ROOM_ID", "INT", room_text)
        reply = self.core.send_message(self.notification_device, message)
        root = parse_document(reply) if reply != "" else None
        if root is None:
            return False
        if "handled" in root.attributes:
            return is_true(root.get("handled"))
        return is_true(root.value("handled"))

    def set_mode(self, radio, channel):
        """Never both: what clearing the list tells may be answered by the other mode, and the outer call ends last."""
        self.is_radio = radio
        self.is_channel = channel

    def set_is_radio(self, on):
        if self.is_radio or on:
            self.set_is_channel(False)
            self.clear_songs()
        if not on:
            self.can_pause = True
            self.clear_notifications()
        self.set_mode(radio=on, channel=self.is_channel and not on)

    def set_is_channel(self, on):
        if self.is_channel or on:
            self.set_is_radio(False)
            self.clear_songs()
        self.set_mode(radio=self.is_radio and not on, channel=on)
        self.error_count = 0
        self.stopped_by_errors = False
