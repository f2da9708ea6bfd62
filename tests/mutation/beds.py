"""What is broken, and the tests that should notice: one bed for the driver, one for the guards of the other programs."""

import glob
import os
import re
import resource
import signal
import subprocess
import sys
import tempfile
import time

DRIVER = "korvel_digitalaudio"
# What is broken may compute for ever. The processor's seconds are the same on a busy machine.
TEST_SECONDS = 300
SESSION_STEPS = 100000
SLOW_TESTS = "Seeds/*:Guards*"  # most breakages are noticed before these

GUARDS = os.path.join("tests", "mutation", "guards.txt")
# Programs that are broken may wait for ever, too: they have so many times what they take unbroken, and some seconds.
PATIENCE_FACTOR, PATIENCE_SECONDS = 5, 60
# A test of real programs that fails must fail again, alone: a busy machine is no breakage.
ATTEMPTS = 3


def limit_processor():
    # The hard limit stays: a program that sets limits of its own must be able to.
    resource.setrlimit(resource.RLIMIT_CPU, (TEST_SECONDS, resource.getrlimit(resource.RLIMIT_CPU)[1]))


def transcripts_in(top):
    return [os.path.join(folder, name) for folder, _, names in sorted(os.walk(top)) for name in sorted(names)
            if name.endswith(".txt")]


class DriverBed:
    """A build of the copied tree, the driver's fast tests and random sessions."""

    title, enough = "`tests/mutation/mutate`", 98

    def __init__(self, tree, jobs, seed):
        self.tree, self.build_folder, self.jobs = tree, os.path.join(tree, "build-mutation"), jobs
        self.transcripts = transcripts_in(os.path.join(tree, "tests", "transcripts"))
        # Random sessions, as the plain driver plays them.
        folder = os.path.join(tree, "sessions")
        explore = os.path.join(tree, "tests", "reference", "explore")
        subprocess.run([explore, "--write", folder, "--seed", str(seed), "--steps", str(SESSION_STEPS)],
                       check=True, capture_output=True)
        self.sessions = transcripts_in(folder)
        subprocess.run(
            ["cmake", "-G", "Ninja", "-S", tree, "-B", self.build_folder, "-DKORVEL_DRIVER_ONLY=ON",
             "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O0"],
            check=True, capture_output=True)
        if not self.build(None) or self.notice(None):
            sys.exit("mutate: the tests do not pass on the unbroken tree")

    def sources(self):
        for folder, _, names in sorted(os.walk(os.path.join(self.tree, DRIVER))):
            for name in sorted(names):
                if name.endswith(".cpp"):
                    yield os.path.join(folder, name)

    def prepare(self, path):
        """All that the tests need has been built."""

    def run(self, words, cwd=None):
        return subprocess.run(words, cwd=cwd, capture_output=True, preexec_fn=limit_processor).returncode == 0

    def build(self, path):
        return self.run(["ninja", "-C", self.build_folder, f"-j{self.jobs}", "korvel-replay", "driver_tests"])

    def notice(self, path):
        programs = os.path.join(self.build_folder, "bin")
        replay, tests = os.path.join(programs, "korvel-replay"), os.path.join(programs, "driver_tests")
        passed = (self.run([replay, "--check", *self.transcripts])
                  and self.run([replay, "--check", *self.sessions])
                  and self.run([tests, f"--gtest_filter=-{SLOW_TESTS}"], self.tree)
                  and self.run([tests, f"--gtest_filter={SLOW_TESTS}"], self.tree))
        return None if passed else "the driver's tests"


class GuardBed:
    """A build of the copied tree and, for each guard, the tests that guards.txt names."""

    title, enough = "`tests/mutation/mutate --guards`", 95

    def __init__(self, tree, jobs, seed):
        self.tree, self.build_folder, self.jobs = tree, os.path.join(tree, "build", "release"), jobs
        self.stages = read_guards(tree)
        self.seconds = {}  # of each stage that has passed unbroken
        subprocess.run(["cmake", "--preset", "release", "-DCMAKE_UNITY_BUILD=OFF"], cwd=tree, check=True,
                       capture_output=True)

    def sources(self):
        return sorted(self.stages)

    def prepare(self, path):
        """Builds the file's tests and sees them pass, once."""
        for stage in self.stages[path]:
            if stage in self.seconds:
                continue
            built = self.build_target(stage[0])
            if built.returncode != 0:
                sys.exit(f"mutate: {stage[0]} cannot be built\n{built.stdout}")
            begin = time.monotonic()
            noticed = self.notice_in(stage, TEST_SECONDS)
            if noticed:
                sys.exit(f"mutate: on the unbroken tree, too: {noticed}")
            self.seconds[stage] = time.monotonic() - begin

    def build_target(self, target):
        return subprocess.run(["ninja", "-C", self.build_folder, f"-j{self.jobs}", target],
                              capture_output=True, text=True, errors="replace")

    def build(self, path):
        return self.build_target(self.stages[path][0][0]).returncode == 0

    def notice(self, path):
        for stage in self.stages[path]:
            if self.build_target(stage[0]).returncode != 0:
                return f"{stage[0]}: not built"
            noticed = self.notice_in(stage, PATIENCE_FACTOR * self.seconds[stage] + PATIENCE_SECONDS)
            if noticed:
                return noticed
        return None

    def notice_in(self, stage, seconds):
        target, filters = stage
        for _ in range(ATTEMPTS):
            test, failed = self.run(target, filters, seconds)
            if failed is None:
                return None
            noticed = f"{target}: {test} {failed}"
            if failed != "fails" or self.run(target, test, seconds)[1]:
                return noticed
        return noticed

    def run(self, target, filters, seconds):
        """The test that failed, or came last, and how it failed: None when all passed."""
        words = [os.path.join(self.build_folder, "bin", target), f"--gtest_filter={filters}", "--gtest_fail_fast"]
        with tempfile.TemporaryFile() as output:
            # A session of its own: what a broken program leaves behind ends with it.
            tests = subprocess.Popen(words, cwd=self.build_folder, stdout=output, stderr=subprocess.STDOUT,
                                     stdin=subprocess.DEVNULL, start_new_session=True, preexec_fn=limit_processor)
            try:
                status = tests.wait(seconds)
            except subprocess.TimeoutExpired:
                status = None
            try:
                os.killpg(tests.pid, signal.SIGKILL)
            except ProcessLookupError:
                pass
            tests.wait()
            output.seek(0)
            text = output.read().decode(errors="replace")
        started = re.findall(r"^\[ RUN      \] (\S+)", text, re.MULTILINE)
        if not started:
            sys.exit(f"mutate: {target} has no test {filters}")
        if status is None or status < 0:
            return started[-1], "hangs" if status is None else "dies"
        # Those after it are told as started, too, and skipped.
        failure = re.search(r"^\[  FAILED  \] ([^\s,]+)", text, re.MULTILINE)
        return failure.group(1) if failure else started[-1], "fails" if status > 0 else None


def read_guards(tree):
    """The stages of each file, as (test program, its filter)."""
    stages = {}
    with open(os.path.join(tree, GUARDS), encoding="utf-8") as file:
        rows = [line.split("|") for line in file if line.strip() and not line.startswith("#")]
    for pattern, tests in rows:
        paths = glob.glob(os.path.join(tree, pattern.strip()))
        if not paths:
            sys.exit(f"mutate: {GUARDS} names {pattern.strip()}, which is not there")
        programs = [test.partition(":") for test in tests.split()]
        for path in paths:
            stages[path] = [(program, filters or "*") for program, _, filters in programs]
    return stages
