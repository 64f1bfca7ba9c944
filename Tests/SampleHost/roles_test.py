"""Child windows, popovers and sheets on a real X server, moved and read by outside programs. Needs a display with a window
manager and a session bus: run it under scripts/private-desktop --wm openbox."""

import os
import signal
import subprocess
import tempfile
import unittest

from console_client import Console, rect, run
from host_case import HostCase, screen_size
from x_windows import XServer

MAIN = rect(420, 180, 400, 420)
CHILDREN = {"right": rect(0, 0, 140, 120), "below": rect(0, 0, 150, 100), "left": rect(0, 0, 160, 110)}
EDGES = {"right": [2, 1], "below": [2, 3], "left": [0, 1]}


class RolesCase(HostCase):
    def setUp(self):
        self.start()
        self.server = XServer()
        self.addCleanup(self.server.close)
        self.screen = screen_size()[1]

    def open(self, name, frame, answers=None, host=None):
        host = host or self.host
        for member, value in (answers or {}).items():
            host.call("host", "answer", f"window:{name}", member, value)
        host.call("app", "bindNSWindowWithUIWindowID", name)
        host.desktop("makeWindow", name, frame)
        host.desktop("orderFront", name)
        host.until(lambda: host.desktop("read", name, "visible"), f"{name} is shown")
        handle = host.desktop("read", name, "nativeHandle")
        host.until(lambda: self.server.is_mapped(handle), f"the window manager shows {name}")
        return handle

    def open_family(self):
        self.main = self.open("main", MAIN)
        self.family = {name: self.open(name, frame, {"initialAttachmentsEdge": EDGES[name], "parentWindowHelper": "window:main"})
                       for name, frame in CHILDREN.items()}

    def drag(self, *step, steps):
        """Drags the main window by its title bar, and waits until the host has told of its end."""
        self.host.take()
        x, y = self.title_bar()
        run("xdotool", "mousemove", x, y, "mousedown", 1)
        for number in range(1, steps + 1):
            run("xdotool", "mousemove", x + step[0] * number, y + step[1] * number)
        run("xdotool", "mouseup", 1)
        self.host.until(lambda: any(line.get("posted") == "mirelo_parentWindowFrame" for line in self.host.take()), "the drag ends")

    def rests(self):
        """Whether the server shows the main window where the model has it."""
        frame = self.read("frame")
        return self.server.place(self.main) == (frame["x"], self.screen - frame["y"] - frame["height"])

    def offsets(self):
        x, y = self.server.place(self.main)
        return {name: (px - x, py - y) for name, (px, py) in ((n, self.server.place(h)) for n, h in self.family.items())}

    def model_offsets(self):
        """The same by the model's frames."""
        main = self.read("frame")
        top = main["y"] + main["height"]
        frames = {name: self.read("frame", name) for name in self.family}
        return {name: (f["x"] - main["x"], top - f["y"] - f["height"]) for name, f in frames.items()}

    def stacking(self):
        """Ours, from the lowest to the highest, as the window manager tells."""
        return self.listed("_NET_CLIENT_LIST_STACKING")

    def listed(self, name):
        """The windows in a property of the root window."""
        words = run("xprop", "-root", name).replace(",", " ").split()
        return [int(word, 16) for word in words if word.startswith("0x")]

    def active(self):
        return next(iter(self.listed("_NET_ACTIVE_WINDOW")), None)

    def has_state(self, handle, state):
        return f"_NET_WM_STATE_{state}" in run("xprop", "-id", handle, "_NET_WM_STATE")

    def title_bar(self):
        """A point of the main window's title bar, from the top left."""
        frame = self.read("frame")
        return int(frame["x"]) + 200, self.screen - int(frame["y"] + frame["height"]) + 12


class Children(RolesCase):
    def setUp(self):
        super().setUp()
        self.open_family()
        self.expected = self.model_offsets()
        self.host.until(lambda: self.offsets() == self.expected, "the server shows what the model says")

    def test_a_hundred_moves_leave_every_child_in_place(self):
        for number in range(100):
            x, y = 300 + 97 * number % 211, 120 + 61 * number % 173
            if number % 2:
                run("xdotool", "windowmove", self.main, x, y)
            else:
                self.host.desktop("setFrame", "main", rect(x, self.screen - y - MAIN["height"], MAIN["width"], MAIN["height"]))
            self.host.until(lambda at=(x, y): self.server.place(self.main) == at,
                            f"move {number} to {(x, y)}: {self.server.place(self.main)}")
            self.host.until(lambda: self.offsets() == self.expected, f"move {number}: {self.offsets()}, not {self.expected}")
        self.assertEqual(self.model_offsets(), self.expected)

    def test_a_drag_takes_the_children_along_at_every_step(self):
        frames = {name: self.server.top_level(handle) for name, handle in {"main": self.main, **self.family}.items()}
        names = {frame: name for name, frame in frames.items()}
        start = {name: self.server.place(frame) for name, frame in frames.items()}
        for frame in frames.values():
            self.server.watch(frame)
        self.drag(-3, 2, steps=40)
        self.host.until(self.rests, "the window manager has worked off all steps")
        self.host.until(lambda: self.offsets() == self.expected, "the children rest where they belong")

        parent_steps = [(0, 0)]
        made = dict.fromkeys(self.family, 0)
        worst = 0
        for frame, px, py in self.server.steps():
            name = names[frame]
            step = (px - start[name][0], py - start[name][1])
            if name == "main":
                if step != parent_steps[-1]:
                    parent_steps.append(step)
                worst = max(worst, *(len(parent_steps) - 1 - index for index in made.values()))
            elif step in parent_steps:
                made[name] = len(parent_steps) - 1 - parent_steps[::-1].index(step)
        self.assertGreater(len(parent_steps), 10, "the drag went in steps")
        self.assertEqual(set(made.values()), {len(parent_steps) - 1})
        self.assertLessEqual(worst, 1, "a child is one step behind its parent at most")

    def test_they_minimise_restore_and_close_with_their_parent(self):
        helper = "window:main"
        start = self.server.place(self.main)
        for _ in range(2):
            self.host.call(helper, "minimize")
            for handle in (self.main, *self.family.values()):
                self.host.until(lambda h=handle: not self.server.is_mapped(h), "all leave the screen")
            self.host.call(helper, "becomeFirstWindow")
            for handle in (self.main, *self.family.values()):
                self.host.until(lambda h=handle: self.server.is_mapped(h), "all are back")
            self.host.until(lambda: self.offsets() == self.expected and self.server.place(self.main) == start, "in their places")
            self.host.until(lambda: self.active() == self.main, "it is active, so that nothing of its return is still to come")
        run("xdotool", "windowminimize", self.main)
        for name, handle in {"main": self.main, **self.family}.items():
            self.host.until(lambda n=name, h=handle: not self.server.is_mapped(h) and not self.read("visible", n), f"{name} goes too")
        run("xdotool", "windowactivate", self.main)
        for name, handle in {"main": self.main, **self.family}.items():
            self.host.until(lambda n=name, h=handle: self.server.is_mapped(h) and self.read("visible", n),
                       lambda n=name, h=handle: f"{n} is back: {self.server.is_mapped(h)}, {self.read('visible', n)}")
        self.host.until(lambda: self.offsets() == self.expected and self.server.place(self.main) == start, "in their places")
        self.host.call(helper, "closeWindow")
        self.host.until(lambda: not any(handle in self.stacking() for handle in self.family.values()), "all are closed")

    def test_they_go_to_another_desktop_with_it(self):
        run("xdotool", "set_num_desktops", 2)
        self.addCleanup(run, "xdotool", "set_num_desktops", 1)
        for desktop in ("1", "0"):
            run("xdotool", "set_desktop_for_window", self.main, desktop)
            for handle in (self.main, *self.family.values()):
                self.host.until(lambda h=handle, d=desktop: run("xdotool", "get_desktop_for_window", h).strip() == d,
                           f"all are on desktop {desktop}")

    def test_the_stacking_is_the_models(self):
        handles = {"main": self.main, **self.family, "other": self.open("other", rect(500, 200, 300, 300))}
        numbers = {self.read("number", name): handle for name, handle in handles.items()}

        def agree():
            expected = [numbers[number] for number in reversed(self.host.desktop("orderedWindows"))]
            return [handle for handle in self.stacking() if handle in expected] == expected

        for window, call in (("main", "becomeFirstWindow"), ("other", "becomeFirstWindow"), ("left", "becomeFirstWindow"),
                             ("other", "orderFrontNSWindow"), ("main", "orderFrontBehideCurrentWindows"),
                             ("below", "makeMainAndKeyNSWindow")):
            with self.subTest(window, call=call):
                self.host.call(f"window:{window}", call)
                self.host.until(agree, f"{self.stacking()} is what the model says")


class Levels(RolesCase):
    def test_the_user_has_the_window_manager_keep_it_above(self):
        main = self.open("main", MAIN)
        for expected in (True, False, True):
            run("wmctrl", "-i", "-r", main, "-b", f"{'add' if expected else 'remove'},above")
            self.host.until(lambda e=expected: self.host.call("window:main", "alwaysOnTop") == e, f"{expected} is heard")
        self.host.call("window:main", "setAlwaysOnTop", False)
        self.host.until(lambda: not self.has_state(main, "ABOVE"), "the host takes it back")
        self.assertFalse(self.host.call("window:main", "alwaysOnTop"))


class SlowWindowManager(RolesCase):
    def test_a_frame_stands_until_the_window_manager_has_answered(self):
        self.main = self.open("main", MAIN)
        manager = int(os.environ["PRIVATE_DESKTOP_WM_PID"])
        self.host.until(self.rests, "it is at its place")
        self.addCleanup(os.kill, manager, signal.SIGCONT)

        def stops():
            """Where it hasn't taken the server for itself alone."""
            os.kill(manager, signal.SIGSTOP)
            try:
                return not subprocess.run(["xset", "q"], stdout=subprocess.DEVNULL, timeout=2).returncode
            except subprocess.TimeoutExpired:
                os.kill(manager, signal.SIGCONT)
                return False

        self.host.until(stops, "the window manager is stopped")
        frame = rect(200, 100, 410, 430)
        self.host.desktop("setFrame", "main", frame)
        begun = self.host.desktop("now")
        self.host.until(lambda: self.host.desktop("now") > begun + 0.5, "it is given up for lost")
        self.assertEqual(self.read("frame"), frame)
        os.kill(manager, signal.SIGCONT)
        self.host.until(self.rests, "the server shows it there")
        self.assertEqual(self.read("frame"), frame)


class Popover(RolesCase):
    def test_it_floats_at_its_place_fades_in_and_closes_with_main(self):
        self.main = main = self.open("main", MAIN)
        self.host.until(self.rests, "the parent is at its place")
        popover = self.open("popover", rect(0, 0, 200, 120), {
            "popoverWindowDescription": {"targetFrame": rect(50, 60, 200, 120), "parentWindowHelper": "window:main"}})
        x, y = self.server.place(main)
        self.host.until(lambda: self.server.place(popover) == (x + 50, y + 60), "it is at its place")
        self.assertIn(f"{main:#x}", run("xprop", "-id", popover, "WM_TRANSIENT_FOR"))
        self.host.until(lambda: self.has_state(popover, "ABOVE"), "it floats")
        self.host.until(lambda: self.host.call("window:popover", "alpha") == 1, "it has faded in")
        run("xdotool", "windowmove", main, 200, 150)
        self.host.until(lambda: self.server.place(popover) == (250, 210), "it stays with its parent")
        run("xdotool", "mousemove", 200 + 300, 150 + 350, "click", 1)
        self.host.until(lambda: popover not in self.stacking(), "a click on the parent closes it")


class Sheet(RolesCase):
    def setUp(self):
        super().setUp()
        self.main = self.open("main", MAIN)
        self.show("sheet")

    def show(self, name):
        self.sheet = self.open(name, rect(0, 0, 240, 120))
        self.host.call(f"window:{name}", "convertAsSheetWindowWithParentWindowHelper", "window:main")
        self.host.until(lambda: self.server.is_mapped(self.sheet), "it is shown")

    def below_title_bar(self):
        x, y = self.server.place(self.main)
        return self.server.place(self.sheet) == (x + 80, y + 29)

    def test_it_hangs_from_the_title_bar_and_blocks_its_parent_only(self):
        self.host.until(self.below_title_bar, "it hangs below the title bar")
        self.host.until(lambda: self.has_state(self.sheet, "MODAL"), "the window manager knows")
        self.host.until(lambda: self.active() == self.sheet, "it has the keyboard")
        other = self.open("other", rect(20, 20, 200, 200))
        self.host.until(lambda: self.active() == other, "another window takes the keyboard")
        self.host.call("host", "answer", "window:main", "mouseRightClick", True)
        self.host.take()
        x, y = self.server.place(self.main)
        for _ in range(2):
            run("xdotool", "mousemove", x + 30, y + 350, "click", 1, "click", 3)
            self.host.until(lambda: self.active() == self.sheet, "a click on the parent calls the sheet")
        self.assertNotIn("mouseRightClick", self.host.events("window:main"))
        run("xdotool", "mousemove", x + 15, y + 14, "click", 1)
        self.assertIn(self.main, self.stacking(), "the close button")
        ordered = [handle for handle in self.stacking() if handle in (self.main, self.sheet)]
        self.assertEqual(ordered, [self.main, self.sheet])

    def test_it_moves_with_its_parent(self):
        self.host.until(self.below_title_bar, "it hangs below the title bar")
        start = self.server.place(self.main)
        self.drag(4, 3, steps=20)
        self.host.until(self.rests, "the window manager has worked off all steps")
        self.assertGreater(self.server.place(self.main)[0], start[0] + 50)
        self.host.until(self.below_title_bar, "it is there")
        run("xdotool", "windowmove", self.main, 250, 90)
        self.host.until(lambda: self.server.place(self.main) == (250, 90) and self.below_title_bar(), "moved by the window manager")

    def test_it_ends_and_leaves_the_parent_usable_however_often(self):
        self.host.call("host", "answer", "window:main", "mouseRightClick", True)
        x, y = self.server.place(self.main)
        for number, (window, end) in enumerate((("main", "closeChildAlert"), ("second", "closeSheetWindow"))):
            with self.subTest(end):
                if number:
                    self.show(window)
                self.host.until(lambda: self.active() == self.sheet, "it has the keyboard")
                self.host.call(f"window:{window}", end)
                self.host.until(lambda: self.sheet not in self.stacking(), "it is gone")
                self.host.until(lambda: self.active() == self.main, "the keyboard is back")
                self.host.take()
                run("xdotool", "mousemove", x + 30, y + 350, "click", 3)
                self.host.until(lambda: "mouseRightClick" in self.host.events("window:main"), "the parent takes clicks")


class Autosave(RolesCase):
    def test_a_frame_survives_restarts_of_the_process(self):
        frame = rect(317, 143, 411, 333)
        with tempfile.TemporaryDirectory() as home:
            environment = {"HOME": home, "XDG_CONFIG_HOME": os.path.join(home, "config"),
                           "XDG_DATA_HOME": os.path.join(home, "data")}
            for run_number in range(4):
                with self.subTest(run=run_number), Console("desktop", environment) as host:
                    host.call("host", "launch")
                    self.open("chat", rect(50, 60, 200, 200), {"frameAutosaveName": "Chat"}, host)
                    if run_number == 0:
                        host.desktop("setFrame", "chat", frame)
                    handle = host.desktop("read", "chat", "nativeHandle")
                    place = (frame["x"], self.screen - frame["y"] - frame["height"])
                    host.until(lambda h=handle: self.server.place(h) == place, "the server shows it there")
                    self.assertEqual(host.call("window:chat", "nsWindowFrame"), frame)
                    host.call("window:chat", "closeWindow")


class Companion(RolesCase):
    def test_another_process_hears_of_each_frame_once(self):
        self.open("main", MAIN)
        other = Console("desktop")
        self.addCleanup(other.__exit__)
        other.desktop("observe", "mirelo_parentWindowFrame")

        def heard():
            frames = [line["args"][1] for line in other.take() if line.get("event") == "notification"]
            self.heard += [(frame["parentID"], frame["isResized"], frame["parentFrame"]) for frame in frames]
            return self.heard

        self.heard = []
        x, y = self.title_bar()
        run("xdotool", "mousemove", x, y, "mousedown", 1)
        for step in range(1, 21):
            run("xdotool", "mousemove", x + 4 * step, y + 3 * step)
        self.host.until(lambda: self.read("frame")["x"] > MAIN["x"] + 40, "the window moves")
        self.assertEqual(heard(), [], "nothing before the button is up")
        run("xdotool", "mouseup", 1)
        self.host.until(lambda: len(heard()) == 1, lambda: f"one frame after the move: {self.heard}")
        run("xdotool", "mousemove", x + 80, y + 260, "click", 1)
        for _ in range(2):
            self.host.desktop("setFrame", "main", rect(100, 120, 300, 310))
        self.host.until(lambda: len(heard()) >= 2, "the resize")
        other.desktop("settle")
        self.assertEqual([(window, resized) for window, resized, _ in heard()], [("main", "false"), ("main", "true")])
        self.assertEqual(self.heard[1][2], "{{100, 120}, {300, 310}}")


if __name__ == "__main__":
    unittest.main()
