# SPDX-License-Identifier: MIT
"""A copy of the sources with a build of its own, in which mutants are built and tested."""

import json
import os
import pathlib
import shutil
import subprocess
import threading
import time

PRESET = "mutation"
# In namespaces of its own a test sees no process but those that it started, and they end with it. A mutant may kill
# the wrong process, or have an endless loop that takes all the memory (limited to 4 GiB).
ALONE = ["unshare", "--pid", "--fork", "--kill-child", "--mount-proc"]
ALONE += ["--map-root-user"] if os.geteuid() != 0 else []
ALONE += ["sh", "-c", 'ulimit -v 4194304; "$@"; exit $?', "sh"]


class Failed(Exception):
    pass


class Tree:
    def __init__(self, root, directory):
        self.root = root
        self.directory = directory
        self.build_directory = directory / "build" / PRESET
        self.seconds = {}  # that each test takes on the unchanged sources

    def prepare(self, test_directories):
        """Brings the copy up to date, builds the tests and runs each of them once."""
        self.copy_sources()
        self.command("cmake", "--preset", PRESET)
        self.command("ninja", "-C", self.build_directory, *[f"{name}/all" for name in test_directories])
        for test in self.tests(test_directories):
            started = time.monotonic()
            # Once more: a busy machine can fail a test that keeps time.
            if self.run(test, 600) != "passed" and (output := self.run(test, 600)) != "passed":
                raise Failed(f"{test['name']} fails on the unchanged sources: {output}")
            self.seconds[test["name"]] = time.monotonic() - started

    def copy_sources(self):
        listing = ["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"]
        names = subprocess.run(listing, cwd=self.root, stdout=subprocess.PIPE, check=True, text=True).stdout
        wanted = {pathlib.Path(name) for name in names.split("\0") if name and (self.root / name).is_file()}
        for name in wanted:
            source, copy = self.root / name, self.directory / name
            if not copy.is_file() or copy.read_bytes() != source.read_bytes():
                copy.parent.mkdir(parents=True, exist_ok=True)
                shutil.copyfile(source, copy)
                copy.chmod(source.stat().st_mode)
        for copy in self.directory.rglob("*"):
            name = copy.relative_to(self.directory)
            if name.parts[0] != "build" and copy.is_file() and name not in wanted:
                copy.unlink()

    def command(self, *command):
        done = subprocess.run(command, cwd=self.directory, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        if done.returncode != 0:
            raise Failed(f"{' '.join(map(str, command))}\n{done.stdout[-4000:]}")

    def tests(self, directories):
        """What CTest says of the tests of these directories, the first directory's first, of each the quickest first."""
        listing = ["ctest", "--test-dir", self.build_directory, "--show-only=json-v1"]
        listed = json.loads(subprocess.run(listing, stdout=subprocess.PIPE, check=True).stdout)["tests"]
        found = []
        for test in listed:
            test["properties"] = {entry["name"]: entry["value"] for entry in test["properties"]}
            directory = str(pathlib.Path(test["properties"]["WORKING_DIRECTORY"]).relative_to(self.build_directory))
            if directory in directories:
                found.append((directories.index(directory), self.seconds.get(test["name"], 0), test["name"], test))
        return [test for *_, test in sorted(found, key=lambda entry: entry[:3])]

    def outcome(self, mutant, text, tests):
        """Builds and tests one mutant: what became of it, and which test said so."""
        path = self.directory / mutant.file
        path.write_text(mutant.apply(text))
        try:
            for test in tests:
                # Only the first build has something to do, unless the mutant is in a header.
                if not self.builds(test):
                    return "not compiled", ""
                result = self.run(test, 10 + 4 * self.seconds[test["name"]])
                if result != "passed":
                    return "timed out" if result == "timed out" else "killed", f"{test['name']}: {result}"
            return "survived", ""
        finally:
            path.write_text(text)

    def builds(self, test):
        program = pathlib.Path(test["command"][0])
        target = program.name if self.build_directory in program.parents else "all"
        command = ["ninja", "-C", self.build_directory, target]
        quiet = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
        return subprocess.run(command, start_new_session=True, **quiet).returncode == 0

    def run(self, test, timeout):
        """Runs a test up to its first failure; "passed", "timed out", or the line that says what failed."""
        temporary = self.directory / "build" / "tmp"
        shutil.rmtree(temporary, ignore_errors=True)
        temporary.mkdir()
        environment = dict(entry.split("=", 1) for entry in test["properties"].get("ENVIRONMENT", []))
        program = subprocess.Popen(
            ALONE + test["command"],
            cwd=test["properties"]["WORKING_DIRECTORY"],
            env={**os.environ, **environment, "TMPDIR": str(temporary)},
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
            errors="replace",
            start_new_session=True,
        )
        late = threading.Timer(timeout, program.kill)
        late.start()
        last = ""
        with program:
            for line in program.stdout:
                last = line.strip() or last
                if line.startswith("FAIL!"):
                    late.cancel()
                    program.kill()
                    return last
        if not late.is_alive():
            return "timed out"
        late.cancel()
        return "passed" if program.returncode == 0 else last
