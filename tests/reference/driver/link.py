"""The one way by which lines reach an audio server, and the endpoints that hold it open."""

from .constants import LINK_SOURCE

ACKNOWLEDGEMENT_MS = 5000
NO_CHANNEL = 0xFFFFFFFF


class Link:
    """Counted: the server, its queues and their room clients keep it, also when the server has gone."""

    def __init__(self, core, binding):
        self.core = core
        self.binding = binding
        self.references = 1
        self.counter = 0
        self.lines = []
        self.timer = 0  # of the line that is outstanding
        self.is_outstanding = False
        self.is_sending = False

    def add_ref(self):
        self.references += 1

    def release(self):
        self.references -= 1
        if self.references == 0:
            self.shut_down()

    def shut_down(self):
        """Nothing comes back from the timers any more; lines that were not sent are dropped."""
        self.core.remove_callback(self)
        self.lines = []

    def add_to_send_queue(self, text):
        self.lines.append("%d %s\r\n" % (self.counter, text))
        self.counter = (self.counter + 1) & 0xFFFF
        self.send_to_server()

    def send_to_server(self):
        """A line counts as outstanding before it is handed over: its answer may come inside the call."""
        if self.is_sending:
            return
        self.add_ref()  # the server may go inside a call
        while self.lines and not self.is_outstanding:
            self.is_sending = True
            self.is_outstanding = True
            self.core.send_bind_message(self.binding, self.lines.pop(0))
            if self.is_outstanding:
                self.timer = self.core.start_timer(ACKNOWLEDGEMENT_MS, 1, self)
                if self.timer == 0:
                    self.is_outstanding = False  # no timer: nothing would ever end the wait
            self.is_sending = False
        self.release()

    def kill_ack_timer(self):
        if not self.is_outstanding:
            return
        if self.timer != 0:
            self.core.cancel_timer(self.timer)
        self.timer = 0
        self.is_outstanding = False
        self.send_to_server()

    def on_timer_expired(self, timer_id):
        if timer_id == self.timer:
            self.timer = 0
            self.is_outstanding = False
        else:
            self.core.assert_write(LINK_SOURCE, 74)
        self.send_to_server()


class RoomClient:
    """The endpoint of one room's player."""

    def __init__(self, link, ip="", port=0, channel=NO_CHANNEL):
        self.link = link
        self.ip = ip
        self.port = port
        self.channel = channel
        link.add_ref()

    def close(self):
        self.link.release()

    def is_client_the_same(self, ip, channel, port):
        return self.ip == ip and self.channel == channel and self.port == port
