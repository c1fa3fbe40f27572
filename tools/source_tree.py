"""What the lints share: the source files of the tree, and their #include lines."""
import os
import re

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
INCLUDE = re.compile(r'\s*#\s*include\s*(["<])([^">]+)[">]')


def source_files(*endings):
    """Paths from the root, but for what is built."""
    found = []
    for folder, folders, files in os.walk(ROOT):
        folders[:] = [name for name in folders if name != "build" and not name.startswith(".")]
        found += [os.path.relpath(os.path.join(folder, name), ROOT)
                  for name in files if name.endswith(endings)]
    return sorted(found)


def lines_of(path):
    with open(os.path.join(ROOT, path), encoding="utf-8", errors="replace") as file:
        return list(enumerate(file, 1))


def includes_of(path):
    """(line number, quote or bracket, what is included)."""
    for number, line in lines_of(path):
        found = INCLUDE.match(line)
        if found:
            yield number, found[1], found[2]
