"""Runs the command for the tests beside this file: `test.py COMMAND`."""
import os
import signal
import subprocess
import sys
import time
import unittest

COMMAND = os.path.abspath(sys.argv.pop(1))
SYNTAX_ERROR = b"<ERROR: Syntax error>\n"

# Goes on for minutes: about a thousand files, thrice.
SLOW_QUERY = ("SELECT COUNT(*) FROM FILES.FILE('/usr/bin/*') a "
              "JOIN FILES.FILE('/usr/bin/*') b ON LEN(a.FileName) + LEN(b.FileName) > 20 "
              "JOIN FILES.FILE('/usr/bin/*') c ON LEN(a.FileName) + LEN(c.FileName) = 0")


def cpu_ticks(pid):
    with open(f"/proc/{pid}/stat", encoding="utf-8", errors="replace") as file:
        fields = file.read().rpartition(")")[2].split()
    return int(fields[11]) + int(fields[12])


def await_work(pid, seconds=30):
    """Until a process has computed for three tenths of a second from now on, as in a slow query."""
    enough = cpu_ticks(pid) + os.sysconf("SC_CLK_TCK") * 3 // 10
    end = time.monotonic() + seconds
    while cpu_ticks(pid) < enough:
        if time.monotonic() > end:
            raise AssertionError("it does not work")
        time.sleep(0.01)


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
