# SPDX-License-Identifier: MIT
"""Every text can be read on a dark desktop, measured on the screenshot's pixels."""

import os

import pytest
from conftest import FAST, SLOW
from waiting import ExpectationFailed

CONTRAST = 7  # what a text of the program needs at least; black on white has 21
DESKTOP_CONTRAST = 4.5  # in a window that has the colours of the desktop
QT = os.environ.get("TARVO_QT", "6")

# The colours of a dark palette in the order of Qt's colour roles; the text colours come from the group.
ROLES = ("{0} #31363b #454c52 #3a4147 #1a1d20 #26292d {0} #ffffff {0} #232629 #31363b #141618 #3daee9 #eff0f1 #2980b9 "
         "#7f8c8d #31363b #000000 #31363b #eff0f1 #a0a0a0")
GROUPS = {"active": "#eff0f1", "disabled": "#6e7175", "inactive": "#eff0f1"}


def gtk(_):
    # Without GTK's own bridge, which would put a second, empty program on the accessibility bus.
    return {"QT_QPA_PLATFORMTHEME": "gtk3", "GTK_THEME": "Adwaita:dark", "NO_AT_BRIDGE": "1"}, "libqgtk3.so"


def configuration_tool(directory):
    """The desktop-independent settings of Qt, with a palette of their own."""
    tool = f"qt{QT}ct"
    settings = directory / "config" / tool
    settings.mkdir(parents=True)
    colours = [f"{group}_colors={', '.join(ROLES.format(text).split())}" for group, text in GROUPS.items()]
    (settings / "dark.conf").write_text("\n".join(["[ColorScheme]", *colours]))
    (settings / f"{tool}.conf").write_text(
        f"[Appearance]\ncustom_palette=true\ncolor_scheme_path={settings}/dark.conf\nstyle=Fusion\n"
    )
    return {"QT_QPA_PLATFORMTHEME": tool, "XDG_CONFIG_HOME": str(directory / "config")}, f"lib{tool}.so"


THEMES = [gtk, configuration_tool]


@pytest.fixture(params=THEMES, ids=lambda theme: theme.__name__)
def start_dark(request, start, directory):
    """Starts a program on a dark desktop."""
    environment, plug_in = request.param(directory)

    def start_program(*arguments, **options):
        program = start(*arguments, environment=environment, **options)
        program.wait_for(lambda screen: screen.windows, "a window")
        assert program.has_loaded(plug_in)
        return program

    return start_program


def luminance(colour):
    red, green, blue = (
        part / 12.92 if part <= 0.04045 else ((part + 0.055) / 1.055) ** 2.4
        for part in (channel / 255 for channel in colour[:3])
    )
    return 0.2126 * red + 0.7152 * green + 0.0722 * blue


def contrast(picture):
    """The contrast of a text: between the colour of the most pixels and the colour that differs most from it."""
    colours = sorted(picture.convert("RGB").getcolors(picture.width * picture.height), reverse=True)
    luminances = [luminance(colour) for _, colour in colours]
    background = luminances[0]
    return max((max(background, other) + 0.05) / (min(background, other) + 0.05) for other in luminances)


def text_box(node):
    """Where a text is; a button's picture is in its left half, and its frame is no text either."""
    left, top, right, bottom = node.box
    if node.role == "label":
        return left, top, right, bottom
    return (left + right) // 2, top + 5, right - 5, bottom - 5


def check_legible(desktop, program, least=CONTRAST):
    """Fails unless each text that is not disabled has that contrast."""
    illegible = None

    def all_are_legible(screen):
        nonlocal illegible
        picture = desktop.screenshot()
        labels = [node for node in screen.root.all() if node.role == "label" and node.name]
        texts = [node for node in labels + screen.root.buttons if node.enabled]
        found = {node.name: round(contrast(picture.crop(text_box(node))), 1) for node in texts}
        illegible = {name: value for name, value in found.items() if value < least}
        return found and not illegible

    try:
        program.wait_for(all_are_legible, "every text legible", timeout=10)
    except ExpectationFailed:
        raise ExpectationFailed(f"contrast below {least}: {illegible}") from None


def test_update(bench, desktop, start_dark):
    bench.add("Pebble", serial="TV1", firmware="1.00", rate=SLOW)
    bench.add("Skiff", serial="TV2")
    bench.add("Harbour Duo", serial="TV3")
    bench.fault("TV3", "report", "chipsetType=0")
    program = start_dark()
    program.see_models("Pebble", "Skiff", "Harbour Duo")
    check_legible(desktop, program)
    program.press("Update Firmware")
    program.see_confirmation("Pebble")
    check_legible(desktop, program)
    program.press("Update Firmware")
    program.see_progress("Pebble")
    check_legible(desktop, program)
    program.see_restart("Pebble")
    check_legible(desktop, program)
    bench.run("replug", "TV1")
    program.see_success("Pebble")
    check_legible(desktop, program)


def test_failure(bench, desktop, start_dark):
    bench.add("Pebble", serial="TV1", firmware="1.00", rate=FAST)
    bench.fault("TV1", "verify-error")
    program = start_dark()
    program.begin_update("Pebble")
    program.see_failure("Pebble")
    check_legible(desktop, program)


def test_no_drive(desktop, start_dark):
    program = start_dark()
    program.see_no_drive()
    check_legible(desktop, program)


def test_companion_warning(bench, desktop, start_dark):
    bench.run("companion", "install")
    program = start_dark()
    program.see_warning()
    check_legible(desktop, program, DESKTOP_CONTRAST)


def test_panel(bench, bin_dir, desktop, start_dark):
    bench.add("Pebble", serial="TV1")
    panel = start_dark(command=bin_dir / "drive-bench-panel")
    panel.see("Pebble")
    check_legible(desktop, panel)
