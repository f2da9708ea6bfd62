"""The settings, the persisted element, the clear timers and the poll of channels."""

from nodes import Node
from text import FALSE_STRING, i32, is_true, lower, to_long, to_text, to_ulong

from .constants import PAUSE, PLAY

CLEAR_DELAY_MINUTES = 5
SHORTEST_DELAY_MS = 100
KEEPS_QUEUES = 24  # the model of controller that never clears a queue
POLL_MS = 10000
POLL_FLAGS = 17
ONCE = 1


class Settings:
    """Part of the driver."""

    def init_settings(self):
        self.clear_playlist = True
        self.clear_delay_minutes = CLEAR_DELAY_MINUTES
        self.play_preference = 0
        self.clear_timers = {}  # timer id -> queue

    # Commands.

    def on_get_settings(self, _message, _ret):
        self.send_settings_to_ui()

    def on_set_playlist_clear_flag(self, message, _ret):
        value = message.get("FLAG_VALUE")
        if value == "":
            return
        self.clear_playlist = is_true(value)
        self.send_settings_to_ui()
        for server in self.sorted_servers():
            server.clear_playlist = self.clear_playlist

    def on_set_playlist_clear_delay(self, message, _ret):
        value = message.get("DELAY_VALUE")
        if value == "":
            return
        self.clear_delay_minutes = to_ulong(value) & 0xFFFF
        self.send_settings_to_ui()

    def on_set_play_preference(self, message, _ret):
        value = message.get("PLAY_PREF")
        if value != "":
            self.update_play_preference_variable(to_long(value))

    def update_play_preference_variable(self, preference):
        self.play_preference = preference
        self.core.set_variable(1008, str(preference))

    # Documents.

    def send_settings_to_ui(self):
        settings = Node("DigitalAudioSettings")
        self.append_settings(settings)
        self.core.send_data_to_ui(settings)

    def append_settings(self, parent):
        parent.add("ClearPlayList", to_text(self.clear_playlist))
        parent.add("ClearPlayListDelay", self.clear_delay_minutes)
        parent.add("PlayPreference", self.play_preference)

    def persist_state(self):
        root = Node("korvel_digital_audio")
        root.add("lastserverid", self.last_server_binding)
        root.add("lastmediaid", self.last_media_binding)
        self.append_settings(root)
        self.update_rooms_queue_settings_variable(root)
        return root

    def restore(self, persist):
        if persist.find("lastserverid") is not None:
            self.last_server_binding = to_ulong(persist.value("lastserverid"))
        if persist.find("lastmediaid") is not None:
            self.last_media_binding = to_ulong(persist.value("lastmediaid"))
        self.restore_dynamic_bindings()
        # Whatever is not "false" counts as true here, unlike in the command.
        self.clear_playlist = lower(persist.value("ClearPlayList")) != FALSE_STRING
        if persist.find("PlayPreference") is not None:
            self.update_play_preference_variable(to_long(persist.value("PlayPreference")))
        if persist.find("ClearPlayListDelay") is not None:
            self.clear_delay_minutes = to_ulong(persist.value("ClearPlayListDelay")) & 0xFFFF

    # Timers.

    def start_clear_timer(self, queue):
        interval = 60000 * self.clear_delay_minutes
        if interval == 0:
            interval = SHORTEST_DELAY_MS
        timer_id = self.core.add_timer(interval, ONCE)
        if queue.is_closed:  # it ended inside the call: nothing is left to clear
            self.core.kill_timer(timer_id)
        else:
            self.clear_timers.setdefault(timer_id, queue)

    def interrupt_clear_timer(self, queue):
        ended = [timer_id for timer_id in sorted(self.clear_timers) if self.clear_timers[timer_id] is queue]
        for timer_id in ended:
            self.clear_timers.pop(timer_id, None)  # a call inside an earlier one may have interrupted it as well
            self.core.kill_timer(timer_id)

    def timer_expired(self, timer_id):
        queue = self.clear_timers.get(timer_id)
        if queue is not None:
            if queue.state in (PLAY, PAUSE):
                self.core.log(
                    3,
                    "Clear timer fired but queue is in play or pause state - should be at STOP or END"
                    " state.  Probable cause is media added and timer not cleared!",
                )
            elif self.core.system_type() != KEEPS_QUEUES:
                self.deselect_all(queue)
        if timer_id == self.periodic_timer:
            self.poll_channels()

    def poll_channels(self):
        for server in self.sorted_servers():
            queue = server.next_queue(0)
            while queue is not None:
                if queue.is_channel and not queue.stopped_by_errors and self.has_rhapsody:
                    self.core.rhapsody_get_current_song_info(str(queue.queue_id), i32(queue.stream_id))
                queue = server.next_queue(queue.queue_id)
