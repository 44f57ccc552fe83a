# SPDX-License-Identifier: MIT
"""Fixtures: a desktop for each test process, a bench and programs for each test.

The directory that holds the program comes from --program-dir or $TARVO_PROGRAM_DIR; otherwise it is that of the
preset dev, or of release where dev is not built. When a test fails, a screenshot and the tree of accessible objects are
saved in $TARVO_ACCEPTANCE_OUTPUT, and where that is not set in the test's temporary directory.
"""

import os
import pathlib
import re
import shutil

import pytest
from bench import Bench
from desktop import Desktop
from updater import PROGRAM_DIR, Program

SOURCE = pathlib.Path(__file__).resolve().parents[2]
# The last line of the window.
VERSION = "Orvi: " + re.search(r"^project\(.* VERSION (\S+)", (SOURCE / "CMakeLists.txt").read_text(), re.MULTILINE)[1]
FAST = 200_000  # bytes a second: a flash takes a quarter of a second
SLOW = 10_000  # bytes a second: a flash takes about five seconds


def outdated(bench, model, serial="TV1"):
    """Adds a drive that needs both updates."""
    return bench.add(model, serial=serial, firmware="1.00", configuration="1", rate=FAST)


def pytest_addoption(parser):
    parser.addoption("--program-dir", default=PROGRAM_DIR, help="directory of tarvo-firmware-updater and drive-bench")


def pytest_collection_modifyitems(items):
    items.sort(key=lambda item: "long_run" not in item.nodeid)  # what takes longest begins first


@pytest.hookimpl(hookwrapper=True)
def pytest_runtest_makereport(item, call):
    report = (yield).get_result()
    if report.when == "call":
        item.has_failed = report.failed


@pytest.fixture(scope="session")
def bin_dir(request):
    directory = pathlib.Path(request.config.getoption("--program-dir")).resolve()
    if not (directory / "tarvo-firmware-updater").exists():
        pytest.exit(f"there is no program in {directory}; build it (cmake --preset dev && cmake --build --preset dev) "
                    "or name its directory with --program-dir", 2)
    return directory


@pytest.fixture(scope="session")
def desktop():
    with Desktop(window_manager=True) as desktop:
        yield desktop


@pytest.fixture
def directory(request, tmp_path):
    """A directory for one test; it is kept only when the test fails."""
    yield tmp_path
    if not getattr(request.node, "has_failed", True):
        shutil.rmtree(tmp_path, ignore_errors=True)


@pytest.fixture
def bench(bin_dir, directory):
    """A bench without drives."""
    return Bench(bin_dir / "drive-bench", directory / "bench").init("--empty")


@pytest.fixture
def start(request, desktop, bin_dir, bench, directory):
    """Starts the program on the bench; what still runs at the end of the test is stopped."""
    programs = []

    def start_program(*arguments, command=bin_dir / "tarvo-firmware-updater", cwd=None, environment=None):
        if cwd is None:
            cwd = directory / f"cwd{len(programs)}"
            cwd.mkdir()
        with open(directory / f"output{len(programs)}.txt", "w", encoding="utf-8") as log:
            program = Program(desktop, command, cwd, {**bench.environment, **(environment or {})}, arguments, log)
        programs.append(program)
        return program

    yield start_program
    for number, program in enumerate(programs):
        if getattr(request.node, "has_failed", True):
            output = os.environ.get("TARVO_ACCEPTANCE_OUTPUT", str(directory))
            program.save_diagnostics(output, f"{request.node.name}-{number}".replace("/", "-"))
        program.stop()
