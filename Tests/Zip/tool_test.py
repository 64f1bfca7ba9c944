"""The command-line tool as a person or a script uses it: what it prints, what it returns, what an interruption leaves."""

import os
import pty
import signal
import stat
import subprocess
import zipfile

import support
from support import ToolTestCase, add_links, make_tree, run, snapshot


class Usage(ToolTestCase):
    def test_what_is_not_a_command_ends_with_two(self):
        for words in ([], ["frobnicate"], ["list"], ["list", "--jsn", "a.zip"], ["list", "a.zip", "b.zip"],
                      ["list", "--json=yes", "a.zip"], ["extract", "a.zip"], ["extract", "--encoding"],
                      ["create", "a.zip"], ["create", "--method", "lzma", "a.zip", "."], ["create", "--method"],
                      ["add", "a.zip"], ["remove", "a.zip"], ["cat", "a.zip"], ["cat", "a.zip", "b", "c"], ["test"]):
            with self.subTest(words=words):
                done = run(*words)
                self.assertEqual((done.returncode, done.stdout), (2, b""))
                self.assertIn(b"usage: veltrik-zip", done.stderr)

    def test_help_is_no_error(self):
        done = run("--help")
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        for command in (b"list", b"extract", b"create", b"add", b"remove", b"cat", b"test"):
            self.assertIn(b"veltrik-zip " + command, done.stdout)

    def test_names_like_options_stand_after_two_dashes(self):
        (self.folder / "-x").write_bytes(b"dash")
        self.succeed("create", "--", "-a.zip", "-x", cwd=self.folder)
        self.assertEqual(self.succeed("cat", "--", "-a.zip", "-x", cwd=self.folder), b"dash")


class Commands(ToolTestCase):
    def setUp(self):
        super().setUp()
        self.tree = add_links(make_tree(self.folder / "tree"))
        self.archive = self.folder / "archive.zip"
        self.succeed("create", self.archive, self.tree)

    def paths(self):
        return [entry["path"] for entry in self.listed(self.archive)]

    def test_list(self):
        text = self.succeed("list", self.archive).decode()
        self.assertEqual(len(text.splitlines()), len(self.paths()))
        line = next(line for line in text.splitlines() if line.endswith(" script.sh"))
        self.assertIn("2021-05-06 07:08:10", line)
        self.assertIn("755", line)
        self.assertIn(" 10 ", line)

    def test_list_as_json_has_exactly_the_promised_members(self):
        for entry in self.listed(self.archive):
            self.assertEqual(list(entry), ["path", "type", "method", "compressedSize", "uncompressedSize", "crc32",
                                           "permissions", "modified"])
            self.assertRegex(entry["crc32"], "^[0-9a-f]{8}$")
            self.assertRegex(entry["permissions"], "^[0-7]+$")
            self.assertRegex(entry["modified"], r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ$")

    def test_extract_gives_the_tree_back(self):
        self.succeed("extract", self.archive, self.folder / "out")
        self.assertEqual(snapshot(self.folder / "out"), snapshot(self.tree))
        self.assertIn("fileWriteFileExists", self.refuse("extract", self.archive, self.folder / "out"))

    def test_extract_masks_set_id_bits_unless_told_otherwise(self):
        (self.tree / "script.sh").chmod(0o6755)
        archive = self.folder / "set-id.zip"
        self.succeed("create", archive, self.tree / "script.sh")
        for option, mode in {(): 0o755, ("--keep-set-id",): 0o6755}.items():
            out = self.folder / f"out{mode:o}"
            self.succeed("extract", *option, archive, out)
            self.assertEqual(stat.S_IMODE((out / "script.sh").stat().st_mode), mode)

    def test_extract_with_an_unknown_encoding_is_misuse(self):
        done = run("extract", "--encoding", "klingon", self.archive, self.folder / "out")
        self.assertEqual(done.returncode, 2)
        self.assertIn(b"klingon", done.stderr)

    def test_create_refuses_what_stands_there(self):
        before = self.archive.read_bytes()
        line = self.refuse("create", self.archive, self.tree)
        self.assertIn("fileWriteFileExists", line)
        self.assertIn(str(self.archive), line)
        self.assertEqual(self.archive.read_bytes(), before)

    def test_create_leaves_nothing_after_an_error(self):
        line = self.refuse("create", self.folder / "new.zip", self.folder / "missing")
        self.assertIn("fileReadNoSuchFile", line)
        self.assertFalse((self.folder / "new.zip").exists())

    def test_add_files_folders_and_links(self):
        (self.tree / "later").mkdir()
        (self.tree / "later" / "file").write_bytes(b"later")
        os.symlink("file", self.tree / "later" / "link")
        before = self.paths()
        self.succeed("add", "--relative-to", self.tree, self.archive, "later")
        self.assertEqual(self.paths()[:len(before)], before)
        self.assertEqual(sorted(self.paths()[len(before):]), ["later/", "later/file", "later/link"])
        self.succeed("add", "--method=none", self.archive, "./later/file", cwd=self.tree)
        self.assertEqual((self.paths()[-1], self.listed(self.archive)[-1]["method"]), ("later/file", "none"))

    def test_add_all_or_nothing(self):
        before = self.archive.read_bytes()
        self.assertIn("missing", self.refuse("add", "--relative-to", self.tree, self.archive, "one", "missing"))
        self.assertEqual(self.archive.read_bytes(), before)
        for path in ("../outside", "docs/../../outside", "/etc/hostname"):
            with self.subTest(path=path):
                self.assertIn("invalidEntryPath", self.refuse("add", "--relative-to", self.tree, self.archive, path))
                self.assertEqual(self.archive.read_bytes(), before)

    def test_remove_all_or_nothing(self):
        before = self.archive.read_bytes()
        self.assertIn("missing", self.refuse("remove", self.archive, "one", "missing"))
        self.assertEqual(self.archive.read_bytes(), before)
        expected = [path for path in self.paths() if path not in ("one", "empty")]
        self.succeed("remove", self.archive, "one", "empty")
        self.assertEqual(self.paths(), expected)

    def test_cat(self):
        for name in ("random.bin", "text.txt", "empty", "한글/파일 이름.txt"):
            self.assertEqual(self.succeed("cat", self.archive, name), (self.tree / name).read_bytes())
        self.assertEqual(self.succeed("cat", self.archive, "link"), b"docs/inner/deep.txt")
        line = self.refuse("cat", self.archive, "nowhere")
        self.assertIn("nowhere", line)
        self.assertIn(str(self.archive), line)
        with open("/dev/full", "wb") as full:
            done = subprocess.run([support.TOOL, "cat", self.archive, "text.txt"], stdout=full, stderr=subprocess.PIPE)
        self.assertEqual(done.returncode, 1)

    def test_damaged_files_are_named_in_order(self):
        tree = self.folder / "many"
        tree.mkdir()
        for number in range(300):
            (tree / f"{number:03}").write_bytes(b"content %d\n" % number * (1 + number % 50))
        archive = self.folder / "none.zip"
        self.succeed("create", "--method", "none", archive, tree)
        self.succeed("test", archive)
        data = bytearray(archive.read_bytes())
        spoilt = (3, 77, 140, 141, 299)
        for number in spoilt:
            data[data.index(b"content %d\n" % number)] ^= 1
        archive.write_bytes(data)
        for verb, *operands in (["test"], ["extract", self.folder / "damaged"]):
            done = run(verb, archive, *operands)
            self.assertEqual((done.returncode, done.stderr.count(b"\n")), (1, 1))
            self.assertEqual(done.stdout.decode(), "".join(f"damaged: {number:03}\n" for number in spoilt))
        with zipfile.ZipFile(archive) as opened:
            self.assertIsNotNone(opened.testzip())

    def test_damaged_archives(self):
        data = self.archive.read_bytes()
        for name, damaged in {"empty": b"", "no archive": b"x" * 1000, "cut": data[:-30], "missing": None}.items():
            path = self.folder / name
            if damaged is not None:
                path.write_bytes(damaged)
            for verb, *operands in (["list"], ["list", "--json"], ["test"], ["cat", "one"], ["remove", "one"],
                                    ["extract", "out"], ["add", "one"]):
                with self.subTest(archive=name, verb=verb):
                    line = self.refuse(verb, path, *operands, cwd=self.tree)
                    self.assertIn(str(path), line)
                    if damaged is not None:
                        self.assertRegex(line, "unreadableArchive|unwritableArchive")
                self.assertEqual(path.read_bytes() if path.exists() else None, damaged)


class TerminalTestCase(ToolTestCase):
    def on_terminal(self, *arguments):
        """Runs the tool with its three streams on a terminal; returns its exit status and what it wrote."""
        process, master = self.start(*arguments)
        written = self.read_to_end(master)
        return process.wait(), written

    def start(self, *arguments):
        master, slave = pty.openpty()
        process = subprocess.Popen([support.TOOL, *map(os.fspath, arguments)], stdin=slave, stdout=slave, stderr=slave)
        os.close(slave)
        self.addCleanup(os.close, master)
        return process, master

    def read_to_end(self, master):
        written = b""
        while True:
            try:
                piece = os.read(master, 4096)
            except OSError:  # the other side has closed
                return written
            if not piece:
                return written
            written += piece


class OnATerminal(TerminalTestCase):
    """Terminals get a progress bar and names they can't choke on; pipes get neither."""

    def test_control_characters_are_escaped(self):
        archive = self.folder / "evil.zip"
        with zipfile.ZipFile(archive, "w") as opened:
            opened.writestr("red\x1b[31m\nnew\u009bline\x7f", b"x")
        status, written = self.on_terminal("list", archive)
        self.assertEqual(status, 0)
        self.assertNotIn(b"\x1b", written)
        self.assertIn(rb"red\x1b[31m\nnew\x9bline\x7f", written)
        self.assertIn("red\x1b[31m\nnew\u009bline\x7f".encode(), self.succeed("list", archive))
        _, written = self.on_terminal("cat", archive, "no\x1b[31m")
        self.assertNotIn(b"\x1b", written)

    def test_progress_bar(self):
        tree = make_tree(self.folder / "tree")
        archive = self.folder / "archive.zip"
        for words in (["create", archive, tree], ["test", archive], ["extract", archive, self.folder / "out"],
                      ["remove", archive, "one"]):
            with self.subTest(words=words[0]):
                status, written = self.on_terminal(*words)
                self.assertEqual(status, 0, written)
                self.assertIn(b"100%", written)
                # The line is wiped when the work is done.
                self.assertRegex(written, rb"\r\x1b\[K$" if words[0] != "test" else rb"\r\x1b\[K")


class Interrupted(TerminalTestCase):
    """A signal cancels the work: an archive being changed is as before, a new one isn't left half made."""

    BIG = 1 << 30

    def interrupted(self, number, *arguments):
        process, master = self.start(*arguments)
        written = b""
        while b"%" not in written:  # the bar shows that the work has begun
            written += os.read(master, 4096)
        process.send_signal(number)
        written += self.read_to_end(master)
        return process.wait(), written

    def setUp(self):
        super().setUp()
        self.tree = self.folder / "tree"
        self.tree.mkdir()
        with open(self.tree / "big", "wb") as big:
            big.truncate(self.BIG)
        (self.tree / "small").write_bytes(b"small")
        self.archive = self.folder / "archive.zip"

    def check(self, status, written):
        self.assertEqual(status, 1, written)
        self.assertIn(b"cancelledOperation", written)

    def test_add(self):
        self.succeed("create", self.archive, self.tree / "small")
        before = self.archive.read_bytes()
        for number in (signal.SIGINT, signal.SIGTERM):
            for method in ("none", "deflate"):
                with self.subTest(signal=number, method=method):
                    self.check(*self.interrupted(number, "add", "--method", method, "--relative-to", self.tree,
                                                 self.archive, "small", "big"))
                    self.assertEqual(self.archive.read_bytes(), before)

    def test_create(self):
        self.check(*self.interrupted(signal.SIGINT, "create", "--method", "none", self.archive, self.tree))
        self.assertEqual(os.listdir(self.folder), ["tree"])

    def test_remove_test_and_extract(self):
        self.succeed("create", "--method", "none", self.archive, self.tree)
        size, stamp = self.archive.stat().st_size, self.archive.stat().st_mtime_ns
        for words in (["remove", self.archive, "small"], ["test", self.archive],
                      ["extract", self.archive, self.folder / "out"]):
            with self.subTest(words=words[0]):
                self.check(*self.interrupted(signal.SIGTERM, *words))
                self.assertEqual((self.archive.stat().st_size, self.archive.stat().st_mtime_ns), (size, stamp))
        self.assertEqual(len(self.listed(self.archive)), 2)


if __name__ == "__main__":
    support.main()
