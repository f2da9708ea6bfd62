"""Which song plays first, next and previously; shuffle and repeat."""

from .constants import NONE, QUEUE_SOURCE, OutOfRange, at
from .media import NOTHING, Media, position
from text import u32

NEVER = 0xFFFFFFFF
RESTART_MS = 5000


class QueueNavigation:
    """Part of the queue."""

    def init_navigation(self):
        self.shuffle = False
        self.repeat = False
        self.reshuffled = False
        self.last_navigation = NEVER
        self.always_skip_previous = False

    def get_next_song_index(self):
        size = len(self.songs)
        if size == 0:
            return NONE
        self.last_navigation = self.core.monotonic()
        if self.next_index != NONE:
            return self.next_index
        if size == 1:
            return 0 if self.repeat else NONE
        index = u32(self.current_index + 1)
        if index < size:
            self.reshuffled = False
            return 0 if index == NONE and self.repeat else index
        if not self.repeat:
            return NONE
        if self.shuffle and not self.reshuffled:
            self.shuffle_queue()
        return 0

    def peek_next_song(self):
        """Moves nothing, but counts as a navigation and may shuffle anew at the end of the list."""
        if not self.songs:
            return Media()
        if self.is_single_stream():
            return self.songs[0].copy()
        index = self.get_next_song_index()
        if index == NONE:
            return Media()
        return at(self.active_list(), index).copy()

    def get_next_song(self):
        if not self.songs:
            return Media()
        if self.is_single_stream():
            return self.songs[0].copy()
        return self.move_to(self.get_next_song_index())

    def get_previous_song(self):
        if not self.songs:
            return Media()
        if self.is_single_stream():
            return self.songs[0].copy()
        return self.move_to(self.get_previous_song_index())

    def move_to(self, index):
        self.current_index = index
        self.next_index = NONE
        if index == NONE:
            return Media()
        self.current_media = at(self.active_list(), index).copy()
        return self.current_media.copy()

    def get_first_song(self):
        if not self.songs:
            return Media()
        if self.is_single_stream():
            self.current_media = self.songs[0].copy()
            return self.current_media.copy()
        self.last_navigation = self.core.monotonic()
        return self.move_to(0)

    def get_previous_song_index(self):
        size = len(self.songs)
        if not self.always_skip_previous and self.current_index != NONE and self.last_navigation != NEVER:
            now = self.core.monotonic()
            if u32(now - self.last_navigation) > RESTART_MS:
                self.last_navigation = now
                return self.current_index
        self.last_navigation = self.core.monotonic()
        if size == 1:
            return 0 if self.repeat else NONE
        if self.current_index == 0:
            if not self.repeat:
                return 0
            index = u32(size - 1)
        elif self.current_index == NONE:
            index = u32(size - 1)
        else:
            index = self.current_index - 1
        if index >= 4096:
            self.core.assert_write(QUEUE_SOURCE, 402)
            return NONE
        return index

    def rebuild_shuffled(self):
        self.shuffled = [song.copy() for song in self.songs]
        for i in range(1, len(self.shuffled)):
            j = self.core.rand() % (i + 1)
            self.shuffled[i], self.shuffled[j] = self.shuffled[j], self.shuffled[i]
        self.reshuffled = True

    def shuffle_with_first(self, media):
        media = media.copy()
        self.rebuild_shuffled()
        found = position(self.shuffled, media)
        if found is None:
            return
        self.shuffled[0], self.shuffled[found] = self.shuffled[found], self.shuffled[0]
        self.set_next_index(0)

    def shuffle_queue(self):
        """The current song comes first and stays current."""
        self.shuffle_with_first(self.current_media)
        if self.current_media.type != NOTHING:
            self.get_next_song()

    def set_shuffle(self, on):
        if on and not self.shuffle:
            try:
                self.shuffle_queue()
            except OutOfRange:
                pass  # a pin past the end counts as not found
            if self.current_index != NONE and self.current_index < len(self.shuffled):
                self.current_media = self.shuffled[self.current_index].copy()
        elif not on and self.shuffle:
            if self.songs and self.current_index < len(self.shuffled) and self.current_index != NONE:
                found = position(self.songs, self.shuffled[self.current_index])
                if found is not None:
                    self.current_index = found
        self.shuffle = on
