"""Starts and stops the programs of a house on this machine."""

import json
import os
import signal
import subprocess
import time
import urllib.error
import urllib.request

START_SECONDS = 30
STOP_SECONDS = 5
ROOMS = ("Living room", "Kitchen", "Bedroom")


class HouseError(Exception):
    """A program did not start; the text says which and why."""


class Room:
    def __init__(self, number, name, port, recording):
        self.id, self.name, self.port, self.recording = number, name, port, recording


def toml_text(text):
    """A TOML basic string; JSON escapes are a subset of TOML's."""
    return json.dumps(text)


class House:
    """A controller, an audio server, a player per room and the gateway of a streaming service.

    `catalogue` is the gateway's file. `stations` are names with addresses, `inputs` names with what the audio server takes
    for them. `folder` takes the configuration, the state and the logs. `first_port` is the first
    player's port, the next ones are two apart; with 0 every program picks free ports. With `record`, each player writes a
    WAV file. `latency` is the players', in milliseconds; with None they have their own.
    """

    def __init__(self, programs, folder, music, catalogue, first_port=6200, server_port=7700, http_port=8080,
                 catalog_port=5555, record=False, rooms=ROOMS, stations=None, inputs=None, latency=None):
        self.programs, self.folder, self.music = programs, folder, music
        self.first_port, self.server_port, self.http_port = first_port, server_port, http_port
        self.catalogue, self.catalog_port = catalogue, catalog_port
        self.record, self.latency = record, latency
        self.stations, self.inputs = stations or {}, inputs or {}
        self.outputs = set()
        self.room_names = rooms
        self.processes = {}
        self.rooms = []
        self.url = None

    def log_path(self, name):
        return os.path.join(self.folder, name + ".log")

    def start(self):
        os.makedirs(self.folder, exist_ok=True)
        for number, name in enumerate(self.room_names, 1):
            self.start_player(number, name)
        self.start_catalog()
        self.start_server()
        self.start_controller()

    def start_player(self, number, name):
        port = self.first_port + 2 * (number - 1) if self.first_port else 0
        recording = os.path.join(self.folder, f"room{number}.wav") if self.record else None
        arguments = ["--port", str(port), "--sender", "127.0.0.1"]
        arguments += (["--record", recording, "--no-device"] if recording else [])
        arguments += (["--latency", str(self.latency)] if self.latency else [])
        port = self.start_listening(f"player{number}", "korvel-roomplayer", arguments)
        self.outputs.add(self.processes[f"player{number}"].stdout.readline().strip().removeprefix("output "))
        self.rooms.append(Room(number, name, port, recording))

    def start_catalog(self):
        arguments = ["--catalog", self.catalogue, "--port", str(self.catalog_port)]
        try:
            self.catalog_port = self.start_listening("catalog", "korvel-catalog", arguments)
        except HouseError as error:
            # The rest plays without it; if another gateway has the port, that one serves.
            self.stop_one("catalog")
            print(f"The streaming service's catalogue is not served: {error}", flush=True)

    def start_server(self):
        arguments = ["--port", str(self.server_port), "--catalog", f"127.0.0.1:{self.catalog_port}"]
        for name, source in self.inputs.items():
            arguments += ["--input", f"{name}={source}"]
        self.server_port = self.start_listening("audioserver", "korvel-audioserver", arguments)

    def start_controller(self):
        config = self.write_config()
        self.spawn("controller", "korvel-controller", ["--config", config], stdout=subprocess.DEVNULL)
        self.url = self.wait_for("controller", self.find_url)
        self.wait_for("controller", self.is_ready)

    def write_config(self):
        lines = [f"state = {toml_text(os.path.join(self.folder, 'state'))}", f"music = [{toml_text(self.music)}]"]
        lines += ["[http]", f"port = {self.http_port}"]
        web = os.path.join(os.path.dirname(__file__), "..", "..", "web", "dist")
        if os.path.isdir(web):
            lines.append(f"web = {toml_text(os.path.abspath(web))}")
        lines += ["[catalog]", f'address = "127.0.0.1:{self.catalog_port}"']
        lines += ["[[server]]", 'host = "127.0.0.1"', f"port = {self.server_port}"]
        for room in self.rooms:
            lines += ["[[room]]", f"id = {room.id}", f"name = {toml_text(room.name)}"]
            lines += ['address = "127.0.0.1"', f"port = {room.port}"]
        for name, url in self.stations.items():
            lines += ["[[station]]", f"name = {toml_text(name)}", f"url = {toml_text(url)}"]
        for name in self.inputs:
            lines += ["[[input]]", f"name = {toml_text(name)}"]
        path = os.path.join(self.folder, "house.toml")
        with open(path, "w", encoding="utf-8") as file:
            file.write("\n".join(lines) + "\n")
        return path

    def spawn(self, name, program, arguments, stdout):
        with open(self.log_path(name), "w", encoding="utf-8") as log:
            # A session of its own: Ctrl-C reaches this program alone, which then stops the others in order.
            # Should this program be killed, the others must not stay and hold their ports.
            self.processes[name] = subprocess.Popen(
                ["setpriv", "--pdeathsig", "TERM", os.path.join(self.programs, program), *arguments],
                stdin=subprocess.DEVNULL, stdout=stdout, stderr=log, start_new_session=True, text=True,
            )
        return self.processes[name]

    def start_listening(self, name, program, arguments):
        """Starts a program that says on its first line where it listens; returns the port."""
        process = self.spawn(name, program, arguments, subprocess.PIPE)
        line = process.stdout.readline()
        if not line.startswith("listening on "):
            process.wait()
            raise HouseError(f"{program}: {self.last_log_line(name)}")
        return int(line.rsplit(":", 1)[1])

    def last_log_line(self, name):
        with open(self.log_path(name), encoding="utf-8", errors="replace") as log:
            lines = log.read().strip().splitlines()
        return lines[-1] if lines else "stopped without a word"

    def wait_for(self, name, condition):
        deadline = time.monotonic() + START_SECONDS
        while time.monotonic() < deadline:
            if self.processes[name].poll() is not None:
                raise HouseError(self.last_log_line(name))
            result = condition()
            if result:
                return result
            time.sleep(0.05)
        raise HouseError(f"{name} is not ready after {START_SECONDS} seconds; see {self.log_path(name)}")

    def find_url(self):
        with open(self.log_path("controller"), encoding="utf-8", errors="replace") as log:
            for line in log:
                if "korvel-controller" in line and " on http://" in line:
                    return line.rsplit(" on ", 1)[1].strip()
        return None

    def is_ready(self):
        try:
            status = self.get("/api/status")
        except (urllib.error.URLError, OSError):
            return False
        return status["ready"]

    def get(self, path):
        with urllib.request.urlopen(self.url + path, timeout=10) as reply:
            return json.load(reply)

    def post(self, path, body=None):
        data = json.dumps(body if body is not None else {}).encode()
        request = urllib.request.Request(self.url + path, data, {"Content-Type": "application/json"})
        with urllib.request.urlopen(request, timeout=10) as reply:
            return json.load(reply)

    def wait_for_songs(self, count):
        """The titles and ids of the library's first songs, once it has this many of them or the scan is over."""
        deadline = time.monotonic() + START_SECONDS
        while True:
            over = not self.get("/api/status")["scan"]["running"]
            songs = self.get(f"/api/library/songs?limit={max(count, 1)}")["items"]
            if over or len(songs) >= count or time.monotonic() > deadline:
                return songs
            time.sleep(0.1)

    def save_playlist(self, title, songs):
        """Unless there is one of that title, or nothing to put into it."""
        titles = [playlist["title"] for playlist in self.get("/api/library/playlists")["items"]]
        if songs and title not in titles:
            self.post("/api/library/save-playlist", {"title": title, "songs": [song["id"] for song in songs]})

    def why_silent(self):
        """Why no sound leaves this machine; "" when it does."""
        reasons = {output.removeprefix("none: ") for output in self.outputs if output.startswith("none: ")}
        return "; ".join(sorted(reasons)) if len(reasons) == len(self.outputs) else ""

    def failed(self):
        """The name of a program that has stopped by itself, or None."""
        for name, process in self.processes.items():
            if process.poll() is not None:
                return name
        return None

    def stop_one(self, name, how=signal.SIGTERM):
        process = self.processes.pop(name)
        if process.poll() is None:
            process.send_signal(how)
        try:
            process.wait(STOP_SECONDS)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()
        if process.stdout:
            process.stdout.close()

    def stop(self):
        for name in list(reversed(self.processes)):
            self.stop_one(name)
