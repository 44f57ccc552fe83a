# SPDX-License-Identifier: MIT
"""The drive bench: simulated drives, changed through the drive-bench command."""

import contextlib
import json
import pathlib
import sqlite3
import subprocess
import tempfile
import urllib.parse

from waiting import TIMEOUT, wait_until


class Bench:
    """A bench of drives in a directory."""

    def __init__(self, command, directory):
        self.command, self.directory = str(command), str(directory)

    @property
    def database(self):
        return pathlib.Path(self.directory, "bench.sqlite")

    @property
    def environment(self):
        """What a program needs to find this bench."""
        return {"TARVO_BENCH": self.directory}

    def run(self, *arguments):
        """Runs one drive-bench command and returns what it printed."""
        where = [] if arguments[0] == "models" else ["--bench", self.directory]
        done = subprocess.run([self.command, *map(str, arguments), *where], capture_output=True, text=True)
        if done.returncode != 0:
            raise RuntimeError(f"drive-bench {' '.join(map(str, arguments))}: {done.stderr.strip()}")
        return done.stdout

    def init(self, *options):
        self.run("init", *options)
        return self

    def add(self, model, serial=None, firmware=None, configuration=None, rate=None, plugged=True):
        """Adds a drive and returns its serial number."""
        options = []
        for name, value in (("serial", serial), ("firmware", firmware), ("configuration", configuration),
                            ("rate", rate)):
            if value is not None:
                options += ["--" + name, value]
        return self.run("add", model, *options, *([] if plugged else ["--unplugged"])).strip()

    def plug(self, serial):
        self.run("plug", serial)

    def unplug(self, serial):
        self.run("unplug", serial)

    def fault(self, serial, *fault):
        self.run("fault", serial, *fault)

    def drive(self, serial):
        """Everything about one drive, as the command tells it."""
        return json.loads(self.run("show", serial, "--json"))

    def is_incomplete(self, serial):
        """Whether the drive's last flash was interrupted."""
        return self.drive(serial)["incomplete"]

    def drives(self):
        return {drive["serial"]: drive for drive in json.loads(self.run("list", "--json"))["drives"]}

    def flash(self, serial):
        """Firmware version and configuration revision in the drive's flash; None for an incomplete one."""
        drive = self.drive(serial)
        return (None, None) if drive["incomplete"] else (drive["flashFirmware"], drive["flashConfiguration"])

    def newest(self, model):
        """Firmware version and configuration revision of the image for that model."""
        found = next(row for row in json.loads(self.run("models", "--json"))["models"] if row["name"] == model)
        return found["newestFirmware"], found["newestConfiguration"]

    def wait_for_query(self, serial):
        """Waits until the drive has been queried once more, without anything about it having changed."""
        report = ("report", "modelName=" + self.drive(serial)["model"])
        self.fault(serial, *report, "--once")
        wait_until(lambda: not self.has_fault(serial, *report), f"a query of {serial}")

    def wait_for_no_writer(self, serial):
        """Waits until the drive can be flashed again: it is known only after a second that its writer was killed."""
        wait_until(lambda: self.drive(serial)["state"] != "being written", f"nobody writes {serial}")

    def set_rate(self, serial, rate):
        """Makes the writing of a drive's flash slower or quicker, in bytes a second."""
        document = json.loads(self.run("export"))
        next(drive for drive in document["drives"] if drive["serial"] == serial)["flashRate"] = rate
        with tempfile.NamedTemporaryFile("w", suffix=".json") as file:
            json.dump(document, file)
            file.flush()
            self.init("--force", "--from", file.name)

    # What is read without the command, which is too slow for polling ---------------------------------------

    def progress(self, serial):
        """Bytes written in the drive's last flash, and bytes to write."""
        drive = self._documents()[serial]
        return drive["bytesWritten"], drive["bytesToWrite"]

    def has_fault(self, serial, kind, value=""):
        return any((fault["fault"], fault["value"]) == (kind, value) for fault in self._documents()[serial]["faults"])

    def all_but(self, serial):
        """What is stored about the host and about every drive but that one."""
        return {name: document for name, document in self._documents().items() if name != serial}

    def calls(self):
        """The calls of the host's tools so far, one line each."""
        log = pathlib.Path(self.directory, "calls.log")
        return log.read_text().splitlines() if log.exists() else []

    def _documents(self):
        """The documents of all drives by their serial numbers, and that of the host without one."""
        address = f"file:{urllib.parse.quote(str(self.database))}?mode=ro"
        with contextlib.closing(sqlite3.connect(address, uri=True, timeout=TIMEOUT)) as database:
            rows = database.execute("SELECT name, document FROM documents").fetchall()
        return {name.decode(): json.loads(document) for name, document in rows}

    # What no command does ----------------------------------------------------------------------------------

    def damage_drive(self, serial):
        """Changes one character of what is stored of a drive."""
        with contextlib.closing(sqlite3.connect(self.database, timeout=TIMEOUT)) as database, database:
            database.execute("UPDATE documents SET document = CAST(replace(document, 'plugged', 'Plugged') AS BLOB) "
                             "WHERE name = ?", [serial.encode()])

    def damage(self):
        """Overwrites the beginning of the database; returns what is then in its file."""
        with contextlib.closing(sqlite3.connect(self.database)) as connection:
            connection.execute("PRAGMA wal_checkpoint(TRUNCATE)")  # what SQLite keeps beside it would stand in for it
        content = bytes(100) + self.database.read_bytes()[100:]
        self.database.write_bytes(content)
        return content
