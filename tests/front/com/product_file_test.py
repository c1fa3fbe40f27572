#!/usr/bin/env python3
"""KESTRA.DLL and kestra.exe as the loader sees them.

    product_file_test.py OBJDUMP KESTRA.DLL kestra.exe
"""
import re
import subprocess
import sys
import unittest

OBJDUMP, DLL, EXE = sys.argv[1:4]
EXPORTS = ["DllCanUnloadNow", "DllGetCLSIDs", "DllGetClassObject", "DllGetFRCLSIDs",
           "DllRegisterServer", "DllUnregisterServer", "GenerateTypeInfo"]
# Every Windows since Vista has these; msvcrt.dll is part of the system too.
SYSTEM = {"advapi32.dll", "kernel32.dll", "msvcrt.dll", "ole32.dll", "oleaut32.dll", "shell32.dll",
          "user32.dll", "version.dll"}


def headers(path):
    return subprocess.run([OBJDUMP, "-p", path], capture_output=True, text=True, check=True).stdout


class ProductFile(unittest.TestCase):
    def test_exports(self):
        table = headers(DLL).split("[Ordinal/Name Pointer] Table")[1].split("\n\n")[0]
        self.assertEqual(re.findall(r"^\s+\[\s*\d+\] (\w+)$", table, re.M), EXPORTS)
        self.assertNotIn("[Ordinal/Name Pointer] Table", headers(EXE))

    def test_needs_nothing_that_windows_does_not_bring(self):
        for path in (DLL, EXE):
            names = {name.lower() for name in re.findall(r"DLL Name: (\S+)", headers(path))}
            self.assertTrue(names)
            self.assertLessEqual(names, SYSTEM, path)


unittest.main(argv=sys.argv[:1])
