"""Several inputs in a row that lead somewhere where single ones seldom get."""

from explorer.house import INPUTS, ROOMS, words


def _command(name, **params):
    return words("command", name, **params)


def _inside(output, line):
    return words("inside", output) + " " + line


def _list_of(songs):
    return "<MEDIA>" + "".join(f"<MEDIA_ID>{song}</MEDIA_ID>" for song in songs) + "</MEDIA>"


class Scenes:
    """`draw_command` gives the lines of any command, `selection` the line of a room's selection with these pairs."""

    def __init__(self, values, wire, draw_command, selection, may_answer_service):
        self.values = values
        self.dice = values.dice
        self.house = values.house
        self.knowledge = values.knowledge
        self.wire = wire
        self._draw_command = draw_command
        self._selection = selection
        self._may_answer_service = may_answer_service

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
        lines = [
            self._select(room, queue=queue, kind="QUEUE", input=one, source=self.values.pick(5, 6, None))
            for room in (first, second)
        ]
        return lines + [self._select(self.values.pick(first, second, *ROOMS), queue=queue, kind="QUEUE", input=other)]

    def _share_media(self, room, other):
        """A room gets a queue of media, and another one joins it there, mostly."""
        queue = max([9999, *self.knowledge.queues, *self.knowledge.old_queues]) + 1
        return [words("off", room), self._add_media(room), self._select(other, queue=queue, kind="QUEUE")]

    def move_to_an_input(self):
        """A room comes to the queue that plays its input, whose own room leaves meanwhile."""
        first, second, third = self.dice.sample(ROOMS, 3)
        name = self.dice.choice(INPUTS)
        lines = self.values.pick([], [words("off", second)], self._share_media(second, third))
        lines.append(self._select(first, queue=1, kind="QUEUE", input=name))
        if self.values.chance(0.7):
            lines.append(_inside("event 2", words("off", first)))
        return lines + [self._select(second, queue=self.values.pick(1, 2), kind="QUEUE", input=name)]

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
        lines.append(_inside(self.values.pick("timer-stop", "timer-stop", "send", "timer"), joining))
        return lines + [words(self.values.pick("deselect", "off"), room)]

    def _add_media(self, room):
        """One of the commands that give a room media."""
        media = _list_of(self.house.songs[:2])
        album = self.dice.choice(self.house.albums)
        return self.values.pick(
            _command("ADD_SONG", ROOM_ID=room, MEDIA_ID=self.values.song()),
            _command("ADD_SONG_LIST", ROOM_ID=room, MEDIA=media),
            _command("ADD_ALBUM_MP3", ROOM_ID=room, MEDIA_ID=album),
            _command("ADD_ALBUM_LIST", ROOM_ID=room, MEDIA=f"<MEDIA><ALBUM>{album}</ALBUM></MEDIA>"),
            _command("QUEUE_ALL", ROOM_ID=room, ARTIST="Ann"),
            _command("ADD_IR_STREAM", ROOM_ID=room, MEDIA="http://x"),
            _command("ADD_PLAYLIST", ROOM_ID=room, MEDIA_ID=self.dice.choice(self.house.playlists)),
        )

    def channel_goes_while_polled(self):
        """A channel goes while it, or another one, is asked for what it plays; other queues stand among them."""
        rooms = self.dice.sample(ROOMS, 4)
        lines = [words("off", room) for room in ROOMS]
        for room in rooms:
            lines.append(self.values.pick(_command("ADD_SONG", ROOM_ID=room, MEDIA_ID="st.1", SOURCE=3), self._add_media(room)))
        lines.append(_inside("rhapsody GetCurrentSongInfo 10", words("off", self.dice.choice(rooms))))
        return lines + [words("advance", 30000)]

    def leave_while_a_track_is_told(self):
        """The rooms of several queues hear of the track that all of them play, and one goes meanwhile."""
        if not self._may_answer_service():
            return []
        rooms = self.dice.sample(ROOMS, 3)
        lines = [words("off", room) for room in ROOMS]
        for room in rooms:
            lines.append(_command("ADD_SONG", ROOM_ID=room, MEDIA_ID="Tra.1", SOURCE=2))
            lines.append(_command("PLAY", ROOM_ID=room))
        gone = self.dice.choice(rooms)
        lines.append(_inside(f"message {self.values.pick(gone, gone, *rooms)} UPDATE_MEDIA_INFO", words("off", gone)))
        return lines + [words("rhapsody", "track", id="Tra.1", album="Blue", name="Sky")]

    def empty_a_channel(self):
        """Whoever hears of a channel's state empties its queue."""
        room = self.values.room()
        empty = _command("ADD_SONG_LIST", ROOM_ID=room, MEDIA="<MEDIA></MEDIA>")
        remove = _command("REMOVE_SONG", ROOM_ID=room, MEDIA_ID="st.1", SOURCE=3)
        return [
            _command("ADD_SONG", ROOM_ID=room, MEDIA_ID="st.1", SOURCE=3),
            _command("ADD_IR_STREAM", ROOM_ID=room, DEVICE_ID=5),
            _inside("message 5 QUEUE_STATE_CHANGED", self.values.pick(empty, remove)),
            _command("SKIP_FWD", ROOM_ID=room),
        ]

    def _two_rooms(self, songs):
        """(a queue's first room, another one of it, the lines that bring them there with so many songs)"""
        shared = [rooms for rooms in self.knowledge.queues.values() if len(rooms) > 1]
        if not shared:
            return None
        first, second = sorted(self.dice.sample(self.dice.choice(shared), 2))
        return first, second, [_command("EDIT_QUEUE", ROOM_ID=first, MEDIA=_list_of(self.house.songs[:songs]))]

    def leave_while_let_go(self):
        """The last song is refused, and a room goes while another one is told to let go."""
        found = self._two_rooms(songs=1)
        if not found:
            return []
        first, second, lines = found
        lines.append(_inside(f"message {first} DESELECT_AUDIO_PATH", words("off", second)))
        return lines + self._reports("* addmed BAD={} no such file") * 2

    def leave_at_the_end(self):
        """The rooms of a queue go while they hear that it ended."""
        found = self._two_rooms(songs=1)
        if not found:
            return []
        first, second, lines = found
        lines += [_command("REPEAT", ROOM_ID=first, REPEAT=0), _inside("room-service", words("off", first))]
        if self.values.chance(0.7):
            lines.append(_inside("event 2", words("off", second)))
        return lines + self._reports("* addmed EOM={}") * 2

    def leave_while_added(self):
        """A queue at rest gets media, and its only room goes while the queue's timer stops."""
        alone = [rooms[0] for rooms in self.knowledge.queues.values() if len(rooms) == 1]
        if not alone:
            return []
        room = self.dice.choice(alone)
        lines = [_command("SET_PLAYLIST_CLEAR_FLAG", FLAG_VALUE="true")] + self._reports("* addmed EOM={}")
        lines += [_inside("timer-stop", words("off", room)), self._add_media(room)]
        return lines + [_command("ADD_SONG", ROOM_ID=room, MEDIA_ID=self.values.song()), _command("GET_ROOM_HISTORY", ROOM_ID=room)]

    def refuse_a_gone_room(self):
        """A room goes while its new queue is made known, and what it was to get is nothing known."""
        room = self.dice.choice(ROOMS)
        lines = [words("off", room), _inside("event 1", words("off", room))]
        return lines + [_command("ADD_SONG", ROOM_ID=room, MEDIA_ID="x", SOURCE=self.values.pick(0, 5, 9))]

    def off_with_an_announcement(self):
        """A room goes off while the announcement that ends with it is ended."""
        room = self.values.room()
        lines = [words("announce", "create")]
        if self.values.chance(0.3):
            lines.append(_inside("announcement", words("announce", "remove")))
        lines += self.wire.data(self.house.active, f"1 addann stream={self.knowledge.new_stream()}")
        lines.append(self._select(room, kind="ANNOUNCEMENT"))
        return lines + [_inside("send", words("off", room)), words("off", room)]

    def play_nothing(self):
        """A track without an id, where a list begins."""
        room = self.values.room()
        lines = [_command("ADD_SONG_LIST", ROOM_ID=room, MEDIA='<MEDIA><SONG SOURCE="2"/></MEDIA>', CLEAR=1)]
        lines += self._reports("* addmed EOM={}")
        return lines + [_command(self.values.pick("PLAY", "STOP"), ROOM_ID=room), _command("PLAY", ROOM_ID=room)]


SCENES = (
    (Scenes.many_playlists, 3),
    (Scenes.come_to_rest, 6),
    (Scenes.pause_what_cannot, 4),
    (Scenes.radio_reports, 6),
    (Scenes.share_an_input, 5),
    (Scenes.pin_past_the_end, 3),
    (Scenes.long_list, 0.3),
    (Scenes.join_while_leaving, 4),
    (Scenes.move_to_an_input, 3),
    (Scenes.channel_goes_while_polled, 3),
    (Scenes.leave_while_a_track_is_told, 2),
    (Scenes.empty_a_channel, 2),
    (Scenes.leave_while_let_go, 3),
    (Scenes.leave_at_the_end, 2),
    (Scenes.leave_while_added, 3),
    (Scenes.refuse_a_gone_room, 2),
    (Scenes.off_with_an_announcement, 2),
    (Scenes.play_nothing, 2),
)
