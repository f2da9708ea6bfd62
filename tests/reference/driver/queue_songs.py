"""The songs of a queue: adding, removing, replacing, and which one comes next."""

from . import packets
from .constants import NONE, PAUSE, PLAY
from .media import NOTHING, Media, digital, position


class QueueSongs:
    """Part of the queue. The active list is the shuffled one while shuffle is on."""

    def init_songs(self):
        self.songs = []
        self.shuffled = []
        self.current_index = NONE
        self.next_index = NONE
        self.current_media = Media()
        self.input_file = ""

    def active_list(self):
        return self.shuffled if self.shuffle else self.songs

    def holds_its_channel(self):
        """A channel keeps its one item until it is cleared."""
        return self.is_channel and bool(self.songs)

    def is_single_stream(self):
        return self.is_channel or self.is_radio

    def add_song(self, media, update_info, to_front):
        self.songs.append(media.copy())
        if len(self.songs) == 1:
            self.set_next_song(media)
        if self.shuffle:
            if to_front:
                self.shuffle_with_first(media)
            else:
                self.shuffle_queue()
        self.input_file = ""
        if update_info:
            self.update_info_variable()

    def add_song_list(self, items, to_front):
        if not items or self.holds_its_channel():
            return
        kept = self.append_songs(items)
        if self.shuffle:
            if to_front:
                self.shuffle_with_first(kept)
            else:
                self.shuffle_queue()
        self.input_file = ""
        self.update_info_variable()

    def add_media_ids(self, media_ids):
        """Unlike a list of items, ids stay behind what plays only while something plays."""
        if not media_ids or self.holds_its_channel():
            return
        kept = self.append_songs([digital(media_id) for media_id in media_ids])
        if self.shuffle:
            if self.current_media.type == NOTHING:
                self.shuffle_queue()
            else:
                self.shuffle_with_first(kept)
        self.input_file = ""
        self.update_info_variable()

    def append_songs(self, items):
        """Returns the item that the dice picked; the empty one when they show the largest number."""
        pick = self.draw(len(items))
        kept = Media()
        for index, item in enumerate(items):
            self.songs.append(item.copy())
            self.update_position_for_song_added()
            if index == pick:
                kept = item.copy()
        return kept

    def draw(self, count):
        return int(self.core.rand() / 2147483647.0 * count)

    def update_position_for_song_added(self):
        if self.current_index == NONE and self.next_index == NONE:
            self.next_index = len(self.songs) - 1

    def remove_song(self, media):
        media = media.copy()  # it may be one of the list
        self.songs = [song for song in self.songs if not song.same(media)]
        self.next_index = NONE
        if self.shuffle:
            self.shuffle_queue()
        if not self.songs:
            self.remove_current_song()
            if self.is_channel:
                self.set_is_channel(False)
            elif self.is_radio:
                self.set_is_radio(False)
        self.update_info_variable()

    def replace_song_list(self, items):
        """Whether playback is to start afresh from the new list."""
        if self.holds_its_channel():
            return False
        found = position(items, self.current_media)
        self.current_index = NONE if found is None else found
        self.next_index = NONE
        self.songs = [item.copy() for item in items]
        self.shuffled = []
        if self.shuffle:
            pick = self.draw(len(items))
            if items:
                self.shuffle_with_first(items[min(pick, len(items) - 1)])
        self.update_info_variable()
        return found is None or self.state not in (PAUSE, PLAY)

    def clear_songs(self):
        if self.is_radio:
            self.remove_current_song()
        self.is_radio = False
        self.is_channel = False
        self.current_media.type = NOTHING
        self.songs = []
        self.shuffled = []
        self.current_index = NONE
        self.next_index = NONE
        self.update_info_variable()

    def set_next_index(self, index):
        if not self.holds_its_channel():
            self.next_index = index

    def set_next_song(self, media):
        if self.holds_its_channel():
            return
        found = position(self.active_list(), media)
        if found is not None:
            self.next_index = found

    def remove_current_song(self):
        self.packets.add(packets.remove_media())

    def get_current_media(self):
        if self.is_single_stream() and self.songs:
            return self.songs[0]
        return self.current_media
