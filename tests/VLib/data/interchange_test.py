#!/usr/bin/env python3
"""Data files against programs that are not ours: Python's configparser reads and writes the Ini
layout, and the layers around the text are done here once more, after their description."""
import configparser
import os
import random
import struct
import subprocess
import sys
import tempfile
import unittest
import zlib

TOOL = sys.argv[1]
PRIME = 4294967291


def convert(source, source_layout, source_key, target, layout, key=0, compress=0):
    subprocess.run([TOOL, source, source_layout, str(source_key), target, layout, str(key),
                    str(compress)], check=True, timeout=60)


def swaps(size, key):
    state = key
    for i in range(size):
        state = state * 1835786643 % PRIME
        yield i, state % size


def scramble(data, key):
    data = bytearray(data)
    for i, j in swaps(len(data), key):
        data[i], data[j] = data[j], data[i]
    return bytes(data)


def unscramble(data, key):
    data = bytearray(data)
    for i, j in reversed(list(swaps(len(data), key))):
        data[i], data[j] = data[j], data[i]
    return bytes(data)


def compressed(text):
    return struct.pack("<III", 0x8A9BACBD, len(text), 0xBDAC9B8A) + zlib.compress(text)


def parser():
    result = configparser.RawConfigParser(strict=False, delimiters=("=",), comment_prefixes=(";",),
                                          default_section="no such section")
    result.optionxform = str
    return result


def random_config(seed):
    """Names and texts that both programs can hold: none of theirs spans lines."""
    choose = random.Random(seed)

    def word(letters, least):
        return "".join(choose.choice(letters) for _ in range(choose.randrange(least, 12))).strip()

    config = parser()
    for _ in range(choose.randrange(1, 6)):
        section = word("abcXYZ 019._-\\:é漢", 1) or "blank"
        if not config.has_section(section):
            config.add_section(section)
        for _ in range(choose.randrange(5)):
            key = word("abcXYZ019._- é", 1) or "key"
            config.set(section, key, word("abc XYZ;#=[]\"'%$:,\\é漢\t", 0))
    return config


def content(config):
    return {section: dict(config.items(section)) for section in config.sections()}


class Interchange(unittest.TestCase):
    def setUp(self):
        self.directory = tempfile.TemporaryDirectory()
        self.addCleanup(self.directory.cleanup)

    def path(self, name):
        return os.path.join(self.directory.name, name)

    def write(self, name, data):
        with open(self.path(name), "wb") as file:
            file.write(data)

    def read(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()

    def test_configparser_there_and_back(self):
        for seed in range(60):
            config = random_config(seed)
            with open(self.path("a"), "w", encoding="utf-8") as file:
                config.write(file)
            # Through the other layout and all layers, and back into the one that configparser has.
            convert(self.path("a"), "ini", 0, self.path("b"), "cfg", seed, 1 if seed else 0)
            convert(self.path("b"), "cfg", seed, self.path("c"), "ini")
            back = parser()
            back.read(self.path("c"), encoding="utf-8")
            self.assertEqual(content(back), content(config), f"seed {seed}")

    def test_configparser_comments_and_spacing(self):
        self.write("a", b"; comment\n\n[ a ]\nkey =  value ; no comment\nempty=\n;k=v\n[b]\nx=1")
        convert(self.path("a"), "ini", 0, self.path("b"), "ini")
        back = parser()
        back.read(self.path("b"))
        self.assertEqual(content(back), {" a ": {"key": "value ; no comment", "empty": ""},
                                         "b": {"x": "1"}})

    def test_layers(self):
        text = b"".join(b" key%d = value %d\r\n" % (i % 3, i) for i in range(200))
        self.write("plain", text)
        for key in (1, 77, PRIME - 1, PRIME, 2**32 - 1):
            convert(self.path("plain"), "cfg", 0, self.path("scrambled"), "cfg", key)
            self.assertEqual(self.read("scrambled"), scramble(text, key), key)
            convert(self.path("plain"), "cfg", 0, self.path("layered"), "cfg", key, 1)
            layer = unscramble(self.read("layered"), key)
            self.assertEqual(struct.unpack("<III", layer[:12]), (0x8A9BACBD, len(text), 0xBDAC9B8A))
            self.assertEqual(zlib.decompress(layer[12:]), text)
            self.write("theirs", scramble(compressed(text), key))
            convert(self.path("theirs"), "cfg", key, self.path("back"), "cfg")
            self.assertEqual(self.read("back"), text, key)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
