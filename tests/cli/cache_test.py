"""The result cache between processes, some of which are killed in the middle."""
import os
import random
import signal
import subprocess
import tempfile
import time

from kestra_command import COMMAND, CommandTest, main

# A module that holds the same each time, and is large enough to be caught while it is written.
QUERY = "SELECT COUNT(*) FROM Many(Count=20000)#600.Entry WHERE Id >= 0"
EXPECTED = b"20000\n"


class Cache(CommandTest):
    def setUp(self):
        self.directory = tempfile.TemporaryDirectory()
        self.addCleanup(self.directory.cleanup)
        self.path = self.directory.name

    def ask(self, query=QUERY, **expected):
        expected.setdefault("out", EXPECTED)
        return self.check(["--format", "text", "--cache", self.path, "--", query], **expected)

    def entries(self):
        return sorted(name for name in os.listdir(self.path) if name != "CACHE.CFG")

    def test_a_second_process_reads_the_file(self):
        sleepers = (f"SELECT COUNT(*) FROM Processes{{}}.Process WHERE ImageName = 'sleep' "
                    f"AND ParentProcessID = {os.getpid()}")
        self.ask(sleepers.format("#600"), out=b"0\n")
        children = [subprocess.Popen(["sleep", "60"]) for _ in range(3)]
        try:
            self.ask(sleepers.format("#600"), out=b"0\n")
            self.ask(sleepers.format(""), out=b"3\n")
        finally:
            for child in children:
                child.kill()
                child.wait()
        self.ask("DROP MODULE Processes", out=None)
        self.assertEqual(os.listdir(self.path), [])

    def test_damage_is_filled_anew(self):
        self.ask()
        (name,) = self.entries()
        path = os.path.join(self.path, name)
        with open(path, "rb") as file:
            good = file.read()
        for content in (b"", good[:-1], good[:len(good) // 2], os.urandom(len(good)),
                        good.replace(b"=7\r\n", b"=8\r\n", 1)):
            with open(path, "wb") as file:
                file.write(content)
            self.ask()
            with open(path, "rb") as file:
                self.assertEqual(file.read(), good)
        os.chmod(path, 0)
        self.ask()
        os.remove(path)
        os.symlink("/etc/passwd", path)
        self.ask()
        with open("/etc/passwd", "rb") as file:
            self.assertNotIn(b"kestra ", file.read())
        for index in (b"", b"\xff\xfe", os.urandom(500)):
            with open(os.path.join(self.path, "CACHE.CFG"), "wb") as file:
                file.write(index)
            self.ask()

    def test_files_are_the_users_own(self):
        inner = os.path.join(self.path, "new")
        environment = {**os.environ, "KESTRA_CacheDir": inner}
        result = subprocess.run([COMMAND, "--format", "text", QUERY], env=environment,
                                stdout=subprocess.PIPE, check=True, timeout=60)
        self.assertEqual(result.stdout, EXPECTED)
        for path in (inner, *(os.path.join(inner, name) for name in os.listdir(inner))):
            self.assertEqual(os.stat(path).st_mode & 0o077, 0, path)

    def test_killed_in_the_middle(self):
        start = time.monotonic()
        self.ask()
        whole = time.monotonic() - start
        chance = random.Random(20261123)
        killed = 0
        for turn in range(40):
            if turn % 2 == 0:  # both from nothing and over an entry that is too old
                for name in os.listdir(self.path):
                    os.remove(os.path.join(self.path, name))
            process = subprocess.Popen([COMMAND, "--cache", self.path,
                                        QUERY.replace("#600", "#0")],
                                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            time.sleep(chance.uniform(0, whole))
            killed += process.poll() is None
            process.send_signal(signal.SIGKILL)
            process.wait()
            self.ask()
            self.assertEqual(len(self.entries()), 1, self.entries())
        self.assertGreater(killed, 10)

    def test_two_at_once(self):
        for turn in range(15):
            for name in os.listdir(self.path):
                os.remove(os.path.join(self.path, name))
            both = [subprocess.Popen([COMMAND, "--format", "text", "--cache", self.path, QUERY],
                                     stdout=subprocess.PIPE) for _ in range(2)]
            for process in both:
                self.assertEqual(process.communicate(timeout=60)[0], EXPECTED, turn)
            self.assertEqual(self.entries(), ["Many_0.cfg"], turn)
            with open(os.path.join(self.path, "CACHE.CFG"), encoding="utf-8") as index:
                self.assertEqual(index.read().count("[Many_"), 1)


main()
