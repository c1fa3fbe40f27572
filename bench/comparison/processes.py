"""All processes with every property that is read, beside a program over libproc2."""
import contextlib
import os
import subprocess

from comparison.programs import in_turns, output_of, say
from comparison.result import Result

NAMES = ["processes"]
EXTRA, EXTRA_IN_A_LOOK = 2000, 200
SECONDS = 600  # after which the extra processes end whatever became of this program
SOURCE = "Processes(ShowUserAndComLine=1).Process"
SAME_COLUMNS = ("PID, ParentProcessID, ImageName, FilePath, MemoryUsage, HandleCount, User, "
                "CommandLine, ProcessArchitecture")


def require(programs):
    programs.require_command()
    programs.require_processes()


@contextlib.contextmanager
def _extra_processes(count):
    children = []
    try:
        for _ in range(count):
            children.append(subprocess.Popen(["sleep", str(SECONDS)], stdin=subprocess.DEVNULL,
                                             stdout=subprocess.DEVNULL))
        yield {str(child.pid) for child in children}
    finally:
        for child in children:
            child.kill()
        for child in children:
            child.wait()


def _problem(programs, pids):
    """What both sides say of the extra processes: these stay as they are."""
    ours = output_of([programs.command, "--format", "text",
                      f"SELECT {SAME_COLUMNS} FROM {SOURCE}"]).decode()
    peer = output_of([programs.processes]).decode(errors="replace")
    own = {line for line in ours.replace(" bits", "").splitlines() if line.split("\t")[0] in pids}
    others = {line for line in peer.splitlines() if line.split("\t")[0] in pids}
    if own == others and len(own) == len(pids):
        return ""
    example = next(iter(sorted(own ^ others)), "")
    return f"{len(own - others)} lines of ours only, {len(others - own)} of the peer's: {example}"


def measure(programs, names, quick):
    count = EXTRA_IN_A_LOOK if quick else EXTRA
    say(f"processes beside libproc2, {count} of them started for it")
    ours = [programs.command, "--format", "text", f"SELECT * FROM {SOURCE}"]
    with _extra_processes(count) as pids:
        problem = _problem(programs, pids)
        everything = sum(name.isdigit() for name in os.listdir("/proc"))
        times = in_turns(ours, [programs.processes], 5 if quick else 15, everything)
    return [Result(names[0], f"all processes, all properties, {count} more than there are",
                   "process", 1.0, 0.75, **times, problem=problem)]
