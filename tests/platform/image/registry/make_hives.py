#!/usr/bin/env python3
"""make_hives.py SUPPORT_DIR DIR: single hives for the tests, each with one thing that is special."""

import pathlib
import struct
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, sys.argv[1])

from hive_builder import BINARY, SZ, Hive, Key, dword, text

CHILDREN = [f'c{i:03}' for i in range(40)]


def lists():
    hive = Hive()
    for kind in ('lf', 'lh', 'li'):
        key = hive.root.sub(kind, list_kind=kind)
        for name in CHILDREN:
            key.sub(name)
    split = hive.root.sub('ri')
    split.split = 7
    for name in CHILDREN:
        split.sub(name)
    return hive.to_bytes()


def names():
    hive = Hive()
    for name in ('with\0nul', 'half\ud800', 'Straße', 'Ωmega', 'ΣΑΣ', '\U0001f511'):
        hive.root.sub(name, class_name='class of ' + name).set('half\udc00value', SZ, text(name))
    return hive.to_bytes()


def big_data():
    """On both sides of the sizes where data move to blocks, and with one block more."""
    hive = Hive()
    for length in (0, 1, 3, 4, 5, 16343, 16344, 16345, 32688, 32689, 100000):
        hive.root.set(str(length), BINARY, bytes(i * 31 & 0xFF for i in range(length)))
    return hive.to_bytes()


def cycle():
    """A key that is its own grandchild."""
    hive = Hive()
    child = hive.root.sub('Child')
    child.sub('Grandchild')
    content = bytearray(hive.to_bytes())
    place, = struct.unpack_from('<I', content, hive.cell_of(child) + 4 + 28)
    struct.pack_into('<I', content, 0x1000 + place + 4 + 4, child.cell)
    return bytes(content)


def bad_child():
    """One of three subkeys leads out of the file."""
    hive = Hive()
    for name in ('First', 'Second', 'Third'):
        hive.root.sub(name).set('', SZ, text(name))
    content = bytearray(hive.to_bytes())
    place, = struct.unpack_from('<I', content, hive.cell_of(hive.root) + 4 + 28)
    struct.pack_into('<I', content, 0x1000 + place + 4 + 4 + 8, 0x7FFFFFF0)
    return bytes(content)


def bad_counts():
    """A key that says it has four thousand million values and subkeys."""
    hive = Hive()
    key = hive.root.sub('Greedy')
    key.sub('Child')
    key.set('Value', SZ, text('v'))
    content = bytearray(hive.to_bytes())
    for place in (20, 36):
        struct.pack_into('<I', content, hive.cell_of(key) + 4 + place, 0xFFFFFFFE)
    return bytes(content)


def bad_value():
    """A value whose data lie outside, one that is longer than its cell, and a sound one."""
    hive = Hive()
    hive.root.set('Outside', BINARY, bytes(100)).set('Long', BINARY, bytes(100))
    hive.root.set('Sound', BINARY, bytes(100))
    content = bytearray(hive.to_bytes())
    for name, place, number in ((b'Outside', 8, 0x7FFFFFF0), (b'Long', 4, 0x00FFFFFF)):
        record = content.index(name) - 20
        content[record + place:record + place + 4] = dword(number)
    return bytes(content)


def bad_class():
    """A key whose class name lies outside."""
    hive = Hive()
    key = hive.root.sub('Key', class_name='class').set('Value', SZ, text('v'))
    content = bytearray(hive.to_bytes())
    struct.pack_into('<I', content, hive.cell_of(key) + 4 + 48, 0x7FFFFFF0)
    return bytes(content)


def too_large():
    """A value that is a byte longer than what hivex reads."""
    hive = Hive()
    hive.root.set('Large', BINARY, bytes(8000001))
    return hive.to_bytes()


def bad_names():
    """Subkeys that no path can name, and two of one name."""
    hive = Hive()
    for place, name in enumerate(('', 'a\\b', 'Fine', 'Twin', 'TWIN')):
        key = hive.root.children[str(place)] = Key(name)
        key.set('Value', SZ, text('of ' + name))
    hive.root.set('Same', SZ, text('first')).set('same', SZ, text('second'))
    return hive.to_bytes()


def shared_profiles():
    """A SOFTWARE with three users whose profile is one folder."""
    hive = Hive()
    for number, path in enumerate(('C:\\Users\\Both', 'c:\\users\\both\\', 'C:\\Users\\BOTH')):
        hive.root.sub(r'Microsoft\Windows NT\CurrentVersion\ProfileList'
                      rf'\S-1-5-21-1-2-3-{number}').set('ProfileImagePath', SZ, text(path))
    return hive.to_bytes()


def many_profiles():
    """A SOFTWARE with more users than are looked at."""
    hive = Hive()
    for number in range(10002):
        hive.root.sub(r'Microsoft\Windows NT\CurrentVersion\ProfileList'
                      rf'\S-1-5-21-1-2-3-{number}').set('ProfileImagePath', SZ,
                                                       text(rf'C:\Users\{number}'))
    return hive.to_bytes()


def main():
    directory = pathlib.Path(sys.argv[2])
    directory.mkdir(parents=True, exist_ok=True)
    for make in (lists, names, big_data, cycle, bad_child, bad_counts, bad_value, bad_class,
                 too_large, bad_names, shared_profiles, many_profiles):
        (directory / make.__name__).write_bytes(make())


if __name__ == '__main__':
    main()
