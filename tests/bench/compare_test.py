"""bench/compare over the programs that were built, and over one that answers what it is told to."""
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

COMPARE = sys.argv.pop(1)
BUILD = pathlib.Path(sys.argv.pop(1))


def compare(*arguments):
    return subprocess.run([COMPARE, *arguments], capture_output=True, text=True, timeout=120)


class CompareTest(unittest.TestCase):
    @unittest.skipUnless((BUILD / "bench/kestra_bench_pairs").exists(), "SQLite is not installed")
    def test_both_sides_answer_alike(self):
        result = compare("--quick", "--only", "parse,scan,columns,join,sub-select", str(BUILD))
        self.assertEqual(result.returncode, 0, result)
        names = [line.split(":")[0] for line in result.stdout.splitlines()[1:]]
        self.assertEqual(names, ["parse", "parse-join", "parse-list", "scan", "columns",
                                 "columns-kept", "join", "sub-select"])

    def run_over(self, ours, peer, ours_answer=1, *arguments):
        """The table of a program that has measured that."""
        line = {"name": "scan", "title": "a scan", "unit": "row", "units": 1, "at_most": 2.0,
                "aim": 1.0, "our_answer": ours_answer, "peer_answer": 1, "ours": ours, "peer": peer,
                "ours_processor": ours, "peer_processor": peer}
        with tempfile.TemporaryDirectory() as build:
            program = pathlib.Path(build, "bench/kestra_bench_pairs")
            program.parent.mkdir()
            program.write_text(f"#!/bin/sh\necho '{json.dumps(line)}'\n")
            program.chmod(0o755)
            return compare("--only", "scan", *arguments, build)

    def test_ratios_and_verdicts(self):
        for ours, peer, ratio, verdict in (
                # The median of the rounds' ratios, not the ratio of the medians, which is 2.
                ([10, 20, 90], [20, 10, 100], "0.90", "aim met"),
                ([10, 10, 10], [10, 10, 10], "1.00", "aim met"),
                ([15, 30, 15], [10, 10, 10], "1.50", "within"),
                ([21, 1, 21], [10, 10, 10], "2.10", "MISSED")):
            with self.subTest(ours=ours, peer=peer):
                result = self.run_over(ours, peer)
                self.assertEqual(result.returncode, 0, result)
                row = result.stdout.splitlines()[1]
                self.assertIn(f" {ratio} ", row)
                self.assertTrue(row.endswith(verdict), row)

    def test_other_answers_are_no_comparison(self):
        result = self.run_over([1], [1], 2)
        self.assertEqual(result.returncode, 1, result)
        self.assertIn("WRONG", result.stdout)
        self.assertIn("ours answers 2, the peer 1", result.stderr)

    def test_markdown(self):
        lines = self.run_over([1, 2], [1, 2], 1, "--markdown").stdout.splitlines()
        self.assertEqual(len({line.count("|") for line in lines}), 1, lines)
        self.assertEqual(len(lines), 3)

    def test_what_is_missing_is_told(self):
        with tempfile.TemporaryDirectory() as build:
            for work, target in (("scan", "kestra_bench_pairs"), ("files", "kestra_command")):
                result = compare("--only", work, build)
                self.assertEqual(result.returncode, 2, result)
                self.assertIn(f"ninja -C {build} {target}", result.stderr)
        self.assertEqual(compare("--only", "nothing", os.devnull).returncode, 1)


if __name__ == "__main__":
    unittest.main()
