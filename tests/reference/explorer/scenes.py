"""Several inputs in a row that lead somewhere where single ones seldom get."""

from explorer.house import INPUTS, ROOMS, words


def _command(name, **params):
    return words("command", name, **params)


def _list_of(songs):
    return "<MEDIA>" + "".join(f"<MEDIA_ID>{song}</MEDIA_ID>" for song in songs) + "</MEDIA>"


class Scenes:
    """`draw_command` gives the lines of any command, `selection` the line of a room's selection with these pairs."""

    def __init__(self, values, wire, draw_command, selection):
        self.values = values
        self.dice = values.dice
        self.house = values.house
        self.knowledge = values.knowledge
        self.wire = wire
        self._draw_command = draw_command
        self._selection = selection

    def _reports(self, report):
        """The same about each of the latest streams."""
        lines = []
        for binding, stream in self.knowledge.streams[-4:]:
            lines += self.wire.data(binding, report.format(stream))
        return lines

    def _select(self, room, **pairs):
        return self._selection(room, pairs)

    def many_playlists(self):
        """More than a room's history keeps."""
        room = self.values.room()
        return [_command("ADD_PLAYLIST", ROOM_ID=room, MEDIA_ID=playlist) for playlist in self.house.playlists]

    def come_to_rest(self):
        """A queue's end, the time after which it is cleared, and sometimes somebody who plays it again before."""
        delay = self.values.pick(0, 1, 1)
        lines = [_command("SET_PLAYLIST_CLEAR_FLAG", FLAG_VALUE="true")]
        lines.append(_command("SET_PLAYLIST_CLEAR_DELAY", DELAY_VALUE=delay))
        binding, stream = self.wire.stream()
        lines += self.wire.data(binding, f"* addmed EOM={stream}") * self.values.pick(1, 2, 4)
        lines += self.values.pick([], self._draw_command(), [_command("PLAY", ROOM_ID=self.values.room())])
        return lines + [words("advance", delay * 60000 + self.values.pick(99, 100, 101))]

    def pause_what_cannot(self):
        """Streams that say what they cannot do."""
        lines = self._reports("* SYS STREAM={} streamCaps:" + self.values.pick("NO-PAUSE", "x,NO-PAUSE", "NO-PAUSE,x"))
        return lines + [_command(self.values.pick("PAUSE", "PAUSE", "PLAY"), ROOM_ID=self.values.room())]

    def radio_reports(self):
        """A radio's owner hears of its streams."""
        room = self.values.room()
        params = {"MEDIA_ID": self.values.station()} if self.values.chance(0.5) else {"MEDIA": "http://x"}
        lines = [_command("ADD_IR_STREAM", ROOM_ID=room, DEVICE_ID=self.values.pick(5, 6), **params)]
        lines += self._reports("* SYS STREAM={} streamStatus:" + self.values.pick("a", "b", ""))
        if self.values.chance(0.5):
            lines.append(_command("UPDATE_SECONDARY_MEDIA_INFO", roomId=room, title="x", genre=self.values.pick("g", "")))
        lines += self._reports("* SYS STREAM={} streamInfo:" + self.values.pick("Ann - Blue", "", "x"))
        return lines + self.values.pick([], self._draw_command(), self._reports("* addmed EOM={}"))

    def share_an_input(self):
        """Two rooms hear one input, then somebody wants another one."""
        first, second = self.dice.sample(ROOMS, 2)
        one, other = self.dice.sample(INPUTS, 2)
        queue = self.knowledge.queue_of(first) or 10000
        lines = [self._select(room, queue=queue, kind="QUEUE", input=one) for room in (first, second)]
        return lines + [self._select(self.values.pick(first, second, *ROOMS), queue=queue, kind="QUEUE", input=other)]

    def pin_past_the_end(self):
        """A place of an empty list is chosen to come next, then songs come."""
        room = self.values.room()
        return [
            _command("ADD_SONG_LIST", ROOM_ID=room, MEDIA="<MEDIA></MEDIA>"),
            _command("EDIT_QUEUE", ROOM_ID=room, MEDIA="<MEDIA></MEDIA>"),
            _command("GO_TO_SONG", ROOM_ID=room, MEDIA_ID=1, MEDIA_INDEX=self.values.pick(1, 2, 5, 4094, 4294967295)),
            _command("ADD_SONG_LIST", ROOM_ID=room, MEDIA=_list_of(self.house.songs[:2]), PLAY_NOW=0),
        ] + self._draw_command()

    def long_list(self):
        """More songs than the number that stands for "none"."""
        room = self.values.room()
        songs = [self.dice.choice(self.house.songs) for _ in range(self.values.pick(4095, 4096, 4097, 4100))]
        lines = [_command("ADD_SONG_LIST", ROOM_ID=room, MEDIA=_list_of(songs))]
        for _ in range(self.values.pick(2, 4, 6)):
            name = self.values.pick("SKIP_REV", "SKIP_REV", "SKIP_FWD", "REPEAT", "SHUFFLE", "STOP", "GO_TO_SONG", "PLAY")
            params = {"MEDIA_ID": 1, "MEDIA_INDEX": self.values.pick(0, 4093, 4094, 4095, 4096)} if name == "GO_TO_SONG" else {}
            lines.append(_command(name, ROOM_ID=room, **params))
        return lines + [_command("EDIT_QUEUE", ROOM_ID=room, MEDIA=_list_of(self.house.songs[:2]))]

    def join_while_leaving(self):
        """The last room leaves a queue at rest, and another one comes before the driver has told everybody."""
        alone = [(queue, rooms[0]) for queue, rooms in self.knowledge.queues.items() if len(rooms) == 1]
        if not alone:
            return []
        queue, room = self.dice.choice(alone)
        joining = self._select(self.dice.choice(ROOMS), queue=queue, kind="QUEUE")
        lines = [_command("SET_PLAYLIST_CLEAR_FLAG", FLAG_VALUE="true")] + self._reports("* addmed EOM={}")
        lines.append(words("inside", self.values.pick("timer-stop", "timer-stop", "send", "timer")) + " " + joining)
        return lines + [words(self.values.pick("deselect", "off"), room)]


SCENES = (
    (Scenes.many_playlists, 3),
    (Scenes.come_to_rest, 6),
    (Scenes.pause_what_cannot, 4),
    (Scenes.radio_reports, 6),
    (Scenes.share_an_input, 5),
    (Scenes.pin_past_the_end, 3),
    (Scenes.long_list, 0.3),
    (Scenes.join_while_leaving, 4),
)
