# SPDX-License-Identifier: MIT
"""The command under test: started on a bench, in a pipe or on a terminal, with its output read."""

import fcntl
import json
import os
import pty
import re
import select
import signal
import struct
import subprocess
import termios

from waiting import TIMEOUT, wait_until

ERASE = "\r\x1b[K"


class Command:
    """tarvo-firmware on a bench. Its environment has no system bus, unless a test gives it one."""

    def __init__(self, program, bench, temporary):
        self.program, self.bench, self.temporary = program, bench, temporary
        self.environment = {
            **bench.environment,
            "DBUS_SYSTEM_BUS_ADDRESS": "unix:path=/nonexistent",
            "LC_ALL": "C.UTF-8",
            "PATH": os.environ["PATH"],
            "TERM": "xterm",
            "TMPDIR": str(temporary),
        }
        for name in ("ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS"):
            if name in os.environ:
                self.environment[name] = os.environ[name]

    def start(self, *arguments, prepare=None, **options):
        def default_signals():
            for ending in (signal.SIGINT, signal.SIGQUIT):
                signal.signal(ending, signal.SIG_DFL)  # a shell has what it runs in the background ignore them
            if prepare:
                prepare()

        streams = {"stdin": subprocess.DEVNULL, "stdout": subprocess.PIPE, "stderr": subprocess.PIPE}
        return subprocess.Popen([str(options.pop("program", self.program)), *arguments], text=True,
                                preexec_fn=default_signals,
                                env={**self.environment, **options.pop("environment", {})}, **{**streams, **options})

    def run(self, *arguments, status=0, **options):
        """Runs it to its end and checks its exit status; what it printed on both streams."""
        process = self.start(*arguments, **options)
        process.output, process.errors = process.communicate(timeout=TIMEOUT)
        assert process.returncode == status, process.output + process.errors
        return process

    def json(self, *arguments, **options):
        return json.loads(self.run(*arguments, **options).output)

    def events(self, *arguments, **options):
        """The events of an update, each with its kind, serial number and the rest."""
        lines = self.run("update", "--json", *arguments, **options).output.splitlines()
        return [json.loads(line) for line in lines]

    def terminal(self, *arguments, **options):
        return Terminal(self, arguments, **options)


class Terminal:
    """The command on a terminal of its own."""

    def __init__(self, command, arguments, width=80, environment=(), **options):
        self.side, other = pty.openpty()
        fcntl.ioctl(other, termios.TIOCSWINSZ, struct.pack("HHHH", 24, width, 0, 0))
        self.output = ""

        def take_terminal():
            os.setsid()
            fcntl.ioctl(0, termios.TIOCSCTTY, 0)

        self.process = command.start(*arguments, stdin=other, stdout=other, stderr=other, prepare=take_terminal,
                                     environment=dict(environment), **options)
        os.close(other)

    def type(self, text):
        os.write(self.side, text.encode())

    def read(self):
        assert select.select([self.side], [], [], TIMEOUT)[0], self.output
        try:
            data = os.read(self.side, 65536)
        except OSError:  # nobody has the other side open any more
            data = b""
        self.output += data.decode()
        return data

    def wait_for(self, text):
        while text not in self.output:
            assert self.read(), self.output
        return self

    def wait_for_end(self):
        while self.read():
            pass
        os.close(self.side)
        self.output = self.output.replace("\r\n", "\n")
        return self.process.wait(TIMEOUT)

    def close(self):
        """As when the window of the terminal is closed or the connection to it is lost."""
        os.close(self.side)

    @property
    def lines(self):
        """What stands on the screen after all."""
        return [re.sub(r".*\r\x1b\[K", "", line).rpartition("\r")[2] for line in self.output.split("\n")]

    @property
    def live_lines(self):
        return re.findall(r"\r\x1b\[K([^\r\n]+)\r", self.output)


def is_whole(bench, serial, version):
    """Whether the drive's chip holds that version and was not left in the middle of a flash."""
    drive = bench.drive(serial)
    return not drive["incomplete"] and drive["flashFirmware"] == version


def wait_for_writing(bench, serial):
    wait_until(lambda: bench.drive(serial)["bytesWritten"] > 0, f"{serial} is written", poll_interval=0.02)
