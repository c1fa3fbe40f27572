#!/usr/bin/env python3
"""Runs query scripts through the command, as a user would.

    run_scripts.py [--system windows] [--words NAME] COMMAND... -- SCRIPT...

COMMAND is how the command is called (such as "wine kestra.exe"); the query goes in behind it. It is
one for Linux unless --system says otherwise. NAME is the file name of the library that a query
means by "{words}". Two cases run at a time.

A script is a list of cases, parted by blank lines; lines that begin with "#" are comments.

    @active                 options of the case: --active
    @timeout 500            --timeout 500
    @linux                  a case for that system alone; likewise @windows
    > SELECT x              the query; further lines that begin with ">" continue it
    = text                  a line of standard output, exactly
    ~ te*t                  a line of standard output, with "*" for anything
    -                       no output at all
    ! <ERROR: Syntax error> the query ends as an Error; "*" stands for anything

A script with a line "@test-modules" needs the command that has the test modules: it is not run
with the other one (Scripts.cmake).
"""
import argparse
import concurrent.futures
import re
import subprocess
import sys

SYSTEMS = ("linux", "windows")


class Case:
    def __init__(self, line):
        self.line, self.options, self.query, self.expected = line, [], [], []
        self.system = None  # every one


def parse(path):
    cases, case = [], None
    with open(path, encoding="utf-8") as script:
        for number, raw in enumerate(script, 1):
            text = raw.rstrip("\n")
            if not text or text.startswith("#"):
                case = case if text else None
                continue
            if text == "@test-modules":
                continue
            if case is None or (case.expected and text[0] in "@>"):
                case = Case(number)
                cases.append(case)
            if text[0] == "@":
                words = text[1:].split()
                if words[0] in SYSTEMS:
                    case.system = words[0]
                else:
                    case.options += ["--" + words[0]] + words[1:]
            elif text[0] == ">":
                case.query.append(text[2:])
            elif text[0] in "=~!-":
                case.expected.append((text[0], text[2:]))
            else:
                sys.exit(f"{path}:{number}: what is this line? {text}")
    return cases


def like(text, pattern):
    return re.fullmatch(".*".join(map(re.escape, pattern.split("*"))), text, re.S) is not None


def fault(case, result):
    """What is wrong with a result, or None."""
    out, err = (stream.decode("utf-8", "surrogateescape") for stream in (result.stdout, result.stderr))
    if result.returncode not in (0, 1):
        return f"exit status {result.returncode}\n{err}"
    errors = [text for kind, text in case.expected if kind == "!"]
    if errors:
        first = err.split("\n")[0].rstrip("\r")
        if result.returncode != 1 or out or not like(first, errors[0]):
            return f"expected the error {errors[0]!r}, got status {result.returncode}, {out!r}, {err!r}"
        return None
    if result.returncode:
        return f"ended with {err!r}"
    lines = out.replace("\r\n", "\n").split("\n")[:-1]
    wanted = [(kind, text) for kind, text in case.expected if kind in "=~"]
    for index, (kind, text) in enumerate(wanted):
        got = lines[index] if index < len(lines) else None
        if got is None or not (got == text if kind == "=" else like(got, text)):
            return f"line {index + 1}: expected {text!r}, got {got!r}; all: {lines}"
    if len(lines) > len(wanted):
        return f"more lines than expected: {lines[len(wanted):]}"
    return None


def run(case, arguments):
    """What is wrong with a case, or None."""
    if not case.expected:
        return "nothing is expected of it"
    query = "\n".join(case.query).replace("{words}", arguments.words)
    call = arguments.command + ["--format", "text"] + case.options + ["--", query]
    try:
        result = subprocess.run(call, capture_output=True, stdin=subprocess.DEVNULL, timeout=120)
    except subprocess.TimeoutExpired:
        return "did not end within two minutes"
    return fault(case, result)


def read_arguments():
    split = sys.argv.index("--")
    parser = argparse.ArgumentParser()
    parser.add_argument("--system", choices=SYSTEMS, default="linux")
    parser.add_argument("--words", default="libwords.so")
    parser.add_argument("command", nargs=argparse.REMAINDER)
    arguments = parser.parse_args(sys.argv[1:split])
    arguments.scripts = sys.argv[split + 1:]
    return arguments


def main():
    arguments = read_arguments()
    chosen = []
    for path in arguments.scripts:
        chosen += [(path, case) for case in parse(path) if case.system in (None, arguments.system)]
    with concurrent.futures.ThreadPoolExecutor(2) as pool:
        faults = list(pool.map(lambda entry: run(entry[1], arguments), chosen))
    for (path, case), wrong in zip(chosen, faults):
        if wrong:
            print(f"{path}:{case.line}: {' '.join(case.query)}\n    {wrong}")
    failed = len([wrong for wrong in faults if wrong])
    print(f"{len(chosen) - failed} passed, {failed} failed")
    sys.exit(1 if failed or not chosen else 0)


main()
