"""The search field, keys and the user's presence on a real X server, seen and driven by outside programs. Run it under
scripts/private-desktop --wm openbox --ime ibus."""

import os
import select
import tempfile
import time
import unittest

from bus_service import Bus, Service
from console_client import keys, rect, run
from host_case import HostCase, screen_size
from x_power import OFF, ON, PowerServer
from x_windows import XServer

FRAME = rect(200, 160, 300, 300)


class InputCase(HostCase):
    def start(self, environment=None):
        super().start(environment)
        self.heard = []

    def told(self, event, source="app"):
        """The arguments of all such events so far."""
        self.heard += [line for line in self.host.take() if "event" in line]
        return [line["args"] for line in self.heard if (line["event"], line["from"]) == (event, source)]

    def until_told(self, event, arguments, source="app"):
        self.host.until(lambda: self.told(event, source) == arguments,
                        lambda: f"{event} is told with {arguments}, not {self.told(event, source)}")


class Search(InputCase):
    NAME = "people"

    def setUp(self):
        self.start()
        self.host.call("host", "openSearch", "people", FRAME)
        self.until_it_has_the_keyboard()

    def part(self, name, view=None):
        """A view of a class, with its frame's place in the content view."""
        view = view or self.read("views")
        if view["class"] == name:
            return view, 0, 0
        for subview in view["subviews"]:
            if found := self.part(name, subview):
                return found[0], found[1] + subview["frame"]["x"], found[2] + subview["frame"]["y"]
        return None

    def click(self, name):
        view, x, y = self.part(name)
        frame, size = self.read("frame"), view["frame"]
        place = (frame["x"] + x + size["width"] / 2, screen_size()[1] - (frame["y"] + y + size["height"] / 2))
        run("xdotool", "mousemove", *(round(value) for value in place), "click", 1)

    def text(self):
        return self.part("TextField")[0]["text"]

    def names(self):
        return self.host.call("host", "found", "people")

    def test_hangul_is_typed_into_it_cleared_and_left(self):
        self.click("TextField")
        self.until_told("focused", [[""]], "search:people")
        self.assertTrue(self.part("NSButton")[0]["hidden"])
        keys("r", "l", "a")
        self.host.until(lambda: self.text() == "김", "the syllable is composed in the field")
        self.assertEqual(self.told("textChanged", "search:people"), [["ㄱ"], ["기"], ["김"]])
        self.assertEqual(self.names()["names"], ["김서연"])
        self.assertFalse(self.part("NSButton")[0]["hidden"])
        keys("space")
        self.host.until(lambda: self.text() == "김 ", "the input method commits it once")

        self.click("NSButton")
        self.host.until(lambda: self.text() == "", "the button clears the text")
        self.assertEqual(self.told("textChanged", "search:people")[-2:], [["김 "], [""]])
        self.assertFalse(self.part("NSButton")[0]["hidden"], "it stays until the text changes")
        keys("s", "k")
        self.host.until(lambda: self.text() == "나", "typing goes on")
        self.click("NSButton")
        self.host.until(lambda: self.text() == "", "what is being composed is cleared too")
        keys("1", "BackSpace")
        self.host.until(lambda: self.part("NSButton")[0]["hidden"], "deleted, the button goes")

        keys("Down", "Down", "Up")
        self.until_told("arrowKeyDidDown", [[True], [True], [False]], "search:people")
        self.assertEqual(self.names()["chosen"], 1)
        arrows = [args for args in self.told("handleFunctionKey") if args[0] in (125, 126)]
        self.assertEqual([kind for _, _, kind in arrows], [1, 1, 1], "the host hears of the releases alone")

        keys("Escape")
        self.until_told("didEndEditing", [[]], "search:people")
        self.assertNotEqual(self.read("firstResponder"), "Editor")
        self.assertEqual([args for args in self.told("handleFunctionKey") if args[0] == 53], [[53, [], 0]])


class Presence(InputCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory(prefix="presence-")
        self.addCleanup(self.folder.cleanup)
        self.bus, self.system = Bus(self.folder.name), Bus(self.folder.name, "system")
        self.addCleanup(self.bus.kill)
        self.addCleanup(self.system.kill)
        self.reader = XServer()
        self.addCleanup(self.reader.close)

    def start_here(self, environment=None):
        self.start({**(environment or {}), "DBUS_SESSION_BUS_ADDRESS": self.bus.address, "DBUS_SYSTEM_BUS_ADDRESS": self.system.address,
                    "QT_IM_MODULE": "compose"})
        self.assertEqual(self.screens(), [])

    def service(self, name, answers=None, bus=None, path=None):
        service = Service(bus or self.bus, name, path or "/" + name.replace(".", "/"), answers)
        self.addCleanup(service.close)
        return service

    def screens(self):
        return [args[0] for args in self.told("notifyWorkspaceEnvironment")]

    def until_screens(self, *codes):
        self.host.until(lambda: self.screens() == list(codes), lambda: f"{list(codes)} is told, not {self.screens()}")

    def expect_idle_time_of_the_server(self):
        before = self.reader.idle_time()
        told = self.host.desktop("idleTime")
        self.assertLessEqual(before - 0.002, told)
        self.assertLessEqual(told, self.reader.idle_time() + 0.002)

    def test_idle_time_is_the_servers_and_activity_is_told(self):
        self.start_here()
        keys("a")
        self.expect_idle_time_of_the_server()
        count = len(self.told("notifyUserInteraction"))

        def told_again():
            keys("a")
            return self.told("notifyUserInteraction")[count:]

        self.assertEqual(self.host.until(told_again, "activity is told")[0], [2])
        self.host.until(lambda: self.reader.idle_time() > 1.5, "the user is idle")
        self.expect_idle_time_of_the_server()
        count = len(self.told("notifyUserInteraction"))
        self.host.until(lambda: self.reader.idle_time() > 4, "and stays so")
        self.assertEqual(len(self.told("notifyUserInteraction")), count)

    def test_the_servers_own_screen_saver(self):
        self.start_here()
        run("xset", "s", "activate")
        self.until_screens(0)
        run("xset", "s", "reset")
        self.until_screens(0, 1)

    def test_screen_savers_on_the_bus(self):
        self.start_here()
        gnome = self.service("org.gnome.ScreenSaver", {"GetActive": ("b", 0)})
        proxy = self.service("org.freedesktop.ScreenSaver")
        self.host.until(lambda: "GetActive" in gnome.asked and "GetActive" in proxy.asked, "both are asked")
        for saver in (gnome, proxy):
            saver.emit("ActiveChanged", ("b", 1))
        self.until_screens(0)
        gnome.emit("ActiveChanged", ("b", 0))
        proxy.emit("ActiveChanged", ("b", 0))
        self.until_screens(0, 1)

        stranger = self.service("org.example.Stranger")
        stranger.emit("ActiveChanged", ("b", 1), interface="org.gnome.ScreenSaver")
        gnome.emit("ActiveChanged", ("b", 1))
        self.until_screens(0, 1, 0)
        gnome.close()
        self.until_screens(0, 1, 0, 1)
        self.service("org.gnome.ScreenSaver", {"GetActive": ("b", 1)})
        self.until_screens(0, 1, 0, 1, 0)
        self.bus.kill()
        self.until_screens(0, 1, 0, 1, 0, 1)
        self.bus.start()
        self.service("org.gnome.ScreenSaver", {"GetActive": ("b", 1)})
        self.until_screens(0, 1, 0, 1, 0, 1, 0)

    def test_a_machine_that_sleeps_waits_until_the_host_has_been_told(self):
        delays = [os.pipe() for _ in range(2)]
        ended = [os.fdopen(reading, "rb") for reading, _ in delays]
        for end in ended:
            self.addCleanup(end.close)
        login = self.service("org.freedesktop.login1", {"Inhibit": ("h", delays[0][1])}, bus=self.system)
        self.start_here()

        def until_delayed(times):
            self.host.until(lambda: login.asked.count("Inhibit") == times, "the host asks for a delay")
            os.close(delays[times - 1][1])

        def prepares(sleeps):
            login.emit("PrepareForSleep", ("b", sleeps), interface="org.freedesktop.login1.Manager")

        until_delayed(1)
        login.answers["Inhibit"] = ("h", delays[1][1])
        self.assertEqual(select.select(ended[:1], [], [], 0)[0], [], "the delay is held")
        prepares(1)
        self.assertEqual(select.select(ended[:1], [], [], 20)[0], ended[:1], "the machine may sleep")
        self.assertEqual(self.screens(), [0])
        prepares(0)
        self.until_screens(0, 1)
        until_delayed(2)
        self.assertEqual(select.select(ended[1:], [], [], 0)[0], [], "the next one is held")
        prepares(1)
        self.until_screens(0, 1, 0)
        login.close()
        self.until_screens(0, 1, 0, 1)

    def test_screens_that_are_switched_off_without_a_screen_saver(self):
        server = PowerServer(os.environ["DISPLAY"])
        self.addCleanup(server.close)
        self.start_here({"DISPLAY": server.display})
        for code, level in ((0, OFF), (1, ON)):
            server.level = level
            self.until_screens(*range(code + 1))

    def test_a_session_that_is_locked(self):
        ours, theirs = (f"/org/freedesktop/login1/session/{name}" for name in ("_31", "_32"))
        answers = {"GetSession": ("o", ours), "Get": ("v", ("b", 0))}
        login = self.service("org.freedesktop.login1", answers, bus=self.system)
        stranger = self.service("org.example.Stranger", bus=self.system)
        saver = self.service("org.mate.ScreenSaver", {"GetActive": ("b", 0)})
        self.start_here()
        self.host.until(lambda: "Get" in login.asked, "the session is found")

        def asks(whether, path=ours, service=login):
            service.emit("Lock" if whether else "Unlock", interface="org.freedesktop.login1.Session", path=path)

        def notes(whether):
            login.emit("PropertiesChanged", ("s", "org.freedesktop.login1.Session"),
                       ("a{sv}", ("LockedHint", ("b", whether))), ("as", []), interface="org.freedesktop.DBus.Properties",
                       path=ours)

        asks(1, path=theirs)
        asks(1, service=stranger)
        notes(0)
        asks(1)
        notes(1)
        self.until_screens(0)
        asks(0)
        notes(0)
        self.until_screens(0, 1)
        # A screen saver that locks when it is asked for it, and notes nothing.
        asks(1)
        self.host.until(lambda: "GetActive" in saver.asked, "the screen saver is found")
        self.until_screens(0, 1, 0)
        saver.emit("ActiveChanged", ("b", 1))
        saver.emit("ActiveChanged", ("b", 0))
        self.until_screens(0, 1, 0, 1)
        asks(1)
        self.until_screens(0, 1, 0, 1, 0)
        login.close()
        self.until_screens(0, 1, 0, 1, 0, 1)
        self.service("org.freedesktop.login1", {**answers, "Get": ("v", ("b", 1))}, bus=self.system)
        self.until_screens(0, 1, 0, 1, 0, 1, 0)

    def test_the_desktops_own_idle_monitor_comes_first(self):
        def monitor_of(milliseconds):
            return self.service("org.gnome.Mutter.IdleMonitor", {"GetIdletime": ("t", milliseconds)},
                                path="/org/gnome/Mutter/IdleMonitor/Core")

        monitor = monitor_of(90_061_001)
        self.start_here()
        self.host.until(lambda: self.host.desktop("idleTime") == 90_061.001, "it is found")
        monitor.answers["GetIdletime"] = None
        began = time.monotonic()
        self.expect_idle_time_of_the_server()
        self.assertLess(time.monotonic() - began, 1, "one that hangs costs little")
        asked = len(monitor.asked)
        self.expect_idle_time_of_the_server()
        self.assertEqual(len(monitor.asked), asked, "and isn't asked again at once")
        monitor.close()
        monitor_of(5)
        self.host.until(lambda: self.host.desktop("idleTime") == 0.005, "one that comes back is trusted again")
        self.bus.kill()
        self.host.until(lambda: self.host.desktop("idleTime") != 0.005, "without a bus the server is asked")
        self.expect_idle_time_of_the_server()
        self.bus.start()

    def test_without_any_bus(self):
        nowhere = f"unix:path={self.folder.name}/nothing"
        self.start({"DBUS_SESSION_BUS_ADDRESS": nowhere, "DBUS_SYSTEM_BUS_ADDRESS": nowhere, "QT_IM_MODULE": "compose"})
        self.expect_idle_time_of_the_server()
        run("xset", "s", "activate")
        self.until_screens(0)
        run("xset", "s", "reset")
        self.until_screens(0, 1)

    def test_where_the_server_does_not_see_all_input_it_is_not_asked(self):
        self.start({"DBUS_SESSION_BUS_ADDRESS": self.bus.address, "XDG_SESSION_TYPE": "wayland",
                    "QT_IM_MODULE": "compose"})
        self.assertEqual(self.host.desktop("idleTime"), 0)
        self.service("org.freedesktop.ScreenSaver", {"GetSessionIdleTime": ("u", 61_500)})
        self.host.until(lambda: self.host.desktop("idleTime") == 61.5, "the session manager is")


if __name__ == "__main__":
    unittest.main()
