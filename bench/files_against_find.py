#!/usr/bin/env python3
"""Measures the module Files beside find over the same tree, in turns, and prints the ratios.

    bench/files_against_find.py COMMAND [FILES [ROUNDS]]

The tree (100,000 files in 100 directories unless told otherwise) is made in the temporary directory
and removed. Each program's output goes to nowhere; the best of the rounds counts, since what else
the machine does only adds.
"""
import os
import subprocess
import sys
import tempfile
import time

COLUMNS = {
    "COUNT(*)": "COUNT(*)",
    "two columns": "Path, Size",
    "four columns": "Path, Size, LastWriteTime, Attributes",
}


def make_tree(top, count):
    per_directory = max(1, count // 100)
    for number in range(count):
        directory = os.path.join(top, f"dir{number // per_directory:03d}")
        if number % per_directory == 0:
            os.makedirs(directory, exist_ok=True)
        with open(os.path.join(directory, f"file-{number:06d}.txt"), "wb") as file:
            file.write(b"x" * (number % 500))


def milliseconds(command):
    start = time.monotonic()
    subprocess.run(command, stdout=subprocess.DEVNULL, check=True)
    return (time.monotonic() - start) * 1000


def main():
    kestra = sys.argv[1]
    count = int(sys.argv[2]) if len(sys.argv) > 2 else 100000
    rounds = int(sys.argv[3]) if len(sys.argv) > 3 else 7
    with tempfile.TemporaryDirectory(prefix="kestra bench ") as top:
        make_tree(top, count)
        commands = {"find -printf": ["find", top, "-printf", "%p %s %T@ %m %U\n"]}
        for name, columns in COLUMNS.items():
            commands[name] = [kestra, "--format", "text", f"SELECT {columns} FROM "
                              f"Files(DirPath='{top}', Levels=1, Timeout=60000).File"]
        times = {name: [] for name in commands}
        for _ in range(rounds):
            for name, command in commands.items():
                times[name].append(milliseconds(command))
    best = {name: min(values) for name, values in times.items()}
    for name, value in best.items():
        print(f"{name:15} {value:7.0f} ms  {value / best['find -printf']:.2f}")


if __name__ == "__main__":
    main()
