"""Runs a house until Ctrl-C: main.py PROGRAMS [--latency MS] [MUSIC_FOLDER]"""

import argparse
import os
import signal
import sys
import time

from demo_catalog import make_catalogue
from demo_music import make_chime, make_demo_music
from demo_station import start_station
from house import House, HouseError

# What the README plays.
STATION = "Night Jazz"
INPUT = "Turntable"
TEST_TONE = "audiotestsrc is-live=true freq=330 volume=0.1"
PLAYLIST = "Evening"
PLAYLIST_SONGS = 4


def state_folder():
    base = os.environ.get("XDG_STATE_HOME") or os.path.join(os.path.expanduser("~"), ".local", "state")
    return os.path.join(base, "korvel")


def show(house, programs, chime):
    ctl = os.path.relpath(os.path.join(programs, "korvelctl"))
    page = "open" if os.path.isdir("web/dist") else "the API is at"
    print(f"\nThe house is up: {page} {house.url}")
    print("Rooms: " + ", ".join(room.name for room in house.rooms) + f".  Music: {house.music}")
    print("\nTry in another terminal:")
    print(f"  {ctl} rooms")
    print(f"  {ctl} search tone")
    print(f'  {ctl} play Kitchen "Morning Scale"')
    print(f'  {ctl} join Kitchen "Living room"')
    print(f'  {ctl} radio Kitchen "{STATION}"')
    print(f"  {ctl} input Kitchen {INPUT}   # a test tone")
    print(f"  {ctl} playlist Kitchen {PLAYLIST}")
    print(f"  {ctl} announce {chime} Kitchen")
    print(f"  {ctl} command ADD_SONG ROOM_ID=3 SOURCE=3 MEDIA_ID=demo   # a channel of the streaming service")
    print(f"  {ctl} watch")
    print(f"\nLogs: {house.folder}/*.log.  Ctrl-C stops everything.", flush=True)
    if why := house.why_silent():
        print(f"No sound leaves this machine: {why}{hint()}.  Everything else works.", flush=True)


def hint():
    """What a person can do about it, if that is known."""
    try:
        with open("/proc/asound/cards", encoding="utf-8") as cards:
            has_card = "no soundcards" not in cards.read()
    except OSError:
        return ""
    return " (there is a sound card: may this user open it? group audio)" if has_card else ""


def read_arguments():
    parser = argparse.ArgumentParser(prog="run")
    parser.add_argument("programs")
    parser.add_argument("--latency", type=int)
    parser.add_argument("music", nargs="?")
    return parser.parse_args()


def find_music(given, demo):
    if given:
        if not os.path.isdir(given):
            raise HouseError(f"{given} is not a folder")
        return os.path.abspath(given)
    print("No music folder given: making some demo music ...", flush=True)
    return demo


def main():
    arguments = read_arguments()
    folder = state_folder()
    # Also where a shell started this in the background, with SIGINT ignored.
    signal.signal(signal.SIGINT, signal.default_int_handler)
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    house = None
    try:
        demo = os.path.join(folder, "demo-music")
        music = find_music(arguments.music, demo)
        # Music for a person without any, and for everybody's streaming service.
        make_demo_music(demo)
        chime = make_chime(os.path.join(folder, "chime.wav"))
        catalogue = make_catalogue(os.path.join(folder, "demo-catalog.toml"), demo)
        house = House(arguments.programs, folder, music, catalogue, latency=arguments.latency,
                      stations={STATION: start_station(demo)}, inputs={INPUT: TEST_TONE})
        house.start()
        house.save_playlist(PLAYLIST, house.wait_for_songs(PLAYLIST_SONGS))
        show(house, arguments.programs, chime)
        while not (failed := house.failed()):
            time.sleep(0.5)
        print(f"run: {failed} has stopped: {house.last_log_line(failed)}", file=sys.stderr)
        return 1
    except HouseError as error:
        print(f"run: {error}", file=sys.stderr)
        return 1
    except KeyboardInterrupt:
        print("\nStopping ...", flush=True)
        return 0
    finally:
        # A second Ctrl-C must not leave programs behind.
        signal.signal(signal.SIGINT, signal.SIG_IGN)
        signal.signal(signal.SIGTERM, signal.SIG_IGN)
        if house:
            house.stop()


sys.exit(main())
