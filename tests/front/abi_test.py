#!/usr/bin/env python3
"""The C interface as it was given out: every function, number and struct of the public headers stands in
abi.txt, for each version of the interface, and the library exports these functions and no others.

    abi_test.py [--write] HEADERS LIST [LIBRARY]

What stands in the list may not change: a host that was built with it goes on working. What is added
goes into the list with --write. To take something away, raise KESTRA_ABI_VERSION and write the list anew."""
import pathlib
import re
import subprocess
import sys

arguments = sys.argv[1:]
write = arguments[:1] == ["--write"]
headers, kept, *library = arguments[1:] if write else arguments


def declarations():
    found = set()
    for header in sorted(pathlib.Path(headers).glob("*.h")):
        text = re.sub(r"/\*.*?\*/|//[^\n]*", " ", header.read_text("utf-8"), flags=re.S)
        for line in re.findall(r"^KESTRA_(?:API|IMPORT)\s+([^;]+);", text, re.M):
            found.add(" ".join(line.split()))
        for struct in re.findall(r"typedef struct \w+ {.*?} \w+;", text, re.S):
            found.add(" ".join(struct.split()))
        for name, value in re.findall(r"^#define (KESTRA_[A-Z_]+) +(\S+)", text, re.M):
            if re.match(r"\(?-?(\d|0x)", value):
                found.add(f"{name} = {value}")
    return found


def exported():
    out = subprocess.run(["nm", "-D", "--defined-only", library[0]], check=True, timeout=60,
                         capture_output=True, text=True).stdout
    return {line.split()[-1].split("@")[0] for line in out.splitlines()} - {"KESTRA_0"}


now = declarations()
assert len(now) > 100, now
if write:
    pathlib.Path(kept).write_text("\n".join(sorted(now)) + "\n", "utf-8")
    sys.exit(0)
before = set(pathlib.Path(kept).read_text("utf-8").splitlines())
for line in sorted(before - now):
    print("gone or changed:", line)
for line in sorted(now - before):
    print("not in the list:", line)
functions = {match.group(1) for line in now if (match := re.search(r"(\w+)\(", line))
             and not line.startswith("typedef")}
if library:
    for name in sorted(functions ^ exported()):
        print("declared or exported, but not both:", name)
    sys.exit(now != before or functions != exported())
sys.exit(now != before)
