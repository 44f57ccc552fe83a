# SPDX-License-Identifier: MIT
"""What a screen reader is told: every picture and bar has a name, and the texts come in reading order."""

from conftest import FAST, SLOW, VERSION


def check(screen, *texts):
    """Fails unless all that can be seen has a name and the texts are those, in the order in which they are read."""
    pictures_and_bars = screen.root.pictures + screen.root.bars
    nameless = [node.path for node in pictures_and_bars if not node.name.strip()]
    assert not nameless, f"{len(nameless)} of {len(pictures_and_bars)} have no name:\n{screen.root.dump()}"
    assert screen.texts == list(texts)
    for page in screen.pages:
        tops = [node.box[1] for node in page.all() if node.role == "label" and node.name]
        assert tops == sorted(tops), "a page is read from top to bottom"
    corners = [page.box[1::-1] for page in screen.pages]
    assert corners == sorted(corners), "the pages are read row by row"


def test_update(bench, start):
    bench.add("Pebble", serial="TV1", firmware="1.00", rate=SLOW)
    newest, _ = bench.newest("Pebble")
    program = start()
    check(program.see_models("Pebble"), "Tarvo Pebble", f"(firmware version: 1.00 => {newest} )",
          "Firmware: Update required!", "Configuration: Up to date.", VERSION)
    program.press("Update Firmware")
    check(program.see_confirmation("Pebble"), "Tarvo Pebble",
          f'You are about to update your Tarvo Pebble firmware. ("1.00" => "{newest}")',
          'To update your device, press "Update" button. To update later, press "Cancel" button.', VERSION)
    program.press("Update Firmware")
    check(program.see_progress("Pebble"), "Tarvo Pebble", "DO NOT disconnect the device during the firmware update.",
          "Doing so may cause irreparable harm to your data and/or disk.", VERSION)
    done = "Your Tarvo Pebble has been successfully updated."
    check(program.see_restart("Pebble"), done,
          "Please unplug and replug your Tarvo Pebble hard drive to power off and power on the device.", VERSION)
    bench.run("replug", "TV1")
    check(program.see_success("Pebble"), done, "Firmware: Up to date.", "Configuration: Up to date.", VERSION)


def test_failure(bench, start):
    bench.add("Pebble", serial="TV1", firmware="1.00", rate=FAST)
    bench.fault("TV1", "verify-error")
    program = start()
    program.begin_update("Pebble")
    check(program.see_failure("Pebble"), "Tarvo Pebble", "Error while updating your Tarvo Pebble device. Please retry.",
          VERSION)


def test_unknown_and_unsupported(bench, start):
    bench.add("Pebble", serial="TV1")
    bench.fault("TV1", "report", "firmwareStatus=3")
    bench.add("Harbour Duo", serial="TV2")
    bench.fault("TV2", "report", "chipsetType=0")
    program = start()
    check(program.see_models("Pebble", "Harbour Duo"), "Tarvo Pebble", "Unknown firmware version !",
          "Firmware: Unknown status!", "Configuration: Up to date.", "Tarvo Harbour Duo", "Device not supported !",
          VERSION)


def test_companion_warning(bench, start):
    bench.run("companion", "install")
    screen = start().see_warning()
    assert not [node for node in screen.root.pictures if not node.name.strip()], screen.root.dump()


def test_drives_of_the_same_model(bench, start):
    """Their pages and buttons can be told apart: each names the model and the serial number."""
    serials = ["TV1", "TV2", "TV3", "TV4"]
    for serial in serials:
        bench.add("Pebble", serial=serial, firmware="1.00")
    screen = start().see_models(*["Pebble"] * 4)
    for page, serial in zip(screen.pages, serials):
        assert "Pebble" in page.name and serial in page.name
        for button in page.buttons:
            assert "Pebble" in button.description and serial in button.description
