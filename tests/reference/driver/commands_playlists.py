"""Saved playlists."""

from text import to_ulong

from .commands_adding import flag
from .commands_session import queue_id_element
from .constants import DRIVER_SOURCE, PLAY
from .media import digital, from_database, to_database

CATEGORY = "PLAYLIST"


class PlaylistCommands:
    """Part of the driver."""

    def on_add_playlist(self, message, ret):
        if message.get("ROOM_ID") == "" or message.get("MEDIA_ID") == "":
            return
        room = message.number("ROOM_ID")
        play_now = message.get("PLAY_NOW") != "0"
        play_next = message.get("PLAY_NEXT") != "0"
        clear = flag(message, "CLEAR", False)
        queue, created = self.create_queue(room)
        if queue is None:
            return
        if queue.is_single_stream():
            play_now = play_next = clear = True
        if not created:
            self.interrupt_clear_timer(queue)
        self.attach_room(room, queue)
        if clear:
            queue.clear_songs()
        self.playlist_load(room, message.number("MEDIA_ID"), queue, play_next)
        if self.choose_next(queue, play_now, play_next):
            if not created:
                queue.play_next_song(True, False)
            self.update_queue_status_variable()
        ret(queue_id_element(queue.queue_id))

    def choose_next(self, queue, play_now, play_next):
        """Whether the queue is to move on."""
        if play_next:
            if not queue.shuffle:
                queue.set_next_song(digital(0))
            return True
        if not play_now or queue.state == PLAY or not queue.songs:
            return False
        if not queue.shuffle:
            queue.set_next_song(queue.get_first_song())
        return True

    def playlist_load(self, room, playlist_id, queue, play_next):
        songs = from_database(self.core.get_playlist_songs(playlist_id))
        queue.add_song_list(songs, bool(play_next))
        if play_next and songs and not queue.shuffle:
            queue.set_next_song(songs[0])
        if room in queue.rooms:
            self.histories.add_playlist(room, playlist_id, self.core.get_playlist_name(playlist_id))
        self.update_room_history_variable()

    def on_save_playlist(self, message, _ret):
        if message.get("ROOM_ID") == "" or message.get("NAME") == "":
            self.core.assert_write(DRIVER_SOURCE, 1766)
            self.core.log(3, "The command SAVE_PLAYLIST does not have the required parameters")
            return
        self.playlist_save(message.number("ROOM_ID"), message.get("NAME"))

    def playlist_save(self, room, name):
        queue = self.queue_from_room(room)
        if queue is None or not queue.songs:
            return
        playlist_id = self.playlist_id(name)
        if playlist_id != 0:
            self.core.update_playlist(playlist_id, to_database(queue.songs))
        else:
            playlist_id = self.core.create_playlist(self.device_id, name, to_database(queue.songs))
            if playlist_id == 0:
                return
        if room in queue.rooms:
            self.histories.add_playlist(room, playlist_id, name)
        self.update_room_history_variable()

    def playlist_id(self, name):
        playlists = self.core.get_media_list(self.device_id, CATEGORY, "", "", -1, -1)
        if playlists is None:
            return 0
        for record in playlists.children:
            playlist_id = to_ulong(record.value("id"))
            if record.value("title") == name and playlist_id != 0:
                return playlist_id
        return 0

    def on_rename_playlist(self, message, _ret):
        """The songs go into a new record; the old one stays."""
        name = message.get("NAME")
        if message.get("MEDIA_ID") == "" or name == "":
            return
        record = self.core.get_media_record(message.number("MEDIA_ID"), CATEGORY)
        if record is None:
            return
        songs = record.find("songs")
        ids = [] if songs is None else [to_ulong(song.value("id")) for song in songs.children]
        description = "<album>\n <title>" + name + "</title>\n <playlist>True</playlist>\n</album>\n"
        result, new_id = self.core.add_media(self.device_id, description, "", name, 1)
        if result != 0 or new_id == 0:
            return
        for position, song_id in enumerate(ids):
            if self.core.add_song_to_playlist(new_id, song_id, position) != 0:
                return

    def on_delete_playlist(self, message, _ret):
        playlist_id = message.number("MEDIA_ID")
        if playlist_id != 0:
            self.core.delete_playlist(playlist_id)
