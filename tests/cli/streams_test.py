"""Streams that fail, and interrupts."""
import os
import signal
import subprocess
import time

from kestra_command import COMMAND, SLOW_QUERY, CommandTest, await_work, main

LONG_RESULT = "SELECT a.Path, b.Path FROM FILES.FILE('/usr/bin/*') a JOIN FILES.FILE('/etc/*') b " \
              "ON LEN(a.FileName) > LEN(b.FileName)"


class Streams(CommandTest):
    def test_full_disk(self):
        for arguments in ["1 + 1"], ["--format", "json", "1 + 1"], [LONG_RESULT], ["--help"]:
            with open("/dev/full", "wb") as full:
                result = self.run_command(*arguments, stdout=full)
            self.assertEqual(result.returncode, 1, (arguments, result))
            self.assertTrue(result.stderr.startswith(b"kestra: standard output: "), result)

    def test_closed_standard_output(self):
        for arguments in ["1 + 1"], [LONG_RESULT]:
            result = subprocess.run([COMMAND, *arguments], stderr=subprocess.PIPE, timeout=60,
                                    stdin=subprocess.DEVNULL, preexec_fn=lambda: os.close(1))
            self.assertEqual(result.returncode, 1, result)
            self.assertTrue(result.stderr.startswith(b"kestra: standard output: "), result)

    def test_closed_streams_hurt_nobody(self):
        result = subprocess.run([COMMAND, "1 +"], stdout=subprocess.PIPE, timeout=60,
                                preexec_fn=lambda: (os.close(0), os.close(2)))
        self.assertEqual((result.returncode, result.stdout), (1, b""))
        result = subprocess.run([COMMAND], capture_output=True, timeout=60,
                                preexec_fn=lambda: os.close(0))
        self.assertEqual(result.returncode, 2, result)

    def closed_pipe(self, disposition):
        reader, writer = os.pipe()
        os.close(reader)
        with os.fdopen(writer, "wb") as pipe:
            return self.run_command(LONG_RESULT, stdout=pipe, restore_signals=False,
                                    preexec_fn=lambda: signal.signal(signal.SIGPIPE, disposition))

    def test_closed_pipe(self):
        self.assertEqual(self.closed_pipe(signal.SIG_DFL).returncode, -signal.SIGPIPE)
        result = self.closed_pipe(signal.SIG_IGN)
        self.assertEqual(result.returncode, 1, result)
        self.assertTrue(result.stderr.startswith(b"kestra: standard output: "), result)


class Interrupts(CommandTest):
    def started(self, *arguments):
        process = self.start(*arguments)
        self.addCleanup(process.communicate)
        self.addCleanup(process.kill)
        await_work(process.pid)
        return process

    def test_first_cancels_the_query(self):
        for query in SLOW_QUERY, SLOW_QUERY + "; 1 + 1":
            process = self.started(query)
            start = time.monotonic()
            process.send_signal(signal.SIGINT)
            out, err = process.communicate(timeout=10)
            self.assertEqual((process.returncode, out), (130, b""), err)
            self.assertTrue(err.startswith(b"<ERROR>\n"), err)
            self.assertLess(time.monotonic() - start, 2)

    def test_kill_is_ordinary(self):
        process = self.started(SLOW_QUERY)
        process.send_signal(signal.SIGTERM)
        process.communicate(timeout=10)
        self.assertEqual(process.returncode, -signal.SIGTERM)

    def test_ignored_interrupts_stay_ignored(self):
        process = subprocess.Popen(
            [COMMAND, "--timeout", "60000", SLOW_QUERY], stdout=subprocess.PIPE,
            stderr=subprocess.PIPE, stdin=subprocess.DEVNULL,
            preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_IGN))
        self.addCleanup(process.communicate)
        self.addCleanup(process.kill)
        await_work(process.pid)
        process.send_signal(signal.SIGINT)
        await_work(process.pid)
        self.assertIsNone(process.poll())

    def test_time_out_is_an_error_and_no_cancel(self):
        query = "SELECT COUNT(*) FROM FILES.FILE('/usr/bin/*') a WHERE (SELECT COUNT(*) FROM " \
                "FILES.FILE('/usr/bin/*') b WHERE LEN(b.FileName) > 200) > 0"
        start = time.monotonic()
        self.check(["--timeout", "200", query], status=1, out=b"",
                   err=b"<ERROR>\nkestra: the query's time, 200 ms, was over\n")
        self.assertLess(time.monotonic() - start, 5)


main()
