"""Formats of the command, read back by the parsers of others."""
import csv
import io
import json
import pty
import os
import re
import subprocess
import tempfile
import xml.etree.ElementTree

from kestra_command import COMMAND, CommandTest, main

QUERY = ("SELECT Path, FileName, Size, LastWriteTime, Attributes, ShortPathName "
         "FROM FILES.FILE('/etc/*') WHERE Size > 0")
NAMES = ["Path", "FileName", "Size", "LastWriteTime", "Attributes", "ShortPathName"]


class Formats(CommandTest):
    def test_json(self):
        rows = json.loads(self.check(["--format", "json", QUERY]).stdout)
        self.assertGreater(len(rows), 5)
        for row in rows:
            self.assertEqual(list(row), NAMES)
            self.assertIsInstance(row["Size"], int)
            self.assertIsInstance(row["Attributes"], list)
            self.assertIsNone(row["ShortPathName"])
            self.assertRegex(row["LastWriteTime"], r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ$")
        lines = self.check(["--format", "jsonl", QUERY]).stdout.decode().splitlines()
        self.assertEqual([json.loads(line) for line in lines], rows)

    def test_json_scalars(self):
        for query, value in ("0 - 1", -1), ("1 = 1", True), ("GETDATE() = GETDATE()", True):
            out = self.check(["--format", "json", query]).stdout
            self.assertEqual(json.loads(out), value)
        out = self.check(["--format", "json", "--timeout", "0", "1 + 1"]).stdout
        self.assertIsNone(json.loads(out))

    def test_csv(self):
        out = self.check(["--format", "csv", QUERY]).stdout.decode()
        self.assertNotRegex(out, r"[^\r]\n")
        records = list(csv.DictReader(io.StringIO(out, newline=""), strict=True))
        rows = json.loads(self.check(["--format", "json", QUERY]).stdout)
        self.assertEqual([record["Path"] for record in records], [row["Path"] for row in rows])
        self.assertEqual([int(record["Size"]) for record in records], [row["Size"] for row in rows])

    def test_csv_quotes_what_needs_it(self):
        out = self.check(["--format", "csv", "'a,b', 'say \"x\"', 'two\nlines', ''"]).stdout
        records = list(csv.reader(io.StringIO(out.decode(), newline=""), strict=True))
        self.assertEqual(records, [["Value"], ["a,b"], ['say "x"'], ["two\nlines"], [""]])

    def jq(self, program, *arguments):
        out = self.check(["--format", "json", *arguments]).stdout
        return subprocess.run(["jq", "-c", program], input=out, capture_output=True, check=True,
                              timeout=60).stdout.decode()

    def test_jq_reads_every_process(self):
        count = int(self.jq("length", "SELECT * FROM Processes.Process"))
        self.assertGreater(count, 2)
        self.assertEqual(self.jq("map(select(.PID == 1)) | .[0].PID | type",
                                 "SELECT * FROM Processes.Process"), '"number"\n')

    def test_awkward_content_reaches_others_whole(self):
        """A name with quotes, an end of line and an emoji; a flag set, a date, and NULL."""
        name = "say \"it's\"\nnow, \U0001f600;"
        with tempfile.TemporaryDirectory() as root:
            path = os.path.join(root, name)
            with open(path, "w", encoding="utf-8"):
                pass
            os.chmod(path, 0o444)
            os.utime(path, (0, 1709209800))  # 2024-02-29 12:30:00 UTC
            query = ("SELECT FileName, Attributes, LastWriteTime, FileVersion, Size "
                     f"FROM FILES.FILE('{root}/*')")
            wanted = [name, ["ReadOnly"], "2024-02-29T12:30:00Z", None, 0]
            self.assertEqual(json.loads(self.jq("[.[0][]]", query)), wanted)
            lines = self.check(["--format", "jsonl", query]).stdout
            self.assertEqual(list(json.loads(lines).values()), wanted)
            out = self.check(["--format", "csv", query]).stdout.decode()
            record, = csv.DictReader(io.StringIO(out, newline=""), strict=True)
            self.assertEqual(list(record.values()),
                             [name, "ReadOnly", "2024-02-29T12:30:00Z", "", "0"])

    def test_table_is_as_wide_as_its_content_in_a_pipe(self):
        lines = self.check(["--format", "table", QUERY]).stdout.decode().splitlines()
        self.assertEqual(lines[0].split(), NAMES)
        self.assertRegex(lines[1], r"^-+( +-+)*$")
        self.assertNotIn("\u2026", "".join(lines))

    def test_table_names_units(self):
        out = self.check(["--format", "table", "SELECT PID, MemoryUsage FROM Processes.Process"])
        self.assertRegex(out.stdout.decode().splitlines()[0], r"^ *PID +MemoryUsage \(KB\)$")

    def test_text_is_the_default_in_a_pipe(self):
        query = "SELECT FileName, Size FROM FILES.FILE('/etc/passwd')"
        size = os.path.getsize("/etc/passwd")
        self.check([query], out=f"passwd\t{size}\n".encode())

    def on_a_terminal(self, *arguments):
        """Runs the command on a terminal of its own; (exit status, what it showed)."""
        child, terminal = pty.fork()
        if child == 0:
            os.execv(COMMAND, [COMMAND, *arguments])
        shown = b""
        try:
            while chunk := os.read(terminal, 65536):
                shown += chunk
        except OSError:
            pass  # how a terminal says that nobody writes to it any more
        os.close(terminal)
        return os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]), shown.decode()

    def test_table_is_the_default_on_a_terminal(self):
        status, shown = self.on_a_terminal("SELECT PID, ImageName FROM Processes.Process")
        self.assertEqual(status, 0)
        self.assertRegex(shown, r"^ *PID +ImageName *\r\n *-+ +-+\r\n")

    def test_nothing_to_check_on_a_terminal_is_wrong_usage(self):
        status, shown = self.on_a_terminal("--check")
        self.assertEqual(status, 2)
        self.assertIn("Usage: kestra", shown)

    def test_control_characters_do_not_reach_the_terminal(self):
        for name in ("table", "vertical", "text", "csv", "json", "jsonl", "xml"):
            _, shown = self.on_a_terminal("--format", name, "'a\x1b[2Jb', 'c\u009b31m', 'd\re'")
            self.assertFalse(re.search("[\x00-\x08\x0b-\x1f\x7f-\x9f]", shown.replace("\r\n", "")),
                             (name, shown))

    def test_a_terminal_is_told_that_there_are_no_rows(self):
        for query in "SELECT * FROM Processes.Process WHERE 1 = 2", "SELECT PID FROM " \
                "Processes.Process WHERE 1 = 2":
            _, shown = self.on_a_terminal(query)
            self.assertTrue(shown.endswith("kestra: no rows\r\n"), shown)

    def test_xml_is_well_formed_whatever_a_file_is_called(self):
        with tempfile.TemporaryDirectory() as root:
            for name in b"a\x1b[2J", b"b\xff", b"c\xef\xbf\xbf", b"d\r\n]]>&#1;":
                with open(os.path.join(root.encode(), name), "wb"):
                    pass
            for what in "*", "FileName":
                out = self.check(["--format", "xml",
                                  f"SELECT {what} FROM FILES.FILE('{root}/*')"]).stdout
                document = xml.etree.ElementTree.fromstring(out)
                self.assertEqual(len(document.findall(".//P[@n='FileName']")), 4)


main()
