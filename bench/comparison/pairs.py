"""Parsing, scans, joins and sub-selects beside SQLite, in one program that links both."""
from comparison.programs import json_lines, say
from comparison.result import Result

NAMES = ["parse", "parse-join", "parse-list", "scan", "columns", "columns-kept", "join",
         "sub-select"]


def require(programs):
    programs.require_pairs()


def measure(programs, names, quick):
    say(f"{', '.join(names)} beside SQLite")
    command = [programs.pairs, "--only", *names] + (["--quick"] if quick else [])
    return [_result(line) for line in json_lines(command)]


def _result(line):
    ours, peer = line.pop("our_answer"), line.pop("peer_answer")
    line.pop("units")
    return Result(**line, problem="" if ours == peer else f"ours answers {ours}, the peer {peer}")
