# SPDX-License-Identifier: MIT
"""The installed program and panel, started as a person starts them."""

import configparser
import os
import shlex
import subprocess

import pytest
from conftest import FAST, NAME
from waiting import wait_until

USB, USB_SERIAL = "Pebble", "TV0001PEBBLE"
FIREWIRE, FIREWIRE_SERIAL = "Harbour (FireWire 800)", "TV0004HARBOUR"


def desktop_entry(prefix, name):
    parser = configparser.ConfigParser(interpolation=None)
    parser.optionxform = str
    assert parser.read(prefix / "share/applications" / f"{name}.desktop", encoding="utf-8")
    return parser["Desktop Entry"]


def update(person, program):
    """A whole update of a USB drive, from the list to the end of the program."""
    program.begin_update(USB)
    program.see_restart(USB)
    assert person.bench.flash(USB_SERIAL) == person.bench.newest(USB)
    person.bench.run("replug", USB_SERIAL, "--for", "3")
    program.see_success(USB)
    program.press("Finish")
    assert program.wait_for_end() == 0


def by_name(_):
    return NAME, "/"


def by_path(prefix):
    return f"./{NAME}", prefix / "bin"


def by_its_desktop_entry(prefix):
    (command,) = shlex.split(desktop_entry(prefix, "com.tarvo.firmwareupdater")["Exec"])
    return command, None


@pytest.mark.parametrize("way", [by_name, by_path, by_its_desktop_entry])
def test_update_of_a_usb_drive(prefix, person, start, way):
    person.bench.init("--rate", FAST)
    command, cwd = way(prefix)
    update(person, start(command, cwd=cwd))
    person.wait_for_clean_runtime()


def test_update_through_a_link_in_a_directory_that_cannot_be_written(prefix, person, start):
    person.bench.init("--rate", FAST)
    link = person.home / "updater"
    link.symlink_to(prefix / "bin" / NAME)
    update(person, start(str(link), cwd="/proc"))


def test_update_of_a_firewire_drive(person, start):
    person.bench.init("--rate", FAST)
    program = start()
    program.begin_update(FIREWIRE)
    program.see_settled_success(FIREWIRE)
    assert person.bench.flash(FIREWIRE_SERIAL) == person.bench.newest(FIREWIRE)
    program.press("Finish")
    assert program.wait_for_end() == 0


def test_scratch_files_of_the_person_are_left_alone(person, start):
    person.bench.init("--rate", FAST)
    kept = [directory / "temp.txt" for directory in (person.home, person.current)]
    for file in kept:
        file.write_bytes(b"com.tarvo.quaydesk.service.plist\n")
    update(person, start())
    assert [file.read_bytes() for file in kept] == [b"com.tarvo.quaydesk.service.plist\n"] * 2
    person.wait_for_clean_runtime()


def test_companion_is_found_from_a_directory_that_cannot_be_written(person, start):
    person.bench.init()
    person.bench.run("companion", "install")
    program = start(cwd="/proc")
    program.see_warning()
    program.press("Ok")
    assert program.wait_for_end() == 0
    person.wait_for_clean_runtime()


def test_updater_makes_no_bench(person, start):
    program = start()
    program.see_no_drive()
    program.close_window()
    assert program.wait_for_end() == 0
    assert os.listdir(person.home) == []


@pytest.mark.parametrize("command", [["drive-bench-panel"], ["drive-bench", "panel"]])
def test_first_start_of_the_panel_makes_the_sample_bench(person, start, command):
    panel = start(*command)
    panel.wait_for(lambda screen: screen.windows, "the window of the panel")
    assert {USB_SERIAL, FIREWIRE_SERIAL} <= person.bench.drives().keys()
    panel.stop()

    # The next start finds the bench as it was left.
    person.bench.unplug(USB_SERIAL)
    panel = start(*command)
    panel.wait_for(lambda screen: screen.windows, "the window of the panel")
    assert person.bench.drive(USB_SERIAL)["state"] == "unplugged"


@pytest.mark.parametrize("name", ["com.tarvo.firmwareupdater", "com.tarvo.drivebench"])
def test_desktop_entry(prefix, person, desktop, start, name):
    entry = desktop_entry(prefix, name)
    for size in (16, 22, 24, 32, 48, 64, 128, 256, 512):
        assert (prefix / f"share/icons/hicolor/{size}x{size}/apps/{entry['Icon']}.png").is_file()
    assert (prefix / f"share/icons/hicolor/scalable/apps/{entry['Icon']}.svg").is_file()

    # A task bar finds the entry of a window by its class.
    program = start(entry["Exec"])
    title = program.wait_for(lambda screen: screen.windows, "its window").windows[0].name
    property = subprocess.run(["xprop", "-display", desktop.display, "-name", title, "WM_CLASS"], check=True,
                              capture_output=True, text=True)
    assert f'"{entry["StartupWMClass"]}"' in property.stdout


def test_commands_find_the_bench_of_the_person(prefix, person):
    environment = {**os.environ, **person.environment}

    def run(*arguments):
        return subprocess.run(["drive-bench", *arguments], env=environment, capture_output=True, text=True, cwd="/")

    assert run("list").returncode == 1
    assert run("init").returncode == 0
    assert USB_SERIAL in run("list").stdout
    assert (person.home / ".local/share/tarvo-drive-bench").is_dir()
    # The images lie beside the program, so the drives are known to be outdated.
    assert person.bench.drive(USB_SERIAL)["record"]["firmwareStatus"] == 1


@pytest.mark.parametrize("through_a_link", [False, True])
def test_command_updates_a_drive_of_the_person(prefix, person, through_a_link):
    person.bench.init("--rate", FAST)
    command = "tarvo-firmware"
    if through_a_link:
        command = person.home / "updater"
        command.symlink_to(prefix / "bin/tarvo-firmware")
    done = subprocess.run([command, "update", USB_SERIAL, "--yes"], env={**os.environ, **person.environment}, cwd="/",
                          capture_output=True, text=True)
    assert done.returncode == 3, done.stderr  # written, and to be restarted
    assert person.bench.flash(USB_SERIAL) == person.bench.newest(USB)


def test_bench_from_the_example(prefix, person):
    example = prefix / "share/doc/tarvo-drive-bench/examples/sample-bench.json"
    person.bench.init("--from", example)
    assert {USB_SERIAL, FIREWIRE_SERIAL} <= person.bench.drives().keys()


def test_end_by_closing_the_window(person, start):
    person.bench.init()
    program = start()
    program.see_models(*[drive["model"] for drive in person.bench.drives().values()])
    program.close_window()
    assert program.wait_for_end() == 0
    wait_until(lambda: any("submit" in call for call in person.bench.calls()), "the service is given back")
    person.wait_for_clean_runtime()
