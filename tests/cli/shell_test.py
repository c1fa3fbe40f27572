"""The shell through a pseudo-terminal, as a user at the keyboard."""
import os
import signal
import subprocess
import tempfile
import termios
import time

from kestra_command import COMMAND, SLOW_QUERY, main
from pty_shell import PROMPT, PtyShell
import unittest

# Never comes back, and looks at nothing meanwhile.
STUCK_QUERY = "CALLDLL('libc.so.6', 'pause')"
UP = "\x1b[A"
DOWN = "\x1b[B"
LEFT = "\x1b[D"
INTERRUPT = "\x03"
END = "\x04"
MORE = "   ...> "


class ShellTest(unittest.TestCase):
    def setUp(self):
        home = tempfile.TemporaryDirectory()
        self.addCleanup(home.cleanup)
        self.home = home.name

    def start(self, *arguments, prompt=PROMPT, **more):
        shell = PtyShell(COMMAND, self.home, *arguments, **more)
        self.addCleanup(shell.close)
        self.greeting = shell.expect(prompt)
        return shell

    def leave(self, shell):
        shell.type(END)
        self.assertEqual(shell.wait(), 0)

    def history(self):
        with open(os.path.join(self.home, "state/kestra/history"), encoding="utf-8") as file:
            return file.read().splitlines()


class Queries(ShellTest):
    def test_greeting_and_leaving(self):
        for leaving in (".quit\r", ".exit\r", ".q\r", END):
            with self.subTest(leaving):
                shell = self.start()
                self.assertRegex(self.greeting, r"kestra \d.*\n.help tells .*\.quit leaves\n")
                before = shell.mode()
                shell.type(leaving)
                self.assertEqual(shell.wait(), 0)
                self.assertNotEqual(before[3] & termios.ICANON, termios.ICANON)
                self.assertEqual(shell.mode()[3] & termios.ICANON, termios.ICANON)
                self.assertEqual(shell.mode()[3] & termios.ECHO, termios.ECHO)

    def test_where_a_query_ends(self):
        shell = self.start()
        self.assertIn("\n42\n", shell.ask("6 * 7") + "\n")
        self.assertIn("\n3\n", shell.ask("1 + 2;") + "\n")
        self.assertIn("'a;b'".strip("'"), shell.ask("'a;b'"))
        for last in (";", ""):
            shell.ask("SELECT COUNT(*)", prompt=MORE)
            shell.ask("FROM FILES.FILE('/etc/passwd') /* ;", prompt="    /*> ")
            shell.ask("*/ WHERE FileName = 'a", prompt="     '> ")
            shell.ask("b' OR FileName = 'passwd'", prompt=MORE)
            self.assertRegex(shell.ask(last), r"\n1$")
        self.assertRegex(shell.ask("1 + 1; 2 + 2;"), r"\n2\n4$")
        # An Error ends nothing, and a text that cannot become a query is not waited for.
        self.assertIn("Syntax error", shell.ask("SELCT PID FROM Processes.Process"))
        self.assertRegex(shell.ask("5 + 5"), r"\n10$")
        self.leave(shell)

    def test_what_was_pasted_together(self):
        shell = self.start()
        shell.type("1\r+ 2\r3 + 4\r")
        shell.expect("\n3\n")
        shell.expect("7\n")
        self.leave(shell)

    def test_the_end_of_input_loses_no_query(self):
        shell = self.start()
        shell.type("6 * 7\r" + END)
        self.assertEqual(shell.wait(), 0)
        self.assertIn("\n42\n", shell.text.replace("\r", ""))

    def test_a_broken_character_takes_no_other_with_it(self):
        shell = self.start()
        os.write(shell.fd, b"'a\xff\xc3'\r")
        self.assertRegex(shell.expect("\n" + PROMPT), r"\na$")
        self.leave(shell)

    def test_active(self):
        shell = self.start(columns=250)
        directory = os.path.join(self.home, "made")
        statement = f"INSERT Files(DirPath='{self.home}').Directory (Path) VALUES ('{directory}')"
        self.assertIn("ERROR", shell.ask(statement))
        self.assertFalse(os.path.exists(directory))
        shell.ask(".active on", prompt="kestra!> ")
        self.assertIn(".active on", shell.ask(".active", prompt="kestra!> "))
        self.assertNotIn("ERROR", shell.ask(statement, prompt="kestra!> "))
        self.assertTrue(os.path.isdir(directory))
        shell.ask(".active off")
        self.assertIn("ERROR", shell.ask(statement.replace("made", "other")))
        self.leave(shell)

    def test_order_and_limit(self):
        for name, size in (("b", 9), ("A", 10), ("c", 100)):
            with open(os.path.join(self.home, name), "w", encoding="ascii") as file:
                file.write("x" * size * 1024)
        shell = self.start()
        shell.ask(".format text")
        files = f"FROM FILES.FILE('{self.home}/*')"
        cases = [(".sort filename", ["A", "b", "c"]), (".sort FILENAME desc", ["c", "b", "A"]),
                 (".sort Size", ["b", "A", "c"]), (".sort Size:desc", ["c", "A", "b"])]
        for command, expected in cases:
            shell.ask(command)
            shown = shell.ask(f"SELECT FileName, Size {files}").splitlines()[1:]
            self.assertEqual([line.split("\t")[0] for line in shown], expected, command)
        shell.ask(".limit 2")
        shown = shell.ask(f"SELECT FileName, Size {files}").splitlines()
        self.assertEqual(shown[-1], "kestra: 2 of 3 rows shown")
        self.assertEqual(len(shown), 4, shown)
        # The rows are worth more than their order.
        shell.ask(".limit off")
        shown = shell.ask(f"SELECT FileName {files}").splitlines()
        self.assertIn('no column "Size"', shown[1])
        self.assertEqual(sorted(shown[2:]), ["A", "b", "c"], shown)
        shell.ask(".sort off")
        self.assertEqual(shell.ask(".sort").splitlines()[1:], [".sort off"])
        self.leave(shell)

    def test_format_output_and_file(self):
        shell = self.start()
        script = os.path.join(self.home, "a script")
        result = os.path.join(self.home, "result")
        with open(script, "w", encoding="utf-8") as file:
            file.write(f".format jsonl\n.output '{result}'\nSELECT PID\nFROM Processes.Process\n"
                       "WHERE PID = 1;\n.output off\n/* done */ 'in the end'\n")
        self.assertIn('"in the end"', shell.ask(f".read '{script}'"))
        with open(result, encoding="utf-8") as file:
            self.assertEqual(file.read(), '{"PID":1}\n')
        with open(script, "a", encoding="utf-8") as file:
            file.write(f";\n.read '{script}'\n")
        self.assertIn("8 deep", shell.ask(f".read '{script}'"))
        self.assertIn("directory", shell.ask(f".read '{self.home}'").lower())
        self.leave(shell)

    def test_narrow_and_wide(self):
        shell = self.start()
        query = "SELECT FileName, '" + "x" * 100 + "' FROM FILES.FILE('/etc/passwd')"
        for columns, wide, expected in ((50, "off", 50), (30, "off", 30), (30, "on", 110)):
            shell.resize(columns)
            shell.ask(f".wide {wide}")
            lines = [line for line in shell.ask(query).splitlines() if line.startswith("passwd ")]
            self.assertEqual(len(lines), 1)
            self.assertEqual(len(lines[0]), expected)
        self.leave(shell)


class Classes(ShellTest):
    def test_what_is_told(self):
        shell = self.start()
        cases = [
            (".modules proc*", ["Processes "], ["Files"]),
            (".modules", ["(not built yet)", "Registry", "(not on this machine)"], []),
            (".modules x?z", ["kestra: no module"], []),
            (".describe files", ["Levels = 0", "FileName = '*'", "Files.Directory", "Files.FileLine"], []),
            (".describe FILES.directory", ["* Path", "Attributes", "'ReadOnly', 'Hidden'", "INSERT"], []),
            (".describe Fles", ["did you mean Files"], []),
            (".describe files.direktory", ["did you mean Directory"], []),
            (".describe", ["takes the name of a module"], []),
            (".examples processes", ["SELECT PID, ImageName FROM"], []),
            (".exampels Files", ["did you mean .examples"], []),
            (".ex", [".examples", ".explain", ".exit"], []),
            (".help sort", [".sort [COLUMN"], [".limit"]),
            (".help", [".describe", ".plugins", 'ends with ";"'], []),
            (".dump Processes", ['<I n="Processes">', '<P n="PID">1</P>'], []),
            (".dump Processes rawlines", ["Processes"], ["<I n="]),
            (".dump Prozesses", ["<ERROR"], []),
            (".explain SELECT PID FROM Processes.Process WHERE PID = 1", ["read Processes.Process"], []),
            (".explain SELECT", ["Syntax error"], []),
            (".limit many", ["takes a number"], []),
            (".timeout 0", [], ["kestra:"]),
            (".cache /no/such", ["takes a directory"], []),
            (".format pdf", ["table, vertical"], []),
        ]
        for line, wanted, unwanted in cases:
            shown = shell.ask(line)
            for piece in wanted:
                self.assertIn(piece, shown, line)
            for piece in unwanted:
                self.assertNotIn(piece, shown.split("\n", 1)[-1], line)
        self.leave(shell)

    def test_every_example_is_a_query(self):
        shell = self.start()
        examples = shell.ask(".examples Files").splitlines()[1:]
        self.assertGreater(len(examples), 1)
        for query in examples:
            result = subprocess.run([COMMAND, "--check", query], timeout=20)
            self.assertEqual(result.returncode, 0, query)
        self.leave(shell)

    def test_new_session_for_a_cache(self):
        shell = self.start()
        shell.ask(f".cache {self.home}")
        self.assertIn(self.home, shell.ask(".cache"))
        shell.ask("SELECT COUNT(*) FROM Processes#60.Process")
        self.assertTrue(any("Processes" in name for _, _, names in os.walk(self.home) for name in names),
                        list(os.walk(self.home)))
        self.leave(shell)


class Completions(ShellTest):
    def test_places(self):
        shell = self.start(columns=150)
        files = "SELECT Name FROM Files(DirPath='/').Directory WHERE "
        cases = [
            ("SEL\t", ["SELECT "]),
            ("SELECT PID FR\t", ["FROM "]),
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
    def test_a_long_query(self):
        shell = self.start()
        for _ in range(3):
            shell.type(SLOW_QUERY + "\r")
            time.sleep(0.4)
            pressed = time.monotonic()
            shell.type(INTERRUPT)
            shell.expect("\n" + PROMPT)
            self.assertLess(time.monotonic() - pressed, 1)
            self.assertRegex(shell.ask("6 * 7"), r"\n42$")
        self.leave(shell)

    def test_what_is_typed_meanwhile(self):
        shell = self.start()
        shell.type(SLOW_QUERY + "\r")
        time.sleep(0.4)
        shell.type("20 + 2")
        time.sleep(0.1)
        shell.type(INTERRUPT)
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
                    shell.type(SLOW_QUERY + "\r" if running else "half a line")
                    time.sleep(0.4)
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
                shell.type(SLOW_QUERY + "\r" if running else "6 *")
                time.sleep(0.4)
                raw = shell.mode()[3]
                shell.type("\x1a")
                end = time.monotonic() + 10
                while os.waitid(os.P_PID, shell.pid,
                                os.WSTOPPED | os.WNOHANG | os.WNOWAIT) is None:
                    self.assertLess(time.monotonic(), end, "it does not stop")
                    time.sleep(0.02)
                self.assertEqual(shell.mode()[3] & termios.ICANON, termios.ICANON)
                os.kill(shell.pid, signal.SIGCONT)
                time.sleep(0.3)
                self.assertEqual(shell.mode()[3], raw)
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


class WithoutEditing(ShellTest):
    def test_a_plain_terminal(self):
        shell = self.start(term="dumb")
        self.assertRegex(shell.ask("6 * 7"), r"\n42$")
        shell.type("half a line")
        shell.expect("half a line")
        shell.type(INTERRUPT)
        shell.expect("\n" + PROMPT)
        self.assertRegex(shell.ask("1 + 1"), r"\n2$")
        shell.type(SLOW_QUERY + "\r")
        time.sleep(0.4)
        shell.type("3 + 4\r" + INTERRUPT)
        shell.expect("7\n")
        self.leave(shell)


main()
