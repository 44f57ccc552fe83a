# SPDX-License-Identifier: MIT
"""The running updater: what it shows, read from the accessibility bus, and the buttons that a user presses.

Nothing of the program's insides is known here.
"""

import os
import pathlib
import re
import subprocess
import time

from accessibility import StaleObject
from desktop import end_with_parent
from PIL import ImageChops
from waiting import POLL_INTERVAL, TIMEOUT, ExpectationFailed

# Where the program is, unless a caller says otherwise: in the first of the builds that has one.
BUILDS = [pathlib.Path(__file__).resolve().parents[2] / "build" / preset / "bin" for preset in ("dev", "release")]
PROGRAM_DIR = os.environ.get("TARVO_PROGRAM_DIR") or str(
    next((build for build in BUILDS if (build / "tarvo-firmware-updater").exists()), BUILDS[0]))

NO_DRIVE = "No compatible Tarvo device were found.\n\nPlease plug a compatible Tarvo device."
COMPANION = (
    "Tarvo Quaydesk is installed on this computer. "
    "Please Uninstall Tarvo Quaydesk before using Tarvo Firmware Updater."
)
DO_NOT_DISCONNECT = "DO NOT disconnect the device during the firmware update."


class Screen:
    """What a program shows at one moment."""

    def __init__(self, root):
        self.root = root
        self.windows = root.children
        self.window = next((w for w in self.windows if w.name == "Tarvo Firmware Updater"), None)
        self.warning = next((w for w in self.windows if COMPANION in w.texts), None)

    @property
    def texts(self):
        return self.root.texts

    @property
    def buttons(self):
        return self.root.button_names

    @property
    def pages(self):
        """The drives' pages: all that have lines of text which name a drive."""
        return [
            node
            for node in (self.window.all() if self.window else [])
            if any(child.role == "label" and "Tarvo " in child.name and child.name != NO_DRIVE
                   for child in node.children)
        ]

    @property
    def models(self):
        """The models on the pages, in the order of the list."""
        return [page.texts[0].removeprefix("Tarvo ") for page in self.pages]

    def page(self, model):
        """The page that names the model; None when there is none."""
        name = re.compile(rf"(Your )?Tarvo {re.escape(model)}( has been successfully updated\.)?")
        return next((page for page in self.pages if name.fullmatch(page.texts[0])), None)


class Program:
    """A running updater, or any other program on the desktop.

    Its environment is that of the desktop and the given variables; None removes one.
    """

    def __init__(self, desktop, command, directory, environment, arguments=(), log=None):
        self.desktop = desktop
        variables = {name: value for name, value in {**desktop.environment, **environment}.items() if value is not None}
        # On the accessibility bus, boxes are in the program's own pixels.
        self.scale = int(variables.get("QT_SCALE_FACTOR", 1))
        self.started_at = time.monotonic()
        self.process = subprocess.Popen([str(command), *arguments], cwd=directory, env=variables, stdout=log,
                                        stderr=log, preexec_fn=end_with_parent)
        self.owner = None

    def has_loaded(self, library):
        """Whether a file with that text in its path, a plug-in for example, is mapped into the process."""
        return any(library in file for file in self.mapped_files())

    def mapped_files(self):
        with open(f"/proc/{self.process.pid}/maps", encoding="utf-8") as maps:
            return {line.split(maxsplit=5)[5].strip() for line in maps if "/" in line}

    def resident_memory(self):
        """In bytes."""
        with open(f"/proc/{self.process.pid}/statm", encoding="utf-8") as counts:
            return int(counts.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")

    # What is on screen -------------------------------------------------------------------------------------

    @property
    def is_running(self):
        return self.process.poll() is None

    def look(self):
        """What is on screen now; None while the program shows nothing."""
        if self.owner is None:
            self.owner = self.desktop.accessibility.owner_of_process(self.process.pid)
        if self.owner is None:
            return None
        try:
            return Screen(self.desktop.accessibility.read_tree(self.owner))
        except StaleObject:
            return None

    def wait_for(self, condition, what, timeout=TIMEOUT):
        """Reads the screen until it meets the condition, and returns it."""
        deadline = time.monotonic() + timeout
        screen = None
        while True:
            if not self.is_running:
                raise ExpectationFailed(f"the program ended with status {self.process.returncode} before {what}")
            screen = self.look() or screen
            try:
                if screen and condition(screen):
                    return screen
            except StaleObject:
                pass  # the page was rebuilt meanwhile
            if time.monotonic() > deadline:
                seen = screen.root.dump() if screen else "nothing"
                raise ExpectationFailed(f"timeout after {timeout} seconds: {what}; on screen:\n{seen}")
            time.sleep(POLL_INTERVAL)

    def see(self, *texts, timeout=TIMEOUT):
        """Waits until all these texts, of labels or buttons, are on screen."""
        return self.wait_for(
            lambda screen: set(texts) <= set(screen.texts + screen.buttons), " and ".join(map(repr, texts)), timeout
        )

    def see_models(self, *models):
        """Waits until the list shows just these drives, in this order."""
        return self.wait_for(lambda screen: screen.window and screen.models == list(models),
                             f"the pages of {models}")

    def see_no_drive(self):
        return self.see(NO_DRIVE)

    def see_confirmation(self, model):
        """Waits for the page that asks whether the drive is to be updated."""
        return self._see_page(model, lambda page: "Cancel" in page.button_names, "asks to be confirmed")

    def see_progress(self, model):
        return self._see_page(model, lambda page: page.bars and DO_NOT_DISCONNECT in page.texts, "is in progress")

    def see_restart(self, model):
        """Waits for the page that asks for the drive to be switched off and on."""
        return self._see_page(
            model, lambda page: page.bars and page.texts[0].startswith("Your "), "asks for a restart"
        )

    def see_success(self, model):
        return self._see_page(
            model, lambda page: page.texts[0].startswith("Your ") and page.button_names == ["Finish"], "has succeeded"
        )

    def see_settled_success(self, model):
        """Waits for the success page that the list with the updated drive makes; a press before that could be lost."""
        return self._see_page(
            model, lambda page: page.button_names == ["Finish"] and "Firmware: Up to date." in page.texts,
            "lists its drive as up to date"
        )

    def see_failure(self, model):
        failure = f"Error while updating your Tarvo {model} device. Please retry."
        return self._see_page(
            model, lambda page: failure in page.texts and page.button_names == ["Finish"], "has failed"
        )

    def see_warning(self):
        """Waits for the box that warns of the companion product."""
        return self.wait_for(lambda screen: screen.warning, "the companion warning")

    def _see_page(self, model, condition, what):
        return self.wait_for(
            lambda screen: len(screen.pages) == 1 and screen.page(model) and condition(screen.page(model)),
            f"the only page, that of {model}, {what}",
        )

    # What a user does --------------------------------------------------------------------------------------

    def press(self, name, model=None):
        """Presses the button of that name, on the page of that model where there are several."""

        def press_it(screen):
            place = screen.page(model) if model else screen.root
            found = [button for button in place.buttons if button.name == name and button.enabled] if place else []
            if len(found) > 1:
                raise ExpectationFailed(f"{len(found)} buttons {name!r} on screen; name the model")
            for button in found:
                button.press()
            return found

        self.wait_for(press_it, f"the button {name!r}" + (f" of {model}" if model else ""))

    def begin_update(self, model):
        """Presses the update button of a drive and confirms; returns as it is being flashed."""
        screen = self.wait_for(
            lambda screen: screen.page(model) and screen.page(model).buttons, f"the update button of {model}"
        )
        self.press(screen.page(model).button_names[0], model)
        screen = self.see_confirmation(model)
        self.press(next(name for name in screen.page(model).button_names if name != "Cancel"))
        # The press is queued: a change of the list would rebuild the page before it and lose the press.
        self.wait_for(lambda screen: "Cancel" not in screen.buttons, "the confirmation has its effect")

    def wait_for_end(self, timeout=TIMEOUT):
        """Waits until the program has ended, and returns its exit status."""
        try:
            return self.process.wait(timeout)
        except subprocess.TimeoutExpired:
            raise ExpectationFailed(f"the program still runs after {timeout} seconds") from None

    def close_window(self):
        """Closes the main window by the keyboard, as the window manager lets a person do."""
        self.wait_for(lambda screen: screen.window and screen.window.active, "the window in front")
        self.desktop.type_key("F4", "Alt")

    def stop(self):
        if self.is_running:
            self.process.kill()
            self.process.wait()

    # What is kept ------------------------------------------------------------------------------------------

    def save_screenshot(self, file):
        """Saves a screenshot of the program's windows, once they no longer change."""
        picture = None

        def settled(screen):
            nonlocal picture
            boxes = [[self.scale * edge for edge in window.box] for window in screen.windows]
            if not boxes:
                return False
            before = self.desktop.screenshot()
            time.sleep(POLL_INTERVAL)
            after = self.desktop.screenshot()
            difference = ImageChops.difference(before, after)
            for bar in screen.root.bars:
                difference.paste(0, bar.box)  # a busy bar is animated
            lefts, tops, rights, bottoms = zip(*boxes)
            picture = after.crop((min(lefts), min(tops), max(rights), max(bottoms)))
            is_painted = len(picture.getcolors(picture.width * picture.height)) > 1
            return is_painted and not difference.getbbox()

        self.wait_for(settled, "a screenshot that stays the same")
        picture.save(file, optimize=True)
        return file

    def save_diagnostics(self, directory, name):
        """Saves a screenshot of the display and the tree of accessible objects in the directory."""
        os.makedirs(directory, exist_ok=True)
        self.desktop.screenshot().save(os.path.join(directory, name + ".png"))
        screen = self.look() if self.is_running else None
        with open(os.path.join(directory, name + ".txt"), "w", encoding="utf-8") as file:
            file.write(screen.root.dump() if screen else f"not running: status {self.process.returncode}")
            file.write("\n")
