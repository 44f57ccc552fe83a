"""The drive bench: simulated drives, changed through the drive-bench command."""

import hashlib
import json
import os
import pathlib
import subprocess

from waiting import wait_until


class Bench:
    """A bench of drives in a directory."""

    def __init__(self, command, directory):
        self.command, self.directory = str(command), str(directory)

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
        return self.drive(serial)["torn"]

    def drives(self):
        return {drive["serial"]: drive for drive in json.loads(self.run("list", "--json"))["drives"]}

    def flash(self, serial):
        """Firmware version and configuration revision in the drive's flash chip; None for an incomplete one."""
        with open(os.path.join(self.directory, "drives", serial + ".flash"), "rb") as file:
            chip = file.read()
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
        drive = self._read(serial)
        return drive["bytesWritten"], drive["bytesToWrite"]

    def has_fault(self, serial, kind):
        return any(fault["fault"] == kind for fault in self._read(serial)["faults"])

    def _read(self, serial):
        with open(os.path.join(self.directory, "drives", serial + ".json"), encoding="utf-8") as file:
            return json.load(file)

    def all_but(self, serial):
        """Everything that is stored about the host and about the drives but that one."""
        return {
            path: path.read_bytes()
            for path in pathlib.Path(self.directory).rglob("*")
            if path.is_file() and path.stem != serial and path.name != "calls.log"
        }

    def make_invalid(self, serial):
        """Spoils what is stored about a drive; returns how the drive is then named."""
        path = os.path.join(self.directory, "drives", serial + ".json")
        pathlib.Path(path).write_text('{"serial": "TV1",\n', encoding="utf-8")
        return f"/drives/{serial}.json:2:"

    def calls(self):
        """The calls of the host's tools so far, one line each."""
        try:
            with open(os.path.join(self.directory, "calls.log"), encoding="utf-8") as file:
                return file.read().splitlines()
        except FileNotFoundError:
            return []
