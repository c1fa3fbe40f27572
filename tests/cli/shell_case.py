"""What the tests of the shell share: it stands on a pseudo-terminal, in a home of its own."""
import os
import tempfile
import unittest

from kestra_command import COMMAND
from pty_shell import PROMPT, PtyShell

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
