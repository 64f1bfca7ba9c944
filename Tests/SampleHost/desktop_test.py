"""The host on a real X server, seen and driven by outside programs. Needs a display with a window manager, a session
bus and the Hangul input method: run it under scripts/private-desktop --wm openbox --ime ibus."""

import os
import unittest

from console_client import Refused, keys, rect, run
from host_case import HostCase, screen_size

FRAME = rect(200, 100, 460, 560)


class DesktopCase(HostCase):
    def setUp(self):
        self.start()

    def messages(self):
        return self.host.call("host", "messages", "main")

    def geometry(self):
        """The window as the X server has it, in screen points from the bottom left."""
        shell = dict(line.split("=") for line in run("xdotool", "getwindowgeometry", "--shell", self.window).split())
        height = self.read("frame")["height"]
        return {"x": int(shell["X"]), "y": screen_size()[1] - int(shell["Y"]) - int(height),
                "width": int(shell["WIDTH"]), "height": int(shell["HEIGHT"])}


class Composer(DesktopCase):
    def setUp(self):
        super().setUp()
        self.open_chat(FRAME)
        self.before = self.messages()

    def marked(self, view=None):
        """The marked ranges in a view and below it."""
        view = view or self.read("views")
        below = [found for subview in view["subviews"] for found in self.marked(subview)]
        return [view["markedRange"]] + below if view.get("markedRange") else below

    def test_hangul_composes_in_place(self):
        caret = self.read("caret")
        keys("g", "k", "s")
        self.until_text("한")
        self.assertEqual(self.marked(), [{"location": 0, "length": 1}])
        self.assertGreater(self.read("caret")["x"], caret["x"])
        keys("r", "m", "f")
        self.until_text("한글")
        self.assertEqual(self.marked(), [{"location": 1, "length": 1}])

    def test_return_while_composing_sends_the_whole_once(self):
        for round_number in range(5):
            with self.subTest(round=round_number):
                keys("g", "k", "s", "r", "m", "f", "Return")
                self.before.append("한글")
                self.host.until(lambda: len(self.messages()) >= len(self.before), "a message is sent")
                self.assertEqual((self.text(), self.messages()), ("", self.before))
        # What the input method held back would come with the next key.
        keys("r", "m", "f", "Return")
        self.host.until(lambda: self.messages() == self.before + ["글"], "the next message is its own")

    def test_control_return_breaks_the_line(self):
        keys("r", "k", "ctrl+Return", "s", "k")
        self.until_text("가\n나")
        keys("Return")
        self.host.until(lambda: self.messages() == self.before + ["가\n나"], "both lines are one message")

    def test_undo_and_redo(self):
        keys("1", "2")
        self.until_text("12")
        keys("ctrl+z")
        self.until_text("1")
        keys("ctrl+shift+z")
        self.until_text("12")


class Window(DesktopCase):
    def setUp(self):
        super().setUp()
        self.open_chat(FRAME)

    def press(self):
        """Presses in the drag region; the pointer's place."""
        x, y = self.on_screen(300, 40)
        run("xdotool", "mousemove", x, y, "mousedown", 1)
        return x, y

    def test_the_drag_region_moves_the_real_window(self):
        start = self.geometry()
        x, y = self.press()
        steps = iter(range(6, 600, 6))

        def moved():
            run("xdotool", "mousemove", x + next(steps), y)
            return self.geometry()["x"] > start["x"] + 20

        self.host.until(moved, "the window moves with the pointer")
        run("xdotool", "mouseup", 1)
        self.host.until(lambda: self.read("frame") == self.geometry(), "the model follows")
        self.assertEqual({**self.geometry(), "x": start["x"]}, start)

    def test_a_press_of_four_points_is_a_click(self):
        start = self.geometry()
        x, y = self.press()
        for step in range(1, 5):
            run("xdotool", "mousemove", x + step, y)
        run("xdotool", "mouseup", 1)
        keys("1")
        self.until_text("1")
        self.assertEqual(self.geometry(), start)

    def test_double_clicks_are_told_in_host_points_also_in_the_drag_region(self):
        for place in ((300, 40), (120, 300)):
            with self.subTest(place):
                self.host.take()
                run("xdotool", "mousemove", *self.on_screen(*place), "click", "--repeat", 2, "--delay", 20, 1)

                def told():
                    return [line["args"][0] for line in self.host.take() if line.get("event") == "mouseDoubleTapped"]

                (at,) = self.host.until(told, "the host hears of it")
                self.assertAlmostEqual(at["x"], place[0] * 100 / 77, delta=0.01)
                self.assertAlmostEqual(at["y"], place[1] * 100 / 77, delta=0.01)

    def test_what_only_a_simulated_user_can_do_is_refused(self):
        for call, arguments in (("text", ["a"]), ("advance", [1]), ("markedText", ["가"])):
            with self.subTest(call), self.assertRaisesRegex(Refused, "tool from outside"):
                self.host.desktop(call, *arguments)

    def test_a_screenshot_shows_the_window(self):
        path = os.path.join(os.environ["HOME"], "chat.png")

        def taken():
            try:
                self.host.desktop("screenshot", "main", path)
            except Refused:
                return False
            return True

        self.host.until(taken, "the window has been painted")
        size = run("identify", "-format", "%w %h %k", path).split()
        self.assertEqual(size[:2], [str(FRAME["width"]), str(FRAME["height"])])
        self.assertGreater(int(size[2]), 50, "more than a few colours")


class Focus(DesktopCase):
    """Between a native input and the host's own view, which takes no typing."""

    def setUp(self):
        super().setUp()
        self.host.call("app", "bindNSWindowWithUIWindowID", "main")
        self.host.desktop("makeWindow", "main", FRAME)
        self.host.desktop("orderFront", "main")
        self.until_it_has_the_keyboard()
        self.own = self.read("firstResponder")
        self.host.call("window:main", "addCommonTextInputViewOn", rect(100, 100, 200, 50), "host")

    def click(self, x, y):
        run("xdotool", "mousemove", *self.on_screen(x, y), "click", 1)

    def press(self, key, code):
        """Presses a key; it has been dealt with when this returns."""
        self.host.take()
        keys(key)
        self.host.until(lambda: any(line.get("event") == "handleFunctionKey" and line["args"][::2] == [code, 1]
                                    for line in self.host.take()), f"{key} comes up again")

    def test_a_syllable_in_the_making_is_neither_lost_nor_doubled_when_it_moves(self):
        self.click(200, 125)
        keys("g", "k", "s")
        self.until_text("한")
        self.click(300, 400)
        self.host.until(lambda: self.read("firstResponder") == self.own, "the host's view has the focus")
        self.press("1", 18)
        self.assertEqual(self.text(), "한", "the key goes nowhere")
        self.click(200, 125)
        self.host.until(lambda: self.read("firstResponder") != self.own, "the input has it")
        keys("r", "k")
        self.until_text("한가")

    def test_a_right_arrow_that_the_host_makes_moves_the_caret(self):
        self.click(200, 125)
        keys("1", "2")
        self.until_text("12")
        for _ in range(2):
            self.press("Left", 123)
        self.host.call("window:main", "generateRightArrowKey")
        keys("3")
        self.until_text("132")


if __name__ == "__main__":
    unittest.main()
