# SPDX-License-Identifier: MIT
"""A complete update by the mouse alone, in the program's window and in the panel of the drive bench beside it."""

from conftest import FAST


def click(desktop, program, name):
    """Clicks the button of that name where it is on the display, once it can be pressed."""

    def found(screen):
        return next((node for node in screen.root.buttons if node.name == name and node.enabled), None)

    left, top, right, bottom = found(program.wait_for(found, f"the button {name!r}")).box
    desktop.use_mouse((left + right) // 2, (top + bottom) // 2, "b1c")


def test_update_by_the_mouse_alone(bench, desktop, bin_dir, start):
    serial = bench.add("Pebble", serial="TV1", firmware="1.00", rate=FAST)
    bench.add("Skiff", serial="TV2")
    panel = start("-geometry", "+0+560", command=bin_dir / "drive-bench-panel")
    panel.see("Pebble", "Skiff")
    program = start("-geometry", "+0+0")
    program.see_models("Pebble", "Skiff")

    click(desktop, program, "Update Firmware")
    program.see_confirmation("Pebble")
    click(desktop, program, "Update Firmware")
    program.see_restart("Pebble")
    click(desktop, panel, "Unplug TV1")
    panel.see("Unplugged")
    bench.wait_for_query("TV2")  # by then the program has missed the drive
    click(desktop, panel, "Plug TV1")
    program.see_success("Pebble")
    assert bench.flash(serial) == bench.newest("Pebble")
    click(desktop, program, "Finish")
    assert program.wait_for_end() == 0
