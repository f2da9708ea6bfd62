"""An internet radio station on this machine: plays a folder of WAV files for ever, to everybody the same at a time."""

import functools
import http.server
import os
import struct
import threading
import time
import wave

from demo_music import RATE

FRAME_BYTES = 4  # both channels, 16 bits
BLOCK_FRAMES = RATE // 10
AHEAD_SECONDS = 4  # what a listener gets at once, to start with
ENDLESS = 0xFFFFFFFF  # the length of what has none


def sound_of(folder):
    """All songs of the folder one after the other, as samples."""
    sound = bytearray()
    for name in sorted(os.listdir(folder)):
        if name.endswith(".wav"):
            with wave.open(os.path.join(folder, name), "rb") as song:
                if (song.getframerate(), song.getnchannels(), song.getsampwidth()) == (RATE, 2, 2):
                    sound += song.readframes(song.getnframes())
    return bytes(sound)


def endless_header():
    form = struct.pack("<HHIIHH", 1, 2, RATE, RATE * FRAME_BYTES, FRAME_BYTES, 16)
    return (b"RIFF" + struct.pack("<I", ENDLESS) + b"WAVEfmt " + struct.pack("<I", len(form)) + form
            + b"data" + struct.pack("<I", ENDLESS))


class Broadcast:
    """What is on the air."""

    def __init__(self, sound):
        self.sound = sound
        self.started = time.monotonic()

    def frame_now(self):
        return int((time.monotonic() - self.started) * RATE)

    def block(self, frame):
        """The sound of the block that begins with this frame since the start."""
        begin = frame * FRAME_BYTES % len(self.sound)
        end = begin + BLOCK_FRAMES * FRAME_BYTES
        piece = self.sound[begin:end]
        while len(piece) < BLOCK_FRAMES * FRAME_BYTES:
            piece += self.sound[: BLOCK_FRAMES * FRAME_BYTES - len(piece)]
        return piece


class Listener(http.server.BaseHTTPRequestHandler):
    def __init__(self, broadcast, *arguments):
        self.broadcast = broadcast
        super().__init__(*arguments)

    def do_GET(self):
        self.send_response(200)
        self.send_header("Content-Type", "audio/x-wav")
        self.send_header("Cache-Control", "no-store")
        self.end_headers()
        try:
            self.wfile.write(endless_header())
            self.play()
        except OSError:
            pass  # the listener has left

    def play(self):
        frame = self.broadcast.frame_now()
        while True:
            self.wfile.write(self.broadcast.block(frame))
            frame += BLOCK_FRAMES
            ahead = (frame - self.broadcast.frame_now()) / RATE
            time.sleep(max(0.0, ahead - AHEAD_SECONDS))

    def log_message(self, *_):
        pass  # the terminal belongs to the house


class Server(http.server.ThreadingHTTPServer):
    daemon_threads = True

    def handle_error(self, *_):
        pass  # a listener that asks for nothing sensible


def start_station(folder):
    """Goes on the air on a free port of this machine, until the program ends; returns the address."""
    server = Server(("127.0.0.1", 0), functools.partial(Listener, Broadcast(sound_of(folder))))
    threading.Thread(target=server.serve_forever, daemon=True).start()
    return f"http://127.0.0.1:{server.server_address[1]}/"
