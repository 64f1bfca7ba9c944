"""The installed messenger on a real desktop: its web-view companion, unpacked, started and led about; then an update to a
version that takes its place and comes back by itself. Run it under scripts/private-desktop --wm openbox."""

import json
import os
import pathlib
import plistlib
import shutil
import signal
import subprocess
import tempfile
import time
import unittest

from console_client import rect, run
from host_case import HostCase

APPS = pathlib.Path(os.environ.get("MIRELO_APPS", pathlib.Path(__file__).resolve().parents[2] / "build/default/apps"))
COMPANION = "MireloWebView_1_1_2.app"
TITLE_BAR = 29
GAP = 8


def processes_in(folder):
    """What runs a program below a folder, by its path there."""
    found = {}
    for entry in pathlib.Path("/proc").iterdir():
        try:
            program = pathlib.Path(os.readlink(entry / "exe").removesuffix(" (deleted)"))
        except OSError:
            continue
        if entry.name.isdigit() and program.is_relative_to(folder):
            found.setdefault(str(program.relative_to(folder)), []).append(int(entry.name))
    return found


def windows_of(process):
    answer = subprocess.run(["xdotool", "search", "--onlyvisible", "--pid", str(process)], stdout=subprocess.PIPE,
                            stderr=subprocess.DEVNULL, timeout=20)
    return answer.stdout.decode().split()


def geometry(window):
    """From the screen's top left: x, y, width, height."""
    shell = dict(line.split("=") for line in run("xdotool", "getwindowgeometry", "--shell", window).split())
    return tuple(int(shell[name]) for name in ("X", "Y", "WIDTH", "HEIGHT"))


class InstalledCase(HostCase):
    def setUp(self):
        self.root = pathlib.Path(tempfile.mkdtemp(prefix="update 업데이트 ")).resolve()
        self.addCleanup(shutil.rmtree, self.root, ignore_errors=True)
        self.addCleanup(self.end_all)
        self.installed = self.root / "install/Mirelo.app"
        self.program = self.installed / "Contents/Linux/Mirelo"
        shutil.copytree(APPS / "Mirelo.app", self.installed, symlinks=True)
        self.companions = self.root / "cache/com.brenholt.macos.mirelo/PlugIns/WebView"
        self.companions.mkdir(parents=True)
        run(self.installed / "Contents/Linux/veltrik-zip", "create", "--keep-parent", self.companions / f"{COMPANION}.zip",
            APPS / COMPANION)
        self.environment = {"XDG_CACHE_HOME": str(self.root / "cache")}
        self.feedback = []
        self.logged = []

    def end_all(self):
        for numbers in processes_in(self.root).values():
            for number in numbers:
                os.kill(number, signal.SIGKILL)

    def start(self):
        super().start(self.environment, str(self.program))
        self.open_chat(rect(60, 120, 440, 560))

    def listen(self):
        for line in self.host.take():
            self.logged += [line["log"]] if "log" in line else []
            if line.get("event") == "handleWebViewFeedBackWithUserInfo":
                self.feedback.append(json.loads(line["args"][0]))
            if line.get("event") == "webViewDownloadCompletedWithResult":
                self.feedback.append(line["args"][0])

    def until_told(self, event, address=""):
        def told():
            self.listen()
            return [each for each in self.feedback if isinstance(each, dict) and each["event"] == event and
                    each.get("url", "").endswith(address)]
        return self.host.until(told, f"feedback {event!r}")[0]

    def until(self, condition, what):
        return self.host.until(condition, what) if self.host.process.poll() is None else self.poll(condition, what)

    @staticmethod
    def poll(condition, what):
        deadline = time.monotonic() + 30
        while not (value := condition()):
            if time.monotonic() > deadline:
                raise AssertionError(f"not in time: {what}")
        return value

    def companion_process(self):
        program = f"cache/com.brenholt.macos.mirelo/PlugIns/WebView/{COMPANION}/Contents/Linux/{COMPANION[:-4]}"
        return processes_in(self.root).get(program, [None])[0]


class Companion(InstalledCase):
    def test_it_is_unpacked_started_led_about_and_ended(self):
        self.start()
        self.assertFalse(self.host.call("app", "hasActiveWebView"))
        self.host.call("app", "openWebViewWithUrl", "https://example.com/첫째", None, None, {})
        self.assertEqual(self.until_told("started")["url"], "https://example.com/첫째")
        self.assertEqual(self.feedback[0], True)
        self.assertEqual([item.name for item in self.companions.iterdir()], [COMPANION])
        self.assertTrue(self.host.call("app", "hasActiveWebView"))
        process = self.companion_process()

        self.host.call("app", "openWebViewWithUrl", "https://example.com/둘째", "X-A: 1", "agent",
                       {"windowSize": "medium", "parentID": "main"})
        self.until_told("loaded", "둘째")
        self.assertEqual(self.companion_process(), process)
        window = self.until(lambda: windows_of(process), "the companion's window")[0]
        self.until(lambda: geometry(window)[2:] == (640, 660 + TITLE_BAR), "its size")

        for x, y in ((40, 90), (90, 60), (10, 110)):
            with self.subTest(x=x, y=y):
                self.drag_host_to(x, y)
                self.until(lambda: geometry(window)[:2] == self.beside_the_host(),
                           lambda: f"it follows: {geometry(window)[:2]}, not {self.beside_the_host()}")
        if "MIRELO_PICTURE" in os.environ:
            run("import", "-window", "root", os.environ["MIRELO_PICTURE"])

        self.host.desktop("close", "main")
        self.assertEqual(self.until_told("hidden")["event"], "hidden")
        self.until(lambda: not windows_of(process), "it hides with its parent")
        self.host.call("app", "terminate")
        self.poll(lambda: self.companion_process() is None, "it ends with the host")

    def host_geometry(self):
        return geometry(self.host.desktop("read", "main", "nativeHandle"))

    def beside_the_host(self):
        left, top, width, _ = self.host_geometry()
        return left + width + GAP, top

    def drag_host_to(self, x, y):
        """Steers by where the window is: a busy host begins the drag late, and that much of the way is lost."""
        left, top, *_ = self.host_geometry()
        pointer = [left + 300, top + 40]
        run("xdotool", "mousemove", *pointer, "mousedown", 1)

        def arrived():
            left, top, *_ = self.host_geometry()
            if abs(x - left) <= 8 and abs(y - top) <= 8:
                return True
            for axis, missing in enumerate((x - left, y - top)):
                pointer[axis] += max(-5, min(5, missing))
            run("xdotool", "mousemove", *pointer)
            return False

        try:
            self.until(arrived, "the host's window is dragged")
        finally:
            run("xdotool", "mouseup", 1)


class Update(InstalledCase):
    def version(self):
        return plistlib.loads((self.installed / "Contents/Info.plist").read_bytes())["CFBundleVersion"]

    def test_the_new_version_takes_its_place_and_comes_back(self):
        archive = self.root / "download [2].zip"
        before = self.version()
        run(self.program, "--make-update", "2.0", archive)
        self.assertEqual(self.version(), before)
        self.start()
        first = self.host.process.pid
        self.host.call("app", "restartWithDownloadedUpdateFilePath", str(archive))

        def relaunching():
            self.listen()
            return [line for line in self.logged if "relaunch> will open MireloRelauncher.app" in line]

        self.assertIn(f'"-t", "{self.installed}", "-pid", "{first}"]', self.until(relaunching, "the relauncher starts")[0])
        self.assertEqual(self.version(), "2.0")
        self.assertEqual([item.name for item in self.installed.parent.iterdir()], ["Mirelo.app"])
        self.until(lambda: processes_in(self.root).get("MireloRelauncher.app/Contents/Linux/MireloRelauncher"),
                   "the relauncher waits")
        self.host.call("app", "terminate")
        self.assertEqual(self.host.process.wait(30), 0)

        second = self.poll(lambda: processes_in(self.root).get("install/Mirelo.app/Contents/Linux/Mirelo"),
                           "the new version starts")
        self.assertEqual(len(second), 1)
        self.assertNotEqual(second[0], first)
        self.poll(lambda: windows_of(second[0]), "it shows its window")
        self.poll(lambda: "MireloRelauncher.app/Contents/Linux/MireloRelauncher" not in processes_in(self.root),
                  "the relauncher ends")


if __name__ == "__main__":
    unittest.main(verbosity=2)
