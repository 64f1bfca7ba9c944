"""What the X server knows of windows and of its user, read over a connection of its own."""

import ctypes
import subprocess

STRUCTURE_NOTIFY_MASK, CONFIGURE_NOTIFY = 1 << 17, 22


class ConfigureEvent(ctypes.Structure):
    _fields_ = [("type", ctypes.c_int), ("serial", ctypes.c_ulong), ("send_event", ctypes.c_int),
                ("display", ctypes.c_void_p), ("event", ctypes.c_ulong), ("window", ctypes.c_ulong), ("x", ctypes.c_int),
                ("y", ctypes.c_int), ("width", ctypes.c_int), ("height", ctypes.c_int), ("border_width", ctypes.c_int),
                ("above", ctypes.c_ulong), ("override_redirect", ctypes.c_int)]


class ScreenSaverInfo(ctypes.Structure):
    _fields_ = [("window", ctypes.c_ulong), ("state", ctypes.c_int), ("kind", ctypes.c_int),
                ("til_or_since", ctypes.c_ulong), ("idle", ctypes.c_ulong), ("mask", ctypes.c_ulong)]


class Event(ctypes.Union):
    _fields_ = [("type", ctypes.c_int), ("configure", ConfigureEvent), ("pad", ctypes.c_long * 24)]


ErrorHandler = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_void_p, ctypes.c_void_p)


@ErrorHandler
def go_on(_display, _error):
    """The call that went wrong says so itself."""
    return 0


class XServer:
    def __init__(self):
        self.x11 = ctypes.CDLL("libX11.so.6")
        self.x11.XOpenDisplay.restype = ctypes.c_void_p
        self.x11.XDefaultRootWindow.restype = ctypes.c_ulong
        self.display = ctypes.c_void_p(self.x11.XOpenDisplay(None))
        if not self.display:
            raise RuntimeError("there is no display")
        self.x11.XSetErrorHandler(go_on)
        self.root = ctypes.c_ulong(self.x11.XDefaultRootWindow(self.display))

    def close(self):
        self.x11.XCloseDisplay(self.display)

    def place(self, window):
        """Pixels from the screen's top left corner; nothing for a window that is gone."""
        x, y, child = ctypes.c_int(), ctypes.c_int(), ctypes.c_ulong()
        found = self.x11.XTranslateCoordinates(self.display, ctypes.c_ulong(window), self.root, 0, 0, ctypes.byref(x),
                                               ctypes.byref(y), ctypes.byref(child))
        return (x.value, y.value) if found else None

    def is_mapped(self, window):
        """Whether it is on the screen."""
        seen = subprocess.run(["xwininfo", "-id", str(window)], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, timeout=20)
        return b"IsViewable" in seen.stdout

    def focused(self):
        """The window with the keyboard; 0 or 1 for none and for whichever the pointer is in."""
        window, revert = ctypes.c_ulong(), ctypes.c_int()
        self.x11.XGetInputFocus(self.display, ctypes.byref(window), ctypes.byref(revert))
        return window.value

    def idle_time(self):
        """Seconds without input, as anybody is told."""
        info = ScreenSaverInfo()
        assert ctypes.CDLL("libXss.so.1").XScreenSaverQueryInfo(self.display, self.root, ctypes.byref(info))
        return info.idle / 1000

    def top_level(self, window):
        """The window manager's frame around the window, or the window itself where there is none."""
        root, parent, count = ctypes.c_ulong(), ctypes.c_ulong(), ctypes.c_uint()
        children = ctypes.c_void_p()
        while True:
            if not self.x11.XQueryTree(self.display, ctypes.c_ulong(window), ctypes.byref(root), ctypes.byref(parent),
                                       ctypes.byref(children), ctypes.byref(count)):
                raise RuntimeError(f"there is no window {window}")
            if children.value:
                self.x11.XFree(children)
            if parent.value == root.value:
                return window
            window = parent.value

    def watch(self, window):
        """From now on `steps` tells of it."""
        self.x11.XSelectInput(self.display, ctypes.c_ulong(window), ctypes.c_long(STRUCTURE_NOTIFY_MASK))
        self.x11.XSync(self.display, 0)

    def steps(self):
        """The steps of watched windows that the server has told so far, in its order: window, x, y."""
        event = Event()
        self.x11.XSync(self.display, 0)
        while self.x11.XPending(self.display):
            self.x11.XNextEvent(self.display, ctypes.byref(event))
            step = event.configure
            # What window managers send is in other coordinates; the server's own is the truth.
            if event.type == CONFIGURE_NOTIFY and not step.send_event:
                yield step.window, step.x, step.y
