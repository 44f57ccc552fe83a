"""In a Wayland session the program shows its window through Xwayland, or says what is missing."""

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


def test_window_through_xwayland(bench, session, start):
    # Seen on the display itself: on a display of another session, Qt 5 does not always join the accessibility bus.
    bench.add("Pebble", serial="TV1")
    wayland = session(xwayland=True)
    program = start(environment=wayland.environment)
    display = wayland.environment["DISPLAY"]
    wait_until(lambda: is_on_display(display, "Tarvo Firmware Updater"), "the window")
    bench.wait_for_query("TV1")
    assert program.is_running


def test_wayland_alone(session, start, directory):
    program = start(environment=session(xwayland=False).environment)
    assert program.wait_for_end(timeout=10) > 0, "an exit status, not a signal"
    (line,) = (directory / "output0.txt").read_text().splitlines()
    assert "xwayland" in line.lower()


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
