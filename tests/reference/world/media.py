"""The media database, in plain tables."""

from dataclasses import dataclass, field

from core import MediaItem
from nodes import Node, parse_document
from text import is_true

SONG_TYPE = 1
FAILED = -1
MAX_ID = 2147483647
MAX_ITEMS = 100000

_CATEGORIES = {
    "SONG": "song",
    "SONGS": "song",
    "BROADCAST_AUDIO": "station",
    "ALBUM": "album",
    "ALBUM_MP3": "album",
    "ALBUM_CD": "album",
    "PLAYLIST": "playlist",
}


class DatabaseError(Exception):
    """What the database refuses; the operation fails and a log line says why."""


@dataclass
class Song:
    id: int
    location: str = ""
    device: int = 0
    title: str = ""
    artist: str = ""
    album: str = ""
    image: str = ""
    genre: str = ""


@dataclass
class Station:
    id: int
    location: str = ""
    name: str = ""
    genre: str = ""
    image: str = ""


@dataclass
class Album:
    id: int
    title: str = ""
    input_name: str = ""
    songs: list = field(default_factory=list)  # ids in order; unknown ones are kept


@dataclass
class Playlist:
    id: int
    device: int
    title: str
    items: list = field(default_factory=list)


def _song_item(song_id):
    return MediaItem(type=SONG_TYPE, media_id=song_id)


def _copy(items):
    return [MediaItem(item.type, item.external_id, item.media_id, item.extra) for item in items]


def _check_length(items):
    if len(items) > MAX_ITEMS:
        raise DatabaseError(f"media database: a playlist takes {MAX_ITEMS} items at most")


def _add_known(node, *values):
    for name, text in values:
        if text:
            node.add(name, text)


def _add_song_id(node, song_id):
    node.add("song").add("id", str(song_id))


def _read_description(description):
    """The title of a playlist's description; None when it is none, or its title is not plain text."""
    root = parse_document(description)
    if root is None or root.name != "album":
        return None
    flag = root.attributes["playlist"] if "playlist" in root.attributes else root.value("playlist")
    title = root.find("title")
    if not is_true(flag) or (title is not None and title.children):
        return None
    return title.text if title is not None else ""


def _described_playlist(description, name):
    """The title of the playlist that the description asks for; "" for anything else."""
    title = _read_description(description)
    if title is None:
        # A title that is not escaped is what stands between the tags.
        tag = description.find("<title>")
        begin = tag + len("<title>")
        end = description.rfind("</title>")
        if tag < 0 or end < 0 or begin > end:
            return ""
        if _read_description(description[:begin] + description[end:]) is None:
            return ""
        title = description[begin:end]
    return title or name


class MediaDatabase:
    def __init__(self):
        self.songs = {}
        self.stations = {}
        self.albums = {}
        self.playlists = {}
        self._last_playlist = 0  # ids are never given twice

    # Storing.

    def put_playlist(self, playlist_id, device, title, song_ids):
        self._write_playlist(playlist_id, device, title, [_song_item(song_id) for song_id in song_ids])

    def _write_playlist(self, playlist_id, device, title, items):
        """Under a new id for 0."""
        _check_length(items)
        playlist_id = playlist_id or self._last_playlist + 1
        if playlist_id > MAX_ID:
            raise DatabaseError("media database: CHECK constraint failed: id BETWEEN 1 AND 2147483647")
        self._last_playlist = max(self._last_playlist, playlist_id)
        self.playlists[playlist_id] = Playlist(playlist_id, device, title, _copy(items))
        return playlist_id

    # Looking up.

    def _known_songs(self, song_ids):
        return [self.songs[song_id] for song_id in song_ids if song_id in self.songs]

    def _playlist_songs(self, playlist):
        return self._known_songs(item.media_id for item in playlist.items if item.type == SONG_TYPE)

    def get_location(self, media_id, category):
        """None for an unknown id or category."""
        kind = _CATEGORIES.get(category)
        if kind == "song" and media_id in self.songs:
            return self.songs[media_id].location
        if kind == "station" and media_id in self.stations:
            return self.stations[media_id].location
        songs = []
        if kind == "album" and media_id in self.albums:
            songs = self._known_songs(self.albums[media_id].songs)
        if kind == "playlist" and media_id in self.playlists:
            songs = self._playlist_songs(self.playlists[media_id])
        return songs[0].location if songs else None

    def get_storage_device(self, media_id):
        return self.songs[media_id].device if media_id in self.songs else 0

    def get_album_info(self, album_id):
        album = self.albums.get(album_id)
        if album is None:
            return None
        node = Node("album")
        node.add("id", str(album.id))
        _add_known(node, ("title", album.title), ("LOCAL_INPUT_NAME", album.input_name))
        for song_id in album.songs:
            _add_song_id(node, song_id)
        return node

    def get_media_record(self, media_id, category):
        kind = _CATEGORIES.get(category)
        if kind == "song" and media_id in self.songs:
            song = self.songs[media_id]
            node = Node("song")
            _add_known(node, ("name", song.title), ("album_title", song.album), ("artist", song.artist))
            _add_known(node, ("genre", song.genre), ("img", song.image))
            return node
        if kind == "station" and media_id in self.stations:
            station = self.stations[media_id]
            node = Node("station")
            _add_known(node, ("name", station.name), ("genre", station.genre), ("img", station.image))
            return node
        if kind == "album":
            return self.get_album_info(media_id)
        if kind == "playlist" and media_id in self.playlists:
            playlist = self.playlists[media_id]
            node = Node("playlist")
            _add_known(node, ("title", playlist.title))
            songs = node.add("songs")
            # The ids of other items count in other id spaces.
            for item in playlist.items:
                _add_song_id(songs, item.media_id if item.type == SONG_TYPE else 0)
            return node
        return None

    def _matches(self, song, device, artist, genre):
        return device in (0, song.device) and artist in ("", song.artist) and genre in ("", song.genre)

    def get_media_list(self, device, category, artist, genre, first, count):
        kind = _CATEGORIES.get(category)
        if kind is None:
            return None
        rows = []
        if kind == "song":
            rows = [(s.id, s.title) for s in self.songs.values() if self._matches(s, device, artist, genre)]
        elif kind == "station":
            rows = [(station.id, station.name) for station in self.stations.values()]
        elif kind == "album":
            for album in self.albums.values():
                songs = self._known_songs(album.songs)
                if (device, artist, genre) == (0, "", "") or any(
                    self._matches(song, device, artist, genre) for song in songs
                ):
                    rows.append((album.id, album.title))
        else:
            rows = [(p.id, p.title) for p in self.playlists.values() if device in (0, p.device)]
        first = max(first, 0)
        count = MAX_ITEMS if count < 0 else min(count, MAX_ITEMS)
        node = Node("list")
        for row_id, title in sorted(rows)[first : first + count]:
            record = node.add(kind)
            record.add("id", str(row_id))
            record.add("title", title)
        return node

    def get_songs_for_albums(self, album_ids, device_ids):
        """On any of the devices; on any at all when there are none."""
        items = []
        for album_id in album_ids:
            if album_id in self.albums:
                for song in self._known_songs(self.albums[album_id].songs):
                    if not device_ids or song.device in device_ids:
                        items.append(_song_item(song.id))
        return items[:MAX_ITEMS]

    def _find_songs(self, device_ids, matches):
        songs = [s for s in self.songs.values() if matches(s) and (not device_ids or s.device in device_ids)]
        songs.sort(key=lambda song: (song.album, song.id))
        return [_song_item(song.id) for song in songs][:MAX_ITEMS]

    def get_songs_by_artist(self, device_ids, artist):
        return self._find_songs(device_ids, lambda song: song.artist == artist)

    def get_songs_by_genre(self, device_ids, genre):
        return self._find_songs(device_ids, lambda song: song.genre == genre)

    def get_songs_by_artist_and_genre(self, device_ids, artist, genre):
        return self._find_songs(device_ids, lambda song: (song.artist, song.genre) == (artist, genre))

    # Playlists.

    def get_playlist_songs(self, playlist_id):
        return _copy(self.playlists[playlist_id].items) if playlist_id in self.playlists else []

    def get_playlist_name(self, playlist_id):
        return self.playlists[playlist_id].title if playlist_id in self.playlists else ""

    def create_playlist(self, device, name, items):
        return self._write_playlist(0, device, name, items)

    def update_playlist(self, playlist_id, items):
        if playlist_id not in self.playlists:
            return FAILED
        _check_length(items)
        self.playlists[playlist_id].items = _copy(items)
        return 0

    def delete_playlist(self, playlist_id):
        return 0 if self.playlists.pop(playlist_id, None) else FAILED

    def add_media(self, device, description, name, replace):
        """(result, new id)"""
        title = _described_playlist(description, name)
        if not title:
            return FAILED, 0
        same = [p.id for p in self.playlists.values() if (p.device, p.title) == (device, title)]
        return 0, self._write_playlist(min(same) if replace and same else 0, device, title, [])

    def add_song_to_playlist(self, playlist_id, song_id, position):
        if playlist_id not in self.playlists:
            return FAILED
        if song_id != 0:
            items = self.playlists[playlist_id].items
            _check_length(items + [None])
            items.insert(position, _song_item(song_id))
        return 0
