"""Keys in the shell: completion, the interrupt key, the history."""
import os
import signal
import termios
import time

from kestra_command import SLOW_QUERY, await_work, main
from pty_shell import PROMPT
from shell_case import DOWN, INTERRUPT, LEFT, MORE, UP, ShellTest

# Never comes back, and looks at nothing meanwhile.
STUCK_QUERY = "CALLDLL('libc.so.6', 'pause')"


class Completions(ShellTest):
    def test_places(self):
        os.mkdir(os.path.join(self.home, "sub"))
        with open(os.path.join(self.home, "a file"), "w", encoding="ascii"):
            pass
        shell = self.start(columns=150)
        files = "SELECT Name FROM Files(DirPath='/').Directory WHERE "
        cases = [
            ("SEL\t", ["SELECT "]),
            ("SELECT PID FR\t", ["FROM "]),
            ("SELECT PI\t", ["PID"]),
            ("SELECT LEN(Im\t", ["ImageName"]),
            ("SELECT a.\t", ["ImageName", "SELECT a."]),
            ("SELECT * FROM \t", ["Processes", "What runs"]),
            ("SELECT * FROM Processes.Proc\t WHERE", ["Processes.Process WHERE"]),
            (f"SELECT * FROM FILES.FILE('{self.home}/a\t", ["file'"]),
            (f"SELECT * FROM Files(DirPath='{self.home}/su\t", [f"{self.home}/sub/"]),
            (f".read {self.home}/a\t", ['file"']),
            (f".cache {self.home}/su\t", [f"{self.home}/sub/"]),
            (".explain SELECT * FROM Proc\t", ["Processes."]),
            (".sort of\t", ["off "]),
            (".dump Proc\tra\t\t", ["Processes ", "raw", "rawlines"]),
            (".quit \t", [".quit "]),
            ("SELECT * FROM Proc\t", ["Processes."]),
            ("SELECT * FROM Processes.\t", ["Processes.Process "]),
            ("SELECT PID FROM Processes.Process WHERE Ima\t", ["ImageName"]),
            ("SELECT x.PID FROM Processes.Process x WHERE x.\t", ["CommandLine", "ThreadID", "WHERE x."]),
            ("SELECT Name FROM Files(Lev\t", ["Levels="]),
            (files + "Attributes = \t", ["'Compressed'", "'Hidden'", "'ReadOnly'", "'System'"]),
            (files + "Attributes = 'Hi\t", ["'Hidden'"]),
            (".desc\t", [".describe "]),
            (".describe Fil\t", ["Files "]),
            (".describe Files.D\t", ["Files.Directory "]),
            (".format js\t\t", ["json", "jsonl"]),
            (".help lim\t", ["limit "]),
            ("SELECT COUNT(*)\rFROM Processes.Process WHERE Parent\t", ["ParentProcessID"]),
        ]
        for keys, shown in cases:
            with self.subTest(keys):
                shell.type(keys)
                for text in shown:
                    shell.expect(text, 5)
                shell.type(INTERRUPT)
                shell.expect("\n" + PROMPT)
        self.leave(shell)

    def test_in_the_middle_of_a_line(self):
        """In another case, behind characters of several bytes, and before the rest of the query."""
        shell = self.start()
        rest = " FROM FILES.FILE('/etc/passwd')"
        shell.type("SELECT 'ü世' + filen" + rest + LEFT * len(rest) + "\t\r")
        self.assertRegex(shell.expect("\n" + PROMPT), r"ü世passwd$")
        self.leave(shell)

    def test_another_size(self):
        shell = self.start(columns=150)
        shell.type("6 * ")
        shell.expect("6 * ")
        shell.resize(30)
        shell.expect("6 * ")  # it is shown anew
        shell.type("7\r")
        shell.expect("\n42\n")
        self.leave(shell)


class Interrupts(ShellTest):
    @staticmethod
    def begin(shell, running, words):
        """A query that goes on for minutes, or words that stand at the prompt."""
        shell.type(SLOW_QUERY + "\r" if running else words)
        if running:
            await_work(shell.pid)
        else:
            shell.expect(words)

    def test_a_long_query(self):
        shell = self.start()
        for _ in range(3):
            shell.type(SLOW_QUERY + "\r")
            await_work(shell.pid)
            pressed = time.monotonic()
            shell.type(INTERRUPT)
            shell.expect("\n" + PROMPT)
            self.assertLess(time.monotonic() - pressed, 1)
            self.assertRegex(shell.ask("6 * 7"), r"\n42$")
        self.leave(shell)

    def test_what_is_typed_meanwhile(self):
        shell = self.start()
        shell.type(SLOW_QUERY + "\r")
        await_work(shell.pid)
        shell.type("20 + 2" + INTERRUPT)
        shell.expect("\n" + PROMPT)
        shell.expect("20 + 2")
        shell.type("2\r")
        shell.expect("\n42\n")
        self.leave(shell)

    def test_a_stuck_query_is_left_behind(self):
        shell = self.start("--timeout", "60000")
        for _ in range(2):
            shell.type(STUCK_QUERY + "\r")
            time.sleep(0.3)
            pressed = time.monotonic()
            shell.type(INTERRUPT)
            shown = shell.expect("\n" + PROMPT)
            self.assertLess(time.monotonic() - pressed, 1.1)
            self.assertIn("left behind", shown)
            self.assertRegex(shell.ask("6 * 7"), r"\n42$")
            self.assertIn("60000", shell.ask(".timeout"))
        self.leave(shell)

    def test_at_the_prompt(self):
        shell = self.start()
        shell.type("SELECT 'über' never finished")
        shell.expect("never finished")
        shell.type(INTERRUPT)
        shell.expect("\n" + PROMPT)
        shell.type(UP)
        shell.expect("SELECT 'über' never finished")
        shell.type(INTERRUPT)
        shell.expect("\n" + PROMPT)
        # All lines of a query come back, as one entry.
        shell.ask("SELECT COUNT(*)", prompt=MORE)
        shell.type("FROM FILES.FILE")
        shell.expect("FROM FILES.FILE")
        shell.type(INTERRUPT)
        shell.expect("\n" + PROMPT)
        shell.type(UP)
        shell.expect("COUNT(*)")
        shell.expect("FROM FILES.FILE")
        shell.type("('/etc/passwd')\r")
        self.assertRegex(shell.expect("\n" + PROMPT), r"\n\d+$")
        self.leave(shell)
        self.assertEqual(self.history()[-1], "SELECT COUNT(*)\\nFROM FILES.FILE('/etc/passwd')")

    def test_a_signal_from_elsewhere(self):
        for number in (signal.SIGTERM, signal.SIGHUP, signal.SIGQUIT):
            for running in (False, True):
                with self.subTest(number=number, running=running):
                    shell = self.start()
                    self.begin(shell, running, "half a line")
                    os.kill(shell.pid, number)
                    self.assertEqual(shell.wait(), -number)
                    self.assertEqual(shell.mode()[3] & (termios.ICANON | termios.ECHO),
                                     termios.ICANON | termios.ECHO)
        shell = self.start()
        shell.type("half")
        shell.expect("half")
        os.kill(shell.pid, signal.SIGINT)
        shell.expect("\n" + PROMPT)
        self.assertRegex(shell.ask("6 * 7"), r"\n42$")
        self.leave(shell)

    def test_stopping_and_going_on(self):
        for running in (False, True):
            with self.subTest(running=running):
                shell = self.start()
                self.begin(shell, running, "6 *")
                raw = shell.mode()[3]
                shell.type("\x1a")
                end = time.monotonic() + 10
                while os.waitid(os.P_PID, shell.pid,
                                os.WSTOPPED | os.WNOHANG | os.WNOWAIT) is None:
                    self.assertLess(time.monotonic(), end, "it does not stop")
                    time.sleep(0.02)
                self.assertEqual(shell.mode()[3] & termios.ICANON, termios.ICANON)
                os.kill(shell.pid, signal.SIGCONT)
                while shell.mode()[3] != raw:
                    self.assertLess(time.monotonic(), end, "it does not go on")
                    time.sleep(0.02)
                if running:
                    shell.type(INTERRUPT)
                    shell.expect("\n" + PROMPT)
                    shell.type("6 *")
                shell.type(" 7\r")
                shell.expect("\n42\n")
                self.leave(shell)


class History(ShellTest):
    def test_over_two_runs(self):
        shell = self.start()
        shell.ask("6 * 7")
        shell.ask("6 * 7")
        shell.ask("'back\\slash'")
        shell.ask(".limit off")
        self.leave(shell)
        self.assertEqual(self.history(), ["6 * 7", "'back\\\\slash'", ".limit off"])
        directory = os.path.join(self.home, "state/kestra")
        self.assertEqual(os.stat(directory).st_mode & 0o777, 0o700)
        self.assertEqual(os.stat(os.path.join(directory, "history")).st_mode & 0o777, 0o600)
        shell = self.start()
        shell.type(UP + UP + UP + "\r")
        shell.expect("\n42\n")
        shell.type(UP + UP + UP + DOWN + "\r")
        self.leave(shell)

    def test_two_shells_at_once(self):
        first, second = self.start(), self.start()
        for number in range(5):
            first.ask(f"{number} + 100")
            second.ask(f"{number} + 200")
        self.leave(first)
        self.leave(second)
        self.assertEqual(sorted(self.history()),
                         sorted(f"{n} + {m}" for n in range(5) for m in (100, 200)))

    def test_at_most_a_thousand(self):
        os.makedirs(os.path.join(self.home, "state/kestra"))
        path = os.path.join(self.home, "state/kestra/history")
        with open(path, "w", encoding="utf-8") as file:
            file.writelines(f"{number} + 0\n" for number in range(1500))
        shell = self.start()
        self.leave(shell)
        self.assertEqual(self.history(), [f"{number} + 0" for number in range(500, 1500)])

    def test_what_cannot_be_kept(self):
        fifo = os.path.join(self.home, "fifo")
        os.mkfifo(fifo)
        for path in ("/proc/none/history", self.home, fifo):
            with self.subTest(path):
                shell = self.start(env={"KESTRA_HISTORY": path})
                shown = self.greeting + shell.ask("6 * 7") + shell.ask("1 + 1")
                self.assertEqual(shown.count("history is not kept"), 1, shown)
                self.leave(shell)
        shell = self.start(env={"KESTRA_HISTORY": ""})
        self.assertNotIn("history", self.greeting + shell.ask("6 * 7"))
        self.leave(shell)
        self.assertFalse(os.path.exists(os.path.join(self.home, "state")))


main()
