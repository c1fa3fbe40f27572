"""The programs that are measured, and their times as a user has them."""
import json
import os
import shutil
import subprocess
import sys
import time


class Missing(Exception):
    """Something that has to be built or installed first."""


class Programs:
    def __init__(self, build):
        self.build = build
        self.command = os.path.join(build, "cli", "kestra")
        self.pairs = os.path.join(build, "bench", "kestra_bench_pairs")
        self.processes = os.path.join(build, "bench", "kestra_bench_processes")

    def require_command(self):
        self._require(self.command, "kestra_command", None)

    def require_pairs(self):
        self._require(self.pairs, "kestra_bench_pairs", "libsqlite3-dev")

    def require_processes(self):
        self._require(self.processes, "kestra_bench_processes", "libproc2-dev")

    def _require(self, path, target, package):
        if os.access(path, os.X_OK):
            return
        needs = f" (with the package {package} installed before cmake runs)" if package else ""
        raise Missing(f"{path} is not there. It is built by: "
                      f"ninja -C {self.build} {target}{needs}")


def require_tool(name):
    if not shutil.which(name):
        raise Missing(f"{name} is not installed")


def say(text):
    print(f"compare: {text}", file=sys.stderr, flush=True)


def json_lines(command):
    """Each line of a program of ours as it comes. RuntimeError if it does not end well."""
    with subprocess.Popen(command, stdout=subprocess.PIPE, text=True) as program:
        for line in program.stdout:
            yield json.loads(line)
    if program.returncode != 0:
        raise RuntimeError(f"{command[0]} ended with {program.returncode}")


def timed(command):
    """(wall, processor) nanoseconds of a whole program whose output goes to nowhere."""
    start = time.perf_counter_ns()
    program = subprocess.Popen(command, stdout=subprocess.DEVNULL)
    _, status, usage = os.wait4(program.pid, 0)
    wall = time.perf_counter_ns() - start
    program.returncode = os.waitstatus_to_exitcode(status)
    if program.returncode != 0:
        raise RuntimeError(f"{command[0]} ended with {program.returncode}")
    return wall, (usage.ru_utime + usage.ru_stime) * 1e9


def in_turns(ours, peer, rounds, units):
    """The times per unit of both commands, round by round; which goes first alternates. The first
    run of each is not counted: it fills the caches of the system."""
    timed(ours), timed(peer)
    times = {"ours": [], "peer": [], "ours_processor": [], "peer_processor": []}
    for number in range(rounds):
        order = [("ours", ours), ("peer", peer)]
        for side, command in order if number % 2 == 0 else reversed(order):
            wall, processor = timed(command)
            times[side].append(wall / units)
            times[side + "_processor"].append(processor / units)
    return times


def output_of(command):
    return subprocess.run(command, stdout=subprocess.PIPE, check=True).stdout
