"""Media that goes into a room's queue."""

from nodes import parse_document
from text import to_long, to_ulong

from .commands_session import queue_id_element
from .commands_transport import source_of
from .constants import DRIVER_SOURCE, PLAY
from .media import CHANNEL, DIGITAL, NOTHING, RADIO, RESERVED, TRACK, Media, digital, from_database

MOST_TRACKS = 500


def flag(message, name, default):
    return message.number(name) != 0 if message.has(name) else default


class AddingCommands:
    """Part of the driver."""

    def init_adding(self):
        self.pending_rhapsody_room = 0

    def attach_room(self, room, queue):
        queue.add_room(room)
        self.core.fire_event(1)
        self.update_room_map_info_variable()

    # One song.

    def on_add_song(self, message, ret):
        media_text = message.get("MEDIA_ID")
        if message.get("ROOM_ID") == "" or media_text == "":
            return
        room = message.number("ROOM_ID")
        play_now = flag(message, "PLAY_NOW", True)
        play_next = flag(message, "PLAY_NEXT", False)
        clear = flag(message, "CLEAR", False)
        queue, created = self.create_queue(room)
        if queue is None:
            return
        if queue.is_single_stream():
            clear = play_next = play_now = True
        self.attach_room(room, queue)
        if clear:
            queue.clear_songs()

        media = Media(source_of(message))
        if media.type == DIGITAL:
            media.media_id = to_ulong(media_text)
            queue.set_is_channel(False)
        elif media.type == TRACK:
            media.external_id = media_text
            queue.set_is_channel(False)
            queue.set_is_radio(False)
        elif media.type == CHANNEL:
            media.external_id = media_text
            queue.set_is_channel(True)
            play_next = play_now = True
        elif media.type == RADIO:
            self.core.assert_write(DRIVER_SOURCE, 898)
        else:
            self.core.assert_write(DRIVER_SOURCE, 901)
            if created:
                self.deselect_room_and_company(room)
                return

        queue.add_song(media, False, play_next)
        self.interrupt_clear_timer(queue)
        if play_now and queue.state != PLAY:
            self.play_added(queue, media, created)
        if play_next:
            self.play_added(queue, media, created)
        self.update_queue_status_variable()
        queue.update_info_variable()
        ret(queue_id_element(queue.queue_id))

    def play_added(self, queue, media, created):
        """A queue that was made just now is started by the room's selection."""
        if not queue.shuffle:
            queue.set_next_song(media)
        if not created:
            queue.play_next_song(True, False)

    # A list.

    def on_add_song_list(self, message, ret):
        if message.get("ROOM_ID") == "" or message.get("MEDIA") == "":
            return
        room = message.number("ROOM_ID")
        play_now = flag(message, "PLAY_NOW", True)
        play_next = flag(message, "PLAY_NEXT", False)
        clear = flag(message, "CLEAR", False)
        queue, created = self.create_queue(room)
        if queue is None:
            return
        if queue.is_single_stream():
            play_now = play_next = clear = True
        self.interrupt_clear_timer(queue)
        self.attach_room(room, queue)
        if clear:
            queue.clear_songs()
        root = parse_document(message.get("MEDIA"))
        if root is not None:
            if root.name != "MEDIA":
                self.core.assert_write(DRIVER_SOURCE, 1134)
            items = []
            for child in root.children:
                if self.read_list_item(child, room, queue, items):
                    play_now = play_next = True
            queue.add_song_list(items, play_next)
            self.play_added_list(queue, items, created, play_now, play_next)
        ret(queue_id_element(queue.queue_id))

    def read_list_item(self, child, room, queue, items):
        """Adds the child's item; whether it is a channel, which plays at once."""
        media = Media()
        if child.name == "MEDIA_ID":
            media = digital(to_ulong(child.text))
        elif child.name == "SONG":
            media.type = to_long(child.get("SOURCE"))
            if media.type == DIGITAL:
                media.media_id = to_ulong(child.get("ID"))
                queue.set_is_channel(False)
            elif media.type == TRACK:
                media.external_id = child.get("ID")
                queue.set_is_channel(False)
                queue.set_is_radio(False)
            elif media.type == CHANNEL:
                media.external_id = child.get("ID")
                queue.set_is_channel(True)
            elif media.type == RESERVED:  # a playlist of the service, whose tracks come later
                if self.has_rhapsody:
                    self.core.rhapsody_get_tracks_for_playlist(child.get("ID"), 0, MOST_TRACKS, 0)
                    self.pending_rhapsody_room = room
            else:
                self.core.assert_write(DRIVER_SOURCE, 1188)
                return False
        items.append(media)
        return media.type == CHANNEL

    def play_added_list(self, queue, items, created, play_now, play_next):
        changed = False
        if play_now and queue.state != PLAY:
            changed = True
            following = queue.get_next_song()
            if following.type != NOTHING:
                queue.set_next_song(following)
                if not created:
                    queue.play_next_song(True, False)
        if play_next:
            changed = True
            if items and not queue.shuffle:
                queue.set_next_song(items[0])
            if queue.peek_next_song().type != NOTHING and not created:
                queue.play_next_song(True, False)
        if changed:
            self.update_queue_status_variable()

    # Albums, artists and genres.

    def on_add_album_mp3(self, message, ret):
        room = message.number("ROOM_ID")
        play_next = flag(message, "PLAY_NEXT", False)
        album = self.core.get_album_info(message.number("MEDIA_ID"))
        if album is None:
            return
        queue, created = self.create_queue(room)
        if queue is None:
            return
        if queue.is_single_stream():
            queue.clear_songs()
            play_next = True
        self.interrupt_clear_timer(queue)
        self.attach_room(room, queue)
        ids = [to_ulong(child.value("id")) for child in album.children if child.value("id") != ""]
        queue.add_song_list([digital(media_id) for media_id in ids], play_next)
        if play_next:
            self.play_added(queue, digital(ids[0] if ids else 0), created)
            self.update_queue_status_variable()
        if album.value("LOCAL_INPUT_NAME") != "":
            queue.input_file = album.value("LOCAL_INPUT_NAME")
        ret(queue_id_element(queue.queue_id))

    def on_add_album_list(self, message, _ret):
        room = message.number("ROOM_ID")
        play_now = flag(message, "PLAY_NOW", True)
        play_next = flag(message, "PLAY_NEXT", False)
        root = parse_document(message.get("MEDIA"))
        if root is None:
            return
        albums = [to_ulong(child.text) for child in root.children]
        devices = self.get_mp3_devices(room)
        songs = from_database(self.core.get_songs_for_albums(albums, devices))
        self.queue_song_vector(room, songs, play_now, play_next)

    def on_queue_all(self, message, ret):
        artist, genre = message.get("ARTIST"), message.get("GENRE")
        by_artist, by_genre = message.has("ARTIST"), message.has("GENRE")
        for present, text, name in ((by_artist, artist, "artist"), (by_genre, genre, "genre")):
            if present and text == "":
                self.core.log_debug(
                    "OnQueueAll: Very strange - the '%s' parameter is present, but it is empty." % name
                )
        room = message.number("ROOM_ID")
        play_now = message.get("PLAY_NOW") == "" or message.number("PLAY_NOW") != 0
        play_next = message.number("PLAY_NEXT") != 0
        devices = self.get_mp3_devices(room)
        if by_artist and by_genre:
            found = self.core.get_songs_by_artist_and_genre(devices, artist, genre)
        elif by_artist:
            found = self.core.get_songs_by_artist(devices, artist)
        elif by_genre:
            found = self.core.get_songs_by_genre(devices, genre)
        else:
            self.core.log(7, "Unable to add. Must have a valid artist and/or genre.")
            return
        if not found:
            self.core.log_debug(
                "No songs match that description. Artist: '" + artist + "'  Genre: '" + genre + "'"
            )
            return
        queue = self.queue_song_vector(room, from_database(found), play_now, play_next)
        if queue is not None:
            ret(queue_id_element(queue.queue_id))

    def queue_song_vector(self, room, songs, play_now, play_next):
        """The queue that took the songs, or None."""
        if not songs:
            return None
        queue, created = self.create_queue(room)
        if queue is None:
            return None
        queue.set_is_channel(False)
        queue.set_is_radio(False)
        self.attach_room(room, queue)
        queue.add_song_list(songs, play_next)
        changed = play_next
        if play_now and queue.state != PLAY:
            changed = True
            if not queue.shuffle:
                queue.set_next_song(digital(songs[0].media_id))
            if created:  # here it is the new queue that starts at once
                queue.play_next_song(True, False)
        if play_next:
            if not queue.shuffle:
                queue.set_next_song(songs[0])
            if queue.peek_next_song().type != NOTHING and not created:
                queue.play_next_song(True, False)
        if changed:
            self.update_queue_status_variable()
        return queue

    # The tracks of a playlist of the streaming service.

    def playlist_tracks_completed(self, track_ids):
        room = self.pending_rhapsody_room
        queue, _created = self.create_queue(room)
        if queue is None:
            return
        self.attach_room(room, queue)
        queue.set_is_channel(False)
        queue.set_is_radio(False)
        queue.clear_songs()
        for track_id in track_ids:
            queue.add_song(Media(TRACK, track_id), False, False)
        queue.set_next_song(queue.get_first_song())
        queue.play_next_song(True, False)
        queue.update_info_variable()
        self.update_queue_status_variable()
