# SPDX-License-Identifier: MIT
"""Everything that can go wrong in an update, to the look that must follow and what is left in the flash."""

import time

import pytest
from conftest import outdated

POLL = 2  # seconds that the program pauses between two queries

INCOMPLETE, OLD, NEW = "incomplete", "old", "new"


@pytest.mark.parametrize("model", ["Pebble", "Lamina", "Harbour", "Pebble Triple", "Harbour (FireWire 800)"])
def test_flash_error(bench, start, model):
    fail_an_update(bench, start, model, ("flash-error", 9000), INCOMPLETE)


@pytest.mark.parametrize(
    "model, fault, left",
    [
        ("Pebble", ("flash-error", 0), INCOMPLETE),
        ("Pebble", ("verify-error",), INCOMPLETE),
        ("Harbour FireWire", ("verify-error",), INCOMPLETE),
        ("Pebble", ("pulled-out", 12000), INCOMPLETE),
        ("Harbour FireWire", ("pulled-out", 12000), INCOMPLETE),
        ("Pebble", ("wrong-image",), OLD),
        ("Harbour FireWire", ("wrong-image",), OLD),
        ("Pebble", ("truncated-image",), OLD),
        ("Pebble", ("truncated-image", 40000), OLD),
        ("Pebble", ("report", "firmwareFileName=nothing.tfw"), OLD),
        ("Pebble", ("report", "chipsetType=2"), OLD),
        ("Pebble", ("unmount-returns", 0), NEW),
        ("Pebble", ("unmount-returns", 2), NEW),
    ],
    ids=lambda value: "-".join(map(str, value)) if isinstance(value, tuple) else value,
)
def test_failing_update(bench, start, model, fault, left):
    fail_an_update(bench, start, model, fault, left)


def fail_an_update(bench, start, model, fault, left):
    """Updates a drive with that fault: the failure page follows and freezes the list until the next start."""
    serial = outdated(bench, model)
    bench.fault(serial, *fault)
    bench.add("Skiff", serial="TV2")
    program = start()
    program.see_models(model, "Skiff")
    program.begin_update(model)
    failed = program.see_failure(model)

    expected = {INCOMPLETE: (None, None), OLD: ("1.00", "1"), NEW: bench.newest(model)}[left]
    assert bench.flash(serial) == expected
    assert bench.is_incomplete(serial) == (left == INCOMPLETE)

    # The list is frozen: nothing that is pulled out or plugged in is noticed any more.
    bench.add("Lamina Slim", serial="TV3")
    time.sleep(POLL + 0.5)
    still = program.look()
    assert [page.path for page in still.pages] == [page.path for page in failed.pages]
    program.press("Finish")
    assert program.wait_for_end() == 0

    bench.run("clear", serial)
    if fault[0] == "pulled-out":
        assert not bench.drive(serial)["plugged"]
    else:
        bench.unplug(serial)
    bench.plug(serial)
    again = start()
    screen = again.see_models(model, "Skiff", "Lamina Slim")
    if left == INCOMPLETE:
        assert "Unknown firmware version !" in screen.page(model).texts
    if left != NEW:
        again.begin_update(model)
        if model in ("Pebble Triple", "Harbour FireWire", "Harbour (FireWire 800)"):
            again.see_success(model)
        else:
            again.see_restart(model)
    assert bench.flash(serial) == bench.newest(model)


@pytest.mark.parametrize("value", [1, 3, -1])
def test_unmount_that_returns_an_odd_value(bench, start, value):
    serial = outdated(bench, "Pebble")
    bench.fault(serial, "unmount-returns", value)
    program = start()
    program.begin_update("Pebble")
    program.see_restart("Pebble")
    assert bench.flash(serial) == bench.newest("Pebble")


# Faults of a restart ---------------------------------------------------------------------------------------


def restart_after_an_update(bench, start, *fault):
    """Updates a drive with that fault and restarts it; returns it, the program and the page that waited for that."""
    serial = outdated(bench, "Pebble")
    bench.add("Skiff", serial="TV2")
    bench.fault(serial, *fault)
    program = start()
    program.begin_update("Pebble")
    waiting = program.see_restart("Pebble")
    bench.unplug(serial)
    bench.wait_for_query("TV2")
    bench.plug(serial)
    bench.wait_for_query("TV2")
    return serial, program, waiting


def test_drive_that_does_not_come_back(bench, start):
    serial, program, waiting = restart_after_an_update(bench, start, "no-return")
    assert [page.path for page in program.look().pages] == [page.path for page in waiting.pages]
    bench.run("clear", serial)
    bench.run("replug", serial, "--for", 0)
    program.see_success("Pebble")


def test_drive_that_comes_back_as_another(bench, start):
    _, program, waiting = restart_after_an_update(bench, start, "new-serial", "TV9")
    bench.wait_for_query("TV2")
    assert [page.path for page in program.look().pages] == [page.path for page in waiting.pages]
