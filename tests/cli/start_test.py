"""From a cold shell a short query takes no longer than the same of sqlite3, started in turn with it."""
import statistics
import subprocess
import time
import unittest

import kestra_command

ROUNDS, RUNS = 8, 60


class StartTest(unittest.TestCase):
    def seconds(self, *command):
        start = time.perf_counter()
        subprocess.run(command, stdout=subprocess.DEVNULL, check=True)
        return time.perf_counter() - start

    def test_no_longer_than_sqlite(self):
        # Something else may run beside one round; a start that is really slower is so in each.
        rounds = []
        for _ in range(ROUNDS):
            own, peer = zip(*((self.seconds(kestra_command.COMMAND, "1 + 1"),
                               self.seconds("sqlite3", ":memory:", "select 1"))
                              for _ in range(RUNS)))
            rounds.append((statistics.median(own), statistics.median(peer)))
            if rounds[-1][0] <= rounds[-1][1]:
                return
        self.fail(f"medians in seconds, ours and the peer's: {rounds}")

    def test_heavy_libraries_wait(self):
        """Those that a shell or a registry hive needs are not loaded for a query that does not."""
        maps = subprocess.run(["env", "LD_DEBUG=files", kestra_command.COMMAND, "1 + 1"],
                              capture_output=True, text=True, check=True).stderr
        self.assertIn("libc.so", maps)
        for library in ("libedit", "libhivex", "libstdc++", "libfmt"):
            self.assertNotIn(library, maps)


if __name__ == "__main__":
    kestra_command.main()
