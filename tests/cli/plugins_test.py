"""The example plug-ins, used as their README tells."""
import json
import os
import re
import subprocess
import tempfile
import xml.etree.ElementTree as xml

from kestra_command import SYNTAX_ERROR, CommandTest, main

PLUGINS = os.environ["KESTRA_EXAMPLE_PLUGINS"]
EXAMPLES = os.environ["KESTRA_EXAMPLES"]


class Plugins(CommandTest):
    def setUp(self):
        self.directory = tempfile.TemporaryDirectory()
        self.addCleanup(self.directory.cleanup)
        self.notes = os.path.join(self.directory.name, "notes")
        with open(self.notes, "w", encoding="utf-8") as notes:
            notes.write("buy milk\nx pay rent\nAnn & <Bob>\n")
        self.source = f"Notes(File='{self.notes}')"

    def change(self, query, active=True, **expected):
        options = ["--active"] if active else []
        return self.check([*options, "--format", "text", "--plugins", PLUGINS, "--", query],
                          **expected)

    def test_mounts(self):
        out = self.check(["--format", "json", "--plugins", PLUGINS,
                          "SELECT * FROM Mounts.Mount"]).stdout
        with open("/proc/self/mounts", encoding="utf-8") as mounts:
            fields = [line.split() for line in mounts]
        rows = json.loads(out)
        self.assertEqual([row["Type"] for row in rows], [field[2] for field in fields])
        self.assertEqual(["ReadOnly" in row["Options"] for row in rows],
                         ["ro" in field[3].split(",") for field in fields])
        one = fields[0][2]
        out = self.check(["--format", "text", "--plugins", PLUGINS,
                          f"SELECT COUNT(*) FROM Mounts(Type='{one}').Mount"]).stdout
        self.assertEqual(int(out), sum(field[2] == one for field in fields))

    def test_without_its_directory_it_is_unknown(self):
        for options in [], ["--plugins", self.directory.name]:
            result = self.check([*options, "SELECT * FROM Mounts.Mount"], 1, b"")
            self.assertTrue(result.stderr.startswith(SYNTAX_ERROR), result)
            self.assertIn(b'no module "Mounts"', result.stderr)
        self.check(["--plugins", self.notes, "1"], 2, b"")
        self.check(["--plugins", "/no/such", "1"], 2, b"")

    def test_notes_change_only_when_allowed(self):
        query = f"UPDATE {self.source}.Note SET Done = 'yes' WHERE Text = 'buy milk'"
        refused = self.change(query, active=False, status=1, out=b"")
        self.assertIn(b"Message Id: 11015", refused.stderr)
        self.assertEqual(self.text(), "buy milk\nx pay rent\nAnn & <Bob>\n")
        self.change(query, out=b"1\n")
        self.assertEqual(self.text(), "x buy milk\nx pay rent\nAnn & <Bob>\n")
        self.change(f"INSERT {self.source}.Note (Text) VALUES ('call Ann')", out=b"1\n")
        self.change(f"DELETE {self.source}.Note WHERE Text LIKE 'Ann*'", out=b"1\n")
        self.change(f"EXECUTE Action(SELECT * FROM {self.source}.Notes, 'Tidy')", out=b"1\n")
        self.assertEqual(self.text(), "call Ann\n")

    def test_a_change_that_fails_says_why(self):
        refused = self.change(f"UPDATE {self.source}.Note SET Text = '' WHERE Done = 'yes'",
                              status=1, out=b"")
        self.assertIn(b"The parameter is incorrect.", refused.stderr)
        self.assertEqual(self.text(), "buy milk\nx pay rent\nAnn & <Bob>\n")
        self.check(["--plugins", PLUGINS, "SELECT * FROM Notes(File='/no/such').Note"], 1, b"")

    def test_xml(self):
        out = self.check(["--format", "xml", "--plugins", PLUGINS,
                          f"SELECT * FROM {self.source}.Notes"]).stdout
        root = xml.fromstring(out)
        self.assertEqual([p.text for p in root.iter("P") if p.get("n") == "Text"],
                         ["buy milk", "pay rent", "Ann & <Bob>"])
        self.assertEqual([i.get("n") for i in root.iter("I")],
                         ["Result", "Notes", "Note", "Note", "Note"])

    def test_the_readme_builds_a_plugin(self):
        with open(os.path.join(EXAMPLES, "plugins/README.md"), encoding="utf-8") as readme:
            blocks = re.findall(r"```cpp\n(.*?)```", readme.read(), re.S)
        self.assertEqual(len(blocks), 3)
        source = os.path.join(self.directory.name, "sun.cpp")
        with open(source, "w", encoding="utf-8") as code:
            code.write("\n".join(blocks))
        subprocess.run(["g++", "-std=c++17", "-shared", "-fPIC", f"-I{EXAMPLES}/plugins",
                        f"-I{EXAMPLES}/../include", "-o", source.replace(".cpp", ".so"), source],
                       check=True)
        self.check(["--format", "text", "--plugins", self.directory.name,
                    "SELECT Name, Hours FROM Sun.Day"], out=b"Monday\t5\n")

    def text(self):
        with open(self.notes, encoding="utf-8") as notes:
            return notes.read()


main()
