"""The house that a session plays in: its world, declared in the session's first inputs."""

from world.system import OPERATIONS
from world.words import format_pair, format_value

ROOMS = (1, 2, 7, 8, 9, 10)
SERVERS = (3000, 3001, 3002)
ADDRESSES = ("10.0.0.7", "10.0.0.8", "10.0.0.9", "10.0.0.10")
ARTISTS = ("Ann", "Bob", "Ann & <Bob>", "\xc3\x84nne")
GENRES = ("Jazz", "Folk", "")
ALBUMS = ("Colours", "Blue \"light\"", "")
TITLES = ("Blue", "Late night", "A <b> & c", "\xe6\x97\xa5\xe6\x9c\xac", "")
INPUTS = ("line", "tape", "10.0.0.9:6330")
# Services and how often a session has to do without them.
SERVICES = (
    ("RhapsodyClient", 0.08),
    ("AnnouncementNotifier", 0.08),
    ("StringX", 0.02),
    ("KVMessage", 0.02),
    ("TimerManager", 0.01),
    ("RoomService", 0.02),
    ("BindMessageSender", 0.01),
)
LOCATIONS = ("/media/{}.flac", "/media/usb/{} x.mp3", "music/{}.mp3", "", "/mnt/{}.ogg")


def words(verb, *values, **pairs):
    """An input line; pairs without a value are left out."""
    pieces = [verb] + [format_value(str(value)) for value in values]
    pieces += [format_pair(key, str(value)) for key, value in pairs.items() if value is not None]
    return " ".join(pieces)


class House:
    """What a session's world has, as its declarations said it."""

    def __init__(self, dice):
        self.songs = list(range(1, dice.choice((4, 8, 14)) + 1))
        self.stations = [201, 202, 203]
        self.albums = [301, 302, 303, 304]
        self.playlists = list(range(401, dice.choice((403, 403, 418)) + 1))
        self.active = SERVERS[0]
        self.homes = {}  # room: (ip, port, channel)
        shared = dice.random() < 0.3
        for room in ROOMS:
            address = dice.choice(ADDRESSES[:2]) if shared else ADDRESSES[ROOMS.index(room) % len(ADDRESSES)]
            self.homes[room] = (address, dice.choice((6200, 6200, 6201)), dice.choice((1, 1, 2)))

    def declare(self, dice, knowledge):
        """The input lines that set it up before the driver starts."""
        lines = [f"name {room} {format_value(dice.choice(('Kitchen', 'Hall', 'A <b>', 'B')) )}" for room in ROOMS[:5]]
        if dice.random() < 0.2:
            lines.append(words("clock", dice.choice((0, 1, 4294967290, 1700000000))))
        if dice.random() < 0.1:
            lines.append(words("system-type", dice.choice((24, 24, 7))))
        if dice.random() < 0.3:
            lines.append(words("local", "10.9.9.9"))
        for song in self.songs:
            lines.append(self.song(dice, song))
        for station in self.stations[:2]:
            lines.append(self.station(dice, station))
        for album in self.albums[:3]:
            lines.append(self.album(dice, album))
        for playlist in self.playlists[:-1]:
            lines.append(self.playlist(dice, playlist))
        lines += self.devices(dice)
        for service, chance in SERVICES:
            if dice.random() < chance:
                lines.append(words("without", service))
        if dice.random() < 0.1:
            lines.append(words("fail", dice.choice(OPERATIONS)))
        for binding in SERVERS:
            if dice.random() < 0.6:
                lines.append(self.live_engine(binding, knowledge))
        for room in ROOMS:
            if dice.random() < 0.5:
                lines.append(self.live_room(room, knowledge))
        return lines

    def song(self, dice, song):
        return words(
            "song",
            song,
            location=dice.choice(LOCATIONS).format(song),
            device=dice.choice((None, 5, 6, 7)),
            title=dice.choice(TITLES),
            artist=dice.choice(ARTISTS + ("",)),
            album=dice.choice(ALBUMS),
            img=dice.choice((None, f"cover/{song}")),
            genre=dice.choice(GENRES),
        )

    def station(self, dice, station):
        address = dice.choice(("http://radio.example/x", "", "radio x"))
        name = dice.choice(TITLES)
        genre = dice.choice((None, "News"))
        return words("station", station, location=address, name=name, genre=genre, img=dice.choice((None, "s.png")))

    def album(self, dice, album):
        songs = self.some_ids(dice, self.songs + [999])
        name = dice.choice((None, None, None) + INPUTS)
        return words("album", album, songs=songs, input=name, title=dice.choice(ALBUMS))

    def playlist(self, dice, playlist):
        return words("playlist", playlist, dice.choice(("Morning", "Late night", "")), songs=self.some_ids(dice, self.songs))

    def some_ids(self, dice, ids):
        return ",".join(str(dice.choice(ids)) for _ in range(dice.choice((0, 1, 2, 3, 6))))

    def devices(self, dice):
        lines = []
        for device in (7, 100002, 5):
            if dice.random() < 0.8:
                lines.append(words("mp3devices", device, dice.choice(("5", "5,6", "", "6,7,5", "none"))))
        for room in ROOMS:
            if dice.random() < 0.15:
                lines.append(words("analog", room, dice.choice(("5", "5,6", "", "6,7,5", "5,100002,6"))))
        for device in (5, 6):
            if dice.random() < 0.5:
                lines.append(f"reply {device} GET_MOUNT_PATH usb{device}")
        for command in dice.choice(((), (), ("PLAY", "PAUSE", "STOP", "SKIP_FWD", "SKIP_REV"))):
            text = dice.choice(('<reply handled="True"/>', "<reply><handled>true</handled></reply>", "<reply", "<r/>"))
            lines.append(f"reply {dice.choice((5, 6, 7))} {command} {text}")
        return lines

    def live_engine(self, binding, knowledge):
        knowledge.live_engines.add(binding)
        return words("engine", binding)

    def live_room(self, room, knowledge):
        knowledge.live_rooms.add(room)
        address, port, channel = self.homes[room]
        return words("room", room, ip=address, port=port, channel=channel)
