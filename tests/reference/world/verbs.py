"""The verbs of input lines: a function each, which takes the session and the words behind the verb."""

from core import DIGITAL_AUDIO_ID, AVResult, AVSelection, Track
from messages import Message, message_to_xml
from nodes import parse_document
from world import media
from world.arguments import Arguments, parse_number_list
from world.system import DRIVER_DEVICE, KEPT_SERVICES, OPERATIONS, SERVICES
from world.words import FormatError, format_pair, format_value

VERBS = {}


def _verb(name):
    def register(function):
        VERBS[name] = function
        return function

    return register


# The world.


def _take_media_id(arguments):
    number = arguments.number("ID")
    if not 1 <= number <= media.MAX_ID:
        raise FormatError(f"ID is 1 to {media.MAX_ID}")
    return number


@_verb("clock")
def _clock(session, arguments):
    seconds = arguments.number("SECONDS")
    arguments.expect_end()
    session.world.clock.wall_start = seconds


@_verb("random")
def _random(session, arguments):
    numbers = [arguments.signed_number("N")]
    while not arguments.at_end():
        numbers.append(arguments.signed_number("N"))
    if min(numbers) < 0:
        raise FormatError("N is 0 to 2147483647")
    session.world.random.next = numbers


@_verb("system-type")
def _system_type(session, arguments):
    code = arguments.number("N")
    arguments.expect_end()
    session.world.system_type_code = code


@_verb("local")
def _local(session, arguments):
    address = arguments.value("ADDRESS")
    arguments.expect_end()
    session.world.local_addresses.add(address)


@_verb("name")
def _name(session, arguments):
    device = arguments.number("DEVICE")
    text = arguments.value("TEXT")
    arguments.expect_end()
    session.world.names[device] = text


@_verb("song")
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


@_verb("station")
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


@_verb("album")
def _album(session, arguments):
    album_id = _take_media_id(arguments)
    fields = arguments.fields("songs", "input", "title")
    session.world.media.albums[album_id] = media.Album(
        album_id, fields.text("title"), fields.text("input"), fields.number_list("songs")
    )


@_verb("playlist")
def _playlist(session, arguments):
    playlist_id = _take_media_id(arguments)
    title = arguments.value("TITLE")
    songs = arguments.fields("songs").number_list("songs")
    session.world.media.put_playlist(playlist_id, DRIVER_DEVICE, title, songs)


@_verb("mp3devices")
def _mp3_devices(session, arguments):
    device = arguments.number("DEVICE")
    devices = arguments.value("LIST")
    arguments.expect_end()
    if devices == "none":
        session.world.mp3_lists.pop(device, None)
    else:
        session.world.mp3_lists[device] = parse_number_list(devices, "LIST")


@_verb("analog")
def _analog(session, arguments):
    room = arguments.number("ROOM")
    devices = arguments.value("LIST")
    arguments.expect_end()
    session.world.analog_sources[room] = parse_number_list(devices, "LIST")


@_verb("reply")
def _reply(session, arguments):
    device = arguments.number("DEVICE")
    name = arguments.value("NAME")
    session.world.replies[device, name] = arguments.text()


@_verb("without")
def _without(session, arguments):
    name = arguments.value("NAME")
    arguments.expect_end()
    if name in KEPT_SERVICES and session.has_driver():
        raise FormatError(f"{name} is missing from the start or not at all")
    if name not in SERVICES + KEPT_SERVICES:
        raise FormatError(f"no service that can be missing is named {format_value(name)}")
    session.world.missing.add(name)


@_verb("fail")
def _fail(session, arguments):
    name = arguments.value("NAME")
    arguments.expect_end()
    if name not in OPERATIONS:
        raise FormatError(f"no operation that can fail is named {format_value(name)}")
    session.world.failing.add(name)


@_verb("room")
def _room(session, arguments):
    room = arguments.number("ROOM")
    fields = arguments.fields("ip", "port", "channel")
    session.world.live.rooms[room] = (fields.text("ip"), fields.number("port"), fields.number("channel"))


@_verb("engine")
def _engine(session, arguments):
    binding = arguments.number("BINDING")
    arguments.expect_end()
    session.world.live.add_engine(binding)


@_verb("inside")
def _inside(session, arguments):
    output = arguments.value("OUTPUT")
    line = arguments.rest()
    verb = Arguments(line).value("INPUT")
    if verb not in VERBS or verb in ("start", "create", "stop", "advance"):
        raise FormatError(f"nothing inside a call is named {format_value(verb)}")
    session.world.inside_calls.append((output, line))


# The driver's entries.


def _take_message(arguments, name):
    message = Message(name)
    for key, value in arguments.pairs():
        message.add(key, "STRING", value)
    return message


def _print_return(session):
    return lambda text: session.world.recorder.output("return", text=text)


def _call_bound(session, binding, message, data="", message_type="", xml=None, ret=None):
    driver = session.driver()
    session.enter(lambda: driver.bound_call(binding, message_type, message, data, xml, ret))


def _put_result(session, result):
    if result is not None:
        session.world.recorder.output("result", bool(result))


@_verb("start")
def _start(session, arguments):
    if arguments.at_end():
        session.start(None)
        return
    root = parse_document(arguments.text())
    if root is None:
        raise FormatError("the persisted element is not well-formed XML")
    session.start(root)


@_verb("create")
def _create(session, arguments):
    arguments.expect_end()
    session.create_again()


@_verb("stop")
def _stop(session, arguments):
    arguments.expect_end()
    session.stop()


@_verb("persist")
def _persist(session, arguments):
    arguments.expect_end()
    element = session.enter(session.driver().get_persist_state)
    session.world.recorder.output("persist", text=element.to_text() if element else "")


def _change_binding(session, arguments, bound):
    binding = arguments.number("ID")
    arguments.expect_end()
    driver = session.driver()
    session.enter(lambda: driver.on_binding_changed(binding, "", bound))


@_verb("bound")
def _bound(session, arguments):
    _change_binding(session, arguments, True)


@_verb("unbound")
def _unbound(session, arguments):
    _change_binding(session, arguments, False)


@_verb("online")
def _online(session, arguments):
    binding = arguments.number("BINDING")
    address = arguments.value("ADDRESS")
    _call_bound(session, binding, _take_message(arguments, "SERVER_ONLINE"), data=address)


@_verb("offline")
def _offline(session, arguments):
    binding = arguments.number("BINDING")
    arguments.expect_end()
    _call_bound(session, binding, Message("SERVER_OFFLINE"))


@_verb("data")
def _data(session, arguments):
    binding = arguments.number("BINDING")
    text = arguments.value("TEXT")
    arguments.expect_end()
    _call_bound(session, binding, Message("DATA_RECEIVED"), data=text)


@_verb("protocol")
def _protocol(session, arguments):
    binding = arguments.number("BINDING")
    name = arguments.value("NAME")
    command = message_to_xml(_take_message(arguments, name))
    _call_bound(
        session,
        binding,
        Message("COMMAND"),
        message_type="PROTOCOL_COMMAND",
        xml=command,
        ret=_print_return(session),
    )


@_verb("command")
def _command(session, arguments):
    name = arguments.value("NAME")
    message = _take_message(arguments, name)
    driver = session.driver()
    session.enter(lambda: driver.execute_command(message, _print_return(session), 0))


@_verb("request")
def _request(session, arguments):
    name = arguments.value("NAME")
    message = _take_message(arguments, name)
    driver = session.driver()
    node = session.enter(lambda: driver.ui_request(message))
    session.world.recorder.output("reply", text=node.to_text() if node else "none")


@_verb("test")
def _test(session, arguments):
    name = arguments.value("NAME")
    message = _take_message(arguments, name)
    driver = session.driver()
    _put_result(session, session.enter(lambda: driver.test_condition(message)))


# Source selection.


_WISH = ("queue", "kind", "source", "binding", "ip", "port", "channel", "input", "media", "target", "location-kind")


def _take_wish(room, fields):
    return AVSelection(
        room=room,
        queue=fields.number("queue"),
        kind=fields.text("kind"),
        source=fields.number("source"),
        binding=fields.number("binding"),
        ip=fields.text("ip"),
        port=fields.number("port"),
        channel=fields.number("channel"),
        input=fields.text("input"),
        media=fields.number_list("media"),
        target=fields.number("target"),
        location_kind=fields.text("location-kind"),
    )


@_verb("select")
def _select(session, arguments):
    selection = _take_wish(arguments.number("ROOM"), arguments.fields(*_WISH))
    driver = session.driver()
    result = AVResult()
    session.enter(lambda: driver.on_av_selected(selection, result))
    if result.handled:
        pairs = [("queue", str(result.queue)), ("media", str(result.media)), ("kind", result.kind)]
        session.world.recorder.output_pairs("selected", [], [format_pair(*pair) for pair in pairs])


@_verb("location")
def _location(session, arguments):
    room = arguments.number("ROOM")
    fields = arguments.fields(*_WISH, "location")
    selection = _take_wish(room, fields)
    selection.location = fields.text("location")
    driver = session.driver()

    def ask():
        driver.on_av_add_location_info(selection)
        session.world.recorder.output("location", text=selection.location)

    session.enter(ask)


@_verb("deselect")
def _deselect(session, arguments):
    room = arguments.number("ROOM")
    arguments.expect_end()
    driver = session.driver()
    session.enter(lambda: driver.on_av_deselected(AVSelection(room=room)))


@_verb("off")
def _off(session, arguments):
    room = arguments.number("ROOM")
    arguments.expect_end()
    driver = session.driver()
    session.enter(lambda: driver.on_av_room_off(room))


@_verb("valid")
def _valid(session, arguments):
    output = arguments.number("A")
    input_type = arguments.number("B")
    arguments.expect_end()
    driver = session.driver()
    _put_result(session, session.enter(lambda: driver.is_av_output_to_input_valid(output, input_type)))


# Time, and what calls the driver back.


@_verb("advance")
def _advance(session, arguments):
    milliseconds = arguments.number("MS")
    arguments.expect_end()
    session.advance(milliseconds)


@_verb("announce")
def _announce(session, arguments):
    operation = arguments.value("create, play or remove")
    path = arguments.value("PATH") if operation == "play" else ""
    arguments.expect_end()
    session.driver()
    announcements = session.world.get_instance(DIGITAL_AUDIO_ID)
    if announcements is None:
        raise FormatError("the driver offers no announcements")
    if operation == "create":
        session.enter(announcements.create_announcement_stream)
    elif operation == "play":
        session.enter(lambda: announcements.play_announcement(path))
    elif operation == "remove":
        session.enter(announcements.remove_announcement_stream)
    else:
        raise FormatError(f"announce wants create, play or remove, not {format_value(operation)}")


def _rhapsody_answer(arguments, driver, answer):
    """The call that the answer's words ask for."""
    if answer == "playlists":
        playlists = []
        while not arguments.at_end():
            playlist_id = arguments.value("ID")
            playlists.append((playlist_id, arguments.value("NAME")))
        return lambda: driver.rc_playlists(playlists)
    if answer == "playlist-tracks":
        ids = []
        while not arguments.at_end():
            ids.append(arguments.value("ID"))
        return lambda: driver.rc_playlist_tracks(ids)
    if answer == "track":
        tracks = []
        if not arguments.at_end():
            fields = arguments.fields("id", "context", "album", "artist", "name", "img")
            keys = ("id", "context", "album", "artist", "name", "img")
            tracks.append(Track(*(fields.text(key) for key in keys)))
        return lambda: driver.rc_tracks(tracks)
    if answer == "error":
        code = arguments.signed_number("N")
        arguments.expect_end()
        return lambda: driver.rc_error(code)
    raise FormatError(f"rhapsody wants playlists, playlist-tracks, track or error, not {format_value(answer)}")


@_verb("rhapsody")
def _rhapsody(session, arguments):
    answer = arguments.value("playlists, playlist-tracks, track or error")
    driver = session.driver()
    if not session.world.has_rhapsody_client:
        raise FormatError("the driver has no client of the streaming service")
    session.enter(_rhapsody_answer(arguments, driver, answer))
