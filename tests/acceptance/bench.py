"""The drive bench: simulated drives, changed through the drive-bench command."""

import contextlib
import hashlib
import json
import pathlib
import sqlite3
import subprocess
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
        """Firmware version and configuration revision in the drive's flash chip; None for an incomplete one."""
        ((chip,),) = self._read("SELECT content FROM chips JOIN drives ON chips.drive = drives.id WHERE serial = ?",
                                serial)
        return tuple(self._version_at(chip, start) for start in (0, 120 * 1024))

    @staticmethod
    def _version_at(chip, start):
        # A part begins with a page of its own: mark, size, digest, length of the version, version.
        page = chip[start : start + 256]
        payload = chip[start + 256 :][: int.from_bytes(page[4:8], "little")]
        if page[:4] != b"TVRG" or hashlib.sha256(payload).digest() != page[8:40]:
            return None
        return page[41 : 41 + page[40]].decode("latin-1")

    def newest(self, model):
        """Firmware version and configuration revision of the image for that model."""
        found = next(row for row in json.loads(self.run("models", "--json"))["models"] if row["name"] == model)
        return found["newestFirmware"], found["newestConfiguration"]

    def wait_for_query(self, serial):
        """Waits until the drive has been queried once more, without anything about it having changed."""
        model = self.drive(serial)["model"]
        self.fault(serial, "text", "modelName=" + model, "--once")
        wait_until(lambda: not self.has_fault(serial, "text"), f"a query of {serial}")

    # What is read without the command, which is too slow for polling ---------------------------------------

    def progress(self, serial):
        """Bytes written in the drive's last flash, and bytes to write."""
        ((written, to_write),) = self._read("SELECT bytesWritten, bytesToWrite FROM drives WHERE serial = ?", serial)
        return written, to_write

    def has_fault(self, serial, kind):
        return bool(self._read("SELECT 1 FROM faults JOIN drives ON faults.drive = drives.id "
                               "WHERE serial = ? AND kind = ?", serial, kind))

    def all_but(self, serial):
        """What is stored about the host and about every drive but that one, without the count of its queries."""
        other = "(SELECT id FROM drives WHERE serial <> ?)"
        drives = [dict(row) for row in self._read(f"SELECT * FROM drives WHERE id IN {other}", serial)]
        for drive in drives:
            del drive["queries"]
        return {
            "drives": drives,
            "faults": [tuple(row) for row in self._read(f"SELECT * FROM faults WHERE drive IN {other}", serial)],
            "chips": [tuple(row) for row in self._read(f"SELECT * FROM chips WHERE drive IN {other}", serial)],
            "host": [tuple(row) for row in self._read("SELECT * FROM host")],
        }

    def wait_for_no_writer(self, serial):
        """Waits until the drive can be flashed again: it is known only after a second that its writer was killed."""
        wait_until(lambda: self.drive(serial)["state"] != "being written", f"nobody writes {serial}")

    def calls(self):
        """The calls of the host's tools so far, one line each."""
        return [line for (line,) in self._read("SELECT line FROM calls ORDER BY id")]

    def _read(self, query, serial=None, *values):
        """The rows that a query finds, which names the serial number first."""
        parameters = [] if serial is None else [serial.encode("latin-1"), *values]
        with contextlib.closing(self._connect("ro")) as database:
            return database.execute(query, parameters).fetchall()

    def _connect(self, mode):
        address = f"file:{urllib.parse.quote(str(self.database))}?mode={mode}"
        database = sqlite3.connect(address, uri=True, timeout=TIMEOUT, isolation_level=None)
        database.row_factory = sqlite3.Row
        return database

    # What no command does ----------------------------------------------------------------------------------

    def make_invalid(self, serial):
        """Gives a drive a model that there is not."""
        self._set(serial, "model", b"Nonesuch")

    def set_rate(self, serial, rate):
        """Makes a drive's flash chip slower or quicker, in bytes a second."""
        self._set(serial, "flashRate", rate)

    def _set(self, serial, column, value):
        with contextlib.closing(self._connect("rw")) as database:
            database.execute(f"UPDATE drives SET {column} = ? WHERE serial = ?", [value, serial.encode("latin-1")])

    def damage(self):
        """Overwrites the beginning of the database; returns what is then in its file."""
        with contextlib.closing(sqlite3.connect(self.database)) as connection:
            connection.execute("PRAGMA wal_checkpoint(TRUNCATE)")  # what SQLite keeps beside it would stand in for it
        content = bytes(100) + self.database.read_bytes()[100:]
        self.database.write_bytes(content)
        return content
