#!/usr/bin/env python3
"""KESTRA.DLL under Wine's own hosts: regsvr32, cscript with VBScript and JScript, and rundll32.

    scripts_test.py WINE KESTRA.DLL

WINE runs a program of Windows in the tests' prefix (tools/wine).
"""
import os
import re
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree

WINE, DLL = sys.argv[1:3]
SCRIPTS = os.path.join(os.path.dirname(os.path.abspath(__file__)), "scripts")
CLSID = "{511A59C1-2C14-4894-BCCD-5ECCFA1D3FF8}"
TYPES = "{7C42EBB5-02F1-40B9-A9E9-4D197F8DCCE8}"
# A name of the test's own: Wine's JScript has no GetObject.
PROGID = "KestraTest.Session"
CLASSES = r"HKLM\Software\Classes"
KEY = r"HKCU\Software\KestraScriptsTest"


def run(*command, status=0):
    result = subprocess.run([WINE, *command], capture_output=True, timeout=120, check=False,
                            stdin=subprocess.DEVNULL)
    text = result.stdout.decode("utf-8", "replace").replace("\r\n", "\n")
    if status is not None and result.returncode != status:
        raise AssertionError(f"{command} ended with {result.returncode}: {text}")
    return text


def windows_path(path):
    return "Z:" + os.path.abspath(path).replace("/", "\\")


def registry():
    """All that classes may be registered in, as lines."""
    text = ""
    for root in (CLASSES, r"HKCU\Software\Classes"):
        with tempfile.TemporaryDirectory() as directory:
            file = os.path.join(directory, "classes.reg")
            run("reg", "export", root, windows_path(file), "/y", status=None)
            # A user that has no classes of his own has no key for them either.
            if root == CLASSES or os.path.exists(file):
                with open(file, "rb") as exported:
                    text += exported.read().decode("utf-16", "replace")
    return text


def vbscript(mode, query):
    return run("cscript", "//nologo", windows_path(os.path.join(SCRIPTS, "walk.vbs")), mode, query)


def jscript(mode, query):
    return run("cscript", "//nologo", windows_path(os.path.join(SCRIPTS, "walk.js")), PROGID, mode,
               query)


class Registered(unittest.TestCase):
    """The library is registered once for all of these, and the registry compared at the end."""

    @classmethod
    def setUpClass(cls):
        run("regsvr32", "/s", "/u", windows_path(DLL), status=None)  # what a killed run has left
        run("reg", "delete", KEY, "/f", status=None)
        run("reg", "delete", rf"{CLASSES}\{PROGID}", "/f", status=None)
        # Wine's script host registers its own types when it runs first.
        run("cscript", "//nologo", windows_path(os.path.join(SCRIPTS, "nothing.vbs")))
        cls.before = registry()
        run("regsvr32", "/s", windows_path(DLL))
        if registry() == cls.before:
            raise AssertionError("registering leaves no trace")
        run("reg", "add", rf"{CLASSES}\{PROGID}\CLSID", "/ve", "/d", CLSID, "/f")

    @classmethod
    def tearDownClass(cls):
        run("reg", "delete", rf"{CLASSES}\{PROGID}", "/f")
        run("reg", "delete", KEY, "/f", status=None)
        run("regsvr32", "/s", "/u", windows_path(DLL))
        after = registry()
        if after != cls.before:
            old, new = set(cls.before.splitlines()), set(after.splitlines())
            raise AssertionError(f"the registry is not as before: {sorted(old ^ new)}")

    def test_what_is_registered(self):
        self.assertNotIn(CLSID.lower(), self.before.lower())
        server = run("reg", "query", rf"{CLASSES}\CLSID\{CLSID}\InprocServer32", "/s")
        self.assertIn(os.path.basename(DLL).lower(), server.lower())
        self.assertRegex(server, r"ThreadingModel\s+REG_SZ\s+Apartment")
        self.assertIn(TYPES, run("reg", "query", rf"{CLASSES}\CLSID\{CLSID}\TypeLib", "/s"))
        self.assertIn("win64", run("reg", "query", rf"{CLASSES}\TypeLib\{TYPES}", "/s"))

    def test_values_and_errors(self):
        for query, text in [
                ("1 + 1", "2"), ("1 = 2", "False"), ("'one', 'two'", "one\ntwo"),
                ("SELECT Nope FROM Processes.Process", "error: <ERROR: Syntax error>"),
                ("DELETE Processes.Process WHERE ImageName = 'services.exe'",
                 "error: <ERROR: Message Id: 11015*")]:
            for host in (vbscript, jscript):
                with self.subTest(query=query, host=host.__name__):
                    got = host("rows", query).rstrip("\n")
                    self.assertRegex(got, "^" + re.escape(text).replace(r"\*", ".*") + "$")

    def test_registry_as_reg_lists_it(self):
        for name, kind, data in [("One", "REG_SZ", "first"), ("Two", "REG_DWORD", "258"),
                                 ("Three", "REG_EXPAND_SZ", "%windir%\\x")]:
            run("reg", "add", KEY, "/v", name, "/t", kind, "/d", data, "/f")
        listed = dict(re.findall(r"^ {4}(\w+) +REG_(?:SZ|EXPAND_SZ) +(.*)$",
                                 run("reg", "query", KEY), re.M))
        self.assertEqual(set(listed), {"One", "Three"})
        query = (rf"SELECT Name, StringValue FROM REGISTRY.REGISTRYVALUE('{KEY}\*') "
                 "WHERE StringValue <> ''")
        for host in (vbscript, jscript):
            rows = dict(line.split("|") for line in host("rows", query).splitlines())
            self.assertEqual({name: rows[name] for name in listed}, listed)

    def test_files_as_dir_lists_them(self):
        listed = {line.strip().lower() for line in
                  run("cmd", "/c", "dir", "/b", r"C:\windows\system32\*.exe").splitlines()}
        self.assertGreater(len(listed), 20)
        query = r"SELECT FileName FROM FILES.FILE('C:\windows\system32\*.exe')"
        for host in (vbscript, jscript):
            rows = {line.lower() for line in host("rows", query).splitlines()}
            self.assertEqual(rows, listed)

    def test_processes_as_wmic_lists_them(self):
        # What runs for the one question alone, or for a test beside this one, is left out.
        def services(names):
            return {(name, pid) for name, pid in names
                    if name in ("services.exe", "winedevice.exe", "plugplay.exe", "svchost.exe")}
        # wmic writes UTF-16 into a pipe. Wine's tasklist lists nothing there.
        listed = run("wmic", "process", "get", "Name,ProcessId").replace("\0", "").replace("\r", "")
        expected = services(re.findall(r"^(\S+) +(\d+) *$", listed, re.M))
        self.assertGreater(len(expected), 2, listed)
        for host in (vbscript, jscript):
            rows = [tuple(row.split("|")) for row in
                    host("rows", "SELECT ImageName, PID FROM Processes.Process").splitlines()]
            self.assertEqual(services(rows), expected)
            self.assertIn("cscript.exe", [name for name, _ in rows])

    def test_items_with_their_properties_and_children(self):
        run("reg", "add", KEY + r"\Below\Deeper", "/v", "Leaf", "/d", "text", "/f")
        query = (rf"SELECT * FROM Registry(KeyPath='{KEY}\Below', Levels=2).RegistryKey "
                 "WHERE Name = 'Below'")
        texts = [host("items", query) for host in (vbscript, jscript)]
        self.assertEqual(texts[0], texts[1])
        self.assertRegex(texts[0], r"(?m)^RegistryKey\n  Name=Below\n  Path=.*\\Below$")
        self.assertRegex(texts[0], r"(?m)^    RegistryValue\n      Name=Leaf\n")
        self.assertNotIn("differ", texts[0])
        for host in (vbscript, jscript):
            dumped = ElementTree.tostring(ElementTree.fromstring(host("dump", query)), "unicode")
            for name in ("RegistryKey", "Below", "Deeper", "RegistryValue", "Leaf"):
                self.assertIn(name, dumped)

    def test_the_example_of_the_readme(self):
        readme = os.path.join(os.path.dirname(os.path.abspath(__file__)), *[".."] * 3, "README.md")
        with open(readme, encoding="utf-8") as text:
            example = re.search(r"```vb\n(.*?)```", text.read(), re.S)[1]
        with tempfile.TemporaryDirectory() as directory:
            script = os.path.join(directory, "example.vbs")
            with open(script, "w", encoding="ascii") as file:
                file.write(example)
            self.assertIn("services.exe", run("cscript", "//nologo", windows_path(script)).split())

    def test_type_text_through_rundll32(self):
        with tempfile.TemporaryDirectory() as directory:
            file = os.path.join(directory, "types.xml")
            run("rundll32", windows_path(DLL) + ",GenerateTypeInfo", windows_path(file), status=None)
            with open(file, encoding="utf-8") as written:
                text = written.read()
            for name in ("Processes", "RegistryKey", "IniSection", "ShowUserAndComLine"):
                self.assertIn(name, text)
            run("rundll32", windows_path(DLL) + ",GenerateTypeInfo",
                windows_path(os.path.join(directory, "missing", "types.xml")), status=None)
            self.assertEqual(os.listdir(directory), ["types.xml"])


unittest.main(argv=sys.argv[:1])
