"""An X server that can switch its screens off: stands between a program and the real server, which passes for one with the
DPMS extension. Little endian; without shared memory, whose descriptors it doesn't pass on."""

import os
import socket
import struct
import threading

from bus_service import exactly

QUERY_EXTENSION, GET_INPUT_FOCUS, OPCODE = 98, 43, 200
CAPABLE, INFO = 1, 7
REPLY, GENERIC_EVENT = 1, 35
ON, OFF = 0, 3


def folder():
    return "/tmp/.X11-unix/X"


class PowerServer:
    def __init__(self, display):
        self.real, self.level = display, ON
        self.listener = socket.socket(socket.AF_UNIX)
        self.number = next(number for number in range(200, 10_000) if self.bind(number))
        self.listener.listen()
        self.display = f":{self.number}"
        threading.Thread(target=self.accept, daemon=True).start()

    def bind(self, number):
        try:
            self.listener.bind(folder() + str(number))
            return True
        except OSError:
            return False

    def close(self):
        self.listener.close()
        os.unlink(folder() + str(self.number))

    def accept(self):
        try:
            while True:
                Connection(self, self.listener.accept()[0])
        except OSError:
            pass


class Connection:
    def __init__(self, server, client):
        self.power, self.client = server, client
        self.server = socket.socket(socket.AF_UNIX)
        self.server.connect(folder() + server.real.removeprefix(":").split(".")[0])
        self.asked = {}  # by sequence number: what is to be put into the reply
        for work in (self.requests, self.answers):
            threading.Thread(target=self.until_closed, args=(work,), daemon=True).start()

    def until_closed(self, work):
        try:
            work()
        except (OSError, EOFError):
            for end in (self.client, self.server):
                try:
                    end.shutdown(socket.SHUT_RDWR)
                except OSError:
                    pass

    def requests(self):
        start = exactly(self.client, 12)
        name, data = struct.unpack_from("<HH", start, 6)
        self.server.sendall(start + exactly(self.client, name + -name % 4 + data + -data % 4))
        sequence = 0
        while True:
            request = exactly(self.client, 4)
            opcode, minor, length = struct.unpack("<BBH", request)
            if length == 0:
                request += exactly(self.client, 4)
                length = struct.unpack_from("<I", request, 4)[0]
            request += exactly(self.client, 4 * length - len(request))
            sequence = (sequence + 1) % 0x10000
            if opcode == QUERY_EXTENSION:
                asked = request[8:8 + struct.unpack_from("<H", request, 4)[0]]
                if asked in (b"DPMS", b"MIT-SHM"):
                    self.asked[sequence] = lambda found=asked == b"DPMS": struct.pack("<BBBB", found, OPCODE * found, 0, 0)
            elif opcode == OPCODE:
                self.asked[sequence] = {CAPABLE: lambda: b"\1", INFO: lambda: struct.pack("<HB", self.power.level, 1)}[minor]
                request = struct.pack("<BBH", GET_INPUT_FOCUS, 0, 1)
            self.server.sendall(request)

    def answers(self):
        start = exactly(self.server, 8)
        self.client.sendall(start + exactly(self.server, 4 * struct.unpack_from("<H", start, 6)[0]))
        while True:
            answer = exactly(self.server, 32)
            kind, sequence, length = struct.unpack_from("<BxHI", answer)
            if kind in (REPLY, GENERIC_EVENT, GENERIC_EVENT | 0x80):
                answer += exactly(self.server, 4 * length)
            if kind == REPLY and sequence in self.asked:
                body = self.asked.pop(sequence)()
                answer = answer[:8] + body + answer[8 + len(body):]
            self.client.sendall(answer)
