"""Makes music to try the house with: short tunes and plain tones as tagged WAV files."""

import array
import functools
import math
import os
import struct

RATE = 48000
FADE_SECONDS = 0.02


def pcm(samples):
    """Both channels of 16-bit sound, from samples from -1 to 1."""
    return array.array("h", (value for s in samples for value in (int(32767 * s),) * 2)).tobytes()


@functools.cache
def note(frequency, seconds, level=0.4):
    """One note with soft edges and a little of its octave."""
    count = int(seconds * RATE)
    fade = int(FADE_SECONDS * RATE)
    step = 2 * math.pi * frequency / RATE
    samples = []
    for i in range(count):
        edge = min(1.0, i / fade, (count - i) / fade)
        samples.append(level * edge * (math.sin(step * i) + 0.2 * math.sin(2 * step * i)))
    return pcm(samples)


def steady_tone(frequency, seconds, level=0.4):
    """A plain tone of whole Hz: every second of it is the same."""
    step = 2 * math.pi * frequency / RATE
    return pcm([level * math.sin(step * i) for i in range(RATE)]) * seconds


def note_frequency(name):
    """Scientific names such as A4 or C#5."""
    names = ("C", "C#", "D", "D#", "E", "F", "F#", "G", "G#", "A", "A#", "B")
    return 440.0 * 2 ** ((names.index(name[:-1]) - 9) / 12 + int(name[-1]) - 4)


def chunk(name, data):
    return name + struct.pack("<I", len(data)) + data + b"\0" * (len(data) % 2)


def write_song(path, sound, title, artist, album, genre, track):
    tags = (
        (b"INAM", title), (b"IART", artist), (b"IPRD", album), (b"IGNR", genre), (b"IPRT", str(track)),
    )
    info = b"INFO" + b"".join(chunk(name, text.encode() + b"\0") for name, text in tags)
    form = struct.pack("<HHIIHH", 1, 2, RATE, RATE * 4, 4, 16)
    body = b"WAVE" + chunk(b"fmt ", form) + chunk(b"LIST", info) + chunk(b"data", sound)
    # Renamed when complete: an interrupted run leaves no half song.
    with open(path + ".part", "wb") as file:
        file.write(b"RIFF" + struct.pack("<I", len(body)) + body)
    os.rename(path + ".part", path)


# A tune is notes with their lengths in beats.
TUNES = (
    ("Morning Scale", 132, "C4:1 D4:1 E4:1 F4:1 G4:1 A4:1 B4:1 C5:2 B4:1 A4:1 G4:1 F4:1 E4:1 D4:1 C4:2"),
    ("Round in D", 120, "D4:1 E4:1 F#4:1 D4:1 D4:1 E4:1 F#4:1 D4:1 F#4:1 G4:1 A4:2 F#4:1 G4:1 A4:2"),
    ("Evening Bells", 84, "G4:1 E4:1 F4:1 C4:2 C4:1 F4:1 G4:1 E4:2 E4:1 G4:1 F4:1 C4:2 F4:1 E4:1 G4:3"),
    ("Slow Minor", 72, "A4:2 C5:1 B4:1 A4:2 E4:2 F4:2 A4:1 G4:1 E4:4 D4:2 F4:1 E4:1 A4:4"),
)


def play(tune, beats_per_minute, repeats):
    notes = (word.split(":") for word in tune.split())
    return b"".join(note(note_frequency(name), float(beats) * 60 / beats_per_minute) for name, beats in notes) * repeats


def make_demo_music(folder):
    """A few minutes of tunes in two albums; files that are there are kept."""
    os.makedirs(folder, exist_ok=True)
    for number, (title, speed, tune) in enumerate(TUNES):
        path = os.path.join(folder, f"{number + 1:02} {title}.wav")
        if not os.path.exists(path):
            album = "Demo Day" if number < 2 else "Demo Night"
            write_song(path, play(tune, speed, 6), title, "The Tone Generators", album, "Demo", number % 2 + 1)


def make_chime(path):
    """Three notes, unless they are there; returns the path."""
    if not os.path.exists(path):
        sound = b"".join(note(note_frequency(name), 0.5) for name in ("E5", "C5", "G4"))
        write_song(path, sound, "Chime", "The Tone Generators", "", "Demo", 0)
    return path


def make_tones(folder, frequencies, seconds):
    """One song per frequency, titled by it."""
    os.makedirs(folder, exist_ok=True)
    for number, frequency in enumerate(frequencies, 1):
        title = f"Tone {frequency}"
        write_song(os.path.join(folder, f"{title}.wav"), steady_tone(frequency, seconds), title, "Smoke", "Tones", "Test", number)
