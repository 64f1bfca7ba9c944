"""Drives mirelo-host by its console: requests by name, answers by number, events as they come."""

import json
import os
import pathlib
import queue
import subprocess
import threading
import time

HOST = os.environ.get("MIRELO_HOST", str(pathlib.Path(__file__).resolve().parents[2] / "build/default/bin/mirelo-host"))
LIMIT = 20.0


class Refused(Exception):
    """The console answered with an error."""


class Console:
    def __init__(self, backend, environment=None, host=HOST):
        self.process = subprocess.Popen([host, "--backend", backend, "--console"], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                                        env={**os.environ, **(environment or {})})
        self.lines = queue.Queue()
        self.told = []
        self.last = 0
        threading.Thread(target=self.read, daemon=True).start()

    def read(self):
        for line in self.process.stdout:
            self.lines.put(json.loads(line))
        self.lines.put(None)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.process.poll() is None:
            self.process.stdin.close()
            try:
                self.process.wait(LIMIT)
            except subprocess.TimeoutExpired:
                self.process.kill()
                self.process.wait()
                raise
        self.process.stdout.close()

    def send(self, text):
        self.process.stdin.write(text.encode() + b"\n")
        self.process.stdin.flush()

    def next_line(self, limit):
        line = self.lines.get(timeout=max(0.001, limit))
        if line is None:
            raise EOFError("the host has ended")
        return line

    def answer(self, number):
        deadline = time.monotonic() + LIMIT
        while True:
            line = self.next_line(deadline - time.monotonic())
            if "id" not in line:
                self.told.append(line)
            elif line["id"] == number:
                return line

    def begin(self, on, name, *arguments):
        """A call whose answer isn't waited for; its number."""
        self.last += 1
        self.send(json.dumps({"id": self.last, "on": on, "call": name, "args": arguments}))
        return self.last

    def call(self, on, name, *arguments):
        answer = self.answer(self.begin(on, name, *arguments))
        if "error" in answer:
            raise Refused(answer["error"])
        return answer["result"]

    def desktop(self, name, *arguments):
        return self.call("desktop", name, *arguments)

    def take(self):
        """What was told so far; each line once."""
        self.desktop("settle")
        told, self.told = self.told, []
        return told

    def events(self, source=None):
        return [line["event"] for line in self.take() if "event" in line and source in (None, line["from"])]

    def until(self, condition, what):
        """Asks again and again until the condition holds; its value. `what` may be a function that says it at the end."""
        deadline = time.monotonic() + LIMIT
        while not (value := condition()):
            if time.monotonic() > deadline:
                raise AssertionError(f"not in time: {what() if callable(what) else what}")
        return value


def run(*command):
    """What a tool prints; it ends well and soon."""
    return subprocess.run([str(part) for part in command], stdout=subprocess.PIPE, check=True, timeout=60).stdout.decode()


def keys(*names):
    """Presses keys as a user does."""
    run("xdotool", "key", "--delay", "10", *names)


def rect(x, y, width, height):
    return {"x": x, "y": y, "width": width, "height": height}


def point(x, y):
    return {"x": x, "y": y}
