"""Compares the commands that the driver registers with those that the page describes: commands.py REPLAY PAGE"""

import re
import subprocess
import sys
import tempfile


def registered(replay):
    with tempfile.NamedTemporaryFile("w", suffix=".txt") as transcript:
        transcript.write("start\n")
        transcript.flush()
        lines = subprocess.run([replay, transcript.name], check=True, capture_output=True, text=True).stdout.split("\n")
    return {line.split()[2] for line in lines if line.startswith(("< register ", "< register-ui "))}


def described(page):
    with open(page, encoding="utf-8") as file:
        return set(re.findall(r"^\| ([A-Z0-9_]{4,}) \|", file.read(), re.MULTILINE))


known, told = registered(sys.argv[1]), described(sys.argv[2])
for name in sorted(known - told):
    print(f"{name} is registered, but not described")
for name in sorted(told - known):
    print(f"{name} is described, but not registered")
sys.exit(1 if known != told or not known else 0)
