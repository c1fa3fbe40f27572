"""Bytes for an item of five properties, beside plain structures of the same data. Each side is
counted in a process of its own."""
from comparison.programs import json_lines, say
from comparison.result import Result

NAMES = ["memory"]


def require(programs):
    programs.require_pairs()


def bytes_for(programs, what, count):
    """what: "tree", "looked-at" (a query has read each value of the tree) or "structs"."""
    command = [programs.pairs, "--memory", what, "--count", str(count)]
    (line,) = json_lines(command)
    return line["bytes"]


def measure(programs, names, quick):
    count = 100000 if quick else 1000000
    say(f"memory of {count} items beside structures")
    ours = bytes_for(programs, "looked-at", count) / count
    peer = bytes_for(programs, "structs", count) / count
    return [Result(names[0], f"an item of a tree of {count:,}", "byte", 6.0, 3.0, [ours], [peer])]
