"""The verbs that enter the driver."""

from core import DIGITAL_AUDIO_ID, AVResult, AVSelection, Track
from messages import Message, message_to_xml
from nodes import parse_document
from world.verbs import Verbs
from world.words import FormatError, format_pair, format_value

VERBS = Verbs()


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


@VERBS.of("start")
def _start(session, arguments):
    if arguments.at_end():
        session.start(None)
        return
    root = parse_document(arguments.text())
    if root is None:
        raise FormatError("the persisted element is not well-formed XML")
    session.start(root)


@VERBS.of("create")
def _create(session, arguments):
    arguments.expect_end()
    session.create_again()


@VERBS.of("stop")
def _stop(session, arguments):
    arguments.expect_end()
    session.stop()


@VERBS.of("persist")
def _persist(session, arguments):
    arguments.expect_end()
    element = session.enter(session.driver().get_persist_state)
    session.world.recorder.output("persist", text=element.to_text() if element else "")


def _change_binding(session, arguments, bound):
    binding = arguments.number("ID")
    arguments.expect_end()
    driver = session.driver()
    session.enter(lambda: driver.on_binding_changed(binding, "", bound))


@VERBS.of("bound")
def _bound(session, arguments):
    _change_binding(session, arguments, True)


@VERBS.of("unbound")
def _unbound(session, arguments):
    _change_binding(session, arguments, False)


@VERBS.of("online")
def _online(session, arguments):
    binding = arguments.number("BINDING")
    address = arguments.value("ADDRESS")
    _call_bound(session, binding, _take_message(arguments, "SERVER_ONLINE"), data=address)


@VERBS.of("offline")
def _offline(session, arguments):
    binding = arguments.number("BINDING")
    arguments.expect_end()
    _call_bound(session, binding, Message("SERVER_OFFLINE"))


@VERBS.of("data")
def _data(session, arguments):
    binding = arguments.number("BINDING")
    text = arguments.value("TEXT")
    arguments.expect_end()
    _call_bound(session, binding, Message("DATA_RECEIVED"), data=text)


@VERBS.of("protocol")
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


@VERBS.of("command")
def _command(session, arguments):
    name = arguments.value("NAME")
    message = _take_message(arguments, name)
    driver = session.driver()
    session.enter(lambda: driver.execute_command(message, _print_return(session), 0))


@VERBS.of("request")
def _request(session, arguments):
    name = arguments.value("NAME")
    message = _take_message(arguments, name)
    driver = session.driver()
    node = session.enter(lambda: driver.ui_request(message))
    session.world.recorder.output("reply", text=node.to_text() if node else "none")


@VERBS.of("test")
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


@VERBS.of("select")
def _select(session, arguments):
    selection = _take_wish(arguments.number("ROOM"), arguments.fields(*_WISH))
    driver = session.driver()
    result = AVResult()
    session.enter(lambda: driver.on_av_selected(selection, result))
    if result.handled:
        pairs = [("queue", str(result.queue)), ("media", str(result.media)), ("kind", result.kind)]
        session.world.recorder.output_pairs("selected", [], [format_pair(*pair) for pair in pairs])


@VERBS.of("location")
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


@VERBS.of("deselect")
def _deselect(session, arguments):
    room = arguments.number("ROOM")
    arguments.expect_end()
    driver = session.driver()
    session.enter(lambda: driver.on_av_deselected(AVSelection(room=room)))


@VERBS.of("off")
def _off(session, arguments):
    room = arguments.number("ROOM")
    arguments.expect_end()
    driver = session.driver()
    session.enter(lambda: driver.on_av_room_off(room))


@VERBS.of("valid")
def _valid(session, arguments):
    output = arguments.number("A")
    input_type = arguments.number("B")
    arguments.expect_end()
    driver = session.driver()
    _put_result(session, session.enter(lambda: driver.is_av_output_to_input_valid(output, input_type)))


# Time, and what calls the driver back.


@VERBS.of("advance")
def _advance(session, arguments):
    milliseconds = arguments.number("MS")
    arguments.expect_end()
    session.advance(milliseconds)


@VERBS.of("announce")
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


@VERBS.of("rhapsody")
def _rhapsody(session, arguments):
    answer = arguments.value("playlists, playlist-tracks, track or error")
    driver = session.driver()
    if not session.world.has_rhapsody_client:
        raise FormatError("the driver has no client of the streaming service")
    session.enter(_rhapsody_answer(arguments, driver, answer))
