# SPDX-License-Identifier: MIT
"""Whatever ends the command: a drive is whole or was not begun."""

import os
import signal
import time

import pytest
from command import is_whole, wait_for_writing
from conftest import OLD, SLOW

SIGNALS = [signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGQUIT]


@pytest.mark.parametrize("moment", range(20))
def test_signal(bench, command, outdated, moment):
    """From before the first byte to after the last."""
    outdated("Pebble", "Lamina", rate=SLOW)
    wanted = SIGNALS[moment % len(SIGNALS)]
    process = command.start("update", "TV1", "TV2", "--yes")
    if moment < 4:
        time.sleep(0.01 * moment)
    else:
        wait_for_writing(bench, "TV1")
        time.sleep((moment - 4) * 0.07)
    process.send_signal(wanted)
    output, errors = process.communicate(timeout=20)
    drives = {serial: bench.drive(serial) for serial in ("TV1", "TV2")}
    begun = [serial for serial, drive in drives.items() if drive["flashes"]]
    for serial, drive in drives.items():
        assert is_whole(bench, serial, drive["record"]["newFirmwareVersion"] if serial in begun else OLD)
        if process.returncode != -wanted:
            assert serial in begun or f"{serial}: is not begun\n" in output
    assert process.returncode in ([-wanted, 1] if not begun else [1] if begun == ["TV1"] else [3])
    # Nothing is said where the signal came before or between the drives.
    assert begun != ["TV1", "TV2"] or "TV2 is being written and is finished first" in errors
    assert os.listdir(command.temporary) == []


def test_closed_output(bench, command, outdated):
    outdated("Pebble", "Lamina", rate=SLOW)
    process = command.start("update", "--all", "--yes", "--json")
    wait_for_writing(bench, "TV1")
    process.stdout.close()
    assert process.wait(20) == 3
    assert is_whole(bench, "TV1", "2.14") and is_whole(bench, "TV2", "3.20")


def test_ignored_signal_stays_ignored(bench, command, outdated):
    """As under nohup."""
    outdated("Pebble", "Lamina", rate=SLOW)
    process = command.start("update", "--all", "--yes",
                            prepare=lambda: signal.signal(signal.SIGHUP, signal.SIG_IGN))
    wait_for_writing(bench, "TV1")
    process.send_signal(signal.SIGHUP)
    assert process.wait(20) == 3
    assert not is_whole(bench, "TV2", OLD)
