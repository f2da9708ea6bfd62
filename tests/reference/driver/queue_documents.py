"""What a queue says about itself in documents."""

from nodes import Node

from .constants import END, NO_MEDIA_ID, NONE, PAUSE, PLAY, QUEUE_SOURCE, STOP, OutOfRange
from .media import CHANNEL, DIGITAL, RADIO, RESERVED, TRACK, Media, position

LISTED = (DIGITAL, TRACK, CHANNEL, RESERVED, RADIO)
STATE_TEXTS = {STOP: "Stop", END: "Stop", PAUSE: "Pause", PLAY: "Play"}


class QueueDocuments:
    """Part of the queue."""

    def source_of(self, media):
        return RADIO if self.is_radio else media.type

    def get_session_data(self):
        rooms = Node("rooms")
        for room in sorted(self.rooms):
            rooms.add("id", room)
        return rooms

    def new_info(self):
        info = Node("info")
        info.add("id", self.queue_id)
        info.add("name", self.owner)
        return info

    def note_unlisted(self, line):
        """What is noted may change the list: the document shows what it holds after that."""
        noted = 0
        while noted < sum(media.type not in LISTED for media in self.songs):
            self.core.assert_write(QUEUE_SOURCE, line)
            noted += 1

    def get_info(self):
        self.note_unlisted(1180)
        info = self.new_info()
        songs = info.add("songs")
        for media in self.songs:
            song = songs.add("song")
            if media.type == DIGITAL:
                song.set("id", media.media_id)
            elif media.type == TRACK:
                song.set("id", media.external_id)
            elif media.type == CHANNEL:
                song.set("id", media.meta_data)
                song.set("station_id", media.external_id)
            song.set("source", self.source_of(media))
        return info

    def get_info_132(self):
        """Readers of this version take the songs from elsewhere: the list stays empty."""
        self.note_unlisted(1231)
        info = self.new_info()
        info.add("songs")
        return info

    def update_info_variable(self):
        if not self.is_closed:
            self.core.set_variable(1007, self.get_info().to_text())
        if not self.is_closed:  # it may end inside the first call
            self.core.set_variable(1005, self.get_info_132().to_text())

    def new_status(self):
        queue = Node("queue")
        queue.add("id", self.queue_id)
        queue.add("name", self.core.get_device_name(self.owner))
        if self.state in STATE_TEXTS:
            queue.add("state", STATE_TEXTS[self.state])
        return queue

    def get_status(self):
        queue = self.new_status()
        self.describe(queue.add("song"), self.current_media)
        try:
            following = self.peek_next_song()
        except OutOfRange:
            following = Media()  # one queue never spoils another's document
        self.describe(queue.add("next"), following)
        queue.add("index", self.status_index())
        queue.append(self.get_session_data())
        return queue

    def get_status_132(self):
        queue = self.new_status()
        if self.current_media.type in (TRACK, CHANNEL, RADIO):
            queue.add("item", NO_MEDIA_ID)
        else:
            queue.add("item", self.current_media.media_id)
        queue.add("index", NONE if self.current_index == NONE else self.status_index())
        queue.append(self.get_session_data())
        return queue

    def describe(self, element, media):
        if media.type == CHANNEL:
            element.set("id", media.meta_data)
            element.set("station_id", media.external_id)
        elif media.type == RADIO:
            element.set("id", media.meta_data)
        elif media.type == TRACK:
            element.set("id", media.external_id)
        else:
            element.set("id", media.media_id)
        element.set("source", self.source_of(media))

    def status_index(self):
        """Counts in the unshuffled list."""
        if not self.shuffle:
            return self.current_index
        wanted = Media() if self.current_index == NONE else self.current_media
        found = position(self.songs, wanted)
        return len(self.songs) if found is None else found
