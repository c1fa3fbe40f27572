"""Builds Windows registry hive files ("regf") byte by byte, for tests. No dependency.

    hive = Hive()
    key = hive.root.sub(r'Microsoft\Windows NT\CurrentVersion')
    key.set('ProductName', SZ, text('Some Windows'))
    pathlib.Path('SOFTWARE').write_bytes(hive.to_bytes())

Everything that real hives have and that readers stumble over can be asked for: the four kinds of
subkey lists, names in 8 and in 16 bits, data in several blocks, links, class names, a header that
was not closed properly. Damage is done afterwards, to the bytes: see Hive.cell_of.
"""

import struct

NONE, SZ, EXPAND_SZ, BINARY, DWORD, DWORD_BIG_ENDIAN, LINK, MULTI_SZ = range(8)
RESOURCE_LIST, FULL_RESOURCE_DESCRIPTOR, RESOURCE_REQUIREMENTS_LIST, QWORD = range(8, 12)

NO_CELL = 0xFFFFFFFF
KEY_ROOT, KEY_LINK, KEY_COMPRESSED_NAME = 0x2C, 0x10, 0x20
VALUE_COMPRESSED_NAME = 1
BLOCK_DATA = 16344      # data bytes in one block of "big data"
LIST_LIMIT = 500        # longer lists of subkeys are split below an "ri"
DEFAULT_TIME = 0x01D5B2F0A3C40000  # a FILETIME in December 2019


def text(value, terminated=True):
    """The bytes of a string value."""
    return (value + ('\0' if terminated else '')).encode('utf-16-le', 'surrogatepass')


def texts(*values):
    """The bytes of a list of strings."""
    return text(''.join(value + '\0' for value in values))


def dword(value):
    return struct.pack('<I', value)


class Key:
    """A key. list_kind: lf, lh, li, or None for what the system itself would write."""

    def __init__(self, name, time=DEFAULT_TIME, class_name=None, list_kind=None, wide_name=False,
                 flags=0):
        self.name, self.time, self.class_name = name, time, class_name
        self.list_kind, self.wide_name, self.flags = list_kind, wide_name, flags
        self.children, self.values = {}, []
        self.split = LIST_LIMIT
        self.cell = None

    def sub(self, path, **options):
        """The key at the path below this one; made, with the options for the last part, if there
        is none yet."""
        first, _, rest = path.partition('\\')
        child = self.children.get(first.upper())
        if child is None:
            child = Key(first, **(options if not rest else {}))
            self.children[first.upper()] = child
        return child.sub(rest, **options) if rest else child

    def set(self, name, kind, data, wide_name=False):
        self.values.append((name, kind, data, wide_name))
        return self

    def link(self, path, target):
        """A symbolic link to a path of the kernel's, as \\Registry\\Machine\\Software\\X."""
        link = self.sub(path, flags=KEY_LINK)
        return link.set('SymbolicLinkValue', LINK, text(target, terminated=False))


def encode_name(name, wide):
    """The bytes of a name, and whether they are of 8 bits."""
    if not wide:
        try:
            return name.encode('latin-1'), True
        except UnicodeEncodeError:
            pass
    return name.encode('utf-16-le', 'surrogatepass'), False


class Hive:
    """A whole file. dirty: the sequence numbers of the header differ, as when the transaction logs
    have not been replayed."""

    def __init__(self, name='\\SystemRoot\\test', dirty=False, minor=5):
        self.root = Key('ROOT', flags=KEY_ROOT)
        self.name, self.dirty, self.minor = name, dirty, minor
        self._reset()

    def _reset(self):
        self._bins = bytearray()
        self._bin_begin = self._bin_end = self._next = 0

    def to_bytes(self):
        self._reset()
        self._security = self._add(b'sk' + struct.pack('<HIIII', 0, 0, 0, 1, 20) +
                                   struct.pack('<BBHIIII', 1, 0, 0x8000, 0, 0, 0, 0))
        root = self._add_key(self.root)
        self._close_bin()
        return self._header(root) + bytes(self._bins)

    def cell_of(self, key):
        """The offset in the file of the cell of a key that was written (at its size)."""
        return 0x1000 + key.cell

    def _header(self, root):
        head = bytearray(4096)
        struct.pack_into('<4sIIQIIIIIII', head, 0, b'regf', 8, 7 if self.dirty else 8,
                         DEFAULT_TIME, 1, self.minor, 0, 1, root, len(self._bins), 1)
        name = text(self.name)[:62]
        head[48:48 + len(name)] = name
        check = 0
        for (word,) in struct.iter_unpack('<I', head[:508]):
            check ^= word
        struct.pack_into('<I', head, 508, check)
        return bytes(head)

    def _close_bin(self):
        free = self._bin_end - self._next
        if free:
            struct.pack_into('<i', self._bins, self._next, free)

    def _add(self, content):
        """A cell with this content; its offset as other cells name it."""
        size = (len(content) + 4 + 7) & ~7
        if self._next + size > self._bin_end:
            self._close_bin()
            length = max(4096, (size + 32 + 4095) & ~4095)
            self._bin_begin, self._next = self._bin_end, self._bin_end + 32
            self._bin_end += length
            self._bins += struct.pack('<4sIIQQI', b'hbin', self._bin_begin, length, 0,
                                      DEFAULT_TIME, 0) + bytes(length - 32)
        offset = self._next
        struct.pack_into('<i', self._bins, offset, -size)
        self._bins[offset + 4:offset + 4 + len(content)] = content
        self._next += size
        return offset

    def _add_key(self, root):
        """A key with all that is below it; without recursion, since tests go deep."""
        root.cell = self._add(self._key_record(root, 0))
        waiting = [root]
        while waiting:
            key = waiting.pop()
            children = sorted(key.children.values(), key=lambda child: child.name.upper())
            for child in children:
                child.cell = self._add(self._key_record(child, key.cell))
            place = key.cell + 4
            if children:
                struct.pack_into('<I', self._bins, place + 28, self._add_lists(key, children))
            if key.values:
                struct.pack_into('<I', self._bins, place + 40, self._add_values(key.values))
            if key.class_name is not None:
                struct.pack_into('<I', self._bins, place + 48,
                                 self._add(text(key.class_name, terminated=False)))
            waiting.extend(children)
        return root.cell

    def _key_record(self, key, parent):
        name, narrow = encode_name(key.name, key.wide_name)
        flags = key.flags | (KEY_COMPRESSED_NAME if narrow else 0)
        class_length = len(text(key.class_name, False)) if key.class_name is not None else 0
        return struct.pack('<2sHQIIIIIIIIIIHHIIIIHH', b'nk', flags, key.time, 0, parent,
                           len(key.children), 0, NO_CELL, NO_CELL, len(key.values), NO_CELL,
                           self._security, NO_CELL,
                           max((2 * len(c.name) for c in key.children.values()), default=0), 0, 0,
                           max((2 * len(v[0]) for v in key.values), default=0),
                           max((len(v[2]) for v in key.values), default=0), 0,
                           len(name), class_length) + name

    def _add_lists(self, key, children):
        kind = key.list_kind or ('lh' if self.minor >= 5 else 'lf')
        parts = [children[i:i + key.split] for i in range(0, len(children), key.split)]
        lists = [self._add_list(kind, part) for part in parts]
        if len(lists) == 1:
            return lists[0]
        return self._add(b'ri' + struct.pack('<H', len(lists)) +
                         b''.join(map(dword, lists)))

    def _add_list(self, kind, children):
        content = kind.encode() + struct.pack('<H', len(children))
        for child in children:
            content += dword(child.cell)
            if kind == 'lf':
                content += child.name.encode('latin-1', 'replace')[:4].ljust(4, b'\0')
            elif kind == 'lh':
                number = 0
                for character in child.name.upper():
                    number = (number * 37 + ord(character)) & 0xFFFFFFFF
                content += dword(number)
        return self._add(content)

    def _add_values(self, values):
        cells = [self._add_value(*value) for value in values]
        return self._add(b''.join(map(dword, cells)))

    def _add_value(self, name, kind, data, wide_name):
        raw, narrow = encode_name(name, wide_name)
        length, place = len(data), 0
        if length <= 4:
            length |= 0x80000000
            place = struct.unpack('<I', data.ljust(4, b'\0'))[0]
        elif length > BLOCK_DATA and self.minor >= 4:
            place = self._add_big_data(data)
        else:
            place = self._add(data)
        return self._add(struct.pack('<2sHIIIHH', b'vk', len(raw), length, place, kind,
                                     VALUE_COMPRESSED_NAME if narrow else 0, 0) + raw)

    def _add_big_data(self, data):
        blocks = [self._add(data[i:i + BLOCK_DATA] + bytes(4))
                  for i in range(0, len(data), BLOCK_DATA)]
        blocks = self._add(b''.join(map(dword, blocks)))
        return self._add(b'db' + struct.pack('<HI', -(-len(data) // BLOCK_DATA), blocks))
