"""Stand-ins for the programs of a desktop that the host's services speak to: a status bar with its watcher, a dock, a
file manager. They share one thread, which serves each bus connection until a condition holds."""

import time

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)

LIMIT = 20.0
WATCHER, ITEM, MENU = "org.kde.StatusNotifierWatcher", "org.kde.StatusNotifierItem", "com.canonical.dbusmenu"
LAUNCHER, FILE_MANAGER, DOCK = "com.canonical.Unity.LauncherEntry", "org.freedesktop.FileManager1", "com.canonical.Unity"
PROPERTIES = "org.freedesktop.DBus.Properties"


def serve_until(condition, what):
    """Serves the bus until the condition holds; its value."""
    context = GLib.MainContext.default()
    deadline = time.monotonic() + LIMIT
    while not (value := condition()):
        if time.monotonic() > deadline:
            raise AssertionError(f"not in time: {what}")
        GLib.timeout_add(20, lambda: False)  # so that the condition is looked at now and then
        context.iteration(True)
    return value


def session_bus():
    bus = dbus.bus.BusConnection(dbus.bus.BusConnection.TYPE_SESSION)
    bus.set_exit_on_disconnect(False)
    return bus


class Asking:
    """Calls that are served meanwhile, as the callee may be ourselves."""

    def __init__(self, bus, service, path):
        self.object = bus.get_object(service, path, introspect=False)

    def __call__(self, interface, member, *arguments):
        done = []
        self.object.get_dbus_method(member, interface)(
            *arguments, reply_handler=lambda *values: done.append((values, None)),
            error_handler=lambda error: done.append((None, error)))
        values, error = serve_until(lambda: done, f"an answer to {member}")[0]
        if error:
            raise error
        return values[0] if len(values) == 1 else values


class Watcher(dbus.service.Object):
    def __init__(self):
        self.bus = session_bus()
        super().__init__(self.bus, "/StatusNotifierWatcher")
        self.registered = []
        self.name = dbus.service.BusName(WATCHER, self.bus, do_not_queue=True)

    @dbus.service.method(WATCHER, in_signature="s")
    def RegisterStatusNotifierItem(self, service):
        self.registered.append(str(service))

    def end(self):
        self.remove_from_connection()
        del self.name
        self.bus.close()


class FileManager(dbus.service.Object):
    def __init__(self):
        self.bus = session_bus()
        super().__init__(self.bus, "/org/freedesktop/FileManager1")
        self.shown = []
        self.name = dbus.service.BusName(FILE_MANAGER, self.bus, do_not_queue=True)

    @dbus.service.method(FILE_MANAGER, in_signature="ass")
    def ShowItems(self, uris, startup):
        self.shown.append([str(uri) for uri in uris])


class Dock:
    """Listens to badges from the start, and takes the docks' name when told."""

    def __init__(self):
        self.bus = session_bus()
        self.updates = []
        self.bus.add_signal_receiver(self.updated, "Update", LAUNCHER, path_keyword="path", sender_keyword="sender")

    def updated(self, uri, properties, path, sender):
        self.updates.append((str(uri), {str(key): value for key, value in properties.items()}, str(path), str(sender)))

    def appear(self):
        self.name = dbus.service.BusName(DOCK, self.bus, do_not_queue=True)

    def vanish(self):
        del self.name

    def last(self):
        return self.updates[-1][1]


class TrayItem:
    """An item as a status bar sees it."""

    def __init__(self, bus, service):
        self.ask = Asking(bus, service, "/StatusNotifierItem")
        self.signals = []
        for interface in (ITEM, MENU):
            bus.add_signal_receiver(self.signalled, None, interface, service, member_keyword="member")
        self.menu = Asking(bus, service, self.get("Menu"))

    def signalled(self, *arguments, member):
        self.signals.append((str(member), arguments))

    def names(self):
        return [member for member, _ in self.signals]

    def get(self, name):
        return self.ask(PROPERTIES, "Get", ITEM, name)

    def layout(self):
        """The revision, and (identifier, properties) of the lines."""
        revision, (_, _, children) = self.menu(MENU, "GetLayout", dbus.Int32(0), dbus.Int32(-1), dbus.Array([], "s"))
        return int(revision), [(int(child[0]), dict(child[1])) for child in children]

    def labels(self):
        return [str(line[1].get("label", "-")) for line in self.layout()[1]]

    def identifier(self, label):
        return next(number for number, line in self.layout()[1] if line.get("label") == label)

    def click(self, label):
        self.menu(MENU, "Event", dbus.Int32(self.identifier(label)), "clicked", dbus.String("", variant_level=1),
                  dbus.UInt32(0))
