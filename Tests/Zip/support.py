"""What the tests of the command-line tool share: running it, trees of files, and what another reader sees."""

import contextlib
import hashlib
import json
import os
import pathlib
import random
import shutil
import stat
import subprocess
import tempfile
import unittest
import zipfile

TOOL = os.environ["VELTRIK_ZIP"]

# The peers take names from the locale and times from the zone; both are fixed so that results can be compared.
os.environ.update(LC_ALL="C.UTF-8", TZ="UTC")
os.environ.pop("UNZIP", None)
os.environ.pop("ZIPOPT", None)

TIME = 1620284890  # 2021-05-06 07:08:10 UTC; even, as the format counts two seconds


def run(*arguments, **options):
    """Runs the tool and returns the finished process with its output as bytes."""
    options.setdefault("stdin", subprocess.DEVNULL)
    return subprocess.run([TOOL, *map(os.fspath, arguments)], capture_output=True, timeout=100, **options)


def peer(*arguments, **options):
    """Runs another tool that has to succeed and returns its standard output as bytes."""
    options.setdefault("stdin", subprocess.DEVNULL)
    done = subprocess.run(list(map(os.fspath, arguments)), capture_output=True, timeout=100, **options)
    if done.returncode != 0:
        raise AssertionError(f"{arguments[:3]} ended with {done.returncode}: {done.stdout + done.stderr!r}")
    return done.stdout


class ToolTestCase(unittest.TestCase):
    """A test with a folder of its own."""

    def setUp(self):
        memory = pathlib.Path("/dev/shm")
        base = memory if os.access(memory, os.W_OK) else None
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="zip-test-", dir=base))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)

    def succeed(self, *arguments, **options):
        done = run(*arguments, **options)
        self.assertEqual((done.returncode, done.stderr), (0, b""), arguments)
        return done.stdout

    def refuse(self, *arguments, **options):
        """Runs the tool, which has to fail with one line on standard error; returns that line."""
        done = run(*arguments, **options)
        self.assertEqual(done.returncode, 1, (arguments, done.stderr))
        self.assertEqual(done.stderr.count(b"\n"), 1, done.stderr)
        return done.stderr.decode()

    def listed(self, archive):
        return json.loads(self.succeed("list", "--json", archive))


def make_tree(root):
    """A tree with every kind of item, size and name that an archive can hold."""
    noise = random.Random(7)
    files = {
        "empty": b"",
        "one": b"1",
        "chunk.bin": noise.randbytes(16384),
        "chunk and one.bin": noise.randbytes(16385),
        "random.bin": noise.randbytes(300_001),
        "text.txt": b"".join(b"line %d of a long and dull text\n" % noise.randrange(90) for _ in range(9000)),
        "docs/inner/deep.txt": b"deep\n",
        "한글/파일 이름.txt": "안녕하세요\n".encode(),
        "Größe — naïve.txt": b"umlauts\n",
    }
    for name, content in files.items():
        path = root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content)
    (root / "hollow").mkdir()
    (root / "script.sh").write_bytes(b"#!/bin/sh\n")
    (root / "script.sh").chmod(0o755)
    (root / "private").write_bytes(b"secret\n")
    (root / "private").chmod(0o600)
    (root / "docs" / "inner").chmod(0o700)
    for path in root.rglob("*"):
        os.utime(path, (TIME, TIME))
    return root


def add_links(root):
    (root / "link").symlink_to("docs/inner/deep.txt")
    (root / "folder link").symlink_to("한글")
    (root / "dangling").symlink_to("nowhere/at all")
    return root


def snapshot(root, times=True):
    """Every item below a folder: kind, permissions, content; a file's time to the two seconds archives hold."""
    items = {}
    for path in sorted(root.rglob("*")):
        name = path.relative_to(root).as_posix()
        status = path.lstat()
        if stat.S_ISLNK(status.st_mode):
            items[name] = ("symlink", os.readlink(path))
        elif stat.S_ISDIR(status.st_mode):
            items[name] = ("directory", stat.S_IMODE(status.st_mode))
        else:
            digest = hashlib.sha256(path.read_bytes()).hexdigest()
            items[name] = ("file", stat.S_IMODE(status.st_mode), digest, int(status.st_mtime) // 2 if times else None)
    return items


METHODS = {0: "none", 8: "deflate"}


def as_python_sees(archive):
    """The listing the tool should print, taken from Python's own reader."""
    with zipfile.ZipFile(archive) as opened:
        return [described(info) for info in opened.infolist()]


def described(info):
    mode = info.external_attr >> 16 if info.create_system == 3 else 0
    kind = {stat.S_IFDIR: "directory", stat.S_IFLNK: "symlink", stat.S_IFREG: "file"}.get(stat.S_IFMT(mode))
    kind = kind or ("directory" if info.filename.endswith("/") else "file")
    permissions = mode & 0o7777 or (0o755 if kind == "directory" else 0o644)
    return {
        "path": info.filename,
        "type": kind,
        "method": METHODS[info.compress_type],
        "compressedSize": info.compress_size,
        "uncompressedSize": info.file_size,
        "crc32": f"{info.CRC:08x}",
        "permissions": f"{permissions:o}",
        "modified": "{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z".format(*info.date_time),
    }


@contextlib.contextmanager
def unseekable(path):
    """A stream that can't go back, so that a writer has to use data descriptors."""

    class Stream:
        def __init__(self, file):
            self.file = file

        def write(self, data):
            return self.file.write(data)

        def flush(self):
            self.file.flush()

    with open(path, "wb") as file:
        yield Stream(file)


def main():
    unittest.main(verbosity=2)
