# SPDX-License-Identifier: MIT
"""What the documents say of the scripts and the presets is what these are."""

import json
import pathlib
import re

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
DOCUMENTS = [*ROOT.glob("*.md"), *ROOT.glob("docs/*.md")]
BUILDING = (ROOT / "docs/building.md").read_text(encoding="utf-8")
PRESETS = json.loads((ROOT / "CMakePresets.json").read_text(encoding="utf-8"))


def test_every_preset_is_explained():
    table = BUILDING.split("## Presets")[1].split("\n## ")[0]
    names = [preset["name"] for preset in PRESETS["configurePresets"] if not preset.get("hidden")]
    assert sorted(re.findall(r"^\| `([a-z0-9-]+)`", table, re.MULTILINE)) == sorted(names)


def test_each_preset_has_a_directory_of_its_own():
    (base, *others) = PRESETS["configurePresets"]
    assert base["binaryDir"] == "${sourceDir}/build/${presetName}"
    assert [preset["name"] for preset in others if "binaryDir" in preset] == []


def test_every_option_of_cmake_is_explained():
    options = re.findall(r"^(?:option\(|set\()(TARVO_\w+).*?(?:CACHE|\")", (ROOT / "CMakeLists.txt").read_text(),
                         re.MULTILINE)
    table = BUILDING.split("## Options")[1]
    assert [option for option in options if f"`{option}`" not in table] == []


def test_every_package_that_the_scripts_install_is_named():
    installed = set()
    for script in ("run", "test", "package", "scripts/setup.sh"):
        text = (ROOT / script).read_text().replace("\\\n", " ")
        for words in re.findall(r"(?:install_build_tools|install_packages) (.*)|_packages=\(([^)]*)\)", text):
            installed |= {word for word in " ".join(words).split() if re.fullmatch(r"[a-z0-9+.-]+", word)}
    assert installed - set(re.findall(r"[a-z0-9+.-]+", BUILDING)) == set()


@pytest.mark.parametrize("script", ["run", "test"])
def test_every_option_of_a_script_is_explained(script):
    usage = re.search(r"<<'TEXT'\n(.*?)\nTEXT", (ROOT / script).read_text(), re.DOTALL)[1]
    documents = (ROOT / "CONTRIBUTING.md").read_text() + (ROOT / "README.md").read_text()
    for option in re.findall(r"^  (--[a-z-]+)", usage, re.MULTILINE):
        assert f"./{script} {option}" in documents, option


@pytest.mark.parametrize("document", DOCUMENTS, ids=lambda file: file.name)
def test_presets_and_options_that_a_document_names(document):
    text = document.read_text(encoding="utf-8")
    presets = {preset["name"] for preset in PRESETS["configurePresets"]}
    assert set(re.findall(r"--preset ([a-z0-9-]+)", text)) <= presets
    for script, option in re.findall(r"\./(run|test) (--[a-z-]+)", text):
        assert re.search(rf"^  {option}\b", (ROOT / script).read_text(), re.MULTILINE), option
