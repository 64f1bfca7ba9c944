"""The host's context menu, paste and drop on a real X server, with other programs as its user, as the clipboard's owner
and as the source of a drag. Run it under scripts/private-desktop --wm openbox --ime ibus."""

import os
import pathlib
import re
import subprocess
import tempfile
import time
import types
import unittest

from bus_service import Service
from console_client import Console, rect, run
from host_case import SCALE, HostCase, screen_size

SOURCE = os.environ.get("PASTE_SOURCE",
                        str(pathlib.Path(__file__).resolve().parents[2] / "build/default/bin/PasteSource"))
FRAME = rect(300, 100, 460, 560)
NAME = "a b#%가'\"?.txt"
ITEMS = [{"title": "답장"}, {"title": "Forward"}, {"separator": True}, {"title": "Mute", "state": "on"}]


def look(*command):
    """What a program sees of windows; one that goes while it looks ends it with an error, and then it looks again."""
    while (seen := subprocess.run(command, capture_output=True, timeout=20)).returncode and command[1] == "-root":
        pass
    return seen.stdout.decode()


def mapped_windows():
    """Every window that is shown: (id, x, y, width, height)."""
    shown = []
    for line in look("xwininfo", "-root", "-tree").splitlines():
        found = re.match(r"^\s{5}(0x[0-9a-f]+) .* (\d+)x(\d+)\+-?\d+\+-?\d+\s+\+(-?\d+)\+(-?\d+)$", line)
        if found and "IsViewable" in look("xwininfo", "-id", found[1]):
            shown.append((found[1], int(found[4]), int(found[5]), int(found[2]), int(found[3])))
    return shown


class Case(HostCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp())
        self.start()
        self.open_chat(FRAME)

    def file(self, name, contents):
        path = self.folder / name
        path.write_bytes(contents if isinstance(contents, bytes) else contents.encode())
        return path

    def event(self, name):
        """Waits until the host has told of it; its arguments."""
        def found():
            self.host.desktop("settle")
            for line in self.host.told:
                if line.get("event") == name:
                    self.host.told.remove(line)
                    return [line]
        return self.host.until(found, name)[0]["args"]

    def portal(self, files):
        """Gives these for every key."""
        bus = types.SimpleNamespace(socket=re.match("unix:path=([^,]*)", os.environ["DBUS_SESSION_BUS_ADDRESS"])[1])
        service = Service(bus, "org.freedesktop.portal.Documents", "/org/freedesktop/portal/documents",
                          {"RetrieveFiles": ("as", files)})
        self.addCleanup(service.close)
        return service


class Menu(Case):
    def show(self, items=ITEMS):
        """Asks for the menu, whose answer comes when it has closed; its window."""
        before = {window[0] for window in mapped_windows()}
        number = self.host.begin("window:main", "showPopoverMenuWithItems", items)

        def opened():
            return [window for window in mapped_windows() if window[0] not in before and window[3] > 20]
        menu = self.host.until(opened, "the menu is on the screen")[-1]
        return number, menu

    def closed(self, number, menu):
        self.assertIsNone(self.host.answer(number)["result"])
        self.host.until(lambda: menu[0] not in {window[0] for window in mapped_windows()}, "the menu is gone")
        self.assertEqual([event for event in self.host.events("window:main") if "Resign" in event], [])
        self.assertTrue(self.read("key"))

    def chosen(self):
        return [line["args"][0] for line in self.host.take() if line.get("event") == "popoverMenuItemHandler"]

    def composes(self):
        run("xdotool", "key", "g")
        first = self.host.until(self.text, "a key acts")
        run("xdotool", "key", "BackSpace")
        self.host.until(lambda: self.text() == "", "and is taken back")
        return first == "ㅎ"

    def test_a_right_click_opens_it_at_the_pointer_and_the_keyboard_chooses(self):
        x, y = self.on_screen(100, 150)
        run("xdotool", "mousemove", x, y, "click", 3)
        at = self.event("mouseRightClick")[0]
        self.assertAlmostEqual(at["x"], 100 * 100 / 77, delta=0.01)
        self.assertAlmostEqual(at["y"], 150 * 100 / 77, delta=0.01)
        number, menu = self.show()
        # It is made at the screen's corner and shown where it belongs.
        self.host.until(lambda: (menu[0], x, y) in [window[:3] for window in mapped_windows()], "it is at the pointer")
        run("xdotool", "key", "--delay", "30", "Down", "Down", "Return")
        self.host.answer(number)
        self.assertEqual(self.chosen(), ["Forward"])
        run("xdotool", "key", "a")
        self.host.until(lambda: self.text() != "", "the composer types again")

    def test_it_is_left_by_escape_and_by_a_press_elsewhere(self):
        run("xdotool", "mousemove", *self.on_screen(100, 150))
        for leave in (["key", "Escape"], ["mousemove", *self.on_screen(420, 500), "click", 1]):
            with self.subTest(leave[0]):
                number, menu = self.show()
                run("xdotool", *leave)
                self.closed(number, menu)
                self.assertEqual(self.chosen(), [])
                run("xdotool", "mousemove", *self.on_screen(100, 150))

    def test_the_release_of_the_opening_press_chooses_nothing_even_with_a_trembling_hand(self):
        x, y = self.on_screen(100, 150)
        run("xdotool", "mousemove", x, y, "mousedown", 3)
        self.event("mouseRightClick")
        number, menu = self.show()
        for step in (1, 2, 3, 2, 3, 4, 3, 4, 5, 4):
            run("xdotool", "mousemove", x + step, y + step)
        run("xdotool", "mouseup", 3)
        run("xdotool", "mousemove", x + 30 * SCALE, y + 40 * SCALE)
        self.assertIn(menu[0], {window[0] for window in mapped_windows()})
        run("xdotool", "mousemove", x + 20 * SCALE, y + 12 * SCALE, "click", 1)
        self.host.answer(number)
        self.assertEqual(self.chosen(), ["답장"])

    def test_it_stays_inside_the_work_area(self):
        width, height = screen_size()
        for x, y in ((width - 3, height - 3), (width - 3, 40), (3, height - 3)):
            with self.subTest(at=(x, y)):
                run("xdotool", "mousemove", x, y)
                number, menu = self.show()
                self.assertGreaterEqual(menu[1], 0)
                self.assertGreaterEqual(menu[2], 0)
                self.assertLessEqual(menu[1] + menu[3], width)
                self.assertLessEqual(menu[2] + menu[4], height)
                run("xdotool", "key", "Escape")
                self.host.answer(number)

    def test_the_host_goes_on_meanwhile_and_may_close_the_window(self):
        run("xdotool", "mousemove", *self.on_screen(100, 150))
        number, menu = self.show()
        self.assertEqual(self.host.call("window:main", "alpha"), 1)
        self.host.call("window:main", "closeWindow")
        self.host.answer(number)
        self.host.until(lambda: menu[0] not in {window[0] for window in mapped_windows()}, "the menu is gone")
        self.assertEqual(self.chosen(), [])

    def test_a_syllable_in_the_making_is_neither_lost_nor_doubled(self):
        run("xdotool", "mousemove", *self.on_screen(100, 150))
        self.host.until(self.composes, "the input method knows the window")
        run("xdotool", "key", "--delay", "20", "g", "k", "s")
        self.host.until(lambda: self.text() == "한", lambda: f"한 is composed, not {self.text()}")
        number, menu = self.show()
        run("xdotool", "key", "Escape")
        self.closed(number, menu)
        run("xdotool", "key", "--delay", "20", "r", "m", "f", "space")
        self.host.until(lambda: self.text() == "한글 ", lambda: f"글 follows once, not {self.text()}")


class Other:
    """The other application."""

    def __init__(self, case, *arguments):
        self.process = subprocess.Popen([SOURCE, *(str(part) for part in arguments)], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE)
        case.addCleanup(self.end)
        assert self.process.stdout.readline() == b"ready\n"

    def end(self):
        self.process.stdin.close()
        self.process.wait(10)
        self.process.stdout.close()


def picture(path, kind, size="40x30", noise=False):
    """A picture that another program wrote."""
    what = ["-seed", "1", "xc:orange", "+noise", "Random"] if noise else ["gradient:red-blue"]
    run("convert", "-size", size, *what, "-depth", "8", f"{kind}:{path}")
    return path


def difference(first, second):
    return float(run("sh", "-c", f"compare -metric RMSE '{first}' '{second}' null: 2>&1 || true").split("(")[1].split(")")[0])


class Paste(Case):
    def paste(self):
        return self.host.call("window:main", "readPastedFilePath")

    def test_file_lists(self):
        uri = (self.folder / NAME).as_uri().encode()
        rows = [("text/uri-list", uri + b"\r\n", [str(self.folder / NAME)]),
                ("text/uri-list", b"file:///a\r\nhttps://b/\r\n", ["/a", "https://b/"]),
                ("text/uri-list", f"file://{self.folder}/{NAME}".encode(), [str(self.folder / NAME)]),
                ("x-special/gnome-copied-files", b"copy\n" + uri, [str(self.folder / NAME)]),
                ("text/uri-list", b"https://b/\r\n", []),
                ("UTF8_STRING", b"/a", [])]
        for kind, contents, expected in rows:
            with self.subTest(contents):
                Other(self, "own", "whole", f"{kind}={self.file('list', contents)}")
                self.assertEqual(self.paste(), expected)

    def test_pictures_of_each_kind_become_png_files(self):
        for kind, mime in (("png", "image/png"), ("jpg", "image/jpeg"), ("bmp3", "image/bmp"), ("tiff", "image/tiff")):
            for manner in ("whole", "pieces"):
                with self.subTest(kind=kind, manner=manner):
                    original = picture(self.folder / f"a.{kind}", kind)
                    Other(self, "own", manner, f"{mime}={original}")
                    (pasted,) = self.paste()
                    self.assertRegex(pasted, r"/ClipBoardImages/Image_\d+\.png$")
                    self.assertEqual(pathlib.Path(pasted).read_bytes()[:8], b"\x89PNG\r\n\x1a\n")
                    self.assertLess(difference(pasted, original), 0.02)

    def test_a_picture_of_many_megabytes_comes_in_pieces(self):
        original = picture(self.folder / "large.png", "png", "1600x1200", noise=True)
        self.assertGreater(original.stat().st_size, 1_000_000)
        Other(self, "own", "pieces", f"image/png={original}")
        (pasted,) = self.paste()
        self.assertEqual(difference(pasted, original), 0)

    def test_a_picture_that_claims_to_be_huge_is_refused(self):
        header = picture(self.folder / "small.bmp", "bmp3").read_bytes()
        huge = self.file("huge.bmp", header[:18] + (30000).to_bytes(4, "little") * 2 + header[26:])
        Other(self, "own", "whole", f"image/bmp={huge}")
        self.assertEqual(self.paste(), [])

    def test_owners_that_fail_cost_seconds_at_most(self):
        original = picture(self.folder / "large.png", "png", "800x600", noise=True)
        for manner, limit in (("silent", 3), ("dying", 3)):
            with self.subTest(manner):
                Other(self, "own", manner, f"image/png={original}")
                start = time.monotonic()
                self.assertEqual(self.paste(), [])
                self.assertLess(time.monotonic() - start, limit)
        Other(self, "own", "whole", f"text/uri-list={self.file('list', 'file:///after')}")
        self.assertEqual(self.paste(), ["/after"])

    def test_files_of_a_program_in_a_sandbox(self):
        path = f"{self.folder}/{NAME}"
        portal = self.portal([path, f"{self.folder}/100%25"])
        offer = f"application/vnd.portal.filetransfer={self.file('key', 'a key')}"
        Other(self, "own", "whole", offer)
        self.assertEqual(self.paste(), [path, f"{self.folder}/100%25"])
        Other(self, "own", "whole", offer, f"text/uri-list={self.file('list', 'file:///a')}")
        self.assertEqual(self.paste(), ["/a"])
        portal.answers.clear()
        Other(self, "own", "whole", offer)
        self.assertEqual(self.paste(), [], "a key that the portal rejects")
        portal.answers["RetrieveFiles"] = None
        self.assertEqual(self.paste(), [], "a portal that doesn't answer")
        portal.close()
        self.assertEqual(self.paste(), [], "no portal")

    def test_what_was_copied_outlives_the_host_with_a_clipboard_manager(self):
        manager = Other(self, "keep")
        self.host.desktop("setClipboard", "안녕, 여러분")
        self.host.__exit__()
        self.assertEqual(manager.process.stdout.readline().decode(), "안녕, 여러분\n")
        with Console("desktop") as after:
            self.assertEqual(after.desktop("clipboard"), "안녕, 여러분")


class Drop(Case):
    def drag(self, *offer, droppable=True, wanted=True):
        """Drags what the other application offers onto the window; how the drag ended for it."""
        if droppable:
            self.host.call("window:main", "setAsFileDropable")
        source = Other(self, "drag", 20, 20, *offer)
        place = tuple(SCALE * value for value in (20, 20, 120, 120))
        self.host.until(lambda: place in {window[1:] for window in mapped_windows()}, "the source is shown")
        start = 60 * SCALE
        run("xdotool", "mousemove", start, start, "mousedown", 1)
        x, y = self.on_screen(200, 200)
        for step in range(1, 11):
            run("xdotool", "mousemove", start + (x - start) * step // 10, start + (y - start) * step // 10)
        told = iter(source.process.stdout.readline, b"")
        if wanted:
            self.assertEqual(next(told), b"wanted\n")
        run("xdotool", "mouseup", 1)
        return next(line for line in told if line != b"wanted\n").decode().strip()

    def test_files_reach_the_host_by_their_names(self):
        files = (f"file://{self.folder.as_posix()}/b\r\n" + (self.folder / NAME).as_uri() + "\r\n")
        ending = self.drag(f"text/uri-list={self.file('list', files)}")
        self.assertEqual(self.event("didSelectedFilePath"), [[f"{self.folder}/b", str(self.folder / NAME)]])
        self.assertEqual(ending, "copied")

    def test_files_of_a_program_in_a_sandbox(self):
        self.portal([str(self.folder / NAME)])
        self.assertEqual(self.drag(f"application/vnd.portal.filetransfer={self.file('key', 'a key')}"), "copied")
        self.assertEqual(self.event("didSelectedFilePath"), [[str(self.folder / NAME)]])

    def test_a_picture_without_a_file_becomes_one(self):
        original = picture(self.folder / "a.png", "png", "900x700", noise=True)
        # As Chromium offers it.
        self.assertEqual(self.drag(f"text/x-moz-url={self.file('address', 'https://b/a.png'.encode('utf-16-le'))}",
                                   f"application/octet-stream={original}"), "copied")
        ((dropped,),) = self.event("didSelectedFilePath")
        self.assertRegex(dropped, r"/dropableImages/Image_\d+\.png$")
        self.assertEqual(difference(dropped, original), 0)

    def test_what_holds_no_file_is_refused(self):
        self.assertEqual(self.drag(f"text/plain={self.file('offer', 'text')}", wanted=False), "refused")
        # A page looks like a file until it is dropped; its source hears of no refusal any more.
        self.drag(f"text/uri-list={self.file('offer', 'https://b/')}")
        self.assertNotIn("didSelectedFilePath", self.host.events())

    def test_nothing_is_dropped_where_the_host_did_not_ask_for_it(self):
        self.assertEqual(self.drag(f"text/uri-list={self.file('list', 'file:///a')}", droppable=False, wanted=False), "refused")


if __name__ == "__main__":
    unittest.main()
