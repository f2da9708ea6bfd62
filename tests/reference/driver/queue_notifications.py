"""What a queue tells the device that registered for it, and its rooms."""

from nodes import Node
from text import base64_encode, u32

from .constants import NO_MEDIA_ID, STATE_NAMES
from .media import CHANNEL, DIGITAL, RADIO, TRACK


class QueueNotifications:
    """Part of the queue."""

    def init_notifications(self):
        self.notification_device = 0
        self.queue_info = ""
        self.stream_status = ""
        self.secondary = {"artist": "", "album": "", "title": "", "genre": "", "image": ""}

    def new_event(self, name):
        """None when nobody is registered, or when the core cannot make it."""
        if self.notification_device == 0 or self.is_closed:
            return None
        event = self.core.create_message(name)
        if event is not None:
            event.add("QUEUE_ID", "INT", str(self.queue_id))
            if self.queue_info != "":
                event.add("QUEUE_INFO", "STRING", self.queue_info)
        return event

    def notify_media_changed(self, text):
        event = self.new_event("QUEUE_MEDIA_INFO_UPDATED")
        if event is not None:
            event.add("MEDIA_INFO", "STRING", text)
            self.core.send_message(self.notification_device, event)

    def update_stream_status(self, status):
        if status == self.stream_status:
            return
        self.stream_status = status
        event = self.new_event("QUEUE_STREAM_STATUS_CHANGED")
        if event is not None:
            event.add("STATUS", "STRING", status)
            self.core.send_message(self.notification_device, event)

    def notify_queue_deletion(self):
        event = self.new_event("QUEUE_DELETED")
        if event is not None:
            event.add("LAST_QUEUE_STATE", "STRING", STATE_NAMES.get(self.state, ""))
            event.add("LAST_QUEUE_STATE_TIME", "INT", str(u32(self.core.time() - self.state_time)))
            self.core.send_message(self.notification_device, event)

    def clear_notifications(self):
        if self.notification_device != 0:
            self.notify_queue_deletion()
            self.notification_device = 0
        self.queue_info = ""

    def update_secondary_info(self, merge, artist, album, title, genre, image):
        """None for a text that is not given."""
        given = {"artist": artist, "album": album, "title": title, "genre": genre, "image": image}
        for name, text in given.items():
            if text is not None:
                self.secondary[name] = text
            elif not merge:
                self.secondary[name] = ""
        return True

    def update_current_song_meta_data(self, text):
        if not self.songs:
            return False
        self.current_media.meta_data = text
        self.songs[0].meta_data = text
        self.secondary["title"] = text
        return True

    def update_room_media_variable(self, media, track, force):
        if self.is_closed:
            return
        info = self.media_info(media, track).to_text()
        message = self.core.create_message("UPDATE_MEDIA_INFO")
        if message is not None:
            message.add("MEDIA_INFO", "STRING", info)
            if force:
                message.add("FORCE", "BOOLEAN", "true")
            for room in sorted(self.rooms):
                if room in self.rooms and not self.is_closed:  # not gone inside an earlier call
                    self.core.send_message(room, message)
        self.notify_media_changed(info)

    def media_info(self, media, track):
        info = Node("mediainfo")
        info.add("deviceid", self.device_id)
        info.add("queueid", self.queue_id)
        info.add("source", self.source_of(media))
        if media.type == DIGITAL:
            self.describe_digital(info, media)
        elif media.type == TRACK:
            self.describe_track(info, media, track)
        elif media.type == CHANNEL:
            self.describe_channel(info, media, track)
        elif media.type == RADIO:
            self.describe_radio(info, media)
        return info

    def describe_digital(self, info, media):
        info.add("mediaid", media.media_id)
        info.add("mediatype", "SONG")
        if media.media_id == 0:
            info.add("display")
        elif self.is_radio:
            self.describe_station(info, media)
        else:
            self.describe_song(info, media)

    def describe_song(self, info, media):
        record = self.core.get_media_record(media.media_id, "SONG")
        if record is None:
            return
        if record.find("album_title") is not None:
            info.add("album", record.value("album_title"))
        if record.find("artist") is not None:
            info.append(record.find("artist"))
        if record.find("name") is not None:
            info.add("title", record.value("name"))
        if record.find("img") is not None:
            info.add("img", base64_encode(record.value("img")))

    def describe_station(self, info, media):
        info.add("mediatypeV2", "INTERNET_MEDIA")
        record = self.core.get_media_record(media.media_id, "BROADCAST_AUDIO")
        if record is None:
            return
        if media.meta_data != "":
            info.add("mediaidV2", media.meta_data)
            info.add("title", media.meta_data)
        if record.find("name") is not None:
            info.add("channel", record.value("name"))
        if record.find("genre") is not None:
            info.add("genre", base64_encode(record.value("genre")))
        if record.find("img") is not None:
            info.add("img", base64_encode(record.value("img")))

    def describe_track(self, info, media, track):
        info.add("mediaid", NO_MEDIA_ID)
        info.add("mediaidV2", media.external_id)
        info.add("mediatype", "SONG")
        info.add("mediatypeV2", "RHAPSODY")
        if media.external_id == "":
            info.add("display")
        elif track is not None:
            describe_service_track(info, track)
        elif self.has_rhapsody:
            self.core.rhapsody_get_current_song_info(media.external_id, 0)

    def describe_channel(self, info, media, track):
        info.add("mediaid", NO_MEDIA_ID)
        info.add("mediaidV2", media.meta_data)
        info.add("mediatype", "SONG")
        info.add("mediatypeV2", "RHAPSODY_CHANNEL")
        info.add("stationid", media.external_id)
        if media.external_id == "":
            info.add("display")
        elif track is not None:
            describe_service_track(info, track)
        elif self.has_rhapsody and media.meta_data != "":
            self.core.rhapsody_get_current_song_info(media.meta_data, 0)

    def describe_radio(self, info, media):
        secondary = self.secondary
        info.add("mediatype", "SONG")
        info.add("mediatypeV2", "GENERIC_MEDIA")
        info.add("medSrcDev", media.extra)
        info.add("stationid", media.external_id)
        if self.queue_info != "":
            info.add("queueInfo", self.queue_info)
        info.add("album", secondary["album"])
        info.add("artist", secondary["artist"])
        info.add("title", secondary["title"])
        info.add("channel")
        if secondary["genre"] != "":
            info.add("genre", base64_encode(secondary["genre"]))
        if secondary["image"] != "":
            info.add("img", base64_encode(secondary["image"]))


def describe_service_track(info, track):
    info.add("album", track.album)
    info.add("artist", track.artist)
    info.add("title", track.name)
    info.add("img", base64_encode(track.image))
