# SPDX-License-Identifier: MIT
"""The document for a support request."""

import hashlib
import shutil

import pytest


def test_report(bench, command, outdated, bin_dir):
    outdated("Pebble")
    report = command.json("report")
    image = (bin_dir / "pebble.tfw").read_bytes()
    assert report["schemaVersion"] == 1 and report["version"] in command.run("--version").output
    assert report["companionInstalled"] is False
    assert {"operatingSystem", "kernel", "architecture", "qt"} < set(report)
    (drive,) = report["drives"]
    assert (drive["modelName"], drive["firmwareStatus"]) == ("Pebble", "update-required")
    assert drive["image"] == {"exists": True, "readable": True, "size": len(image),
                              "sha256": hashlib.sha256(image).hexdigest()}


def test_serial_numbers(command, outdated):
    outdated("Pebble")
    assert "TV1" not in command.run("report").output
    assert command.json("report", "--serials")["drives"][0]["serialNumber"] == "TV1"


def test_companion(bench, command):
    bench.run("companion", "install")
    assert command.json("report")["companionInstalled"] is True
    assert command.json("report", environment={"TMPDIR": "/proc"})["companionInstalled"] is None


@pytest.mark.parametrize("name, image", [
    ("nothing.tfw", {"exists": False, "readable": False}),
    ("host-tools", {"exists": False, "readable": False}),
    ("../bin/pebble.tfw", {"exists": False, "readable": False}),
    ("empty.tfw", {"exists": True, "readable": True, "size": 0, "sha256": hashlib.sha256(b"").hexdigest()}),
])
def test_image(bench, command, outdated, bin_dir, tmp_path, name, image):
    place = tmp_path / "bin"
    (place / "host-tools").mkdir(parents=True)
    shutil.copy(command.program, place)
    (place / "empty.tfw").touch()
    (place / "pebble.tfw").touch()
    outdated("Pebble")
    bench.fault("TV1", "report", f"firmwareFileName={name}")
    (drive,) = command.json("report", program=place / "tarvo-firmware")["drives"]
    assert drive["image"] == image
