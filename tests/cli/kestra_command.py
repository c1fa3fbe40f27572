"""Runs the command for the tests beside this file: `test.py COMMAND`."""
import os
import signal
import subprocess
import sys
import unittest

COMMAND = os.path.abspath(sys.argv.pop(1))
SYNTAX_ERROR = b"<ERROR: Syntax error>\n"

# Goes on for minutes: about a thousand files, thrice.
SLOW_QUERY = ("SELECT COUNT(*) FROM FILES.FILE('/usr/bin/*') a "
              "JOIN FILES.FILE('/usr/bin/*') b ON LEN(a.FileName) + LEN(b.FileName) > 20 "
              "JOIN FILES.FILE('/usr/bin/*') c ON LEN(a.FileName) + LEN(c.FileName) = 0")


class CommandTest(unittest.TestCase):
    def run_command(self, *arguments, stdin=b"", **more):
        more.setdefault("stdout", subprocess.PIPE)
        return subprocess.run([COMMAND, *arguments], input=stdin, stderr=subprocess.PIPE,
                              timeout=60, **more)

    def check(self, arguments, status=0, out=None, err=None, stdin=b""):
        """What a call gives; None for an output that does not matter."""
        result = self.run_command(*arguments, stdin=stdin)
        what = f"{arguments}: {result}"
        self.assertEqual(result.returncode, status, what)
        if out is not None:
            self.assertEqual(result.stdout, out, what)
        if err is not None:
            self.assertEqual(result.stderr, err, what)
        return result

    def rows(self, query):
        """The cells of a result in the format for scripts."""
        out = self.check(["--format", "text", query]).stdout.decode("utf-8", "surrogateescape")
        return [tuple(line.split("\t")) for line in out.split("\n")[:-1]]

    def start(self, *arguments, **more):
        # A runner may have started us with interrupts ignored.
        return subprocess.Popen([COMMAND, *arguments], stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE, stdin=subprocess.DEVNULL,
                                preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_DFL),
                                **more)


def main():
    unittest.main(verbosity=2)
