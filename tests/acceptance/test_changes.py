# SPDX-License-Identifier: MIT
"""A change of mind, and changes of the list, at every step of an update."""

import time

from conftest import FAST, SLOW, VERSION
from waiting import POLL_INTERVAL


def paths(screen):
    return [page.path for page in screen.pages]


def test_cancel(bench, start):
    bench.add("Pebble", serial="TV1", firmware="1.00")
    bench.add("Lamina", serial="TV2", firmware="1.00")
    program = start()
    program.press("Update Firmware", "Pebble")
    program.see_confirmation("Pebble")
    program.press("Cancel")
    program.see_models("Pebble", "Lamina")
    # The list is still followed.
    bench.unplug("TV1")
    program.see_models("Lamina")
    assert bench.flash("TV1")[0] == "1.00"


def test_cancel_and_choose_another(bench, start):
    bench.add("Pebble", serial="TV1", firmware="1.00", rate=FAST)
    bench.add("Lamina", serial="TV2", firmware="1.00", rate=FAST)
    program = start()
    program.press("Update Firmware", "Pebble")
    program.see_confirmation("Pebble")
    program.press("Cancel")
    program.press("Update Firmware", "Lamina")
    program.see_confirmation("Lamina")
    program.press("Update Firmware")
    program.see_restart("Lamina")
    assert bench.flash("TV1")[0] == "1.00"
    assert bench.flash("TV2") == bench.newest("Lamina")


def test_window_keeps_the_size_of_the_whole_list(bench, start):
    for number, model in enumerate(["Pebble", "Lamina", "Skiff", "Harbour", "Bollard"]):
        bench.add(model, serial=f"TV{number}", firmware="1.00")
    program = start()
    program.press("Update Firmware", "Skiff")
    assert program.see_confirmation("Skiff").window.size == (850, 520)


def test_list_changes_during_the_confirmation(bench, start):
    bench.add("Pebble", serial="TV1", firmware="1.00", rate=FAST)
    program = start()
    program.press("Update Firmware", "Pebble")
    before = program.see_confirmation("Pebble")
    bench.add("Skiff", serial="TV2")
    program.wait_for(
        lambda screen: screen.pages and paths(screen) != paths(before), "the confirmation page rebuilt"
    )
    after = program.see_confirmation("Pebble")
    assert after.page("Pebble").texts == before.page("Pebble").texts
    program.press("Update Firmware")
    program.see_restart("Pebble")
    assert bench.flash("TV1") == bench.newest("Pebble")


def test_two_changes_during_the_confirmation(bench, start):
    bench.add("Pebble", serial="TV1", firmware="1.00")
    program = start()
    program.press("Update Firmware", "Pebble")
    before = program.see_confirmation("Pebble")
    bench.add("Skiff", serial="TV2")
    program.wait_for(lambda screen: screen.pages and paths(screen) != paths(before), "the page rebuilt")
    bench.add("Lamina", serial="TV3")
    program.see_models("Pebble", "Skiff", "Lamina")


def test_drive_is_pulled_out_during_its_confirmation(bench, start):
    bench.add("Pebble", serial="TV1", firmware="1.00")
    bench.add("Skiff", serial="TV2")
    program = start()
    program.press("Update Firmware", "Pebble")
    program.see_confirmation("Pebble")
    bench.unplug("TV1")
    screen = program.wait_for(lambda screen: screen.window and not screen.pages, "a window without any page")
    assert screen.texts == [VERSION]
    bench.plug("TV1")
    program.see_models("Pebble", "Skiff")


def test_list_changes_during_the_flash(bench, start):
    bench.add("Harbour FireWire", serial="TV1", firmware="1.00", rate=SLOW)
    bench.add("Skiff", serial="TV2")
    program = start()
    program.see_models("Harbour FireWire", "Skiff")
    program.begin_update("Harbour FireWire")
    flashing = program.see_progress("Harbour FireWire")
    # A query that began before the flash may still deliver its list; after that nobody asks.
    time.sleep(0.5)
    bench.fault("TV2", "report", "modelName=Skiff", "--once")
    bench.add("Lamina", serial="TV3")
    while bench.drive("TV1")["state"] == "being written":
        time.sleep(POLL_INTERVAL)
        asked = not bench.has_fault("TV2", "report", "modelName=Skiff")
        screen = program.look()
        if bench.drive("TV1")["state"] == "being written":
            assert not asked, "the drives were queried during a flash"
            assert screen and paths(screen) == paths(flashing)
    program.see_success("Harbour FireWire")
    # The change is noticed once the flash is over.
    bench.wait_for_query("TV2")
    bench.unplug("TV2")
    program.see_models("Harbour FireWire", "Lamina")


def test_another_drive_is_pulled_out_during_the_flash(bench, start):
    bench.add("Pebble", serial="TV1", firmware="1.00", rate=SLOW)
    bench.add("Skiff", serial="TV2")
    program = start()
    program.see_models("Pebble", "Skiff")
    program.begin_update("Pebble")
    program.see_progress("Pebble")
    bench.unplug("TV2")
    waiting = program.see_restart("Pebble")
    # That the other drive has gone is no sign that the updated one was restarted.
    bench.wait_for_query("TV1")
    assert paths(program.look()) == paths(waiting)
    bench.unplug("TV1")
    bench.add("Lamina", serial="TV3")
    bench.wait_for_query("TV3")
    assert paths(program.look()) == paths(waiting)
    bench.plug("TV1")
    program.see_success("Pebble")
    assert bench.flash("TV1") == bench.newest("Pebble")


def test_list_changes_during_the_restart(bench, start):
    bench.add("Pebble", serial="TV1", firmware="1.00", rate=FAST)
    bench.add("Skiff", serial="TV2")
    program = start()
    program.begin_update("Pebble")
    waiting = program.see_restart("Pebble")
    bench.unplug("TV2")
    bench.wait_for_query("TV1")
    bench.plug("TV2")
    bench.wait_for_query("TV1")
    assert paths(program.look()) == paths(waiting)
    bench.run("replug", "TV1")
    program.see_success("Pebble")


def test_restart_is_too_quick_to_be_noticed(bench, start):
    bench.add("Pebble", serial="TV1", firmware="1.00", rate=FAST)
    program = start()
    program.begin_update("Pebble")
    waiting = program.see_restart("Pebble")
    bench.wait_for_query("TV1")
    bench.run("replug", "TV1", "--for", 0)
    bench.wait_for_query("TV1")
    assert paths(program.look()) == paths(waiting)
    bench.run("replug", "TV1")
    program.see_success("Pebble")
