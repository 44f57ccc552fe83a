# SPDX-License-Identifier: MIT
"""A Wayland session without a screen, with or without the X server for programs that know only X11."""

import re
import subprocess

from desktop import end_with_parent
from waiting import wait_until

SOCKET = "wayland-test"


class WaylandSession:
    """A headless Weston; `environment` is what a program gets that is started in its session."""

    def __init__(self, desktop, directory, xwayland):
        self.log = directory / "weston.log"
        self.environment = {
            "XDG_RUNTIME_DIR": str(directory),
            "XDG_SESSION_TYPE": "wayland",
            "WAYLAND_DISPLAY": SOCKET,
            "DISPLAY": None,
            "QT_QPA_PLATFORM": None,
        }
        directory.chmod(0o700)
        command = ["weston", "--backend=headless-backend.so", "--shell=kiosk-shell.so", f"--socket={SOCKET}",
                   f"--log={self.log}", "--no-config", "--idle-time=0", *(["--xwayland"] if xwayland else [])]
        variables = {**desktop.environment, "XDG_RUNTIME_DIR": str(directory)}
        del variables["DISPLAY"]
        self.process = subprocess.Popen(command, env=variables, preexec_fn=end_with_parent,
                                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        try:
            wait_until((directory / SOCKET).exists, "the Wayland compositor")
            if xwayland:
                self.environment["DISPLAY"] = wait_until(self._display, "the compositor's X display")[1]
        except BaseException:
            self.close()
            raise

    def _display(self):
        return re.search(r"xserver listening on display (:\d+)", self.log.read_text(encoding="utf-8"))

    def close(self):
        self.process.terminate()
        self.process.wait()
