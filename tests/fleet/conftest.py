# SPDX-License-Identifier: MIT
"""A fleet: machines that are benches of this one, and what Ansible says of them.

The command is that in $TARVO_PROGRAM_DIR, by default the build of the preset dev.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys

import pytest

SOURCE = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(SOURCE / "tests/acceptance"))

from bench import Bench  # noqa: E402

PROGRAMS = pathlib.Path(os.environ.get("TARVO_PROGRAM_DIR") or SOURCE / "build/dev/bin")
FAST = "200000"  # bytes a second: a flash takes a quarter of a second


class Run:
    """What a run of ansible-playbook left: its exit status, its table and its recap."""

    def __init__(self, done):
        self.status, self.output = done.returncode, done.stdout + done.stderr
        rows = re.search(r"MACHINE .*WHAT HAPPENED\n((?:    .*\n)*)", self.output)
        assert rows, self.output
        self.table = [line.strip() for line in rows[1].splitlines()]
        recap = re.findall(r"^(\S+) +: ok=\d+ +changed=(\d+) +unreachable=(\d+) +failed=(\d+)", self.output, re.M)
        self.changed = {name for name, changed, _, _ in recap if changed != "0"}
        self.failed = {name for name, _, unreachable, failed in recap if (unreachable, failed) != ("0", "0")}
        self.machines = {name for name, *_ in recap}

    def rows(self, machine):
        """What the table says of a machine, without its name and with single blanks."""
        return [" ".join(row.split()[1:]) for row in self.table if row.split()[0] == machine]


class Fleet:
    def __init__(self, place):
        self.place, self.directory, self.benches = place, place / "fleet", {}
        shutil.copytree(SOURCE / "packaging/ansible", self.directory)
        self.inventory = self.directory / "inventory.ini"
        self.inventory.write_text("[drives]\n")

    def add(self, name, *drives, variables="ansible_connection=local"):
        """A machine with its own bench. A drive is what drive-bench add takes."""
        machine = self.place / name
        machine.mkdir()
        bench = Bench(PROGRAMS / "drive-bench", machine / "bench").init("--empty")
        for number, drive in enumerate(drives):
            serial = [] if "--serial" in " ".join(drive) else [f"--serial=TV-{name}-{number}"]
            bench.run("add", *drive, *serial, "--rate", FAST)
        command = machine / "tarvo-firmware"
        command.write_text(f'#!/bin/sh\nTMPDIR={machine} TARVO_BENCH={bench.directory} exec {PROGRAMS}/tarvo-firmware "$@"\n')
        command.chmod(0o755)
        with self.inventory.open("a") as inventory:
            inventory.write(f"{name} {variables} ansible_python_interpreter=/usr/bin/python3 tarvo_firmware_packages=[] "
                            f"tarvo_firmware_command={command} tarvo_firmware_record={machine}/record.json\n")
        self.benches[name] = bench
        return bench

    def command(self, *command):
        environment = {**os.environ, "HOME": str(self.place), "LC_ALL": "C.UTF-8", "ANSIBLE_NOCOLOR": "1"}
        return subprocess.run([*map(str, command)], cwd=self.directory, env=environment, capture_output=True, text=True)

    def run(self, *options):
        return Run(self.command("ansible-playbook", "-i", "inventory.ini", "update.yml", *options))


@pytest.fixture
def fleet(tmp_path):
    return Fleet(tmp_path)
