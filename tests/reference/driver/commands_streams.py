"""Internet radio, the streaming service, and what others know about a stream."""

from nodes import Node
from text import is_true, to_long, to_ulong

from .commands_session import queue_id_element
from .media import RADIO, TRACK, Media

TEXTS = ("artist", "album", "title", "genre", "imageUrl")


class StreamCommands:
    """Part of the driver."""

    def init_streams(self):
        self.playlists_device = 0

    def on_add_ir_stream(self, message, ret):
        if message.get("ROOM_ID") == "":
            return
        room = message.number("ROOM_ID")
        queue, created = self.create_queue(room)
        if queue is None:
            return
        device = message.number("DEVICE_ID")
        if queue.notification_device not in (0, device):
            queue.clear_notifications()
        queue.notification_device = device
        queue.queue_info = message.get("QUEUE_INFO")
        self.attach_room(room, queue)

        media = Media(RADIO)
        if message.get("MEDIA_ID") != "":
            media.media_id = message.number("MEDIA_ID")
        elif message.get("MEDIA") != "":
            media.external_id = message.get("MEDIA")
        else:
            self.core.log(3, "korvel_digitalaudio::OnAddIRSTREAM called with no station or media id")
            return
        queue.update_secondary_info(False, None, None, None, None, None)
        queue.set_is_radio(True)
        queue.add_song(media, False, True)
        self.interrupt_clear_timer(queue)
        if not queue.shuffle:
            queue.set_next_song(media)
        if not created:
            queue.play_next_song(True, False)
        self.update_queue_status_variable()
        queue.update_info_variable()
        ret(queue_id_element(queue.queue_id))

    def on_get_rhapsody_my_playlists(self, message, _ret):
        if message.get("deviceid") == "" or not self.has_rhapsody:
            return
        self.playlists_device = message.number("deviceid")
        self.core.rhapsody_get_member_playlists()

    def on_update_secondary_media_info(self, message, _ret):
        if message.has("roomId"):
            queue = self.queue_from_room(message.number("roomId"))
        elif message.has("queueId"):
            queue = self.queue_from_id(message.number("queueId"))
        else:
            queue = None
        if queue is None:
            return
        merge, force = is_set(message.get("merge")), is_set(message.get("force"))
        given = [message.get(name) if message.has(name) else None for name in TEXTS]
        queue.update_secondary_info(merge, *given)
        queue.update_room_media_variable(queue.get_first_song(), None, force)
        queue.update_info_variable()
        self.update_queue_status_variable()

    # What the streaming service answers.

    def playlists_completed(self, playlists):
        document = Node("RhapsodyPlaylists")
        for playlist_id, name in playlists:
            playlist = document.add("Playlist")
            playlist.add("PlaylistId", playlist_id)
            playlist.add("Name", name)
        self.core.send_data_to_device(self.playlists_device, document)

    def tracks_completed(self, tracks):
        if not tracks:
            return
        track = tracks[0]
        if track.context != "":
            queue = self.queue_from_id(to_ulong(track.context))
            if queue is not None:
                queue.update_current_song_meta_data(track.id)
                self.tell_track(queue, queue.get_first_song(), track)
            return
        for server in self.sorted_servers():
            queue = server.next_queue(0)
            while queue is not None:
                current = queue.get_current_media()
                if current.type == TRACK and current.external_id == track.id:
                    queue.update_current_song_meta_data(track.id)
                    self.tell_track(queue, queue.get_current_media(), track)
                queue = server.next_queue(queue.queue_id)

    def tell_track(self, queue, media, track):
        queue.update_room_media_variable(media, track, False)
        queue.update_info_variable()
        self.update_queue_status_variable()

    def rhapsody_failed(self, code):
        self.core.log(7, "Error %d from rhapsody call" % code)


def is_set(text):
    return is_true(text) or to_long(text) != 0
