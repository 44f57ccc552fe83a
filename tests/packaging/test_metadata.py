# SPDX-License-Identifier: MIT
"""What tells desktops, package managers and macOS about the program."""

import os
import plistlib
import re
import struct
import subprocess
import xml.etree.ElementTree

import pytest
from conftest import BUILD, SOURCE
from PIL import Image

GENERATED = BUILD / "packaging/linux"
LINUX = SOURCE / "packaging/linux"


@pytest.fixture(scope="session")
def version(cache):
    return cache["CMAKE_PROJECT_VERSION"]


def checked(*command):
    """What a command printed that succeeded."""
    done = subprocess.run(command, capture_output=True, text=True, env={**os.environ, "LC_ALL": "C.UTF-8"})
    assert done.returncode == 0, done.stdout + done.stderr
    return done.stdout + done.stderr


@pytest.mark.parametrize("name", ["com.tarvo.firmwareupdater", "com.tarvo.drivebench"])
def test_desktop_entry_is_valid(name):
    assert checked("desktop-file-validate", LINUX / f"{name}.desktop") == ""


def test_metadata_is_valid():
    file = GENERATED / "com.tarvo.firmwareupdater.metainfo.xml"
    assert checked("appstreamcli", "validate", "--pedantic", "--no-net", file) == "✔ Validation was successful.\n"


def test_screenshots_have_the_size_that_is_told():
    root = xml.etree.ElementTree.parse(GENERATED / "com.tarvo.firmwareupdater.metainfo.xml").getroot()
    images = root.findall("./screenshots/screenshot/image")
    assert len(images) == 3
    for image in images:
        file = SOURCE / "docs/screenshots" / image.text.rsplit("/", 1)[1]
        assert Image.open(file).size == (int(image.get("width")), int(image.get("height")))


def test_versions_agree(version):
    heading = re.search(r"^## \[([0-9.]+)\] - (\S+)$", (SOURCE / "CHANGELOG.md").read_text(), re.MULTILINE)
    assert heading[1] == version
    root = xml.etree.ElementTree.parse(GENERATED / "com.tarvo.firmwareupdater.metainfo.xml").getroot()
    newest = root.find("./releases/release")
    assert (newest.get("version"), newest.get("date")) == (version, heading[2])
    release = re.search(r'CPACK_DEBIAN_PACKAGE_RELEASE "(\d+)"', (BUILD / "CPackConfig.cmake").read_text())[1]
    for component in ("program", "command", "images", "bench"):
        changelog = GENERATED / component / "changelog.Debian"
        told = checked("dpkg-parsechangelog", "--file", changelog, "--show-field", "Version")
        assert told == f"{version}-{release}\n"
    assert f'"{version}"' in (BUILD / "generated/Version.h").read_text()


def test_lines_of_the_changelog_fit_a_debian_changelog():
    for line in (SOURCE / "CHANGELOG.md").read_text(encoding="utf-8").splitlines():
        assert len(line) <= 78, line


@pytest.mark.parametrize(
    "page", ["program/tarvo-firmware-updater.1", "command/tarvo-firmware.1", "bench/drive-bench.1",
             "bench/drive-bench-panel.1"]
)
def test_manual_page_has_no_warnings(page, version):
    text = checked("groff", "-man", "-Tutf8", "-rLL=80n", "-ww", "-P-c", GENERATED / page)
    assert f"Tarvo Firmware Updater {version}" in text


@pytest.mark.parametrize("size", [16, 22, 24, 32, 48, 64, 128, 256, 512])
@pytest.mark.parametrize("name", ["com.tarvo.firmwareupdater", "com.tarvo.drivebench"])
def test_desktop_icon(name, size):
    picture = Image.open(LINUX / f"icons/{size}x{size}/apps/{name}.png")
    assert picture.size == (size, size)
    assert picture.convert("RGBA").getpixel((0, 0))[3] == 0, "the corners are clear"


def test_property_list_of_the_bundle(cache, version):
    with open(BUILD / "packaging/macos/Info.plist", "rb") as file:
        assert plistlib.load(file) == {
            "CFBundleDevelopmentRegion": "en",
            "CFBundleDisplayName": "Tarvo Firmware Updater",
            "CFBundleExecutable": "Tarvo Firmware Updater",
            "CFBundleIconFile": "TarvoLogo.icns",
            "CFBundleIdentifier": "com.tarvo.firmwareupdater",
            "CFBundleInfoDictionaryVersion": "6.0",
            "CFBundleName": "Tarvo Updater",
            "CFBundlePackageType": "APPL",
            "CFBundleShortVersionString": version,
            "CFBundleVersion": version,
            "LSApplicationCategoryType": "public.app-category.utilities",
            "LSMinimumSystemVersion": cache["CMAKE_OSX_DEPLOYMENT_TARGET"],
            "NSHighResolutionCapable": True,
            "NSHumanReadableCopyright": "Copyright (c) 2026 The Tarvo Firmware Updater developers",
            "NSPrincipalClass": "NSApplication",
            "NSRequiresAquaSystemAppearance": True,
        }
    assert (cache["CMAKE_OSX_DEPLOYMENT_TARGET"], version.count(".")) == ("11.0", 2)


def test_icon_of_the_bundle():
    """Every image of the icon has the size that its type promises, up to what a dense screen shows."""
    data = (SOURCE / "resources/TarvoLogo.icns").read_bytes()
    assert data[:4] == b"icns"
    assert struct.unpack(">I", data[4:8])[0] == len(data)
    widths, position = {}, 8
    while position < len(data):
        kind, length = data[position:position + 4], struct.unpack(">I", data[position + 4:position + 8])[0]
        content = data[position + 8:position + length]
        if content[:8] == b"\x89PNG\r\n\x1a\n":
            widths[kind.decode()] = struct.unpack(">II", content[16:24])
        position += length
    assert position == len(data)
    assert widths == {"ic11": (32, 32), "ic12": (64, 64), "ic07": (128, 128), "ic13": (256, 256),
                      "ic08": (256, 256), "ic14": (512, 512), "ic09": (512, 512)}
