# SPDX-License-Identifier: MIT
"""The machine stays awake while a chip is written, and a low battery is refused: services of the system bus."""

import os
import shutil

import dbusmock
import pytest
from command import is_whole, wait_for_writing
from conftest import SLOW
from waiting import wait_until

LOGIND = ("org.freedesktop.login1", "/org/freedesktop/login1", "org.freedesktop.login1.Manager")
LOCK = ("sleep:shutdown:idle:handle-lid-switch", "tarvo-firmware", "The firmware of a drive is being written", "block")


class SystemBus(dbusmock.DBusTestCase):
    """A bus of this test alone, with what the templates of dbusmock stand in for."""

    def __init__(self):
        super().__init__()
        self.start_system_bus()
        self.bus = self.get_dbus(system_bus=True)
        self.servers = []

    def serve(self, template, parameters):
        server, service = self.spawn_server_template(template, parameters, stdout=None)
        self.servers.append(server)
        return service

    def locks(self):
        manager = dbusmock.mockobject.dbus.Interface(self.bus.get_object(*LOGIND[:2]), LOGIND[2])
        return [tuple(map(str, lock[:4])) for lock in manager.ListInhibitors()]

    def close(self):
        for server in self.servers:
            server.terminate()
            server.wait()
        self.tearDownClass()


@pytest.fixture
def system_bus(command):
    bus = SystemBus()
    command.environment["DBUS_SYSTEM_BUS_ADDRESS"] = os.environ["DBUS_SYSTEM_BUS_ADDRESS"]
    yield bus
    bus.close()


@pytest.mark.parametrize("end", ["success", "failure", "interrupted", "killed"])
def test_wake_lock(bench, command, outdated, system_bus, end):
    outdated("Pebble", "Lamina", rate=SLOW)
    system_bus.serve("logind", {})
    if end == "failure":
        bench.fault("TV1", "flash-error", 30000)
    process = command.start("update", "TV1", "TV2", "--yes", "--wait=4")
    for serial in ("TV1", "TV2"):
        wait_for_writing(bench, serial)
        assert system_bus.locks() == [LOCK]
        if end in ("interrupted", "killed"):
            process.terminate() if end == "interrupted" else process.kill()
            break
    wait_until(lambda: not system_bus.locks(), "the lock is given back")
    if end == "success":
        assert is_whole(bench, "TV2", "3.20") and process.poll() is None, "it waits without the lock"
    _, errors = process.communicate(timeout=20)
    assert "going to sleep" not in errors


@pytest.mark.parametrize("service", ["no bus", "no logind"])
def test_no_logind(bench, command, outdated, request, service):
    if service == "no logind":
        request.getfixturevalue("system_bus")
    outdated("Harbour FireWire")
    (line,) = command.run("update", "TV1", "--yes").errors.splitlines()
    assert line.startswith("tarvo-firmware: nothing keeps this machine from going to sleep meanwhile: ")
    assert is_whole(bench, "TV1", "1.31")


def test_no_library(bench, command, outdated, bin_dir, tmp_path):
    outdated("Harbour FireWire")
    for name in ("tarvo-firmware", "harbour-firewire.tfw"):
        shutil.copy(bin_dir / name, tmp_path)
    shutil.copytree(bin_dir / "host-tools", tmp_path / "host-tools", symlinks=True)
    (line,) = command.run("update", "TV1", "--yes", program=tmp_path / "tarvo-firmware").errors.splitlines()
    assert line.endswith("meanwhile: the library tarvo-firmware-power does not load")
    assert is_whole(bench, "TV1", "1.31")


@pytest.mark.parametrize("on_battery, charge, options, refused", [
    (True, 19.0, [], True), (True, 20.0, [], False), (False, 5.0, [], False), (True, 5.0, ["--on-battery"], False),
])
def test_battery(bench, command, outdated, system_bus, on_battery, charge, options, refused):
    outdated("Harbour FireWire")
    power = system_bus.serve("upower", {"OnBattery": on_battery})
    power.SetupDisplayDevice(2, 2, charge, 0.0, 0.0, 0.0, 0, 0, True, "", 1)
    process = command.run("update", "TV1", "--yes", *options, status=1 if refused else 0)
    assert ("runs on its battery, which is at 19 %" in process.errors) == refused
    assert bench.drive("TV1")["flashes"] == (0 if refused else 1)
    command.run("update", "TV1", "--dry-run")
