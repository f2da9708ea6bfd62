"""Numbers and names that several files use."""

NONE = 4095  # no song, or no stream yet
NO_MEDIA_ID = "268435440"  # stands where an item has no id in the media database
CORE_CODE = 100002  # what the driver is to the services that want to know who calls

DRIVER_SOURCE = "korvel_digitalaudio/kvw/korvel_digitalaudio"
QUEUE_SOURCE = "korvel_digitalaudio/kvw/AudioQueue"
SERVER_SOURCE = "korvel_digitalaudio/kvw/AudioServer"
LINK_SOURCE = "korvel_digitalaudio/kvw/ServerUtility"

STOP, PAUSE, PLAY, END = 0, 1, 2, 3
STATE_NAMES = {STOP: "STOP", PAUSE: "PAUSE", PLAY: "PLAY", END: "END"}

LAST_SERVER_BINDING = 3500
FIRST_MEDIA_BINDING = 3501
LAST_MEDIA_BINDING = 3999


class OutOfRange(Exception):
    """A place past the end of a list."""

    def __init__(self):
        super().__init__("vector::_M_range_check")


def at(items, index):
    """The item at a place that may lie past the end."""
    if index >= len(items):
        raise OutOfRange
    return items[index]
