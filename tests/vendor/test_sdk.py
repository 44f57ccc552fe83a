# SPDX-License-Identifier: MIT
"""The program built with an SDK instead of the drive bench, and run on that SDK's drive.

The sources of the SDK are in sdk/. $TARVO_SDK_LIBRARIES is the directory of its libraries, by default that of the preset
dev; $TARVO_QT is the version of Qt.
"""

import os
import pathlib
import shutil
import subprocess
import sys

import pytest

SOURCE = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(SOURCE / "tests/acceptance"))

from desktop import Desktop
from updater import Program
from waiting import wait_until

LIBRARIES = ["DeviceDiscovery", "Asmedia105X", "OxSemiFireWire", "MacDevice"]
LIBRARY_DIR = os.environ.get("TARVO_SDK_LIBRARIES") or SOURCE / "build/dev/tests/vendor/sdk/lib"
IMAGE = b"the content of an image"


def make_sdk(directory):
    shutil.copytree(SOURCE / "tests/vendor/sdk/include", directory / "include")
    shutil.copytree(LIBRARY_DIR, directory / "lib")
    return directory


def configure(build, *options):
    return subprocess.run(
        ["cmake", "-S", SOURCE, "-B", build, "-G", "Ninja", "-U", "TARVO_*", "-D", "CMAKE_BUILD_TYPE=Debug",
         "-D", "CMAKE_CXX_FLAGS_DEBUG=-O0", "-D", "TARVO_WARNINGS_AS_ERRORS=ON",
         # Compiled once and whole, which is quickest this way.
         "-D", "CMAKE_UNITY_BUILD=ON", "-D", "CMAKE_UNITY_BUILD_BATCH_SIZE=0",
         "-D", "CMAKE_DISABLE_PRECOMPILE_HEADERS=ON",
         "-D", f"TARVO_QT={os.environ.get('TARVO_QT', '6')}", "-D", "TARVO_PLATFORM=vendor", *options],
        capture_output=True, text=True,
    )


def source_files():
    """Every file of the source directory with what would change if it were edited."""
    found = {}
    for path, directories, files in os.walk(SOURCE):
        directories[:] = set(directories) - {".git", "build", "__pycache__"}
        for name in files:
            status = os.lstat(os.path.join(path, name))
            found[os.path.join(path, name)] = (status.st_size, status.st_mtime_ns)
    return found


@pytest.fixture(scope="module")
def build(tmp_path_factory):
    """A build directory, configured with the SDK."""
    directory = tmp_path_factory.mktemp("vendor")
    done = configure(directory / "build", "-D", f"TARVO_SDK={make_sdk(directory / 'sdk')}")
    assert done.returncode == 0, done.stdout + done.stderr
    yield directory / "build"
    shutil.rmtree(directory, ignore_errors=True)


def test_update_of_the_drive_of_an_sdk(build, tmp_path):
    before = source_files()
    done = subprocess.run(["cmake", "--build", build, "--target", "tarvo-firmware-updater"],
                          capture_output=True, text=True)
    assert done.returncode == 0, done.stdout + done.stderr
    assert source_files() == before

    (build / "bin/miniature.tfw").write_bytes(IMAGE)
    (tmp_path / "attached").touch()
    with Desktop(window_manager=True) as desktop:
        program = Program(desktop, build / "bin/tarvo-firmware-updater", tmp_path, {"TARVO_SDK_DRIVE": str(tmp_path)})
        try:
            update(program, tmp_path, build)
        except BaseException:
            program.save_diagnostics(os.environ.get("TARVO_ACCEPTANCE_OUTPUT", str(tmp_path)), "vendor-sdk")
            raise
        finally:
            program.stop()


def update(program, drive, build):
    screen = program.see_models("Pebble")
    assert screen.page("Pebble").texts == [
        "Tarvo Pebble",
        "(firmware version: 7.00 => 7.01 )",
        "Firmware: Update required!",
        "Configuration: Up to date.",
    ]
    program.begin_update("Pebble")
    program.see_restart("Pebble")
    assert (drive / "flash").read_bytes() == IMAGE
    assert [line for line in calls(drive) if not line.startswith("query")] == [
        f"flash 1053 SDK1 {build}/bin/miniature.tfw",
        "unmount USB SDK1",
        "close SDK1",
    ]

    (drive / "attached").unlink()
    wait_until(lambda: calls(drive)[-1] == "query: 0", "a query without the drive")
    (drive / "attached").touch()
    program.see_success("Pebble")
    program.press("Finish")
    assert program.wait_for_end() == 0


def calls(drive):
    return (drive / "calls").read_text().splitlines()


@pytest.mark.parametrize("library", LIBRARIES)
@pytest.mark.parametrize(
    "file, message",
    [("include/{}.h", "The header {}.h is not in {}/include"), ("lib/lib{}.a", "The library {} is not in {}/lib")],
    ids=["header", "library"],
)
def test_incomplete_sdk(build, tmp_path, library, file, message):
    sdk = make_sdk(tmp_path / "sdk")
    (sdk / file.format(library)).unlink()
    refused(build, message.format(library, sdk), "-D", f"TARVO_SDK={sdk}")


def test_no_sdk(build):
    refused(build, "TARVO_PLATFORM=vendor needs -DTARVO_SDK=DIR, the directory of the maker's libraries")


def refused(build, message, *options):
    """CMake breaks a long line at blanks."""
    done = configure(build, *options)
    assert done.returncode != 0
    assert done.stderr.count("CMake Error") == 1, done.stderr
    assert message in " ".join(done.stderr.split()), done.stderr
