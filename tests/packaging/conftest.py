# SPDX-License-Identifier: MIT
"""What the tests of the installed program stand on: an installed tree, a desktop, and a person with a home directory.

The tree is made of the build directory in $TARVO_BUILD_DIR, by default that of the preset dev or release. Where
$TARVO_PREFIX names an installed tree, that is used instead.
"""

import os
import pathlib
import re
import subprocess
import sys

import pytest

from launcher import NAME, SOURCE

sys.path.insert(0, str(SOURCE / "tests/acceptance"))

from bench import Bench  # noqa: E402
from desktop import Desktop  # noqa: E402
from updater import PROGRAM_DIR, Program  # noqa: E402
from waiting import wait_until  # noqa: E402

BUILD = pathlib.Path(os.environ.get("TARVO_BUILD_DIR") or pathlib.Path(PROGRAM_DIR).parent)
FAST = 200_000  # bytes a second: a flash takes a quarter of a second


def install(place, *options):
    command = ["cmake", "--install", BUILD, "--prefix", str(place), *options]
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL)


@pytest.fixture(scope="session")
def prefix(tmp_path_factory):
    """An installed tree that was moved after it had been installed."""
    if "TARVO_PREFIX" in os.environ:
        return pathlib.Path(os.environ["TARVO_PREFIX"])
    place = tmp_path_factory.mktemp("a prefix  with blanks")
    install(place / "before")
    return (place / "before").rename(place / "moved here")


@pytest.fixture(scope="session")
def desktop():
    with Desktop(window_manager=True) as desktop:
        yield desktop


@pytest.fixture(scope="session")
def cache():
    """CMake's own values."""
    lines = (BUILD / "CMakeCache.txt").read_text(encoding="utf-8").splitlines()
    return {line.split(":")[0]: line.split("=", 1)[1] for line in lines if re.match(r"[A-Za-z_]+:[A-Z]+=", line)}


class Person:
    """Somebody with a home directory, a runtime directory and a bench of their own."""

    def __init__(self, place, prefix):
        self.home, self.runtime, self.current = place / "home", place / "runtime", place / "current"
        for directory in (self.home, self.runtime, self.current):
            directory.mkdir()
        self.runtime.chmod(0o700)
        self.environment = {
            "HOME": str(self.home),
            "XDG_RUNTIME_DIR": str(self.runtime),
            "PATH": f"{prefix}/bin:{os.environ['PATH']}",
            "TARVO_BENCH": "",
        }
        self.bench = Bench(prefix / "bin/drive-bench", self.home / ".local/share/tarvo-drive-bench")

    def left_in_runtime(self):
        return [entry.name for entry in self.runtime.iterdir() if entry.name.startswith(NAME)]

    def wait_for_clean_runtime(self):
        wait_until(lambda: not self.left_in_runtime(), "the working directory is removed")


@pytest.fixture
def person(tmp_path, prefix):
    return Person(tmp_path, prefix)


@pytest.fixture
def start(desktop, person, tmp_path):
    """Starts a command as that person; what still runs at the end of the test is stopped."""
    programs = []

    def start_program(command=NAME, *arguments, cwd=None):
        with open(tmp_path / f"output{len(programs)}.txt", "w", encoding="utf-8") as log:
            # The command is looked for on the person's PATH.
            program = Program(desktop, "/usr/bin/env", cwd or person.current, person.environment,
                              [command, *arguments], log)
        programs.append(program)
        return program

    yield start_program
    for program in programs:
        program.stop()
