# SPDX-License-Identifier: MIT
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
CONTROL = re.compile("[\x00-\x09\x0b-\x1f\x7f-\x9f\udc80-\udcff]")  # the last are bytes that are no UTF-8
TIMES = ("pluggedAt", "unpluggedAt", "heartbeat", "lastUpdateAt")
PEBBLE, HARBOUR = "TV0001PEBBLE", "TV0004HARBOUR"
KINDS = ("crash", "hang", "lie", "message")
# Each is one change of the template's bench. An argument with a slash lies in the directory of the templates.
CHANGES = [
    ("add", "Skiff", "--serial", "TV0007NEW"), ("remove", "TV0002BOLLARD"), ("unplug", PEBBLE), ("plug", "TV0005SKIFF"),
    ("fault", "TV0003LAMINA", "report", "modelName=another"), ("clear", HARBOUR), ("companion", "install"),
    ("init", "--force"), ("init", "--force", "--from", "./other.json"),
]


class Finding(Exception):
    """Something that must not happen."""

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
        (self.place / "other.json").write_text('{"version": 2, "drives": [{"serial": "A", "model": "Skiff"}]}')

    def command(self, bench, name, arguments):
        words = [str(self.place / word[2:]) if word.startswith("./") else word for word in map(str, arguments)]
        # Many benches have a drive of that serial number; one at a time is updated for each such directory.
        variables = {"TARVO_BENCH": str(bench), "TMPDIR": str(bench.parent), "LC_ALL": "C.UTF-8"}
        return {"args": [self.directory / name, *words], "env": {**os.environ, **variables}}

    def kill(self, bench, name, arguments, seconds):
        """Starts a program and kills it that many seconds later."""
        nothing = subprocess.DEVNULL
        process = subprocess.Popen(**self.command(bench, name, arguments), stdout=nothing, stderr=nothing)
        time.sleep(seconds)
        process.kill()
        process.wait()

    def run(self, bench, *arguments, name="drive-bench"):
        """Runs a program to its end; of drive-bench also what it prints must be as a person can expect it."""
        told = f"{name} {' '.join(map(str, arguments))}"
        try:
            done = subprocess.run(**self.command(bench, name, arguments), capture_output=True, timeout=TIMEOUT)
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
        document = None if done.returncode else json.loads(done.stdout)
        for drive in document["drives"] if document else ():
            drive.update(dict.fromkeys(TIMES, 0))
        return document

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
    output, errors = (text.decode(errors="surrogateescape") for text in (done.stdout, done.stderr))
    expect(not CONTROL.search(output + errors), "message", f"{told}: control characters: {(output + errors)[:500]!r}")
    expect(errors.count("\n") == (done.returncode != 0), "message", f"{told}: status {done.returncode}, {errors!r}")
    length = len(errors.removeprefix("drive-bench: ").strip())
    expect(length <= 300, "message", f"{told}: {length} characters: {errors!r}")


def checkpoint(bench):
    """Moves what is in the write-ahead log into the database, and takes the log away."""
    connection = sqlite3.connect(bench / "bench.sqlite")
    connection.execute("PRAGMA wal_checkpoint(TRUNCATE)")
    connection.close()
