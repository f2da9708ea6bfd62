"""Makes one random session, while the plain driver plays it."""

import random

from explorer.house import House
from explorer.inputs import Inputs
from explorer.knowledge import Knowledge
from explorer.values import Values
from world.session import Session
from world.words import FormatError

LENGTHS = (60, 150, 300, 300, 500)


class Drawn:
    """A session's inputs, and the block of lines that each gave."""

    def __init__(self, seed, number):
        self.dice = random.Random(f"{seed}:{number}")
        self.inputs = []
        self.blocks = []
        self._session = Session()
        self._knowledge = Knowledge()
        self._runs = False

    def draw(self):
        house = House(self.dice)
        values = Values(self.dice, house, self._knowledge)
        inputs = Inputs(values, lambda: self._runs and self._session.world.has_rhapsody_client)
        length = self.dice.choice(LENGTHS)
        self._play(house.declare(self.dice, self._knowledge))
        while len(self.inputs) < length:
            self._play(inputs.draw() if self._runs else inputs.begin())
        return self

    def _play(self, lines):
        for line in lines:
            self.inputs.append(line)
            try:
                block = self._session.execute(line)
            except FormatError as error:
                raise AssertionError(f"drew a line that cannot be run: {line}: {error}") from error
            self.blocks.append(block)
            if line.startswith("start"):
                self._runs = True
            elif line == "stop":
                self._runs = False
                self._knowledge.forget()
            self._knowledge.read(block)
