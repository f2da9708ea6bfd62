"""Makes one random session, while the plain driver plays it."""

import random

from explorer.house import House
from explorer.inputs import Inputs
from explorer.knowledge import Knowledge
from explorer.values import Values
from world.session import Session
from world.words import FormatError, Overrun

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
        self._is_over = False

    def draw(self):
        house = House(self.dice)
        values = Values(self.dice, house, self._knowledge)
        inputs = Inputs(values, lambda: self._runs and self._session.world.has_rhapsody_client)
        length = self.dice.choice(LENGTHS)
        self._play(house.declare(self.dice, self._knowledge))
        while len(self.inputs) < length and not self._is_over:
            self._play(inputs.draw() if self._runs else inputs.begin())
        return self

    def _play(self, lines):
        """A line that no run would take to its end is the session's end, and no part of it."""
        for line in lines:
            try:
                block = self._session.execute(line)
            except Overrun:
                self._is_over = True
                return
            except FormatError as error:
                raise AssertionError(f"drew a line that cannot be run: {line}: {error}") from error
            self.inputs.append(line)
            self.blocks.append(block)
            if line.startswith("start"):
                self._runs = True
            elif line == "stop":
                self._runs = False
                self._knowledge.forget()
            self._knowledge.read(block)
