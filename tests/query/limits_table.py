#!/usr/bin/env python3
"""Prints how long each shape of text takes with as many tokens as a text can have, and the most
memory that a process which does nothing else needs for it.

    limits_table.py PROGRAM [FILTER]

PROGRAM is kestra_query_shapes_tests; FILTER is Google Test's.
"""
import os
import re
import subprocess
import sys
import tempfile


def tests(program, pattern):
    listed = subprocess.run([program, "--gtest_list_tests", f"--gtest_filter={pattern}"],
                            capture_output=True, text=True, check=True).stdout
    suite = ""
    for line in listed.splitlines():
        if not line.startswith(" "):
            suite = line.split()[0] if line.rstrip().endswith(".") or line.endswith("#") else ""
        elif suite:
            yield suite + line.split()[0]


def measure(program, test):
    """Milliseconds, KiB of memory at the most and the outcome, as the test tells them."""
    with tempfile.NamedTemporaryFile(suffix=".xml") as report:
        status = subprocess.run([program, f"--gtest_filter={test}", f"--gtest_output=xml:{report.name}"],
                                stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL).returncode
        text = open(report.name, encoding="utf-8", errors="replace").read()
    told = dict(re.findall(r'<property name="(\w+)" value="([^"]*)"', text))
    return told.get("milliseconds", "?"), int(told.get("peakKiB") or 0), told.get("outcome", "?"), status


def main():
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__)
    program = os.path.abspath(sys.argv[1])
    pattern = sys.argv[2] if len(sys.argv) == 3 else "*"
    print("| shape | ms | MiB | outcome |\n|---|--:|--:|---|")
    failed = 0
    for test in tests(program, pattern):
        milliseconds, memory, outcome, status = measure(program, test)
        name = test.split("/")[0].lower() + ": " + test.split("/")[-1]
        outcome = outcome.replace("&lt;", "<").replace("&gt;", ">")
        outcome = re.sub(r", source:.*", ">", outcome)
        print(f"| {name} | {milliseconds} | {memory / 1024:.1f} | {outcome}{' FAILED' if status else ''} |",
              flush=True)
        failed += status != 0
    sys.exit(1 if failed else 0)


main()
