# SPDX-License-Identifier: MIT
"""What the command says of the attached drives."""

import subprocess
import time

import pytest

OUTDATED = {"firmware": "1.00", "configuration": "1"}


@pytest.mark.parametrize(
    "model, options, reports, lines",
    [
        ("Pebble", OUTDATED, [],
         ["(firmware version: 1.00 => 2.14 )", "Firmware: Update required!", "Configuration: Update required!",
          "An update writes: firmware and configuration", "Restart: unplug"]),
        ("Bollard", {"firmware": "1.00"}, [],
         ["(firmware version: 1.00 => 2.16 )", "Firmware: Update required!", "Configuration: Up to date.",
          "An update writes: firmware", "Restart: power-button"]),
        ("Harbour FireWire", {"configuration": "1"}, [],
         ["(firmware version: 1.31 )", "Firmware: Up to date.", "Configuration: Update required!",
          "An update writes: configuration", "Restart: not-needed"]),
        ("Pebble", {}, [],
         ["(firmware version: 2.14 )", "Firmware: Up to date.", "Configuration: Up to date.",
          "Restart: unplug"]),
        ("Pebble", {}, ["firmwareStatus=3"],
         ["Unknown firmware version !", "Firmware: Unknown status!", "Configuration: Up to date.",
          "Restart: unplug"]),
        ("Pebble", {}, ["configurationStatus=-1"],
         ["(firmware version: 2.14 )", "Firmware: Up to date.", "Configuration: Unknown status!",
          "Restart: unplug"]),
        ("Pebble", OUTDATED, ["chipsetType=0"],
         ["Device not supported !", "Restart: not-known"]),
        ("Pebble", OUTDATED, ["productId=1"],
         ["(firmware version: 1.00 => 2.14 )", "Firmware: Update required!", "Configuration: Update required!",
          "An update writes: firmware and configuration", "Restart: not-known"]),
    ],
)
def test_drive(bench, command, model, options, reports, lines):
    bench.add(model, serial="TV1", **options)
    for report in reports:
        bench.fault("TV1", "report", report)
    head, *rest = command.run("list").output.splitlines()
    assert head == f"Tarvo {model}, serial number TV1"
    assert [line.strip() for line in rest] == lines
    (drive,) = command.json("list", "--json")["drives"]
    parts = " and ".join(drive["outdated"])
    assert [f"An update writes: {parts}"] * bool(parts) + [f"Restart: {drive['restart']}"] == lines[3 if "supp" not in lines[0] else 1:]


def test_document(bench, command):
    bench.add("Pebble", serial="TV1", **OUTDATED)
    bench.add("Harbour FireWire", serial="TV2")
    bench.fault("TV2", "report", "configurationStatus=7")
    document = command.json("list", "--json")
    assert document["schemaVersion"] == 1
    assert document["drives"][0] == {
        "serialNumber": "TV1", "modelName": "Pebble", "vendorId": 0x0E7A, "productId": 0x1A20, "chipset": 1,
        "firmwareVersion": "1.00", "newFirmwareVersion": "2.14", "firmwareFileName": "pebble.tfw",
        "firmwareStatus": "update-required", "configurationStatus": "update-required",
        "supported": True, "outdated": ["firmware", "configuration"], "restart": "unplug",
    }
    statuses = [document["drives"][1][key] for key in ("firmwareStatus", "configurationStatus")]
    assert statuses == ["up-to-date", "unknown"]


def test_no_drive(command):
    assert command.run("list").output == "No drive is attached.\n"
    assert command.json("list", "--json")["drives"] == []


def test_statuses_settle(bench, command):
    bench.add("Pebble", serial="TV1", plugged=False)
    bench.fault("TV1", "settle-queries", 2)
    bench.plug("TV1")
    assert "Firmware: Up to date." in command.run("list").output


def test_timeout(bench, command):
    bench.add("Pebble", serial="TV1")
    bench.add("Lamina", serial="TV2")
    bench.fault("TV1", "never-settles")
    began = time.monotonic()
    listed = command.run("list", "--timeout", "1", status=1)
    assert 1 <= time.monotonic() - began < 5
    assert listed.output.startswith("Tarvo Lamina, serial number TV2\n")
    assert listed.errors == "tarvo-firmware: TV1: its status is not yet determined\n"
    unsettled, _ = command.json("list", "--json", "--timeout", "0", status=1)["drives"]
    assert (unsettled["serialNumber"], unsettled["firmwareStatus"]) == ("TV1", "not-determined")


TEXTS = {"modelName": r"\x1b[31m\x9b2J\x0d<b>%1</b>\x5c\xff", "serialNumber": r"S\x07\x0a\x84\x5c",
         "firmwareVersion": r"\x1b]0;1\x07", "newFirmwareVersion": r"\x08<i>2", "firmwareFileName": r"\x7f.tfw"}


@pytest.mark.parametrize("arguments", [["list"], ["list", "--json"], ["report", "--serials"],
                                       ["update", "--all", "--dry-run"], ["update", "--all", "--yes"],
                                       ["update", "--all", "--yes", "--json"]], ids=" ".join)
def test_bytes_of_strangers(bench, command, arguments):
    bench.add("Pebble", serial="TV1", **OUTDATED)
    for field, text in TEXTS.items():
        bench.fault("TV1", "report", f"{field}={text}")
    process = command.start(*arguments)
    output, errors = process.communicate()
    for character in output + errors.replace(command.bench.directory, ""):
        assert character.isprintable() or character == "\n", repr(output + errors)
    # The serial number as it is printed is one that update takes.
    planned = command.run("update", r"S\x07\x0a\x84\x5c", "--dry-run").output
    assert r"Tarvo \x1b[31m\x9b2J\x0d<b>%1</b>\x5cÿ firmware and" in planned
    assert r'("\x1b]0;1\x07" => "\x08<i>2")' in planned


def test_no_window_library(command):
    libraries = subprocess.run(["ldd", command.program], capture_output=True, text=True, check=True).stdout
    assert "Core" in libraries and "Gui" not in libraries
