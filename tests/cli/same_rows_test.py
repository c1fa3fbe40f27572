"""The same queries in KESTRA.DLL and in the Windows command, which run in a prefix of Wine, and by
`kestra --image` over that prefix: `same_rows_test.py KESTRA.DLL WINDOWS-COMMAND LINUX-COMMAND`.
"""
import codecs
import difflib
import os
import re
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, os.environ["KESTRA_TEST_SUPPORT"])

from prefix_content import fill  # noqa: E402
from same_rows_queries import QUERIES  # noqa: E402
from wine_prefix import WinePrefix  # noqa: E402

DLL, WINDOWS, LINUX = sys.argv.pop(1), sys.argv.pop(1), sys.argv.pop(1)
TABLE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "front", "com", "scripts",
                     "table.vbs")
TIMEOUT = 120  # seconds, for one process
MARK = "<<query {}>>"


def outcomes(command, queries, environment):
    """What each query gives: the lines of its result, or one line for an Error.

    A start under Wine costs more than many queries, so one process runs all up to the first Error.
    """
    found = []
    while len(found) < len(queries):
        first = len(found)
        text = "".join(f"'{MARK.format(i)}';\n{queries[i]};\n" for i in range(first, len(queries)))
        result = subprocess.run([*command, "--format", "text", "-f", "-"], env=environment,
                                input=text.encode(), timeout=TIMEOUT, check=False,
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        out = result.stdout.decode("utf-8", "surrogateescape").replace("\r\n", "\n")
        pieces = re.split(r"^" + MARK.format(r"\d+") + "\n", out, flags=re.M)[1:]
        error = result.stderr.decode("utf-8", "replace").replace("\r", "")
        if result.returncode not in (0, 1) or not pieces or out.count(MARK.format(first)) != 1:
            raise AssertionError(f"{command} ended with {result.returncode}: {error}")
        found += [piece.split("\n")[:-1] for piece in pieces]
        if result.returncode == 1:
            found[-1] = ["Error: " + error.split("\n", maxsplit=1)[0]]
        elif len(found) < len(queries):
            raise AssertionError(f"{command} ended without an Error before its last query: {error}")
    return found


def windows_path(path):
    return "Z:" + os.path.abspath(path).replace("/", "\\")


def outcomes_of_dll(prefix, queries):
    """The same through KESTRA.DLL, which must be registered, and a script."""
    mark = "<<query>>\r\n"
    with tempfile.TemporaryDirectory() as directory:
        asked, found = (os.path.join(directory, name) for name in ("queries.txt", "rows.txt"))
        with open(asked, "wb") as file:
            file.write(codecs.BOM_UTF16_LE + mark.join(queries).encode("utf-16-le"))
        prefix.run("cscript", "//nologo", *map(windows_path, (TABLE, asked, found)))
        with open(found, "rb") as file:
            text = file.read().decode("utf-16", "surrogatepass")
    return [piece.split("\r\n")[:-1] for piece in text.split(mark)[1:]]


def in_utf16(line):
    """A line of the command's as a BSTR holds it: half a surrogate pair as such, and what is no UTF-8
    as the replacement character."""
    raw = line.encode("utf-8", "surrogateescape")
    try:
        return raw.decode("utf-8", "surrogatepass")
    except UnicodeDecodeError:
        return raw.decode("utf-8", "replace")


class SameRows(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        for command in (DLL, WINDOWS, LINUX):
            if not os.path.exists(command):
                raise AssertionError(f"{command} is not there: both the preset win64 and the "
                                     "preset linux have to be built for this test")
        # Names of files are UTF-8 for Wine only in such a locale.
        os.environ["LC_ALL"] = "C.UTF-8"
        cls.prefix = WinePrefix(os.environ["KESTRA_WINE_PREFIX"])
        fill(cls.prefix)
        queries = [row.query for row in QUERIES]
        # Registered for as long as anybody is asked, so that all see the same classes.
        cls.prefix.run("regsvr32", "/s", windows_path(DLL))
        cls.dll = outcomes_of_dll(cls.prefix, queries)
        cls.live = outcomes(["wine", WINDOWS], queries, cls.prefix.environment())
        # The registry's files are written when the last program has gone.
        cls.prefix.wait()
        cls.image = outcomes([LINUX, "--image", cls.prefix.path], queries, dict(os.environ))

    @classmethod
    def tearDownClass(cls):
        cls.prefix.run("regsvr32", "/s", "/u", windows_path(DLL))
        cls.prefix.wait()

    def test_the_library_gives_what_the_command_gives(self):
        self.assertEqual(len(self.dll), len(self.live))
        for row, dll, live in zip(QUERIES, self.dll, self.live):
            with self.subTest(query=row.query):
                if "(item)" in dll:
                    self.assertEqual(len(dll), len(live))
                else:
                    self.assertEqual(dll, list(map(in_utf16, live)))

    def test_rows(self):
        for row, live, image in zip(QUERIES, self.live, self.image):
            with self.subTest(query=row.query):
                fault = row.fault(live, image)
                if fault:
                    self.fail("\n".join(difflib.unified_diff(*fault, "in Wine, or as expected",
                                                             "by --image, or as it is", n=0,
                                                             lineterm="")))


if __name__ == "__main__":
    unittest.main(verbosity=2)
