"""The module IniFile beside Python's configparser: each sees what the other wrote."""
import configparser
import os
import shutil
import subprocess
import tempfile

from kestra_command import COMMAND, CommandTest, main


class IniTest(CommandTest):
    def setUp(self):
        self.dir = tempfile.mkdtemp(prefix="kestra ini ")
        self.addCleanup(shutil.rmtree, self.dir, ignore_errors=True)
        self.path = os.path.join(self.dir, "x.ini")
        self.file = f"IniFile(Path='{self.path}')"

    def active(self, query, out=b"1\n"):
        return self.check(["--active", "--format", "text", query], 0, out)

    def refused(self, query, what):
        before = self.content()
        result = self.check(["--active", "--format", "text", query], 1, b"")
        self.assertIn(what, result.stderr)
        self.assertEqual(self.content(), before)

    def add_key(self, section, name, value):
        self.active(f"INSERT {self.file}.IniKey (ATTACHEDTO, Name, StringValue) VALUES (SELECT "
                    f"s.ITEMID FROM {self.file}.IniSection s WHERE s.Name = '{section}', "
                    f"'{name}', '{value}')")

    def content(self):
        with open(self.path, "rb") as file:
            return file.read()

    def write(self, content):
        with open(self.path, "wb") as file:
            file.write(content)

    def parsed(self):
        parser = configparser.RawConfigParser()
        parser.optionxform = str
        parser.read(self.path, encoding="utf-8")
        return {name: dict(parser.items(name)) for name in parser.sections()}

    def test_a_file_from_nothing(self):
        self.active(f"INSERT {self.file}.IniSection (Name) VALUES ('net')")
        self.assertEqual(self.parsed(), {"net": {}})
        self.add_key("net", "Host name", "caf\u00e9 = \u2713")
        self.add_key("net", "port", "80")
        self.assertEqual(self.parsed(), {"net": {"Host name": "caf\u00e9 = \u2713", "port": "80"}})
        self.active(f"UPDATE {self.file}.IniKey SET DWORDValue = 8080 WHERE Name = 'port'")
        self.assertEqual(self.parsed()["net"]["port"], "8080")
        self.active(f"DELETE {self.file}.IniKey WHERE Name = 'port'")
        self.assertEqual(list(self.parsed()["net"]), ["Host name"])
        self.active(f"DELETE {self.file}.IniSection WHERE Name = 'net'")
        self.assertEqual(self.parsed(), {})
        self.assertEqual(os.stat(self.path).st_mode & 0o777, 0o666 & ~self.umask())

    @staticmethod
    def umask():
        mask = os.umask(0)
        os.umask(mask)
        return mask

    def test_reading_what_python_wrote(self):
        parser = configparser.RawConfigParser()
        parser.optionxform = str
        expected = []
        for section in ("a", "b c", "d.e/f"):
            parser.add_section(section)
            for key, value in (("k", "1"), ("K", "two words"), ("x y", ""), ("url", "h://x?a=b")):
                parser.set(section, key, value)
                expected.append((section, key, value))
        with open(self.path, "w", encoding="utf-8") as file:
            parser.write(file)
        query = (f"SELECT s.Name, k.Name, k.StringValue FROM {self.file}.IniSection s "
                 "JOIN IniFile.IniKey k ON k.ATTACHEDTO = s.ITEMID")
        self.assertEqual(self.rows(query), expected)
        self.assertEqual(self.rows(f"SELECT Name FROM INIFILES.IniKey('{self.path}')"),
                         [(key,) for _, key, _ in expected])

    def test_one_changed_key_is_one_changed_line(self):
        lines = [b"\xef\xbb\xbf; head\r\n", b"[a]\r\n", b"  x  =  1 \r\n", b"\r\n", b"# odd\r\n",
                 b"; of b\r\n", b"[b]\r\n", b"x=2"]
        self.write(b"".join(lines))
        self.active(f"UPDATE k SET StringValue = 'new' FROM {self.file}.IniSection s JOIN "
                    "IniFile.IniKey k ON k.ATTACHEDTO = s.ITEMID WHERE s.Name = 'a'")
        lines[2] = b"  x  =  new \r\n"
        self.assertEqual(self.content(), b"".join(lines))

    def test_refusals_change_nothing(self):
        self.write(b"[net]\nport=80\n")
        insert = f"INSERT {self.file}.IniSection (Name) VALUES "
        self.refused(insert + "('net')", b"16002")
        self.refused(insert + "('a]')", b"11002")
        self.refused(f"INSERT {self.file}.IniKey (StringValue) VALUES ('x')", b"11000")
        self.refused(f"UPDATE {self.file}.IniKey SET StringValue = ' x'", b"11002")
        self.refused(f"UPDATE {self.file}.IniKey SET Name = 'x'", b"11011")
        self.check([f"DELETE {self.file}.IniSection"], 1, b"")  # without the permission
        self.assertEqual(self.content(), b"[net]\nport=80\n")
        self.write("[net]\n".encode("utf-16"))
        self.check(["--active", insert + "('x')"], 1, b"")
        self.assertEqual(self.content(), "[net]\n".encode("utf-16"))
        self.write(b"a=1\rb=2\rc=3\r")
        self.refused(f"UPDATE {self.file}.IniKey SET StringValue = '5'", b"15004")

    def test_rows_that_go_with_others(self):
        cfg = self.file[:-1] + ",Format='Cfg')"
        self.write(b"[A]\n[B]\nx=1\n[]\n[]\n[A]\n[]\n")
        self.check(["--active", f"DELETE {cfg}.IniSection"], 0)
        self.assertEqual(self.content(), b"")
        self.write(b"[a]\nx=1\ny=2\n[b]\nz=3\n")
        self.check(["--active", f"DELETE s FROM {self.file}.IniSection s JOIN IniFile.IniKey k "
                    "ON k.ATTACHEDTO = s.ITEMID WHERE s.Name = 'a'"], 0)
        self.assertEqual(self.content(), b"[b]\nz=3\n")

    def test_a_scrambled_file_without_its_key(self):
        keyed = self.file[:-1] + ",ScrambleKey=77)"
        self.active(f"INSERT {keyed}.IniSection (Name) VALUES ('net')")
        self.active(f"INSERT {keyed}.IniSection (Name) VALUES ('log')")
        self.refused(f"INSERT {self.file}.IniSection (Name) VALUES ('x')", b"15004")
        self.assertEqual(self.rows(f"SELECT Name FROM {keyed}.IniSection"), [("net",), ("log",)])

    def test_a_link_stays_and_what_is_no_file_is_not_opened(self):
        self.write(b"[a]\n")
        link = os.path.join(self.dir, "link")
        os.symlink("x.ini", link)
        self.active(f"INSERT IniFile(Path='{link}').IniSection (Name) VALUES ('b')")
        self.assertTrue(os.path.islink(link))
        self.assertEqual(self.content(), b"[a]\n[b]\n")
        pipe = os.path.join(self.dir, "pipe")
        os.mkfifo(pipe)
        self.check([f"SELECT Name FROM IniFile(Path='{pipe}').IniSection"], 1, b"")
        self.check(["--active", f"INSERT IniFile(Path='{pipe}').IniSection (Name) VALUES ('b')"],
                   1, b"")

    def test_processes_at_once_lose_nothing(self):
        self.write(b"[a]\n")
        writers = [
            subprocess.Popen([COMMAND, "--active", f"INSERT {self.file}.IniSection (Name) "
                              f"VALUES ('s{i}')"], stdout=subprocess.DEVNULL,
                             stderr=subprocess.DEVNULL) for i in range(8)]
        done = {f"s{i}" for i, writer in enumerate(writers) if writer.wait(60) == 0}
        self.assertTrue(done)
        self.assertEqual(set(self.parsed()), done | {"a"})


if __name__ == "__main__":
    main()
