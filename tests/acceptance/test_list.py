# SPDX-License-Identifier: MIT
"""The list of drives: what it shows at the start, and how it follows what is plugged in and pulled out."""

import os

import pytest
from conftest import VERSION

MODELS = ["Pebble", "Lamina", "Skiff", "Harbour", "Bollard", "Breakwater", "Pebble Mini", "Harbour Duo",
          "Pebble Triple", "Harbour FireWire"]


def add_drives(bench, count):
    """Adds that many different drives, in the order in which they are listed."""
    for number, model in enumerate(MODELS[:count]):
        bench.add(model, serial=f"TV{number:04}", firmware="1.00")
    return MODELS[:count]


def rows(screen):
    """The models row by row, as they are on screen."""
    lines = {}
    for page in screen.pages:
        lines.setdefault(page.box[1], []).append((page.box[0], page.texts[0].removeprefix("Tarvo ")))
    return [[model for _, model in sorted(lines[top])] for top in sorted(lines)]


def test_no_drive(bench, start):
    program = start()
    screen = program.see_no_drive()
    assert screen.window.size == (850, 300)
    assert screen.texts[-1] == VERSION
    assert screen.buttons == []


@pytest.mark.parametrize(
    "count, height",
    [(1, 320), (3, 320), (4, 520), (6, 520), (7, 700), (10, 700)],
)
def test_drives_stand_in_rows_of_three(bench, start, count, height):
    models = add_drives(bench, count)
    program = start()
    screen = program.see_models(*models)
    assert rows(screen) == [models[i : i + 3] for i in range(0, count, 3)]
    assert screen.window.name == "Tarvo Firmware Updater"
    assert screen.window.size == (850, height)
    assert screen.texts[-1] == VERSION


def test_scrolling_to_the_last_drive(bench, desktop, start):
    models = add_drives(bench, 10)
    program = start()
    screen = program.see_models(*models)
    left, top, right, bottom = screen.window.box

    def last_button_is_seen(screen):
        page = screen.page(models[-1])
        return page and page.buttons and page.buttons[0].box[3] < bottom

    assert not last_button_is_seen(screen)
    desktop.use_mouse((left + right) // 2, (top + bottom) // 2, "abs")
    for _ in range(20):
        desktop.use_mouse((left + right) // 2, (top + bottom) // 2, "b5c")
    program.wait_for(last_button_is_seen, "the last drive's button within the window")
    program.press("Update Firmware", models[-1])
    program.see_confirmation(models[-1])


def test_what_a_page_says(bench, start):
    bench.init("--force")
    program = start()
    screen = program.see_models("Pebble", "Bollard USB3", "Lamina Slim", "Harbour (FireWire 800)", "Skiff",
                                "Harbour Duo")
    assert screen.page("Pebble").texts == [
        "Tarvo Pebble",
        "(firmware version: 2.07 => 2.14 )",
        "Firmware: Update required!",
        "Configuration: Update required!",
    ]
    assert screen.page("Pebble").button_names == ["Update Firmware and Configuration"]
    assert screen.page("Bollard USB3").texts[2:] == ["Firmware: Update required!", "Configuration: Up to date."]
    assert screen.page("Bollard USB3").button_names == ["Update Firmware"]
    assert screen.page("Lamina Slim").texts[2:] == ["Firmware: Up to date.", "Configuration: Update required!"]
    assert screen.page("Lamina Slim").button_names == ["Update Configuration"]
    assert screen.page("Harbour (FireWire 800)").button_names == ["Update Firmware and Configuration"]
    assert screen.page("Skiff").texts == [
        "Tarvo Skiff",
        "(firmware version: 2.11 )",
        "Firmware: Up to date.",
        "Configuration: Up to date.",
    ]
    assert screen.page("Skiff").button_names == ["Close"]
    assert screen.page("Harbour Duo").texts == ["Tarvo Harbour Duo", "Device not supported !"]
    assert screen.page("Harbour Duo").button_names == []


def test_plugging_in_and_pulling_out(bench, start):
    pebble = bench.add("Pebble", serial="TV1")
    program = start()
    program.see_models("Pebble")
    lamina = bench.add("Lamina", serial="TV2")
    program.see_models("Pebble", "Lamina")
    bench.unplug(pebble)
    program.see_models("Lamina")
    bench.unplug(lamina)
    program.see_no_drive()
    bench.plug(pebble)
    program.see_models("Pebble")


def test_the_same_list_again_rebuilds_nothing(bench, start):
    pebble = bench.add("Pebble", serial="TV1")
    bench.add("Lamina", serial="TV2")
    program = start()
    before = program.see_models("Pebble", "Lamina")
    bench.wait_for_query(pebble)
    bench.wait_for_query(pebble)
    after = program.look()
    assert [page.path for page in after.pages] == [page.path for page in before.pages]

    # A change of one drive rebuilds all pages.
    bench.fault(pebble, "report", "firmwareStatus=1")
    changed = program.see("Firmware: Update required!")
    assert not {page.path for page in changed.pages} & {page.path for page in before.pages}


def test_a_status_that_settles_late(bench, start):
    bench.add("Pebble", serial="TV1")
    program = start()
    program.see_models("Pebble")
    lamina = bench.add("Lamina", serial="TV2", plugged=False)
    bench.fault(lamina, "settle-queries", 4)
    bench.plug(lamina)
    screen = program.see_models("Pebble", "Lamina")
    assert bench.drive(lamina)["queries"] >= 4, "the list was shown before every status was known"
    assert "Firmware: Unknown status!" not in screen.texts


@pytest.mark.parametrize("file", ["a pipe", "/dev/zero"])
def test_a_model_name_that_names_a_file(bench, directory, start, file):
    """A model name may be markup, a picture for example; the file is not read."""
    if file == "a pipe":
        file = directory / "pipe"
        os.mkfifo(file)
    bench.add("Pebble", serial="TV1", firmware="1.00")
    bench.fault("TV1", "report", f'modelName=<img src="{file}">')
    program = start()
    program.press("Update Firmware")
    program.see("Cancel")
    assert program.resident_memory() < 200e6
