"""The console on the headless machine: its own manners, and each part of the boundary through it."""

import json
import re
import unittest
from pathlib import Path

from console_client import Console, Refused, point, rect

PROTOCOLS = Path(__file__).resolve().parents[2] / "VeltrikAppKit/Protocols"
FRAME = rect(100, 100, 400, 500)


def members(header):
    """The names of a protocol's pure virtual members, as its header declares them."""
    return set(re.findall(r"(\w+)\([^;{}]*\)(?: const)? = 0;", (PROTOCOLS / header).read_text()))


class HeadlessCase(unittest.TestCase):
    def setUp(self):
        self.host = Console("headless")
        self.addCleanup(self.host.__exit__)

    def bound_window(self, identifier="main", frame=None, **answers):
        for member, value in answers.items():
            self.host.call("host", "answer", f"window:{identifier}", member, value)
        self.host.call("app", "bindNSWindowWithUIWindowID", identifier)
        number = self.host.desktop("makeWindow", identifier, frame or FRAME)
        self.host.desktop("orderFront", identifier)
        return number

    def read(self, field, window="main"):
        return self.host.desktop("read", window, field)


class Manners(HeadlessCase):
    def test_malformed_lines_get_an_error_and_change_nothing(self):
        rows = {
            "no JSON": "open the window",
            "an array": '[1, "app"]',
            "cut off": '{"id":1,"on":"app"',
            "no target": '{"id":null,"call":"alpha"}',
            "no call": '{"id":null,"on":"app"}',
            "unknown member": '{"id":null,"on":"app","call":"terminate","arguments":[]}',
            "arguments that are no array": '{"id":null,"on":"app","call":"terminate","args":{}}',
            "unknown target": '{"id":null,"on":"menu","call":"terminate"}',
            "unknown call": '{"id":null,"on":"app","call":"explode"}',
            "too many arguments": '{"id":null,"on":"app","call":"terminate","args":[1]}',
            "a missing argument": '{"id":null,"on":"desktop","call":"makeWindow","args":["x"]}',
            "a window that isn't bound": '{"id":null,"on":"window:none","call":"alpha"}',
        }
        for name, line in rows.items():
            with self.subTest(name):
                self.host.send(line)
                answer = self.host.answer(None)
                self.assertTrue(answer.get("error"))
                self.assertNotIn("result", answer)
        self.assertEqual(self.host.desktop("windows"), [])
        self.assertEqual(self.host.take(), [])

    def test_arguments_of_another_type_are_refused_before_anything_is_done(self):
        self.bound_window()
        before = self.host.desktop("read", "main")
        for call, argument in (("setAlpha", "1"), ("setAlwaysOnTop", 1), ("addMovableBounds", {"x": 1}),
                               ("setContentSize", [1, 2, 3, 4]), ("nsColorFromHex", 1 << 40),
                               ("setContentSize", {**FRAME, "z": 1}), ("setAlpha", None)):
            with self.subTest(call, argument=argument), self.assertRaisesRegex(Refused, "argument 1"):
                self.host.call("window:main", call, argument)
        self.assertEqual(self.host.desktop("read", "main"), before)

    def test_lines_that_come_together_are_answered_in_order(self):
        requests = [{"id": f"n{i}", "on": "desktop", "call": "now"} for i in range(200)]
        self.host.send("\n".join(json.dumps(request) for request in requests))
        self.assertEqual([self.host.next_line(10)["id"] for _ in requests], [r["id"] for r in requests])

    def test_the_end_of_input_ends_the_host(self):
        self.bound_window()
        self.host.process.stdin.close()
        self.assertEqual(self.host.process.wait(20), 0)

    def test_every_member_of_the_boundary_is_reachable(self):
        for target, header in (("app", "VeltrikAppKitProtocol.h"), ("window", "VeltrikAppKitWindowHelperProtocol.h"),
                               ("text", "VeltrikTextInputView.h"),
                               ("status", "VeltrikStatusBarItemProtocol.h")):
            with self.subTest(target):
                self.assertEqual(members(header) - set(self.host.call("host", "calls", target)), set())


class Windows(HeadlessCase):
    def test_binding_takes_the_title_and_configures_once(self):
        self.bound_window(frameAutosaveName="chat")
        events = self.host.events("window:main")
        self.assertEqual(events[0], "uiKitBinding")
        self.assertEqual(events.count("windowDidResizeByAutoSavedFrame"), 1)
        self.host.desktop("orderFront", "main")
        self.assertNotIn("windowDidResizeByAutoSavedFrame", self.host.events())
        attached = self.read("attached")
        self.assertEqual((self.read("title"), attached["hostWindowID"], attached["isHelperBound"]), ("", "main", True))
        self.assertEqual((self.read("tabbingMode"), self.read("collectionBehavior"), self.read("restorable")),
                         (2, 0x100, False))

    def test_a_title_that_no_one_waits_for_stays(self):
        self.host.desktop("makeWindow", "other", FRAME, "Other")
        self.assertEqual(self.read("title", "other"), "Other")
        self.assertFalse(self.read("attached", "other")["isHelperBound"])

    def test_initial_sizes(self):
        for identifier, size, expected in (("kept", (0, 0), (400, 500)), ("flat", (0, 300), (0, 300)),
                                           ("given", (320, 240), (320, 240))):
            with self.subTest(identifier):
                self.bound_window(identifier, initialWindowSize={"width": size[0], "height": size[1]})
                frame = self.host.call(f"window:{identifier}", "nsWindowFrame")
                self.assertEqual((frame["width"], frame["height"]), expected)

    def test_content_and_frame_rectangles(self):
        colour = {"red": 0.2, "green": 0.3, "blue": 0.8, "alpha": 1}
        for identifier, colour, band in (("plain", None, 0), ("coloured", colour, 29)):
            with self.subTest(identifier):
                self.bound_window(identifier, customTitleBackgroundColor=colour)
                frame = self.read("frame", identifier)
                self.assertEqual(self.read("contentRect", identifier), {**frame, "height": frame["height"] - band})
                self.assertEqual(self.read("frameForContent", identifier), {**frame, "height": frame["height"] + band})

    def test_level_opacity_and_visibility(self):
        self.bound_window()
        self.host.call("window:main", "setAlwaysOnTop", True)
        self.assertEqual(self.read("level"), 3)
        self.host.desktop("setLevel", "main", 8)
        self.assertFalse(self.host.call("window:main", "alwaysOnTop"))
        self.host.call("window:main", "setAlpha", 0.25)
        self.assertEqual(self.read("alpha"), 0.25)
        self.host.call("window:main", "setIsWindowHidden", True)
        self.assertEqual((self.read("visible"), self.read("order")), (False, None))

    def test_a_helper_outlives_its_window_with_defaults(self):
        number = self.bound_window()
        self.host.desktop("close", "main")
        rows = {"alpha": 0, "alwaysOnTop": False, "isWindowHidden": True, "isWindowRestorable": False,
                "nsWindowFrame": rect(0, 0, 0, 0), "nsWindowNumber": number, "titleBarHeight": 29,
                "hasChildWindow": False, "isPopoverWindow": False, "isSheetWindow": False, "isMainNSWindow": False,
                "isKeyNSWindow": False, "isForcedClose": False, "textInputView": None}
        for call, expected in rows.items():
            with self.subTest(call):
                self.assertEqual(self.host.call("window:main", call), expected)
        for call in ("minimize", "maximize", "closeWindow", "becomeFirstWindow", "resetAllMovableBounds"):
            with self.subTest(call):
                self.assertIsNone(self.host.call("window:main", call))

    def test_a_drag_region_moves_the_window_from_five_points_on(self):
        self.bound_window()
        self.host.call("window:main", "addMovableBounds", rect(100, 0, 200, 50))
        for distance, moves in ((4, False), (5, True), (80, True)):
            with self.subTest(distance=distance):
                before = self.read("frame")
                start = point(before["x"] + 150, before["y"] + before["height"] - 40)
                # Late enough not to be the second press of a double click.
                self.host.desktop("advance", 2)
                self.host.desktop("journal")
                self.host.desktop("drag", start, point(start["x"] + distance, start["y"]), 1)
                asked = any("begin move" in line for line in self.host.desktop("journal"))
                self.assertEqual(asked, moves)
        start = self.read("frame")
        edge = point(start["x"] + 150, start["y"] + start["height"] - 40)
        self.host.desktop("advance", 2)
        self.host.desktop("drag", edge, point(edge["x"] + 80, edge["y"]), 8)
        self.assertEqual(self.read("frame"), {**start, "x": start["x"] + 70})

    def test_a_delegate_decides_about_closing(self):
        self.bound_window(windowShouldClose=False)
        self.host.desktop("performClose", "main")
        self.assertIn("windowShouldClose", self.host.events())
        self.host.call("host", "answer", "window:main", "windowShouldClose", True)
        self.host.desktop("performClose", "main")
        self.assertIn("windowWillClose", self.host.events())
        with self.assertRaisesRegex(Refused, "no window"):
            self.read("frame")


class Text(HeadlessCase):
    RETURN, BACKSPACE, LEFT, CONTROL, OPTION, CAPS = 36, 51, 123, 0x40000, 0x80000, 0x10000

    def setUp(self):
        super().setUp()
        self.bound_window()
        self.host.call("window:main", "addConversationTextInputViewOn", rect(10, 400, 380, 80), "host")
        self.host.call("window:main", "makeTextViewFirstResponder", True)
        self.host.take()

    def text(self):
        return self.host.call("text:main", "attributedText")

    def test_return_sends_and_control_return_breaks_the_line(self):
        rows = (("plain", 0, True, "a"), ("Caps Lock", self.CAPS, True, "a"), ("Control", self.CONTROL, False, "a\n"))
        for name, modifiers, sends, left in rows:
            with self.subTest(name):
                self.host.call("text:main", "reset")
                self.host.desktop("text", "a")
                self.host.take()
                self.host.desktop("key", self.RETURN, "\r", modifiers)
                self.assertEqual("requestToSendMessage" in self.host.events("text:main"), sends)
                self.assertEqual(self.text(), left)

    def test_the_delegate_is_asked_and_told(self):
        self.host.desktop("text", "ab")
        self.assertEqual(self.host.events("text:main").count("shouldChangeTextInTextView"), 2)
        self.host.desktop("key", self.BACKSPACE, "\b")
        told = self.host.take()
        asked = [line["args"] for line in told if line.get("event") == "shouldHandleBackspaceIn"]
        self.assertEqual(asked, [[{"location": 1, "length": 1}, ""]])
        self.host.desktop("key", self.LEFT, "")
        moved = [line["args"] for line in self.host.take() if line.get("event") == "didChangeSelectionIn"]
        self.assertEqual(moved, [[True]])

    def test_a_refused_edit_changes_nothing(self):
        self.host.call("host", "answer", "text:main", "shouldChangeTextInTextView", False)
        self.host.desktop("text", "a")
        self.assertEqual(self.text(), "")

    def test_a_syllable_in_composition_stands_in_the_text_and_commits_once(self):
        self.host.desktop("markedText", "하")
        self.assertEqual(self.text(), "하")
        self.host.desktop("markedText", "한")
        self.host.desktop("commitText", "한")
        self.host.desktop("markedText", "글")
        self.assertEqual(self.text(), "한글")
        self.host.call("text:main", "unmark")
        self.assertEqual(self.text(), "한글")

    def test_reset_forgets_the_steps_back(self):
        self.host.desktop("text", "ab")
        self.host.desktop("key", 6, "z", self.CONTROL)
        self.assertEqual(self.text(), "a")
        self.host.call("text:main", "reset")
        self.host.desktop("key", 6, "z", self.CONTROL)
        self.assertEqual(self.text(), "")


class Application(HeadlessCase):
    def test_only_the_methods_that_the_class_has_are_taken_over(self):
        reopen = "applicationShouldHandleReopen:hasVisibleWindows:"
        self.host.call("host", "answer", "application", reopen, None)
        self.host.call("host", "launch")
        self.host.call("host", "answer", "app", "applicationShouldHandleReopen", False)
        self.host.desktop("settle")
        self.assertTrue(self.host.desktop("reopen"))
        self.assertEqual(self.host.events("app"), [])
        self.assertEqual(self.host.desktop("dockMenu")["items"],
                         [{"title": "Mirelo 열기", "action": "openMainWindow:", "keyEquivalent": "", "tag": 1}])

    def test_the_dock_item_asks_for_the_main_window(self):
        self.host.call("host", "launch")
        self.host.desktop("settle")
        self.assertTrue(self.host.desktop("chooseDockItem", 0))
        self.assertEqual(self.host.events("app"), ["openMainWindow"])

    def test_terminating_marks_all_windows_and_tells_in_order(self):
        self.host.call("host", "launch")
        self.bound_window("one")
        self.bound_window("two")
        self.host.take()
        self.host.call("app", "terminate")
        told = []
        with self.assertRaises(EOFError):
            while True:
                told.append(self.host.next_line(20))
        names = [line.get("event") or line.get("posted") for line in self.host.told + told]
        wanted = ["windowWillClose", "windowWillClose", "applicationUserTerminate", "mirelo_mireloAppWillTerminate"]
        self.assertEqual([name for name in names if name in wanted], wanted)

    def test_feedback_of_the_companion_reaches_the_host_as_json(self):
        self.host.call("host", "launch")
        self.host.desktop("receive", "mirelo_webViewFeedback", {"event": "loaded", "count": 2})
        told = [line["args"] for line in self.host.take() if line.get("event") == "handleWebViewFeedBackWithUserInfo"]
        self.assertEqual([json.loads(args[0]) for args in told], [{"event": "loaded", "count": 2}])


if __name__ == "__main__":
    unittest.main()
