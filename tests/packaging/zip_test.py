#!/usr/bin/env python3
"""The zip for Windows: unpacked into a directory with a blank in its name, used and registered from there
under Wine, and taken back.

    zip_test.py BUILD_DIRECTORY WINE"""
import glob
import os
import subprocess
import sys
import tempfile
import zipfile

from documents import broken_links

build, wine = sys.argv[1:]
WANTED = {"KESTRA.DLL", "kestra.exe", "register.cmd", "unregister.cmd", "example.vbs", "README.txt",
          "docs/language.md", "docs/modules/Processes.md", "include/SORRELLib.h"}


def run(directory, *command):
    result = subprocess.run([wine, *command], cwd=directory, capture_output=True, timeout=120)
    return result.returncode, result.stdout.decode("utf-8", "replace").replace("\r", "")


def check(condition, what):
    if not condition:
        sys.exit(f"wrong: {what}")


with tempfile.TemporaryDirectory() as root:
    subprocess.run(["cpack", "-G", "ZIP", "-B", root], cwd=build, check=True, timeout=280,
                   capture_output=True)
    package, = glob.glob(root + "/*.zip")
    directory = root + "/un zipped"
    with zipfile.ZipFile(package) as archive:
        top, = {name.split("/")[0] for name in archive.namelist()}
        archive.extractall(directory)
    directory += "/" + top
    there = {os.path.relpath(path, directory)
             for path in glob.glob(directory + "/**", recursive=True)}
    check(WANTED <= there, f"missing in the zip: {WANTED - there}")
    check(not broken_links(directory), f"links to nothing: {broken_links(directory)}")
    check(os.path.getsize(directory + "/KESTRA.DLL") < 8 << 20, "the DLL has debug information")
    status, out = run(directory, directory + "/kestra.exe", "1 + 1")
    check((status, out) == (0, "2\n"), f"kestra.exe: {status}, {out}")
    status, out = run(directory, "cmd", "/c", "register.cmd")
    check(status == 0, f"register.cmd: {out}")
    try:
        status, out = run(directory, "cscript", "//nologo", "example.vbs")
        check(status == 0 and "\texplorer.exe\n" in out or "\tservices.exe\n" in out,
              f"example.vbs: {status}, {out}")
    finally:
        status, out = run(directory, "cmd", "/c", "unregister.cmd")
    check(status == 0, f"unregister.cmd: {out}")
    status, out = run(directory, "cscript", "//nologo", "example.vbs")
    check("\t" not in out, f"still registered: {out}")
