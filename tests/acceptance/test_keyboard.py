# SPDX-License-Identifier: MIT
"""The keyboard alone: Tab reaches every button of every look, Space presses it, and focus can be seen."""

from conftest import FAST
from PIL import ImageChops
from waiting import wait_until


def focused(program):
    """What has the focus, innermost; None when nothing has it."""
    screen = program.look()
    nodes = [node for node in screen.root.all() if node.focused] if screen else []
    return nodes[-1] if nodes else None


def tab(program, desktop):
    """Presses Tab and returns what has the focus then."""
    before = focused(program)

    def moved():
        now = focused(program)
        return now if now and (before is None or now.path != before.path) else None

    desktop.type_key("Tab")
    return wait_until(moved, "the focus to move on")


def window_in_front(program):
    return program.wait_for(
        lambda screen: screen.windows and screen.windows[0].active and screen.root.buttons, "a window in front"
    )


def walk(program, desktop):
    """Presses Tab until every button had the focus, and checks that each looks different with it."""
    buttons = {button.path: button for button in window_in_front(program).root.buttons}
    at_first = focused(program)
    without_focus = {path: desktop.screenshot(button.box) for path, button in buttons.items()
                     if at_first is None or path != at_first.path}
    reached = set(buttons) - set(without_focus)
    for _ in range(2 * len(buttons) + 2):
        if reached == set(buttons):
            return
        path = tab(program, desktop).path
        if path in buttons and path not in reached:
            wait_until(
                lambda: ImageChops.difference(desktop.screenshot(buttons[path].box), without_focus[path]).getbbox(),
                f"the focus to be seen on {buttons[path].name!r}",
            )
            reached.add(path)
    raise AssertionError(f"Tab reaches only {[buttons[path].name for path in reached]}")


def move_to(program, desktop, name, model=None):
    """Moves the focus to the button with Tab."""
    program.see(name)
    window_in_front(program)
    for _ in range(20):
        screen = program.look()
        place = screen and (screen.page(model) if model else screen.root)
        if place and any(button.focused and button.name == name for button in place.buttons):
            return
        tab(program, desktop)
    raise AssertionError(f"Tab does not reach {name!r}")


def press(program, desktop, name, model=None):
    """Moves the focus to the button with Tab and presses it with Space."""
    move_to(program, desktop, name, model)
    desktop.type_key("Space")


def test_a_complete_update(bench, desktop, start):
    bench.add("Pebble", serial="TV1", firmware="1.00", configuration="1", rate=FAST)
    bench.add("Lamina", serial="TV2", firmware="1.00")
    bench.add("Skiff", serial="TV3", configuration="1")
    bench.add("Harbour", serial="TV4")
    program = start()
    program.see_models("Pebble", "Lamina", "Skiff", "Harbour")
    walk(program, desktop)

    press(program, desktop, "Update Firmware", "Lamina")
    program.see_confirmation("Lamina")
    walk(program, desktop)
    press(program, desktop, "Cancel")
    program.see_models("Pebble", "Lamina", "Skiff", "Harbour")
    press(program, desktop, "Update Configuration", "Skiff")
    program.see_confirmation("Skiff")
    press(program, desktop, "Cancel")

    press(program, desktop, "Update Firmware and Configuration", "Pebble")
    program.see_confirmation("Pebble")
    press(program, desktop, "Update Firmware")
    program.see_restart("Pebble")
    bench.run("replug", "TV1")
    program.see_success("Pebble")
    walk(program, desktop)
    press(program, desktop, "Finish")
    assert program.wait_for_end() == 0


def test_failure_and_close(bench, desktop, start):
    bench.add("Pebble", serial="TV1", firmware="1.00", rate=FAST)
    bench.add("Skiff", serial="TV2")
    bench.fault("TV1", "verify-error")
    program = start()
    program.begin_update("Pebble")
    program.see_failure("Pebble")
    walk(program, desktop)
    press(program, desktop, "Finish")
    assert program.wait_for_end() == 0

    program = start()
    program.see_models("Pebble", "Skiff")
    press(program, desktop, "Close", "Skiff")
    assert program.wait_for_end() == 0


def test_the_companion_warning(bench, desktop, start):
    bench.run("companion", "install")
    program = start()
    program.see_warning()
    walk(program, desktop)
    press(program, desktop, "Ok")
    assert program.wait_for_end() == 0


# Where the focus goes --------------------------------------------------------------------------------------


def see_focus(program, name, model=None):
    """Waits until the button of that name has the focus, on the page of that model where there are several."""

    def has_focus(screen):
        place = screen.page(model) if model else screen.root
        return place and [button for button in place.buttons if button.name == name and button.focused]

    return program.wait_for(has_focus, f"the focus on {name!r}" + (f" of {model}" if model else ""), timeout=10)


def test_focus_in_every_look(bench, desktop, start):
    """An update without the Tab key but for the one that chooses to flash."""
    bench.add("Pebble", serial="TV1", firmware="1.00", rate=FAST)
    program = start()
    window_in_front(program)
    see_focus(program, "Update Firmware", "Pebble")
    desktop.type_key("Enter")
    program.see_confirmation("Pebble")
    see_focus(program, "Cancel")
    move_to(program, desktop, "Update Firmware")
    desktop.type_key("Enter")
    program.see_restart("Pebble")
    bench.run("replug", "TV1")
    program.see_success("Pebble")
    see_focus(program, "Finish")
    desktop.type_key("Enter")
    assert program.wait_for_end() == 0


def test_focus_after_a_failure(bench, desktop, start):
    bench.add("Pebble", serial="TV1", firmware="1.00", rate=FAST)
    bench.fault("TV1", "verify-error")
    program = start()
    window_in_front(program)
    program.begin_update("Pebble")
    program.see_failure("Pebble")
    see_focus(program, "Finish")


def test_focus_is_kept_by_a_refresh(bench, desktop, start):
    bench.add("Pebble", serial="TV1", firmware="1.00")
    bench.add("Lamina", serial="TV2", firmware="1.00")
    program = start()
    move_to(program, desktop, "Update Firmware", "Lamina")
    bench.add("Skiff", serial="TV3")
    program.see_models("Pebble", "Lamina", "Skiff")
    see_focus(program, "Update Firmware", "Lamina")
    bench.unplug("TV1")
    program.see_models("Lamina", "Skiff")
    see_focus(program, "Update Firmware", "Lamina")


def test_focus_scrolls_and_stays_in_view(bench, desktop, start):
    models = ["Pebble", "Lamina", "Skiff", "Harbour", "Bollard", "Breakwater", "Pebble Mini", "Harbour Duo",
              "Pebble Triple", "Harbour FireWire"]
    for number, model in enumerate(models):
        bench.add(model, serial=f"TV{number:04}", firmware="1.00")
    program = start()
    program.see_models(*models)

    def last_is_in_view(screen):
        page = screen.page(models[-1])
        return page and page.buttons and page.buttons[0].focused and page.box[3] <= screen.window.box[3]

    move_to(program, desktop, "Update Firmware", models[-1])
    before = program.wait_for(last_is_in_view, "the last drive in view", timeout=10)
    bench.fault("TV0000", "report", "firmwareStatus=2")
    program.wait_for(lambda screen: screen.pages and screen.pages[0].path != before.pages[0].path, "a refresh")
    program.wait_for(last_is_in_view, "the last drive still in view", timeout=10)


def test_two_presses_of_space(bench, desktop, start):
    """The second press cancels, so that nobody flashes a drive by holding a key."""
    bench.add("Pebble", serial="TV1", firmware="1.00", rate=FAST)
    program = start()
    window_in_front(program)
    press(program, desktop, "Update Firmware")
    program.see_confirmation("Pebble")
    see_focus(program, "Cancel")
    desktop.type_key("Space")
    program.wait_for(lambda screen: screen.buttons == ["Update Firmware"], "the list of drives")
    bench.wait_for_query("TV1")
    assert bench.progress("TV1") == (0, 0)
    assert bench.flash("TV1")[0] == "1.00"


def test_escape(bench, desktop, start):
    """Escape cancels the confirmation, and does nothing elsewhere."""
    bench.add("Pebble", serial="TV1", firmware="1.00", rate=10_000)
    program = start()
    listed = window_in_front(program)
    desktop.type_key("Escape")
    bench.wait_for_query("TV1")
    assert [page.path for page in program.look().pages] == [page.path for page in listed.pages]

    program.press("Update Firmware")
    program.see_confirmation("Pebble")
    desktop.type_key("Escape")
    program.wait_for(lambda screen: screen.buttons == ["Update Firmware"], "the list of drives", timeout=10)

    program.begin_update("Pebble")
    program.see_progress("Pebble")
    desktop.type_key("Escape")
    program.see_restart("Pebble")
    desktop.type_key("Escape")
    bench.run("replug", "TV1")
    program.see_success("Pebble")
    desktop.type_key("Escape")
    bench.wait_for_query("TV1")
    program.see_success("Pebble")
    assert bench.flash("TV1") == bench.newest("Pebble")
