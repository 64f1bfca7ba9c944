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


class Calls(HeadlessCase):
    """Every kind of request and of line that tells what came of it. The plug-in is checked without it."""

    def test_a_window_is_bound_read_moved_and_closed(self):
        number = self.bound_window(frameAutosaveName="chat", initialWindowSize={"width": 320, "height": 240},
                                   windowShouldClose=False)
        events = self.host.events("window:main")
        self.assertEqual((events[0], events.count("windowDidResizeByAutoSavedFrame")), ("uiKitBinding", 1))
        attached = self.read("attached")
        self.assertEqual((self.read("title"), attached["hostWindowID"], attached["isHelperBound"]), ("", "main", True))
        self.host.desktop("makeWindow", "other", FRAME, "Other")
        self.assertEqual(self.read("title", "other"), "Other")

        start = self.host.call("window:main", "nsWindowFrame")
        self.assertEqual((start["width"], start["height"]), (320, 240))
        self.host.call("window:main", "addMovableBounds", rect(100, 0, 200, 50))
        edge = point(start["x"] + 150, start["y"] + start["height"] - 40)
        self.host.desktop("advance", 2)
        self.host.desktop("drag", edge, point(edge["x"] + 80, edge["y"]), 8)
        self.assertTrue(any("begin move" in line for line in self.host.desktop("journal")))
        self.assertEqual(self.read("frame"), {**start, "x": start["x"] + 70})

        for closes in (False, True):
            self.host.call("host", "answer", "window:main", "windowShouldClose", closes)
            self.host.desktop("performClose", "main")
            self.assertEqual("windowWillClose" in self.host.events(), closes)
        with self.assertRaisesRegex(Refused, "no window"):
            self.read("frame")
        self.assertEqual(self.host.call("window:main", "nsWindowNumber"), number)
        self.assertIsNone(self.host.call("window:main", "closeWindow"))

    def test_text_is_typed_composed_and_asked_for(self):
        self.bound_window()
        self.host.call("window:main", "addConversationTextInputViewOn", rect(10, 400, 380, 80), "host")
        self.host.call("window:main", "makeTextViewFirstResponder", True)
        self.host.desktop("text", "ab")
        self.assertEqual(self.host.events("text:main").count("shouldChangeTextInTextView"), 2)
        for code, characters, event, arguments in ((51, "\b", "shouldHandleBackspaceIn", [{"location": 1, "length": 1}, ""]),
                                                   (123, "", "didChangeSelectionIn", [True]),
                                                   (36, "\r", "requestToSendMessage", [])):
            self.host.desktop("key", code, characters)
            self.assertIn(arguments, [line["args"] for line in self.host.take() if line.get("event") == event], event)
        self.host.desktop("markedText", "한")
        self.host.desktop("commitText", "한")
        self.host.desktop("markedText", "글")
        self.assertEqual(self.host.call("text:main", "attributedText"), "한글a")
        self.host.call("host", "answer", "text:main", "shouldChangeTextInTextView", False)
        self.host.desktop("text", "b")
        self.assertEqual(self.host.call("text:main", "attributedText"), "한글a")

    def test_a_question_that_the_application_does_not_answer_is_not_taken_over(self):
        self.host.call("host", "answer", "application", "applicationShouldHandleReopen:hasVisibleWindows:", None)
        self.host.call("host", "launch")
        self.host.desktop("settle")
        self.assertTrue(self.host.desktop("reopen"))
        self.assertEqual(self.host.events("app"), [])

    def test_the_application_is_reopened_asked_and_terminated(self):
        self.host.call("host", "launch")
        self.host.call("host", "answer", "app", "applicationShouldHandleReopen", False)
        self.host.desktop("settle")
        self.assertFalse(self.host.desktop("reopen"))
        self.assertEqual(self.host.desktop("dockMenu")["items"],
                         [{"title": "Mirelo 열기", "action": "openMainWindow:", "keyEquivalent": "", "tag": 1}])
        self.assertTrue(self.host.desktop("chooseDockItem", 0))
        self.assertEqual(self.host.events("app"), ["applicationShouldHandleReopen", "openMainWindow"])
        self.host.desktop("receive", "mirelo_webViewFeedback", {"event": "loaded", "count": 2})
        told = [line["args"] for line in self.host.take() if line.get("event") == "handleWebViewFeedBackWithUserInfo"]
        self.assertEqual([json.loads(args[0]) for args in told], [{"event": "loaded", "count": 2}])

        self.bound_window()
        self.host.call("app", "terminate")
        told = self.host.told
        with self.assertRaises(EOFError):
            while True:
                told.append(self.host.next_line(20))
        names = [line.get("event") or line.get("posted") for line in told]
        wanted = ["windowWillClose", "applicationUserTerminate", "mirelo_mireloAppWillTerminate"]
        self.assertEqual([name for name in names if name in wanted], wanted)


if __name__ == "__main__":
    unittest.main()
