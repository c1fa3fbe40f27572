"""The module Files beside find over the same tree, made for it in the temporary directory."""
import os
import tempfile

from comparison.programs import in_turns, output_of, require_tool, say
from comparison.result import Result

# What ours selects, and what find prints beside it: the owner as a number, so that nobody is looked
# up.
COLUMNS = {
    "files": ("Path, Size, LastWriteTime, Attributes", "%p %s %T@ %m %U\n"),
    "files-size": ("Path, Size", "%p %s\n"),
}
TITLES = {"files": "four columns", "files-size": "path and size"}
NAMES = list(COLUMNS)
COUNT, COUNT_IN_A_LOOK = 100000, 5000
DIRECTORIES = 100


def require(programs):
    programs.require_command()
    require_tool("find")


def _make_tree(top, count):
    per_directory = max(1, count // DIRECTORIES)
    for number in range(count):
        directory = os.path.join(top, f"dir{number // per_directory:03d}")
        if number % per_directory == 0:
            os.makedirs(directory, exist_ok=True)
        with open(os.path.join(directory, f"file-{number:06d}.txt"), "wb") as file:
            file.write(b"x" * (number % 500))


def _query(programs, columns, top):
    return [programs.command, "--format", "text", f"SELECT {columns} FROM "
            f"Files(DirPath='{top}', Levels=1, Timeout=600000).File"]


def _problem(programs, top, count):
    ours = set(output_of(_query(programs, "Path, Size", top)).decode().splitlines())
    peer = set(output_of(["find", top, "-type", "f", "-printf", "%p\t%s\n"]).decode().splitlines())
    if ours == peer and len(ours) == count:
        return ""
    return f"{len(ours)} lines of ours, {len(peer)} of find's, {len(ours ^ peer)} differ"


def measure(programs, names, quick):
    count = COUNT_IN_A_LOOK if quick else COUNT
    say(f"files beside find, {count} of them made for it")
    with tempfile.TemporaryDirectory(prefix="kestra bench ") as top:
        _make_tree(top, count)
        problem = _problem(programs, top, count)
        return [_measure_columns(programs, name, top, count, problem, quick) for name in names]


def _measure_columns(programs, name, top, count, problem, quick):
    columns, printed = COLUMNS[name]
    times = in_turns(_query(programs, columns, top), ["find", top, "-printf", printed],
                     5 if quick else 15, count)
    return Result(name, f"{count:,} files, {TITLES[name]}", "file", 1.25, 0.9, **times,
                  problem=problem)
