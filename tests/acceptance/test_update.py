# SPDX-License-Identifier: MIT
"""A complete update of each kind of bridge, from the list to the success page and the flash that was written."""

import pytest
from conftest import FAST

UNPLUG = "Please unplug and replug your Tarvo {} hard drive to power off and power on the device."
POWER_BUTTON = "Please use the power button on your Tarvo {} hard drive to power off and power on the device."


@pytest.mark.parametrize(
    "model, instruction, restart",
    [
        pytest.param("Pebble", UNPLUG, "replug", id="Asm1051"),
        pytest.param("Lamina Slim", UNPLUG, "replug", id="Asm1051E"),
        pytest.param("Harbour", UNPLUG, "replug", id="Asm1053"),
        pytest.param("Bollard USB3", POWER_BUTTON, "power-cycle", id="Asm1053-power-button"),
    ],
)
def test_usb_bridge(bench, start, model, instruction, restart):
    serial = bench.add(model, serial="TV1", firmware="1.00", configuration="1", rate=FAST)
    bench.add("Skiff", serial="TV2")
    newest = bench.newest(model)
    program = start()
    program.see_models(model, "Skiff")

    program.press("Update Firmware and Configuration", model)
    screen = program.see_confirmation(model)
    assert screen.page(model).texts == [
        f"Tarvo {model}",
        f'You are about to update your Tarvo {model} firmware and configuration. ("1.00" => "{newest[0]}")',
        'To update your device, press "Update" button. To update later, press "Cancel" button.',
    ]
    assert screen.page(model).button_names == ["Update Firmware", "Cancel"]

    program.press("Update Firmware")
    screen = program.see_restart(model)
    assert screen.page(model).texts == [
        f"Your Tarvo {model} has been successfully updated.",
        instruction.format(model),
    ]
    assert screen.buttons == []
    assert bench.flash(serial) == newest
    assert bench.drive(serial)["runningFirmware"] == "1.00"
    assert not bench.drive(serial)["mounted"], "the volumes are unmounted after a flash"

    bench.run(restart, serial)
    screen = program.see_success(model)
    assert screen.page(model).texts == [
        f"Your Tarvo {model} has been successfully updated.",
        "Firmware: Up to date.",
        "Configuration: Up to date.",
    ]
    assert bench.drive(serial)["runningFirmware"] == newest[0]

    program.press("Finish")
    assert program.wait_for_end() == 0
    assert bench.flash(serial) == newest


@pytest.mark.parametrize(
    "model",
    [
        pytest.param("Pebble Triple", id="OxSemiFireWire934"),
        pytest.param("Harbour (FireWire 800)", id="OxSemiFireWire944"),
    ],
)
def test_firewire_bridge(bench, start, model):
    serial = bench.add(model, serial="TV1", firmware="1.00", configuration="1", rate=FAST)
    newest = bench.newest(model)
    program = start()
    program.begin_update(model)
    program.see_success(model)
    assert bench.flash(serial) == newest
    assert bench.drive(serial)["runningFirmware"] == newest[0]
    assert bench.drive(serial)["mounted"], "the volumes of a FireWire drive stay mounted"

    # The next list shows the drive as it is now on the success page; the one after that shows all drives.
    bench.wait_for_query(serial)
    program.see("Firmware: Up to date.", "Configuration: Up to date.", "Finish")
    bench.add("Skiff", serial="TV2")
    program.see_models(model, "Skiff")


def test_one_update_after_another(bench, start):
    first = bench.add("Pebble", serial="TV1", firmware="1.00", rate=FAST)
    second = bench.add("Lamina", serial="TV2", firmware="1.00", rate=FAST)
    program = start()
    program.begin_update("Pebble")
    program.see_restart("Pebble")
    bench.run("replug", first)
    program.see_success("Pebble")
    # One change rebuilds the success page once more, the next shows all drives.
    bench.unplug(second)
    bench.wait_for_query(first)
    program.see_success("Pebble")
    bench.plug(second)
    program.see_models("Pebble", "Lamina")

    program.begin_update("Lamina")
    program.see_restart("Lamina")
    bench.run("replug", second)
    program.see_success("Lamina")
    assert bench.flash(first) == bench.newest("Pebble")
    assert bench.flash(second) == bench.newest("Lamina")


def test_only_the_configuration(bench, start):
    serial = bench.add("Lamina", serial="TV1", configuration="1", rate=FAST)
    program = start()
    program.press("Update Configuration")
    screen = program.see_confirmation("Lamina")
    assert screen.page("Lamina").texts[1] == "You are about to update your Tarvo Lamina configuration."
    program.press("Update Configuration")
    program.see_restart("Lamina")
    assert bench.flash(serial) == bench.newest("Lamina")


def test_two_programs_on_one_bench(bench, start):
    serial = bench.add("Harbour FireWire", serial="TV1", firmware="1.00", rate=FAST)
    bench.add("Skiff", serial="TV2")
    one, other = start(), start()
    one.see_models("Harbour FireWire", "Skiff")
    other.see_models("Harbour FireWire", "Skiff")
    one.begin_update("Harbour FireWire")
    one.see_success("Harbour FireWire")
    screen = other.wait_for(lambda screen: screen.buttons == ["Close", "Close"], "two drives that are up to date")
    assert screen.models == ["Harbour FireWire", "Skiff"]
    assert bench.flash(serial) == bench.newest("Harbour FireWire")
    one.see_settled_success("Harbour FireWire")
    one.press("Finish")
    assert one.wait_for_end() == 0
    other.press("Close", "Skiff")
    assert other.wait_for_end() == 0
