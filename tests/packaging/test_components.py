"""The two components of the installed tree, which become two packages."""

import json
import os

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


def test_no_file_is_in_both(prefix, tmp_path):
    for component in ("program", "bench"):
        install(tmp_path / component, "--component", component)
    program, bench = files(tmp_path / "program"), files(tmp_path / "bench")
    assert program & bench == set()
    assert program | bench == files(prefix)
    models = json.loads(Bench(prefix / "bin/drive-bench", tmp_path / "none").run("models", "--json"))["models"]
    assert len([file for file in program if file.endswith(".tfw")]) == len(models)
    assert not [file for file in bench if file.endswith(".tfw")]


def test_every_command_has_a_manual_page(prefix):
    pages = {page.removesuffix(".1.gz") for page in os.listdir(prefix / "share/man/man1")}
    assert set(os.listdir(prefix / "bin")) == pages
