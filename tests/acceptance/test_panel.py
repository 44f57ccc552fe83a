# SPDX-License-Identifier: MIT
"""The panel of the drive bench beside the program's window."""

import signal

from conftest import FAST
from test_mouse import click


def test_update_restarted_by_one_press(bench, desktop, bin_dir, start):
    serial = bench.add("Pebble", serial="TV1", firmware="1.00", rate=FAST)
    bench.add("Skiff", serial="TV2")
    program = start("-geometry", "+0+28")
    panel = start(command=bin_dir / "drive-bench-panel")
    left = min(button.box[0] for button in panel.see("Pebble", "Skiff").root.buttons)
    right = max(button.box[2] for button in program.see_models("Pebble", "Skiff").root.buttons)
    assert left > right  # the panel stands beside the program
    click(desktop, program, "Update Firmware")
    program.see_confirmation("Pebble")
    click(desktop, program, "Update Firmware")
    program.see_restart("Pebble")
    click(desktop, panel, "Replug TV1")
    program.see_success("Pebble")
    assert bench.flash(serial) == bench.newest("Pebble")


def test_drive_comes_back_when_the_panel_is_terminated(bench, desktop, bin_dir, start):
    bench.add("Pebble", serial="TV1")
    panel = start(command=bin_dir / "drive-bench-panel")
    panel.see("Pebble")
    click(desktop, panel, "Replug TV1")
    panel.wait_for(lambda screen: any("comes back" in text for text in screen.texts), "the drive unplugged")
    panel.process.send_signal(signal.SIGTERM)
    assert panel.wait_for_end() == 0
    assert bench.drive("TV1")["plugged"]
