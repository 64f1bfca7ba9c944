#!/usr/bin/env python3
"""Two processes of ours on a bus of the test's own: notifications, the death of the bus, floods, and hostile payloads.

What comes from outside is written to the bus's socket by hand, so that no library has a hand in it. BUS_PEER names the program; a display is needed.
"""
import json
import os
import pathlib
import select
import signal
import struct
import subprocess
import sys
import tempfile
import time
import unittest

sys.path.append(str(pathlib.Path(__file__).resolve().parents[1] / "SampleHost"))
from bus_service import BUS, CALL, DESTINATION, INTERFACE, MEMBER, PATH, SIGNAL, Bus, connection, message, text

OBJECT, CHANNEL = "/com/brenholt/VeltrikAppKit/Notifications", "com.brenholt.VeltrikAppKit.Notifications"
PATIENCE = 20
MIB = 1 << 20


class Peer:
    def __init__(self, bus):
        environment = dict(os.environ, DBUS_SESSION_BUS_ADDRESS=bus.address, QT_IM_MODULE="compose")
        # The address sanitizer keeps what was freed for a while, which is not growth.
        environment["ASAN_OPTIONS"] = os.environ.get("ASAN_OPTIONS", "") + ":quarantine_size_mb=1"
        self.process = subprocess.Popen([os.environ["BUS_PEER"]], env=environment, stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        os.set_blocking(self.process.stdout.fileno(), False)
        self.lines = []
        self.rest = b""

    def tell(self, line):
        self.process.stdin.write(line.encode() + b"\n")
        self.process.stdin.flush()

    def take(self, seconds):
        """Adds what the peer says within the time to its lines."""
        if select.select([self.process.stdout], [], [], seconds)[0]:
            data = os.read(self.process.stdout.fileno(), 1 << 16)
            if not data:
                raise AssertionError(f"the peer ended with status {self.process.wait()}")
            *whole, self.rest = (self.rest + data).split(b"\n")
            self.lines += [line.decode() for line in whole]

    def await_line(self, start, seconds=PATIENCE):
        """Removes and returns the first line with this start."""
        end = time.monotonic() + seconds
        while True:
            found = [line for line in self.lines if line.startswith(start)]
            if found:
                self.lines.remove(found[0])
                return found[0]
            if time.monotonic() >= end:
                return None
            self.take(0.05)

    def observe(self, name, verb="observe"):
        self.tell(f"{verb} {name}")
        assert self.await_line("ready"), "the peer doesn't answer"

    def status(self, key):
        for line in pathlib.Path(f"/proc/{self.process.pid}/status").read_text().splitlines():
            if line.startswith(key + ":"):
                return int(line.split()[1])
        raise KeyError(key)

    def descriptors(self):
        return len(os.listdir(f"/proc/{self.process.pid}/fd"))

    def end(self):
        self.process.stdin.close()
        status = self.process.wait(PATIENCE)
        self.process.stdout.close()
        return status


def signal_message(name, key, value):
    """A notification with one entry, whose value is (type, value) or the bytes of a variant."""
    return message(SIGNAL, 1, {PATH: OBJECT, INTERFACE: CHANNEL, MEMBER: "Posted"},
                   [("s", name), ("s", ""), ("a{sv}", (key, value))])


def nested(key, levels, value):
    """A text in as many variants, one in the other, behind its key."""
    head = b"\1v\0" * (levels - 1) + b"\1s\0"
    return head + bytes(-(len(text(key)) + len(head)) % 4) + text(value)


class Outsider:
    """A connection that anyone of the same user could make."""

    def __init__(self, bus):
        self.socket = connection(bus)
        self.socket.settimeout(PATIENCE)
        self.socket.sendall(b"BEGIN\r\n" + message(CALL, 1, {PATH: "/org/freedesktop/DBus", MEMBER: "Hello",
                                                             DESTINATION: BUS}))
        assert self.socket.recv(4096)

    def send(self, data):
        self.socket.sendall(data)

    def close(self):
        self.socket.close()


class BusTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory(prefix="bus-test-")
        self.bus = Bus(self.folder.name)
        self.peers = []

    def tearDown(self):
        for peer in self.peers:
            self.assertEqual(peer.end(), 0, "a peer did not end well")
        self.bus.kill()
        self.folder.cleanup()

    def peer(self, *names):
        peer = Peer(self.bus)
        self.peers.append(peer)
        for name in names:
            peer.observe(name)
        return peer

    def expect_ping(self, sender, receiver, number):
        """Posts until one arrives: who posts first, before the other listens, is not heard."""
        end = time.monotonic() + PATIENCE
        while time.monotonic() < end:
            sender.tell('post ping {"number": %d}' % number)
            if receiver.await_line('got ping {"number":%d}' % number, 0.05):
                return
        self.fail(f"notification {number} never arrived")

    def test_notifications_go_both_ways_and_to_own_observers(self):
        first, second = self.peer("ping", "whole"), self.peer("ping", "whole")
        self.expect_ping(first, second, 1)
        self.expect_ping(second, first, 2)
        payload = {"text": "한글 \"quoted\"", "whole": -7, "real": 0.5, "truth": True, "list": [1, "둘", [False]],
                   "nested": {"deeper": {"number": 9007199254740993}}}
        first.tell("post whole " + json.dumps(payload))
        for name, peer in (("own", first), ("other", second)):
            line = peer.await_line("got whole ")
            self.assertIsNotNone(line, name)
            self.assertEqual(json.loads(line.removeprefix("got whole ")), payload, name)
        self.assertIsNone(first.await_line("got whole ", 0.1), "own posts are delivered once")

    def test_a_hundred_deaths_of_the_bus_end_nobody(self):
        first, second = self.peer("ping"), self.peer("ping")
        level = None
        for death in range(100):
            self.bus.kill()
            first.tell('post alone {"number": 1}')
            self.bus.start()
            self.expect_ping(first, second, 2 * death)
            self.expect_ping(second, first, 2 * death + 1)
            now = [(peer.descriptors(), peer.status("Threads")) for peer in (first, second)]
            level = level or now
            self.assertEqual(now, level, f"descriptors and threads after death {death + 1}")

    def test_a_flood_is_drained_in_order_and_in_bounded_memory(self):
        peer = self.peer("ping")
        peer.observe("flood", "count")
        outsider = Outsider(self.bus)
        count, chunk = 200_000, 500
        head = signal_message("flood", "number", ("x", 0))[:-8]  # the number comes last
        before = peer.status("VmRSS")
        began = time.monotonic()
        for start in range(0, count, chunk):
            outsider.send(b"".join(head + struct.pack("<q", n) for n in range(start, start + chunk)))
        sent = time.monotonic()
        counted = 0
        while counted < count and time.monotonic() < sent + 60:
            peer.tell("report")
            counted, disorder, longest = peer.await_line("report", 60).split()[1:]
            counted = int(counted)
        growth = (peer.status("VmHWM") - before) / 1024
        print(f"\n{count} signals: sent in {sent - began:.1f} s, delivered in {time.monotonic() - began:.1f} s, "
              f"{growth:.1f} MiB more at most, the main thread at work for {float(longest):.1f} ms at most")
        self.assertEqual((counted, int(disorder)), (count, 0))
        self.assertLess(growth, 64)
        outsider.close()

    def test_payloads_that_are_too_large_are_refused_without_harm(self):
        peer, friend = self.peer("ping", "large"), self.peer("ping")
        outsider = Outsider(self.bus)
        before = peer.status("VmRSS")
        for name, size, arrives in (("small", 1000, True), ("just below", MIB - 1000, True), ("just above", MIB, False),
                                    ("60 MiB", 60 * MIB, False)):
            with self.subTest(name):
                outsider.send(signal_message("large", "text", ("s", "x" * size)))
                # The bus keeps the order of one sender, so the next one tells that this one has been dealt with.
                outsider.send(signal_message("ping", "after", ("s", name)))
                self.assertIsNotNone(peer.await_line('got ping {"after":"%s"}' % name, 30))
                line = peer.await_line("got large", 0)
                self.assertEqual(len(line or ""), len('got large {"text":""}') + size if arrives else 0)
        self.assertLess((peer.status("VmRSS") - before) / 1024, 16, "MiB kept")
        self.expect_ping(friend, peer, 7)
        outsider.close()

    def test_payloads_that_are_nested_too_deep_are_dropped_without_harm(self):
        peer, friend = self.peer("ping", "nested"), self.peer("ping")
        for levels, arrives in ((20, True), (60, False)):
            outsider = Outsider(self.bus)
            outsider.send(signal_message("nested", "text", nested("text", levels, "end")))
            outsider.send(signal_message("ping", "after", ("s", str(levels))))
            self.assertIsNotNone(peer.await_line('got ping {"after":"%d"}' % levels, 30))
            self.assertEqual(peer.await_line("got nested", 0), 'got nested {"text":"end"}' if arrives else None)
            outsider.close()
        outsider = Outsider(self.bus)
        outsider.send(signal_message("nested", "text", nested("text", 10_000, "end")))
        while outsider.socket.recv(4096):  # the bus cuts off who sends that
            pass
        self.expect_ping(friend, peer, 7)
        self.assertIsNone(peer.await_line("got nested", 0))
        outsider.close()


if __name__ == "__main__":
    signal.alarm(220)
    unittest.main(verbosity=2)
