"""kestra --image over Windows volumes: hive files made for the test, and a prefix of Wine."""
import hashlib
import os
import re
import shutil
import subprocess
import sys
import tempfile

SUPPORT = os.environ["KESTRA_TEST_SUPPORT"]
sys.path.insert(0, SUPPORT)

from kestra_command import CommandTest, main  # noqa: E402
from wine_prefix import WinePrefix  # noqa: E402

WRITE_PROTECTED = b"The media is write protected."
VERSION_KEY = r"Software\Microsoft\Windows NT\CurrentVersion"


class ImageTest(CommandTest):
    def setUp(self):
        self.dir = os.path.realpath(tempfile.mkdtemp(prefix="kestra image "))
        self.addCleanup(shutil.rmtree, self.dir, ignore_errors=True)
        self.image = self.dir

    def volume(self, *options, name="volume"):
        self.image = os.path.join(self.dir, name)
        subprocess.run([sys.executable, os.path.join(SUPPORT, "make_volume.py"), self.image,
                        *options], check=True)

    def ask(self, query, *options, status=0, **more):
        result = self.run_command("--image", self.image, *options, "--format", "text", query,
                                  **more)
        self.assertEqual(result.returncode, status, f"{query}: {result}")
        return result

    def cells(self, query, *options):
        out = self.ask(query, *options).stdout.decode("utf-8", "surrogateescape")
        return [tuple(line.split("\t")) for line in out.split("\n")[:-1]]


class Hives(ImageTest):
    def test_machine_and_views(self):
        self.volume("--user", "alice")
        for query, expected in (
                (rf"SELECT StringValue FROM REGISTRY.REGISTRYVALUE('HKLM64\{VERSION_KEY}\ProductName')",
                 [("Windows 10 Pro",)]),
                (r"SELECT Name FROM REGISTRY.REGISTRYVALUE('HKLM64\Software\Microsoft\Windows\CurrentVersion\Run\*')",
                 [("Tray64",)]),
                (r"SELECT Name FROM REGISTRY.REGISTRYVALUE('HKLM\Software\Microsoft\Windows\CurrentVersion\Run\*')",
                 [("Tray32",)]),
                (r"SELECT Name FROM Registry(KeyPath='HKLM\software\microsoft\windows\CURRENTVERSION\run').RegistryValue",
                 [("Tray32",)]),
                (r"SELECT Name FROM Registry(KeyPath='HKLM64\Software\Microsoft\Windows\*\Run').RegistryValue",
                 [("Tray64",)]),
                (r"SELECT StringValue FROM REGISTRY.REGISTRYVALUE('HKLM64\System\CurrentControlSet\Control\ComputerName\ComputerName\*')",
                 [("VOLUME-1",)]),
                (r"SELECT DWORDValue FROM REGISTRY.REGISTRYVALUE('HKCC\Software\Fonts\LogPixels')",
                 [("96",)]),
                (r"SELECT StringValue FROM REGISTRY.REGISTRYVALUE('HKCR64\.txt\*')",
                 [("alice.txtfile",)]),
                (r"SELECT StringValue FROM REGISTRY.REGISTRYVALUE('HKCU\Control Panel\Desktop\Owner')",
                 [("alice",)]),
                (r"SELECT StringValue FROM REGISTRY.REGISTRYVALUE('HKU\.DEFAULT\Control Panel\Desktop\Owner')",
                 [(".DEFAULT",)]),
                (r"SELECT Name FROM REGISTRY.REGISTRYKEY('HKLM64\*')",
                 [("SAM",), ("SECURITY",), ("SOFTWARE",), ("SYSTEM",)]),
        ):
            self.assertEqual(self.cells(query), expected, query)

    def test_values_agree_with_hivexget(self):
        """Every value of one key, as another program reads the same file."""
        self.volume()
        path = os.path.join(self.image, "Windows/System32/config/SOFTWARE")
        out = subprocess.run(["hivexget", path, VERSION_KEY.replace("Software", "")],
                             capture_output=True, check=True).stdout.decode()
        theirs = sorted(re.findall(r'^"(.+?)"="(.*)"$', out.replace("\\\\", "\\"), re.M))
        ours = self.cells("SELECT Name, StringValue FROM Registry(KeyPath="
                          rf"'HKLM64\{VERSION_KEY}').RegistryValue WHERE Type = 'SZ'")
        self.assertGreater(len(theirs), 5)
        self.assertEqual(sorted(ours), theirs)

    def test_users(self):
        self.volume()
        owner = r"SELECT StringValue FROM REGISTRY.REGISTRYVALUE('HKCU\Control Panel\Desktop\Owner')"
        result = self.ask(owner, status=1)
        self.assertEqual(result.stdout, b"")
        for part in (b"alice", b"S-1-5-21-1-2-3-1001", "Böb".encode()):
            self.assertIn(part, result.stderr)
        for user, expected in (("ALICE", "alice"), ("böb", "Böb"), ("S-1-5-21-1-2-3-1002", "Böb")):
            self.assertEqual(self.cells(owner, "--image-user", user), [(expected,)], user)
        result = self.ask(owner, "--image-user", "carol", status=2)
        for part in (b"carol", b"alice", "Böb".encode()):
            self.assertIn(part, result.stderr)
        # What does not need to know whose registry it is works.
        self.assertEqual(len(self.cells(r"SELECT Path FROM FILES.FILE('%windows%\*')")), 1)
        self.ask(r"SELECT Path FROM FILES.FILE('%desktop%\*')", status=1)

    def test_files_and_tokens(self):
        self.volume("--user", "alice")
        for query, expected in (
                (r"SELECT Path FROM FILES.FILE('c:\PROGRAM files\mixed CASE\readme.*')",
                 [(r"c:\PROGRAM files\mixed CASE\ReadMe.Txt",)]),
                (r"SELECT FileText FROM Files(FilePath='C:\users\ALICE\documents\notes.txt', CharFrom=1, CharCount=10).File",
                 [("first line",)]),
                (r"SELECT FileName FROM FILES.FILE('%windows%\WIN.INI')", [("WIN.INI",)]),
                (r"SELECT FileName FROM FILES.FILE('\Windows\*.ini')", [("win.ini",)]),
                (r"SELECT StringValue FROM INIFILES.IniKey('%windows%\win.ini')", [("value",)]),
                (r"SELECT Name FROM Files(DirPath='C:\Prog*\*', Levels=3).Directory",
                 [("Mixed Case",)]),
                (r"SELECT Path FROM FILES.FILE('C:\etc\*')", []),
                (r"SELECT Path FROM FILES.FILE('D:\*')", []),
        ):
            self.assertEqual(self.cells(query), expected, query)
        self.ask(r"SELECT Path FROM FILES.FILE('/etc/*')", status=1)

    def test_nothing_of_this_machine(self):
        self.volume("--user", "alice")
        os.symlink("/etc", os.path.join(self.image, "leak"))
        os.symlink("/etc/passwd", os.path.join(self.image, "passwd"))
        cache = os.path.join(self.dir, "cache")
        environment = dict(os.environ, KESTRA_CacheDir=cache)
        self.assertEqual(self.cells("SELECT COUNT(PID) FROM Processes.Process"), [("0",)])
        self.assertEqual(self.cells(r"SELECT Path FROM FILES.FILE('C:\leak\*')"), [])
        self.assertEqual(self.cells(r"SELECT Path FROM Files(DirPath='C:\', Levels=9).File "
                                    "WHERE FileName = 'hostname'"), [])
        out = self.ask(r"SELECT FileText FROM Files(FilePath='C:\passwd', CharFrom=1, CharCount=99"
                       r")#60.File", env=environment).stdout
        self.assertNotIn(b"root", out)
        self.assertFalse(os.path.exists(cache))
        result = self.ask("CALLDLL('libc.so.6', 'puts', 'x')", status=1)
        self.assertIn(WRITE_PROTECTED, result.stderr)

    def test_links_in_the_place_of_the_volume(self):
        """A disk that was made to look like a prefix, with a link to this machine's root."""
        self.volume("--user", "alice")
        trap = os.path.join(self.dir, "trap")
        os.mkdir(trap)
        os.symlink("/", os.path.join(trap, "drive_c"))
        for directory in (trap, self.image):
            with open(os.path.join(directory, "system.reg"), "w", encoding="ascii") as file:
                file.write("WINE REGISTRY Version 2\n")
        result = self.check(["--image", trap, "1 + 1"], status=2, out=b"")
        self.assertIn(b"no Windows system", result.stderr)
        # Where there are hives they count.
        os.mkdir(os.path.join(self.image, "drive_c"))
        self.assertEqual(self.cells(r"SELECT FileName FROM FILES.FILE('C:\Windows\*.ini')"),
                         [("win.ini",)])

    def test_nothing_is_changed(self):
        self.volume("--user", "alice")
        before = self.state()
        for statement in (
                r"INSERT Registry(KeyPath='HKLM64\Software\Kestra').RegistryValue (Name, Type, StringValue) VALUES ('n', 'SZ', 'x')",
                r"INSERT Registry(KeyPath='HKLM64\Software\Kestra').RegistryKey (Name) VALUES ('n')",
                r"UPDATE Registry(KeyPath='HKLM64\Software\Kestra').RegistryValue SET StringValue = 'x'",
                r"UPDATE REGISTRY.REGISTRYVALUE('HKLM64\Software\Kestra\Empty') SET StringValue = 'x'",
                r"DELETE Registry(KeyPath='HKLM64\Software\Kestra').RegistryValue",
                r"DELETE REGISTRY.REGISTRYKEY('HKLM64\Software\Kestra')",
                r"INSERT Files(DirPath='C:\Windows').File (FileName, Source) VALUES ('x', 'C:\Windows\win.ini')",
                r"INSERT Files(DirPath='C:\Windows').Directory (Name) VALUES ('x')",
                r"UPDATE Files(DirPath='C:\Windows').File SET FileName = 'y'",
                r"DELETE Files(DirPath='C:\Windows').File",
                r"DELETE FILES.FILE('C:\Windows\*')",
                r"DELETE Files(DirPath='C:\Windows').Directory",
                r"INSERT IniFile(Path='C:\Windows\win.ini').IniSection (Name) VALUES ('net')",
                r"INSERT IniFile(Path='C:\Windows\new.ini').IniSection (Name) VALUES ('net')",
                r"UPDATE IniFile(Path='C:\Windows\win.ini').IniKey SET StringValue = 'x'",
                r"DELETE IniFile(Path='C:\Windows\win.ini').IniSection",
        ):
            result = self.ask(statement, "--active", status=1)
            self.assertIn(WRITE_PROTECTED, result.stderr, statement)
            result = self.ask(statement, status=1)
            self.assertIn(b"11015", result.stderr, statement)
        self.assertEqual(self.state(), before)

    def state(self):
        """Everything of the volume that a change would show in."""
        found = {}
        for folder, _, names in os.walk(self.image):
            for path in [folder] + [os.path.join(folder, name) for name in names]:
                status = os.lstat(path)
                content = b""
                if os.path.isfile(path):
                    with open(path, "rb") as file:
                        content = file.read()
                found[path] = (status.st_mtime_ns, status.st_ctime_ns, status.st_mode,
                               hashlib.sha256(content).hexdigest())
        return found

    def test_damage_is_told_and_survived(self):
        product = (rf"SELECT StringValue FROM REGISTRY.REGISTRYVALUE('HKLM64\{VERSION_KEY}"
                   r"\ProductName')")
        for options, word, expected in (
                (["--dirty", "SOFTWARE"], rb"SOFTWARE.*(not closed|dirty|log)", b"Windows 10 Pro\n"),
                (["--corrupt", "SOFTWARE"], rb"SOFTWARE.*(damaged|corrupt)", None),
                (["--no-header", "SOFTWARE"], rb"SOFTWARE is no registry file", b"")):
            self.volume(*options, name=options[0])
            log = os.path.join(self.dir, "log" + options[0])
            os.mkdir(log)
            result = self.run_command("--image", self.image, "--log", log, "--format", "text",
                                      product)
            self.assertEqual(result.returncode, 0, f"{options}: {result}")
            self.assertRegex(result.stderr, word)
            if expected is not None:
                self.assertEqual(result.stdout, expected, options)
            logged = b""
            for name in os.listdir(log):
                with open(os.path.join(log, name), "rb") as file:
                    logged += file.read()
            self.assertRegex(logged, word)
        # A hive that nobody asks for is not looked at.
        self.assertEqual(self.ask(r"SELECT FileName FROM FILES.FILE('C:\Windows\*')").stderr, b"")

    def test_wrong_usage(self):
        self.volume()
        query = "1 + 1"
        empty = os.path.join(self.dir, "empty")
        os.mkdir(empty)
        file = os.path.join(self.image, "Windows", "win.ini")
        for arguments, word in (
                (["--image", empty], b"no Windows system"),
                (["--image", os.path.join(self.dir, "none")], b""),
                (["--image", file], b""),
                (["--image", self.image, "--cache", empty], b"--cache"),
                (["--image", self.image, "--plugins", empty], b"--plugins"),
                (["--image-user", "alice"], b"--image")):
            result = self.check([*arguments, query], status=2, out=b"")
            self.assertIn(word, result.stderr, arguments)


class Prefix(ImageTest):
    @classmethod
    def setUpClass(cls):
        cls.prefix = WinePrefix(os.environ["KESTRA_WINE_PREFIX"])

    def setUp(self):
        super().setUp()
        self.image = self.prefix.path

    def reg_query(self, key, view):
        """What reg.exe lists of a key: its values, name -> (type, text), and its subkeys."""
        out = self.prefix.run("reg", "query", key, "/reg:" + view)
        values, keys = {}, []
        for line in out.replace("\r", "").split("\n"):
            match = re.fullmatch(r"    (.+?)    (REG_\w+)    (.*)", line)
            if match:
                values[match.group(1)] = match.group(2, 3)
            elif line.startswith("HKEY_") and not line.lower().endswith(key[key.index("\\"):].lower()):
                keys.append(line.rpartition("\\")[2])
        self.prefix.wait()
        return values, keys

    def test_current_version_agrees_with_reg(self):
        for root, view in (("HKLM64", "64"), ("HKLM", "32")):
            theirs, subkeys = self.reg_query("HKLM\\" + VERSION_KEY, view)
            rows = self.cells(rf"SELECT Name FROM REGISTRY.REGISTRYKEY('{root}\{VERSION_KEY}\*')")
            self.assertGreater(len(rows), 5)
            # What a running system makes anew at each start is in no file; links of the other
            # view may lead to it.
            with open(os.path.join(self.image, "system.reg"), encoding="utf-8") as file:
                saved = file.read().lower()
            subkeys = [name for name in subkeys if
                       "[" + f"{VERSION_KEY}\\{name}".lower().replace("\\", "\\\\") in saved]
            self.assertEqual(sorted(row[0] for row in rows), sorted(subkeys), root)
            ours = self.cells("SELECT Name, Type, StringValue FROM REGISTRY.REGISTRYVALUE("
                              rf"'{root}\{VERSION_KEY}\*')")
            # A prefix that runs programs of 64 bits alone has no values in the other view.
            self.assertGreater(len(ours), 3 if view == "64" else -1)
            self.assertEqual(sorted(row[0] for row in ours), sorted(theirs), root)
            for name, kind, text in ours:
                their_kind, their_text = theirs[name]
                self.assertEqual("REG_" + kind.upper(), their_kind)
                if kind == "SZ":
                    self.assertEqual(text, their_text, name)
                elif kind == "Binary":
                    self.assertEqual(text.replace(" ", "").upper(), their_text.upper(), name)
        paths = self.cells("SELECT Path FROM REGISTRY.REGISTRYVALUE("
                           rf"'HKLM64\{VERSION_KEY}\SystemRoot')")
        self.assertEqual(len(paths), 1)

    def test_libraries_with_their_versions(self):
        rows = self.cells(r"SELECT FileName, FileVersion FROM FILES.FILE("
                          r"'C:\Windows\System32\*.dll') WHERE FileVersion > '1.0'")
        self.assertGreater(len(rows), 100)
        folder = os.path.join(self.image, "drive_c/windows/system32")
        direct = self.rows(f"SELECT FileName, FileVersion FROM FILES.FILE('{folder}/*.dll') "
                           "WHERE FileVersion > '1.0'")
        self.assertEqual(sorted(rows), sorted(direct))
        count = self.cells(r"SELECT COUNT(FileName) FROM FILES.FILE('C:\Windows\System32\*.dll')")
        names = [name for name in os.listdir(folder) if name.lower().endswith(".dll")]
        self.assertEqual(count, [(str(len(names)),)])

    def test_a_resource_becomes_a_file(self):
        """The manifest or version block of a real program, taken out to this machine."""
        source = os.path.join(self.image, "drive_c/windows/system32/kernel32.dll")
        self.check(["--active", "--format", "text",
                    f"INSERT Files(DirPath='{self.dir}').File (FileName, Source, ResType, ResName) "
                    f"VALUES ('block', '{source}', '#16', '#1')"], out=b"1\n")
        with open(os.path.join(self.dir, "block"), "rb") as file:
            block = file.read()
        self.assertIn("VS_VERSION_INFO".encode("utf-16-le"), block[:64])
        with open(source, "rb") as file:
            self.assertIn(block, file.read())

    def test_user_and_drive_c(self):
        rows = self.cells(r"SELECT StringValue FROM REGISTRY.REGISTRYVALUE('HKCU\Environment\*') "
                          "WHERE Name = 'TEMP'")
        self.assertEqual(len(rows), 1)
        through_drive = self.run_command("--image", os.path.join(self.image, "drive_c"),
                                         "--format", "text", "SELECT COUNT(*) FROM REGISTRY."
                                         r"REGISTRYKEY('HKLM64\Software\*')")
        self.assertEqual(through_drive.returncode, 0)
        self.assertGreater(int(through_drive.stdout), 1)


if __name__ == "__main__":
    main()
