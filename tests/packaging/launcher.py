# SPDX-License-Identifier: MIT
"""The launcher in bin/, in front of a stand-in for the program that tells how it was started.

As a program it sends signals to launchers: python3 launcher.py COUNT SEED
"""

import os
import pathlib
import random
import shutil
import signal
import subprocess
import sys
import tempfile
import time

SOURCE = pathlib.Path(__file__).resolve().parents[2]
NAME = "tarvo-firmware-updater"
TIMEOUT = 30  # seconds that anything may take on a busy machine
STAND_IN = """#!/bin/sh
# Tells how it was started, leaves a scratch file as a killed program does, and does what it is asked for.
printf '%s\\n' "$0" "$PWD" "$(ls -A)" "$(stat -c %a .)" "$TARVO_BENCH" "$$" "$#" "$@" >"$REPORT.new"
echo scratch >>temp.txt
mv "$REPORT.new" "$REPORT"
case ${1:-} in
wait) exec sleep 60 ;;
status) exit "$2" ;;
esac
"""
LINES = ["argv0", "directory", "content", "mode", "bench", "process", "count"]


class Installed:
    """The launcher and the stand-in, installed below a prefix with a blank, and somebody who starts them."""

    def __init__(self, place):
        self.place = place
        prefix = place / "my programs"
        self.launcher = prefix / "bin" / NAME
        self.program = prefix / "lib" / NAME / NAME
        for directory in (self.launcher.parent, self.program.parent, place / "home", place / "runtime"):
            directory.mkdir(parents=True)
        shutil.copy(SOURCE / "packaging/linux" / NAME, self.launcher)
        self.program.write_text(STAND_IN)
        self.program.chmod(0o755)
        self.runtime = place / "runtime"
        self.environment = {
            "PATH": os.environ["PATH"],
            "HOME": str(place / "home"),
            "XDG_RUNTIME_DIR": str(self.runtime),
            "REPORT": str(place / "report"),
        }

    def start(self, *arguments, command=None, cwd=None, stderr=None, **environment):
        merged = {**self.environment, **environment}
        merged = {name: value for name, value in merged.items() if value is not None}
        return subprocess.Popen([str(command or self.launcher), *arguments], env=merged, cwd=cwd or self.place,
                                stderr=stderr, text=True, start_new_session=True)

    def report(self):
        """What the stand-in told, once it has."""
        file = self.place / "report"
        wait_for(file.exists)
        lines = file.read_text().split("\n")
        return dict(zip(LINES, lines)), lines[len(LINES):-1]


def wait_for(condition):
    deadline = time.monotonic() + TIMEOUT
    while not condition():
        assert time.monotonic() < deadline
        time.sleep(0.05)


def send_signals(installed, count, seed, moments=0.012):
    """Sends a signal to as many launchers, each at a random moment of its first `moments` seconds.

    Returns the trials in which it had no effect, and the directories that were left behind.
    """
    choose = random.Random(seed)
    swallowed = []
    for trial in range(count):
        number = choose.choice([signal.SIGTERM, signal.SIGINT, signal.SIGHUP])
        send = choose.choice([os.kill, os.killpg])
        process = installed.start("wait")
        time.sleep(choose.uniform(0, moments))
        send(process.pid, number)
        try:
            process.wait(5)
        except subprocess.TimeoutExpired:
            swallowed.append(f"trial {trial}: {signal.Signals(number).name}")
            process.kill()
            process.wait()
    deadline = time.monotonic() + 5
    while os.listdir(installed.runtime) and time.monotonic() < deadline:
        time.sleep(0.05)
    return swallowed, os.listdir(installed.runtime)


if __name__ == "__main__":
    count, seed = int(sys.argv[1]), int(sys.argv[2])
    with tempfile.TemporaryDirectory() as place:
        swallowed, left = send_signals(Installed(pathlib.Path(place)), count, seed)
    print(f"{count} signals, seed {seed}: {len(swallowed)} swallowed, {len(left)} directories left")
    sys.exit(bool(swallowed or left))
