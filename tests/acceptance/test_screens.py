# SPDX-License-Identifier: MIT
"""Screens on which the window does not fit as it is: every button can be reached, by mouse and keyboard."""

import pytest
from desktop import Desktop

SCREENS = [("1024x600", 13, 1), ("1366x768", 9, 1), ("1920x1080", 13, 2), ("800x480", 13, 1)]


@pytest.fixture(params=SCREENS, ids="{0[0]} with {0[1]} drives at factor {0[2]}".format)
def screen(request):
    return request.param


@pytest.fixture
def desktop(screen):
    with Desktop(window_manager=True, size=screen[0]) as desktop:
        yield desktop


def test_the_last_row(bench, desktop, screen, start):
    size, count, factor = screen
    width, height = (int(pixels) // factor for pixels in size.split("x"))
    program = start(environment={"QT_SCALE_FACTOR": str(factor)})
    program.wait_for(lambda screen: screen.window and screen.window.active, "the window where it is put at first")
    for number in range(count):
        bench.add("Pebble", serial=f"TV{number:02}", firmware="1.00")

    def last_button(screen):
        return screen.pages[-1].buttons[0] if len(screen.pages) == count else None

    def is_on_display(screen):
        left, top, right, bottom = last_button(screen).box
        footer = next(node for node in screen.root.all() if node.name.startswith("Orvi"))
        return 0 <= left < right <= width and bottom <= footer.box[1] < footer.box[3] <= height

    def press(node):
        left, top, right, bottom = (factor * edge for edge in node.box)
        desktop.use_mouse((left + right) // 2, (top + bottom) // 2, "b1c")

    program.wait_for(lambda screen: last_button(screen) and screen.window.active, "every drive")
    for _ in range(count - 1):
        desktop.type_key("Tab")
    program.wait_for(lambda screen: last_button(screen).focused and is_on_display(screen), "the last button by Tab")
    desktop.type_key("Enter")
    press(next(button for button in program.see("Cancel").root.buttons if button.name == "Cancel"))

    program.wait_for(last_button, "every drive again")
    desktop.use_mouse(factor * width // 2, factor * height // 2, "abs")
    for _ in range(60):
        desktop.use_mouse(factor * width // 2, factor * height // 2, "b5c")
    press(last_button(program.wait_for(is_on_display, "the last button by the wheel")))
    program.see("Cancel")
