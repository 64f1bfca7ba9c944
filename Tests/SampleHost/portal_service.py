"""A stand-in for the desktop portal's file dialogs: it shows none, and answers as the test says."""

import dbus
import dbus.service
from desktop_services import session_bus

PORTAL, CHOOSER, REQUEST = "org.freedesktop.portal.Desktop", "org.freedesktop.portal.FileChooser", "org.freedesktop.portal.Request"
PATH = "/org/freedesktop/portal/desktop"


class Request(dbus.service.Object):
    """What the portal makes for each dialog."""

    def __init__(self, bus, path):
        super().__init__(bus, path)
        self.closed = False

    @dbus.service.signal(REQUEST, signature="ua{sv}")
    def Response(self, response, results):
        pass

    @dbus.service.method(REQUEST)
    def Close(self):
        self.closed = True
        self.remove_from_connection()


class Portal(dbus.service.Object):
    """`asked` lists (member, parent, options) of the dialogs, `requests` what stands for each. With `takes` false it never
    says a word; with `moved` it puts its requests elsewhere than the caller expects, as old portals do."""

    def __init__(self, takes=True, moved=False):
        self.bus = session_bus()
        super().__init__(self.bus, PATH)
        self.takes, self.moved = takes, moved
        self.asked, self.requests = [], []
        self.name = dbus.service.BusName(PORTAL, self.bus, do_not_queue=True)

    @dbus.service.method(CHOOSER, in_signature="ssa{sv}", out_signature="o", sender_keyword="sender",
                         async_callbacks=("answer", "refuse"))
    def OpenFile(self, parent, title, options, sender, answer, refuse):
        self.take("OpenFile", parent, options, sender, answer)

    @dbus.service.method(CHOOSER, in_signature="ssa{sv}", out_signature="o", sender_keyword="sender",
                         async_callbacks=("answer", "refuse"))
    def SaveFile(self, parent, title, options, sender, answer, refuse):
        self.take("SaveFile", parent, options, sender, answer)

    def take(self, member, parent, options, sender, answer):
        self.asked.append((member, str(parent), {str(key): value for key, value in options.items()}))
        if not self.takes:
            return
        path = f"{PATH}/request/{sender[1:].replace('.', '_')}/{options['handle_token']}{'_moved' if self.moved else ''}"
        self.requests.append(Request(self.bus, path))
        answer(path)

    def choose(self, *uris, response=0):
        """The user answers the newest dialog."""
        self.requests[-1].Response(dbus.UInt32(response), dbus.Dictionary(
            {"choices": dbus.Array([], "(ss)"), "uris": dbus.Array(uris, "s")}, "sv"))
        self.requests[-1].remove_from_connection()

    def respond(self, response, results):
        """An answer of any shape."""
        self.requests[-1].Response(dbus.UInt32(response), dbus.Dictionary(results, "sv"))

    def end(self):
        self.remove_from_connection()
        del self.name
        self.bus.close()
