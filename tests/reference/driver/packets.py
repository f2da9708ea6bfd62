"""What is told to an audio server, and the packets of one stream that wait until the stream is known."""

from .constants import NONE, PAUSE, PLAY
from .media import CHANNEL, DIGITAL, RADIO, TRACK


class Packet:
    """A command that needs no stream."""

    needs_stream = False
    adds_media = False

    def __init__(self, text):
        self._text = text

    def text(self, _stream):
        return self._text


class StreamPacket:
    """A command for one stream; `{0}` in its arguments stands for the stream as well."""

    needs_stream = True

    def __init__(self, command, arguments="", adds_media=False):
        self.command = command
        self.arguments = arguments
        self.adds_media = adds_media

    def text(self, stream):
        if stream == NONE:
            return ""
        return "%s %d%s" % (self.command, stream, self.arguments_for(stream))

    def arguments_for(self, _stream):
        return self.arguments


class AddServicePacket(StreamPacket):
    """Media of the streaming service: the stream stands in the reference too."""

    def __init__(self, identifier):
        super().__init__("addmed", identifier, adds_media=True)

    def arguments_for(self, stream):
        return ' "rhap://%d:%s"' % (stream, self.arguments)


def reset():
    return Packet("reset")


def add_stream():
    return Packet("addstr")


def add_announcement():
    return Packet("addann")


def remove_stream():
    return StreamPacket("remstr")


def end_of_stream():
    return StreamPacket("eos")


def remove_media():
    return StreamPacket("remmed")


def change_state(state):
    return StreamPacket("setsta", {PLAY: " play", PAUSE: " pause"}.get(state, " stop"))


def add_client(ip, port):
    return StreamPacket("addcli", " %s %d" % (ip, port))


def remove_client(ip, port):
    return StreamPacket("remcli", " %s %d" % (ip, port))


def add_media(text):
    """The text stands as it is: a quoted reference, or the name of an input."""
    return StreamPacket("addmed", " " + text, adds_media=True)


def add_file(path):
    return add_media('"file:/%s"' % path)


def create_add_media(core, media, broadcast, is_wanted):
    """The packet that makes a stream play an item; None when there is no way to play it."""
    if media.type in (TRACK, CHANNEL):
        return AddServicePacket(media.external_id)
    if media.type not in (DIGITAL, RADIO):
        return None
    if broadcast:
        location = ""
        if media.media_id != 0:
            location = core.get_location(media.media_id, "BROADCAST_AUDIO") or ""
        elif media.external_id != "":
            location = media.external_id
        return add_file("stream-" + location)
    location = core.get_location(media.media_id, "SONG")
    if location is None:
        return None
    device = core.get_storage_device(media.media_id)
    if not location.startswith("/media"):
        location = mounted(core, device, location, is_wanted)
    return add_file(location)


def mounted(core, device, location, is_wanted):
    message = core.create_message("GET_MOUNT_PATH")
    if message is None:
        return location
    message.add("ADD_AUDIO", "INT", "1")
    if not is_wanted():
        return location
    reply = core.send_message(device, message)
    return location if reply == "" else "/media/" + reply + "/" + location


class PacketQueue:
    def __init__(self, link):
        self.stream_id = NONE
        self.link = link
        self.packets = []
        self.is_closed = False

    def close(self):
        self.is_closed = True
        self.clear()

    def add(self, packet, skip_waiting=False):
        if self.is_closed:
            return
        self.packets.append(packet)
        self.flush(skip_waiting)

    def set_stream_id(self, stream_id):
        self.stream_id = stream_id
        self.flush(False)

    def flush(self, skip_waiting):
        index = 0
        while index < len(self.packets):
            packet = self.packets[index]
            if packet.needs_stream and self.stream_id == NONE:
                if not skip_waiting:
                    return
                index += 1
            else:
                del self.packets[index]
                self.link.add_to_send_queue(packet.text(self.stream_id))

    def clear(self):
        self.packets = []

    def reset(self):
        self.stream_id = NONE
        self.clear()

    def remove_added_media(self):
        """Takes out the packets that add media; whether there were any."""
        kept = [packet for packet in self.packets if not packet.adds_media]
        removed = len(kept) != len(self.packets)
        self.packets = kept
        return removed
