"""What the driver meets outside of itself: the core that loads it, with all its services.

Conventions, for both sides:
- A text is a `str` in which every character is one byte (0 to 255, read and written as Latin-1), so that
  lengths and comparisons are those of bytes.
- Numbers are Python integers within 32 bits, unsigned unless a docstring says otherwise.
- An element is a `nodes.Node`, a message or command a `messages.Message`.

The driver's side is `driver.frame.Driver`, made by `driver.frame.create_driver(core)`; its entries, each of
which returns normally whatever happens inside:

    create_driver(core) -> Driver                    the running one when there is one
    initialize(device_id, config, persist) -> int    signed; config is a Node, persist a Node or None
    destroy()
    get_persist_state() -> Node
    execute_command(message, ret, source) -> int     signed; ret is a callable that takes a text, or None
    ui_request(message) -> Node or None
    test_condition(message) -> bool                  the condition's name and parameters as a Message
    bound_call(binding, message_type, message, data, xml, ret) -> int
                                                     message: name and parameters; xml: Node or None
    on_binding_changed(binding, name, bound)
    on_av_selected(selection, result)                an AVSelection, and an AVResult that it fills
    on_av_deselected(selection)
    on_av_room_off(room)
    on_av_add_location_info(selection)               fills selection.location
    is_av_output_to_input_valid(output_type, input_type) -> bool
    on_timer_expired(timer_id)                       a timer of add_timer expired
    rc_playlists(playlists)                          [(id, name)]
    rc_playlist_tracks(track_ids)                    [id]
    rc_tracks(tracks)                                [Track]
    rc_error(code)                                   signed
    create_announcement_stream(), play_announcement(path), remove_announcement_stream()
"""

from dataclasses import dataclass, field

DIGITAL_AUDIO_ID = "{3C11AB22-A8E6-45c7-9C22-1EC400C6AF45}"


@dataclass
class MediaItem:
    """One entry of a list of media as the database keeps it."""

    type: int = 0  # signed; 1 is a song of the database
    external_id: str = ""
    media_id: int = 0
    extra: int = 0


@dataclass
class Track:
    """What the streaming service tells about one track."""

    id: str = ""
    context: str = ""
    album: str = ""
    artist: str = ""
    name: str = ""
    image: str = ""


@dataclass
class AVSelection:
    """Who selects what, where."""

    room: int = 0
    queue: int = 0
    kind: str = ""
    source: int = 0
    binding: int = 0
    ip: str = ""
    port: int = 0
    channel: int = 0
    input: str = ""
    media: list = field(default_factory=list)
    target: int = 0
    location_kind: str = ""
    location: str = ""


@dataclass
class AVResult:
    """What a room ended in; shown only when handled."""

    handled: bool = False
    queue: int = 0
    media: int = 0
    kind: str = ""


class Core:
    """The outside world as the driver calls it."""

    # The driver among the core's instances.

    def get_instance(self, identifier):
        """What is registered under the identifier, or None."""
        raise NotImplementedError

    def register_instance(self, identifier, instance):
        """Registers the driver under the identifier."""
        raise NotImplementedError

    def revoke_instance(self, identifier):
        """Takes it back."""
        raise NotImplementedError

    def has_service(self, name):
        """Whether "RhapsodyClient", "StringX", "KVMessage" or "AnnouncementNotifier" is there now."""
        raise NotImplementedError

    def register_cmd(self, name):
        """The driver answers this command."""
        raise NotImplementedError

    def register_ui(self, name):
        """The driver answers this request of user interfaces."""
        raise NotImplementedError

    # The machine.

    def time(self):
        """Wall clock, seconds, wrapping at 32 bits."""
        raise NotImplementedError

    def monotonic(self):
        """Monotonic clock: whole milliseconds wrapped to 32 bits, as seconds * 1000 + nanoseconds / 1000000."""
        raise NotImplementedError

    def rand(self):
        """The next random number, 0 to 2147483647."""
        raise NotImplementedError

    def srand(self, seed):
        """Seeds the generator (a replayed world ignores it)."""
        raise NotImplementedError

    def system_type(self):
        """The model code of the controller."""
        raise NotImplementedError

    def is_local_ipv4(self, address):
        """Whether the address is one of this controller's."""
        raise NotImplementedError

    def log(self, level, text):
        """A log line; addresses in it are masked by the world."""
        raise NotImplementedError

    def log_debug(self, text):
        """A debug line; addresses in it are masked by the world."""
        raise NotImplementedError

    def assert_write(self, path, line):
        """An assertion record."""
        raise NotImplementedError

    # Variables, events, bindings.

    def vm_add(self, identifier, name, type_code, value, a, b, extra):
        """Adds a driver variable (a and b are signed)."""
        raise NotImplementedError

    def vm_remove(self, identifier):
        """Removes a driver variable."""
        raise NotImplementedError

    def set_variable(self, identifier, text):
        """Sets a driver variable, whichever service carries it."""
        raise NotImplementedError

    def fire_event(self, identifier):
        """Fires an event of the driver."""
        raise NotImplementedError

    def add_dynamic_binding(self, identifier, type_code, flag1, name, class_name, flag2, flag3):
        """Offers a binding."""
        raise NotImplementedError

    def invalidate_state(self):
        """Asks the core to fetch the persisted element again."""
        raise NotImplementedError

    # Timers: one sequence of ids, from 1.

    def add_timer(self, milliseconds, flags):
        """A timer of the driver (flag 16: repeats); its expiry is Driver.on_timer_expired(id)."""
        raise NotImplementedError

    def kill_timer(self, timer_id):
        """Stops a timer of add_timer; shown also when it has expired already, not for id 0."""
        raise NotImplementedError

    def start_timer(self, milliseconds, count, callback):
        """A timer whose expiry is callback.on_timer_expired(id)."""
        raise NotImplementedError

    def cancel_timer(self, timer_id):
        """Stops a timer of start_timer; shown also when it has expired already, not for id 0."""
        raise NotImplementedError

    def remove_callback(self, callback):
        """Stops every running timer of the callback (the very object), each shown, by ascending id."""
        raise NotImplementedError

    # Messages and data.

    def create_message(self, name):
        """A new messages.Message without parameters; None when the core cannot make one."""
        raise NotImplementedError

    def send_message(self, device, message):
        """Sends a message or command to a room or device; returns its reply text, "" for none."""
        raise NotImplementedError

    def send_bind_message(self, binding, line):
        """Sends one complete line, its line end included, to an audio server."""
        raise NotImplementedError

    def get_device_name(self, device):
        """The name of a room or device, "" for none."""
        raise NotImplementedError

    def send_data_to_ui(self, node):
        """Data for all user interfaces, whichever service carries it."""
        raise NotImplementedError

    def send_data_to_device(self, device, node):
        """Data for one device."""
        raise NotImplementedError

    def queue_ended(self, code, room_code):
        """Tells the room service that a room's queue ended."""
        raise NotImplementedError

    def announcement_stream_ready(self):
        """Tells the announcement notifier; called only when it is there."""
        raise NotImplementedError

    def announcement_complete(self):
        """Tells the announcement notifier; called only when it is there."""
        raise NotImplementedError

    # Interfaces of devices.

    def mp3_devices(self, device):
        """The list of ids that the device's storage interface gives; None without such an interface."""
        raise NotImplementedError

    def analog_source(self, device):
        """The room's analog-source interface or None: take_source_device(id), devices(), select_device(id)."""
        raise NotImplementedError

    # The streaming service's client: one at a time; its answers come to the driver's rc_... entries.

    def rhapsody_create(self):
        """Makes the client; False when there is no such service."""
        raise NotImplementedError

    def rhapsody_destroy(self):
        """Destroys it: no answers come from now on."""
        raise NotImplementedError

    def rhapsody_connect(self, address):
        """Connect."""
        raise NotImplementedError

    def rhapsody_disable_offline_mode(self):
        """DisableOfflineMode."""
        raise NotImplementedError

    def rhapsody_get_member_playlists(self):
        """GetMemberPlaylists."""
        raise NotImplementedError

    def rhapsody_get_tracks_for_playlist(self, playlist_id, offset, count, flags):
        """GetTracksForPlaylist."""
        raise NotImplementedError

    def rhapsody_get_current_song_info(self, identifier, stream):
        """GetCurrentSongInfo; the stream is signed."""
        raise NotImplementedError

    # The media database. Categories: "SONG", "BROADCAST_AUDIO", "ALBUM", "PLAYLIST" and their other names.

    def get_location(self, media_id, category):
        """The place of a media; None when the query fails."""
        raise NotImplementedError

    def get_storage_device(self, media_id):
        """The device that stores a song, 0 when unknown."""
        raise NotImplementedError

    def get_album_info(self, album_id):
        """The album's Node, or None."""
        raise NotImplementedError

    def get_media_record(self, media_id, category):
        """The record's Node, or None."""
        raise NotImplementedError

    def get_media_list(self, device, category, filter1, filter2, first, count):
        """The list's Node, or None (first and count are signed)."""
        raise NotImplementedError

    def get_songs_for_albums(self, album_ids, device_ids):
        """[MediaItem]"""
        raise NotImplementedError

    def get_songs_by_artist(self, device_ids, artist):
        """[MediaItem]"""
        raise NotImplementedError

    def get_songs_by_genre(self, device_ids, genre):
        """[MediaItem]"""
        raise NotImplementedError

    def get_songs_by_artist_and_genre(self, device_ids, artist, genre):
        """[MediaItem]"""
        raise NotImplementedError

    def get_playlist_songs(self, playlist_id):
        """[MediaItem]"""
        raise NotImplementedError

    def get_playlist_name(self, playlist_id):
        """The title, "" when there is no such playlist."""
        raise NotImplementedError

    def create_playlist(self, device, name, items):
        """The new playlist's id, 0 on failure; items are [MediaItem]."""
        raise NotImplementedError

    def update_playlist(self, playlist_id, items):
        """Replaces the songs of a playlist."""
        raise NotImplementedError

    def delete_playlist(self, playlist_id):
        """Deletes a playlist."""
        raise NotImplementedError

    def add_media(self, device, description, media_filter, name, replace):
        """(result, new id): the result is signed, 0 on success."""
        raise NotImplementedError

    def add_song_to_playlist(self, playlist_id, song_id, position):
        """Signed, 0 on success."""
        raise NotImplementedError
