#!/usr/bin/env python3
"""Holds the seam: what belongs to one system appears in platform/, front/com/ and cli/terminal_*,
and where the engine is measured beside programs of Linux (bench/pairs/, bench/peers/).

Everywhere else a file may include the headers of the C++ standard library and of the libraries
named below, and may not ask which system it is built for.
"""
import re
import sys

from source_tree import includes_of, lines_of, source_files

ALLOWED_PLACES = re.compile(
    r"platform/(linux|win32|image)/|front/com/|cli/terminal_|bench/(pairs|peers)/|"
    r"tests/platform/(linux|win32|image)/|tests/support/(linux|win32)/|tests/front/(linux|com)/")
# What stands outside the library includes its public headers as a stranger does.
STRANGERS = re.compile(r"examples/|tests/")
INSTALLED = re.compile(r"kestra/")
# Public headers are C, and are read by every system's compiler.
PUBLIC_HEADERS = re.compile(r"include/kestra/")
STANDARD = re.compile(r"[a-z_0-9]+")
C_HEADERS = {"stddef.h", "stdint.h"}
LIBRARIES = re.compile(r"(fmt|CLI|nlohmann|gtest|gmock|benchmark)/|zlib\.h$")
SYSTEM_MACRO = re.compile(r"\b(_WIN32|_WIN64|__linux__|__unix__|_MSC_VER|__MINGW\w+)\b")


def main():
    bad = 0
    for path in source_files(".h", ".cpp", ".inc"):
        if ALLOWED_PLACES.match(path):
            continue
        is_public = bool(PUBLIC_HEADERS.match(path))
        for number, quote, included in includes_of(path):
            if quote == '"' or STANDARD.fullmatch(included) or LIBRARIES.match(included):
                continue
            if STRANGERS.match(path) and INSTALLED.match(included):
                continue
            if is_public and included in C_HEADERS:
                continue
            bad += 1
            print(f"{path}:{number}: #include <{included}>: belongs to one system")
        for number, line in [] if is_public else lines_of(path):
            found = SYSTEM_MACRO.search(line.split("//")[0])
            if found:
                bad += 1
                print(f"{path}:{number}: {found[0]}: files are chosen in CMake instead")
    sys.exit(1 if bad else 0)


main()
