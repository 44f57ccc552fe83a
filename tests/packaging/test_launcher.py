"""The launcher in bin/, in front of a stand-in for the program that tells how it was started."""

import os
import pathlib
import shutil
import signal
import subprocess
import time

import pytest
from conftest import NAME, SOURCE

STAND_IN = """#!/bin/sh
# Tells how it was started, leaves a scratch file as a killed program does, and does what it is asked for.
printf '%s\\n' "$0" "$PWD" "$(ls -A)" "$(stat -c %a .)" "$TARVO_BENCH" "$$" "$#" "$@" >"$REPORT.new"
echo scratch >>temp.txt
mv "$REPORT.new" "$REPORT"
case ${1:-} in
wait) exec sleep 60 ;;
status) exit "$2" ;;
esac
"""
LINES = ["argv0", "directory", "content", "mode", "bench", "process", "count"]


class Installed:
    """The launcher and the stand-in, installed below a prefix with a blank, and somebody who starts them."""

    def __init__(self, place):
        self.place = place
        prefix = place / "my programs"
        self.launcher = prefix / "bin" / NAME
        self.program = prefix / "lib" / NAME / NAME
        for directory in (self.launcher.parent, self.program.parent, place / "home", place / "runtime"):
            directory.mkdir(parents=True)
        shutil.copy(SOURCE / "packaging/linux" / NAME, self.launcher)
        self.program.write_text(STAND_IN)
        self.program.chmod(0o755)
        self.runtime = place / "runtime"
        self.environment = {
            "PATH": os.environ["PATH"],
            "HOME": str(place / "home"),
            "XDG_RUNTIME_DIR": str(self.runtime),
            "REPORT": str(place / "report"),
        }

    def start(self, *arguments, command=None, cwd=None, **environment):
        merged = {**self.environment, **environment}
        merged = {name: value for name, value in merged.items() if value is not None}
        return subprocess.Popen([str(command or self.launcher), *arguments], env=merged, cwd=cwd or self.place,
                                start_new_session=True)

    def report(self):
        """What the stand-in told, once it has."""
        file = self.place / "report"
        wait_for(file.exists)
        lines = file.read_text().split("\n")
        return dict(zip(LINES, lines)), lines[len(LINES):-1]


def wait_for(condition):
    deadline = time.monotonic() + 30
    while not condition():
        assert time.monotonic() < deadline
        time.sleep(0.05)


@pytest.fixture
def installed(tmp_path):
    return Installed(tmp_path)


def by_name(installed):
    return {"command": NAME, "cwd": "/", "PATH": f"{installed.launcher.parent}:{os.environ['PATH']}"}


def by_relative_path(installed):
    return {"command": f"bin/{NAME}", "cwd": installed.launcher.parents[1]}


def in_its_directory(installed):
    return {"command": f"./{NAME}", "cwd": installed.launcher.parent}


def through_links(installed):
    (installed.place / "first").symlink_to(f"my programs/bin/{NAME}")
    (installed.place / "second link").symlink_to("first")
    return {"command": installed.place / "second link", "cwd": "/proc"}


def after_a_move(installed):
    moved = installed.place / "elsewhere"
    installed.launcher.parents[1].rename(moved)
    installed.program = moved / "lib" / NAME / NAME
    return {"command": moved / "bin" / NAME}


@pytest.mark.parametrize("way", [by_name, by_relative_path, in_its_directory, through_links, after_a_move])
def test_ways_to_start(installed, way):
    process = installed.start("one argument", "", "-n", **way(installed))
    assert process.wait() == 0
    told, arguments = installed.report()
    assert told["argv0"] == str(installed.program)
    assert pathlib.Path(told["directory"]).parent == installed.runtime
    assert (told["content"], told["mode"]) == ("", "700")
    assert arguments == ["one argument", "", "-n"]
    wait_for(lambda: not os.listdir(installed.runtime))


@pytest.mark.parametrize("status", [0, 1, 77, 255])
def test_exit_status(installed, status):
    assert installed.start("status", str(status)).wait() == status
    wait_for(lambda: not os.listdir(installed.runtime))


def has_ended(process):
    """True when there is no such process, or nothing of it but its exit status."""
    try:
        return pathlib.Path(f"/proc/{process}/stat").read_text().rsplit(")", 1)[1].split()[0] == "Z"
    except FileNotFoundError:
        return True


@pytest.mark.parametrize("send", [os.kill, os.killpg], ids=["to the process", "to its group, as a terminal does"])
@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT, signal.SIGHUP])
def test_signals(installed, number, send):
    process = installed.start("wait")
    told, _ = installed.report()
    assert os.listdir(installed.runtime) != []
    send(process.pid, number)
    assert process.wait() == -number
    assert has_ended(told["process"])
    wait_for(lambda: not os.listdir(installed.runtime))


def test_killed_program(installed):
    process = installed.start("wait")
    told, _ = installed.report()
    os.kill(int(told["process"]), signal.SIGKILL)
    assert process.wait() == -signal.SIGKILL
    wait_for(lambda: not os.listdir(installed.runtime))


def test_two_at_once_have_a_directory_each(installed):
    reports = [installed.place / name for name in ("first", "second")]
    first, second = [installed.start("wait", REPORT=str(report)) for report in reports]
    wait_for(lambda: all(report.exists() for report in reports))
    assert len(os.listdir(installed.runtime)) == 2
    first.terminate()
    first.wait()
    wait_for(lambda: len(os.listdir(installed.runtime)) == 1)
    second.terminate()
    second.wait()
    wait_for(lambda: not os.listdir(installed.runtime))


def test_scratch_files_of_the_person_are_left_alone(installed):
    kept = [installed.place / name / "temp.txt" for name in ("home", "runtime", ".")]
    for file in kept:
        file.write_bytes(b"mine \xff\n")
    installed.start(cwd=installed.place / "home").wait()
    installed.start(cwd=installed.place).wait()
    wait_for(lambda: os.listdir(installed.runtime) == ["temp.txt"])
    assert [file.read_bytes() for file in kept] == [b"mine \xff\n"] * 3


def test_planted_link_is_not_followed(installed):
    shared = installed.place / "tmp"
    shared.mkdir()
    victim = installed.place / "victim"
    victim.write_text("untouched")
    (shared / "temp.txt").symlink_to(victim)
    process = installed.start(cwd=shared, XDG_RUNTIME_DIR=None, TMPDIR=str(shared))
    assert process.wait() == 0
    told, _ = installed.report()
    assert (pathlib.Path(told["directory"]).parent, told["content"], told["mode"]) == (shared, "", "700")
    wait_for(lambda: os.listdir(shared) == ["temp.txt"])
    assert victim.read_text() == "untouched"


@pytest.mark.parametrize("runtime", [None, "", "relative", "/proc", "/nowhere"])
def test_without_a_runtime_directory_that_can_be_written(installed, runtime):
    temporary = installed.place / "temporary files"
    temporary.mkdir()
    assert installed.start(XDG_RUNTIME_DIR=runtime, TMPDIR=str(temporary)).wait() == 0
    assert pathlib.Path(installed.report()[0]["directory"]).parent == temporary
    wait_for(lambda: not os.listdir(temporary))


@pytest.mark.parametrize(
    "environment, bench",
    [
        ({}, "{place}/home/.local/share/tarvo-drive-bench"),
        ({"XDG_DATA_HOME": "/data of mine"}, "/data of mine/tarvo-drive-bench"),
        ({"TARVO_BENCH": "/a bench", "XDG_DATA_HOME": "/data"}, "/a bench"),
        ({"TARVO_BENCH": "here/bench"}, "{place}/here/bench"),
        ({"TARVO_BENCH": ""}, "{place}/home/.local/share/tarvo-drive-bench"),
    ],
)
def test_bench(installed, environment, bench):
    installed.start(**environment).wait()
    assert installed.report()[0]["bench"] == bench.format(place=installed.place)
    assert os.listdir(installed.place / "home") == [], "the updater makes no bench"
