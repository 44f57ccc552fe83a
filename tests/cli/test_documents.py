# SPDX-License-Identifier: MIT
"""Help, the manual page, completions and the guide say the same as the command does."""

import pathlib
import re
import shlex
import subprocess

import pytest

SOURCE = pathlib.Path(__file__).resolve().parents[2]
COMMANDS = ["list", "update", "report"]


def options_of(command, name):
    return set(re.findall(r"--[a-z-]+", command.run(name, "--help").output.split("Examples:")[0]))


@pytest.mark.parametrize("name", COMMANDS)
def test_help(command, name):
    text = command.run(name, "--help").output
    assert f"tarvo-firmware {name} [options]" in text and f"Examples:\n  tarvo-firmware {name}" in text
    assert command.run(name, "-h").output == text
    assert options_of(command, name) >= {"--help", "--timeout"}


def test_help_and_version(command):
    text = command.run("--help").output
    for name in COMMANDS:
        assert f"\n  {name} " in text
    assert re.search(r"^  4  .*Quaydesk", text, re.MULTILINE)
    assert command.run("-h").output == text
    version = re.search(r"project\(TarvoFirmwareUpdater VERSION (\S+)", (SOURCE / "CMakeLists.txt").read_text())[1]
    assert command.run("--version").output == command.run("-v").output == f"tarvo-firmware {version}\n"


@pytest.mark.parametrize("name", COMMANDS)
def test_documents_name_every_option(command, name):
    manual = (SOURCE / "cli/tarvo-firmware.1.in").read_text().replace("\\-", "-")
    guide = (SOURCE / "docs/command.md").read_text()
    for option in options_of(command, name):
        assert option in manual and option in guide, option
        assert option in complete(command, name, option)
    zsh = (SOURCE / "cli/completions/_tarvo-firmware").read_text()
    assert options_of(command, name) <= set(re.findall(r"--[a-z-]+", zsh))


def test_manual_is_clean(tmp_path):
    page = SOURCE / "cli/tarvo-firmware.1.in"
    done = subprocess.run(["groff", "-man", "-Tutf8", "-ww", "-z", page], capture_output=True, text=True, check=True)
    assert done.stderr == ""


def complete(command, *words):
    """What bash offers for the last of the words."""
    script = ('source "$0"; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _tarvo_firmware "$1"; '
              'printf "%s\\n" "${COMPREPLY[@]}"')
    done = subprocess.run(["bash", "-c", script, SOURCE / "cli/completions/tarvo-firmware.bash", command.program, *words],
                          capture_output=True, text=True, check=True, env=command.environment)
    return done.stdout.split()


def test_completion(command, outdated):
    outdated("Pebble", "Lamina")
    assert complete(command, "") == [*COMMANDS, "--help", "--version"]
    assert complete(command, "update", "") == ["TV1", "TV2"]
    assert complete(command, "update", "--on") == ["--on-battery"]


def test_zsh_completion_is_valid():
    subprocess.run(["zsh", "-n", SOURCE / "cli/completions/_tarvo-firmware"], check=True)


def test_recording(bench, command):
    """The recording in the guide is what the command prints, but for times."""
    guide = (SOURCE / "docs/command.md").read_text()
    prepare, recorded = re.search(r"```sh\n(drive-bench.*?)```.*?```text\n(.*?)```", guide, re.DOTALL).groups()
    for line in prepare.splitlines()[1:]:  # the bench is there already
        bench.run(*shlex.split(line)[1:])
    terminal = command.terminal("update", "--all").wait_for("[y/N] ")
    terminal.type("y\n")
    assert terminal.wait_for_end() == 1
    printed = [re.sub(r"\d+ s$", "2 s", line) for line in terminal.lines if "going to sleep" not in line]
    assert printed[:-1] == recorded.splitlines()[1:]
