# SPDX-License-Identifier: MIT
"""The next release, made in a copy of the sources as docs/releasing.md says."""

import os
import re
import shutil
import subprocess
import sys

from conftest import SOURCE


def replace(file, old, new):
    text = file.read_text(encoding="utf-8")
    assert text.count(old) == 1
    file.write_text(text.replace(old, new), encoding="utf-8")


def test_next_release(cache, tmp_path):
    copy, build = tmp_path / "sources", tmp_path / "build"
    shutil.copytree(SOURCE, copy, symlinks=True, ignore=shutil.ignore_patterns("build", ".git", "__pycache__"))
    version = cache["CMAKE_PROJECT_VERSION"]
    following = re.sub(r"\d+$", lambda patch: str(int(patch[0]) + 1), version)
    replace(copy / "CMakeLists.txt", f"VERSION {version} ", f"VERSION {following} ")
    replace(copy / "CHANGELOG.md", "## [Unreleased]\n",
            f"## [Unreleased]\n\n## [{following}] - 2027-01-31\n\n### Fixed\n\n- Something.\n")

    configure = ["cmake", "-S", copy, "-B", build, "-G", "Ninja", "-D", "TARVO_TESTS=OFF", "-D",
                 f"TARVO_QT={cache['TARVO_QT']}"]
    for command in (configure, ["cmake", "--build", build, "--target", "documentation"]):
        done = subprocess.run(command, capture_output=True, text=True)
        assert done.returncode == 0, done.stdout + done.stderr
    metadata = [sys.executable, "-m", "pytest", "-q", "-p", "no:cacheprovider", copy / "tests/packaging/test_metadata.py"]
    done = subprocess.run(metadata, env={**os.environ, "TARVO_BUILD_DIR": str(build)}, capture_output=True, text=True)
    assert done.returncode == 0, done.stdout

    # A test or a document that names the version would now name the wrong one.
    files = [file for directory in ("tests", "docs") for file in (copy / directory).rglob("*") if file.is_file()]
    assert [file for file in files if version.encode() in file.read_bytes()] == []
