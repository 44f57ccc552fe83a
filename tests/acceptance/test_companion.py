# SPDX-License-Identifier: MIT
"""The companion product, found before the start and during the run."""

from conftest import FAST, VERSION


def submissions(bench):
    return [call for call in bench.calls() if "submit" in call]


def test_installed_before_the_start(bench, start):
    bench.add("Pebble", serial="TV1")
    bench.run("companion", "install")
    program = start()
    screen = program.see_warning()
    assert screen.buttons == ["Ok"]
    assert screen.warning.name == "Tarvo Quaydesk installed and running"
    assert [window for window in screen.windows if window is not screen.warning] == []
    program.press("Ok")
    assert program.wait_for_end() == 0
    assert submissions(bench) == [], "the service is given back only at a normal end"


def test_box_closed_without_its_button(bench, desktop, start):
    bench.run("companion", "install")
    program = start()
    program.wait_for(lambda screen: screen.warning and screen.warning.active, "the warning in front")
    desktop.type_key("F4", "Alt")
    assert program.wait_for_end() == 0
    assert submissions(bench) == []


def test_installed_during_the_run(bench, start):
    bench.add("Pebble", serial="TV1", firmware="1.00", rate=FAST)
    program = start()
    program.see_models("Pebble")
    bench.run("companion", "install")
    bench.wait_for_query("TV1")
    assert program.look().warning is None, "the warning comes with the next refresh"

    bench.add("Skiff", serial="TV2")
    program.see_warning()
    program.press("Ok")
    screen = program.wait_for(lambda screen: not screen.warning, "the box gone")
    assert screen.texts == [VERSION], "the refresh that warned shows no drive"

    # The box comes once; the program goes on as if nothing had been.
    bench.unplug("TV2")
    program.see_models("Pebble")
    program.begin_update("Pebble")
    program.see_restart("Pebble")
    assert program.look().warning is None
    bench.run("replug", "TV1")
    program.see_success("Pebble")
    program.press("Finish")
    assert program.wait_for_end() == 0
    assert len(submissions(bench)) == 1


def test_uninstalled_before_the_next_start(bench, start):
    bench.add("Pebble", serial="TV1")
    bench.run("companion", "install")
    program = start()
    program.see_warning()
    program.press("Ok")
    assert program.wait_for_end() == 0
    bench.run("companion", "uninstall")
    start().see_models("Pebble")
