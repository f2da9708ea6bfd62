"""The driver: its start and end, its table of commands, and the ways into it."""

import functools

from core import DIGITAL_AUDIO_ID
from nodes import parse_document

from .commands_adding import AddingCommands
from .commands_editing import EditingCommands
from .commands_playlists import PlaylistCommands
from .commands_session import SessionCommands
from .commands_streams import StreamCommands
from .commands_transport import TransportCommands
from .constants import OutOfRange
from .history import History, RoomHistories
from .registry import Registry
from .room_settings import RoomSettings
from .routing import Routing
from .selection import Selection
from .settings import POLL_FLAGS, POLL_MS, Settings
from .status import Status

# Name, type, a, b, first value.
VARIABLES = (
    (1002, "ROOM_HISTORY", 13, "", 0, 0),
    (1003, "ROOM_QUEUE_SETTINGS", 13, "", 0, 0),
    (1004, "QUEUE_STATUS", 13, "", 1, 1),
    (1005, "QUEUE_INFO", 13, "", 1, 1),
    (1006, "QUEUE_STATUS_V2", 13, "", 1, 1),
    (1007, "QUEUE_INFO_V2", 13, "", 1, 1),
    (1008, "PLAY_PREFERENCE", 2, "0", 0, 1),
    (1009, "ROOM_MAP_INFO", 13, "", 1, 0),
)
FIRST_VALUES = (
    (1002, "<histories></histories>"),
    (1003, "<room_queue_settings></room_queue_settings>"),
    (1005, "<info></info>"),
    (1004, "<status></status>"),
    (1007, "<info></info>"),
    (1006, "<status></status>"),
    (1008, "0"),
)
REMOVED_VARIABLES = (1002, 1003, 1005, 1004, 1007, 1006, 1008, 1009)

COMMANDS = (
    ("GO_TO_SONG", "on_go_to_song"),
    ("EDIT_QUEUE", "on_edit_queue"),
    ("REMOVE_QUEUE", "on_remove_queue"),
    ("ADD_ROOMS_TO_SESSION", "on_add_rooms_to_session"),
    ("REMOVE_ROOMS_FROM_SESSION", "on_remove_rooms_from_session"),
    ("ADD_ALBUM_MP3", "on_add_album_mp3"),
    ("ADD_SONG", "on_add_song"),
    ("ADD_IR_STREAM", "on_add_ir_stream"),
    ("REMOVE_SONG", "on_remove_song"),
    ("ADD_SONG_LIST", "on_add_song_list"),
    ("ADD_ALBUM_LIST", "on_add_album_list"),
    ("SHUFFLE", "on_shuffle"),
    ("REPEAT", "on_repeat"),
    ("JOIN", "on_join"),
    ("REMOVE", "on_remove"),
    ("QUEUE_ALL", "on_queue_all"),
    ("GET_QUEUE_STATUS", "on_get_queue_status"),
    ("GET_QUEUE_STATUSV2", "on_get_queue_status_v2"),
    ("STOP", "on_stop"),
    ("PLAY", "on_play"),
    ("PAUSE", "on_pause"),
    ("SKIP_FWD", "on_skip_fwd"),
    ("SKIP_REV", "on_skip_rev"),
    ("ADD_PLAYLIST", "on_add_playlist"),
    ("SAVE_PLAYLIST", "on_save_playlist"),
    ("DELETE_PLAYLIST", "on_delete_playlist"),
    ("RENAME_PLAYLIST", "on_rename_playlist"),
    ("GET_ROOM_HISTORY", "on_get_room_history"),
    ("REQUEST_CURRENT_MEDIA_INFO", "on_request_current_media_info"),
    ("GET_SETTINGS", "on_get_settings"),
    ("SET_PLAYLIST_CLEAR_FLAG", "on_set_playlist_clear_flag"),
    ("SET_PLAYLIST_CLEAR_DELAY", "on_set_playlist_clear_delay"),
    ("SET_PLAY_PREFERENCE", "on_set_play_preference"),
    ("GET_RHAPSODY_MY_PLAYLISTS", "on_get_rhapsody_my_playlists"),
    ("UPDATE_SECONDARY_MEDIA_INFO", "on_update_secondary_media_info"),
)
HANDLERS = dict(COMMANDS)
INFO_REQUEST = "GET_QUEUE_INFO"

OUTPUT_TO_ROOM = (6, 15)  # a digital-audio output into the endpoint of a room


def create_driver(core):
    """The one driver: a second call gives the one that runs."""
    running = core.get_instance(DIGITAL_AUDIO_ID)
    return running if running is not None else Driver(core)


def entry(name, neutral=None):
    """A way into the driver: an exception ends the entry, not the core. What is to be freed waits for the outermost one."""

    def decorate(body):
        @functools.wraps(body)
        def guarded(self, *arguments):
            self.entries += 1
            try:
                return body(self, *arguments)
            except OutOfRange as error:
                self.core.log(3, "Exception in %s: %s" % (name, error))
                return neutral
            finally:
                self.entries -= 1
                while self.entries == 0 and self.to_free:
                    self.to_free.pop(0).free()

        return guarded

    return decorate


class Driver(
    Settings,
    Registry,
    Selection,
    Routing,
    RoomSettings,
    Status,
    History,
    TransportCommands,
    SessionCommands,
    AddingCommands,
    StreamCommands,
    EditingCommands,
    PlaylistCommands,
):
    def __init__(self, core):
        self.core = core
        self.device_id = 0
        self.has_rhapsody = False
        self.has_utilities = False
        self.entries = 0  # that the core is in, one inside the other
        self.to_free = []  # queues and servers that closed: the core may still be in a call of theirs
        self.histories = RoomHistories()
        self.init_settings()
        self.init_registry()
        self.init_room_settings()
        self.init_sessions()
        self.init_adding()
        self.init_streams()
        core.register_instance(DIGITAL_AUDIO_ID, self)
        for name, _handler in COMMANDS:
            core.register_cmd(name)
        core.register_ui(INFO_REQUEST)
        self.periodic_timer = core.add_timer(POLL_MS, POLL_FLAGS)

    @entry("Initialize", -1)
    def initialize(self, device_id, _config, persist):
        core = self.core
        self.device_id = device_id
        core.srand(core.time())
        if not core.has_service("StringX") or not core.has_service("KVMessage"):
            return -2
        self.has_utilities = True
        for identifier, name, type_code, value, a, b in VARIABLES:
            core.vm_add(identifier, name, type_code, value, a, b, "")
        for identifier, value in FIRST_VALUES:
            core.set_variable(identifier, value)
        self.restore_room_queue_settings(persist)
        core.set_variable(1009, "<info></info>")
        self.update_rooms_queue_settings_variable(None)
        self.has_rhapsody = core.rhapsody_create()
        if self.has_rhapsody:
            core.rhapsody_connect("127.0.0.1:5555")
            core.rhapsody_disable_offline_mode()
        core.add_dynamic_binding(
            2000, 5, True, "Digital Media Storage", "DIGITAL_MEDIA_STORAGE", True, True
        )
        if persist is not None:
            self.restore(persist)
        return 0

    def destroy(self):
        for identifier in REMOVED_VARIABLES:
            self.core.vm_remove(identifier)
        for timer_id in sorted(self.clear_timers):
            self.core.kill_timer(timer_id)
        for server in self.sorted_servers():
            server.close()
            server.link.shut_down()
        if self.has_rhapsody:
            self.core.rhapsody_destroy()
        self.servers = {}
        self.core.revoke_instance(DIGITAL_AUDIO_ID)
        # Nothing may call back into a driver that is gone, so links that outlived their servers end too.
        for link in self.left_links:
            link.shut_down()

    @entry("GetPersistState")
    def get_persist_state(self):
        return self.persist_state()

    @entry("ExecuteCommand", 0)
    def execute_command(self, message, ret, _source):
        if self.active_binding == 0:
            return 0
        handler = HANDLERS.get(message.name)
        if handler is None:
            return -1
        try:
            getattr(self, handler)(message, ret or ignore)
        except OutOfRange:
            if self.has_utilities:
                self.core.log(3, "Command failed: " + one_line(describe(message)))
            raise
        return 0

    @entry("UIRequest")
    def ui_request(self, message):
        if message.name == INFO_REQUEST:
            return self.on_get_queue_info(message)
        answers = [""]
        self.execute_command(message, answers.append, 0)
        return None if answers[-1] == "" else parse_document(answers[-1])

    @entry("TestCondition", False)
    def test_condition(self, message):
        if message.get("ROOM_ID") == "":
            return False
        in_session = self.queue_from_room(message.number("ROOM_ID")) is not None
        if message.name == "InSession":
            return in_session
        return message.name == "NotInSession" and not in_session

    @entry("BoundCall", 0)
    def bound_call(self, binding, message_type, message, data, xml, ret):
        self.bound_message(binding, message_type, message, data, xml, ret)
        return 0

    @entry("OnBindingChanged")
    def on_binding_changed(self, binding, _name, bound):
        self.binding_changed(binding, bound)

    @entry("OnAVSelected")
    def on_av_selected(self, selection, result):
        self.av_selected(selection, result)

    @entry("OnAVDeselected")
    def on_av_deselected(self, selection):
        self.av_deselected(selection.room)

    @entry("OnAVRoomOff")
    def on_av_room_off(self, room):
        self.av_room_off(room)

    @entry("OnAVAddLocationInfo")
    def on_av_add_location_info(self, selection):
        self.av_add_location_info(selection)

    def is_av_output_to_input_valid(self, output_type, input_type):
        return (output_type, input_type) == OUTPUT_TO_ROOM

    @entry("OnTimerExpired")
    def on_timer_expired(self, timer_id):
        self.timer_expired(timer_id)

    @entry("RC_Completed")
    def rc_playlists(self, playlists):
        self.playlists_completed(playlists)

    @entry("RC_Completed")
    def rc_playlist_tracks(self, track_ids):
        self.playlist_tracks_completed(track_ids)

    @entry("RC_Completed")
    def rc_tracks(self, tracks):
        self.tracks_completed(tracks)

    @entry("RC_ErrorHandler")
    def rc_error(self, code):
        self.rhapsody_failed(code)

    @entry("CreateAnnouncementStream")
    def create_announcement_stream(self):
        server = self.announcement_server()
        if server is not None:
            server.create_announcement()

    @entry("PlayAnnouncement")
    def play_announcement(self, path):
        if path == "":
            return
        server = self.announcement_server()
        if server is not None:
            server.play_announcement(path)
            self.update_room_map_info_variable()

    @entry("RemoveAnnouncementStream")
    def remove_announcement_stream(self):
        server = self.servers.get(self.active_binding)
        if server is not None:
            server.cancel_announcement()


def ignore(_text):
    """Stands for a return that nobody wants."""


def describe(message):
    return " ".join([message.name] + ["%s=%s" % (param[0], param[2]) for param in message.params])


def one_line(text):
    return "".join(" " if ord(letter) < 32 or ord(letter) == 127 else letter for letter in text)
