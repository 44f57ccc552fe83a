# SPDX-License-Identifier: MIT
"""Which sources scripts/changed-sources has clang-tidy read."""

import os
import pathlib
import subprocess

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]


class Clone:
    """A clone with a commit on main that has three sources and a header."""

    def __init__(self, directory):
        self.directory = directory
        self.git("init", "-q", "-b", "main")
        self.change("one.cpp", "two.cpp", "three.cpp", "one.h", ".clang-tidy")
        self.change("two.cpp", text='#include "parts/alone.h"\n')

    def git(self, *arguments):
        identity = ["-c", "user.name=A", "-c", "user.email=a@example.invalid"]
        subprocess.run(["git", *identity, *arguments], cwd=self.directory, check=True, env=self.environment,
                       stdout=subprocess.DEVNULL)

    # Nobody's settings or surrounding clone.
    environment = {"PATH": os.environ["PATH"], "GIT_CONFIG_GLOBAL": "/dev/null", "GIT_CONFIG_SYSTEM": "/dev/null"}

    def change(self, *files, text="changed\n"):
        for file in files:
            path = self.directory / file
            path.parent.mkdir(exist_ok=True)
            with path.open("a") as stream:
                stream.write(text)
        self.git("add", ".")
        self.git("commit", "-q", "-m", "Change")

    def changed_sources(self, *base):
        done = subprocess.run([ROOT / "scripts/changed-sources", *base], cwd=self.directory, env=self.environment,
                              capture_output=True, text=True, check=False)
        assert (done.returncode, done.stderr) == (0, "")
        return done.stdout.split()


@pytest.fixture
def clone(tmp_path):
    return Clone(tmp_path)


def test_since_the_newest_tag(clone):
    clone.change("one.cpp")
    clone.git("tag", "v1")
    clone.change("three.cpp")
    clone.git("tag", "v2")  # of the commit itself: it has been changed since v1
    assert clone.changed_sources() == ["three.cpp"]


def test_on_a_branch_since_it_left_main(clone):
    clone.git("checkout", "-q", "-b", "branch")
    clone.change("three.cpp")
    (clone.directory / "new.cpp").write_text("")
    (clone.directory / "two.cpp").write_text("not committed\n")
    assert clone.changed_sources() == ["new.cpp", "three.cpp", "two.cpp"]


def test_on_main_without_a_tag(clone):
    assert clone.changed_sources() == ["one.cpp", "three.cpp", "two.cpp"], "all of the few commits"
    for _ in range(30):
        clone.change("three.cpp")
    assert clone.changed_sources() == ["three.cpp"]


def test_since_a_commit_that_is_named(clone):
    clone.change("one.cpp")
    clone.change("three.cpp")
    assert clone.changed_sources("HEAD~1") == ["three.cpp"]


@pytest.mark.parametrize(
    "files, sources",
    [
        (["one.h"], ["one.cpp"]),
        (["parts/alone.h"], ["two.cpp"]),
        (["unused.h", "README.md"], []),
        ([".clang-tidy"], ["one.cpp", "three.cpp", "two.cpp"]),
    ],
)
def test_what_a_change_is_seen_in(clone, files, sources):
    clone.change(*files)
    assert clone.changed_sources("HEAD~1") == sources


def test_a_source_that_was_removed_is_not_read(clone):
    clone.git("rm", "-q", "one.cpp")
    clone.change("three.cpp")
    assert clone.changed_sources("HEAD~1") == ["three.cpp"]
