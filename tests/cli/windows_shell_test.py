"""The shell of the Windows command, in a console that Wine draws on a pseudo-terminal."""
import os
import shutil
import subprocess
import sys
import tempfile
import time
import unittest

from pty_shell import PtyShell

WINE, COMMAND = sys.argv[1:3]
PREFIX = os.path.abspath(os.environ.get("KESTRA_WIN64_PREFIX") or os.path.join(
    os.path.dirname(WINE), "../build/win64-prefix"))
HISTORY = "C:\\users\\Public\\kestra-shell-test-history"
UP, LEFT, HOME, DELETE = "\x1b[A", "\x1b[D", "\x1b[H", "\x1b[3~"
INTERRUPT = "\x03"
END = "\x04"  # Ctrl-Z would have the pseudo-terminal stop Wine
# Reads nothing, and goes on until it is cancelled.
SLOW_QUERY = ("SELECT COUNT(*) FROM Processes.Process a JOIN Processes.Process b ON b.PID >= 0 "
              "JOIN Processes.Process c ON c.PID >= 0 JOIN Processes.Process d ON d.PID >= 0 "
              "JOIN Processes.Process e ON e.PID >= 0 JOIN Processes.Process f ON f.PID >= 0 "
              "JOIN Processes.Process g ON g.PID >= 0 JOIN Processes.Process h ON h.PID >= 0")


class WindowsShellTest(unittest.TestCase):
    """What is drawn depends on what stands there already, so that blanks may not be written: only
    words are waited for."""

    def setUp(self):
        home = tempfile.TemporaryDirectory()
        self.addCleanup(home.cleanup)
        self.home = home.name

    @classmethod
    def setUpClass(cls):
        # Makes the prefix.
        subprocess.run([WINE, COMMAND, "--version"], check=True, timeout=300, stdin=subprocess.DEVNULL,
                       stdout=subprocess.DEVNULL)
        cls.addClassCleanup(cls.forget_history)
        cls.forget_history()

    @classmethod
    def forget_history(cls):
        path = os.path.join(PREFIX, "drive_c/users/Public", HISTORY.rsplit("\\", 1)[-1])
        if os.path.exists(path):
            os.remove(path)

    def start(self):
        # Not by the script: that collects what is written.
        shell = PtyShell(shutil.which("wine"), self.home, COMMAND, env={
            "WINEPREFIX": PREFIX, "WINEDEBUG": "-all", "KESTRA_HISTORY": HISTORY})
        self.addCleanup(shell.close)
        shell.expect("kestra>", 60)
        return shell

    def answer(self, shell, keys, shown):
        shell.type(keys)
        shell.expect(shown, 30)

    def leave(self, shell):
        shell.type(END)
        self.assertEqual(shell.wait(20), 0)

    def test_a_session(self):
        shell = self.start()
        self.answer(shell, "6 * 7\r", "42")
        # Completion, and the keys that move.
        self.answer(shell, "SELECT PI\t", "PID")
        self.answer(shell, " FROM Proc\t", "Processes.")
        self.answer(shell, "\t", "Process")
        self.answer(shell, "WHERE Image\t", "ImageName")
        self.answer(shell, " = 'none'\r", "rows")
        self.answer(shell, "SELECT * FROM Processes.Process WHERE Pr\t", "Pro")
        self.answer(shell, "\t", "ProductVersion")
        self.answer(shell, INTERRUPT, "kestra>")
        self.answer(shell, "1 + 0" + LEFT * 5 + DELETE + "30", "30")
        self.answer(shell, "\r", "30")
        self.answer(shell, "00 + 7" + HOME + "8\r", "807")
        # What was given up comes back too, and several lines as one entry.
        self.answer(shell, "10 + never", "never")
        self.answer(shell, INTERRUPT, "kestra>")
        self.answer(shell, UP, "never")
        self.answer(shell, "\x7f" * 5 + "5\r", "15")
        self.answer(shell, "SELECT COUNT(*)\r", "...>")
        self.answer(shell, "FROM Processes.Process\rWHERE PID = 0;\r", "0")
        self.leave(shell)
        shell = self.start()
        self.answer(shell, UP, "COUNT(*)")
        shell.expect("FROM")
        self.answer(shell, INTERRUPT, "kestra>")
        self.answer(shell, UP + UP + "\r", "15")
        self.leave(shell)

    def test_an_interrupt_ends_a_query(self):
        shell = self.start()
        shell.type(SLOW_QUERY + "\r")
        shell.expect("h.PID >= 0\n", 30)
        time.sleep(1)
        self.answer(shell, INTERRUPT, "cancel")
        shell.expect("kestra>")
        self.answer(shell, "6 * 7\r", "42")
        self.leave(shell)


unittest.main(argv=sys.argv[:1], verbosity=2)
