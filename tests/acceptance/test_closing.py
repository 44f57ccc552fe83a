# SPDX-License-Identifier: MIT
"""The end of the program in every state: exit status, duration, and the service given back exactly once."""

import signal
import time

import pytest
from conftest import FAST, SLOW
from waiting import wait_until

SUBMIT = (
    "sudo launchctl submit -l com.tarvo.quaydesk.service "
    "-p '/Library/Application Support/Tarvo/Quaydesk/tarvo_qd_service'"
)


def submissions(bench):
    return [call for call in bench.calls() if "submit" in call]


def end_by(bench, program, action):
    """Ends the program that way: it gives the service back once, takes its second and returns 0."""
    assert submissions(bench) == []
    before = time.monotonic()

    def is_submitted():
        nonlocal before
        now = time.monotonic()
        if submissions(bench):
            return True
        before = now
        return False

    action()
    wait_until(is_submitted, "the service to be given back", poll_interval=0.01)
    assert program.wait_for_end() == 0
    assert time.monotonic() - before >= 1
    assert submissions(bench) == [SUBMIT]
    assert bench.calls()[-1] == SUBMIT


def in_no_drive(bench, start):
    program = start()
    program.see_no_drive()
    return program


def in_list(bench, start):
    bench.add("Pebble", serial="TV1")
    program = start()
    program.see_models("Pebble")
    return program


def in_confirmation(bench, start):
    bench.add("Pebble", serial="TV1", firmware="1.00")
    program = start()
    program.press("Update Firmware")
    program.see_confirmation("Pebble")
    return program


def in_progress(bench, start):
    bench.add("Pebble", serial="TV1", firmware="1.00", rate=SLOW)
    program = start()
    program.begin_update("Pebble")
    program.see_progress("Pebble")
    return program


def in_restart(bench, start):
    bench.add("Pebble", serial="TV1", firmware="1.00", rate=FAST)
    program = start()
    program.begin_update("Pebble")
    program.see_restart("Pebble")
    return program


def in_success(bench, start):
    bench.add("Pebble Triple", serial="TV1", firmware="1.00", rate=FAST)
    program = start()
    program.begin_update("Pebble Triple")
    program.see_settled_success("Pebble Triple")
    return program


def in_failure(bench, start):
    bench.add("Pebble", serial="TV1", firmware="1.00", rate=FAST)
    bench.fault("TV1", "verify-error")
    program = start()
    program.begin_update("Pebble")
    program.see_failure("Pebble")
    return program


STATES = [in_no_drive, in_list, in_confirmation, in_progress, in_restart, in_success, in_failure]


@pytest.mark.parametrize("state", STATES)
def test_closing_the_window(bench, start, state):
    program = state(bench, start)
    end_by(bench, program, program.close_window)


@pytest.mark.parametrize("state, button", [(in_list, "Close"), (in_success, "Finish"), (in_failure, "Finish")])
def test_the_button_that_ends(bench, start, state, button):
    program = state(bench, start)
    end_by(bench, program, lambda: program.press(button))


def test_termination(bench, start):
    program = in_list(bench, start)
    program.process.terminate()
    assert program.wait_for_end() == -signal.SIGTERM
    assert submissions(bench) == []
    start().see_models("Pebble")  # nothing is left that the next start would stumble over


@pytest.mark.parametrize("way", ["close", signal.SIGHUP, signal.SIGTERM])
def test_end_of_the_program_interrupts_the_flash(bench, start, way):
    program = in_progress(bench, start)
    if way == "close":
        end_by(bench, program, program.close_window)
    else:
        program.process.send_signal(way)
        assert program.wait_for_end() == -way
    bench.wait_for_no_writer("TV1")
    assert bench.drive("TV1")["state"] == "boot ROM"
    assert "interrupted, at" in bench.run("show", "TV1")

    again = start()
    assert "Unknown firmware version !" in again.see_models("Pebble").page("Pebble").texts
    again.begin_update("Pebble")
    again.see_restart("Pebble")
    assert bench.flash("TV1")[0] == bench.newest("Pebble")[0]
    assert "interrupted" not in bench.run("show", "TV1")


@pytest.mark.parametrize("percent", range(0, 80, 8))
def test_killed_while_it_flashes(bench, start, percent):
    """Half of the points on a USB drive, half on a FireWire drive."""
    model = "Pebble" if percent % 16 else "Pebble Triple"
    serial = bench.add(model, serial="TV1", firmware="1.00", configuration="1", rate=8000)
    bench.add("Skiff", serial="TV2")
    before = bench.all_but(serial)
    program = start()
    program.begin_update(model)

    def is_at_that_point():
        written, to_write = bench.progress(serial)
        return to_write and 100 * written >= percent * to_write

    wait_until(is_at_that_point, f"{percent} % of the image are written")
    program.process.kill()
    assert program.wait_for_end() == -signal.SIGKILL
    assert bench.is_incomplete(serial), "the kill came before the end of the flash"
    assert bench.all_but(serial) == before
    bench.wait_for_no_writer(serial)

    bench.set_rate(serial, FAST)
    again = start()
    screen = again.see_models(model, "Skiff")
    assert "Unknown firmware version !" in screen.page(model).texts
    again.begin_update(model)
    if model == "Pebble":
        again.see_restart(model)
        bench.run("replug", serial)
    again.see_success(model)
    assert bench.flash(serial) == bench.newest(model)
    assert bench.drive(serial)["runningFirmware"] == bench.newest(model)[0]
    assert bench.all_but(serial) == before


def test_scratch_file_is_removed(bench, start, directory):
    program = in_list(bench, start)
    assert list((directory / "cwd0").iterdir()) == []
    program.press("Close")
    assert program.wait_for_end() == 0
    assert list((directory / "cwd0").iterdir()) == []


def test_nothing_is_printed(bench, start, directory):
    program = in_success(bench, start)
    program.press("Finish")
    assert program.wait_for_end() == 0
    assert (directory / "output0.txt").read_text() == ""
