"""Values of parameters: right, odd, missing and huge."""

from explorer.house import ROOMS

ODD_TEXTS = (
    "",
    " ",
    "0",
    "-1",
    "1",
    "x",
    " 7",
    "7x",
    "+1",
    "true",
    "True",
    "false",
    "4095",
    "9999",
    "65536",
    "2147483647",
    "2147483648",
    "4294967295",
    "99999999999999999999",
    "268435440",
    "268435442",
    "Tra.1",
    "<a>&\"'</a>",
    "a\tb\r\nc",
    "\x01\x7f\\",
    "\xc3\xa9\xff",
    "0x1f",
    "%s%n",
)
LISTS_AROUND = (0, 1, 1, 2, 2, 3, 3, 4, 6)
TRACKS = ("Tra.1", "Tra.2", "Tra.3")
CHANNELS = ("st.1", "st.2")
SERVICE_LISTS = ("mp.1", "p.2")
FLAGS = ("0", "1", "1", "2", "", "no", "-1")


class Values:
    """Draws values; most mean something to the session."""

    def __init__(self, dice, house, knowledge):
        self.dice = dice
        self.house = house
        self.knowledge = knowledge

    def chance(self, share):
        return self.dice.random() < share

    def pick(self, *choices):
        return self.dice.choice(choices)

    def room(self):
        if self.chance(0.6):
            in_queues = [room for rooms in self.knowledge.queues.values() for room in rooms]
            if in_queues:
                return self.dice.choice(in_queues)
        if self.chance(0.02):
            return self.pick(0, 99, 4294967295)
        return self.dice.choice(ROOMS)

    def queue(self):
        queues = sorted(self.knowledge.queues)
        if queues and self.chance(0.85):
            return self.dice.choice(queues)
        if self.knowledge.old_queues and self.chance(0.5):
            return self.dice.choice(self.knowledge.old_queues)
        return self.pick(0, 10000, 9999, 123, 4294967295)

    def song(self):
        if self.chance(0.03):
            return self.pick(0, 999, 268435440, 4294967295)
        return self.dice.choice(self.house.songs)

    def album(self):
        return self.pick(0, 999) if self.chance(0.05) else self.dice.choice(self.house.albums)

    def playlist(self):
        return self.pick(0, 999) if self.chance(0.05) else self.dice.choice(self.house.playlists + [404, 405])

    def station(self):
        return self.pick(0, 999) if self.chance(0.05) else self.dice.choice(self.house.stations)

    def flag(self):
        return self.dice.choice(FLAGS)

    def text(self):
        return self.pick("Ann", "Blue sky", "", "A <b> & \"c\"", "\xc3\xa4", "x" * 300 if self.chance(0.1) else "x")

    def odd(self):
        if self.chance(0.05):
            return self.pick("9" * 5000, "x" * 20000, "<a>" * 200, ",".join(["7"] * 300))
        return self.dice.choice(ODD_TEXTS)

    def typed_media(self):
        """(text of MEDIA_ID, SOURCE) of a song, a track, a channel or something else."""
        kind = self.dice.random()
        if kind < 0.6:
            return str(self.song()), self.pick(None, None, "1")
        if kind < 0.8:
            return self.dice.choice(TRACKS), "2"
        if kind < 0.9:
            return self.dice.choice(CHANNELS), "3"
        return self.pick("x", str(self.song()), "p.1", ""), self.pick("0", "4", "5", "6", "x", "-1", "1")

    def list_element(self):
        kind = self.dice.random()
        if kind < 0.6:
            return f"<MEDIA_ID>{self.song()}</MEDIA_ID>"
        if kind < 0.72:
            return f'<SONG SOURCE="1" ID="{self.song()}"/>'
        if kind < 0.84:
            return f'<SONG ID="{self.dice.choice(TRACKS)}" SOURCE="2"/>'
        if kind < 0.89:
            return f'<SONG ID="{self.dice.choice(CHANNELS)}" SOURCE="3"/>'
        if kind < 0.92:
            return f'<SONG ID="{self.dice.choice(SERVICE_LISTS)}" SOURCE="4"></SONG>'
        return self.pick(
            "<OTHER>1</OTHER>",
            "<SONG/>",
            f'<SONG SOURCE="{self.pick("1", "2", "3", "4")}"/>',
            '<SONG ID="1"/>',
            f'<SONG SOURCE="{self.pick("0", "5", "x", "-1")}" ID="1"/>',
            "<MEDIA_ID/>",
            "<MEDIA_ID>x</MEDIA_ID>",
            "<MEDIA_ID>268435440</MEDIA_ID>",
            "<MEDIA_ID><MEDIA_ID>1</MEDIA_ID></MEDIA_ID>",
            "<!-- a --><MEDIA_ID> 2</MEDIA_ID>",
            "text",
        )

    def media_list(self):
        """The document of a list of media."""
        if self.chance(0.02):
            return self.pick("", "<MEDIA>", "<MEDIA/>", "x", "<MEDIA></MEDIA>", "<MEDIA/><MEDIA/>", "<A", "&lt;")
        length = self.dice.choice(LISTS_AROUND)
        if self.chance(0.01):
            length = self.pick(40, 120)
        root = self.pick("LIST", "A") if self.chance(0.03) else "MEDIA"
        return f"<{root}>" + "".join(self.list_element() for _ in range(length)) + f"</{root}>"

    def song_list(self):
        """A list of songs alone, which takes the usual way; seldom one with more than "none" stands for."""
        length = self.pick(4094, 4100) if self.chance(0.0005) else self.dice.choice(LISTS_AROUND)
        ids = [self.song() for _ in range(length)]
        return "<MEDIA>" + "".join(f"<MEDIA_ID>{song}</MEDIA_ID>" for song in ids) + "</MEDIA>"

    def album_list(self):
        if self.chance(0.05):
            return self.pick("", "<MEDIA>", "<MEDIA/>", "x")
        ids = [self.album() for _ in range(self.pick(0, 1, 1, 2, 3))]
        tag = self.pick("ALBUM", "MEDIA_ID", "X")
        return "<MEDIA>" + "".join(f"<{tag}>{album}</{tag}>" for album in ids) + "</MEDIA>"

    def room_list(self):
        """Rooms with commas; seldom more of them than a command takes."""
        if self.chance(0.02):
            return ",".join(str(self.dice.choice(ROOMS)) for _ in range(self.pick(99, 100, 101, 130)))
        pieces = [str(self.room()) for _ in range(self.pick(0, 1, 1, 2, 3))]
        if self.chance(0.08):
            pieces.append(self.pick("", " ", "x", " 8", "4294967295"))
        text = self.pick(",", ",", ",", ",,").join(pieces)
        return "," + text + "," if self.chance(0.05) else text
