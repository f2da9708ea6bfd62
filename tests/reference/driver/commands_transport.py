"""Through the songs and states of a room's queue."""

from text import to_long, to_ulong

from .constants import NO_MEDIA_ID, PAUSE, PLAY, STOP
from .media import DIGITAL, TRACK, Media


class TransportCommands:
    """Part of the driver."""

    def transport(self, name, message, action):
        """What the five transport commands share; an action that returns False leaves the status alone."""
        room_text = message.get("ROOM_ID")
        if room_text == "":
            return
        queue = self.queue_from_room(to_ulong(room_text))
        if queue is None or queue.handle_room_command(name, room_text) or queue.is_closed:
            return
        if action(queue) is not False:
            self.update_queue_status_variable()

    def on_play(self, message, _ret):
        def play(queue):
            self.interrupt_clear_timer(queue)
            queue.set_queue_state(PLAY)

        self.transport("PLAY", message, play)

    def on_pause(self, message, _ret):
        def pause(queue):
            queue.set_queue_state(STOP if queue.is_channel else PAUSE)

        self.transport("PAUSE", message, pause)

    def on_stop(self, message, _ret):
        def stop(queue):
            queue.set_queue_state(STOP)

        self.transport("STOP", message, stop)

    def on_skip_fwd(self, message, _ret):
        def skip(queue):
            queue.stopped_by_errors = False
            queue.error_count = 0
            queue.play_next_song(True, False)

        self.transport("SKIP_FWD", message, skip)

    def on_skip_rev(self, message, _ret):
        def skip(queue):
            if queue.is_channel:
                return False
            queue.play_next_song(False, False)
            return True

        self.transport("SKIP_REV", message, skip)

    def on_go_to_song(self, message, _ret):
        media_text = message.get("MEDIA_ID")
        if message.get("ROOM_ID") == "" or media_text in ("", NO_MEDIA_ID):
            return
        media = Media(source_of(message))
        if media.type == DIGITAL:
            media.media_id = to_ulong(media_text)
        elif media.type == TRACK:
            media.external_id = media_text
        queue = self.queue_from_room(message.number("ROOM_ID"))
        if queue is None:
            return
        self.interrupt_clear_timer(queue)
        if message.get("MEDIA_INDEX") != "":
            queue.set_next_index(message.number("MEDIA_INDEX"))
        else:
            queue.set_next_song(media)
        queue.play_next_song(True, False)
        self.update_queue_status_variable()

    def on_repeat(self, message, _ret):
        if message.get("ROOM_ID") == "":
            return
        room = message.number("ROOM_ID")
        queue = self.queue_from_room(room)
        value = message.number("REPEAT") != 0
        if queue is not None:
            if message.get("REPEAT") == "":
                value = not queue.repeat
            queue.repeat = value
        self.add_rooms_repeat_state(room, value)

    def on_shuffle(self, message, _ret):
        if message.get("ROOM_ID") == "":
            return
        room = message.number("ROOM_ID")
        queue = self.queue_from_room(room)
        value = message.number("SHUFFLE") != 0
        if queue is not None:
            if message.get("SHUFFLE") == "":
                value = not queue.shuffle
            queue.set_shuffle(value)
        self.add_rooms_shuffle_state(room, value)


def source_of(message):
    """The kind of media that a command names: a song of the database unless it says otherwise."""
    text = message.get("SOURCE")
    return DIGITAL if text == "" else to_long(text)
