# SPDX-License-Identifier: MIT
"""The ways to start the program, what lies around it, and what it may not take from there."""

import os
import pathlib
import shutil

import pytest
from conftest import FAST

NAME = "tarvo-firmware-updater"


@pytest.fixture
def serial(bench):
    return bench.add("Pebble", serial="TV1", firmware="1.00", rate=FAST)


def update(program, bench, serial):
    """The firmware image is looked for in the directory by which the program was started."""
    program.begin_update("Pebble")
    program.see_restart("Pebble")
    assert bench.flash(serial) == bench.newest("Pebble")


def fail_to_update(program, bench, serial):
    program.begin_update("Pebble")
    program.see_failure("Pebble")
    assert bench.flash(serial)[0] == "1.00"


def test_relative_path(bench, start, bin_dir, serial):
    program = start(command=f"./{bin_dir.name}/{NAME}", cwd=bin_dir.parent)
    update(program, bench, serial)


def test_relative_path_upwards(bench, start, bin_dir, directory, serial):
    program = start(command=os.path.relpath(bin_dir / NAME, directory), cwd=directory)
    update(program, bench, serial)


def test_path_with_blanks(bench, start, bin_dir, directory, serial):
    place = directory / "a directory  with blanks"
    place.symlink_to(bin_dir)
    update(start(command=place / NAME), bench, serial)


def test_symbolic_link(bench, start, bin_dir, directory, serial):
    place = directory / "links"
    place.mkdir()
    (place / "updater").symlink_to(bin_dir / NAME)
    program = start(command=place / "updater")
    # The images do not lie beside the link, so there is nothing to flash.
    fail_to_update(program, bench, serial)
    program.press("Finish")
    assert program.wait_for_end() == 0

    (place / "pebble.tfw").symlink_to(bin_dir / "pebble.tfw")
    update(start(command=place / "updater"), bench, serial)


def test_no_slash(bench, start, bin_dir, serial):
    search = {"PATH": f"{bin_dir}:{os.environ['PATH']}"}
    # Started by its bare name, it looks for images in the working directory.
    elsewhere = start(command=NAME, environment=search)
    fail_to_update(elsewhere, bench, serial)
    elsewhere.press("Finish")
    assert elsewhere.wait_for_end() == 0
    update(start(command=NAME, environment=search, cwd=bin_dir), bench, serial)


def test_another_working_directory(bench, start, serial):
    update(start(cwd="/"), bench, serial)


def test_working_directory_that_cannot_be_written(bench, start, serial):
    # Nobody can create a file there, not even root; the scratch file then reads as "not installed".
    bench.run("companion", "install")
    program = start(cwd="/proc")
    screen = program.see_models("Pebble")
    assert screen.warning is None
    update(program, bench, serial)


def test_qt_options(bench, start, serial):
    program = start("-style", "fusion", "-geometry", "400x400+20+20")
    program.see_models("Pebble")
    update(program, bench, serial)


def test_no_plug_in_is_loaded_after_the_start(bench, start, bin_dir, directory, serial):
    before = start()
    before.see_models("Pebble")
    plugins = plugin_directory(before.mapped_files())
    before.stop()

    # Plug-ins that Qt would take for its pictures, beside the program and where the environment says.
    beside, named = directory / "beside", directory / "named"
    for place in (beside, named):
        for kind in ("imageformats", "iconengines"):
            if (plugins / kind).is_dir():
                shutil.copytree(plugins / kind, place / kind)
    copy_program(bin_dir, beside)
    assert any(beside.glob("imageformats/*.so"))

    program = start(command=beside / NAME, environment={"QT_PLUGIN_PATH": str(named)})
    program.see_models("Pebble")
    at_start = program.mapped_files()
    update(program, bench, serial)
    bench.run("replug", serial)
    program.see_success("Pebble")
    mapped = program.mapped_files()
    assert not [file for file in mapped if file.startswith((str(beside / "i"), str(named)))]
    assert {file for file in mapped - at_start if "/plugins/" in file} == set()


def test_place_that_path_cannot_name(start, bin_dir, bench, directory):
    # Its own tools would be run in the place of those of the bench.
    place = directory / "a:colon"
    place.mkdir()
    copy_program(bin_dir, place)
    program = start(command=place / NAME)
    assert program.wait_for_end() == 1
    (line,) = (directory / "output0.txt").read_text().splitlines()
    assert str(place) in line and "colon" in line


def copy_program(bin_dir, place):
    shutil.copy(bin_dir / NAME, place)
    shutil.copytree(bin_dir / "host-tools", place / "host-tools", symlinks=True)
    for image in bin_dir.glob("*.tfw"):
        shutil.copy(image, place)


def plugin_directory(mapped):
    """Where Qt's own plug-ins lie, by the one that every program needs."""
    (platform,) = [file for file in mapped if file.endswith("/platforms/libqxcb.so")]
    return pathlib.Path(platform).parent.parent
