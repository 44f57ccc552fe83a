# SPDX-License-Identifier: MIT
"""Every drive-bench command that changes the bench changes what a running program shows."""

import resource
import subprocess


def test_what_each_command_shows(bench, start):
    newest, _ = bench.newest("Pebble")
    program = start()
    program.see_no_drive()
    bench.run("add", "Pebble", "--serial", "TV1")
    program.see("Tarvo Pebble", f"(firmware version: {newest} )")
    bench.run("add", "Lamina", "--serial", "TV2", "--firmware", "1.00")
    program.see_models("Pebble", "Lamina")
    bench.run("unplug", "TV1")
    program.see_models("Lamina")
    bench.run("plug", "TV1")
    program.see_models("Pebble", "Lamina")
    bench.run("remove", "TV2")
    program.see_models("Pebble")

    bench.run("fault", "TV1", "report", "firmwareVersion=1.00")
    program.see("(firmware version: 1.00 )")
    bench.run("clear", "TV1")
    program.see(f"(firmware version: {newest} )")

    # What a fault does at power-up shows after a restart, by the cable or by the button.
    bench.run("fault", "TV1", "new-serial", "TV9")
    bench.run("replug", "TV1")
    bench.run("fault", "TV1", "no-return")
    program.see_models("Pebble")
    bench.run("power-cycle", "TV1")
    program.see_no_drive()
    bench.run("clear", "TV1")
    bench.run("replug", "TV1", "--for", 0)
    program.see_models("Pebble")

    bench.run("init", "--force")
    program.see_models("Pebble", "Bollard USB3", "Lamina Slim", "Harbour (FireWire 800)", "Skiff", "Harbour Duo")

    # The companion product is looked for at each refresh of the window.
    bench.run("companion", "install")
    bench.run("unplug", "TV0005SKIFF")
    program.see_warning()
    program.press("Ok")
    program.wait_for(lambda screen: not screen.warning, "the box gone")
    bench.run("companion", "uninstall")
    bench.run("plug", "TV0005SKIFF")
    program.see("Tarvo Skiff")


def test_newer_image_makes_a_drive_outdated(bench, start):
    serial = bench.add("Skiff", serial="TV1")
    newest, configuration = bench.newest("Skiff")
    program = start()
    program.see(f"(firmware version: {newest} )")

    bench.run("image", "build", "Skiff", "--firmware", "9.99")
    program.see(f"(firmware version: {newest} => 9.99 )", "Firmware: Update required!")
    program.begin_update("Skiff")
    program.see_restart("Skiff")
    assert bench.flash(serial) == ("9.99", configuration)
    bench.run("replug", serial)
    program.see("Firmware: Up to date.", "Finish")


def test_command_with_too_little_memory(bench, bin_dir, directory):
    document = directory / "large.json"
    document.write_text("[" * (8 << 20))
    limit = 60_000 << 10
    done = subprocess.run([bin_dir / "drive-bench", "init", "--force", "--from", document, "--bench", bench.directory],
                          capture_output=True, text=True,
                          preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (limit, limit)))
    assert (done.returncode, done.stderr) == (1, "drive-bench: there is not enough memory\n")


def test_clock_before_1970(bench, bin_dir):
    bench.add("Pebble", serial="TV1")
    early = ["faketime", "-f", "1960-01-01 00:00:00", bin_dir / "drive-bench"]
    subprocess.run([*early, "unplug", "TV1", "--bench", bench.directory], check=True)
    subprocess.run([*early, "add", "Skiff", "--serial", "TV2", "--bench", bench.directory], check=True)
    assert [drive["state"] for drive in bench.drives().values()] == ["unplugged", "ready"]
