# SPDX-License-Identifier: MIT
"""Fixtures: a bench for each test, and the command on it.

The programs are those in $TARVO_PROGRAM_DIR, by default of the build of the preset dev.
"""

import os
import pathlib
import sys

import pytest

SOURCE = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(SOURCE / "tests/acceptance"))

from bench import Bench
from command import Command

FAST, SLOW = 400_000, 40_000  # bytes a second: a flash takes a tenth of a second, or one second
OLD = "1.00"


@pytest.fixture(scope="session")
def bin_dir():
    directory = pathlib.Path(os.environ.get("TARVO_PROGRAM_DIR") or SOURCE / "build/dev/bin").resolve()
    if not (directory / "tarvo-firmware").exists():
        pytest.exit(f"there is no tarvo-firmware in {directory}; name its directory with $TARVO_PROGRAM_DIR", 2)
    return directory


@pytest.fixture
def bench(bin_dir, tmp_path):
    """A bench without drives."""
    return Bench(bin_dir / "drive-bench", tmp_path / "bench").init("--empty")


@pytest.fixture
def outdated(bench):
    """Adds drives that need both updates; returns the serial numbers."""

    def add(*models, rate=FAST):
        for number, model in enumerate(models, 1):
            bench.add(model, serial=f"TV{number}", firmware=OLD, configuration="1", rate=rate)
        return [f"TV{number}" for number, _ in enumerate(models, 1)]

    return add


@pytest.fixture
def command(bin_dir, bench, tmp_path):
    temporary = tmp_path / "temporary"
    temporary.mkdir()
    return Command(bin_dir / "tarvo-firmware", bench, temporary)
