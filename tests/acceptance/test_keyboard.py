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


def press(program, desktop, name, model=None):
    """Moves the focus to the button with Tab and presses it with Space."""
    program.see(name)
    window_in_front(program)
    for _ in range(20):
        screen = program.look()
        place = screen and (screen.page(model) if model else screen.root)
        if place and any(button.focused and button.name == name for button in place.buttons):
            desktop.type_key("Space")
            return
        tab(program, desktop)
    raise AssertionError(f"Tab does not reach {name!r}")


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
