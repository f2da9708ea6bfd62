"""One play queue: songs that one stream plays into one or more rooms."""

from .constants import STOP
from .packets import PacketQueue
from .queue_documents import QueueDocuments
from .queue_navigation import QueueNavigation
from .queue_notifications import QueueNotifications
from .queue_playback import QueuePlayback
from .queue_rooms import QueueRooms
from .queue_songs import QueueSongs


class AudioQueue(
    QueueSongs, QueueNavigation, QueuePlayback, QueueRooms, QueueDocuments, QueueNotifications
):
    def __init__(self, driver, link, queue_id, owner, has_rhapsody):
        self.driver = driver
        self.core = driver.core
        self.device_id = driver.device_id
        self.link = link
        self.queue_id = queue_id
        self.has_rhapsody = has_rhapsody
        self.packets = PacketQueue(link)
        self.is_closed = False
        self.init_songs()
        self.init_navigation()
        self.init_playback()
        self.init_rooms(owner)
        self.init_notifications()
        link.add_ref()

    def close(self):
        """Its end, told to whoever registered. Whatever is still under way in it sends nothing more."""
        self.change_queue_state(STOP)
        self.notify_queue_deletion()
        self.is_closed = True
        self.packets.close()
        for client in self.rooms.values():
            client.close()
        self.rooms = {}
        self.driver.to_free.append(self)

    def free(self):
        self.link.release()

    def leave_behind(self):
        """Its server has gone: it says nothing any more, not even that it ended. Its rooms stay."""
        self.is_closed = True
        self.packets.close()
