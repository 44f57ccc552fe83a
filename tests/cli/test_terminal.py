# SPDX-License-Identifier: MIT
"""The command on a terminal: questions, the line that lives, and a terminal that goes away."""

import pty

import pytest
from command import ERASE, is_whole, wait_for_writing
from conftest import OLD, SLOW
from waiting import wait_until


@pytest.mark.parametrize("answer, status", [("n", 1), ("", 1), ("y", 3), ("YES", 3)])
def test_question(bench, command, outdated, answer, status):
    outdated("Pebble")
    terminal = command.terminal("update", "--all").wait_for("[y/N] ")
    assert "DO NOT disconnect the device during the firmware update.\r\n" in terminal.output
    assert bench.drive("TV1")["flashes"] == 0
    terminal.type(answer + "\n")
    assert terminal.wait_for_end() == status
    assert is_whole(bench, "TV1", "2.14" if status == 3 else OLD)


def test_question_that_nobody_sees(command):
    _, terminal = pty.openpty()
    refused = command.run("update", "--all", stdin=terminal, status=2)
    assert refused.errors == "tarvo-firmware: nobody can be asked here: give --yes or --dry-run\n"


def test_line_that_lives(bench, command, outdated):
    outdated("Pebble", "Lamina", rate=SLOW)
    bench.fault("TV2", "flash-error", 30000)
    terminal = command.terminal("update", "--all", "--yes", "--wait=2")
    assert terminal.wait_for_end() == 1
    for line in ("0 s  writing Tarvo Pebble, serial number TV1", "1 s  writing Tarvo Pebble, serial number TV1",
                 "1 s  waiting for Tarvo Pebble, serial number TV1"):
        assert line in terminal.live_lines
    # Nothing of it stays, and what the platform says stands on a line of its own.
    assert not [line for line in terminal.lines if "writing" in line or "waiting" in line]
    assert [line for line in terminal.lines if line.startswith("the update of TV2 failed: ")]
    assert terminal.output.endswith(ERASE)
    assert "%" not in terminal.output and "m" not in terminal.output.split("\x1b[")[1:]


def test_narrow_terminal(bench, command, outdated):
    outdated("Pebble", rate=SLOW)
    terminal = command.terminal("update", "--all", "--yes", width=20)
    assert terminal.wait_for_end() == 3
    assert {line.lstrip("0123456789") for line in terminal.live_lines} == {" s  writing Tarvo "}


@pytest.mark.parametrize("kind", ["dumb", ""])
def test_terminal_that_cannot_erase(command, outdated, kind):
    outdated("Pebble")
    terminal = command.terminal("update", "--all", "--yes", environment={"TERM": kind})
    assert terminal.wait_for_end() == 3
    assert "\x1b" not in terminal.output and "TV1: is being written\n" in terminal.output


def test_no_color(command, outdated):
    outdated("Pebble")
    terminal = command.terminal("update", "--all", "--yes", environment={"NO_COLOR": "1"})
    assert terminal.wait_for_end() == 3
    assert set(terminal.output.split("\x1b[")[1:]) and all(
        part.startswith("K") for part in terminal.output.split("\x1b[")[1:])


def test_terminal_that_goes_away(bench, command, outdated):
    outdated("Pebble", "Lamina", rate=SLOW)
    terminal = command.terminal("update", "--all", "--yes")
    wait_for_writing(bench, "TV1")
    terminal.close()
    assert terminal.process.wait(20) == 1
    assert is_whole(bench, "TV1", "2.14") and bench.drive("TV2")["flashes"] == 0


def test_keys_that_stop(bench, command, outdated):
    """Ctrl-C finishes the drive, Ctrl-Z does nothing."""
    outdated("Pebble", "Lamina", rate=SLOW)
    # A job of a shell, since nothing else can be stopped.
    terminal = command.terminal("-mc", '"$0" "$@"; exit $?', command.program, "update", "--all", "--yes", program="bash")
    wait_for_writing(bench, "TV1")
    terminal.type("\x1a")
    terminal.type("\x03")
    assert terminal.wait_for_end() == 1
    said = "tarvo-firmware: TV1 is being written and is finished first; nothing after it is begun"
    assert [line for line in terminal.lines if line.endswith(said)]
    assert "TV2: is not begun" in terminal.lines
    assert is_whole(bench, "TV1", "2.14") and bench.drive("TV2")["flashes"] == 0


def test_ctrl_c_while_waiting(bench, command, outdated):
    outdated("Pebble")
    terminal = command.terminal("update", "--all", "--yes", "--wait")
    terminal.wait_for("waiting for")
    terminal.type("\x03")
    assert terminal.wait_for_end() == 3
    assert terminal.output.endswith(ERASE)
    wait_until(lambda: is_whole(bench, "TV1", "2.14"), "the drive is whole")
