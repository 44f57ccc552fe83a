"""What the stories stand on: a desktop for each test process, a bench and programs for each story.

The folder that holds the program comes from --program-dir or $TARVO_PROGRAM_DIR; otherwise it is that of the
release build. What was on screen when a story failed is left in $TARVO_ACCEPTANCE_OUTPUT, and where that is not set
in the story's temporary folder.
"""

import os
import pathlib
import shutil

import pytest
from driver import PROGRAM_DIR, Bench, Desktop, Program

FAST = 200_000  # bytes a second: a flash takes a quarter of a second
SLOW = 10_000  # bytes a second: a flash takes about five seconds


def pytest_addoption(parser):
    parser.addoption("--program-dir", default=PROGRAM_DIR, help="folder of tarvo-firmware-updater and drive-bench")


def pytest_collection_modifyitems(items):
    items.sort(key=lambda item: "long_run" not in item.nodeid)  # what takes longest begins first


@pytest.hookimpl(hookwrapper=True)
def pytest_runtest_makereport(item, call):
    report = (yield).get_result()
    if report.when == "call":
        item.has_failed = report.failed


@pytest.fixture(scope="session")
def bin_dir(request):
    folder = pathlib.Path(request.config.getoption("--program-dir")).resolve()
    if not (folder / "tarvo-firmware-updater").exists():
        pytest.exit(f"there is no program in {folder}; name its folder with --program-dir", 2)
    return folder


@pytest.fixture(scope="session")
def desktop():
    with Desktop(window_manager=True) as desktop:
        yield desktop


@pytest.fixture
def folder(request, tmp_path):
    """A folder for one story; it stays only when the story fails."""
    yield tmp_path
    if not getattr(request.node, "has_failed", True):
        shutil.rmtree(tmp_path, ignore_errors=True)


@pytest.fixture
def bench(bin_dir, folder):
    """A bench without drives."""
    return Bench(bin_dir / "drive-bench", folder / "bench").init("--empty")


@pytest.fixture
def start(request, desktop, bin_dir, bench, folder):
    """Starts the program on the bench; whatever runs when the story ends is stopped."""
    programs = []

    def start_program(*arguments, command=bin_dir / "tarvo-firmware-updater", cwd=None, environment=()):
        if cwd is None:
            cwd = folder / f"cwd{len(programs)}"
            cwd.mkdir()
        with open(folder / f"output{len(programs)}.txt", "w", encoding="utf-8") as log:
            program = Program(desktop, command, bench, cwd, arguments, environment, log)
        programs.append(program)
        return program

    yield start_program
    for number, program in enumerate(programs):
        if getattr(request.node, "has_failed", True):
            evidence = os.environ.get("TARVO_ACCEPTANCE_OUTPUT", str(folder))
            program.keep_evidence(evidence, f"{request.node.name}-{number}".replace("/", "-"))
        program.stop()
