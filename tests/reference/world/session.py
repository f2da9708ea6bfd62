"""One run of the driver in its simulated world."""

import signal
import sys
import traceback

from world import entry_verbs, world_verbs
from world.arguments import Arguments
from world.live import MAX_ANSWERS
from world.system import DRIVER_DEVICE, World
from world.words import FormatError, Overrun, format_value
from driver.frame import create_driver
from nodes import Node

VERBS = {**world_verbs.VERBS, **entry_verbs.VERBS}
# More expiries than these in one step of time are a timer that starts itself for ever.
MAX_EXPIRIES = 500000
# An input that takes longer than this, in seconds of the processor, never ends.
MAX_SECONDS = 20


class Endless(Exception):
    """An input that does not come back."""


def _give_up(signum, frame):
    raise Endless(f"more than {MAX_SECONDS} s")


class Session:
    def __init__(self, trace=False):
        self.world = World()
        self.world.recorder.listener = self._run_inside
        self._driver = None
        self._inside_error = None
        self._trace = trace
        signal.signal(signal.SIGVTALRM, _give_up)

    def execute(self, line):
        """Runs one input line, then the answers of the live world; returns all lines that this gave, the input first.

        FormatError when the line cannot be run.
        """
        self.world.recorder.lines = []
        self.world.recorder.input(line)
        signal.setitimer(signal.ITIMER_VIRTUAL, MAX_SECONDS)
        try:
            self._dispatch(line)
            self._deliver_answers()
        finally:
            signal.setitimer(signal.ITIMER_VIRTUAL, 0)
        if self._inside_error:
            raise self._inside_error
        return self.world.recorder.lines

    def has_driver(self):
        return self._driver is not None

    def driver(self):
        if self._driver is None:
            raise FormatError('no driver runs: "start" comes first')
        return self._driver

    def enter(self, body):
        """Calls into the driver; an exception that comes out is a fault."""
        try:
            return body()
        except Exception as error:
            self.world.recorder.fault(f"{type(error).__name__}: {error}")
            if self._trace:
                traceback.print_exc(file=sys.stderr)
            return None

    def start(self, persist):
        if self._driver is not None:
            raise FormatError("the driver runs already")
        self._driver = self.enter(lambda: create_driver(self.world))
        if self._driver is None:
            self.world.recorder.fault("no driver was created")
            return
        result = self.enter(lambda: self._driver.initialize(DRIVER_DEVICE, Node("config"), persist))
        if result is not None:
            self.world.recorder.output("initialized", result)

    def create_again(self):
        running = self.driver()
        if self.enter(lambda: create_driver(self.world)) is not running:
            self.world.recorder.fault("a second creation did not give the running driver")

    def stop(self):
        driver, self._driver = self.driver(), None
        self.enter(driver.destroy)
        for timer_id in self.world.timers.callback_ids():
            self.world.recorder.fault(f"timer {timer_id} outlives the driver that it calls back")
        self.world.timers.clear()
        self.world.live.drop_answers()

    def advance(self, milliseconds):
        """Lets time pass; every expiry, and the answers that it causes, happen at their own time."""
        clock = self.world.clock
        end = clock.elapsed + milliseconds
        expiries = 0
        while (expiry := self.world.timers.take_due(end)) is not None:
            expiries += 1
            if expiries > MAX_EXPIRIES:
                raise Overrun(f"more than {MAX_EXPIRIES} timers expired")
            timer_id, due, callback = expiry
            clock.advance_to(due)
            self.world.recorder.world_input(f"timer {timer_id}")
            callback = callback or self.driver()
            self.enter(lambda: callback.on_timer_expired(timer_id))
            self._deliver_answers()
        clock.advance_to(end)

    @staticmethod
    def has_verb(name):
        return name in VERBS

    def _dispatch(self, line):
        arguments = Arguments(line)
        name = arguments.value("verb")
        if not self.has_verb(name):
            raise FormatError(f"unknown verb {format_value(name)}")
        VERBS[name](self, arguments)

    def _run_inside(self, output):
        """The core calls back inside the call that the output stands for; not while a driver is made or destroyed."""
        waiting = self.world.inside_calls
        found = next((call for call in waiting if output.startswith(call[0])), None)
        if self._driver is None or found is None:
            return
        waiting.remove(found)
        self.world.recorder.world_input(found[1])
        try:
            self._dispatch(found[1])
        except FormatError as error:
            self._inside_error = error

    def _deliver_answers(self):
        answers = 0
        while (answer := self.world.live.take_answer()) is not None:
            answers += 1
            if answers > MAX_ANSWERS:
                raise Overrun(f"more than {MAX_ANSWERS} live answers to one input")
            self.world.recorder.world_input(answer)
            self._dispatch(answer)
