"""A session bus of the test's own and services on it, spoken to in the D-Bus wire format (little endian, the types that are needed)."""

import os
import pathlib
import socket
import struct
import subprocess
import threading

CALL, ANSWER, ERROR, SIGNAL = 1, 2, 3, 4
PATH, INTERFACE, MEMBER, ERROR_NAME, REPLY_SERIAL, DESTINATION, SENDER, SIGNATURE, DESCRIPTORS = range(1, 10)
BUS = "org.freedesktop.DBus"
FORMATS = {"b": "<I", "u": "<I", "h": "<I", "t": "<Q", "x": "<q"}


class Bus:
    """A session bus at an address that stays the same over its deaths."""

    def __init__(self, folder, name="bus"):
        self.socket = os.path.join(folder, name)
        self.address = f"unix:path={self.socket}"
        self.start()

    def start(self):
        pathlib.Path(self.socket).unlink(missing_ok=True)
        self.daemon = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address=1",
                                        f"--address={self.address}"], stdout=subprocess.PIPE,
                                       stderr=subprocess.DEVNULL)
        self.daemon.stdout.readline()

    def kill(self):
        self.daemon.kill()
        self.daemon.wait()
        self.daemon.stdout.close()


def padded(data, boundary):
    return data + bytes(-len(data) % boundary)


def text(value):
    encoded = value.encode()
    return struct.pack("<I", len(encoded)) + encoded + b"\0"


def value_bytes(kind, value, at):
    """Where `at` bytes stand before it. A variant's value is (type, value) or its bytes, a dictionary's its only entry."""
    gap = bytes(-at % {"v": 1, "t": 8, "x": 8}.get(kind, 4))
    at += len(gap)
    if isinstance(value, bytes):
        return value
    if kind == "v":
        return gap + signature(value[0]) + value_bytes(*value, at + len(signature(value[0])))
    if kind == "as":
        items = b""
        for item in value:
            items = padded(items, 4) + text(item)
        return gap + struct.pack("<I", len(items)) + items
    if kind == "a{sv}":
        key, variant = value
        entry = text(key) + value_bytes("v", variant, len(text(key)))
        return gap + struct.pack("<I", len(entry)) + bytes(-(at + 4) % 8) + entry
    return gap + (text(value) if kind in "so" else struct.pack(FORMATS[kind], value))


def signature(types):
    return bytes([len(types)]) + types.encode() + b"\0"


def message(kind, serial, fields, arguments=()):
    """`arguments` are (type, value)."""
    body = b""
    for type_code, value in arguments:
        body += value_bytes(type_code, value, len(body))
    if arguments:
        fields = {**fields, SIGNATURE: "".join(type_code for type_code, _ in arguments)}
    head = b""
    for code, value in fields.items():
        if code == SIGNATURE:
            entry = b"\1g\0" + signature(value)
        elif code in (REPLY_SERIAL, DESCRIPTORS):
            entry = b"\1u\0" + struct.pack("<I", value)
        else:
            entry = (b"\1o\0" if code == PATH else b"\1s\0") + text(value)
        head = padded(head, 8) + bytes([code]) + entry
    return padded(struct.pack("<BBBBIII", ord("l"), kind, 0, 1, len(body), serial, len(head)) + head, 8) + body


def header_fields(data):
    fields, at = {}, 0
    while at < len(data):
        at += -at % 8
        code, kind = data[at], chr(data[at + 2])
        at += 4
        if kind == "g":
            length = data[at]
            fields[code] = data[at + 1:at + 1 + length].decode()
            at += length + 2
        elif kind == "u":
            fields[code] = struct.unpack_from("<I", data, at)[0]
            at += 4
        else:
            length = struct.unpack_from("<I", data, at)[0]
            fields[code] = data[at + 4:at + 4 + length].decode()
            at += length + 5
    return fields


def connection(bus):
    """A connection that has told who it is."""
    connected = socket.socket(socket.AF_UNIX)
    connected.connect(bus.socket)
    connected.sendall(b"\0AUTH EXTERNAL " + str(os.getuid()).encode().hex().encode() + b"\r\n")
    assert connected.recv(512).startswith(b"OK")
    return connected


def exactly(connected, count):
    """So many bytes."""
    data = b""
    while len(data) < count:
        part = connected.recv(count - len(data))
        if not part:
            raise EOFError
        data += part
    return data


class Service:
    """Owns a name and answers calls from `answers`: member to (type, value), or None to stay silent; others get an
    error. The value of an "h" is an open file descriptor. `asked` lists the members whose calls were dealt with."""

    def __init__(self, bus, name, path, answers=None):
        self.name, self.path, self.answers, self.asked = name, path, answers or {}, []
        self.serial, self.lock = 0, threading.Lock()
        self.socket = connection(bus)
        self.socket.sendall(b"NEGOTIATE_UNIX_FD\r\n")
        assert self.socket.recv(512).startswith(b"AGREE_UNIX_FD")
        self.socket.sendall(b"BEGIN\r\n")
        self.owned = threading.Event()
        self.reader = threading.Thread(target=self.read, daemon=True)
        self.reader.start()
        self.call_bus("Hello")
        self.call_bus("RequestName", ("s", name), ("u", 0))
        assert self.owned.wait(20), "the bus doesn't give the name"

    def send(self, kind, fields, arguments=()):
        descriptors = [value for type_code, value in arguments if type_code == "h"]
        if descriptors:  # the message has their places among those that come with it
            fields = {**fields, DESCRIPTORS: len(descriptors)}
            arguments = [(type_code, descriptors.index(value) if type_code == "h" else value) for type_code, value in arguments]
        with self.lock:
            self.serial += 1
            socket.send_fds(self.socket, [message(kind, self.serial, fields, arguments)], descriptors)
            return self.serial

    def call_bus(self, member, *arguments):
        return self.send(CALL, {PATH: "/org/freedesktop/DBus", INTERFACE: BUS, MEMBER: member, DESTINATION: BUS},
                         arguments)

    def emit(self, member, *arguments, interface=None, path=None):
        self.send(SIGNAL, {PATH: path or self.path, INTERFACE: interface or self.name, MEMBER: member}, arguments)

    def read(self):
        try:
            while True:
                start = exactly(self.socket, 16)
                kind = start[1]
                body, serial, head = struct.unpack_from("<III", start, 4)
                fields = header_fields(exactly(self.socket, head + -head % 8)[:head])
                exactly(self.socket, body)
                if kind == ANSWER and fields[REPLY_SERIAL] == 2:  # RequestName is the second call
                    self.owned.set()
                if kind == CALL:
                    self.answer(serial, fields)
        except (OSError, EOFError):
            pass

    def answer(self, serial, fields):
        back = {REPLY_SERIAL: serial, DESTINATION: fields[SENDER]}
        if fields[MEMBER] not in self.answers:
            self.send(ERROR, {**back, ERROR_NAME: BUS + ".Error.NotSupported"}, [("s", "This method is not implemented")])
        elif (value := self.answers[fields[MEMBER]]) is not None:
            self.send(ANSWER, back, [value])
        self.asked.append(fields[MEMBER])

    def close(self):
        """May be called again."""
        if self.reader.is_alive():
            self.socket.shutdown(socket.SHUT_RDWR)
        self.reader.join()
        self.socket.close()
