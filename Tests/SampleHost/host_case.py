"""What the tests of a host on a real X server share: it is seen and driven by outside programs."""

import os
import unittest

from console_client import HOST, Console, run

SCALE = int(os.environ.get("QT_SCALE_FACTOR", "1"))


def screen_size():
    return tuple(int(part) for part in run("xdotool", "getdisplaygeometry").split())


class HostCase(unittest.TestCase):
    NAME = "main"  # of the window that is meant where none is named

    def start(self, environment=None, host=HOST):
        self.host = Console("desktop", environment, host)
        self.addCleanup(self.host.__exit__)
        self.host.call("host", "launch")

    def open_chat(self, frame):
        self.host.call("host", "openChat", self.NAME, frame)
        self.until_it_has_the_keyboard()

    def until_it_has_the_keyboard(self):
        self.host.until(lambda: self.read("main") and self.read("key"), "the window becomes main and key")
        self.window = self.read("nativeHandle")
        self.host.until(lambda: f"{self.window:#x}" in run("xprop", "-root", "_NET_ACTIVE_WINDOW"), "it is active")
        # The window manager says so before it hands over the keyboard.
        self.host.until(lambda: int(run("xdotool", "getwindowfocus")) == self.window, "it has the keyboard")

    def read(self, field, window=None):
        return self.host.desktop("read", window or self.NAME, field)

    def text(self):
        return self.host.call(f"text:{self.NAME}", "attributedText")

    def until_text(self, expected):
        self.host.until(lambda: self.text() == expected, lambda: f"the composer holds {expected!r}, not {self.text()!r}")

    def on_screen(self, x, y):
        """A place of the window, in points from its top left, as xdotool takes it."""
        frame = self.read("frame")
        return SCALE * (int(frame["x"]) + x), screen_size()[1] - SCALE * (int(frame["y"] + frame["height"]) - y)
