# SPDX-License-Identifier: MIT
"""What ./run and ./test say and leave behind when something is missing or a person interrupts them."""

import os
import pathlib
import signal
import stat
import subprocess

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
TIMEOUT = 30  # seconds that anything may take on a busy machine

APT_WITHOUT_NETWORK = """#!/bin/sh
i=0
while [ $i -lt 300 ]; do echo "Err:$i http://example.invalid/debian stable InRelease"; i=$((i + 1)); done
echo "E: Failed to fetch http://example.invalid/debian Temporary failure resolving 'example.invalid'"
while [ $i -lt 1000 ]; do echo "E: Failed to fetch http://example.invalid/debian/$i.deb"; i=$((i + 1)); done
exit 0
"""


@pytest.fixture
def tools(tmp_path):
    """A directory of stand-in tools that comes first on PATH: no package is installed, and apt finds no server."""
    directory = tmp_path / "tools"
    directory.mkdir()
    for name, script in {
        "dpkg-query": "#!/bin/sh\nexit 1\n",
        "id": "#!/bin/sh\necho 0\n",
        "apt-get": APT_WITHOUT_NETWORK,
    }.items():
        tool = directory / name
        tool.write_text(script)
        tool.chmod(tool.stat().st_mode | stat.S_IXUSR)
    return directory


def environment(tools, tmp_path, **variables):
    return {**os.environ, "PATH": f"{tools}:{os.environ['PATH']}", "TMPDIR": str(tmp_path), **variables}


def shell(script, tmp_path, env):
    """Starts a shell with the functions of scripts/setup.sh, in a directory of its own and a process group of its own."""
    return subprocess.Popen(["bash", "-c", f"set -euo pipefail; . {ROOT}/scripts/setup.sh\n{script}"], cwd=tmp_path,
                            env=env, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, start_new_session=True)


def test_without_network_one_line_says_what_is_missing_and_why(tools, tmp_path):
    process = shell("install_packages cowsay figlet", tmp_path, environment(tools, tmp_path))
    output, errors = process.communicate(timeout=TIMEOUT)
    assert output.split() == ["==>", "Installing", "cowsay", "figlet"]
    assert errors.strip() == ("bash: cannot install cowsay figlet: Failed to fetch http://example.invalid/debian "
                              "Temporary failure resolving 'example.invalid'; see build/apt.log")
    assert process.returncode == 1
    assert (tmp_path / "build/apt.log").read_text().count("\n") > 300


def test_packages_that_are_there_are_not_installed_again(tools, tmp_path):
    (tools / "dpkg-query").write_text("#!/bin/sh\necho install ok installed\n")
    process = shell("install_packages cowsay; echo done", tmp_path, environment(tools, tmp_path))
    assert process.communicate(timeout=TIMEOUT) == ("done\n", "")
    assert process.returncode == 0


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM])
def test_an_interrupt_leaves_nothing_in_the_temporary_directory(tools, tmp_path, number):
    env = environment(tools, tmp_path)
    process = shell("use_temporary_directory\ntouch $TMPDIR/left\nsleep 60 &\necho $TMPDIR\nwait", tmp_path, env)
    directory = pathlib.Path(process.stdout.readline().strip())
    assert directory.parent == tmp_path and (directory / "left").exists()
    os.killpg(process.pid, number)
    output, errors = process.communicate(timeout=TIMEOUT)
    assert (output, errors, process.returncode) == ("", "", 130)
    assert not directory.exists()


def test_a_display_that_nobody_answers_is_named_with_the_way_out(tools, tmp_path):
    process = subprocess.run([ROOT / "run"], env=environment(tools, tmp_path, DISPLAY=":12345"), capture_output=True,
                             text=True, timeout=TIMEOUT, check=False)
    assert process.returncode == 1
    assert process.stderr.strip() == ("run: nobody answers at DISPLAY=:12345; set it right, or use ./run --tour, "
                                      "which needs no display")
    assert process.stdout == ""
    assert not list(tmp_path.glob("tarvo.*"))


@pytest.mark.parametrize("script", ["run", "test"])
def test_an_unknown_option_prints_the_usage(tools, tmp_path, script):
    process = subprocess.run([ROOT / script, "--fly"], env=environment(tools, tmp_path), capture_output=True, text=True,
                             timeout=TIMEOUT, check=False)
    assert process.returncode == 2
    assert process.stderr.startswith(f"usage: ./{script}")


def test_missing_needs_skip_the_tests_with_their_names(tmp_path):
    (tmp_path / "build").mkdir()
    command = [ROOT / "tests/run-pytest", "some", "sh", "module:os", "nosuch-tool", "module:nosuch_module", "--"]
    process = subprocess.run(command, cwd=tmp_path / "build", capture_output=True, text=True, check=False)
    assert process.returncode == 77
    assert "some, because these are missing: nosuch-tool module:nosuch_module (" in process.stdout
    assert (tmp_path / "skipped").read_text() == process.stdout
