# SPDX-License-Identifier: MIT
"""Everything that can go wrong with a drive in the list, to the look that must follow."""

import time

import pytest
from conftest import FAST, outdated


def test_slow_probe(bench, start):
    serial = bench.add("Pebble", serial="TV1")
    bench.fault(serial, "slow-probe", 1500)
    program = start()
    program.see_models("Pebble")
    assert time.monotonic() - program.started_at > 1.5


def test_statuses_that_settle_after_some_queries(bench, start):
    serial = bench.add("Pebble", serial="TV1", plugged=False)
    bench.fault(serial, "settle-queries", 3)
    bench.plug(serial)
    program = start()
    screen = program.see_models("Pebble")
    assert bench.drive(serial)["queries"] >= 3
    assert screen.page("Pebble").texts[2] == "Firmware: Up to date."


def test_statuses_that_settle_after_some_time(bench, start):
    serial = bench.add("Pebble", serial="TV1", plugged=False)
    bench.fault(serial, "settle-time", 2500)
    bench.plug(serial)
    program = start()
    screen = program.see_models("Pebble")
    assert time.time() >= bench.drive(serial)["pluggedAt"] / 1000 + 2.5
    assert screen.page("Pebble").texts[2] == "Firmware: Up to date."


def test_statuses_that_never_settle(bench, start):
    serial = bench.add("Pebble", serial="TV1")
    bench.fault(serial, "never-settles")
    program = start()
    program.see_no_drive()
    # No list comes while one drive is undetermined, whatever else is plugged in.
    bench.add("Lamina", serial="TV2")
    bench.wait_for_query("TV2")
    bench.wait_for_query("TV2")
    program.see_no_drive()
    bench.unplug(serial)
    program.see_models("Lamina")


@pytest.mark.parametrize("status", [3, 77, -1])
def test_unknown_statuses(bench, start, status):
    serial = bench.add("Pebble", serial="TV1", rate=FAST)
    bench.fault(serial, "report", f"firmwareStatus={status}")
    bench.fault(serial, "report", f"configurationStatus={status}")
    program = start()
    screen = program.see_models("Pebble")
    assert screen.page("Pebble").texts == [
        "Tarvo Pebble",
        "Unknown firmware version !",
        "Firmware: Unknown status!",
        "Configuration: Unknown status!",
    ]
    program.press("Update")
    screen = program.see_confirmation("Pebble")
    assert screen.page("Pebble").button_names == ["Update", "Cancel"]
    program.press("Update")
    program.see_restart("Pebble")
    assert bench.flash(serial) == bench.newest("Pebble")


@pytest.mark.parametrize("chipset", [4, 7, -1])
def test_bridge_without_an_updater(bench, start, chipset):
    serial = outdated(bench, "Pebble")
    bench.fault(serial, "report", f"chipsetType={chipset}")
    program = start()
    screen = program.see_models("Pebble")
    assert screen.page("Pebble").texts[1] == "(firmware version: 1.00 => 2.14 )"
    program.begin_update("Pebble")
    program.see_failure("Pebble")
    assert bench.flash(serial) == ("1.00", "1")
    program.press("Finish")
    assert program.wait_for_end() == 0


def test_bridge_that_is_not_supported(bench, start):
    serial = outdated(bench, "Pebble")
    bench.fault(serial, "report", "chipsetType=0")
    program = start()
    screen = program.see("Device not supported !")
    assert screen.page("Pebble").texts == ["Tarvo Pebble", "Device not supported !"]
    assert screen.buttons == []


def test_another_maker(bench, start):
    serial = outdated(bench, "Pebble")
    bench.fault(serial, "report", "vendorId=4660")
    program = start()
    program.see_models("Pebble")
    program.begin_update("Pebble")
    program.see_restart("Pebble")
    assert bench.flash(serial) == bench.newest("Pebble")


def test_product_without_a_restart_instruction(bench, start):
    serial = outdated(bench, "Pebble")
    bench.fault(serial, "report", "productId=6690")
    program = start()
    program.begin_update("Pebble")
    screen = program.see_restart("Pebble")
    assert screen.page("Pebble").texts == ["Your Tarvo Pebble has been successfully updated."]


def test_text_with_any_byte(bench, start):
    serial = outdated(bench, "Pebble")
    bench.fault(serial, "report", r"modelName=P\xE9bble %2\x00 and more")
    bench.fault(serial, "report", r"firmwareVersion=\xBD")
    program = start()
    program.see("Tarvo Pébble %2", "(firmware version: ½ => 2.14 )")
    program.press("Update Firmware and Configuration")
    # Each value fills the lowest number that is left, so that the one in the name takes the next value.
    screen = program.see("Cancel")
    assert screen.texts[1] == (
        'You are about to update your Tarvo Pébble firmware and configuration. ("½" => "2.14")%7'
    )


def test_duplicate_serial(bench, start):
    serial = outdated(bench, "Pebble")
    bench.fault(serial, "duplicate-serial")
    program = start()
    screen = program.see_models("Pebble", "Pebble")
    screen.root.buttons[0].press()
    screen = program.see("Cancel")
    assert screen.models == ["Pebble", "Pebble"], "both drives with that serial number are confirmed"
    screen.root.buttons[0].press()
    program.wait_for(lambda screen: len(screen.root.bars) == 2, "two pages in progress")
    program.wait_for(
        lambda screen: [page.texts[0] for page in screen.pages]
        == ["Your Tarvo Pebble has been successfully updated."] * 2,
        "two pages that wait for the restart",
    )
    bench.run("replug", serial)
    program.wait_for(lambda screen: screen.buttons == ["Finish", "Finish"], "two success pages")
    assert bench.flash(serial) == bench.newest("Pebble")


def test_serial_of_another_drive(bench, start):
    pebble = outdated(bench, "Pebble")
    bench.add("Skiff", serial="TV2")
    bench.fault(pebble, "report", "serialNumber=TV2")
    program = start()
    program.see_models("Pebble", "Skiff")
    program.press("Update Firmware and Configuration", "Pebble")
    screen = program.see("Cancel")
    assert screen.models == ["Pebble", "Skiff"]


def test_damaged_drive(bench, start, directory):
    bench.add("Pebble", serial="TV1")
    bench.add("Skiff", serial="TV2")
    bench.damage_drive("TV1")
    program = start()
    program.see_no_drive()
    bench.run("remove", "TV1")
    program.see_models("Skiff")
    line = one_line(directory)
    assert "TV1" in line and "damaged" in line


def test_damaged_bench(bench, start, directory):
    bench.add("Pebble", serial="TV1")
    damaged = bench.damage()
    program = start()
    program.see_no_drive()
    program.close_window()
    assert program.wait_for_end() == 0
    assert str(bench.database) in one_line(directory)
    assert bench.database.read_bytes() == damaged


def test_missing_bench(bench, start, directory):
    bench.directory += "-that-is-not-there"
    program = start()
    program.see_no_drive()
    program.close_window()
    assert program.wait_for_end() == 0
    assert bench.directory in one_line(directory)


def one_line(directory):
    """What the program printed, which must be one line."""
    (line,) = (directory / "output0.txt").read_text().splitlines()
    return line
