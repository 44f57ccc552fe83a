# SPDX-License-Identifier: MIT
"""The role of packaging/ansible on machines of every state."""

import json
import re
import threading

import pytest
from conftest import SOURCE
from waiting import wait_until

OUTDATED = ["Pebble", "--firmware", "2.07"]
UNPLUG = "Please unplug and replug your Tarvo Pebble hard drive to power off and power on the device."
UNREACHABLE = "ansible_connection=ssh ansible_host=127.0.0.1 ansible_port=1"


def add_all(fleet):
    """Twelve machines; one does not answer, and one has no command."""
    fleet.add("current", ["Skiff"])
    fleet.add("outdated", OUTDATED)
    fleet.add("firewire", ["Harbour (FireWire 800)", "--firmware", "1.40"])
    fleet.add("failing", OUTDATED).fault("TV-failing-0", "flash-error", "1000")
    fleet.add("several", OUTDATED, ["Skiff"], OUTDATED).fault("TV-several-0", "flash-error", "1000")
    fleet.add("companion", OUTDATED).run("companion", "install")
    fleet.add("empty")
    fleet.add("unknown", ["Skiff"]).fault("TV-unknown-0", "report", "firmwareStatus=7")
    fleet.add("unsupported", ["Harbour Duo", "--chipset", "0"])
    fleet.add("unsettled", ["Skiff"]).fault("TV-unsettled-0", "never-settles")
    fleet.add("unreachable", OUTDATED, variables=UNREACHABLE)
    (fleet.add("bare").database.parents[1] / "tarvo-firmware").unlink()


# Rows that are the same whether it is a plan or not.
REST = {
    "current": ["TV-current-0 Skiff up to date"],
    "companion": ["- - FAILED: tarvo-firmware: Tarvo Quaydesk is installed"],
    "empty": ["- - no drive is attached"],
    "unknown": ["TV-unknown-0 Skiff left alone: its status is unknown"],
    "unsupported": ["TV-unsupported-0 Harbour Duo cannot be updated"],
    "unsettled": ["TV-unsettled-0 Skiff FAILED: its status could not be found out"],
    "unreachable": ["- - FAILED: "],
    "bare": ["- - FAILED: [Errno 2] No such file or directory"],
}
PLAN = {
    "outdated": ["TV-outdated-0 Pebble would be written: 2.07 => 2.14 (firmware)"],
    "firewire": ["TV-firewire-0 Harbour (FireWire 800) would be written: 1.40 => 1.52 (firmware)"],
    "failing": ["TV-failing-0 Pebble would be written: 2.07 => 2.14 (firmware)"],
    "several": ["TV-several-0 Pebble would be written: 2.07 => 2.14 (firmware)", "TV-several-1 Skiff up to date",
                "TV-several-2 Pebble would be written: 2.07 => 2.14 (firmware)"],
}
RESULT = {
    "outdated": [f"TV-outdated-0 Pebble written: 2.07 => 2.14 (firmware); to be restarted. {UNPLUG}"],
    "firewire": ["TV-firewire-0 Harbour (FireWire 800) updated: 1.40 => 1.52 (firmware)"],
    "failing": ["TV-failing-0 Pebble FAILED: writing it did not work",
                "- - the update of TV-failing-0 failed:"],
    "several": ["TV-several-0 Pebble FAILED: writing it did not work", "TV-several-1 Skiff up to date",
                f"TV-several-2 Pebble written: 2.07 => 2.14 (firmware); to be restarted. {UNPLUG}",
                "- - the update of TV-several-0 failed:"],
}
WAITING = {
    "outdated": ["TV-outdated-0 Pebble written before; to be restarted"],
    "firewire": ["TV-firewire-0 Harbour (FireWire 800) up to date"],
}
REFUSED = {"companion", "unsettled", "unreachable", "bare"}


def says(run, expected):
    for machine, rows in expected.items():
        for row in rows:
            assert any(told.startswith(row) for told in run.rows(machine)), (row, run.rows(machine))


def test_twelve_machines(fleet):
    add_all(fleet)
    before = {name: bench.run("export") for name, bench in fleet.benches.items()}
    options = ["-e", "tarvo_firmware_timeout=1", "--forks", "12"]

    plan = fleet.run("--check", *options)
    says(plan, {**REST, **PLAN})
    assert plan.changed == PLAN.keys()
    assert plan.failed == REFUSED
    assert {name: bench.run("export") for name, bench in fleet.benches.items()} == before

    first = fleet.run(*options)
    says(first, {**REST, **RESULT})
    assert first.changed == RESULT.keys()
    assert first.failed == REFUSED | {"failing", "several"}
    assert first.status != 0
    assert first.machines == fleet.benches.keys()
    assert [row.split()[0] for row in first.table] == sorted((row.split()[0] for row in first.table),
                                                             key=list(fleet.benches).index)

    second = fleet.run(*options, "--limit", "all:!failing:!several")
    says(second, {**REST, **WAITING})
    assert second.changed == set()

    fleet.benches["outdated"].run("replug", "TV-outdated-0")
    third = fleet.run(*options, "--limit", "outdated")
    says(third, {"outdated": ["TV-outdated-0 Pebble up to date"]})
    assert (third.changed, third.failed, third.status) == (set(), set(), 0)


def test_batch_that_fails_does_not_stop_the_next(fleet):
    fleet.add("unreachable", variables=UNREACHABLE)
    (fleet.add("bare").database.parents[1] / "tarvo-firmware").unlink()
    fleet.add("failing", OUTDATED).fault("TV-failing-0", "flash-error", "1000")
    fleet.add("next", OUTDATED)
    run = fleet.run("-e", "batch=1")
    assert run.changed == {"failing", "next"}
    assert run.failed == {"unreachable", "bare", "failing"}


def restart_when_written(bench, serial):
    wait_until(lambda: json.loads(bench.run("show", serial, "--json"))["flashFirmware"] == "2.14", "it is written")
    bench.run("replug", serial, "--for", "3")


def test_wait_for_the_restart(fleet):
    bench = fleet.add("one", OUTDATED)
    person = threading.Thread(target=restart_when_written, args=[bench, "TV-one-0"])
    person.start()
    run = fleet.run("-e", "tarvo_firmware_wait=60")
    person.join()
    assert run.rows("one") == ["TV-one-0 Pebble updated: 2.07 => 2.14 (firmware)"]
    assert run.changed == {"one"}


def test_written_again_where_that_is_asked_for(fleet):
    fleet.add("one", OUTDATED)
    assert fleet.run().changed == {"one"}
    assert fleet.run("--check").changed == set()
    assert fleet.run("-e", "tarvo_firmware_again=true").changed == {"one"}
    assert fleet.run().changed == set()


def test_machine_fails_that_cannot_remember_what_is_to_be_restarted(fleet):
    fleet.add("one", OUTDATED)
    run = fleet.run("-e", "tarvo_firmware_record=/proc/none/record.json")
    says(run, {"one": ["TV-one-0 Pebble written: ", "- - Destination directory /proc/none does not exist"]})
    assert run.failed == {"one"}


def test_serial_number_is_neither_an_option_nor_evaluated(fleet):
    serial = "-{{7*7}}"
    fleet.add("one", [*OUTDATED, f"--serial={serial}"])
    says(fleet.run("--check"), {"one": [f"{serial} Pebble would be written: 2.07 => 2.14 (firmware)"]})
    says(fleet.run(), {"one": [f"{serial} Pebble written: 2.07 => 2.14 (firmware)"]})
    says(fleet.run(), {"one": [f"{serial} Pebble written before"]})


def test_lint(fleet):
    done = fleet.command("ansible-lint", "--offline", "--profile", "production")
    assert done.returncode == 0, done.stdout + done.stderr


GUIDE = (SOURCE / "docs/fleet.md").read_text()


@pytest.mark.parametrize("file", ["inventory.ini", "update.yml"])
def test_guide_shows_the_example(file):
    shown = re.sub(r"^    ", "", GUIDE, flags=re.M)
    assert (SOURCE / "packaging/ansible" / file).read_text() in shown


def test_command_lines_of_the_guide(fleet):
    for name in re.findall(r"^studio-\d+|^edit-\d+", (SOURCE / "packaging/ansible/inventory.ini").read_text(), re.M):
        fleet.add(name, OUTDATED)
    commands = re.findall(r"^    (ansible-playbook .*)$", GUIDE, re.M)
    assert commands
    for command in commands:
        done = fleet.command(*command.split())
        assert done.returncode == 0, done.stdout + done.stderr
