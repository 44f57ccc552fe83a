# SPDX-License-Identifier: MIT
"""Updates: what is written, what is said, and the exit status."""

import json
import os
import shutil
import signal

import pytest
from command import is_whole, wait_for_writing
from conftest import OLD, SLOW
from waiting import wait_until

COMPANION = ("tarvo-firmware: Tarvo Quaydesk is installed on this computer. "
             "Please Uninstall Tarvo Quaydesk before using Tarvo Firmware Updater.\n")
UNPLUG = "Please unplug and replug your Tarvo Pebble hard drive to power off and power on the device."


def test_drives_to_restart(bench, command, outdated):
    outdated("Pebble", "Bollard")
    lines = command.run("update", "--all", "--yes", status=3).output.splitlines()
    for line in (
        'TV1: You are about to update your Tarvo Pebble firmware and configuration. ("1.00" => "2.14")',
        "TV1: is being written", "TV1: written in 0 s", f"TV1: {UNPLUG}",
        "TV2: Please use the power button on your Tarvo Bollard hard drive to power off and power on the device.",
    ):
        assert line in lines
    assert is_whole(bench, "TV1", "2.14") and is_whole(bench, "TV2", "2.16")


def test_drive_that_needs_no_restart(bench, command, outdated):
    outdated("Harbour FireWire")
    output = command.run("update", "TV1", "--yes").output
    assert "TV1: Your Tarvo Harbour FireWire has been successfully updated.\n" in output
    assert "restart" not in output
    assert is_whole(bench, "TV1", "1.31")


def test_only_the_named_drives(bench, command, outdated):
    outdated("Pebble", "Lamina", "Skiff")
    command.run("update", "TV3", "TV1", "TV1", "--yes", status=3)
    assert [bench.drive(serial)["flashes"] for serial in ("TV1", "TV2", "TV3")] == [1, 0, 1]


def test_up_to_date(bench, command):
    bench.add("Pebble", serial="TV1")
    for which in ("TV1", "--all"):
        output = command.run("update", which, "--yes").output
        assert output == "TV1: Firmware: Up to date. Configuration: Up to date.\n"
    assert bench.drive("TV1")["flashes"] == 0


def test_unknown_status(bench, command):
    bench.add("Pebble", serial="TV1")
    bench.fault("TV1", "report", "firmwareStatus=3")
    output = command.run("update", "--all", "--yes").output
    assert output == ("TV1: Firmware: Unknown status! Configuration: Up to date. "
                      "It is left alone; give its serial number to update it.\n")
    assert bench.drive("TV1")["flashes"] == 0
    command.run("update", "TV1", "--yes", status=3)
    assert bench.drive("TV1")["flashes"] == 1


def test_undetermined_status(bench, command, outdated):
    outdated("Harbour FireWire", "Pebble")
    bench.fault("TV2", "never-settles")
    output = command.run("update", "--all", "--yes", "--timeout", "0", status=1).output
    assert "TV2: its status is not yet determined\n" in output
    assert [bench.drive(serial)["flashes"] for serial in ("TV1", "TV2")] == [1, 0]


@pytest.mark.parametrize("serial, said", [("TV9", "there is no drive TV9"), ("TV2", "TV2 cannot be updated")])
def test_drive_that_cannot_be_updated(bench, command, outdated, serial, said):
    outdated("Pebble", "Pebble")
    bench.fault("TV2", "report", "chipsetType=0")
    assert command.run("update", "TV1", serial, "--yes", status=2).errors == (
        f"tarvo-firmware: {said}; nothing is written\n")
    assert bench.drive("TV1")["flashes"] == 0
    # Among all drives it is only named.
    assert "TV2: Device not supported !\n" in command.run("update", "--all", "--yes", status=3).output
    assert [bench.drive(serial)["flashes"] for serial in ("TV1", "TV2")] == [1, 0]


@pytest.mark.parametrize("fault, reason", [
    (("flash-error", 9000), "the update of TV2 failed: "),
    (("report", "chipsetType=4"), None),
    (("unmount-returns", 0), "the update of TV2 failed: "),
])
def test_failure(bench, command, outdated, fault, reason):
    outdated("Pebble", "Lamina", "Harbour FireWire")
    bench.fault("TV2", *fault)
    done = command.run("update", "--all", "--yes", status=1)
    assert "TV2: Error while updating your Tarvo Lamina device. Please retry.\n" in done.output
    assert "TV2: Please" not in done.output and f"TV1: {UNPLUG}\n" in done.output
    assert is_whole(bench, "TV1", "2.14") and is_whole(bench, "TV3", "1.31")
    # What the platform says reaches standard error as it is.
    assert reason is None or any(line.startswith(reason) for line in done.errors.splitlines())


@pytest.mark.parametrize("name", ["../pebble.tfw", "/pebble.tfw", r"pebble.tfw\x00x"])
def test_image_name_that_is_no_file_name(bench, command, outdated, name):
    outdated("Pebble", "Harbour FireWire")
    bench.fault("TV1", "report", f"firmwareFileName={name}")
    output = command.run("update", "--all", "--yes", status=1).output
    assert "TV1: is not begun: the name of its image is no file name\n" in output
    assert [bench.drive(serial)["flashes"] for serial in ("TV1", "TV2")] == [0, 1]


def test_events(bench, command, outdated):
    outdated("Pebble", "Lamina", "Harbour FireWire", "Skiff")
    bench.fault("TV2", "flash-error", 9000)
    bench.fault("TV4", "report", "chipsetType=0")
    events = command.events("--all", "--yes", status=1)
    assert {event["schemaVersion"] for event in events} == {1}
    told = [(event["event"], event.get("serialNumber")) for event in events]
    assert told == [("planned", "TV1"), ("planned", "TV2"), ("planned", "TV3"), ("planned", "TV4"),
                    ("writing", "TV1"), ("written", "TV1"), ("writing", "TV2"), ("failed", "TV2"),
                    ("writing", "TV3"), ("written", "TV3"), ("waiting", "TV1"), ("done", None)]
    assert [event["write"] for event in events[:4]] == [True, True, True, False]
    assert events[0]["outdated"] == ["firmware", "configuration"]
    assert 0 < events[5]["seconds"] < 10 and events[7]["begun"] is True
    assert events[10]["instruction"] == UNPLUG
    assert events[-1]["exitStatus"] == 1


def test_dry_run(bench, command, outdated):
    outdated("Pebble")
    assert "You are about to update" in command.run("update", "--all", "--dry-run").output
    assert [event["event"] for event in command.events("--all", "--dry-run")] == ["planned", "done"]
    assert bench.drive("TV1")["flashes"] == 0


def test_companion_installed(bench, command, outdated):
    outdated("Pebble")
    bench.run("companion", "install")
    refused = command.run("update", "--all", "--yes", status=4)
    assert (refused.output, refused.errors) == ("", COMPANION)
    assert command.events("--all", "--yes", status=4) == [{"schemaVersion": 1, "event": "done", "exitStatus": 4}]
    assert bench.drive("TV1")["flashes"] == 0
    assert os.listdir(command.temporary) == []


def limit_file_size():
    import resource
    signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
    resource.setrlimit(resource.RLIMIT_FSIZE, (4096, 4096))


@pytest.mark.parametrize("options", [{"environment": {"TMPDIR": "/proc"}}, {"prepare": limit_file_size}],
                         ids=["no directory", "no room"])
def test_companion_check_that_cannot_write(bench, command, outdated, options):
    outdated("Pebble")
    bench.run("companion", "install")
    refused = command.run("update", "--all", "--yes", status=1, **options)
    assert refused.errors.startswith("tarvo-firmware: whether Tarvo Quaydesk is installed cannot be found out")
    assert bench.drive("TV1")["flashes"] == 0
    assert os.listdir(command.temporary) == []


def test_private_directory(bench, command, outdated, tmp_path):
    # Nothing that lies in the working directory is read or removed, and the command comes back to it.
    (tmp_path / "temp.txt").write_text("com.tarvo.quaydesk.service.plist\n")
    outdated("Pebble", rate=SLOW)
    process = command.start("update", "--all", "--yes", cwd=tmp_path, environment={"TARVO_BENCH": "bench"})
    wait_for_writing(bench, "TV1")
    assert os.readlink(f"/proc/{process.pid}/cwd") == str(tmp_path)
    assert process.wait(20) == 3
    assert (tmp_path / "temp.txt").exists() and os.listdir(command.temporary) == []


def test_another_start(bench, command, outdated, tmp_path, bin_dir):
    """The images are those beside the executable, however it was started."""
    serials = outdated("Harbour FireWire", "Harbour FireWire", "Harbour FireWire")
    (tmp_path / "link").symlink_to(command.program)
    ways = [{"program": tmp_path / "link"}, {"program": "./tarvo-firmware", "cwd": bin_dir},
            {"program": "tarvo-firmware", "environment": {"PATH": f"{bin_dir}:{os.environ['PATH']}"}, "cwd": "/"}]
    for serial, way in zip(serials, ways):
        command.run("update", serial, "--yes", **way)
        assert is_whole(bench, serial, "1.31")


def test_wait_until_restarted(bench, command, outdated):
    outdated("Pebble", "Lamina")
    process = command.start("update", "--all", "--yes", "--wait", "--json")
    wait_until(lambda: bench.drive("TV2")["flashes"] == 1 and not bench.drive("TV2")["incomplete"], "the flashes")
    bench.fault("TV2", "report", "firmwareVersion=1.00")
    for serial in ("TV1", "TV2"):
        bench.run("replug", serial, "--for", "2")
    events = [json.loads(line) for line in process.communicate(timeout=30)[0].splitlines()]
    restarted = {event["serialNumber"]: event["asOffered"] for event in events if event["event"] == "restarted"}
    assert restarted == {"TV1": True, "TV2": False}
    assert process.returncode == 1


def test_wait_that_ends(bench, command, outdated):
    outdated("Pebble")
    assert command.events("TV1", "--yes", "--wait=1", status=3)[-2]["event"] == "waiting"
    # Only what goes and comes back counts.
    assert bench.drive("TV1")["runningFirmware"] == OLD


def test_restarted(bench, command, outdated):
    outdated("Pebble")
    process = command.start("update", "TV1", "--yes", "--wait=20")
    wait_until(lambda: bench.drive("TV1")["flashes"] == 1 and not bench.drive("TV1")["incomplete"], "the flash")
    bench.run("replug", "TV1", "--for", "2")
    output, _ = process.communicate(timeout=30)
    assert output.endswith("TV1: Your Tarvo Pebble has been successfully updated.\n")
    assert process.returncode == 0


def test_two_commands(bench, command, outdated):
    outdated("Pebble", "Lamina", rate=SLOW)
    first = command.start("update", "TV1", "TV2", "--yes")
    wait_for_writing(bench, "TV1")
    second = command.run("update", "TV2", "--yes", status=1)
    assert second.errors == "tarvo-firmware: TV2: another command is updating it; nothing is written\n"
    assert first.wait() == 3
    assert [bench.drive(serial)["flashes"] for serial in ("TV1", "TV2")] == [1, 1]
    assert os.listdir(command.temporary) == []


def test_after_a_killed_command(bench, command, outdated):
    outdated("Pebble", rate=SLOW)
    first = command.start("update", "TV1", "--yes")
    wait_for_writing(bench, "TV1")
    first.kill()
    first.communicate()
    bench.wait_for_no_writer("TV1")
    command.run("update", "TV1", "--yes", status=3)
    assert is_whole(bench, "TV1", "2.14")


@pytest.mark.parametrize("arguments", [
    [], ["nonsense"], ["list", "TV1"], ["report", "TV1"], ["list", "--nonsense"], ["list", "--timeout", ""],
    ["list", "--timeout", "-1"], ["list", "--timeout", "86401"], ["list", "--timeout", "1.5"], ["update"],
    ["update", "--all", "TV1"], ["update", "--all"], ["update", "TV1", "--json"], ["update", "TV1", "--wait=soon"],
], ids=" ".join)
def test_wrong_use(command, arguments):
    refused = command.run(*arguments, status=2)
    (line,) = refused.errors.splitlines()
    assert line.startswith("tarvo-firmware: ") and refused.output == ""
    shutil.rmtree(command.temporary)
