"""The verbs that say what the world around the driver is like."""

from world import media
from world.arguments import Arguments, parse_number_list
from world.system import DRIVER_DEVICE, KEPT_SERVICES, OPERATIONS, SERVICES
from world.verbs import Verbs
from world.words import FormatError, format_value

VERBS = Verbs()


def _take_media_id(arguments):
    number = arguments.number("ID")
    if not 1 <= number <= media.MAX_ID:
        raise FormatError(f"ID is 1 to {media.MAX_ID}")
    return number


@VERBS.of("clock")
def _clock(session, arguments):
    seconds = arguments.number("SECONDS")
    arguments.expect_end()
    session.world.clock.wall_start = seconds


@VERBS.of("random")
def _random(session, arguments):
    numbers = [arguments.signed_number("N")]
    while not arguments.at_end():
        numbers.append(arguments.signed_number("N"))
    if min(numbers) < 0:
        raise FormatError("N is 0 to 2147483647")
    session.world.random.next = numbers


@VERBS.of("system-type")
def _system_type(session, arguments):
    code = arguments.number("N")
    arguments.expect_end()
    session.world.system_type_code = code


@VERBS.of("local")
def _local(session, arguments):
    address = arguments.value("ADDRESS")
    arguments.expect_end()
    session.world.local_addresses.add(address)


@VERBS.of("name")
def _name(session, arguments):
    device = arguments.number("DEVICE")
    text = arguments.value("TEXT")
    arguments.expect_end()
    session.world.names[device] = text


@VERBS.of("song")
def _song(session, arguments):
    song_id = _take_media_id(arguments)
    fields = arguments.fields("location", "device", "title", "artist", "album", "img", "genre")
    session.world.media.songs[song_id] = media.Song(
        song_id,
        location=fields.text("location"),
        device=fields.number("device"),
        title=fields.text("title"),
        artist=fields.text("artist"),
        album=fields.text("album"),
        image=fields.text("img"),
        genre=fields.text("genre"),
    )


@VERBS.of("station")
def _station(session, arguments):
    station_id = _take_media_id(arguments)
    fields = arguments.fields("location", "name", "genre", "img")
    session.world.media.stations[station_id] = media.Station(
        station_id,
        location=fields.text("location"),
        name=fields.text("name"),
        genre=fields.text("genre"),
        image=fields.text("img"),
    )


@VERBS.of("album")
def _album(session, arguments):
    album_id = _take_media_id(arguments)
    fields = arguments.fields("songs", "input", "title")
    session.world.media.albums[album_id] = media.Album(
        album_id, fields.text("title"), fields.text("input"), fields.number_list("songs")
    )


@VERBS.of("playlist")
def _playlist(session, arguments):
    playlist_id = _take_media_id(arguments)
    title = arguments.value("TITLE")
    songs = arguments.fields("songs").number_list("songs")
    session.world.media.put_playlist(playlist_id, DRIVER_DEVICE, title, songs)


@VERBS.of("mp3devices")
def _mp3_devices(session, arguments):
    device = arguments.number("DEVICE")
    devices = arguments.value("LIST")
    arguments.expect_end()
    if devices == "none":
        session.world.mp3_lists.pop(device, None)
    else:
        session.world.mp3_lists[device] = parse_number_list(devices, "LIST")


@VERBS.of("analog")
def _analog(session, arguments):
    room = arguments.number("ROOM")
    devices = arguments.value("LIST")
    arguments.expect_end()
    session.world.analog_sources[room] = parse_number_list(devices, "LIST")


@VERBS.of("reply")
def _reply(session, arguments):
    device = arguments.number("DEVICE")
    name = arguments.value("NAME")
    session.world.replies[device, name] = arguments.text()


@VERBS.of("without")
def _without(session, arguments):
    name = arguments.value("NAME")
    arguments.expect_end()
    if name in KEPT_SERVICES and session.has_driver():
        raise FormatError(f"{name} is missing from the start or not at all")
    if name not in SERVICES + KEPT_SERVICES:
        raise FormatError(f"no service that can be missing is named {format_value(name)}")
    session.world.missing.add(name)


@VERBS.of("fail")
def _fail(session, arguments):
    name = arguments.value("NAME")
    arguments.expect_end()
    if name not in OPERATIONS:
        raise FormatError(f"no operation that can fail is named {format_value(name)}")
    session.world.failing.add(name)


@VERBS.of("room")
def _room(session, arguments):
    room = arguments.number("ROOM")
    fields = arguments.fields("ip", "port", "channel")
    session.world.live.rooms[room] = (fields.text("ip"), fields.number("port"), fields.number("channel"))


@VERBS.of("engine")
def _engine(session, arguments):
    binding = arguments.number("BINDING")
    arguments.expect_end()
    session.world.live.add_engine(binding)


@VERBS.of("inside")
def _inside(session, arguments):
    output = arguments.value("OUTPUT")
    line = arguments.rest()
    verb = Arguments(line).value("INPUT")
    if not session.has_verb(verb) or verb in ("start", "create", "stop", "advance"):
        raise FormatError(f"nothing inside a call is named {format_value(verb)}")
    session.world.inside_calls.append((output, line))
