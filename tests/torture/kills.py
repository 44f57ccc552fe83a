"""Kills of commands, of the first init, and of updates: what is left is the old state or the new one."""

import json
import time

from trial import CHANGES, HARBOUR, PEBBLE, TIMEOUT, expect


def trial(programs, place, choose):
    return choose.choices([kill_change, kill_first_init, kill_update], [3, 1, 1])[0](programs, place, choose)


def kill(programs, bench, name, arguments, seconds):
    process = programs.start(bench, name, *arguments)
    time.sleep(seconds)
    process.kill()
    process.wait()


def kill_change(programs, place, choose):
    bench, change = programs.copy(place), choose.choice(CHANGES)
    new = programs.after(change)
    kill(programs, bench, "drive-bench", change, choose.uniform(0, programs.duration))
    found = programs.state(bench)
    expect(found in (programs.before, new), "lie", f"killed {change} leaves {found}")
    expect(programs.change(bench, ("add", "Pebble")), "lie", f"killed {change}: nothing can be changed any more")
    return "new" if found == new else "old"


def kill_first_init(programs, place, choose):
    bench = place / "bench"
    kill(programs, bench, "drive-bench", ("init",), choose.uniform(0, programs.duration))
    is_made = programs.change(bench, ("init",))
    expect(programs.state(bench) == programs.after(("init", "--force")), "lie", "a killed init leaves a part of a bench")
    return "old" if is_made else "new"


def kill_update(programs, place, choose):
    bench, serial = programs.copy(place), choose.choice([PEBBLE, HARBOUR])
    programs.change(bench, ("clear", serial))
    before = programs.state(bench)

    def other_drives(state):
        return [drive for drive in state["drives"] if drive["serial"] != serial]

    def update():
        done = programs.run(bench, "update", serial, "--yes", name="tarvo-firmware")
        drive = json.loads(programs.run(bench, "show", serial, "--json").stdout)
        offered = drive["record"]["newFirmwareVersion"]
        expect(done.returncode in (0, 3) and drive["flashFirmware"] == offered, "lie", f"{done}: {drive}")
        return offered

    kill(programs, bench, "tarvo-firmware", ("update", serial, "--yes"), choose.uniform(0, 0.3))
    deadline = time.monotonic() + TIMEOUT
    while True:
        drive = json.loads(programs.run(bench, "show", serial, "--json").stdout)
        if drive["state"] != "being written":
            break
        expect(time.monotonic() < deadline, "hang", f"a killed update of {serial} is being written for ever")
        time.sleep(0.1)
    left = drive["flashFirmware"]
    old = next(drive["flashFirmware"] for drive in before["drives"] if drive["serial"] == serial)
    expect(other_drives(programs.state(bench)) == other_drives(before), "lie", "an update changed another drive")
    offered = update()
    expect((left, drive["incomplete"]) in ((old, False), ("", True), (offered, False)), "lie", f"a killed update: {drive}")
    return "interrupted" if drive["incomplete"] else "old" if left == old else "new"
