"""Alerts and file panels on a real X server: clicked and typed in from outside, read as X has them, and with a portal played
by this program. Run it under scripts/private-desktop --wm openbox with the interpreter that has the D-Bus modules."""

import pathlib
import shutil
import tempfile
import unittest

import dbus
from console_client import keys, rect, run
from desktop_services import serve_until
from portal_service import Portal
from services_test import ServicesCase
from x_windows import XServer

FRAME = rect(300, 200, 560, 420)
ANY_NAME = "한글 \"a\" ~ 'b' #100%.txt"


class HostCase(ServicesCase):
    def start(self, **environment):
        self.console = self.host(**environment)
        self.server = XServer()
        self.addCleanup(self.server.close)
        self.console.call("host", "launch")
        self.screen = int(run("xdotool", "getdisplaygeometry").split()[1])
        self.main = self.open("main", FRAME)

    def open(self, name, frame):
        self.console.call("host", "openChat", name, frame)
        serve_until(lambda: self.read(name, "key"), f"{name} is shown")
        return self.read(name, "nativeHandle")

    def read(self, window, field):
        return self.console.desktop("read", window, field)

    def app(self, name, *arguments):
        return self.console.call("app", name, *arguments)

    def begin(self, name, *arguments):
        """A call that answers when the user has; its number."""
        return self.console.begin("app", name, *arguments)

    def key_window(self, besides="main"):
        """The key window's number, once it is another one than `besides` and has the focus in X."""
        def found():
            for number in self.console.desktop("windows"):
                if number != self.read(besides, "number") and self.read(number, "key"):
                    return number if self.server.focused() == self.read(number, "nativeHandle") else None
            return None
        return serve_until(found, "another window with the focus")

    def in_window(self, number):
        """Texts and frames (from the top left corner of the screen) of an alert's parts."""
        frame, tree = self.read(number, "frame"), self.read(number, "views")
        parts = []
        for view in tree["subviews"]:
            place = view["frame"]
            top = self.screen - (frame["y"] + place["y"] + place["height"])
            parts.append((view["class"], view.get("text"), (frame["x"] + place["x"], top, place["width"], place["height"])))
        return parts

    def click(self, number, title):
        x, y, width, height = next(place for kind, text, place in self.in_window(number)
                                   if kind == "NSButton" and text == title)
        run("xdotool", "mousemove", int(x + width / 2), int(y + height / 2), "click", 1)

    def confirmations(self):
        return self.console.events("app").count("confirmCompletion")

    def back_on_main(self):
        serve_until(lambda: self.read("main", "key") and self.server.focused() == self.main,
                    "the messenger has the keyboard again")


class Alerts(HostCase):
    def test_answers_come_from_keys_and_clicks(self):
        self.start()
        for title, act, confirmed in (
                ("modal", lambda number: keys("Return"), 1),
                ("modal", lambda number: keys("Escape"), 0),
                ("modal", lambda number: keys("Tab", "space"), 0),
                ("modal", lambda number: self.click(number, "확인"), 1),
                ("modal", lambda number: self.click(number, "취소"), 0),
                ("sheet", lambda number: keys("Return"), 1),
                ("sheet", lambda number: keys("Escape"), 0),
                ("sheet", lambda number: self.click(number, "확인"), 1)):
            self.console.take()
            answer = None
            if title == "modal":
                answer = self.begin("showAlertWith", title, "설명\n" * 3, "확인", "취소")
            else:
                self.app("showSheetAlertWith", title, "설명\n" * 3, "확인", "취소", "main")
            number = self.key_window()
            self.assertTrue(self.app("isAppKitAlertPresented"))
            self.assertTrue(self.read("main", "inputBlocked"))
            act(number)
            if answer:
                self.assertNotIn("error", self.console.answer(answer))
            self.back_on_main()
            self.assertFalse(self.app("isAppKitAlertPresented"))
            self.assertEqual(self.confirmations(), confirmed, title)
            self.assertEqual(len(self.console.desktop("windows")), 1)

    def test_a_modal_alert_blocks_every_window_and_a_sheet_its_own(self):
        self.start()
        other = self.open("other", rect(20, 20, 260, 200))
        self.app("showSheetAlertWith", "sheet", "", "OK", "Cancel", "main")
        serve_until(lambda: self.read("main", "sheet"), "a sheet")
        run("xdotool", "windowactivate", "--sync", other, "type", "abc")
        serve_until(lambda: any(view_text(self.read("other", "views"), "abc")), "the other window takes text")
        begun = self.begin("showAlertWith", "modal", "", "OK", "Cancel")
        modal = self.key_window("other")
        self.assertTrue(self.read("main", "inputBlocked") and self.read("other", "inputBlocked"))
        run("xdotool", "windowactivate", other)
        serve_until(lambda: self.server.focused() == self.read(modal, "nativeHandle"), "the alert gets the focus back")
        run("xdotool", "type", "xyz")
        keys("Escape")
        self.console.answer(begun)
        self.assertFalse(any(view_text(self.read("other", "views"), "xyz")))
        self.assertTrue(self.read("main", "inputBlocked"))

    def test_texts_of_any_size_stay_on_the_screen(self):
        self.start()
        for message in ("가나다 " * 25_000, "x" * 100_000, "\n" * 100_000, "file:///tmp/a\nb\u0001", "메시지를 지울까요? " * 12):
            begun = self.begin("showAlertWith", message[:20_000], message, "확인", "취소")
            number = self.key_window()
            frame = self.read(number, "frame")
            self.assertLessEqual(frame["height"], self.screen * 0.86)
            texts = [place for kind, text, place in self.in_window(number) if kind == "AlertText"]
            buttons = [place for kind, _, place in self.in_window(number) if kind == "NSButton"]
            self.assertLessEqual(max(y + height for _, y, _, height in texts), min(y for _, y, _, _ in buttons))
            keys("Escape")
            self.console.answer(begun)
            self.back_on_main()


def view_text(tree, text):
    yield text in tree.get("text", "")
    for view in tree["subviews"]:
        yield from view_text(view, text)


class Panels(HostCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="panels "))
        self.addCleanup(shutil.rmtree, self.folder)

    def told(self, name):
        return next((line["args"] for line in self.console.take() if line.get("event") == name), None)

    def answered(self, name):
        return serve_until(lambda: self.told(name), name)

    def dialog(self):
        """The toolkit's dialog has the focus, and belongs to the messenger."""
        number = self.key_window()
        handle = self.read(number, "nativeHandle")
        self.assertIn(f"{self.main:#x}", run("xprop", "-id", handle, "WM_TRANSIENT_FOR"))
        return handle

    def test_without_a_portal_the_toolkit_asks(self):
        self.start()
        self.check_saving()
        self.check_overwriting()
        self.check_opening()
        self.check_leaving()

    def check_saving(self):
        """Proposed names come back as they are, typed ones too."""
        for name in (ANY_NAME, "~", '"', "a\nb.txt"):
            self.app("showSavePanel", name, str(self.folder))
            above = run("xprop", "-id", self.dialog(), "_NET_WM_STATE")
            self.assertIn("_NET_WM_STATE_ABOVE", above)
            self.assertFalse(self.read("main", "inputBlocked"))
            keys("Return")
            self.assertEqual(self.answered("savePanelCompletion"), [str(self.folder / name)])
            self.back_on_main()
        self.app("showSavePanel", "a.txt", str(self.folder))
        self.dialog()
        run("xdotool", "type", 'b "c"')  # over the marked stem
        keys("Return")
        self.assertEqual(self.answered("savePanelCompletion"), [str(self.folder / 'b "c".txt')])
        self.back_on_main()

    def check_overwriting(self):
        (self.folder / ANY_NAME).write_text("old")
        for presses, expected in ((("Escape", "Escape"), None), (("alt+y",), str(self.folder / ANY_NAME))):
            self.app("showSavePanel", ANY_NAME, str(self.folder))
            panel = self.dialog()
            keys("Return")
            question = serve_until(lambda: {self.server.focused()} - {panel, self.main}, "a question").pop()
            self.assertIsNone(self.told("savePanelCompletion"))
            for key in presses:
                keys(key)
                serve_until(lambda: self.server.focused() != question, "the question has gone")
                question = panel
            self.assertEqual(self.answered("savePanelCompletion"), [expected])
            self.back_on_main()
        self.assertEqual((self.folder / ANY_NAME).read_text(), "old")

    def check_opening(self):
        begun = self.begin("showDownloadPathSavePanel", str(self.folder))
        self.dialog()
        self.assertTrue(self.read("main", "inputBlocked"))
        keys("Return")
        self.console.answer(begun)
        self.assertEqual(self.told("downloadPathSavePanelCompletion"), [str(self.folder)])
        self.back_on_main()

    def check_leaving(self):
        for act in (lambda handle: keys("Escape"),
                    lambda handle: run("wmctrl", "-ic", handle),
                    lambda handle: self.console.desktop("close", self.key_window())):
            begun = self.begin("showOpenPanelWithCompletion")
            act(self.dialog())
            self.console.answer(begun)
            self.assertIsNone(self.told("openPanelCompletion"))
            self.back_on_main()

    def test_a_portal_is_asked_and_answers(self):
        self.start()
        portal = Portal()
        self.addCleanup(portal.end)
        folder = dbus.ByteArray(str(self.folder).encode() + b"\0")
        for moved in (False, True):
            portal.moved = moved
            self.app("showSavePanel", ANY_NAME, str(self.folder))
            serve_until(lambda: portal.requests, "a request")
            member, parent, options = portal.asked.pop()
            self.assertEqual((member, parent), ("SaveFile", f"x11:{self.main:x}"))
            self.assertEqual((options["current_name"], bytes(options["current_folder"]), bool(options["modal"])),
                             (ANY_NAME, folder, False))
            portal.choose("file:///tmp/a%20b%23%25%EA%B0%80%0A%FF.txt")
            self.assertEqual(self.answered("savePanelCompletion"), ["/tmp/a b#%가\n\udcff.txt".encode(
                errors="surrogateescape").decode(errors="replace")])
            portal.requests.clear()
        begun = self.begin("showOpenPanelWithCompletion")
        serve_until(lambda: portal.requests, "a request")
        member, _, options = portal.asked.pop()
        self.assertEqual((member, bool(options["multiple"]), bool(options["modal"])), ("OpenFile", True, True))
        self.assertTrue(self.read("main", "inputBlocked"))
        portal.choose("file:///b", "https://example.com/", "file:///a")
        self.console.answer(begun)
        self.assertEqual(self.answered("openPanelCompletion"), [["/b", "/a"]])
        portal.requests.clear()
        begun = self.begin("showDownloadPathSavePanel", str(self.folder))
        serve_until(lambda: portal.requests, "a request")
        self.assertTrue(bool(portal.asked.pop()[2]["directory"]))
        portal.choose(self.folder.as_uri() + "/")
        self.console.answer(begun)
        self.assertEqual(self.answered("downloadPathSavePanelCompletion"), [str(self.folder)])

    def test_a_portals_strange_answers_are_a_cancel(self):
        self.start()
        portal = Portal()
        self.addCleanup(portal.end)
        for response, results in ((1, {}), (2, {"uris": dbus.Array(["file:///a"], "s")}), (0, {}), (0, {"uris": "text"}),
                                  (0, {"uris": dbus.Array([], "s")}), (0, {"uris": dbus.Array(["no uri", "http://a/"], "s")})):
            self.app("showSavePanel", "a", None)
            serve_until(lambda: portal.requests, "a request")
            portal.respond(response, results)
            self.assertEqual(self.answered("savePanelCompletion"), [None])
            portal.requests.pop().remove_from_connection()

    def test_a_portal_that_fails_leaves_the_user_a_panel(self):
        """One that says nothing, one that goes, one that shows nothing."""
        self.start()
        silent = Portal(takes=False)
        self.app("showSavePanel", "silent", str(self.folder))
        serve_until(lambda: silent.asked, "a request")
        self.dialog()
        keys("Return")
        self.assertEqual(self.answered("savePanelCompletion"), [str(self.folder / "silent")])
        self.app("showSavePanel", "again", str(self.folder))
        self.dialog()
        keys("Escape")
        self.assertEqual(self.answered("savePanelCompletion"), [None])
        self.assertEqual(len(silent.asked), 1, "one that hung isn't asked again")
        silent.end()
        portal = Portal()
        self.app("showSavePanel", "gone", str(self.folder))
        serve_until(lambda: portal.requests, "a request")
        portal.end()
        self.dialog()
        keys("Return")
        self.assertEqual(self.answered("savePanelCompletion"), [str(self.folder / "gone")])
        portal = Portal()
        self.addCleanup(portal.end)
        begun = self.begin("showOpenPanelWithCompletion")
        serve_until(lambda: portal.requests, "a request")
        self.back_on_x()
        keys("Escape")
        self.console.answer(begun)
        serve_until(lambda: portal.requests[-1].closed, "the portal is told to close")

    def back_on_x(self):
        serve_until(lambda: self.server.focused() == self.main, "the messenger has the focus in X")


if __name__ == "__main__":
    unittest.main(verbosity=2)
