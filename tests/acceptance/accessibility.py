# SPDX-License-Identifier: MIT
"""The accessibility bus, read as a screen reader reads it: the tree of a program's objects."""

import functools

import dbus
from dbus.lowlevel import MethodCallMessage, MethodReturnMessage
from dbus.mainloop.glib import DBusGMainLoop
from gi.repository import GLib
from waiting import TIMEOUT

ACCESSIBLE = "org.a11y.atspi.Accessible"
REGISTRY = "org.a11y.atspi.Registry"
ROOT = "/org/a11y/atspi/accessible/root"

CALL_TIMEOUT = 10  # seconds

STATES = {"active": 1, "enabled": 8, "focusable": 11, "focused": 12, "showing": 25}  # bits of an object's state set

# Roles.
TEXTS = ("label", "push button", "button")
CHILDLESS = (*TEXTS, "progress bar", "graphic")


class StaleObject(Exception):
    """An object was destroyed while it was being read."""


class AccessibilityBus:
    """A connection to the accessibility bus of a session."""

    def __init__(self, session_address):
        self.roles = {}  # of the objects seen so far, which keep theirs, by owner and path
        try:
            session = dbus.bus.BusConnection(session_address)
            address = session.call_blocking("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", "", (),
                                            timeout=TIMEOUT)
            session.close()
            self.connection = dbus.bus.BusConnection(address, mainloop=DBusGMainLoop())
        except dbus.DBusException as error:
            raise RuntimeError(f"no accessibility bus, is at-spi2-core installed? {error}") from None

    def call_all(self, calls):
        """Makes many calls (owner, path, interface, method, signature, arguments) at once and returns the replies,
        each a list of values."""
        replies = {}
        for index, (owner, path, interface, method, signature, *arguments) in enumerate(calls):
            message = MethodCallMessage(owner, path, interface, method)
            message.append(*arguments, signature=signature)
            self.connection.send_message_with_reply(message, functools.partial(replies.__setitem__, index),
                                                    CALL_TIMEOUT)
        while len(replies) < len(calls):
            GLib.MainContext.default().iteration(True)
        if not all(isinstance(reply, MethodReturnMessage) for reply in replies.values()):
            raise StaleObject
        return [replies[index].get_args_list() for index in range(len(calls))]

    def call(self, owner, path, interface, method, signature="", *arguments):
        return self.call_all([(owner, path, interface, method, signature, *arguments)])[0]

    def owner_of_process(self, process_id):
        """The name on the bus of the program with that process ID; None as long as it has none."""
        try:
            (programs,) = self.call(REGISTRY, ROOT, ACCESSIBLE, "GetChildren")
        except StaleObject:
            return None
        for owner, _ in programs:
            try:
                (found,) = self.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                                     "GetConnectionUnixProcessID", "s", owner)
            except StaleObject:
                continue
            if found == process_id:
                return owner
        return None

    def read_tree(self, owner):
        """The objects of a program, level by level; hidden ones are left out with all their descendants.

        Each call costs the program, the bus and the test processor time, and tests read trees over and over. So
        only what most of them look at is read at once.
        """
        root = Node(self, owner, ROOT, None)
        root.role = "application"
        level = self._children_of([root])
        while level:
            states = self.call_all([(owner, node.path, ACCESSIBLE, "GetState", "") for node in level])
            for node, (state,) in zip(level, states):
                node.state = state[0] | state[1] << 32
            level = [node for node in level if node.showing]
            for node in level:
                node.parent.children.append(node)
            self._read_roles(owner, [node.path for node in level])
            for node in level:
                node.role = self.roles[owner, node.path]
            texts = [node for node in level if node.role in TEXTS]
            for node, (name,) in zip(texts, self.call_all([node.name_call() for node in texts])):
                node.known_name = name
            level = self._children_of([node for node in level if node.role not in CHILDLESS])
        return root

    def _children_of(self, nodes):
        replies = self.call_all([(node.owner, node.path, ACCESSIBLE, "GetChildren", "") for node in nodes])
        return [Node(self, node.owner, path, node) for node, (found,) in zip(nodes, replies) for _, path in found]

    def _read_roles(self, owner, paths):
        new = [path for path in paths if (owner, path) not in self.roles]
        replies = self.call_all([(owner, path, ACCESSIBLE, "GetRoleName", "") for path in new])
        self.roles.update(((owner, path), role) for path, (role,) in zip(new, replies))

    def generate_input(self, method, signature, *arguments):
        """Has the registry send a key or mouse event to the display, as a device would."""
        self.call(REGISTRY, "/org/a11y/atspi/registry/deviceeventcontroller",
                  "org.a11y.atspi.DeviceEventController", method, signature, *arguments)


class Node:
    """One object on the accessibility bus as it was when it was read. The path identifies it for its lifetime."""

    def __init__(self, bus, owner, path, parent):
        self.bus, self.owner, self.path, self.parent = bus, owner, path, parent
        self.children = []
        self.role = ""
        self.known_name = None
        self.state = 0

    def __getattr__(self, name):
        if name in STATES:
            return bool(self.state >> STATES[name] & 1)
        raise AttributeError(name)

    @property
    def name(self):
        """Its text, as a screen reader says it; that of a window or a page is only read when it is asked for."""
        if self.known_name is None:
            (self.known_name,) = self.bus.call(*self.name_call())
        return self.known_name

    def name_call(self):
        return self.owner, self.path, "org.freedesktop.DBus.Properties", "Get", "ss", ACCESSIBLE, "Name"

    def all(self):
        """This node and its descendants, in reading order."""
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
    def pictures(self):
        return [node for node in self.all() if node.role in ("graphic", "image", "icon")]

    @property
    def bars(self):
        return [node for node in self.all() if node.role == "progress bar"]

    @property
    def description(self):
        """What a screen reader says beside the name."""
        (description,) = self.bus.call(self.owner, self.path, "org.freedesktop.DBus.Properties", "Get", "ss",
                                       ACCESSIBLE, "Description")
        return description

    @property
    def box(self):
        """Left, top, right and bottom edge on the display."""
        ((x, y, width, height),) = self.bus.call(self.owner, self.path, "org.a11y.atspi.Component", "GetExtents",
                                                 "u", 0)  # in pixels of the display
        return x, y, x + width, y + height

    @property
    def size(self):
        left, top, right, bottom = self.box
        return right - left, bottom - top

    def press(self):
        """Does the object's action "Press"."""
        action = "org.a11y.atspi.Action"
        (actions,) = self.bus.call(self.owner, self.path, action, "GetActions")
        names = [name for name, _, _ in actions]
        self.bus.call(self.owner, self.path, action, "DoAction", "i", names.index("Press"))

    def dump(self, depth=0):
        """The tree below this node as indented lines."""
        states = " ".join(name for name in STATES if getattr(self, name) and name != "showing")
        try:
            name = repr(self.name)
        except StaleObject:
            name = "gone"
        line = f"{'  ' * depth}{self.role} {name} ({states}) {self.path.rsplit('/', 1)[1]}"
        return "\n".join([line] + [child.dump(depth + 1) for child in self.children])
