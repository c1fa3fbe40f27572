#!/usr/bin/env python3
"""The hosts of examples/ over the machine itself: those in C as they are built, and the Python module.

    examples_test.py LIBRARY DIRECTORY_OF_THE_PROGRAMS PYTHON_MODULES
"""
import asyncio
import copy
import datetime
import os
import pathlib
import pickle
import re
import resource
import signal
import subprocess
import sys
import tempfile
import threading
import time
import unittest

LIBRARY, PROGRAMS, MODULES = sys.argv[1:4]
del sys.argv[1:]
os.environ["KESTRA_LIBRARY"] = LIBRARY
sys.path.insert(0, MODULES)
sys.dont_write_bytecode = True
import kestra  # noqa: E402

SLOW = ("SELECT COUNT(*) FROM FILES.FILE('/usr/bin/*') a "
        "JOIN FILES.FILE('/usr/bin/*') b ON LEN(a.FileName) + LEN(b.FileName) > 0 "
        "JOIN FILES.FILE('/usr/bin/*') c ON LEN(a.FileName) + LEN(c.FileName) = 0")


def run(name, *arguments):
    return subprocess.run([os.path.join(PROGRAMS, name), *arguments], capture_output=True,
                          text=True, timeout=60)


class InC(unittest.TestCase):
    def test_synchronous(self):
        result = run("example_synchronous",
                     "SELECT FileName, Size FROM FILES.FILE('/etc/passwd')")
        size = os.stat("/etc/passwd").st_size
        self.assertEqual(result.stdout, f"FileName\tSize\npasswd\t{size}\n", result)
        wrong = run("example_synchronous", "SELECT filename FROM FILES.FILE('/etc/passwd')")
        self.assertEqual((wrong.returncode, wrong.stdout), (1, ""))
        self.assertIn("line 1, column 8: ", wrong.stderr)
        self.assertIn("FileName", wrong.stderr)

    def test_asynchronous(self):
        result = run("example_asynchronous")
        top = "/usr/share/doc"
        files = 0
        for directory, below, names in os.walk(top):
            files += len(names)
            if directory[len(top):].count("/") == 2:
                below.clear()
        self.assertEqual(result.stdout, f"{files} files\n", result)

    def test_cancel(self):
        result = run("example_cancel")
        self.assertEqual(result.returncode, 0, result)
        times = [float(t) for t in re.findall(r"ended after ([\d.]+) s", result.stdout)]
        self.assertEqual(len(times), 3, result)
        for seconds in times:
            self.assertTrue(0.4 <= seconds < 5, result.stdout)

    def test_walk(self):
        with tempfile.TemporaryDirectory() as root:
            os.makedirs(root + "/a/b")
            pathlib.Path(root, "a/b/deep").write_text("12345")
            lines = run("example_walk", root).stdout.split("\n")
            where = lines.index(f"        Path = {root}/a/b/deep")  # three levels below the top
            self.assertIn("        Size = 5 ", lines[where:])


class InPython(unittest.TestCase):
    def test_types(self):
        with kestra.Session() as session:
            self.assertEqual([session.value(text) for text in
                              ("1 + 1", "1 = 1", "'a', 'b'", "ISNULL(LEN('abc'), 0)")],
                             [2, True, ["a", "b"], 3])
            now = session.value("GETDATE()")
            self.assertLess(abs(now.timestamp() - time.time()), 10)
            row, = session.query("SELECT FileName, Size, LastWriteTime, Attributes, FileVersion "
                                 "FROM FILES.FILE('/etc/passwd')")
            stat = os.stat("/etc/passwd")
            self.assertEqual((row.FileName, row["Size"], row[3], row.FileVersion),
                             ("passwd", stat.st_size, frozenset(), None))
            self.assertEqual(row.LastWriteTime, datetime.datetime.fromtimestamp(
                int(stat.st_mtime), datetime.timezone.utc))
            self.assertEqual(list(row.keys())[:2], ["FileName", "Size"])
            with self.assertRaises(AttributeError):
                row.filename
            self.assertEqual(copy.deepcopy(row), row)
            self.assertEqual(session.columns(), list(row.keys()))
            twice, = session.query("SELECT Size, Size FROM FILES.FILE('/etc/passwd')")
            self.assertEqual(dict(twice), {"Size": stat.st_size, "Size_2": stat.st_size})

    def test_names_and_items(self):
        names = {"plain", "two\nlines", "a\"b'c", "\U0001f600", os.fsdecode(b"\xff")}
        with tempfile.TemporaryDirectory() as root, kestra.Session() as session:
            for name in names:
                pathlib.Path(root, name).touch()
            os.chmod(os.path.join(root, "plain"), 0o444)
            top, = session.query(f"SELECT * FROM Files(DirPath='{root}').Directory")
            files = list(top.children)
        self.assertEqual({f.FileName for f in files}, names)  # they outlive their session
        with self.assertRaises(AttributeError):
            files[0].FileName = "other"
        self.assertEqual([f.Attributes for f in files if f.FileName == "plain"],
                         [frozenset({"ReadOnly"})])
        self.assertIn("<I", files[0].xml())
        self.assertEqual(list(files[0])[:2], ["Path", "ShortPathName"])
        self.assertNotIn("Number", dict(files[0]))

    def test_sources(self):
        with kestra.Session() as session:
            rows = session.query("SELECT FileName FROM FILES.FILE('/etc/*') WHERE Size > 0")
            source, = session.sources()
        self.assertEqual((source.name, source.fill, source.problems), ("FILES.FILE", "machine", ()))
        self.assertEqual(source.rows_kept, len(list(rows)))  # which outlive their session

    def test_errors(self):
        with kestra.Session() as session:
            with self.assertRaises(kestra.QuerySyntaxError) as wrong:
                session.value("SELECT pid\nFROM Processes.Process")
            self.assertEqual((wrong.exception.line, wrong.exception.column), (1, 8))
            self.assertIn("PID", wrong.exception.suggestions)
            self.assertEqual(session.value("1"), 1)  # an error ends nothing
            with self.assertRaises(kestra.QueryError):
                session.value("DELETE Processes.Process WHERE PID = 1")  # it is not allowed
            with self.assertRaisesRegex(kestra.QueryError, "^<ERROR>$") as wrong:
                session.value("1 / 0", timeout=60)
            self.assertNotIsInstance(wrong.exception, kestra.Ended)
            with self.assertRaises(TypeError):
                session.value(b"1")
        with self.assertRaises(kestra.Error):
            session.value("1")
        with self.assertRaisesRegex(kestra.Error, "."):
            kestra.Session(image="/proc")
        for option in "image", "image_user", "cache", "plugins", "log":
            with self.assertRaises(ValueError):
                kestra.Session(**{option: "/tmp\0"})

    def test_two_owners_are_refused(self):
        with kestra.Session() as session:
            item, = session.query("SELECT * FROM FILES.FILE('/etc/passwd')")
            for owned in session, item:
                for again in copy.deepcopy, pickle.dumps:
                    self.assertRaises(TypeError, again, owned)
            self.assertRaises(TypeError, copy.copy, session)
            refused = []

            def meddle():
                for call in lambda: session.value("1"), session.close:
                    refused.append(self.assertRaisesRegex(kestra.Error, "thread", call))
                session.cancel()

            timer = threading.Timer(0.3, meddle)
            timer.start()
            with self.assertRaises(kestra.Ended):
                session.value(SLOW)
            timer.join()
            self.assertEqual(len(refused), 2)

    def test_host_with_many_descriptors(self):
        limits = resource.getrlimit(resource.RLIMIT_NOFILE)
        resource.setrlimit(resource.RLIMIT_NOFILE, (min(2000, limits[1]), limits[1]))
        held = [os.open("/dev/null", os.O_RDONLY) for _ in range(1024)]
        try:
            with kestra.Session() as session:
                self.assertEqual(session.value("1 + 1"), 2)
            resource.setrlimit(resource.RLIMIT_NOFILE, (len(held), limits[1]))
            with self.assertRaisesRegex(kestra.Error, "descriptor"):
                kestra.Session()
        finally:
            for descriptor in held:
                os.close(descriptor)
            resource.setrlimit(resource.RLIMIT_NOFILE, limits)

    def test_handler_of_a_signal_may_ask(self):
        answers = []
        with kestra.Session() as session, self.assertRaises(kestra.Ended):
            former = signal.signal(signal.SIGUSR1,
                                   lambda *_: answers.append(session.value("1 + 1")))
            self.addCleanup(signal.signal, signal.SIGUSR1, former)
            threading.Timer(0.3, os.kill, (os.getpid(), signal.SIGUSR1)).start()
            session.value(SLOW)
        self.assertEqual(answers, [2])

    def test_ends(self):
        with kestra.Session() as session:
            with self.assertRaises(kestra.Ended):
                session.value(SLOW, timeout=0.2)
            timer = threading.Timer(0.3, session.cancel)
            timer.start()
            with self.assertRaises(kestra.Ended):
                session.value(SLOW)
            timer.join()

    def test_interrupt_key(self):
        start = time.monotonic()
        timer = threading.Timer(0.3, os.kill, (os.getpid(), signal.SIGINT))
        former = signal.signal(signal.SIGINT, signal.default_int_handler)
        timer.start()
        with kestra.Session() as session, self.assertRaises(KeyboardInterrupt):
            session.value(SLOW)
        signal.signal(signal.SIGINT, former)
        self.assertLess(time.monotonic() - start, 3)

    def test_event_loop_gets_the_signal_that_ended_a_query(self):
        async def ask():
            came = asyncio.Event()
            asyncio.get_running_loop().add_signal_handler(signal.SIGUSR1, came.set)
            with kestra.Session() as session, self.assertRaises(kestra.Ended):
                threading.Timer(0.3, os.kill, (os.getpid(), signal.SIGUSR1)).start()
                session.value(SLOW)
            await asyncio.wait_for(came.wait(), 5)

        asyncio.run(ask())


unittest.main(verbosity=2)
