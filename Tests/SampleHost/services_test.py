"""The host's desktop services on a real session bus, with the programs of a desktop played by this one."""

import os
import pathlib
import shutil
import socket
import subprocess
import tempfile
import unittest

import dbus
from console_client import HOST, Console, rect
from desktop_services import MENU, Asking, Dock, FileManager, TrayItem, Watcher, serve_until, session_bus
from gi.repository import GLib

HOME = pathlib.Path(os.environ["HOME"])
AUTOSTART = HOME / ".config/autostart/com.brenholt.macos.mirelo.startuplauncher.desktop"


class Serving(Console):
    """The console of a host whose bus calls are answered while it is waited for."""

    def next_line(self, limit):
        serve_until(lambda: not self.lines.empty(), "a line of the host")
        return super().next_line(limit)

    def wait_told(self, wanted, what):
        return serve_until(lambda: any(wanted(line) for line in self.take()), what)


class ServicesCase(unittest.TestCase):
    def host(self, **environment):
        host = Serving("desktop", environment)
        self.addCleanup(host.__exit__)
        return host


class StatusBar(ServicesCase):
    def setUp(self):
        self.console = self.host()
        self.bus = session_bus()

    def app(self, name, *arguments):
        return self.console.call("app", name, *arguments)

    def registered(self, watcher, count):
        serve_until(lambda: len(watcher.registered) >= count, f"{count} registrations")
        return watcher.registered

    def test_an_item_lives_as_a_status_bar_expects(self):
        status = f"status:{self.app('createStatusBarItemWithImageName', 'appKit_statusBar')}"
        self.console.call(status, "addMenuItemWithTitle", "열기", 1, "o")
        self.console.call(status, "addSeparator")
        self.console.call(status, "addMenuItemWithTitle", "snake_case", 2, "")
        watcher = Watcher()
        self.addCleanup(watcher.end)
        service = self.registered(watcher, 1)[0]
        item = TrayItem(self.bus, service)
        self.check_properties(item, service)
        self.check_menu(item, status)
        self.check_changes(item, status)
        self.check_second_item(watcher, item)

    def check_properties(self, item, service):
        self.assertEqual([str(item.get(name)) for name in ("Category", "Id", "Status", "Title", "IconName")],
                         ["Communications", "com.brenholt.mirelo", "Active", "Mirelo", ""])
        self.assertTrue(item.get("ItemIsMenu"))
        pictures = item.get("IconPixmap")
        self.assertEqual([int(picture[0]) for picture in pictures], [16, 22, 24, 32, 44, 48, 64])
        for width, height, pixels in pictures:
            self.assertEqual((width, len(pixels)), (height, width * height * 4))
            alpha = bytes(pixels)[::4]
            self.assertEqual((min(alpha), max(alpha)), (0, 255), "a shape with a transparent ground")
        well_known = [name for name in self.bus.list_names() if name.startswith("org.kde.StatusNotifierItem-")]
        self.assertEqual([self.bus.get_name_owner(name) for name in well_known], [service])
        everything = [dict(Asking(self.bus, name, "/StatusNotifierItem")(
            "org.freedesktop.DBus.Properties", "GetAll", "org.kde.StatusNotifierItem"))
            for name in (service, well_known[0])]
        self.assertEqual(*everything)
        self.assertGreaterEqual(len(everything[0]), 16)

    def check_menu(self, item, status):
        lines = [line for _, line in item.layout()[1]]
        self.assertEqual([line.get("label") for line in lines], ["열기", None, "snake__case"])
        self.assertEqual(lines[1]["type"], "separator")
        self.assertEqual([[str(key) for key in keys] for keys in lines[0]["shortcut"]], [["Super", "o"]])
        self.assertNotIn("shortcut", lines[2])
        self.console.take()
        item.click("열기")
        self.console.wait_told(lambda line: line.get("event") == "menuItemHandler" and line["args"] == ["열기", 1] and
                               line["from"] == status, "the click's handler")
        with self.assertRaises(dbus.DBusException):
            item.menu(MENU, "Event", dbus.Int32(999), "clicked", dbus.String("", variant_level=1), dbus.UInt32(0))
        self.assertFalse(item.menu(MENU, "AboutToShow", dbus.Int32(0)))
        group = item.menu(MENU, "GetGroupProperties", dbus.Array([], "i"), dbus.Array(["label"], "s"))
        self.assertEqual([dict(properties).get("label") for _, properties in group],
                         [None, "열기", None, "snake__case"])

    def check_changes(self, item, status):
        revision = item.layout()[0]
        for call, flag, key, expected in (("updateStatusBarItemEnabled", False, "enabled", False),
                                          ("updateStatusBarItemHidden", True, "visible", False),
                                          ("updateStatusBarItemHidden", False, "visible", None),
                                          ("updateStatusBarItemEnabled", True, "enabled", None)):
            item.signals.clear()
            self.console.call(status, call, flag, 2)
            serve_until(lambda: "ItemsPropertiesUpdated" in item.names(), call)
            after, lines = item.layout()
            self.assertEqual((after, lines[2][1].get(key)), (revision, expected), call)
            self.assertNotIn("LayoutUpdated", item.names())
        item.signals.clear()
        self.console.call(status, "addMenuItemWithTitle", "more", 3, "")
        serve_until(lambda: "LayoutUpdated" in item.names(), "a new layout")
        self.assertEqual(item.layout()[0], revision + 1)
        self.assertEqual(item.labels(), ["열기", "-", "snake__case", "more"])
        for name, sizes in (("appKit_statusBarUnread", 7), ("unknown", 0)):
            item.signals.clear()
            self.console.call(status, "updateStatusBarItemWithImageName", name)
            serve_until(lambda: "NewIcon" in item.names(), "a new icon")
            self.assertEqual(len(item.get("IconPixmap")), sizes, name)

    def check_second_item(self, watcher, first):
        number = self.app("createStatusBarItemWithImageName", "appKit_statusBar")
        service = self.registered(watcher, 2)[1]
        second = TrayItem(self.bus, service)
        self.assertNotEqual(str(second.get("Id")), str(first.get("Id")))
        self.console.call(f"status:{number}", "addMenuItemWithTitle", "other", 1, "")
        serve_until(lambda: second.labels() == ["other"], "the second item's menu")
        self.console.call("host", "releaseStatusItem", number)
        serve_until(lambda: not self.bus.name_has_owner(service), "the second item's end")
        self.assertEqual(first.labels()[0], "열기")

    def test_each_new_watcher_gets_one_registration(self):
        watcher = Watcher()
        number = self.app("createStatusBarItemWithImageName", "appKit_statusBar")
        self.console.call(f"status:{number}", "addMenuItemWithTitle", "line", 1, "")
        services = set(self.registered(watcher, 1))
        for round_ in range(5):
            watcher.end()
            serve_until(lambda: not self.bus.name_has_owner("org.kde.StatusNotifierWatcher"), "the watcher's end")
            watcher = Watcher()
            services.update(self.registered(watcher, 1))
            item = TrayItem(self.bus, watcher.registered[0])
            self.assertEqual(item.labels(), ["line"])
            self.assertEqual(len(watcher.registered), 1, f"watcher {round_ + 1}")
        self.assertEqual(len(services), 1)
        watcher.end()


class BadgeAndFiles(ServicesCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="services "))
        self.addCleanup(shutil.rmtree, self.folder)

    def test_the_badge_reaches_docks_that_are_there_and_that_come(self):
        console, dock = self.host(), Dock()
        for label, expected in (("3", (3, True, False)), ("99+", (99, True, False)), ("새 글", (0, False, True)),
                                ("0", (0, True, False)), (None, (0, False, False)), ("12", (12, True, False))):
            before = len(dock.updates)
            console.call("app", "setBadgeLabel", label)
            serve_until(lambda: len(dock.updates) > before, "a badge")
            shown = dock.last()
            self.assertEqual((shown["count"], bool(shown["count-visible"]), bool(shown["urgent"])), expected, label)
        for _ in range(3):
            before = len(dock.updates)
            dock.appear()
            serve_until(lambda: len(dock.updates) > before, "the badge again")
            self.assertEqual(dock.last()["count"], 12)
            dock.vanish()
        self.assertEqual({(uri, path.rpartition("/")[0]) for uri, _, path, _ in dock.updates},
                         {("application://com.brenholt.mirelo.desktop", "/com/canonical/unity/launcherentry")})
        self.assertEqual(len({(path, sender) for _, _, path, sender in dock.updates}), 1)

    def test_a_file_is_opened_by_the_application_for_its_type(self):
        record = self.folder / "opened"
        viewer = self.folder / "viewer"
        viewer.write_text(f'#!/bin/sh\nprintf "%s" "$1" > "{record}.part" && mv "{record}.part" "{record}"\n')
        viewer.chmod(0o755)
        applications = HOME / ".local/share/applications"
        applications.mkdir(parents=True, exist_ok=True)
        (applications / "viewer.desktop").write_text(
            f'[Desktop Entry]\nType=Application\nName=Viewer\nExec="{viewer}" %f\nMimeType=text/plain;\n')
        (HOME / ".config/mimeapps.list").write_text("[Default Applications]\ntext/plain=viewer.desktop\n")
        console = self.host()
        for name in ("a.txt", "한글 b#%41.txt", "-c.txt"):
            file = self.folder / name
            file.write_text("text")
            console.call("app", "openFileAtPath", f"file://{file}")
            serve_until(record.exists, f"{name} to be opened")
            self.assertEqual(record.read_text(), str(file))
            record.unlink()
        for name in ("missing.txt", "no application.mid"):
            console.take()
            if name != "missing.txt":
                (self.folder / name).write_bytes(b"MThd")
            console.call("app", "openFileAtPath", str(self.folder / name))
            console.wait_told(lambda line: "can't be opened" in line.get("log", ""), f"a log line for {name}")

    def test_a_file_is_shown_by_the_file_manager(self):
        console, manager = self.host(), FileManager()
        for path, uri in (("/tmp/a.txt", "file:///tmp/a.txt"), ("file:///tmp/b c%.txt", "file:///tmp/b%20c%25.txt"),
                          ("/tmp/한\n", "file:///tmp/%ED%95%9C%0A")):
            console.call("app", "openInFinderAtPath", path)
            serve_until(lambda: [uri] in manager.shown, uri)
        manager.remove_from_connection()
        del manager.name
        manager.bus.close()
        console.take()
        console.call("app", "openInFinderAtPath", "/nowhere/a.txt")
        console.wait_told(lambda line: "file:///nowhere/a.txt can't be shown" in line.get("log", ""), "a log line")

    def test_launch_at_login_survives_any_path(self):
        build = pathlib.Path(HOST).resolve().parents[1]
        for name in ("plain", "two words", '100% "sure" $HOME `x` \\ back', "한글 메신저"):
            place = self.folder / name / "bin"
            place.mkdir(parents=True)
            (place.parent / "lib").symlink_to(build / "lib")
            shutil.copy(HOST, place / "mirelo-host")
            with self.subTest(name):
                process = subprocess.run([place / "mirelo-host", "--backend", "desktop", "--console"],
                                         input=b'{"id":1,"on":"app","call":"setAutoLaunchApp","args":[true]}\n',
                                         stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, timeout=60)
                self.assertEqual(process.returncode, 0)
                self.assertEqual(executable(AUTOSTART), [str(place / "mirelo-host")])
        console = self.host()
        console.call("app", "setAutoLaunchApp", False)
        self.assertFalse(AUTOSTART.exists())

    def test_every_type_has_an_icon(self):
        console = self.host()
        for kind in ("png", "public.jpeg", "com.adobe.pdf", "hwp", "folder", "zzz"):
            self.assertEqual(console.call("app", "fileIconForType", kind), {"width": 32, "height": 32}, kind)

    def test_without_bus_home_and_programs_the_host_lives_on(self):
        home = self.folder / "home"
        home.write_text("no folder")
        console = self.host(DBUS_SESSION_BUS_ADDRESS="unix:path=/nowhere", XDG_CONFIG_HOME=str(home / "config"),
                            PATH="/nowhere", XDG_DATA_DIRS="/nowhere")
        status = f"status:{console.call('app', 'createStatusBarItemWithImageName', 'appKit_statusBar')}"
        console.call(status, "addMenuItemWithTitle", "line", 1, "")
        console.call("app", "setBadgeLabel", "3")
        console.call("app", "openFileAtPath", "/etc/hostname")
        console.call("app", "openInFinderAtPath", "/etc/hostname")
        console.call("app", "setAutoLaunchApp", True)
        self.assertEqual(console.call("app", "fileIconForType", "pdf"), {"width": 32, "height": 32})
        logged = []

        def all_logged():
            logged.extend(line["log"] for line in console.take() if "log" in line)
            return all(any(part in line for line in logged)
                       for part in ("can't be opened", "can't be shown", "login item can't be set"))

        serve_until(all_logged, "a log line for each failure")

    def test_a_bus_that_hangs_leaves_the_host_alive(self):
        """How long its start takes then, scripts/benchmark-services measures."""
        console = self.host(DBUS_SESSION_BUS_ADDRESS=self.hanging_bus())
        console.call("host", "launch")
        # The toolkit has something to tell the bus when a window of ours gets the keyboard.
        console.call("host", "openChat", "main", rect(100, 100, 400, 300))
        serve_until(lambda: console.desktop("read", "main", "key"), "the chat has the keyboard")
        console.call("app", "createStatusBarItemWithImageName", "appKit_statusBar")
        console.call("app", "setBadgeLabel", "1")
        console.call("app", "openInFinderAtPath", "/tmp")
        console.call("app", "showSavePanel", "a.txt", str(self.folder))
        windows = console.desktop("windows")
        serve_until(lambda: console.desktop("read", windows[-1], "nativeHandle"), "the toolkit's panel")

    def hanging_bus(self):
        """Takes connections and says nothing."""
        server = socket.socket(socket.AF_UNIX)
        server.bind(str(self.folder / "bus"))
        server.listen(16)
        self.addCleanup(server.close)
        return f"unix:path={self.folder / 'bus'}".replace(" ", "%20")


def executable(entry):
    """The command line's words, as GLib reads them, which most desktops start programs with."""
    file = GLib.KeyFile()
    file.load_from_file(str(entry), GLib.KeyFileFlags.NONE)
    assert file.get_string("Desktop Entry", "Type") == "Application"
    assert "Hidden" not in file.get_keys("Desktop Entry")[0]
    _, words = GLib.shell_parse_argv(file.get_string("Desktop Entry", "Exec"))
    return [word.replace("%%", "%") for word in words]


if __name__ == "__main__":
    unittest.main(verbosity=2)
