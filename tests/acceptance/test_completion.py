"""Completion of drive-bench as a person has it: in a bash on a terminal, with the Tab key."""

import os
import pathlib
import pty
import select
import time

import pytest
from waiting import TIMEOUT

SCRIPT = pathlib.Path(__file__).resolve().parents[2] / "bench/completions/drive-bench.bash"
END = "that was all"
TAB, LINE_START = b"\t", b"\x01"


def words_after_tab(typed, bench, bin_dir):
    """The words of the command line in which that was typed and then Tab."""
    environment = {"PATH": f"{bin_dir}:{os.environ['PATH']}", "TARVO_BENCH": bench.directory, "TERM": "dumb",
                   "HOME": bench.directory, "LC_ALL": "C.UTF-8"}
    process, terminal = pty.fork()
    if process == 0:
        os.execvpe("bash", ["bash", "--norc", "--noprofile", "-i"], environment)
    try:
        os.write(terminal, f"bind 'set enable-bracketed-paste off'; source {SCRIPT}; PS1=ready:\n".encode())
        read_until(terminal, "ready:")
        os.write(terminal, typed.encode() + TAB)
        # What was typed becomes the arguments of a command that prints each word by itself.
        os.write(terminal, LINE_START + b"printf '<%s>' " + b"\x05; echo; echo 'that was' all\n")
        printed = read_until(terminal, "\n" + END)
        return printed[printed.rindex("\n<drive-bench>") + 1 :].split("\r\n")[0][1:-1].split("><")[1:]
    finally:
        os.close(terminal)
        os.waitpid(process, 0)


def read_until(terminal, text):
    deadline = time.monotonic() + TIMEOUT
    read = ""
    while text not in read:
        assert time.monotonic() < deadline, f"no {text!r} in {read!r}"
        if select.select([terminal], [], [], 1)[0]:
            read += os.read(terminal, 4096).decode()
    return read


@pytest.mark.parametrize(
    "typed, words",
    [
        ("drive-bench com", ["companion"]),
        ("drive-bench image b", ["image", "build"]),
        ("drive-bench add Lam", ["add", "Lamina"]),
        (r"drive-bench add Lamina\ Slim\ S", ["add", "Lamina Slim SSD"]),
        ('drive-bench add "Lamina Slim S', ["add", "Lamina Slim SSD"]),
        ("drive-bench add 'Harbour F", ["add", "Harbour FireWire"]),
        (r"drive-bench add Harbour\ \(", ["add", "Harbour (FireWire 800)"]),
        ("drive-bench plug TV", ["plug", "TV 1"]),
        (r"drive-bench plug TV\ ", ["plug", "TV 1"]),
        ("drive-bench plug b", ["plug", r"b\xE9"]),
        (r"drive-bench fault TV\ 1 no", ["fault", "TV 1", "no-return"]),
        (r"drive-bench fault TV\ 1 text mod", ["fault", "TV 1", "text", "modelName="]),
        (r"drive-bench fault TV\ 1 chipset m", ["fault", "TV 1", "chipset", "m"]),
        (r"drive-bench clear TV\ 1 ", ["clear", "TV 1", "slow-probe"]),
        ("drive-bench add Pebble --ra", ["add", "Pebble", "--rate"]),
    ],
)
def test_completion(bench, bin_dir, typed, words):
    bench.add("Pebble", serial="TV 1")
    bench.add("Pebble", serial=r"b\xE9")
    bench.fault("TV 1", "slow-probe", 100)
    assert words_after_tab(typed, bench, bin_dir) == words
