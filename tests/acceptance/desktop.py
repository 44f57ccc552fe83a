# SPDX-License-Identifier: MIT
"""A virtual desktop for the programs under test, whatever display the machine has."""

import ctypes
import os
import shutil
import signal
import subprocess
import tempfile

from accessibility import AccessibilityBus
from PIL import ImageGrab
from waiting import wait_until

KEYS = {"Tab": 0xFF09, "Enter": 0xFF0D, "Escape": 0xFF1B, "Space": 0x20, "F4": 0xFFC1}  # key symbols of the display
MODIFIERS = {"Alt": 64}  # key codes of the display
KEY_PRESS, KEY_RELEASE, KEY_SYMBOL = 0, 1, 3

# Settings of the machine's own desktop, which no program under test may see.
FOREIGN_VARIABLES = ("QT_", "XDG_", "WAYLAND_", "TARVO_", "AT_SPI_", "DBUS_", "GTK_")


def end_with_parent():
    """Runs in a child before its program starts: no child outlives a test that was killed."""
    ctypes.CDLL(None).prctl(1, signal.SIGTERM)


class Desktop:
    """A virtual display with a session bus, an accessibility bus, a keyboard and a mouse."""

    def __init__(self, window_manager=False, size="1280x1024"):
        self.size = size
        self.directory = tempfile.mkdtemp(prefix="tarvo-desktop-")
        self.processes = []
        try:
            self._start(window_manager)
        except BaseException:
            self.close()
            raise

    def _start(self, window_manager):
        self.environment = {
            name: value for name, value in os.environ.items() if not name.startswith(FOREIGN_VARIABLES)
        }
        self.environment.update(
            XDG_RUNTIME_DIR=self.directory,
            QT_QPA_PLATFORM="xcb",
            QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1",
            LC_ALL="C.UTF-8",
        )
        self._start_display()
        self._start_buses()
        if window_manager:
            ready = os.path.join(self.directory, "openbox-is-ready")
            self._spawn(["openbox", "--config-file", "/etc/xdg/openbox/rc.xml", "--startup", f"touch {ready}"],
                        stdout=subprocess.DEVNULL)
            wait_until(lambda: os.path.exists(ready), "the window manager")

    def _start_display(self):
        reader, writer = os.pipe()
        # No reset: the display would otherwise restart each time that its last program ends.
        self._spawn(["Xvfb", "-displayfd", str(writer), "-screen", "0", f"{self.size}x24", "-noreset", "-wr",
                     "-nolisten", "tcp"], pass_fds=[writer])
        os.close(writer)
        with os.fdopen(reader) as answer:
            number = answer.readline().strip()
        if not number:
            raise RuntimeError("Xvfb does not start")
        self.display = ":" + number
        self.environment["DISPLAY"] = self.display

    def _start_buses(self):
        bus = self._spawn(["dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address"],
                          stdout=subprocess.PIPE, text=True)
        address = bus.stdout.readline().strip()
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = address
        self.accessibility = AccessibilityBus(address)

    def _spawn(self, command, **options):
        process = subprocess.Popen(command, env=self.environment, cwd=self.directory,
                                   stderr=subprocess.DEVNULL, preexec_fn=end_with_parent, **options)
        self.processes.append(process)
        return process

    def close(self):
        for process in reversed(self.processes):
            process.terminate()
            process.wait()
            if process.stdout:
                process.stdout.close()
        self.processes.clear()
        shutil.rmtree(self.directory, ignore_errors=True)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def type_key(self, name, modifier=None):
        """Types a key of KEYS, while a modifier of MODIFIERS is held, on the keyboard of this display."""
        send = self.accessibility.generate_input
        if modifier:
            send("GenerateKeyboardEvent", "isu", MODIFIERS[modifier], "", KEY_PRESS)
        send("GenerateKeyboardEvent", "isu", KEYS[name], "", KEY_SYMBOL)
        if modifier:
            send("GenerateKeyboardEvent", "isu", MODIFIERS[modifier], "", KEY_RELEASE)

    def use_mouse(self, x, y, event):
        """Moves the mouse there; `event` says what then happens: "abs", or "b1c" for a click of button 1."""
        self.accessibility.generate_input("GenerateMouseEvent", "iis", x, y, event)

    def screenshot(self, box=None):
        return ImageGrab.grab(bbox=box, xdisplay=self.display)
