"""Archives go back and forth between this library and the tools people have, without a loss or a complaint."""

import json
import os
import shutil
import struct
import zipfile
import zlib

import support
from support import ToolTestCase, add_links, as_python_sees, make_tree, peer, snapshot, unseekable

MOST_ENTRIES = 65_535


def record(name, content, *, method=0, flags=0x0800, descriptor=None):
    """One entry's local part and central part; descriptor: None, "signed" or "bare"."""
    raw = zlib.compressobj(9, zlib.DEFLATED, -15) if method == 8 else None
    data = raw.compress(content) + raw.flush() if raw else content
    checksum = zlib.crc32(content)
    flags |= 8 if descriptor else 0
    sizes = (0, 0, 0) if descriptor else (checksum, len(data), len(content))
    local = struct.pack("<4s5H3I2H", b"PK\3\4", 20, flags, method, 0x38E5, 0x52A6, *sizes, len(name), 0) + name + data
    if descriptor == "signed":
        local += b"PK\7\10"
    if descriptor:
        local += struct.pack("<3I", checksum, len(data), len(content))

    def central(offset):
        return struct.pack("<4s6H3I5H2I", b"PK\1\2", 0x0314, 20, flags, method, 0x38E5, 0x52A6, checksum, len(data),
                           len(content), len(name), 0, 0, 0, 0, 0o100644 << 16, offset) + name

    return local, central


def assembled(records):
    body = directory = b""
    for local, central in records:
        directory += central(len(body))
        body += local
    end = struct.pack("<4s4H2IH", b"PK\5\6", 0, 0, len(records), len(records), len(directory), len(body), 0)
    return body + directory + end


class WrittenHere(ToolTestCase):
    """Every peer reads what is written here."""

    def setUp(self):
        super().setUp()
        self.tree = add_links(make_tree(self.folder / "tree"))
        # An odd second, which the format can't hold, is cut down to the even one.
        os.utime(self.tree / "one", (1_700_000_001, 1_700_000_001))
        self.archive = self.folder / "ours.zip"

    def read_by_everyone(self, archive, expected):
        peer("unzip", "-tqq", archive)
        self.assertNotIn(b"arning", peer("7z", "t", archive))
        with zipfile.ZipFile(archive) as opened:
            self.assertIsNone(opened.testzip())
        for name, command in {
            "unzip": ("unzip", "-qq", archive, "-d"),
            "bsdtar": ("bsdtar", "-xpf", archive, "-C"),
        }.items():
            out = self.folder / f"by {name}"
            out.mkdir()
            peer(*command, out)
            with self.subTest(reader=name):
                self.assertEqual(snapshot(out), expected)

    def test_trees_by_each_method(self):
        for method in ("deflate", "none"):
            with self.subTest(method=method):
                archive = self.folder / f"{method}.zip"
                self.succeed("create", "--method", method, archive, self.tree)
                self.assertEqual(self.listed(archive), as_python_sees(archive))
                files = [entry for entry in self.listed(archive) if entry["type"] == "file"]
                self.assertEqual({entry["method"] for entry in files}, {method})
        self.read_by_everyone(archive, snapshot(self.tree))

    def test_tree_with_its_parent_deflated(self):
        self.succeed("create", "--keep-parent", self.archive, self.tree)
        expected = {f"tree/{name}": item for name, item in snapshot(self.tree).items()}
        status = self.tree.stat()
        self.assertTrue(all(entry["path"].startswith("tree/") for entry in self.listed(self.archive)))
        self.tree.chmod(0o755)
        self.read_by_everyone(self.archive, {"tree": ("directory", status.st_mode & 0o7777), **expected})

    def test_single_file_and_single_link(self):
        for name, entries in {"text.txt": ["text.txt"], "dangling": ["dangling"]}.items():
            archive = self.folder / f"{name}.zip"
            self.succeed("create", archive, self.tree / name)
            self.assertEqual([entry["path"] for entry in self.listed(archive)], entries)
            peer("unzip", "-tqq", archive)

    def test_empty(self):
        (self.folder / "nothing").mkdir()
        self.succeed("create", self.archive, self.folder / "nothing")
        self.assertEqual(self.archive.read_bytes(), b"PK\5\6" + bytes(18))
        self.assertEqual(zipfile.ZipFile(self.archive).namelist(), [])
        self.assertEqual(self.listed(self.archive), [])

    def test_an_archive_of_a_peer_grows_and_shrinks_here(self):
        os.utime(self.tree / "one", (support.TIME, support.TIME))
        peer("zip", "-qryz", self.archive, ".", "-x", "./text.txt", cwd=self.tree, input=b"kept\n", stdin=None)
        self.succeed("add", "--relative-to", self.tree, self.archive, "text.txt")
        self.succeed("remove", self.archive, "one")
        with zipfile.ZipFile(self.archive) as opened:
            self.assertEqual(opened.comment.strip(), b"kept")
        expected = snapshot(self.tree)
        del expected["one"]
        self.read_by_everyone(self.archive, expected)


class ReadHere(ToolTestCase):
    """What every peer writes is read here, and listed as Python's reader lists it."""

    def setUp(self):
        super().setUp()
        self.tree = make_tree(self.folder / "tree")

    def read_here(self, archive, tree=None, options=()):
        self.assertEqual(self.listed(archive), as_python_sees(archive))
        self.succeed("test", archive)
        if tree is not None:
            out = archive.with_suffix(".out")
            self.succeed("extract", *options, archive, out)
            self.assertEqual(snapshot(out), tree)

    def test_archivers(self):
        add_links(self.tree)
        makers = {
            "zip": "zip -qry {} .",
            "zip stored": "zip -qry0 {} .",
            "zip without extra fields": "zip -qryX {} .",
            "zip with descriptors": "zip -qryfd {} .",
            "zip streamed": "zip -qry - . | cat > {}",
            "zip streamed stored": "zip -qry0 - . | cat > {}",
            "7z": "7z a -bd -tzip -snl {} .",
            "7z stored": "7z a -bd -tzip -mx=0 -snl {} .",
            "bsdtar": "bsdtar -cf - --format zip * | cat > {}",
            "bsdtar stored": "bsdtar -cf - --format zip --options zip:compression=store * | cat > {}",
        }
        for name, command in makers.items():
            with self.subTest(maker=name):
                archive = self.folder / f"{name}.zip"
                peer("sh", "-c", command.format(f"'{archive}'"), cwd=self.tree)
                # Info-ZIP writes UTF-8 names but says so in an extra field only.
                options = ("--encoding", "UTF-8") if command.startswith("zip") else ()
                self.read_here(archive, snapshot(self.tree), options)

    def test_python(self):
        expected = {name: item for name, item in snapshot(self.tree).items()}
        for method in (zipfile.ZIP_STORED, zipfile.ZIP_DEFLATED):
            for streamed in (False, True):
                with self.subTest(method=method, streamed=streamed):
                    archive = self.folder / f"python{method}{streamed}.zip"
                    target = unseekable(archive) if streamed else open(archive, "wb")
                    with target as stream, zipfile.ZipFile(stream, "w", method) as opened:
                        for name in expected:
                            opened.write(self.tree / name, name)
                    self.read_here(archive, expected)

    def test_dos_made(self):
        archive = self.folder / "dos.zip"
        peer("zip", "-qrk", archive, "docs", "one", "hollow", cwd=self.tree)
        with zipfile.ZipFile(archive) as opened:
            self.assertEqual({info.create_system for info in opened.infolist()}, {0})
        self.read_here(archive)
        out = self.folder / "out"
        self.succeed("extract", archive, out)
        self.assertEqual((out / "DOCS/INNER/DEEP.TXT").read_bytes(), b"deep\n")
        self.assertTrue((out / "HOLLOW").is_dir())

    def test_prefixed(self):
        archive = self.folder / "prefixed.zip"
        peer("zip", "-qr", archive, ".", cwd=self.tree)
        archive.write_bytes(b"#!/bin/sh\necho unpacking\nexit\n" * 40 + archive.read_bytes())
        peer("zip", "-qA", archive)
        expected = snapshot(self.tree)
        self.read_here(archive, expected, ("--encoding", "UTF-8"))
        shutil.rmtree(archive.with_suffix(".out"))
        self.succeed("remove", archive, "one")
        self.assertIn(b"Everything is Ok", peer("7z", "t", archive))
        del expected["one"]
        self.read_here(archive, expected, ("--encoding", "UTF-8"))
        appended = self.folder / "appended.zip"
        appended.write_bytes(b"not an archive yet")
        with zipfile.ZipFile(appended, "a") as opened:
            opened.write(self.tree / "text.txt", "text.txt", zipfile.ZIP_DEFLATED)
        self.read_here(appended)

    def test_commented(self):
        for size in (1, 65_535):
            archive = self.folder / f"commented{size}.zip"
            with zipfile.ZipFile(archive, "w") as opened:
                opened.write(self.tree / "one", "one")
                opened.comment = b"c" * size
            self.read_here(archive)
        archive = self.folder / "entries commented.zip"
        peer("zip", "-qc", archive, "one", "text.txt", cwd=self.tree, input=b"first\nsecond\n", stdin=None)
        self.read_here(archive)

    def test_descriptors_with_and_without_signature(self):
        contents = {b"stored": (0, b"s" * 40_000), b"deflated": (8, b"d" * 70_000), b"last": (8, b"end")}
        for descriptor in ("signed", "bare"):
            with self.subTest(descriptor=descriptor):
                records = [record(name, content, method=method, descriptor=descriptor)
                           for name, (method, content) in contents.items()]
                archive = self.folder / f"{descriptor}.zip"
                archive.write_bytes(assembled(records))
                self.read_here(archive)
                for name, (_, content) in contents.items():
                    self.assertEqual(self.succeed("cat", archive, name.decode()), content)

    def test_names_in_other_encodings(self):
        korean = "한글 문서.txt"
        for name, encoding, spelling in (("Größe.txt", "cp437", None), ("àéî─│█.bin", "cp437", None),
                                         (korean, "utf-8", "UTF-8"), (korean, "cp949", "CP949"),
                                         (korean, "euc-kr", "EUC-KR")):
            with self.subTest(name=name, encoding=spelling):
                archive = self.folder / f"{name} {encoding}.zip"
                archive.write_bytes(assembled([record(name.encode(encoding), b"text", flags=0)]))
                self.read_here(archive)
                out = archive.with_suffix("")
                self.succeed("extract", *(("--encoding", spelling) if spelling else ()), archive, out)
                self.assertEqual(os.listdir(out), [name])


class FullArchiveWrittenHere(ToolTestCase):
    def test_as_many_entries_as_fit(self):
        tree = self.folder / "tree"
        tree.mkdir()
        for number in range(MOST_ENTRIES):
            os.close(os.open(tree / str(number), os.O_CREAT | os.O_WRONLY))
        archive = self.folder / "full.zip"
        self.succeed("create", archive, tree)
        peer("unzip", "-tqq", archive)
        self.assertIn(b"Files: 65535", peer("7z", "t", archive))
        self.assertEqual(len(peer("bsdtar", "-tf", archive).splitlines()), MOST_ENTRIES)
        with zipfile.ZipFile(archive) as opened:
            names = opened.namelist()
            middle = opened.infolist()[MOST_ENTRIES // 2]
        self.assertEqual(len(names), MOST_ENTRIES)
        self.assertEqual([line.split()[-1] for line in self.succeed("list", archive).decode().splitlines()], names)
        self.assertEqual([entry["path"] for entry in self.listed(archive)], names)
        before = archive.read_bytes()
        (tree / "one more").write_bytes(b"")
        self.refuse("add", "--relative-to", tree, archive, "one more")
        self.assertEqual(archive.read_bytes(), before)
        self.refuse("create", self.folder / "too full.zip", tree)
        self.assertFalse((self.folder / "too full.zip").exists())
        with open(archive, "r+b") as opened:
            opened.seek(middle.header_offset)
            opened.write(b"no header")
        done = support.run("list", archive)
        self.assertEqual((done.returncode, len(done.stdout.splitlines())), (1, MOST_ENTRIES // 2))
        self.assertIn(b"only 32767 of 65535 entries", done.stderr)


class Refused(ToolTestCase):
    """An entry that can't be read ends the reading there, and the tool says so instead of calling it success."""

    def setUp(self):
        super().setUp()
        (self.folder / "plain").write_bytes(b"plain")
        (self.folder / "secret").write_bytes(b"secret" * 100)

    def reads_only_the_first(self, archive):
        done = support.run("list", "--json", archive)
        self.assertEqual([entry["path"] for entry in json.loads(done.stdout)], ["plain"])
        self.assertIn("1 of 2", self.refuse("test", archive))
        self.assertIn("1 of 2", self.refuse("extract", archive, archive.with_suffix(".out")))
        self.assertEqual(os.listdir(archive.with_suffix(".out")), ["plain"])

    def test_encrypted(self):
        archive = self.folder / "classic.zip"
        peer("zip", "-q", archive, "plain", cwd=self.folder)
        peer("zip", "-q", "-P", "password", archive, "secret", cwd=self.folder)
        self.reads_only_the_first(archive)
        archive = self.folder / "aes.zip"
        peer("7z", "a", "-bd", "-tzip", archive, "plain", cwd=self.folder)
        peer("7z", "a", "-bd", "-tzip", "-mem=AES256", "-ppassword", archive, "secret", cwd=self.folder)
        self.reads_only_the_first(archive)

    def test_zip64(self):
        archive = self.folder / "64.zip"
        with zipfile.ZipFile(archive, "w") as opened:
            opened.write(self.folder / "plain", "plain")
            with opened.open("secret", "w", force_zip64=True) as entry:
                entry.write(b"secret")
        self.reads_only_the_first(archive)


if __name__ == "__main__":
    support.main()
