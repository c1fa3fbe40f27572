"""A prefix of Wine, made once and kept: a Windows system volume that somebody else made.

    from wine_prefix import WinePrefix
    prefix = WinePrefix(directory)      # made now if it is not there
    prefix.run("reg", "query", ...)     # what a program of its own says
"""
import fcntl
import os
import shutil
import subprocess


class WinePrefix:
    TIMEOUT = 240  # seconds; a fresh prefix takes some ten

    def __init__(self, directory):
        self.path = directory
        with open(directory + ".lock", "w", encoding="ascii") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            if not os.path.exists(os.path.join(directory, "made")):
                self._make()

    def _make(self):
        shutil.rmtree(self.path, ignore_errors=True)
        self.run("wineboot", "-i")
        # Until the server has gone the registry's files are not written.
        self.wait()
        with open(os.path.join(self.path, "made"), "w", encoding="ascii"):
            pass

    def environment(self):
        return dict(os.environ, WINEPREFIX=self.path, WINEDEBUG="-all", WINEARCH="win64",
                    WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe=d")

    def run(self, *command):
        """Runs a program of the prefix; what it wrote to standard output, as text."""
        # winedevice and the like live on and would keep a pipe open.
        result = subprocess.run(["wine", *command], env=self.environment(), timeout=self.TIMEOUT,
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                stderr=subprocess.DEVNULL, check=True)
        return result.stdout.decode("utf-8", "replace")

    def wait(self):
        subprocess.run(["wineserver", "-w"], env=self.environment(), check=False,
                       timeout=self.TIMEOUT)
