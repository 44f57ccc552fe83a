"""The drive bench: simulated drives, changed through the drive-bench command."""

import hashlib
import json
import os
import subprocess

from waiting import wait_until


class Bench:
    """A bench of drives in a directory."""

    def __init__(self, command, directory):
        self.command, self.directory = str(command), str(directory)

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

    def file(self, serial):
        """What the drive's file says: for what is looked at often, since the command is a process each time."""
        with open(os.path.join(self.directory, "drives", serial + ".json"), encoding="utf-8") as file:
            return json.load(file)

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
        wait_until(lambda: not any(fault["fault"] == "text" for fault in self.file(serial)["faults"]),
                   f"a query of {serial}")

    def calls(self):
        """The calls of the host's tools so far, one line each."""
        try:
            with open(os.path.join(self.directory, "calls.log"), encoding="utf-8") as file:
                return file.read().splitlines()
        except FileNotFoundError:
            return []
