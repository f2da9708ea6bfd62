"""Changes to the songs of a room's queue."""

from nodes import parse_document
from text import to_long, to_ulong

from .commands_transport import source_of
from .constants import DRIVER_SOURCE, PLAY, STOP
from .media import DIGITAL, NOTHING, TRACK, Media, digital


class EditingCommands:
    """Part of the driver."""

    def on_edit_queue(self, message, _ret):
        if message.get("ROOM_ID") == "" or message.get("MEDIA") == "":
            return
        queue = self.queue_from_room(message.number("ROOM_ID"))
        if queue is None:
            return
        root = parse_document(message.get("MEDIA"))
        if root is None:
            return
        if root.name != "MEDIA":
            self.core.assert_write(DRIVER_SOURCE, 610)
        items = [self.read_edited_item(child) for child in root.children]
        if queue.replace_song_list(items):
            queue.remove_current_song()
            state = queue.state
            queue.set_queue_state(STOP)
            queue.set_next_song(queue.get_first_song())
            if state == PLAY and queue.songs:
                queue.play_first_song()
        self.update_queue_status_variable()

    def read_edited_item(self, child):
        if child.name == "MEDIA_ID":
            return digital(to_ulong(child.text))
        media = Media()
        if child.name == "SONG":
            media.type = to_long(child.get("SOURCE"))
            if media.type == DIGITAL:
                media.media_id = to_ulong(child.get("ID"))
            elif media.type == TRACK:
                media.external_id = child.get("ID")
            else:
                self.core.assert_write(DRIVER_SOURCE, 638)
        return media

    def on_remove_song(self, message, _ret):
        media_text = message.get("MEDIA_ID")
        if message.get("ROOM_ID") == "" or media_text == "":
            return
        queue = self.queue_from_room(message.number("ROOM_ID"))
        if queue is None:
            return
        current = queue.get_current_media().copy()
        following = queue.peek_next_song()
        media = Media(source_of(message))
        if media.type == DIGITAL:
            media.media_id = to_ulong(media_text)
        elif media.type == TRACK:
            media.external_id = media_text
        else:
            self.core.assert_write(DRIVER_SOURCE, 1077)
            return
        queue.remove_song(media)
        if media.same(current):
            queue.set_next_song(following)
            queue.play_next_song(True, following.type == NOTHING)
        self.update_queue_status_variable()
