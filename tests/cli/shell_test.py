"""Queries and commands in the shell, as a user types them."""
import os
import subprocess
import termios

from kestra_command import COMMAND, SLOW_QUERY, await_work, main
from pty_shell import CONTROL, PROMPT
from shell_case import END, INTERRUPT, MORE, ShellTest


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

    def test_what_a_terminal_marks_as_pasted(self):
        shell = self.start()
        begin, end = "\x1b[200~", "\x1b[201~"
        # A tab is no key there, and what is whole is run without waiting for more.
        shell.type(f"{begin}SELECT PID,\r\tPID + 6\rFROM Processes.Process\r\tWHERE PID = 1;\r{end}")
        shell.expect("1        7")
        shell.type(f"{begin}6 * 7\r{end}")
        shell.expect("\n42\n")
        shell.type(f"{begin}1 + 1\r+ 3\r4 * {end}")
        shell.expect("4 * ")
        shell.type("40\r")
        shell.expect("\n5\n")
        shell.expect("160\n")
        shell.type("SEL\t")
        shell.expect("SELECT ")
        shell.type(INTERRUPT)
        self.leave(shell)
        self.assertTrue(shell.text.rstrip().endswith("\x1b[?2004l"), shell.text[-40:])

    def test_a_large_paste(self):
        shell = self.start()
        text = "".join(f"{number} + 0\r" for number in range(300))
        shell.type(text)
        shell.expect("\n299\n")
        shown = CONTROL.sub("", shell.text)
        self.assertEqual([n for n in range(300) if f"\n{n}\n" not in shown], [])
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
            (".modules x?z", ["kestra: there is no module"], []),
            (".describe files", ["Levels = 0", "FileName = '*'", "Files.Directory", "Files.FileLine"], []),
            (".describe FILES.directory", ["* Path", "Attributes", "'ReadOnly', 'Hidden'", "INSERT"], []),
            (".describe Fles", ['there is no module "Fles"; did you mean Files?'], []),
            (".describe files.direktory", ["did you mean Directory?"], []),
            (".describe IniFile.Ini", ['has no class "Ini"; did you mean IniKey or IniSection?'], []),
            (".modules Files Proc*", ["takes one pattern"], []),
            (".read '/etc/passwd", ["a quote is missing"], []),
            (".dump Nope", ['there is no module "Nope"'], ["SELECT"]),
            (".describe", ["takes the name of a module"], []),
            (".examples processes", ["SELECT PID, ImageName FROM"], []),
            (".exampels Files", ["did you mean .examples"], []),
            (".ex", [".examples", ".explain", ".exit"], []),
            (".help sort", [".sort [COLUMN"], [".limit"]),
            (".help", [".describe", ".plugins", 'ends with ";"'], []),
            (".dump Processes", ['<I n="Processes">', '<P n="PID">1</P>'], []),
            (".dump Processes rawlines", ["Processes"], ["<I n="]),
            (".dump Prozesses", ["did you mean Processes?"], ["<ERROR"]),
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
        await_work(shell.pid)
        shell.type("3 + 4\r" + INTERRUPT)
        shell.expect("7\n")
        self.leave(shell)


main()
