"""Input lines for a session that runs, each drawn with what the session has shown in mind."""

from explorer.commands import COMMANDS, CONDITIONS, REQUESTS, odd_params
from explorer.house import ADDRESSES, INPUTS, ROOMS, SERVERS, words
from explorer.scenes import Scenes, SCENES
from explorer.wire import Wire
from world.system import OPERATIONS
from world.words import format_pair, format_value

KINDS = (
    ("QUEUE", 30),
    ("SONGS", 6),
    ("ALBUM", 5),
    ("SONG", 5),
    ("BROADCAST_AUDIO", 8),
    ("PLAYLIST", 5),
    ("ANNOUNCEMENT", 5),
    ("ANNOUNCEMENT_COMPLETE", 2),
    ("DIGITAL_MEDIA", 1),
    ("MOVIE", 1),
    ("", 1),
)
TIMES = (0, 1, 50, 99, 100, 101, 1000, 4999, 5000, 5001, 9999, 10000, 30000, 59999, 60000, 60001, 61000, 120000)
# What a call inside a call waits for.
OUTPUTS = (
    "event",
    "event 1",
    "event 2",
    "set 1004",
    "set 1006",
    "set 1007",
    "set 1009",
    "send",
    "message",
    "message 7 DESELECT_AUDIO_PATH",
    "log",
    "debug",
    "timer",
    "timer-stop",
    "return",
    "ui",
    "media",
    "rhapsody",
    "room-service",
    "announcement",
    "selected",
    "analog",
    "assert",
)
# Of them, those that only a driver gives whose client of the streaming service is there.
SERVICE_OUTPUTS = ("rhapsody", "rhapsody", "rhapsody", "send", "message", "event")
PERSISTED = (
    "<korvel_digital_audio></korvel_digital_audio>",
    "<x/>",
    "<korvel_digital_audio><lastserverid>3003</lastserverid><lastmediaid>3503</lastmediaid></korvel_digital_audio>",
    "<korvel_digital_audio><lastserverid>{n}</lastserverid><lastmediaid>{n}</lastmediaid></korvel_digital_audio>",
    "<korvel_digital_audio><ClearPlayList>{flag}</ClearPlayList><PlayPreference>{n}</PlayPreference>"
    "<ClearPlayListDelay>{n}</ClearPlayListDelay></korvel_digital_audio>",
    "<korvel_digital_audio><room_queue_settings><room_info><roomid>{room}</roomid><shuffle>{flag}</shuffle>"
    "<repeat>{flag}</repeat></room_info><room_info><roomid>{room}</roomid><shuffle>1</shuffle></room_info><x/>"
    "<room_info><repeat>{flag}</repeat></room_info></room_queue_settings></korvel_digital_audio>",
    "<korvel_digital_audio><room_queue_settings/></korvel_digital_audio>",
)


def weighted(dice, table):
    return dice.choices(table, weights=[row[1] for row in table])[0]


class Inputs:
    """`may_answer_service` says whether the streaming service has a client to answer to."""

    def __init__(self, values, may_answer_service):
        self.values = values
        self.dice = values.dice
        self.house = values.house
        self.knowledge = values.knowledge
        self.wire = Wire(values)
        self.scenes = Scenes(values, self.wire, self.command, self.selection, may_answer_service)
        self._may_answer_service = may_answer_service
        # A session does more of this and less of that.
        self._table = [(draw, weight * self.dice.choice((0.2, 1, 1, 1, 3))) for draw, weight in self._kinds()]
        self._commands = [(name, weight * self.dice.choice((0.2, 1, 1, 3)), draw) for name, weight, draw in COMMANDS]

    def _kinds(self):
        return (
            (self.command, 40),
            (self.request, 2),
            (self.condition, 1),
            (self.select, 14),
            (self.leave, 3),
            (self.fulfil_wish, 8),
            (self.wire.answer, 16),
            (self.wire.event, 10),
            (self.wire.junk, 1),
            (self.advance, 6),
            (self.announce, 3),
            (self.service, 4),
            (self.binding, 2),
            (self.change_world, 2),
            (self.persist, 0.3),
            (self.restart, 0.5),
            (self.valid, 0.2),
            (self.location, 0.4),
            (self.play_scene, 3),
            (self.call_inside, self.dice.choice((0, 0, 4))),
        )

    def draw(self):
        """The next input lines; now and then none."""
        return weighted(self.dice, self._table)[0]()

    def begin(self):
        """The driver's start, and its first server."""
        lines = [self.start()]
        if self.values.chance(0.05):
            return lines  # no server yet
        for binding in SERVERS:
            if binding == SERVERS[0] or self.values.chance(0.4):
                lines.append(self.online(binding, local=binding == SERVERS[0] or self.values.chance(0.3)))
        return lines

    # Entries.

    def _message(self, verb, *heads, params):
        pairs = [format_pair(key, str(value)) for key, value in odd_params(self.values, params)]
        return [" ".join([verb] + [format_value(str(head)) for head in heads] + pairs)]

    def command(self):
        name, _, draw = weighted(self.dice, self._commands)
        if self.values.chance(0.03):
            name = "" if self.values.chance(0.05) else name
            return self._message("protocol", self.values.pick(4000, 3000, 5), name, params=draw(self.values))
        return self._message("command", name, params=draw(self.values))

    def request(self):
        name, _, draw = weighted(self.dice, REQUESTS)
        return self._message("request", name, params=draw(self.values))

    def condition(self):
        name, _, draw = weighted(self.dice, CONDITIONS)
        return self._message("test", name, params=draw(self.values))

    def select(self):
        room = self.values.room()
        kind = weighted(self.dice, KINDS)[0]
        queue = self.knowledge.queue_of(room) if self.values.chance(0.5) else self.values.queue()
        if self.values.chance(0.1):
            queue = 0
        pairs = {"queue": queue or None, "kind": kind or None}
        if kind in ("SONGS", "ALBUM", "SONG") or self.values.chance(0.1):
            pairs["media"] = self.house.some_ids(self.dice, self.house.songs + [999])
        elif kind == "BROADCAST_AUDIO":
            pairs["media"] = self.house.some_ids(self.dice, self.house.stations)
        elif kind == "PLAYLIST":
            pairs["media"] = self.house.some_ids(self.dice, self.house.playlists)
        if self.values.chance(0.15):
            pairs["input"] = self.dice.choice(INPUTS)
            pairs["source"] = self.values.pick(5, 6, 100002, None)
        return [self.selection(room, pairs)]

    def selection(self, room, pairs):
        address, port, channel = self.house.homes.get(room, ("10.0.0.99", 6200, 1))
        if self.values.chance(0.06):
            address, port, channel = self.dice.choice(sorted(self.house.homes.values()))
        if self.values.chance(0.02):
            address, port, channel = self.values.pick(*ADDRESSES, None, "10.0.0.7 x"), self.values.pick(None, 6200), 1
        if self.values.chance(0.5 if "input" in pairs else 0.15):
            pairs["binding"] = self.values.pick(*SERVERS, *SERVERS, 3500, 3501, 5000, 0)
        if self.values.chance(0.03):
            pairs["location-kind"] = self.values.pick("GENERIC_MEDIA", "x")
        pairs |= {"ip": address, "port": port, "channel": channel}
        pairs["target"] = room if self.values.chance(0.6) else None
        return words("select", room, **pairs)

    def leave(self):
        return [words(self.values.pick("deselect", "deselect", "off"), self.values.room())]

    def fulfil_wish(self):
        """A room does what it was asked to."""
        wishes = self.knowledge.wishes
        if not wishes:
            return self.select()
        room, queue = wishes.pop(0 if self.values.chance(0.8) else self.dice.randrange(len(wishes)))
        if queue is None:
            return [words("deselect", room)]
        return [self.selection(room, {"queue": queue, "kind": "QUEUE"})]

    def advance(self):
        milliseconds = self.dice.choice(TIMES) if self.values.chance(0.8) else self.dice.randrange(200000)
        return [words("advance", milliseconds)]

    def announce(self):
        operation = self.values.pick("create", "create", "play", "play", "remove")
        if operation == "play":
            return [words("announce", "play", self.values.pick("/media/chime.wav", "/a b.wav", "", 'x"y'))]
        lines = [words("announce", operation)]
        if operation == "create" and self.values.chance(0.6):
            address, port, _ = self.house.homes[(room := self.dice.choice(ROOMS))]
            lines.append(words("select", room, kind="ANNOUNCEMENT", ip=address, port=port))
        return lines

    def service(self):
        """An answer of the streaming service."""
        if not self._may_answer_service():
            return []
        kind = self.dice.random()
        if kind < 0.3:
            return [words("rhapsody", "playlist-tracks", *self.values.pick((), ("Tra.1",), ("Tra.1", "Tra.2", "Tra.3")))]
        if kind < 0.75:
            context = self.values.queue() if self.values.chance(0.9) else self.values.odd()
            names = {name: self.values.text() for name in ("album", "artist", "name", "img") if self.values.chance(0.7)}
            track = self.values.pick("Tra.1", "Tra.2", "Tra.3", "st.1")
            if self.values.chance(0.3):
                context = None
            return [words("rhapsody", "track", id=track, context=context, **names)]
        if kind < 0.8:
            return [words("rhapsody", "track")]
        if kind < 0.92:
            return [words("rhapsody", "playlists", *self.values.pick((), ("mp.1", "My <list>"), ("b", "B two", "a", "")))]
        return [words("rhapsody", "error", self.values.pick(*range(-2, 21), 2147483647, -2147483648))]

    def online(self, binding, local):
        address = "127.0.0.1" if local else self.values.pick("10.9.9.9", "10.1.1.1", "", "x")
        return words("online", binding, address, ALLOW_MULT_INPUT=self.values.pick(None, None, "true", "TRUE", "false"))

    def binding(self):
        kind = self.dice.random()
        if kind < 0.45:
            return [self.online(self.dice.choice(SERVERS), local=self.values.chance(0.6))]
        if kind < 0.6:
            return [words("offline", self.values.pick(*SERVERS, *SERVERS, 3005))]
        newest = self.values.pick(*range(3000, 3006), 3499, 3500, 3501, 3502, 3503, 3998, 3999)
        if self.values.chance(0.5):
            newest = self.values.pick(*self.knowledge.newest_bindings())
        return [words(self.values.pick("bound", "bound", "unbound"), newest)]

    def change_world(self):
        dice = self.dice
        kind = dice.random()
        if kind < 0.08:
            return [words("clock", dice.choice((0, 999999000, 1000000500, 1000100000, 4294967295)))]
        if kind < 0.35:
            return [words("random", *(dice.choice((0, 1, 2, 5, 7, 2147483647)) for _ in range(dice.randint(1, 8))))]
        if kind < 0.45:
            return [self.house.song(dice, dice.choice(self.house.songs))]
        if kind < 0.55:
            return [self.house.playlist(dice, dice.choice(self.house.playlists))]
        if kind < 0.63:
            return [self.house.album(dice, dice.choice(self.house.albums))]
        if kind < 0.7:
            return [self.house.station(dice, dice.choice(self.house.stations))]
        if kind < 0.75:
            return [words("name", dice.choice(ROOMS), dice.choice(("Kitchen", "", "A <b>")))]
        if kind < 0.82:
            return self.house.devices(dice)
        if kind < 0.9:
            return [self.house.live_engine(dice.choice(SERVERS), self.knowledge)]
        if kind < 0.94:
            return [self.house.live_room(dice.choice(ROOMS), self.knowledge)]
        # A driver that starts anew keeps its client of the streaming service: answers may wait inside a call.
        return [words("fail", dice.choice([name for name in OPERATIONS if name != "CreateClient"]))]

    def start(self):
        kind = self.dice.random()
        if kind < 0.3:
            return "start"
        if kind < 0.7 and self.knowledge.persisted:
            return "start " + self.knowledge.persisted
        text = self.dice.choice(PERSISTED)
        for place in ("{n}", "{n}", "{room}", "{room}", "{flag}", "{flag}", "{flag}"):
            value = {
                "{n}": self.values.pick("0", "12", "2", "1", "3002", "3504", "3600", "x", "", "-1", "3500", "3999"),
                "{room}": str(self.dice.choice(ROOMS)),
                "{flag}": self.values.pick("0", "1", "true", "FALSE", "false", "no", ""),
            }[place]
            text = text.replace(place, value, 1)
        return words("start", text) if text.startswith('"') else "start " + text

    def persist(self):
        return ["persist"]

    def restart(self):
        """The driver ends and starts anew, mostly with what it had asked to be kept."""
        if self.values.chance(0.3):
            return ["create"]
        return ["persist", "stop"]

    def play_scene(self):
        return weighted(self.dice, SCENES)[0](self.scenes)

    def call_inside(self):
        """The core calls back inside one of the driver's next calls."""
        draws = (self.command, self.leave, self.select, self.fulfil_wish, self.wire.event, self.wire.answer)
        if self.values.chance(0.1):
            draws = (self.announce, self.request, self.binding, self.persist, self.change_world)
        elif self.values.chance(0.1):
            return [words("inside", self.dice.choice(SERVICE_OUTPUTS)) + " " + line for line in self.service()[:1]]
        return [words("inside", self.dice.choice(OUTPUTS)) + " " + line for line in self.dice.choice(draws)()[:1]]

    def location(self):
        kind = self.values.pick("SONG", "SONG", "BROADCAST_AUDIO", "ALBUM", "ALBUM_MP3", "ALBUM_CD", "PLAYLIST", "QUEUE", None)
        ids = self.values.pick(self.house.songs, self.house.stations, self.house.albums)
        media = self.values.pick(self.house.some_ids(self.dice, ids), None)
        return [words("location", self.values.room(), kind=kind, media=media, location=self.values.pick(None, "/x"))]

    def valid(self):
        return [words("valid", self.values.pick(6, 6, 15, 0), self.values.pick(15, 15, 6, 4294967295))]
