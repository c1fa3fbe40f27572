#!/usr/bin/env python3
"""Prints "PASSED FAILED SKIPPED" of a JUnit file, and names on standard error what failed.

    count_results.py PRESET FILE       exits with 1 if anything failed or nothing was run
"""
import sys
import xml.etree.ElementTree as ET

preset, path = sys.argv[1:]
try:
    cases = ET.parse(path).getroot().findall("testcase")
except (OSError, ET.ParseError) as error:
    sys.exit(f"FAILED: {preset}: no results: {error}")

counts = {"run": 0, "fail": 0, "skipped": 0}
for case in cases:
    status = case.get("status")
    skipped = case.find("skipped")
    # A test that skips itself; one whose program is missing is told by another message.
    if skipped is not None and skipped.get("message") == "SKIP_REGULAR_EXPRESSION_MATCHED":
        status = "skipped"
    counts[status if status in counts else "fail"] += 1
    if status not in ("run", "skipped"):
        print(f"FAILED: {preset}: {case.get('name')}", file=sys.stderr)
print(counts["run"], counts["fail"], counts["skipped"])
sys.exit(1 if counts["fail"] or not counts["run"] else 0)
