# SPDX-License-Identifier: MIT
"""A short long run; all of it is tests/acceptance/long-run."""

import pathlib
import subprocess
import sys


def test_ten_updates_with_random_faults(bin_dir):
    script = pathlib.Path(__file__).with_name("long-run")
    done = subprocess.run(
        [sys.executable, script, "--program-dir", bin_dir, "--updates", "10", "--lanes", "3"],
        capture_output=True,
        text=True,
    )
    assert done.returncode == 0, done.stdout + done.stderr
