# SPDX-License-Identifier: MIT
"""The components of the installed tree, each of which becomes a package."""

import itertools
import json
import os
import subprocess

from bench import Bench
from conftest import NAME, install


def test_program_without_the_bench(start, tmp_path):
    place = tmp_path / "program only"
    install(place, "--component", "program")
    assert os.listdir(place / "bin") == [NAME]
    program = start(str(place / "bin" / NAME))
    program.see_no_drive()


def files(place):
    return {os.path.relpath(os.path.join(directory, name), place) for directory, _, names in os.walk(place) for name in names}


def test_command_without_the_bench_and_a_display(person, tmp_path):
    place = tmp_path / "command only"
    install(place, "--component", "command")
    assert os.listdir(place / "bin") == ["tarvo-firmware"]
    done = subprocess.run([place / "bin/tarvo-firmware", "list"], env={"HOME": str(person.home), "PATH": "/usr/bin:/bin"},
                          capture_output=True, text=True)
    assert (done.returncode, done.stdout) == (0, "No drive is attached.\n")


def test_every_file_is_in_one_component(prefix, tmp_path):
    found = {}
    for component in ("program", "command", "images", "bench"):
        install(tmp_path / component, "--component", component)
        found[component] = files(tmp_path / component)
    for one, other in itertools.combinations(found.values(), 2):
        assert one & other == set()
    assert set().union(*found.values()) == files(prefix)
    models = json.loads(Bench(prefix / "bin/drive-bench", tmp_path / "none").run("models", "--json"))["models"]
    images = [(component, file) for component in found for file in found[component] if file.endswith(".tfw")]
    assert {component for component, _ in images} == {"images"}
    assert len(images) == len(models)


def test_every_command_has_a_manual_page(prefix):
    pages = {page.removesuffix(".1.gz") for page in os.listdir(prefix / "share/man/man1")}
    assert set(os.listdir(prefix / "bin")) == pages
