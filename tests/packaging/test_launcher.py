# SPDX-License-Identifier: MIT
"""What the launcher gives to the program, and what it leaves behind."""

import os
import pathlib
import shutil
import signal
import subprocess

import pytest
from launcher import NAME, SOURCE, Installed, send_signals, wait_for


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


def test_signals_in_the_first_moments(installed):
    assert send_signals(installed, count=60, seed=1) == ([], [])


@pytest.fixture
def abandoned(installed):
    """The directory of a launcher that was killed together with what was to remove it."""
    process = installed.start("wait")
    directory = pathlib.Path(installed.report()[0]["directory"])
    os.killpg(process.pid, signal.SIGKILL)
    process.wait()
    (installed.place / "report").unlink()
    assert directory.parent == installed.runtime
    return directory


@pytest.mark.parametrize("place", ["XDG_RUNTIME_DIR", "TMPDIR"])
def test_next_start_removes_what_a_killed_one_left(installed, abandoned, place):
    """Wherever that was, though the next start uses another place."""
    other = installed.place / "other"
    other.mkdir()
    installed.start(**{"XDG_RUNTIME_DIR": str(other), place: str(installed.runtime)}).wait()
    wait_for(lambda: not os.listdir(installed.runtime))


def test_next_start_removes_nothing_else(installed, abandoned):
    like_it = str(abandoned)[:-1]
    (installed.place / "target").mkdir()
    os.symlink(installed.place / "target", like_it + "-")
    kept = [like_it + "-", like_it + ".tar.gz", f"{installed.runtime}/{NAME}.1-2.deb"]
    for directory in kept[1:]:
        os.mkdir(directory)
    if os.geteuid() == 0:
        os.mkdir(like_it + "+")
        os.chown(like_it + "+", 65534, 65534)
        kept.append(like_it + "+")
    live = installed.start("wait")
    kept.append(installed.report()[0]["directory"])
    (installed.place / "report").unlink()
    installed.start().wait()
    installed.report()
    wait_for(lambda: not abandoned.exists())
    wait_for(lambda: len(os.listdir(installed.runtime)) == len(kept))
    assert sorted(kept) == sorted(map(str, installed.runtime.iterdir()))
    live.kill()
    live.wait()


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


WITH_A_FULL_DIRECTORY = """
mount -t tmpfs -o size=64k none "$1" && head -c 60K /dev/zero >"$1/full" && shift && exec "$@"
"""


def test_full_directory_is_not_used(installed):
    """In one that holds no listing, the program would not find the companion."""
    private = ["unshare", "--map-root-user", "--mount"]
    if subprocess.run([*private, "true"], stderr=subprocess.DEVNULL).returncode != 0:
        pytest.skip("this machine lets nobody mount a directory of their own")
    temporary = installed.place / "temporary files"
    temporary.mkdir()
    process = installed.start(*private[1:], "sh", "-c", WITH_A_FULL_DIRECTORY, "sh", str(installed.runtime),
                              str(installed.launcher), command=private[0], TMPDIR=str(temporary))
    assert process.wait() == 0
    assert pathlib.Path(installed.report()[0]["directory"]).parent == temporary


def test_no_file_can_be_written_anywhere(installed):
    limited = "trap '' XFSZ; ulimit -f 1; exec \"$0\""  # blocks of 512 bytes
    process = installed.start("-c", limited, str(installed.launcher), command="sh", stderr=subprocess.PIPE)
    assert process.communicate()[1] == (
        f"{NAME}: no working directory can be made and written to in XDG_RUNTIME_DIR, TMPDIR or /tmp\n")
    assert process.returncode == 1
    assert os.listdir(installed.runtime) == []


@pytest.mark.parametrize("script", [NAME, "drive-bench", "drive-bench-panel"])
def test_without_a_home(installed, script):
    shutil.copy(SOURCE / "packaging/linux" / script, installed.launcher)
    process = installed.start(HOME=None, stderr=subprocess.PIPE)
    assert process.communicate()[1].split(": ", 2)[2] == "HOME: is not set; set it, XDG_DATA_HOME or TARVO_BENCH\n"
    assert process.returncode == 2
    assert os.listdir(installed.runtime) == []


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
