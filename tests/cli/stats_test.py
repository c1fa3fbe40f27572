"""What the command tells of what a query read: --stats, --explain and the line of progress."""
import fcntl
import os
import pty
import re
import select
import signal
import struct
import subprocess
import tempfile
import termios
import time

from kestra_command import COMMAND, SLOW_QUERY, CommandTest, await_work, main

NOBODY = 65534


def become_nobody():
    if os.geteuid() == 0:
        os.setgroups([])
        os.setgid(NOBODY)
        os.setuid(NOBODY)


class Terminal:
    """The command with a terminal for standard error, and a pipe for the rest."""

    def __init__(self, *arguments, columns=60, preexec=None, command=COMMAND):
        self.master, slave = pty.openpty()
        fcntl.ioctl(self.master, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))

        def prepare():
            signal.signal(signal.SIGINT, signal.SIG_DFL)
            if preexec:
                preexec()
        self.process = subprocess.Popen([command, *arguments], stdin=subprocess.DEVNULL,
                                        stdout=subprocess.PIPE, stderr=slave, preexec_fn=prepare)
        os.close(slave)
        self.shown = ""

    def read(self, seconds, until=None):
        end = time.monotonic() + seconds
        while time.monotonic() < end and not (until and until in self.shown):
            if not select.select([self.master], [], [], 0.05)[0]:
                if self.process.poll() is not None:
                    break
                continue
            try:
                data = os.read(self.master, 65536)
            except OSError:
                break
            self.shown += data.decode("utf-8", "replace")
        return self.shown

    def screen(self):
        """What is left to see of what was shown, by line."""
        lines = [[]]
        column = 0
        for character in self.shown:
            if character == "\r":
                column = 0
            elif character == "\b":
                column -= 1
            elif character == "\n":
                lines.append([])
                column = 0
            else:
                lines[-1][column:column + 1] = character
                column += 1
        return ["".join(line).rstrip() for line in lines]

    def close(self):
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait()
        self.process.stdout.close()
        os.close(self.master)


class Stats(CommandTest):
    def setUp(self):
        self.directory = tempfile.TemporaryDirectory()
        self.addCleanup(self.directory.cleanup)
        os.chmod(self.directory.name, 0o755)

    def path(self, *names, mode=None):
        path = os.path.join(self.directory.name, *names)
        os.makedirs(path, exist_ok=True)
        if mode is not None:
            os.chmod(path, mode)
        return path

    def stats(self, query, *options, status=0, **more):
        result = self.run_command("--stats", *options, "--", query, **more)
        self.assertEqual(result.returncode, status, result)
        return re.sub(r"[0-9]+\.[0-9] ms", "T ms", result.stderr.decode())

    def test_sources_and_totals(self):
        open(os.path.join(self.path(), "a.txt"), "w").close()
        where = self.directory.name
        self.assertEqual(
            self.stats(f"SELECT FileName FROM Files(DirPath='{where}').File WHERE Size > 0"),
            f"kestra: Files(DirPath='{where}'): filled from the machine, 1 rows seen, 0 kept, T ms\n"
            "kestra: 0 rows, parsed in T ms, T ms in all\n")
        self.assertEqual(
            self.stats(f"SELECT FileName FROM FILES.FILE('{where}/*')"),
            f"kestra: FILES.FILE('{where}/*'): read from the machine, 1 rows seen, 1 kept, T ms\n"
            "kestra: 1 row, parsed in T ms, T ms in all\n")
        self.assertEqual(self.stats("1 + 1"), "kestra: one value, parsed in T ms, T ms in all\n")
        # Behind the lines of an Error, and for each of several queries.
        self.assertEqual(self.stats("SELECT Nothing FROM", status=1).split("\n")[-2],
                         "kestra: no result, parsed in T ms, T ms in all")
        self.assertEqual(self.stats("1; 2").count("in all"), 2)

    def test_content_of_before(self):
        query = "SELECT COUNT(*) FROM Processes#600.Process"
        options = ["--cache", self.path("cache")]
        self.assertIn("Processes: filled from the machine, ", self.stats(query, *options))
        self.assertRegex(self.stats(query, *options), "Processes: from the cache, [0-9]+ s old, ")
        self.assertRegex(self.stats(f"{query}; {query}", *options),
                         "(?s)from the cache.*Processes: from memory, [0-9]+ s old, ")

    def test_none_is_not_what_could_not_be_read(self):
        self.path("empty", mode=0o755)
        self.path("shut", mode=0)
        self.path("names\x1b[31m\nx", mode=0)
        where = self.directory.name
        denied = "Access is denied."

        def ask(path, status=0, levels=0):
            return self.stats(f"SELECT COUNT(*) FROM Files(DirPath='{path}', Levels={levels}).File",
                              status=status, preexec_fn=become_nobody)
        self.assertNotIn("could not be read", ask(f"{where}/empty"))
        self.assertNotIn("could not be read", ask(f"{where}/none"))
        refused = ask(f"{where}/shut", status=1)
        self.assertIn(f"kestra: Files(DirPath='{where}/shut'): could not be read, T ms\n", refused)
        self.assertIn(f"kestra: could not be read: {where}/shut: {denied}\n", refused)
        # A directory on the way is no failure, and its name does nothing to the terminal.
        passed = ask(where, levels=1)
        self.assertIn("0 rows seen, 0 kept", passed)
        self.assertIn(f"kestra: could not be read: {where}/shut: {denied}\n", passed)
        self.assertIn(f"{where}/names\ufffd[31m x: {denied}\n", passed)
        for i in range(14):
            self.path(f"more{i}", mode=0)
        many = ask(where, levels=1)
        self.assertEqual(many.count("kestra: could not be read: "), 10)
        self.assertIn("kestra: and 6 more could not be read\n", many)

    def test_processes_of_others(self):
        if os.geteuid() != 0:
            self.skipTest("there is nobody whose processes could be denied")
        child = subprocess.Popen(["sleep", "60"])
        try:
            self.run_command("1")  # by now it is the one that it is to be
            shown = self.stats("SELECT COUNT(*) FROM Processes.Process",
                               preexec_fn=become_nobody)
            self.assertRegex(shown, "kestra: could not be read: [0-9]+ .*: Access is denied.\n")
        finally:
            child.kill()
            child.wait()

    def test_modules_that_show_nothing(self):
        self.check(["SELECT COUNT(*) FROM DMI.BIOS"], out=b"0\n",
                   err=b"kestra: the module DMI is declared and not built yet: it shows nothing\n")
        self.check(["SELECT COUNT(*) FROM Registry(KeyPath='HKLM').RegistryKey"], out=b"0\n",
                   err=b"kestra: the module Registry shows nothing: this machine has none of what "
                       b"it is about\n")

    def test_after_the_time_is_over_and_after_a_cancel(self):
        over = self.stats(SLOW_QUERY, "--timeout", "50", status=1)
        self.assertIn(", cut short\n", over)
        self.assertIn("kestra: no result, parsed in T ms", over)
        process = self.start("--stats", "--", SLOW_QUERY)
        await_work(process.pid)
        process.send_signal(signal.SIGINT)
        out, err = process.communicate(timeout=10)
        self.assertEqual((process.returncode, out), (130, b""))
        self.assertIn(b"kestra: FILES.FILE('/usr/bin/*'): read from the machine, ", err)
        self.assertIn(b"kestra: no result, parsed in ", err)

    def test_a_terminal_hears_that_something_could_not_be_read(self):
        self.path("shut", mode=0)
        query = f"SELECT COUNT(*) FROM Files(DirPath='{self.directory.name}', Levels=1).File"
        quiet = self.run_command("--", query, preexec_fn=become_nobody)
        self.assertEqual(quiet.stderr, b"")
        terminal = Terminal(query, preexec=become_nobody)
        self.addCleanup(terminal.close)
        terminal.read(10)
        self.assertEqual(terminal.screen(),
                         ["kestra: 1 thing could not be read; --stats tells", ""])


class Explain(CommandTest):
    def test_plans_instead_of_results(self):
        self.check(["--explain", "SELECT PID FROM Processes.Process p WHERE p.PID = 1"], err=b"",
                   out=b"SELECT PID: for each row\n"
                       b"  read Processes.Process p\n"
                       b"    content: what is in memory, else filled\n"
                       b"    where, on each row while it is read: p.PID = 1\n")
        with tempfile.TemporaryDirectory() as directory:
            path = os.path.join(directory, "kept")
            open(path, "w").close()
            out = self.check(["--active", "--explain", f"DELETE FILES.FILE('{path}')"]).stdout
            self.assertIn(b"changes the machine, which needs permission\n", out)
            self.assertTrue(os.path.exists(path))
        wrong = self.check(["--explain", "SELECT Nothing FROM Processes.Process"], status=1, out=b"")
        self.assertTrue(wrong.stderr.startswith(b"<ERROR: Syntax error>\n"), wrong)


class Progress(CommandTest):
    # Over a module that takes its time.
    SLOW_COMMAND = os.environ["KESTRA_WITH_TEST_MODULES"]
    QUERY = "SELECT COUNT(*) FROM Slow(Duration=60000).Entry"

    def run_cancelled(self, columns):
        """A query that is interrupted while it shows what it does."""
        terminal = Terminal("--", self.QUERY, columns=columns, command=self.SLOW_COMMAND)
        self.addCleanup(terminal.close)
        begin = time.monotonic()
        terminal.read(20, until="\r")
        self.assertGreater(time.monotonic() - begin, 0.4)
        terminal.read(0.3)
        shown = terminal.shown
        terminal.process.send_signal(signal.SIGINT)
        terminal.read(10)
        self.assertEqual(terminal.process.wait(10), 130)
        return shown, terminal

    def test_a_short_query_shows_nothing(self):
        terminal = Terminal("SELECT COUNT(*) FROM FILES.FILE('/etc/*')")
        self.addCleanup(terminal.close)
        terminal.read(10)
        self.assertEqual(terminal.shown, "")

    def test_a_long_one_is_told_and_erased(self):
        for columns, line in ((60, "Slow ..."), (7, "Slow \u2026")):
            shown, terminal = self.run_cancelled(columns)
            self.assertEqual(set(shown.split("\r")), {"", line})
            # The line has gone; what is there is the Error.
            self.assertEqual(terminal.screen(), ["<ERROR>", "kestra: The operation was canceled by the user.", ""])

    def test_nothing_of_it_in_a_pipe(self):
        process = subprocess.Popen([self.SLOW_COMMAND, "--timeout", "1", self.QUERY.replace(
            "60000", "1200")], stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        _, err = process.communicate(timeout=20)
        self.assertEqual(err, b"<ERROR>\nkestra: the query's time, 1 ms, was over\n")


if __name__ == "__main__":
    main()
