"""The core that a replayed driver runs in: deterministic, and every call that leaves a mark is taken down."""

from core import Core
from messages import Message
from world import media
from world.live import LiveWorld
from world.recorder import Recorder
from world.time import ENDLESS, RandomSource, TimerQueue, VirtualClock
from world.words import format_pair, mask_addresses

DRIVER_DEVICE = 100002
TIMER_FLAG_PERIODIC = 16
SERVICES = ("RhapsodyClient", "StringX", "KVMessage", "AnnouncementNotifier")
# What servers and queues keep from their beginning on.
KEPT_SERVICES = ("TimerManager", "RoomService", "BindMessageSender")
OPERATIONS = (
    "CreatePlaylist",
    "AddMedia",
    "AddSongToPlaylist",
    "SongLocation",
    "CreateMessage",
    "CreateBindMessage",
    "StartTimer",
    "CreateClient",
)


def _list_items(items):
    """Songs as their ids with commas, any other item as TYPE:externalId."""
    return ",".join(
        str(item.media_id) if item.type == media.SONG_TYPE else f"{item.type}:{item.external_id}" for item in items
    )


class _AnalogSource:
    """A room that can take its audio from the analog output of another device."""

    def __init__(self, world, room):
        self._world = world
        self._room = room

    def take_source_device(self, device):
        self._world.recorder.output("analog", self._room, "TakeSourceDevice", device)

    def devices(self):
        self._world.recorder.output("analog", self._room, "GetDevicesInAnalogSource")
        return list(self._world.analog_sources[self._room])

    def select_device(self, device):
        self._world.recorder.output("analog", self._room, "SelectDevice", device)


class World(Core):
    def __init__(self):
        self.recorder = Recorder()
        self.clock = VirtualClock()
        self.timers = TimerQueue()
        self.random = RandomSource()
        self.live = LiveWorld()
        self.media = media.MediaDatabase()
        self.instances = {}
        self.system_type_code = 0
        self.local_addresses = {"127.0.0.1"}
        self.names = {}
        self.mp3_lists = {}
        self.analog_sources = {}  # by room, the devices on the way
        self.replies = {}  # by device and message name
        self.missing = set()  # services
        self.failing = set()  # operations
        self.inside_calls = []  # [(output, input)] that wait for such an output
        self.has_rhapsody_client = False

    def _out(self, name, *words, text=None):
        self.recorder.output(name, *words, text=text)

    # The driver among the core's instances, and the services that may be missing.

    def get_instance(self, identifier):
        return self.instances.get(identifier)

    def register_instance(self, identifier, instance):
        self.instances[identifier] = instance

    def revoke_instance(self, identifier):
        self.instances.pop(identifier, None)

    def has_service(self, name):
        return name not in self.missing

    def register_cmd(self, name):
        self._out("register", name)

    def register_ui(self, name):
        self._out("register-ui", name)

    # The machine.

    def time(self):
        return self.clock.wall()

    def monotonic(self):
        return self.clock.monotonic()

    def rand(self):
        return self.random.take()

    def srand(self, seed):
        """A run must not depend on what a driver seeds with."""

    def system_type(self):
        return self.system_type_code

    def is_local_ipv4(self, address):
        return address in self.local_addresses

    def log(self, level, text):
        self._out("log", level, text=mask_addresses(text))

    def log_debug(self, text):
        self._out("debug", text=mask_addresses(text))

    def assert_write(self, path, line):
        self._out("assert", path, line)

    # Variables, events, bindings.

    def vm_add(self, identifier, name, type_code, value, a, b, extra):
        self._out("vmadd", identifier, name, type_code, a, b, text=value)

    def vm_remove(self, identifier):
        self._out("vmremove", identifier)

    def set_variable(self, identifier, text):
        self._out("set", identifier, text=text)

    def fire_event(self, identifier):
        self._out("event", identifier)

    def add_dynamic_binding(self, identifier, type_code, flag1, name, class_name, flag2, flag3):
        self._out("binding", identifier, type_code, flag1, name, class_name, flag2, flag3)

    def invalidate_state(self):
        self._out("invalidate")

    # Timers.

    def _start(self, milliseconds, count, callback):
        timer_id = self.timers.start(self.clock.elapsed, milliseconds, count, callback)
        self._out("timer", timer_id, milliseconds)
        return timer_id

    def add_timer(self, milliseconds, flags):
        return self._start(milliseconds, ENDLESS if flags & TIMER_FLAG_PERIODIC else 1, None)

    def kill_timer(self, timer_id):
        self.cancel_timer(timer_id)

    def start_timer(self, milliseconds, count, callback):
        if callback is None or count == 0:
            self.recorder.fault("a timer without a callback, or that never expires")
        if "StartTimer" in self.failing or not self.has_service("TimerManager"):
            return 0
        return self._start(milliseconds, count or 1, callback)

    def cancel_timer(self, timer_id):
        if timer_id != 0:
            self._out("timer-stop", timer_id)
            self.timers.stop(timer_id)

    def remove_callback(self, callback):
        for timer_id in self.timers.stop_all_of(callback):
            self._out("timer-stop", timer_id)

    # Messages and data.

    def create_message(self, name):
        return None if "CreateMessage" in self.failing else Message(name)

    def send_message(self, device, message):
        params = [format_pair(f"{name}:{kind}", value) for name, kind, value in message.params]
        self.recorder.output_pairs("message", [device, message.name], params)
        self.live.on_message(device, message)
        return self.replies.get((device, message.name), "")

    def send_bind_message(self, binding, line):
        if "CreateBindMessage" in self.failing or not self.has_service("BindMessageSender"):
            return
        self._out("send", binding, line)
        self.live.on_line(binding, line)

    def get_device_name(self, device):
        return self.names.get(device, "")

    def send_data_to_ui(self, node):
        self._out("ui", text=node.to_text())

    def send_data_to_device(self, device, node):
        self._out("ui-device", device, text=node.to_text())

    def queue_ended(self, code, room_code):
        if self.has_service("RoomService"):
            self._out("room-service", code, room_code)

    def announcement_stream_ready(self):
        self._out("announcement", "ready")

    def announcement_complete(self):
        self._out("announcement", "complete")

    # Interfaces of devices.

    def mp3_devices(self, device):
        return self.mp3_lists.get(device)

    def analog_source(self, device):
        return _AnalogSource(self, device) if device in self.analog_sources else None

    # The streaming service's client.

    def rhapsody_create(self):
        self.has_rhapsody_client = self.has_service("RhapsodyClient") and "CreateClient" not in self.failing
        return self.has_rhapsody_client

    def rhapsody_destroy(self):
        self.has_rhapsody_client = False

    def rhapsody_connect(self, address):
        self._out("rhapsody", "Connect", address)

    def rhapsody_disable_offline_mode(self):
        self._out("rhapsody", "DisableOfflineMode")

    def rhapsody_get_member_playlists(self):
        self._out("rhapsody", "GetMemberPlaylists")

    def rhapsody_get_tracks_for_playlist(self, playlist_id, offset, count, flags):
        self._out("rhapsody", "GetTracksForPlaylist", playlist_id, offset, count, flags)

    def rhapsody_get_current_song_info(self, identifier, stream):
        self._out("rhapsody", "GetCurrentSongInfo", identifier, stream)

    # The media database. An operation that changes it is taken down also when it is told to fail: it was tried.

    def _guarded(self, operation, failed, body):
        try:
            return body()
        except media.DatabaseError as error:
            self.log(3, f"Exception in MediaDatabase::{operation}: {error}")
            return failed

    def get_location(self, media_id, category):
        if category == "SONG" and "SongLocation" in self.failing:
            return None
        return self.media.get_location(media_id, category)

    def get_storage_device(self, media_id):
        return self.media.get_storage_device(media_id)

    def get_album_info(self, album_id):
        return self.media.get_album_info(album_id)

    def get_media_record(self, media_id, category):
        return self.media.get_media_record(media_id, category)

    def get_media_list(self, device, category, filter1, filter2, first, count):
        return self.media.get_media_list(device, category, filter1, filter2, first, count)

    def get_songs_for_albums(self, album_ids, device_ids):
        return self.media.get_songs_for_albums(album_ids, device_ids)

    def get_songs_by_artist(self, device_ids, artist):
        return self.media.get_songs_by_artist(device_ids, artist)

    def get_songs_by_genre(self, device_ids, genre):
        return self.media.get_songs_by_genre(device_ids, genre)

    def get_songs_by_artist_and_genre(self, device_ids, artist, genre):
        return self.media.get_songs_by_artist_and_genre(device_ids, artist, genre)

    def get_playlist_songs(self, playlist_id):
        return self.media.get_playlist_songs(playlist_id)

    def get_playlist_name(self, playlist_id):
        return self.media.get_playlist_name(playlist_id)

    def create_playlist(self, device, name, items):
        self._out("media", "CreatePlaylist", device, name, _list_items(items))
        if "CreatePlaylist" in self.failing:
            return 0
        return self._guarded("CreatePlaylist", 0, lambda: self.media.create_playlist(device, name, items))

    def update_playlist(self, playlist_id, items):
        self._out("media", "UpdatePlaylist", playlist_id, _list_items(items))
        return self._guarded("UpdatePlaylist", media.FAILED, lambda: self.media.update_playlist(playlist_id, items))

    def delete_playlist(self, playlist_id):
        self._out("media", "DeletePlaylist", playlist_id)
        return self.media.delete_playlist(playlist_id)

    def add_media(self, device, description, media_filter, name, replace):
        self._out("media", "AddMedia", device, description, media_filter, name, replace)
        if "AddMedia" in self.failing:
            return media.FAILED, 0
        return self._guarded(
            "AddMedia", (media.FAILED, 0), lambda: self.media.add_media(device, description, name, replace)
        )

    def add_song_to_playlist(self, playlist_id, song_id, position):
        self._out("media", "AddSongToPlaylist", playlist_id, song_id, position)
        if "AddSongToPlaylist" in self.failing:
            return media.FAILED
        return self._guarded(
            "AddSongToPlaylist",
            media.FAILED,
            lambda: self.media.add_song_to_playlist(playlist_id, song_id, position),
        )
