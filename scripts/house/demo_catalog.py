"""Makes a catalogue of the streaming service out of a folder of WAV files."""

import json
import os
import wave


def entry(kind, **settings):
    # JSON's texts, numbers and lists of texts are TOML's.
    return f"[[{kind}]]\n" + "".join(f"{key} = {json.dumps(value)}\n" for key, value in settings.items())


def seconds_of(path):
    with wave.open(path, "rb") as song:
        return song.getnframes() / song.getframerate()


def make_catalogue(path, folder):
    """Writes a catalogue of the folder's songs: the tracks demo-1 and so on, the playlists day and night, which have
    half of them each, and the channel demo, which has them all."""
    songs = sorted(name for name in os.listdir(folder) if name.endswith(".wav"))
    ids = [f"demo-{number}" for number in range(1, len(songs) + 1)]
    half = len(ids) // 2
    entries = []
    for track, name in zip(ids, songs):
        song = os.path.abspath(os.path.join(folder, name))
        title = name.removesuffix(".wav").lstrip("0123456789 ") or name
        entries.append(entry("track", id=track, title=title, artist="The Tone Generators", media=song,
                             duration=seconds_of(song)))
    entries.append(entry("playlist", id="day", name="By day", tracks=ids[:half]))
    entries.append(entry("playlist", id="night", name="By night", tracks=ids[half:]))
    entries.append(entry("channel", id="demo", name="Demo music for ever", tracks=ids))
    with open(path, "w", encoding="utf-8") as file:
        file.write("\n".join(entries))
    return path
