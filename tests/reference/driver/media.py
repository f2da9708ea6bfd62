"""One media item."""

from core import MediaItem

NOTHING = 0
DIGITAL = 1
TRACK = 2
CHANNEL = 3
RESERVED = 4
RADIO = 5


class Media:
    __slots__ = ("type", "external_id", "media_id", "meta_data", "extra")

    def __init__(self, type_code=NOTHING, external_id="", media_id=0, meta_data="", extra=0):
        self.type = type_code
        self.external_id = external_id
        self.media_id = media_id
        self.meta_data = meta_data
        self.extra = extra

    def copy(self):
        return Media(self.type, self.external_id, self.media_id, self.meta_data, self.extra)

    def same(self, other):
        """What a stream reports about an item does not count: the item must still be found while it plays."""
        return (
            self.external_id == other.external_id
            and self.media_id == other.media_id
            and self.type == other.type
            and self.extra == other.extra
        )


def digital(media_id):
    return Media(DIGITAL, "", media_id)


def position(items, wanted):
    """The place of the first item equal to the wanted one, or None."""
    for index, item in enumerate(items):
        if item.same(wanted):
            return index
    return None


def from_database(items):
    return [Media(item.type, item.external_id, item.media_id, "", item.extra) for item in items]


def to_database(items):
    return [MediaItem(item.type, item.external_id, item.media_id, item.extra) for item in items]
