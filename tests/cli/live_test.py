"""What the command says of this machine, beside what other programs say of it."""
import os
import subprocess

from kestra_command import CommandTest, main


def ps():
    """{pid: parent's pid} at this moment."""
    out = subprocess.run(["ps", "-eo", "pid=,ppid="], capture_output=True, text=True, check=True)
    return {pid: parent for pid, parent in (line.split() for line in out.stdout.splitlines())}


class Processes(CommandTest):
    def test_join_agrees_with_ps(self):
        query = ("SELECT c.PID, p.PID, c.ImageName, p.ImageName FROM Processes.Process c "
                 "JOIN Processes.Process p ON c.ParentProcessID = p.PID")
        children = [subprocess.Popen(["sleep", "60"]) for _ in range(3)]
        try:
            before = ps()
            rows = self.rows(query)
            after = ps()
        finally:
            for child in children:
                child.kill()
                child.wait()
        pairs = {(child, parent) for child, parent, _, _ in rows}
        self.assertEqual(len(pairs), len(rows), "a process is listed twice")
        lasting = {(pid, parent) for pid, parent in before.items()
                   if after.get(pid) == parent and parent in before and parent in after}
        self.assertLessEqual(lasting, pairs)
        own = {(child, image) for child, _, image, _ in rows}
        for child in children:
            self.assertIn((str(child.pid), "sleep"), own)

    def test_every_process_is_listed(self):
        before, listed, after = ps(), self.rows("SELECT PID, PID FROM Processes.Process"), ps()
        self.assertLessEqual(before.keys() & after.keys(), {pid for pid, _ in listed})

    def test_first_query_of_a_newcomer(self):
        rows = self.rows("SELECT PID, ImageName, MemoryUsage, User, CommandLine FROM "
                         "Processes(ShowUserAndComLine=1).Process WHERE MemoryUsage > 1000")
        self.assertTrue(rows)
        for row in rows:
            self.assertEqual(len(row), 5, row)
            self.assertGreater(int(row[2]), 1000, row)

    def test_command_line_is_that_of_the_process(self):
        with subprocess.Popen(["sleep", "61.25"]) as child:
            rows = self.rows("SELECT CommandLine, User FROM Processes(ShowUserAndComLine=1).Process"
                             f" WHERE PID = {child.pid}")
            user = subprocess.run(["ps", "-o", "user:64=", "-p", str(child.pid)],
                                  capture_output=True, text=True, check=True).stdout.strip()
            child.kill()
        self.assertEqual(rows, [("sleep 61.25", user)])

    def test_memory_is_what_ps_says(self):
        ballast = bytearray(64 << 20)  # so that what comes and goes meanwhile is a small part
        ballast[:] = b"x" * len(ballast)
        rows = self.rows(f"SELECT MemoryUsage, PID FROM Processes.Process WHERE PID = {os.getpid()}")
        out = subprocess.run(["ps", "-o", "rss=", "-p", str(os.getpid())], capture_output=True,
                             text=True, check=True).stdout
        self.assertAlmostEqual(int(rows[0][0]), int(out), delta=int(out) / 20)


class Files(CommandTest):
    def test_agrees_with_find(self):
        rows = self.rows("SELECT FileName, Size FROM FILES.FILE('/etc/*.conf') WHERE Size > 1000")
        found = subprocess.run(
            ["find", "-L", "/etc", "-maxdepth", "1", "-type", "f", "-name", "[!.]*.conf",
             "-size", "+1000c", "-printf", "%f\t%s\n"], capture_output=True, text=True, check=True)
        expected = [tuple(line.split("\t")) for line in found.stdout.splitlines()]
        self.assertTrue(expected)
        self.assertEqual(sorted(rows), sorted(expected))

    def test_either_slash_names_a_file(self):
        query = "SELECT FileName, Size FROM FILES.FILE('{}') WHERE Size > 0"
        self.assertEqual(self.rows(query.format("\\etc\\pass*")), self.rows(query.format("/etc/pass*")))


main()
