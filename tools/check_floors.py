#!/usr/bin/env python3
"""Holds the floors: a folder includes only from its own floor and from floors below it."""
import sys

from source_tree import includes_of, source_files

FLOORS = ["platform", "VLib", "model", "Modules", "query", "report", "front", "cli"]
PUBLIC = "include"  # public headers stand alone, below all floors
C_INTERFACE = "include/kestra/kestra.h"  # but this one is what front/ offers


def fault(folder, included):
    """Why a file in folder may not include that; None if it may."""
    target = included.split("/")[0]
    if folder == "cli" and target != "cli" and included != C_INTERFACE:
        return "cli/ uses the C interface alone"
    if target == PUBLIC:
        is_known = included != C_INTERFACE or folder in ("front", "cli")
        return None if is_known else f"{folder}/ does not know the C interface"
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
                   else fault(folder, included))
            if why:
                bad += 1
                print(f'{path}:{number}: #include "{included}": {why}')
    sys.exit(1 if bad else 0)


main()
