#!/usr/bin/env python3
"""Holds the floors: a folder includes only from its own floor and from floors below it."""
import sys

from source_tree import includes_of, source_files

FLOORS = ["platform", "VLib", "model", "Modules", "query", "report", "front", "cli"]
PUBLIC = "include"  # the public headers: included by the floors that speak through them
SPEAKERS = {"front", "cli", "include"}
CLIENTS = {"cli": {"cli", "include"}}  # uses the C interface alone


def fault(folder, target):
    """Why a file in folder may not include from target; None if it may."""
    if target == PUBLIC:
        return None if folder in SPEAKERS else f"{folder}/ does not know the public headers"
    if folder in CLIENTS:
        return None if target in CLIENTS[folder] else f"{folder}/ uses include/ alone"
    if folder == PUBLIC:
        return "a public header stands alone"
    if target not in FLOORS:
        return f"{target}/ is no floor"
    if FLOORS.index(target) > FLOORS.index(folder):
        return f"{target}/ is above {folder}/"
    return None


def main():
    bad = 0
    for path in source_files(".h", ".cpp", ".inc"):
        folder = path.split("/")[0]
        if folder not in FLOORS and folder != PUBLIC:
            continue  # tests, benches and tools stand beside the floors
        for number, quote, included in includes_of(path):
            if quote != '"':
                continue
            why = ("is not a path from the root" if "/" not in included
                   else fault(folder, included.split("/")[0]))
            if why:
                bad += 1
                print(f'{path}:{number}: #include "{included}": {why}')
    sys.exit(1 if bad else 0)


main()
