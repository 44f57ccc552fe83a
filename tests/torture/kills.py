# SPDX-License-Identifier: MIT
"""Kills of commands, of the first init, and of updates: what is left is the old state or the new one."""

import json
import time

from trial import CHANGES, HARBOUR, PEBBLE, TIMEOUT, expect


def trial(programs, place, choose):
    return choose.choice([kill_change, kill_change, kill_first_init, kill_update])(programs, place, choose)


def kill_change(programs, place, choose):
    bench, change = programs.copy(place), choose.choice(CHANGES)
    new = programs.after(change)
    programs.kill(bench, "drive-bench", change, choose.uniform(0, programs.duration))
    found = programs.state(bench)
    expect(found in (programs.before, new), "lie", f"killed {change} leaves {found}")
    expect(programs.change(bench, ("add", "Pebble")), "lie", f"killed {change}: nothing can be changed any more")
    return "new" if found == new else "old"


def kill_first_init(programs, place, choose):
    programs.kill(place / "bench", "drive-bench", ("init",), choose.uniform(0, programs.duration))
    is_made = programs.change(place / "bench", ("init",))
    expect(programs.state(place / "bench") == programs.after(("init", "--force")), "lie", "half a bench is left")
    return "old" if is_made else "new"


def kill_update(programs, place, choose):
    bench, serial = programs.copy(place), choose.choice([PEBBLE, HARBOUR])
    programs.change(bench, ("clear", serial))
    update = ("update", serial, "--yes")

    def drives():
        return {drive["serial"]: drive for drive in json.loads(programs.run(bench, "list", "--json").stdout)["drives"]}

    old = drives()
    programs.kill(bench, "tarvo-firmware", update, choose.uniform(0, 0.3))
    deadline = time.monotonic() + TIMEOUT
    while drives()[serial]["state"] == "being written":
        expect(time.monotonic() < deadline, "hang", f"a killed update of {serial} is being written for ever")
        time.sleep(0.1)
    left = drives()
    done = programs.run(bench, *update, name="tarvo-firmware")
    new = drives()
    versions = [state[serial]["flashFirmware"] for state in (old, left, new)]
    expect(done.returncode in (0, 3) and versions[2] == new[serial]["record"]["newFirmwareVersion"], "lie", f"{done}")
    is_interrupted = left[serial]["incomplete"]
    expect(versions[1] in ([""] if is_interrupted else versions[::2]), "lie", f"a killed update: {left[serial]}")
    expect({**old, serial: 0} == {**left, serial: 0} == {**new, serial: 0}, "lie", "an update changed another drive")
    return "interrupted" if is_interrupted else "old" if versions[1] == versions[0] else "new"
