"""The module Files over a real tree, beside what other programs say of it and see in it."""
import os
import shutil
import signal
import socket
import stat
import subprocess
import tempfile
import time

from kestra_command import CommandTest, main


class FilesTest(CommandTest):
    below = None  # the temporary directory

    def setUp(self):
        self.dir = tempfile.mkdtemp(prefix="kestra files ", dir=self.below)
        self.addCleanup(shutil.rmtree, self.dir, ignore_errors=True)

    def path(self, *parts):
        return os.path.join(self.dir, *parts)

    def write(self, content, *parts):
        os.makedirs(os.path.dirname(self.path(*parts)), exist_ok=True)
        with open(self.path(*parts), "wb") as file:
            file.write(content)

    def active(self, query, status=0, out=None, err=None):
        return self.check(["--active", "--format", "text", query], status, out, err)

    def find(self, start, depth, *more):
        """What find says, without what has a leading dot below the start."""
        found = subprocess.run(
            ["find", start, "-maxdepth", str(depth), "-mindepth", "1", "-name", ".*", "-prune",
             "-o", *more], capture_output=True, check=False)
        lines = found.stdout.decode("utf-8", "surrogateescape").split("\n")[:-1]
        return sorted(tuple(line.split("\t")) for line in lines)


class Reading(FilesTest):
    def tree(self):
        self.write(b"hello\nworld\n", "a.conf")
        self.write(b"x" * 5000, "one", "B.CONF")
        self.write(b"", "one", "two", "three", "deep.conf")
        self.write(b"x", ".dot", "in.conf")
        self.write(b"x", "one", ".hidden.conf")
        self.write(b"x", "one", "caf\u00e9 \u2713.txt")
        os.symlink("a.conf", self.path("link.conf"))
        os.symlink("one", self.path("linkdir"))
        os.symlink("/nowhere", self.path("loose.conf"))
        os.symlink(".", self.path("one", "loop"))
        os.mkfifo(self.path("pipe.conf"))
        listener = socket.socket(socket.AF_UNIX)
        self.addCleanup(listener.close)
        listener.bind(self.path("one", "socket"))
        os.chmod(self.path("a.conf"), 0o444)
        os.utime(self.path("one", "B.CONF"), (86400, 172800))

    def test_files_agree_with_find(self):
        self.tree()
        for levels in (0, 1, 2, 100):
            rows = self.rows(f"SELECT Path, Size FROM Files(DirPath='{self.dir}', "
                             f"Levels={levels}).File")
            expected = self.find(self.dir, levels + 1, "-not", "-xtype", "d", "-printf",
                                 "%p\t%s\n")
            self.assertEqual(sorted(rows), expected, levels)

    def test_directories_agree_with_find(self):
        self.tree()
        rows = self.rows(f"SELECT Path, Name FROM Files(DirPath='{self.dir}', Levels=9).Directory")
        expected = self.find(self.dir, 9, "-xtype", "d", "-printf", "%p\t%f\n")
        expected.append((self.dir, os.path.basename(self.dir)))
        self.assertEqual(sorted(rows), sorted(expected))

    def test_etc_agrees_with_find(self):
        rows = self.rows("SELECT Path, Size FROM Files(DirPath='/etc', Levels=2).File "
                         "WHERE FileName LIKE '*.conf'")
        expected = self.find("/etc", 3, "-not", "-xtype", "d", "-name", "*.conf", "-printf",
                             "%p\t%s\n")
        self.assertTrue(expected)
        self.assertEqual(sorted(rows), expected)

    def test_wildcards(self):
        self.tree()
        for path, expected in (("*/two", "one/two/three"), ("o?e/t*", "one/two/three")):
            rows = self.rows(f"SELECT Path, Name FROM Files(DirPath='{self.path(path)}', "
                             "Levels=1).Directory WHERE Name = 'three'")
            self.assertEqual(rows, [(self.path(expected), "three")])
        rows = self.rows(f"SELECT Path, Size FROM Files(FilePath='{self.path('*', '*.conf')}').File")
        self.assertEqual(rows, [(self.path("one", "B.CONF"), "5000")])  # and none through the link

    def test_attributes_and_times(self):
        self.tree()
        rows = self.rows(f"SELECT FileName, Attributes FROM Files(DirPath='{self.dir}').File "
                         "WHERE FileName LIKE 'a.*'")
        self.assertEqual(rows, [("a.conf", "ReadOnly")])
        hidden = self.path("one", ".hidden.conf")
        rows = self.rows(f"SELECT FileName, Attributes FROM Files(FilePath='{hidden}').File")
        self.assertEqual(rows, [(".hidden.conf", "Hidden")])
        os.environ["TZ"] = "UTC"
        self.addCleanup(os.environ.pop, "TZ")
        path = self.path("one", "B.CONF")
        rows = self.rows(f"SELECT LastAccessTime, LastWriteTime FROM "
                         f"Files(FilePath='{path}').File")
        self.assertEqual(rows, [("1970-01-02 00:00:00", "1970-01-03 00:00:00")])

    def test_lines_are_those_of_sed(self):
        query = ("SELECT Number, Text FROM Files(FilePath='/etc/passwd', LineFrom=3, "
                 "LineCount=4).FileLine")
        with open("/etc/passwd", encoding="utf-8") as file:
            lines = file.read().split("\n")
        self.assertEqual(self.rows(query), [(str(n), lines[n - 1]) for n in range(3, 7)])

    def test_text(self):
        self.write("z\u00e4hl mich".encode(), "t")
        query = (f"SELECT FileText, FileName FROM Files(FilePath='{self.path('t')}', "
                 "CharFrom={}, CharCount={}).File")
        for start, count, expected in ((1, 3, "z\u00e4h"), (2, 1, "\u00e4"), (6, 99, "mich"),
                                       (50, 1, "")):
            self.assertEqual(self.rows(query.format(start, count)), [(expected, "t")])

    def test_a_huge_file_is_not_read_whole(self):
        with open(self.path("huge"), "wb") as file:
            file.truncate(1 << 40)
        begin = time.monotonic()
        rows = self.rows(f"SELECT LEN(FileText), FileName FROM Files(FilePath='{self.path('huge')}'"
                         ", CharFrom=1, CharCount=10).File WHERE Size IS NULL")
        self.assertEqual(len(rows), 1)
        self.assertLess(time.monotonic() - begin, 2)
        self.check(["--format", "text", f"SELECT COUNT(*) FROM Files(FilePath='{self.path('huge')}'"
                    ", LineFrom=1, LineCount=1, Timeout=300).FileLine"], out=b"0\n")
        self.assertLess(time.monotonic() - begin, 4)

    def test_what_is_missing_and_what_is_wrong(self):
        self.write(b"", "a")
        count = "SELECT COUNT(*) FROM Files({}).File"
        for args in (f"DirPath='{self.path('none')}'", f"FilePath='{self.path('none', 'x')}'"):
            self.check(["--format", "text", count.format(args)], out=b"0\n")
        for args in ("", "Levels=101", f"DirPath='{self.dir}', Levels=101",
                     f"DirPath='{self.dir}', Timeout=3600001",
                     f"FilePath='{self.path('*')}', LineFrom=1, LineCount=1",
                     f"DirPath='{self.dir}', FilePath='{self.path('a')}'"):
            self.check(["--format", "text", count.format(args)], status=1, out=b"")


class AHundredThousandFiles(FilesTest):
    """A walk that takes a while. A disk would take a minute to make the files and remove them."""
    below = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None

    def setUp(self):
        super().setUp()
        for d in range(100):
            os.mkdir(self.path(str(d)))
            for f in range(1000):
                os.close(os.open(self.path(str(d), str(f)), os.O_CREAT | os.O_WRONLY))

    def count(self, timeout):
        return (f"SELECT COUNT(*) FROM Files(DirPath='{self.dir}', Levels=1, "
                f"Timeout={timeout}).File")

    def test_time_limit(self):
        """What was found stays. How long the walk takes is the machine's to say, so the limit
        grows until it leaves something."""
        self.check(["--format", "text", self.count(3600000)], out=b"100000\n")
        for limit in (1, 2, 5, 10, 20, 50, 100):
            begin = time.monotonic()
            found = int(self.check(["--format", "text", self.count(limit)]).stdout)
            self.assertLess(time.monotonic() - begin, 1.5, limit)
            if 0 < found < 100000:
                return
        self.fail(f"no limit leaves a part: {limit} ms leave {found}")

    def test_cancel(self):
        """Fifteen walks, so that the key comes in one of them however fast they are."""
        query = "; ".join(self.count(3600000 - n) for n in range(15))
        process = self.start("--format", "text", query)
        time.sleep(0.12)
        self.assertIsNone(process.poll())
        begin = time.monotonic()
        process.send_signal(signal.SIGINT)
        out, _ = process.communicate(timeout=10)
        self.assertLess(time.monotonic() - begin, 1.0)
        self.assertEqual(process.returncode, 130)
        self.assertLess(out.count(b"100000\n"), 15)
        self.assertEqual(out.replace(b"100000\n", b""), b"")


class Changing(FilesTest):
    def test_nothing_without_permission(self):
        self.check(["--format", "text",
                    f"INSERT Files(DirPath='{self.dir}').File (FileName) VALUES ('n')"], status=1)
        self.assertEqual(os.listdir(self.dir), [])

    def test_files_come_and_go(self):
        insert = f"INSERT Files(DirPath='{self.dir}').File ({{}}) VALUES ({{}})"
        self.active(insert.format("FileName", "'empty'"), out=b"1\n")
        self.assertEqual(os.path.getsize(self.path("empty")), 0)
        content = os.urandom(700000)
        self.write(content, "source")
        os.chmod(self.path("source"), 0o640)
        self.active(insert.format("FileName, Source, Attributes",
                                  f"'copy', '{self.path('source')}', 'ReadOnly'"), out=b"1\n")
        subprocess.run(["cmp", self.path("source"), self.path("copy")], check=True)
        self.assertEqual(stat.S_IMODE(os.stat(self.path("copy")).st_mode), 0o440)
        self.active(insert.format("FileName, Source", f"'empty', '{self.path('source')}'"), 1, b"")
        self.assertEqual(os.path.getsize(self.path("empty")), 0)

        one = f"Files(FilePath='{self.path('copy')}').File"
        self.active(f"UPDATE {one} SET Attributes = 0", 0, b"1\n")
        self.assertEqual(stat.S_IMODE(os.stat(self.path("copy")).st_mode), 0o640)
        self.active(f"UPDATE {one} SET FileName = 'empty'", 1, b"")
        self.active(f"UPDATE {one} SET FileName = 'moved'", 0, b"1\n")
        self.assertEqual(sorted(os.listdir(self.dir)), ["empty", "moved", "source"])
        subprocess.run(["cmp", self.path("source"), self.path("moved")], check=True)

        self.active(f"DELETE Files(DirPath='{self.dir}').File WHERE FileName <> 'source'", 0,
                    b"2\n")
        self.assertEqual(os.listdir(self.dir), ["source"])

    def test_directories_come_and_go(self):
        files = f"Files(DirPath='{self.dir}', Levels=1)"
        self.active(f"INSERT {files}.Directory (Name) VALUES ('sub')", 0, b"1\n")
        self.active(f"INSERT {files}.File (ATTACHEDTO, FileName) VALUES (SELECT d.ITEMID FROM "
                    f"{files}.Directory d WHERE d.Name = 'sub', 'in')", 0, b"1\n")
        self.assertEqual(os.listdir(self.path("sub")), ["in"])
        self.active(f"DELETE {files}.Directory WHERE Name = 'sub'", 1, b"")
        self.active(f"UPDATE {files}.Directory SET Name = 'other' WHERE Name = 'sub'", 0, b"1\n")
        self.assertEqual(os.listdir(self.path("other")), ["in"])
        self.active(f"DELETE {files}.File", 0, b"1\n")
        self.active(f"DELETE {files}.Directory WHERE Name = 'other'", 0, b"1\n")
        self.assertEqual(os.listdir(self.dir), [])

    def test_a_change_of_an_ini_file_is_one_of_a_file(self):
        self.write(b"[a]\nkey=1\n", "x.ini")
        path = self.path("x.ini")
        size = f"SELECT Size FROM Files(FilePath='{path}').File"
        self.active(f"{size}; UPDATE IniFile(Path='{path}').IniKey SET StringValue = '12'; {size}; "
                    f"DELETE Files(FilePath='{path}').File; "
                    f"SELECT Name FROM IniFile(Path='{path}').IniKey",
                    out=b"10\n\n1\n\n11\n\n1\n\n".replace(b"\n\n", b"\n"))

    def test_a_link_to_a_directory_is_removed_alone(self):
        self.write(b"x", "real", "file")
        os.symlink("real", self.path("link"))
        self.active(f"DELETE Files(DirPath='{self.dir}', Levels=1).Directory WHERE Name = 'link'",
                    out=b"1\n")
        self.assertEqual(sorted(os.listdir(self.dir)), ["real"])
        self.assertEqual(os.listdir(self.path("real")), ["file"])

    def test_a_link_is_removed_and_not_its_target(self):
        self.write(b"kept", "target")
        os.symlink("target", self.path("link"))
        self.active(f"DELETE Files(FilePath='{self.path('link')}').File", 0, b"1\n")
        self.assertEqual(os.listdir(self.dir), ["target"])


main()
