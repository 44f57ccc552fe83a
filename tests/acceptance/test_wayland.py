# SPDX-License-Identifier: MIT
"""The program shows its window through X11, in a Wayland session too, or says what is missing."""

import subprocess

import pytest
from waiting import wait_until
from wayland import WaylandSession


@pytest.fixture
def session(desktop, tmp_path):
    """Starts a Wayland session."""
    sessions = []

    def start_session(**options):
        directory = tmp_path / "session"
        directory.mkdir()
        sessions.append(WaylandSession(desktop, directory, **options))
        return sessions[-1]

    yield start_session
    for session in sessions:
        session.close()


def is_on_display(display, title):
    """Whether a window of that title can be seen on an X display."""
    done = subprocess.run(["xwininfo", "-display", display, "-name", title], capture_output=True, text=True)
    return "Map State: IsViewable" in done.stdout


exported = pytest.mark.parametrize("platform", [None, "wayland", "wayland;xcb", "xcb;wayland"])


@exported
def test_window_through_xwayland(bench, session, start, platform):
    # Seen on the display itself: on a display of another session, Qt 5 does not always join the accessibility bus.
    bench.add("Pebble", serial="TV1")
    wayland = session(xwayland=True)
    program = start(environment={**wayland.environment, "QT_QPA_PLATFORM": platform})
    display = wayland.environment["DISPLAY"]
    wait_until(lambda: is_on_display(display, "Tarvo Firmware Updater"), "the window")
    bench.wait_for_query("TV1")
    assert program.is_running


@exported
def test_wayland_alone(session, start, directory, platform):
    program = start(environment={**session(xwayland=False).environment, "QT_QPA_PLATFORM": platform})
    assert "xwayland" in refusal(program, directory).lower()


@pytest.mark.parametrize("options, variables", [([], {}), (["-platform", "xcb"], {}), ([], {"DISPLAY": None})],
                         ids=["nobody answers", "nobody answers, option", "not set"])
def test_no_display(start, directory, options, variables):
    program = start(*options, environment={"QT_QPA_PLATFORM": None, "DISPLAY": ":987", **variables})
    assert "display" in refusal(program, directory).lower()


def refusal(program, directory):
    """The line with which the program ended."""
    assert program.wait_for_end(timeout=10) == 1
    (line,) = (directory / "output0.txt").read_text().splitlines()
    return line


@pytest.mark.parametrize(
    "options, variables",
    [(["-platform", "offscreen"], {}), ([], {"QT_QPA_PLATFORM": "offscreen"})],
    ids=["option", "variable"],
)
def test_chosen_windowing_system(bench, session, start, options, variables):
    bench.add("Pebble", serial="TV1")
    program = start(*options, environment={**session(xwayland=False).environment, **variables})
    bench.wait_for_query("TV1")
    assert program.is_running
    assert program.has_loaded("libqoffscreen")
