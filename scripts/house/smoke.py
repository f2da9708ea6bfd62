"""Plays known pitches through a whole house and listens to every room: smoke.py PROGRAMS"""

import os
import subprocess
import sys
import tempfile
import time
import wave

from demo_catalog import make_catalogue
from demo_music import make_tones
from demo_station import start_station
from house import House, HouseError

FIRST, SECOND, CHIME = 440, 660, 880
ON_AIR, INPUT = 550, 330
TOLERANCE_HZ = 4
SONG_SECONDS = 60
CHIME_SECONDS = 4
HEARD_SECONDS = 1.0  # how long a pitch must be heard
DEADLINE_SECONDS = 20
PITCH = os.path.join(os.path.dirname(__file__), "..", "pitch")


class Unheard(Exception):
    pass


def recorded_seconds(room):
    try:
        with wave.open(room.recording, "rb") as wav:
            return wav.getnframes() / wav.getframerate()
    except (OSError, EOFError, wave.Error):
        return 0.0


def pitch_between(room, start, end):
    """The dominant frequency of a stretch of the room's recording in Hz; 0 for silence."""
    words = [sys.executable, PITCH, room.recording, "--from", str(start), "--to", str(end)]
    heard = subprocess.run(words, check=True, capture_output=True, text=True).stdout.strip()
    return 0.0 if heard == "silence" else float(heard.split()[0])


def expect(room, frequency, since=None):
    """Waits until the last second of the room's recording has the pitch (0: silence); says when it was first so."""
    deadline = time.monotonic() + DEADLINE_SECONDS
    heard = None
    while time.monotonic() < deadline:
        end = recorded_seconds(room)
        if end >= HEARD_SECONDS and (since is None or end - HEARD_SECONDS >= since):
            heard = pitch_between(room, end - HEARD_SECONDS, end)
            if abs(heard - frequency) <= TOLERANCE_HZ:
                print(f"  {room.name}: {'silence' if frequency == 0 else f'{heard:.0f} Hz'}", flush=True)
                return
        time.sleep(0.2)
    raise Unheard(f"{room.name} should hear {frequency} Hz, but heard {heard} Hz")


def command(house, name, **parameters):
    return house.post("/api/command", {"name": name, "parameters": {key: str(value) for key, value in parameters.items()}})


def say(house, *words):
    """As a person would, to korvelctl."""
    done = subprocess.run([os.path.join(house.programs, "korvelctl"), "--url", house.url, *words], capture_output=True, text=True,
                          timeout=60, check=False)
    if done.returncode != 0:
        raise Unheard(f"korvelctl {' '.join(words)}: {done.stderr.strip()}")


def song_ids(house):
    songs = house.get("/api/library/songs?limit=10")["items"]
    return {song["title"]: song["id"] for song in songs}


def wait_for_songs(house, count):
    deadline = time.monotonic() + DEADLINE_SECONDS
    while len(songs := song_ids(house)) < count:
        if time.monotonic() > deadline:
            raise Unheard(f"the library shows {len(songs)} of {count} songs")
        time.sleep(0.1)
    return songs


def play_through(house, chime):
    songs = wait_for_songs(house, 2)
    living, kitchen, bedroom = house.rooms
    print("One room plays", flush=True)
    media = "".join(f"<MEDIA_ID>{songs[f'Tone {pitch}']}</MEDIA_ID>" for pitch in (FIRST, SECOND))
    command(house, "ADD_SONG_LIST", ROOM_ID=living.id, MEDIA=f"<MEDIA>{media}</MEDIA>")
    expect(living, FIRST)
    expect(kitchen, 0)

    print("A second room joins", flush=True)
    command(house, "ADD_ROOMS_TO_SESSION", ROOM_ID=living.id, ROOM_ID_LIST=kitchen.id)
    expect(kitchen, FIRST)
    expect(living, FIRST, since=recorded_seconds(living))

    print("Skip", flush=True)
    command(house, "SKIP_FWD", ROOM_ID=living.id)
    expect(living, SECOND)
    expect(kitchen, SECOND)

    print("Pause and play", flush=True)
    command(house, "PAUSE", ROOM_ID=kitchen.id)
    expect(living, 0)
    command(house, "PLAY", ROOM_ID=living.id)
    expect(kitchen, SECOND)

    print("An announcement in one of the rooms", flush=True)
    house.post("/api/announce", {"rooms": [kitchen.id], "file": chime})
    expect(kitchen, CHIME)
    expect(living, SECOND, since=recorded_seconds(living))
    expect(kitchen, SECOND)

    print("The audio server is killed and comes back", flush=True)
    house.stop_one("audioserver", how=9)
    expect(living, 0)
    house.start_server()
    house.wait_for("controller", house.is_ready)
    command(house, "ADD_SONG", ROOM_ID=kitchen.id, MEDIA_ID=songs[f"Tone {FIRST}"])
    expect(kitchen, FIRST)
    expect(living, 0)
    expect(bedroom, 0)

    print("The streaming service plays", flush=True)
    command(house, "ADD_SONG", ROOM_ID=bedroom.id, SOURCE=2, MEDIA_ID="demo-2")
    expect(bedroom, SECOND)
    expect(kitchen, FIRST)

    print("A station, a line input and a playlist play", flush=True)
    say(house, "radio", "Bedroom", "Night Jazz")
    expect(bedroom, ON_AIR)
    say(house, "input", "Bedroom", "Turntable")
    expect(bedroom, INPUT)
    house.save_playlist("Evening", [song for song in house.wait_for_songs(2) if song["title"] == f"Tone {SECOND}"])
    say(house, "playlist", "Bedroom", "Evening")
    expect(bedroom, SECOND)


def main():
    with tempfile.TemporaryDirectory(prefix="korvel-smoke-") as folder:
        music = os.path.join(folder, "music")
        make_tones(music, (FIRST, SECOND), SONG_SECONDS)
        make_tones(os.path.join(folder, "chime"), (CHIME,), CHIME_SECONDS)
        station = os.path.join(folder, "station")
        make_tones(station, (ON_AIR,), SONG_SECONDS)
        chime = os.path.join(folder, "chime", f"Tone {CHIME}.wav")
        catalogue = make_catalogue(os.path.join(folder, "catalog.toml"), music)
        house = House(sys.argv[1], folder, music, catalogue, first_port=0, server_port=0, http_port=0, catalog_port=0,
                      record=True, stations={"Night Jazz": start_station(station)},
                      inputs={"Turntable": f"audiotestsrc is-live=true freq={INPUT}"})
        try:
            house.start()
            play_through(house, chime)
            if failed := house.failed():
                raise HouseError(f"{failed} stopped: {house.last_log_line(failed)}")
        except (Unheard, HouseError, OSError) as error:
            print(f"smoke: {error}", file=sys.stderr)
            for name in list(house.processes):
                print(f"--- {name}", file=sys.stderr)
                with open(house.log_path(name), encoding="utf-8", errors="replace") as log:
                    print("".join(log.readlines()[-30:]), file=sys.stderr)
            return 1
        finally:
            house.stop()
    print("Every room heard what it should.")
    return 0


sys.exit(main())
