"""What the X server knows of windows and of its user, read over a connection of its own."""

import ctypes

STRUCTURE_NOTIFY_MASK, CONFIGURE_NOTIFY, CLIENT_MESSAGE = 1 << 17, 22, 33
TO_WINDOW_MANAGER = 1 << 19 | 1 << 20  # substructure notify and redirect
FROM_PAGER, IS_VIEWABLE = 2, 2


class ConfigureEvent(ctypes.Structure):
    _fields_ = [("type", ctypes.c_int), ("serial", ctypes.c_ulong), ("send_event", ctypes.c_int),
                ("display", ctypes.c_void_p), ("event", ctypes.c_ulong), ("window", ctypes.c_ulong), ("x", ctypes.c_int),
                ("y", ctypes.c_int), ("width", ctypes.c_int), ("height", ctypes.c_int), ("border_width", ctypes.c_int),
                ("above", ctypes.c_ulong), ("override_redirect", ctypes.c_int)]


class ClientMessage(ctypes.Structure):
    _fields_ = [("type", ctypes.c_int), ("serial", ctypes.c_ulong), ("send_event", ctypes.c_int),
                ("display", ctypes.c_void_p), ("window", ctypes.c_ulong), ("message_type", ctypes.c_ulong),
                ("format", ctypes.c_int), ("data", ctypes.c_long * 5)]


class WindowAttributes(ctypes.Structure):
    _fields_ = [("x", ctypes.c_int), ("y", ctypes.c_int), ("width", ctypes.c_int), ("height", ctypes.c_int),
                ("border_width", ctypes.c_int), ("depth", ctypes.c_int), ("visual", ctypes.c_void_p),
                ("root", ctypes.c_ulong), ("kind", ctypes.c_int), ("bit_gravity", ctypes.c_int),
                ("win_gravity", ctypes.c_int), ("backing_store", ctypes.c_int), ("backing_planes", ctypes.c_ulong),
                ("backing_pixel", ctypes.c_ulong), ("save_under", ctypes.c_int), ("colormap", ctypes.c_ulong),
                ("map_installed", ctypes.c_int), ("map_state", ctypes.c_int), ("all_event_masks", ctypes.c_long),
                ("your_event_mask", ctypes.c_long), ("do_not_propagate_mask", ctypes.c_long),
                ("override_redirect", ctypes.c_int), ("screen", ctypes.c_void_p)]


class ScreenSaverInfo(ctypes.Structure):
    _fields_ = [("window", ctypes.c_ulong), ("state", ctypes.c_int), ("kind", ctypes.c_int),
                ("til_or_since", ctypes.c_ulong), ("idle", ctypes.c_ulong), ("mask", ctypes.c_ulong)]


class Event(ctypes.Union):
    _fields_ = [("type", ctypes.c_int), ("configure", ConfigureEvent), ("message", ClientMessage), ("pad", ctypes.c_long * 24)]


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
        attributes = WindowAttributes()
        found = self.x11.XGetWindowAttributes(self.display, ctypes.c_ulong(window), ctypes.byref(attributes))
        return bool(found) and attributes.map_state == IS_VIEWABLE

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

    def ask_for_state(self, window, state, on):
        """Has the window manager change a _NET_WM_STATE, as its menu or a pager does for the user."""
        self.x11.XInternAtom.restype = ctypes.c_ulong
        atom = lambda name: self.x11.XInternAtom(self.display, name.encode(), 0)
        event = Event(message=ClientMessage(type=CLIENT_MESSAGE, window=window, message_type=atom("_NET_WM_STATE"), format=32))
        event.message.data[:] = [int(on), atom(f"_NET_WM_STATE_{state}"), 0, FROM_PAGER, 0]
        self.x11.XSendEvent(self.display, self.root, 0, ctypes.c_long(TO_WINDOW_MANAGER), ctypes.byref(event))
        self.x11.XSync(self.display, 0)

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
