"""What the trials share: programs that must neither crash nor hang, and a bench whose content is known."""

import functools
import json
import os
import pathlib
import re
import shutil
import sqlite3
import subprocess
import time

TIMEOUT = 30  # seconds that a command may take on a busy machine
MAXIMUM_LINE = 300  # characters of a refusal
CONTROL = re.compile("[\x00-\x09\x0b-\x1f\x7f-\x9f]")
TIMES = ("pluggedAt", "unpluggedAt", "heartbeat", "lastUpdateAt")
PEBBLE, HARBOUR, NEW_DRIVE = "TV0001PEBBLE", "TV0004HARBOUR", "TV0007NEW"
# Each is one change of the template's bench. An argument with a slash lies in the directory of the templates.
CHANGES = [
    ("add", "Skiff", "--serial", NEW_DRIVE),
    ("remove", "TV0002BOLLARD"),
    ("unplug", PEBBLE),
    ("plug", "TV0005SKIFF"),
    ("fault", "TV0003LAMINA", "report", "modelName=another"),
    ("clear", HARBOUR),
    ("companion", "install"),
    ("init", "--force"),
    ("init", "--force", "--from", "./other.json"),
]


class Finding(Exception):
    """Something that must not happen; `kind` is "crash", "hang", "lie" or "message"."""

    def __init__(self, kind, text):
        super().__init__(text)
        self.kind = kind


def expect(holds, kind, text):
    if not holds:
        raise Finding(kind, text)


class Programs:
    """The programs of a build directory, and benches from one template."""

    def __init__(self, directory, place):
        self.directory, self.place = pathlib.Path(directory), pathlib.Path(place)
        self.template = self.place / "template"
        for change in [("init", "--rate", "400000"), ("unplug", "TV0005SKIFF"), ("fault", HARBOUR, "verify-error"),
                       ("add", "Lamina", "--serial", r"TV\xE9\x00")]:
            self.change(self.template, change)
        checkpoint(self.template)
        self.before = self.state(self.template)
        other = json.loads(self.run(self.template, "export").stdout)
        other["drives"] = other["drives"][:2]
        (self.place / "other.json").write_text(json.dumps(other))

    def command(self, bench, name, *arguments):
        words = [str(self.place / word[2:]) if word.startswith("./") else word for word in map(str, arguments)]
        # Many benches have a drive of that serial number; one at a time is updated for each such directory.
        variables = {"TARVO_BENCH": str(bench), "TMPDIR": str(bench.parent), "LC_ALL": "C.UTF-8"}
        return [self.directory / name, *words], {**os.environ, **variables}

    def start(self, bench, name, *arguments):
        words, environment = self.command(bench, name, *arguments)
        return subprocess.Popen(words, env=environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def run(self, bench, *arguments, name="drive-bench"):
        """Runs a program to its end; of drive-bench also what it prints must be as a person can expect it."""
        words, environment = self.command(bench, name, *arguments)
        told = f"{name} {' '.join(map(str, arguments))}"
        try:
            done = subprocess.run(words, env=environment, capture_output=True, timeout=TIMEOUT)
        except subprocess.TimeoutExpired:
            raise Finding("hang", f"{told} still runs after {TIMEOUT} seconds") from None
        expect(done.returncode in range(4), "crash", f"{told}: status {done.returncode}: {done.stderr[-500:]}")
        if name == "drive-bench":
            check_texts(told, done)
        return done

    def change(self, bench, arguments):
        return self.run(bench, *arguments).returncode == 0

    def state(self, bench):
        """What is on the bench, without times; None when that is refused."""
        done = self.run(bench, "export")
        return None if done.returncode else without_times(json.loads(done.stdout))

    def copy(self, place):
        return pathlib.Path(shutil.copytree(self.template, place / "bench"))

    @functools.lru_cache(maxsize=None)
    def after(self, change):
        """The state of a bench from the template after that change."""
        bench = self.copy(self.place / f"after{CHANGES.index(change)}")
        self.change(bench, change)
        return self.state(bench)

    @functools.cached_property
    def duration(self):
        """Seconds that a change takes on this machine at the moment."""
        begin = time.monotonic()
        for change in CHANGES:
            self.after(change)
        return (time.monotonic() - begin) / len(CHANGES)


def check_texts(told, done):
    try:
        output, errors = done.stdout.decode(), done.stderr.decode()
    except UnicodeDecodeError:
        raise Finding("message", f"{told}: no UTF-8: {(done.stdout + done.stderr)[:500]}") from None
    expect(not CONTROL.search(output + errors), "message", f"{told}: control characters: {(output + errors)[:500]!r}")
    lines = errors.splitlines()
    expect(len(lines) == (done.returncode != 0), "message", f"{told}: status {done.returncode} and {errors!r}")
    longest = max((len(line.removeprefix("drive-bench: ")) for line in lines), default=0)
    expect(longest <= MAXIMUM_LINE, "message", f"{told}: {longest} characters: {errors!r}")


def without_times(document):
    for drive in document["drives"]:
        drive.update(dict.fromkeys(TIMES, 0))
    return document


def checkpoint(bench):
    """Moves what is in the write-ahead log into the database, and takes the log away."""
    connection = sqlite3.connect(bench / "bench.sqlite")
    connection.execute("PRAGMA wal_checkpoint(TRUNCATE)")
    connection.close()
    for suffix in ("-wal", "-shm"):
        (bench / ("bench.sqlite" + suffix)).unlink(missing_ok=True)
