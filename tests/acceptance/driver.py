"""Drives the running updater as a screen reader does, and the drive bench as a hand does.

A Desktop is a virtual display with a session bus and an accessibility bus of its own, whatever display the
machine has. A Bench is a folder of drives, changed through the drive-bench command. A Program is the updater
running on a bench: it is looked at, pressed and photographed, and nothing of its insides is known here.
"""

import ctypes
import hashlib
import json
import os
import re
import shutil
import signal
import subprocess
import tempfile
import time

from gi.repository import Gio, GLib
from PIL import ImageChops, ImageGrab

# Where the program is, unless a caller says otherwise.
PROGRAM_DIR = os.environ.get("TARVO_PROGRAM_DIR") or os.path.join(os.path.dirname(os.path.abspath(__file__)),
                                                                  "../../build/release/bin")

PATIENCE = 30  # seconds that anything may take on a busy machine
GLANCE = 0.2  # seconds between two looks

ACCESSIBLE = "org.a11y.atspi.Accessible"
REGISTRY = "org.a11y.atspi.Registry"
ROOT = "/org/a11y/atspi/accessible/root"

KEYS = {"Tab": 0xFF09, "Space": 0x20, "F4": 0xFFC1}  # key symbols of the display
MODIFIERS = {"Alt": 64}  # key codes of the display
KEY_PRESS, KEY_RELEASE, KEY_SYMBOL = 0, 1, 3

STATES = {"active": 1, "enabled": 8, "focusable": 11, "focused": 12, "showing": 25}  # bits of an object's state set

NO_DRIVE = "No compatible Tarvo device were found.\n\nPlease plug a compatible Tarvo device."
COMPANION = (
    "Tarvo Quaydesk is installed on this computer. "
    "Please Uninstall Tarvo Quaydesk before using Tarvo Firmware Updater."
)
DO_NOT_DISCONNECT = "DO NOT disconnect the device during the firmware update."


class NotSeen(AssertionError):
    """What was waited for did not come; the message says what was on screen instead."""


class Vanished(Exception):
    """An object went away while it was being read."""


def wait_until(condition, what, patience=PATIENCE):
    """Returns the first true value of condition(), looked for every moment."""
    deadline = time.monotonic() + patience
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            raise NotSeen(f"waited {patience} seconds in vain: {what}")
        time.sleep(GLANCE)


def end_with_parent():
    """Runs in a child before its program starts: no child outlives a test that was killed."""
    ctypes.CDLL(None).prctl(1, signal.SIGTERM)


class Desktop:
    """A virtual display, a session bus and an accessibility bus, used by one test process."""

    def __init__(self, window_manager=False):
        self.folder = tempfile.mkdtemp(prefix="tarvo-desktop-")
        self.processes = []
        try:
            self._start(window_manager)
        except BaseException:
            self.close()
            raise

    def _start(self, window_manager):
        self.environment = {
            name: value
            for name, value in os.environ.items()
            if not name.startswith(("QT_", "XDG_", "WAYLAND_", "TARVO_", "AT_SPI_", "DBUS_"))
        }
        self.environment.update(
            XDG_RUNTIME_DIR=self.folder,
            QT_QPA_PLATFORM="xcb",
            QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1",
            LC_ALL="C.UTF-8",
        )
        reader, writer = os.pipe()
        # No reset: the display would otherwise start anew each time that its last program ends.
        self._spawn(["Xvfb", "-displayfd", str(writer), "-screen", "0", "1280x1024x24", "-noreset", "-wr",
                     "-nolisten", "tcp"], pass_fds=[writer])
        os.close(writer)
        with os.fdopen(reader) as answer:
            number = answer.readline().strip()
        if not number:
            raise RuntimeError("Xvfb does not start")
        self.display = ":" + number
        self.environment["DISPLAY"] = self.display
        bus = self._spawn(["dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address"],
                          stdout=subprocess.PIPE, text=True)
        address = bus.stdout.readline().strip()
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = address
        try:
            (address,) = self._connect(address).call_sync(
                "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", None, None, 0, PATIENCE * 1000, None
            ).unpack()
            self.bus = self._connect(address)
        except GLib.Error as error:
            raise RuntimeError(f"no accessibility bus, is at-spi2-core installed? {error.message}") from None
        if window_manager:
            ready = os.path.join(self.folder, "openbox-is-ready")
            self._spawn(["openbox", "--config-file", "/etc/xdg/openbox/rc.xml", "--startup", f"touch {ready}"],
                        stdout=subprocess.DEVNULL)
            wait_until(lambda: os.path.exists(ready), "the window manager")

    def _spawn(self, command, **options):
        process = subprocess.Popen(command, env=self.environment, cwd=self.folder,
                                   stderr=subprocess.DEVNULL, preexec_fn=end_with_parent, **options)
        self.processes.append(process)
        return process

    @staticmethod
    def _connect(address):
        flags = Gio.DBusConnectionFlags
        bus = Gio.DBusConnection.new_for_address_sync(
            address, flags.AUTHENTICATION_CLIENT | flags.MESSAGE_BUS_CONNECTION, None, None
        )
        bus.set_exit_on_close(False)
        return bus

    def close(self):
        for process in reversed(self.processes):
            process.terminate()
            process.wait()
            if process.stdout:
                process.stdout.close()
        self.processes.clear()
        shutil.rmtree(self.folder, ignore_errors=True)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    # The accessibility bus ---------------------------------------------------------------------------------

    def ask_all(self, questions):
        """Puts many questions (owner, path, interface, method, arguments) at once and returns the answers."""
        answers = [None] * len(questions)
        open_questions = len(questions)

        def answered(bus, result, index):
            nonlocal open_questions
            open_questions -= 1
            try:
                answers[index] = bus.call_finish(result).unpack()
            except GLib.Error:
                answers[index] = Vanished()

        for index, (owner, path, interface, method, arguments) in enumerate(questions):
            self.bus.call(owner, path, interface, method, arguments, None, 0, 10000, None, answered, index)
        while open_questions:
            GLib.MainContext.default().iteration(True)
        if any(isinstance(answer, Vanished) for answer in answers):
            raise Vanished
        return answers

    def ask(self, owner, path, interface, method, arguments=None):
        return self.ask_all([(owner, path, interface, method, arguments)])[0]

    def owner_of_process(self, process_id):
        """The name on the bus of the program with that process ID; None as long as it has none."""
        try:
            (programs,) = self.ask(REGISTRY, ROOT, ACCESSIBLE, "GetChildren")
        except Vanished:
            return None
        for owner, _ in programs:
            try:
                (found,) = self.ask("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                                    "GetConnectionUnixProcessID", GLib.Variant("(s)", (owner,)))
            except Vanished:
                continue
            if found == process_id:
                return owner
        return None

    def read_tree(self, owner):
        """The objects of a program, level by level; hidden ones are left out with all that is in them."""
        root = Node(self, owner, ROOT, None)
        level = [root]
        while level:
            questions = []
            for node in level:
                name = GLib.Variant("(ss)", (ACCESSIBLE, "Name"))
                questions += [
                    (owner, node.path, ACCESSIBLE, "GetRoleName", None),
                    (owner, node.path, "org.freedesktop.DBus.Properties", "Get", name),
                    (owner, node.path, ACCESSIBLE, "GetState", None),
                    (owner, node.path, ACCESSIBLE, "GetChildren", None),
                ]
            answers = self.ask_all(questions)
            below = []
            for number, node in enumerate(level):
                (node.role,), (node.name,), (state,), (children,) = answers[4 * number : 4 * number + 4]
                node.state = state[0] | state[1] << 32
                if node.parent is not None:
                    if not node.showing:
                        continue
                    node.parent.children.append(node)
                below += [Node(self, owner, path, node) for _, path in children]
            level = below
        return root

    def type_key(self, name, modifier=None):
        """Types a key of KEYS, while a modifier of MODIFIERS is held, on the keyboard of this display."""
        if modifier:
            self._input("GenerateKeyboardEvent", "(isu)", MODIFIERS[modifier], "", KEY_PRESS)
        self._input("GenerateKeyboardEvent", "(isu)", KEYS[name], "", KEY_SYMBOL)
        if modifier:
            self._input("GenerateKeyboardEvent", "(isu)", MODIFIERS[modifier], "", KEY_RELEASE)

    def use_mouse(self, x, y, event):
        """Moves the mouse there; `event` says what then happens: "abs", or "b1c" for a click of button 1."""
        self._input("GenerateMouseEvent", "(iis)", x, y, event)

    def _input(self, method, signature, *arguments):
        self.ask(REGISTRY, "/org/a11y/atspi/registry/deviceeventcontroller",
                 "org.a11y.atspi.DeviceEventController", method, GLib.Variant(signature, arguments))

    def picture(self, box=None):
        return ImageGrab.grab(bbox=box, xdisplay=self.display)


class Node:
    """One object on the accessibility bus as it was when it was read. The path names it for its lifetime."""

    def __init__(self, desktop, owner, path, parent):
        self.desktop, self.owner, self.path, self.parent = desktop, owner, path, parent
        self.children = []
        self.role = self.name = ""
        self.state = 0

    def __getattr__(self, name):
        if name in STATES:
            return bool(self.state >> STATES[name] & 1)
        raise AttributeError(name)

    def all(self):
        """This node and everything in it, top to bottom."""
        yield self
        for child in self.children:
            yield from child.all()

    @property
    def texts(self):
        return [node.name for node in self.all() if node.role == "label" and node.name]

    @property
    def buttons(self):
        return [node for node in self.all() if node.role in ("push button", "button") and node.name]

    @property
    def button_names(self):
        return [node.name for node in self.buttons]

    @property
    def bars(self):
        return [node for node in self.all() if node.role == "progress bar"]

    @property
    def box(self):
        """Left, top, right and bottom edge on the display."""
        screen = GLib.Variant("(u)", (0,))
        ((x, y, width, height),) = self.desktop.ask(
            self.owner, self.path, "org.a11y.atspi.Component", "GetExtents", screen
        )
        return x, y, x + width, y + height

    @property
    def size(self):
        left, top, right, bottom = self.box
        return right - left, bottom - top

    def press(self):
        """Does what the object names "Press"."""
        action = "org.a11y.atspi.Action"
        (actions,) = self.desktop.ask(self.owner, self.path, action, "GetActions")
        names = [name for name, _, _ in actions]
        self.desktop.ask(self.owner, self.path, action, "DoAction", GLib.Variant("(i)", (names.index("Press"),)))

    def tree(self, depth=0):
        states = " ".join(name for name in STATES if getattr(self, name) and name != "showing")
        line = f"{'  ' * depth}{self.role} {self.name!r} ({states}) {self.path.rsplit('/', 1)[1]}"
        return "\n".join([line] + [child.tree(depth + 1) for child in self.children])


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
        """The drives' pages: whatever holds a picture and, below it, lines of text."""
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
    """The updater, started on a bench."""

    def __init__(self, desktop, command, bench, folder, arguments=(), environment=(), log=None):
        self.desktop = desktop
        self.bench = bench
        variables = {**desktop.environment, "TARVO_BENCH": str(bench.folder), **dict(environment)}
        self.started_at = time.monotonic()
        self.process = subprocess.Popen([str(command), *arguments], cwd=folder, env=variables, stdout=log,
                                        stderr=log, preexec_fn=end_with_parent)
        self.owner = None

    # Looking -----------------------------------------------------------------------------------------------

    @property
    def is_running(self):
        return self.process.poll() is None

    def look(self):
        """What is on screen now; None as long as there is nothing to look at."""
        if self.owner is None:
            self.owner = self.desktop.owner_of_process(self.process.pid)
        if self.owner is None:
            return None
        try:
            return Screen(self.desktop.read_tree(self.owner))
        except Vanished:
            return None

    def wait_for(self, condition, what, patience=PATIENCE):
        """Looks until the screen meets the condition, and returns that screen."""
        deadline = time.monotonic() + patience
        screen = None
        while True:
            if not self.is_running:
                raise NotSeen(f"the program ended with status {self.process.returncode} before {what}")
            screen = self.look() or screen
            try:
                if screen and condition(screen):
                    return screen
            except Vanished:
                pass  # it was just built anew
            if time.monotonic() > deadline:
                seen = screen.root.tree() if screen else "nothing"
                raise NotSeen(f"waited {patience} seconds for {what}; on screen:\n{seen}")
            time.sleep(GLANCE)

    def see(self, *texts, patience=PATIENCE):
        """Waits until all these texts, of labels or buttons, are on screen."""
        return self.wait_for(
            lambda screen: set(texts) <= set(screen.texts + screen.buttons), " and ".join(map(repr, texts)), patience
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

    # Doing -------------------------------------------------------------------------------------------------

    def press(self, name, model=None):
        """Presses the button of that name, on the page of that model where there are several."""

        def press_it(screen):
            place = screen.page(model) if model else screen.root
            found = [button for button in place.buttons if button.name == name and button.enabled] if place else []
            if len(found) > 1:
                raise NotSeen(f"{len(found)} buttons {name!r} on screen; name the model")
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
        # A press takes a moment, in which a change of the list would build the page anew and lose it.
        self.wait_for(lambda screen: "Cancel" not in screen.buttons, "the confirmation has its effect")

    def wait_for_end(self, patience=PATIENCE):
        """Waits until the program has ended, and returns its exit status."""
        try:
            return self.process.wait(patience)
        except subprocess.TimeoutExpired:
            raise NotSeen(f"the program still runs after {patience} seconds") from None

    def close_window(self):
        """Closes the main window by the keyboard, as the window manager lets a person do."""
        self.wait_for(lambda screen: screen.window and screen.window.active, "the window in front")
        self.desktop.type_key("F4", "Alt")

    def stop(self):
        if self.is_running:
            self.process.kill()
            self.process.wait()

    # Keeping -----------------------------------------------------------------------------------------------

    def photograph(self, file):
        """Saves a picture of the program's windows, once what is on the display has settled."""
        picture = None

        def settled(screen):
            nonlocal picture
            boxes = [window.box for window in screen.windows]
            if not boxes:
                return False
            before = self.desktop.picture()
            time.sleep(GLANCE)
            after = self.desktop.picture()
            difference = ImageChops.difference(before, after)
            for bar in screen.root.bars:
                difference.paste(0, bar.box)  # a busy bar never rests
            lefts, tops, rights, bottoms = zip(*boxes)
            picture = after.crop((min(lefts), min(tops), max(rights), max(bottoms)))
            is_painted = len(picture.getcolors(maxcolors=1 << 24)) > 1
            return is_painted and not difference.getbbox()

        self.wait_for(settled, "a picture that stays the same")
        picture.save(file, optimize=True)
        return file

    def keep_evidence(self, folder, name):
        """Leaves a picture of the whole display and the tree of what was on screen in the folder."""
        os.makedirs(folder, exist_ok=True)
        self.desktop.picture().save(os.path.join(folder, name + ".png"))
        screen = self.look() if self.is_running else None
        with open(os.path.join(folder, name + ".txt"), "w", encoding="utf-8") as file:
            file.write(screen.root.tree() if screen else f"not running: status {self.process.returncode}")
            file.write("\n")


class Bench:
    """A bench of drives, changed by the drive-bench command as a hand changes what is on a desk."""

    def __init__(self, command, folder):
        self.command, self.folder = str(command), str(folder)

    def run(self, *arguments):
        """Runs one drive-bench command and returns what it printed."""
        where = [] if arguments[0] == "models" else ["--bench", self.folder]
        done = subprocess.run([self.command, *map(str, arguments), *where], capture_output=True, text=True)
        if done.returncode != 0:
            raise RuntimeError(f"drive-bench {' '.join(map(str, arguments))}: {done.stderr.strip()}")
        return done.stdout

    def init(self, *options):
        self.run("init", *options)
        return self

    def add(self, model, serial=None, firmware=None, configuration=None, rate=None, plugged=True):
        """Puts a drive on the bench and returns its serial number."""
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
        with open(os.path.join(self.folder, "drives", serial + ".json"), encoding="utf-8") as file:
            return json.load(file)

    def drives(self):
        return {drive["serial"]: drive for drive in json.loads(self.run("list", "--json"))["drives"]}

    def flash(self, serial):
        """Firmware version and configuration revision in the drive's flash chip; None for what is not whole."""
        with open(os.path.join(self.folder, "drives", serial + ".flash"), "rb") as file:
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
            with open(os.path.join(self.folder, "calls.log"), encoding="utf-8") as file:
                return file.read().splitlines()
        except FileNotFoundError:
            return []
