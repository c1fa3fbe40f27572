"""What the lints share: the source files of the tree, and their #include lines."""
import os
import re
import subprocess

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
INCLUDE = re.compile(r'\s*#\s*include\s*(["<])([^">]+)[">]')


def source_files(*endings):
    """Paths from the root of the files that are or would be committed."""
    listed = subprocess.run(
        ["git", "-C", ROOT, "ls-files", "--cached", "--others", "--exclude-standard"],
        check=True, capture_output=True, text=True).stdout.splitlines()
    return sorted(path for path in listed
                  if path.endswith(endings) and os.path.isfile(os.path.join(ROOT, path)))


def lines_of(path):
    with open(os.path.join(ROOT, path), encoding="utf-8", errors="replace") as file:
        return list(enumerate(file, 1))


def includes_of(path):
    """(line number, quote or bracket, what is included)."""
    for number, line in lines_of(path):
        found = INCLUDE.match(line)
        if found:
            yield number, found[1], found[2]
