"""Drives the command's shell through a pseudo-terminal, as a user at the keyboard."""
import fcntl
import os
import pty
import re
import select
import signal
import struct
import termios
import time

PROMPT = "kestra> "
# What moves the cursor and sets colours: nothing that is read.
CONTROL = re.compile(r"\x1b\[[0-9;?]*[A-Za-z@]|\x1b[=>]|\x0f|\x07|\r")


class PtyShell:
    def __init__(self, command, home, *arguments, env=None, columns=100, term="xterm"):
        self.text = ""  # everything that was shown
        self.mark = 0   # what was looked at
        environment = {"HOME": home, "XDG_STATE_HOME": os.path.join(home, "state"),
                       "PATH": os.environ["PATH"], "TERM": term, "LC_ALL": "C.UTF-8", "TZ": "UTC"}
        environment.update(env or {})
        self.pid, self.fd = pty.fork()
        if self.pid == 0:
            signal.signal(signal.SIGINT, signal.SIG_DFL)
            os.execve(command, [command, *arguments], environment)
        self.resize(columns)

    def resize(self, columns):
        fcntl.ioctl(self.fd, termios.TIOCSWINSZ, struct.pack("HHHH", 40, columns, 0, 0))

    def type(self, keys):
        os.write(self.fd, keys.encode())

    def read_more(self, seconds):
        """Whether something came."""
        if not select.select([self.fd], [], [], max(0, seconds))[0]:
            return False
        try:
            data = os.read(self.fd, 65536)
        except OSError:  # the shell has gone
            return False
        self.text += data.decode("utf-8", "replace")
        return bool(data)

    def expect(self, wanted, seconds=20):
        """Waits until that was shown, behind what was looked at last; gives what stood before it."""
        end = time.monotonic() + seconds
        while True:
            shown = CONTROL.sub("", self.text)
            place = shown.find(wanted, self.mark)
            if place >= 0:
                before = shown[self.mark:place]
                self.mark = place + len(wanted)
                return before
            if time.monotonic() > end or not self.read_more(end - time.monotonic()):
                raise AssertionError(f"{wanted!r} was not shown, but {shown[self.mark:]!r}")

    def ask(self, line, prompt=PROMPT, seconds=20):
        """What is shown between a line that is typed and the next prompt."""
        self.type(line + "\r")
        return self.expect("\n" + prompt, seconds)

    def mode(self):
        return termios.tcgetattr(self.fd)

    def wait(self, seconds=10):
        """The exit status; -N for signal N."""
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            self.read_more(0.05)
            pid, status = os.waitpid(self.pid, os.WNOHANG)
            if pid:
                self.pid = 0
                return os.waitstatus_to_exitcode(status)
        raise AssertionError("the shell does not end")

    def close(self):
        if self.pid:
            os.kill(self.pid, signal.SIGKILL)
            os.waitpid(self.pid, 0)
            self.pid = 0
        os.close(self.fd)
