"""The commands, each with its parameters: (name, how often, what draws the parameters)."""


def _room(values):
    return {"ROOM_ID": values.room()}


def _flags(values, *names):
    """Each of the flags now and then."""
    return {name: values.flag() for name in names if values.chance(0.4)}


def _song(values):
    media, source = values.typed_media()
    params = {"ROOM_ID": values.room(), "MEDIA_ID": media}
    if source is not None:
        params["SOURCE"] = source
    return params


def _add_song(values):
    return _song(values) | _flags(values, "PLAY_NOW", "PLAY_NEXT", "CLEAR")


def _add_song_list(values):
    media = values.song_list() if values.chance(0.5) else values.media_list()
    return _room(values) | {"MEDIA": media} | _flags(values, "PLAY_NOW", "PLAY_NEXT", "CLEAR")


def _edit_queue(values):
    return _room(values) | {"MEDIA": values.song_list() if values.chance(0.5) else values.media_list()}


def _add_album(values):
    return _room(values) | {"MEDIA_ID": values.album()} | _flags(values, "PLAY_NOW", "PLAY_NEXT", "CLEAR")


def _add_album_list(values):
    return _room(values) | {"MEDIA": values.album_list()} | _flags(values, "PLAY_NOW", "PLAY_NEXT")


def _queue_all(values):
    params = _room(values)
    if values.chance(0.7):
        params["ARTIST"] = values.pick("Ann", "Bob", "Ann & <Bob>", "nobody", "")
    if values.chance(0.5):
        params["GENRE"] = values.pick("Jazz", "Folk", "")
    return params | _flags(values, "PLAY_NOW", "PLAY_NEXT")


def _add_ir_stream(values):
    params = _room(values)
    if values.chance(0.7):
        params["MEDIA_ID"] = values.station()
    if values.chance(0.3):
        params["MEDIA"] = values.pick("http://x", "http://radio.example/x", "")
    if values.chance(0.5):
        params["DEVICE_ID"] = values.pick(5, 6, 7, 0)
    if values.chance(0.4):
        params["QUEUE_INFO"] = values.pick("mine", "yours", "<a>&", "")
    return params


def _add_playlist(values):
    return _room(values) | {"MEDIA_ID": values.playlist()} | _flags(values, "PLAY_NOW", "PLAY_NEXT", "CLEAR")


def _go_to_song(values):
    params = _song(values)
    if values.chance(0.6):
        params["MEDIA_INDEX"] = values.pick(0, 0, 1, 1, 2, 3, 5, 4095, "x", "-1")
    return params


def _mode(name):
    return lambda values: _room(values) | _flags(values, name)


def _join(values):
    params = _room(values)
    if values.chance(0.7):
        params["JOIN_ID"] = values.room()
    if values.chance(0.4):
        params["QUEUE_ID"] = values.queue()
    return params


def _rooms(values):
    return _room(values) | {"ROOM_ID_LIST": values.room_list()}


def _save_playlist(values):
    return _room(values) | {"NAME": values.pick("Evening", "Morning", "Late night", "A <b> & c", "", "I <3 you")}


def _rename_playlist(values):
    return {"MEDIA_ID": values.playlist(), "NAME": values.pick("Noon", "Evening", "A <b>", "")}


def _secondary_info(values):
    params = {}
    if values.chance(0.8):
        params["roomId"] = values.room()
    if values.chance(0.4):
        params["queueId"] = values.queue()
    for name in ("artist", "album", "title", "genre", "imageUrl"):
        if values.chance(0.4):
            params[name] = values.text()
    for name in ("merge", "force"):
        if values.chance(0.4):
            params[name] = values.pick("true", "True", "false", "1", "0", "yes", "")
    return params


def _none(values):
    return {}


COMMANDS = (
    ("PLAY", 8, _room),
    ("PAUSE", 6, _room),
    ("STOP", 5, _room),
    ("SKIP_FWD", 8, _room),
    ("SKIP_REV", 6, _room),
    ("GO_TO_SONG", 6, _go_to_song),
    ("REPEAT", 4, _mode("REPEAT")),
    ("SHUFFLE", 5, _mode("SHUFFLE")),
    ("JOIN", 4, _join),
    ("ADD_ROOMS_TO_SESSION", 5, _rooms),
    ("REMOVE_ROOMS_FROM_SESSION", 3, _rooms),
    ("REMOVE", 3, _room),
    ("REMOVE_QUEUE", 2, _room),
    ("ADD_SONG", 10, _add_song),
    ("ADD_SONG_LIST", 12, _add_song_list),
    ("ADD_ALBUM_MP3", 5, _add_album),
    ("ADD_ALBUM_LIST", 4, _add_album_list),
    ("QUEUE_ALL", 3, _queue_all),
    ("ADD_IR_STREAM", 5, _add_ir_stream),
    ("ADD_PLAYLIST", 5, _add_playlist),
    ("EDIT_QUEUE", 5, _edit_queue),
    ("REMOVE_SONG", 6, _song),
    ("SAVE_PLAYLIST", 3, _save_playlist),
    ("RENAME_PLAYLIST", 2, _rename_playlist),
    ("DELETE_PLAYLIST", 1, lambda values: {"MEDIA_ID": values.playlist()}),
    ("GET_RHAPSODY_MY_PLAYLISTS", 1, lambda values: {"deviceid": values.pick(5, 6, 0)}),
    ("GET_QUEUE_STATUS", 1, _none),
    ("GET_QUEUE_STATUSV2", 1, _none),
    ("GET_ROOM_HISTORY", 2, _room),
    ("REQUEST_CURRENT_MEDIA_INFO", 2, _room),
    ("UPDATE_SECONDARY_MEDIA_INFO", 5, _secondary_info),
    ("GET_SETTINGS", 1, _none),
    ("SET_PLAYLIST_CLEAR_FLAG", 2, lambda values: {"FLAG_VALUE": values.pick("true", "TRUE", "false", "0", "")}),
    ("SET_PLAYLIST_CLEAR_DELAY", 2, lambda values: {"DELAY_VALUE": values.pick(0, 0, 1, 2, 65537, "x", "")}),
    ("SET_PLAY_PREFERENCE", 1, lambda values: {"PLAY_PREF": values.pick(0, 1, 2, -1, "x", "")}),
    ("FLY", 0.3, _room),
)


def _queue_info(values):
    params = {}
    if values.chance(0.7):
        params["ROOM_ID"] = values.room()
    if values.chance(0.5):
        params["QUEUE_ID"] = values.queue()
    return params


REQUESTS = (("GET_QUEUE_INFO", 10, _queue_info),) + tuple((name, 0.3, draw) for name, _, draw in COMMANDS)
CONDITIONS = (("InSession", 5, _room), ("NotInSession", 5, _room), ("Sleeping", 1, _room))


def odd_params(values, params):
    """Now and then something is missing, odd, huge, there twice, or not known."""
    if not values.chance(0.08):
        return list(params.items())
    pairs = [(key, values.odd() if values.chance(0.4) else value) for key, value in params.items()]
    pairs = [pair for pair in pairs if not values.chance(0.2)]
    if pairs and values.chance(0.2):
        pairs.append((values.dice.choice(pairs)[0], values.odd()))
    if values.chance(0.2):
        pairs.append(("OTHER", values.odd()))
    values.dice.shuffle(pairs)
    return pairs
