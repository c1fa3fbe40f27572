#!/usr/bin/env python3
"""Finds source files that no CMakeLists.txt builds, and headers that nobody includes."""
import os
import re
import sys

from source_tree import ROOT, includes_of, lines_of, source_files

# Public headers are for others to include, and examples stand alone.
EXEMPT = ("include/", "examples/")


def owning_list(path):
    """The CMakeLists.txt nearest above a file."""
    folder = os.path.dirname(path)
    while folder and not os.path.exists(os.path.join(ROOT, folder, "CMakeLists.txt")):
        folder = os.path.dirname(folder)
    return os.path.join(folder, "CMakeLists.txt")


def words_of(cmake_list):
    """Of the list and of the parts that it includes from its own folder."""
    folder = os.path.dirname(cmake_list)
    parts = [cmake_list] + [os.path.join(folder, name) for name in os.listdir(os.path.join(ROOT, folder))
                            if name.endswith(".cmake")]
    text = "".join(line.split("#")[0] + "\n" for part in parts for _, line in lines_of(part))
    return set(re.split(r'[\s()"]+', text))


def main():
    bad = 0
    for path in source_files(".cpp"):
        cmake_list = owning_list(path)
        relative = os.path.relpath(path, os.path.dirname(cmake_list) or ".")
        if relative not in words_of(cmake_list):
            bad += 1
            print(f"{path}: missing from {cmake_list}")
    included = {target for path in source_files(".h", ".cpp", ".inc")
                for _, quote, target in includes_of(path) if quote == '"'}
    for path in source_files(".h", ".inc"):
        if path not in included and not path.startswith(EXEMPT):
            bad += 1
            print(f"{path}: nobody includes it by that path")
    sys.exit(1 if bad else 0)


main()
