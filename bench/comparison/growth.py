"""How cost grows with size: time per unit should stay what it is."""
from comparison.memory import bytes_for
from comparison.programs import json_lines, say
from comparison.tables import duration, text_of

NAMES = ["parse", "scan", "join", "memory"]
TITLES = {
    "parse-list": "list in IN", "parse-or-chain": "OR chain", "parse-parentheses": "parentheses",
    "parse-joins": "joins", "scan": "filter scan", "join": "equality join",
    "join-sqlite": "the same, SQLite",
}


def require(programs):
    programs.require_pairs()


def table(programs, name, quick, markdown):
    say(f"growth of {name}")
    if name == "memory":
        return _memory_table(programs, quick, markdown)
    command = [programs.pairs, "--growth", name] + (["--quick"] if quick else [])
    keeps = name != "parse"  # a text that was parsed leaves nothing behind
    unit = "row" if keeps else "token"
    headings = ["work", f"{unit}s", "time", f"per {unit}"] + (["heap per row"] if keeps else [])
    rows = [_cells(point, keeps) for point in json_lines(command)]
    return text_of(headings, rows, markdown) + "\n"


def _cells(point, keeps):
    size = point["size"]
    if point["refusal"]:
        say(f"{point['work']} of {size}: {point['refusal']}")
        cells = ["-", "-", "-"]
    else:
        cells = [duration(point["nanoseconds"]), f"{point['nanoseconds'] / size:.0f} ns",
                 f"{point['bytes'] / size:.0f} bytes"]
    return [TITLES[point["work"]], f"{size:,}", *(cells if keeps else cells[:2])]


def _memory_table(programs, quick, markdown):
    sizes = [10000, 100000] if quick else [10000, 30000, 100000, 300000, 1000000, 3000000]
    rows = []
    for size in sizes:
        tree, looked_at, structs = (bytes_for(programs, what, size) / size
                                    for what in ("tree", "looked-at", "structs"))
        rows.append([f"{size:,}", f"{tree:.0f}", f"{looked_at:.0f}", f"{structs:.0f}",
                     f"{looked_at / structs:.2f}"])
    headings = ["items", "bytes per item", "after all was read", "structures", "ratio"]
    return text_of(headings, rows, markdown) + "\n"
